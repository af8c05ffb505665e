#include "xml/MXDocument.h"

#include "kits/storage/FileReplacement.h"
#include "xml/MXStatus.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

namespace vexa {

namespace {

/// The file's text; on a fault empty, and `error` names the path and the reason.
MXString TextOfFile(const char* path, std::string& error) {
    const auto fail = [&] {
        error = "could not read " + std::string(path) + ": " + std::strerror(errno);
        return MXString();
    };
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path, "re"), std::fclose);
    if (!file)
        return fail();
    std::setvbuf(file.get(), nullptr, _IOFBF, 1 << 18);
    MXString text;
    char piece[1024];
    while (std::fgets(piece, sizeof piece, file.get()))
        text.Append(piece);
    return std::ferror(file.get()) ? fail() : text;
}

} // namespace

MXDocument::MXDocument(const char* path) {
    MXString text = TextOfFile(path, openError);
    ParseString(text);
}

MXDocument::MXDocument(MXString doctypeName, MXString keyword, MXString literal)
    : declaration(
          std::make_unique<MXFragment>(MX_PROCESSING_INSTRUCTION, "xml", "version=\"1.0\"")),
      doctype(std::make_unique<MXDoctype>(std::move(doctypeName), std::move(keyword),
                                          std::move(literal))) {}

int32 MXDocument::ParseString(MXString& text) {
    status = ParseParts(text);
    return status;
}

int32 MXDocument::ParseParts(MXString& text) {
    while (text.Length() > 0) {
        auto part = std::make_unique<MXFragment>(MX_UNPARSED);
        const int32 partStatus = part->ParseString(text);
        if (partStatus == MX_DECLARATION) {
            auto type = std::make_unique<MXDoctype>();
            if (type->ParseString(text) != MX_OK)
                return MX_BAD_DOCUMENT;
            doctype = std::move(type);
        } else if (partStatus != MX_OK) {
            return partStatus;
        } else if (part->Type() == MX_ELEMENT) {
            root = std::move(part);
        } else if (part->Type() == MX_PROCESSING_INSTRUCTION && part->name == "xml") {
            declaration = std::move(part);
        } else {
            if (!misc.AddItem(part.get()))
                throw std::bad_alloc();
            static_cast<void>(part.release());
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
    text.Append(misc.AssembleString("", ""));
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
