// Any document gives a function or a reason, and a function is the same when it was saved and read.

#include "documents/FunctionDocument.h"
#include "fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    vexa::MXString text(fuzz::Text(data, size));
    const vexa::MXDocument document(text);
    vexa::Function function;
    vexa::Warnings warnings;
    if (!document.root || !vexa::InterpretFunction(*document.root, function, warnings))
        return 0;

    const auto saved = [](const vexa::Function& value) {
        vexa::MXDocument copy = vexa::ConstructDocumentTemplate(vexa::RootName(value));
        copy.root = vexa::ConstructFunctionElement(value);
        vexa::MXString bytes = copy.AssembleString("\t");
        const vexa::MXDocument again(bytes);
        vexa::Function read;
        vexa::Warnings ignored;
        fuzz::Require(again.root && vexa::InterpretFunction(*again.root, read, ignored),
                      "a saved function can be read");
        return read;
    };
    const vexa::Function once = saved(function);
    fuzz::Require(saved(once) == once, "a saved function reads the same");
    return 0;
}
