// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if a document gives neither a function nor a reason, or if a function changes by saving and
// reading.

#include "documents/FunctionDocument.h"
#include "fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    vexa::MXString text(fuzz::Text(data, size));
    vexa::Remarks remarks;
    const vexa::MXDocument document(text, &remarks);
    vexa::Function function;
    if (!document.root || !vexa::InterpretFunction(*document.root, function, remarks))
        return 0;
    for (const std::string& line : kits::Texts(remarks.Located("name", fuzz::Text(data, size))))
        fuzz::Require(line.starts_with("name:") && line.find('\n') == line.npos,
                      "a remark is a line that names the file");

    const auto saved = [](const vexa::Function& value) {
        vexa::MXDocument copy = vexa::ConstructDocumentTemplate(vexa::RootName(value));
        copy.root = vexa::ConstructFunctionElement(value);
        vexa::MXString bytes = copy.AssembleString("\t");
        const vexa::MXDocument again(bytes);
        vexa::Function read;
        vexa::Remarks ignored;
        fuzz::Require(again.root && vexa::InterpretFunction(*again.root, read, ignored),
                      "a saved function can be read");
        return read;
    };
    const vexa::Function once = saved(function);
    fuzz::Require(saved(once) == once, "a saved function reads the same");
    return 0;
}
