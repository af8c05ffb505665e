// SPDX-License-Identifier: GPL-3.0-or-later
// What function and sound documents have in common: their frame, and reading and saving them.
#pragma once

#include "documents/ElementScope.h"
#include "documents/Function.h"
#include "kits/support/Result.h"
#include "xml/MXDocument.h"

#include <filesystem>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <vector>

namespace vexa {

/// What was missing, wrong or read over in a file that was taken all the same, in the order of the
/// text: Remarks::kMost of them, and then how many more there are.
using Warnings = std::vector<kits::Error>;

/// Makes a document to write, with that root element in its doctype and without a root yet.
MXDocument ConstructDocumentTemplate(const std::string& rootName);

/// Makes the element "info" with the program's version and the author.
std::unique_ptr<MXFragment> ConstructInfoElement(const std::string& author);
/// Takes the author over, and the elements that neither are known here nor are of the names in
/// `more`. A version newer than ours is a remark. A null element is one that is missing.
void InterpretInfoElement(const MXFragment* info, std::string& author, KeptElements& kept,
                          Remarks& remarks, std::span<const std::string_view> more = {});

/// Returns the children of an element that are elements of none of these names, as XML.
std::string ChildrenBut(const MXFragment& parent, std::span<const std::string_view> known);
/// Appends the elements that ChildrenBut has returned.
void AdoptChildren(MXFragment& parent, const std::string& elements);

/// Makes an element that holds a text, an empty text too.
std::unique_ptr<MXFragment> ConstructTextElement(std::string_view name, std::string_view text);

/// Holds a text and what was read of it, which has a root.
struct LoadedDocument {
    MXString text;
    MXDocument document;
};

/// Reads the document at `path`. What is read over is told to `remarks`. Any thread.
kits::Result<LoadedDocument> LoadDocument(const std::filesystem::path& path, Remarks& remarks);

/// Writes the document in the layout of all documents and sets the file's type; a file system that
/// keeps no types is no fault. Any thread.
kits::Result<void> SaveDocument(const std::filesystem::path& path, MXDocument& document,
                                const char* fileType);

/// Makes the error that memory does not suffice for the document at `path`.
kits::Error TooLarge(const std::filesystem::path& path);

/// Makes the error that a root element is not taken. `alert` is what the window says of it, and
/// `expected` what was expected instead; the element's place is not known here.
kits::Error Refusal(const char* alert, const std::string& expected);

/// Returns what `interpret` (InterpretFunction, InterpretSound) makes of `value` and the document
/// at `path`. What is to be said about a document that is taken replaces `warnings`, where there
/// are any. Any thread.
template<class Value, class Interpret>
kits::Result<Value> ReadValue(const std::filesystem::path& path, Value value, Interpret interpret,
                              Warnings* warnings) try {
    if (warnings)
        warnings->clear();
    Remarks remarks;
    const kits::Result<LoadedDocument> loaded = LoadDocument(path, remarks);
    if (!loaded)
        return loaded.Fault();
    const MXFragment& root = *loaded->document.root;
    if (const kits::Result<void> taken = interpret(root, value, remarks); !taken)
        return kits::At(PlaceOf(path.string(), loaded->text, root.TextLeft()), taken.Fault());
    if (warnings)
        *warnings = remarks.Located(path.string(), loaded->text);
    return value;
} catch (const std::bad_alloc&) {
    return TooLarge(path);
}

} // namespace vexa
