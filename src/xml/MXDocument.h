// A whole document: its declaration, its doctype, its root element and what stands beside them.
#pragma once

#include "xml/MXDoctype.h"
#include "xml/MXFragment.h"

#include <memory>
#include <string>

namespace vexa {

/// Owns its parts. What is absent is null and is not written.
class MXDocument {
  public:
    MXDocument() = default;
    /// Reads the file. One that cannot be read gives an empty document, and OpenError() says why;
    /// a text with a fault gives what stands before the fault, and Status() says which. A zero byte
    /// cuts off the rest of its line (or of 1023 bytes, if the line is longer).
    explicit MXDocument(const char* path);
    /// A document to write: the declaration, a doctype of these three texts, and no root yet.
    MXDocument(MXString doctypeName, MXString keyword, MXString literal);
    /// As ParseString.
    explicit MXDocument(MXString& text) { ParseString(text); }

    /// Takes the text up and returns the status, as MXFragment::ParseString does, or
    /// MX_BAD_DOCUMENT for a doctype that cannot be read. What was read before a fault is kept; the
    /// last root element, declaration and doctype replace the ones before.
    int32 ParseString(MXString& text);

    /// `unit` is the indentation of each level inside the root.
    MXString AssembleString(MXString unit) const;

    /// 0, or -1 and WriteError() says why. The file is replaced as a whole or stays as it was.
    int32 WriteFile(const char* path, MXString unit);

    /// Of the last ParseString: see StatusText.
    int32 Status() const { return status; }
    /// The path and the system's reason; empty if there was no fault.
    const std::string& OpenError() const { return openError; }
    const std::string& WriteError() const { return writeError; }

    std::unique_ptr<MXFragment> declaration;
    std::unique_ptr<MXDoctype> doctype;
    /// Comments, instructions, empty elements and texts beside the root, in the order read.
    MXFragmentList misc;
    std::unique_ptr<MXFragment> root;

  private:
    int32 ParseParts(MXString& text);

    int32 status = 0;
    std::string openError;
    std::string writeError;
};

} // namespace vexa
