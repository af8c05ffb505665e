// SPDX-License-Identifier: GPL-3.0-or-later
// A whole document: its declaration, its doctype, its root element and what stands beside them.
#pragma once

#include "kits/support/Result.h"
#include "xml/MXDoctype.h"
#include "xml/MXFragment.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace vexa {

/// Returns the text of the file at `path`, as kits::ReadFile reads it. A zero byte cuts off the
/// rest of its line (or of 1023 bytes, if the line is longer). Any thread.
kits::Result<MXString> ReadDocumentText(const std::filesystem::path& path);

/// Owns the parts of a document. What is absent is null and is not written. Any thread, one at a
/// time.
class MXDocument {
  public:
    MXDocument() = default;
    /// Reads the file, as ReadDocumentText does. One that cannot be read gives an empty document,
    /// and OpenError() says why; a text with a fault gives what stands before the fault, and
    /// Status() says which.
    explicit MXDocument(const char* path);
    /// Makes a document to write: it has the declaration, a doctype of these three texts, and no
    /// root yet.
    MXDocument(MXString doctypeName, MXString keyword, MXString literal);
    /// Reads the text, as ParseString does.
    explicit MXDocument(MXString& text, Remarks* remarks = nullptr) { ParseString(text, remarks); }

    /// Takes the text up and returns the status, as MXFragment::ParseString does, or
    /// MX_BAD_DOCUMENT for a doctype that cannot be read. What was read before a fault is kept; the
    /// last root element, declaration and doctype replace the ones before. A fault, and what is
    /// read over, is told to `remarks`, where there are any.
    int32 ParseString(MXString& text, Remarks* remarks = nullptr);

    /// Returns the text of the whole document; `unit` is the indentation of each level inside the
    /// root.
    MXString AssembleString(MXString unit) const;

    /// Writes the file at `path`, which is replaced as a whole or stays as it was. Returns 0, or
    /// -1, and WriteError() says why.
    int32 WriteFile(const char* path, MXString unit);

    /// Returns what the last ParseString returned: see StatusText.
    int32 Status() const { return status; }
    /// Returns how many bytes of that text were left at the fault.
    std::size_t FaultLeft() const { return faultLeft; }
    /// Return the path and the system's reason; empty if there was no fault.
    const std::string& OpenError() const { return openError; }
    const std::string& WriteError() const { return writeError; }

    std::unique_ptr<MXFragment> declaration;
    std::unique_ptr<MXDoctype> doctype;
    /// The comments, instructions, empty elements and texts beside the root, in the order read.
    std::vector<std::unique_ptr<MXFragment>> misc;
    std::unique_ptr<MXFragment> root;

  private:
    int32 ParseParts(MXString& text, Remarks* remarks);

    int32 status = 0;
    std::size_t faultLeft = 0;
    std::string openError;
    std::string writeError;
};

} // namespace vexa
