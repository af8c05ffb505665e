// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXDocument.h"

#include "kits/storage/FileReplacement.h"
#include "kits/storage/ReadFile.h"
#include "xml/MXStatus.h"

namespace vexa {

namespace {

/// The byte order mark that some editors put at the front of a UTF-8 text.
constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

} // namespace

kits::Result<MXString> ReadDocumentText(const std::filesystem::path& path) {
    const kits::Result<std::string> bytes = kits::ReadFile(path);
    if (!bytes)
        return bytes.Fault();
    constexpr std::size_t kLongestPiece = 1023;
    MXString text;
    std::string_view rest = *bytes;
    while (!rest.empty()) {
        const std::size_t lineEnd = rest.substr(0, kLongestPiece).find('\n');
        const std::string_view piece =
            rest.substr(0, lineEnd == rest.npos ? kLongestPiece : lineEnd + 1);
        text.Append(piece.substr(0, piece.find('\0')));
        rest.remove_prefix(piece.size());
    }
    return text;
}

MXDocument::MXDocument(const char* path) {
    kits::Result<MXString> text = ReadDocumentText(path);
    if (text)
        ParseString(*text);
    else
        openError = text.Fault().text;
}

MXDocument::MXDocument(MXString doctypeName, MXString keyword, MXString literal)
    : declaration(
          std::make_unique<MXFragment>(MX_PROCESSING_INSTRUCTION, "xml", "version=\"1.0\"")),
      doctype(std::make_unique<MXDoctype>(std::move(doctypeName), std::move(keyword),
                                          std::move(literal))) {}

int32 MXDocument::ParseString(MXString& text, Remarks* remarks) {
    status = ParseParts(text, remarks);
    return status;
}

int32 MXDocument::ParseParts(MXString& text, Remarks* remarks) {
    while (text.Length() > 0) {
        auto part = std::make_unique<MXFragment>(MX_UNPARSED);
        const int32 partStatus = part->ParseString(text, remarks);
        const auto remark = [&](const char* what) {
            if (remarks)
                remarks->Add(part->TextLeft(), what);
        };
        const auto fail = [&](int32 fault) {
            faultLeft = part->TextLeft();
            remark(StatusText(fault));
            return fault;
        };
        if (partStatus == MX_DECLARATION) {
            auto type = std::make_unique<MXDoctype>();
            if (type->ParseString(text) != MX_OK)
                return fail(MX_BAD_DOCUMENT);
            doctype = std::move(type);
        } else if (partStatus != MX_OK) {
            return fail(partStatus);
        } else if (part->Type() == MX_ELEMENT) {
            if (root)
                remark("a second root element, which is read in place of the one before");
            root = std::move(part);
        } else if (part->Type() == MX_PROCESSING_INSTRUCTION && part->name == "xml") {
            declaration = std::move(part);
        } else {
            if (part->Type() == MX_TEXT && !(part->name == kByteOrderMark))
                remark("a text outside of the root element is not read");
            misc.push_back(std::move(part));
        }
        text.RemoveLeadingSpace();
    }
    return MX_OK;
}

MXString MXDocument::AssembleString(MXString unit) const {
    MXString text;
    if (declaration) {
        declaration->AppendTo(text);
        text.Append("\n");
    }
    if (doctype)
        text.Append(doctype->AssembleString()).Append("\n");
    for (const auto& fragment : misc)
        fragment->AppendTo(text, "", "");
    text.Append("\n");
    if (root)
        root->AppendTo(text, "", unit);
    return text;
}

int32 MXDocument::WriteFile(const char* path, MXString unit) {
    const kits::Result<void> written = kits::ReplaceFile(path, AssembleString(unit));
    writeError = written ? std::string() : written.Fault().text;
    return written ? 0 : -1;
}

} // namespace vexa
