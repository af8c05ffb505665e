// SPDX-License-Identifier: GPL-3.0-or-later
// The common parts of function and sound documents: their frame, reading and saving.
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
#include <string_view>
#include <vector>

namespace vexa {

/// The missing, wrong and ignored parts of a file that was nevertheless loaded, in the order of the
/// text: at most Remarks::kMost entries, and a last one with the number of the others, if any.
using Warnings = std::vector<kits::Error>;

/// The children of "info" that only sounds use, in the order in which they are written. Those of a
/// function are kept for its listeners.
constexpr std::string_view kSoundInfoNames[] = {"name", "category", "tags", "comment"};

/// Makes a document for writing, with the root element's name in its doctype and no root yet.
MXDocument ConstructDocumentTemplate(const std::string& rootName);

/// Makes the element "info" with the program's version and the author.
std::unique_ptr<MXFragment> ConstructInfoElement(const std::string& author);
/// Reads the author into `author`, and into `kept.info` all child elements except those known here
/// and those named in `more`. A newer version than this program's and unknown elements add
/// remarks. A null `info` means that the element is missing: `author` then remains unchanged.
void InterpretInfoElement(const MXFragment* info, std::string& author, KeptElements& kept,
                          Remarks& remarks, std::span<const std::string_view> more = {});

/// Returns the child elements whose names are not in `known`, as XML.
std::string ChildrenBut(const MXFragment& parent, std::span<const std::string_view> known);
/// Appends the elements in a text that ChildrenBut has returned.
void AdoptChildren(MXFragment& parent, const std::string& elements);

/// Makes an element with one text child, even if the text is empty.
std::unique_ptr<MXFragment> ConstructTextElement(std::string_view name, std::string_view text);

/// A text and the document read from it, whose root is not null.
struct LoadedDocument {
    MXString text;
    MXDocument document;
};

/// Reads the document at `path`, and adds remarks about the parts that are ignored. A document
/// without a root is an error. Any thread.
kits::Result<LoadedDocument> LoadDocument(const std::filesystem::path& path, Remarks& remarks);

/// Writes the document with the indentation that all documents have, and sets the file's MIME type.
/// A file system that cannot store types is not an error. Any thread.
kits::Result<void> SaveDocument(const std::filesystem::path& path, MXDocument& document,
                                const char* fileType);

/// Makes the error that there is not enough memory for the document at `path`.
kits::Error TooLarge(const std::filesystem::path& path);

/// Makes the error for a rejected root element, without a place, which the caller adds. `alert` is
/// the text of the window's alert, and `expected` names the expected element.
kits::Error Refusal(const char* alert, const std::string& expected);

/// Reads the document at `path` into `value` with `interpret` (InterpretFunction or
/// InterpretSound), and returns the result. The document's warnings replace `warnings`, unless it
/// is null; an error leaves it empty. Any thread.
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
