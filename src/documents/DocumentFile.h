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
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vexa {

/// What there is to say about a file that was read, in lines for a terminal or the details of an
/// alert. A line begins with the file's path and, where the fault has a place in it,
/// ":LINE:COLUMN"; both count from 1, and a column is a character in UTF-8.
struct ReadReport {
    /// Why nothing of the file was taken; empty if it was.
    std::string reason;
    /// What was missing, wrong or read over in a file that was taken all the same, in the order of
    /// the text; Remarks::kMost of them, and then how many more there are.
    std::vector<std::string> warnings;
};

/// A document to write, with that root element in its doctype and without a root yet.
MXDocument ConstructDocumentTemplate(const std::string& rootName);

/// The element "info" with the program's version and the author.
std::unique_ptr<MXFragment> ConstructInfoElement(const std::string& author);
/// Takes the author over, and the elements that neither are known here nor are of the names in
/// `more`. A version newer than ours is a remark. A null element is one that is missing.
void InterpretInfoElement(const MXFragment* info, std::string& author, KeptElements& kept,
                          Remarks& remarks, std::span<const std::string_view> more = {});

/// The children of an element that are elements of none of these names, as XML.
std::string ChildrenBut(const MXFragment& parent, std::span<const std::string_view> known);
/// Appends the elements that ChildrenBut has returned.
void AdoptChildren(MXFragment& parent, const std::string& elements);

/// An element that holds a text, an empty text too.
std::unique_ptr<MXFragment> ConstructTextElement(std::string_view name, std::string_view text);

/// A text and what was read of it, which has a root.
struct LoadedDocument {
    MXString text;
    MXDocument document;
};

/// The document at `path`. The error is the text for the window's alert; the report, which is
/// emptied before, has the reason. What is read over is told to `remarks`.
kits::Result<LoadedDocument> LoadDocument(const std::filesystem::path& path, ReadReport& report,
                                          Remarks& remarks);

/// Writes the document in the layout of all documents and sets the file's type. The error names the
/// path and the reason; a file system that keeps no types is none.
kits::Result<void> SaveDocument(const std::filesystem::path& path, MXDocument& document,
                                const char* fileType);

/// The error, and into the report, that memory does not suffice for the document.
kits::Error TooLarge(const std::filesystem::path& path, ReadReport& report);

/// Why a root element was not taken: the alert, and what was expected of it.
struct Refusal {
    const char* alert;
    std::string expected;
};

/// What `interpret` (InterpretFunction, InterpretSound) makes of `value` and the document at
/// `path`. Error and report as with LoadDocument.
template<class Value, class Interpret>
kits::Result<Value> ReadValue(const std::filesystem::path& path, Value value, Interpret interpret,
                              ReadReport& report) try {
    Remarks remarks;
    const kits::Result<LoadedDocument> loaded = LoadDocument(path, report, remarks);
    if (!loaded)
        return loaded.Fault();
    const MXFragment& root = *loaded->document.root;
    const std::optional<Refusal> refusal = interpret(root, value, remarks);
    if (refusal) {
        report.reason = Located(path.string(), loaded->text,
                                {root.TextLeft(), refusal->alert + (" " + refusal->expected)});
        return kits::Error{refusal->alert};
    }
    report.warnings = remarks.Located(path.string(), loaded->text);
    return value;
} catch (const std::bad_alloc&) {
    return TooLarge(path, report);
}

} // namespace vexa
