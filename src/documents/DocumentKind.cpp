// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/DocumentKind.h"

#include "documents/FunctionDocument.h"
#include "documents/SoundDocument.h"
#include "kits/media/MediaFile.h"
#include "kits/pictures/PictureFile.h"
#include "kits/storage/NodeInfo.h"
#include "kits/storage/ReadFile.h"

#include <algorithm>
#include <array>
#include <new>
#include <optional>
#include <string_view>

#include <unistd.h>

namespace vexa {

namespace {

/// The content at the beginning of a file. Only the first bytes are read, so that a long sample is
/// not read as a text.
enum class Beginning { Nothing, Xml, OtherText, Picture, Other };

Beginning BeginningOf(const std::filesystem::path& path) {
    const kits::Result<kits::Descriptor> file = kits::OpenRegularFile(path);
    std::array<char, 4096> bytes;
    const ssize_t count = file ? ::read(file->Number(), bytes.data(), bytes.size()) : 0;
    std::string_view text(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (kits::IsPicture(text))
        return Beginning::Picture;
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"))
        return Beginning::OtherText;
    // The byte order mark that some editors put at the front of a UTF-8 text.
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.empty())
        return Beginning::Nothing;
    // UTF-16 without a byte order mark has a zero byte beside each ASCII character.
    if (text.starts_with(std::string_view("<\0", 2)) ||
        text.starts_with(std::string_view("\0<", 2)))
        return Beginning::OtherText;
    return text.front() == '<' ? Beginning::Xml : Beginning::Other;
}

std::optional<DocumentKind> KindByRoot(const std::filesystem::path& path) {
    Remarks unheard;
    const auto loaded = LoadDocument(path, unheard);
    const std::string_view root = loaded ? std::string_view(loaded->document.root->name) : "";
    if (root == kSoundElement)
        return DocumentKind::Sound;
    return FunctionElementNamed(root) ? std::optional(DocumentKind::Function) : std::nullopt;
}

std::optional<DocumentKind> KindByType(const std::filesystem::path& path) {
    BNode node(path.c_str());
    char type[B_MIME_TYPE_LENGTH] = "";
    BNodeInfo(&node).GetType(type);
    if (std::string_view(type) == kSoundFileType)
        return DocumentKind::Sound;
    if (std::string_view(type) == kFunctionFileType)
        return DocumentKind::Function;
    return std::nullopt;
}

bool IsSoundFile(const std::filesystem::path& path) {
    entry_ref ref;
    return get_ref_for_path(path.c_str(), &ref) == B_OK && BMediaFile(&ref).InitCheck() == B_OK;
}

DocumentKind KindByContent(const std::filesystem::path& path) {
    // XML of unknown kind counts as a function, whose reader refuses it and gives the reason.
    switch (BeginningOf(path)) {
    case Beginning::Xml:
        if (const auto kind = KindByRoot(path))
            return *kind;
        return KindByType(path).value_or(DocumentKind::Function);
    case Beginning::Picture:
        return DocumentKind::Picture;
    case Beginning::Other: {
        const auto kind = KindByType(path);
        return kind && !IsSoundFile(path) ? *kind : DocumentKind::Sample;
    }
    case Beginning::OtherText:
    case Beginning::Nothing:
        break;
    }
    const bool isNamedXml = path.extension() == ".xml" || path.extension() == ".XML";
    return KindByType(path).value_or(isNamedXml ? DocumentKind::Function : DocumentKind::Sample);
}

} // namespace

bool IsOfAKind(const std::filesystem::path& path) try {
    switch (BeginningOf(path)) {
    case Beginning::Xml:
        return KindByRoot(path).has_value();
    case Beginning::Picture:
        return true;
    case Beginning::Other:
        return IsSoundFile(path);
    case Beginning::OtherText:
    case Beginning::Nothing:
        break;
    }
    return false;
} catch (const std::bad_alloc&) {
    return true;
}

DocumentKind KindOf(const std::filesystem::path& path) {
    try {
        return KindByContent(path);
    } catch (const std::bad_alloc&) {
        // Only XML is read as a whole here. The document's reader will report the lack of memory.
        return DocumentKind::Function;
    }
}

} // namespace vexa
