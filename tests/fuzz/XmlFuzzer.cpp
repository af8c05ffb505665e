// Any text is read, and what was read is written in a form that reads the same.

#include "fuzz/Fuzzing.h"
#include "xml/MXDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    vexa::MXString text(fuzz::Text(data, size));
    const vexa::MXDocument read(text);
    vexa::MXString written = read.AssembleString("  ");
    if (read.Status() != 0 || !read.root)
        return 0;
    vexa::MXString copy(written);
    const vexa::MXDocument again(copy);
    fuzz::Require(again.AssembleString("  ") == written, "what is written reads the same");
    return 0;
}
