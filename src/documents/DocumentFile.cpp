#include "documents/DocumentFile.h"

#include "kits/storage/NodeInfo.h"
#include "xml/MXStatus.h"

namespace vexa {

namespace {

/// The version that documents name; readers do not look at it.
constexpr const char* kVersion = "0.2.0 beta";
/// What the doctype refers to; readers do not look at it.
constexpr const char* kDoctypeKeyword = "SYSTEM";
constexpr const char* kDoctypeLocation = "vexa.dtd";
/// The indentation of each level.
constexpr const char* kIndentation = "  ";

kits::Error NotLoaded(const std::filesystem::path& path) {
    return {"Could not load \n" + path.string()};
}

} // namespace

MXDocument ConstructDocumentTemplate(const std::string& rootName) {
    return {MXString(std::string_view(rootName)), kDoctypeKeyword, kDoctypeLocation};
}

std::unique_ptr<MXFragment> ConstructInfoElement(const std::string& author) {
    auto info = std::make_unique<MXFragment>(MX_ELEMENT, "info");
    info->Adopt(ConstructTextElement("vexaversion", kVersion));
    info->Adopt(ConstructTextElement("author", author));
    return info;
}

std::unique_ptr<MXFragment> ConstructTextElement(std::string_view name, std::string_view text) {
    return std::make_unique<MXFragment>(MXString(name), MXString(text));
}

kits::Result<MXDocument> LoadDocument(const std::filesystem::path& path, ReadReport& report) {
    report = {};
    MXDocument document(path.c_str());
    const bool isMalformed = document.Status() != MX_OK;
    if (!document.root) {
        if (!document.OpenError().empty())
            report.reason = document.OpenError();
        else if (isMalformed)
            report.reason = path.string() + ": " + StatusText(document.Status());
        else
            report.reason = path.string() + ": no root element";
        return NotLoaded(path);
    }
    if (isMalformed)
        report.warnings.push_back("reading ended at " + std::string(StatusText(document.Status())));
    return document;
}

kits::Error TooLarge(const std::filesystem::path& path, ReadReport& report) {
    report = {path.string() + ": there is not enough memory", {}};
    return NotLoaded(path);
}

kits::Result<void> SaveDocument(const std::filesystem::path& path, MXDocument& document,
                                const char* fileType) {
    if (document.WriteFile(path.c_str(), kIndentation) != 0)
        return kits::Error{document.WriteError()};
    BNode node(path.c_str());
    BNodeInfo(&node).SetType(fileType);
    return {};
}

} // namespace vexa
