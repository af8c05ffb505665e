// SPDX-License-Identifier: GPL-3.0-or-later
// A whole document: the declaration, the doctype, the root element and the fragments beside them.
#pragma once

#include "kits/support/Result.h"
#include "xml/MXDoctype.h"
#include "xml/MXFragment.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace vexa {

/// Returns the text of the file at `path`, read by kits::ReadFile. Each line, or each 1023 bytes of
/// a longer line, ends before its first zero byte. Any thread.
kits::Result<MXString> ReadDocumentText(const std::filesystem::path& path);

/// Owns the parts of a document. An absent part is null and is not written. Any thread, one at a
/// time.
class MXDocument {
  public:
    MXDocument() = default;
    /// Reads the file with ReadDocumentText. If the file cannot be read, the document is empty and
    /// OpenError() gives the reason. If the text has a fault, the document has the parts before the
    /// fault, and Status() identifies the fault.
    explicit MXDocument(const char* path);
    /// Makes a document for writing: with an XML declaration, a doctype of these three texts, and
    /// no root yet.
    MXDocument(MXString doctypeName, MXString keyword, MXString literal);
    /// Reads the text with ParseString.
    explicit MXDocument(MXString& text, Remarks* remarks = nullptr) { ParseString(text, remarks); }

    /// Reads and consumes the text. Returns the status of MXFragment::ParseString, or
    /// MX_BAD_DOCUMENT for a doctype that cannot be read. The parts before a fault are kept. Each
    /// root element, declaration and doctype replaces the previous one. The fault and everything
    /// that is ignored add remarks to `remarks`, unless it is null.
    int32 ParseString(MXString& text, Remarks* remarks = nullptr);

    /// Returns the text of the whole document; `unit` is the indentation per level inside the root.
    MXString AssembleString(MXString unit) const;

    /// Writes the file at `path`, which is either replaced as a whole or unchanged. Returns 0, or
    /// -1; WriteError() then gives the reason.
    int32 WriteFile(const char* path, MXString unit);

    /// Returns the status of the last ParseString; see StatusText.
    int32 Status() const { return status; }
    /// Returns the number of bytes from the fault to the end of that text.
    std::size_t FaultLeft() const { return faultLeft; }
    /// Return the path and the system's reason; empty if there was no fault.
    const std::string& OpenError() const { return openError; }
    const std::string& WriteError() const { return writeError; }

    std::unique_ptr<MXFragment> declaration;
    std::unique_ptr<MXDoctype> doctype;
    /// The comments, instructions, empty elements, CDATA sections and texts beside the root, in
    /// document order.
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
