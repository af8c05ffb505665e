// What function and sound documents have in common: their frame, and reading and saving them.
#pragma once

#include "documents/ElementScope.h"
#include "kits/support/Quoted.h"
#include "kits/support/Result.h"
#include "xml/MXDocument.h"

#include <filesystem>
#include <memory>
#include <new>
#include <string>

namespace vexa {

/// What there is to say about a file that was read, for a terminal.
struct ReadReport {
    /// The file and why nothing of it was taken; empty if it was.
    std::string reason;
    /// What was missing or wrong in a file that was taken all the same; each names the file.
    Warnings warnings;
};

/// A document to write, with that root element in its doctype and without a root yet.
MXDocument ConstructDocumentTemplate(const std::string& rootName);

/// The element "info": the program's version and the author.
std::unique_ptr<MXFragment> ConstructInfoElement(const std::string& author);

/// An element that holds a text, an empty text too.
std::unique_ptr<MXFragment> ConstructTextElement(std::string_view name, std::string_view text);

/// The document at `path`, which has a root. The error is the text for the window's alert; the
/// report, which is emptied before, has the reason.
kits::Result<MXDocument> LoadDocument(const std::filesystem::path& path, ReadReport& report);

/// Writes the document in the layout of all documents and sets the file's type. The error names the
/// path and the reason; a file system that keeps no types is none.
kits::Result<void> SaveDocument(const std::filesystem::path& path, MXDocument& document,
                                const char* fileType);

/// The error, and into the report, that memory does not suffice for the document.
kits::Error TooLarge(const std::filesystem::path& path, ReadReport& report);

/// What `interpret` (InterpretFunction, InterpretSound) makes of `startFrom` and the document at
/// `path`. Error and report as with LoadDocument.
template<class Value, class Interpret>
kits::Result<Value> ReadValue(const std::filesystem::path& path, Value value, Interpret interpret,
                              ReadReport& report) try {
    kits::Result<MXDocument> document = LoadDocument(path, report);
    if (!document)
        return document.Fault();
    const kits::Result<void> interpreted = interpret(*document->root, value, report.warnings);
    for (std::string& warning : report.warnings)
        warning.insert(0, path.string() + ": ");
    if (!interpreted) {
        report.reason = path.string() + ": " + interpreted.Fault().text + " (root element " +
                        kits::Quoted(document->root->name) + ")";
        return interpreted.Fault();
    }
    return value;
} catch (const std::bad_alloc&) {
    return TooLarge(path, report);
}

} // namespace vexa
