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

/// The text of the file at `path`, a regular one of at most kits::kMostFileBytes. A zero byte cuts
/// off the rest of its line (or of 1023 bytes, if the line is longer). The error names the path and
/// the reason.
kits::Result<MXString> ReadDocumentText(const std::filesystem::path& path);

/// Owns its parts. What is absent is null and is not written.
class MXDocument {
  public:
    MXDocument() = default;
    /// Reads the file, as ReadDocumentText does. One that cannot be read gives an empty document,
    /// and OpenError() says why; a text with a fault gives what stands before the fault, and
    /// Status() says which.
    explicit MXDocument(const char* path);
    /// A document to write: the declaration, a doctype of these three texts, and no root yet.
    MXDocument(MXString doctypeName, MXString keyword, MXString literal);
    /// As ParseString.
    explicit MXDocument(MXString& text, Remarks* remarks = nullptr) { ParseString(text, remarks); }

    /// Takes the text up and returns the status, as MXFragment::ParseString does, or
    /// MX_BAD_DOCUMENT for a doctype that cannot be read. What was read before a fault is kept; the
    /// last root element, declaration and doctype replace the ones before. A fault, and what is
    /// read over, is told to `remarks`, where there are any.
    int32 ParseString(MXString& text, Remarks* remarks = nullptr);

    /// `unit` is the indentation of each level inside the root.
    MXString AssembleString(MXString unit) const;

    /// 0, or -1 and WriteError() says why. The file is replaced as a whole or stays as it was.
    int32 WriteFile(const char* path, MXString unit);

    /// Of the last ParseString: see StatusText.
    int32 Status() const { return status; }
    /// How many bytes of that text were left at the fault.
    std::size_t FaultLeft() const { return faultLeft; }
    /// The path and the system's reason; empty if there was no fault.
    const std::string& OpenError() const { return openError; }
    const std::string& WriteError() const { return writeError; }

    std::unique_ptr<MXFragment> declaration;
    std::unique_ptr<MXDoctype> doctype;
    /// Comments, instructions, empty elements and texts beside the root, in the order read.
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
