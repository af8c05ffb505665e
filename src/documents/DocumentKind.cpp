#include "documents/DocumentKind.h"

#include "documents/DocumentFile.h"
#include "kits/storage/NodeInfo.h"

#include <fstream>
#include <string_view>

namespace vexa {

namespace {

/// Whether the file begins as XML does, so that a sample of any length is not read as text.
bool BeginsAsXml(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    // The mark that some editors put before a text in UTF-8.
    if (file.peek() == 0xEF)
        file.ignore(3);
    file >> std::ws;
    return file.peek() == '<';
}

} // namespace

DocumentKind KindOf(const std::filesystem::path& path) {
    BNode node(path.c_str());
    char type[B_MIME_TYPE_LENGTH] = "";
    BNodeInfo(&node).GetType(type);
    if (std::string_view(type) == kSoundFileType)
        return DocumentKind::Sound;
    if (std::string_view(type) == kFunctionFileType)
        return DocumentKind::Function;
    if (!BeginsAsXml(path))
        return DocumentKind::Sample;
    ReadReport ignored;
    const kits::Result<MXDocument> document = LoadDocument(path, ignored);
    // What is neither is refused, with the reason, by whoever reads it as a function.
    return document && document->root->name == "vexasound" ? DocumentKind::Sound
                                                           : DocumentKind::Function;
}

} // namespace vexa
