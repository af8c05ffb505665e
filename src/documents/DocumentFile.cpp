// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/DocumentFile.h"

#include "kits/storage/NodeInfo.h"
#include "kits/support/Quoted.h"
#include "xml/MXStatus.h"

#include <algorithm>
#include <cstdlib>

namespace vexa {

namespace {

/// The version that is written into documents.
constexpr const char* kVersion = "0.2.0 beta";
constexpr std::string_view kKnownInInfo[] = {"vexaversion", "author"};
/// The reference in the doctype, which the reader ignores.
constexpr const char* kDoctypeKeyword = "SYSTEM";
constexpr const char* kDoctypeLocation = "vexa.dtd";
/// The indentation of each level.
constexpr const char* kIndentation = "  ";

/// Returns the numbers at the beginning of a version, which periods separate; further text is
/// ignored.
std::vector<long> VersionNumbers(const std::string& version) {
    std::vector<long> numbers;
    const char* at = version.c_str();
    for (char* end = nullptr; *at >= '0' && *at <= '9'; at = *end == '.' ? end + 1 : "")
        numbers.push_back(std::strtol(at, &end, 10));
    return numbers;
}

/// Returns the error for a text without a root element.
kits::Error NoRoot(const std::filesystem::path& path, const LoadedDocument& loaded) {
    const std::string_view text = loaded.text;
    const std::string file = path.string();
    if (text.empty())
        return kits::At({file}, {"expected a root element, found nothing"});
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"))
        return kits::At({file}, {"expected a text in UTF-8, found UTF-16"});
    const MXDocument& document = loaded.document;
    if (document.Status() != MX_OK)
        return kits::At(PlaceOf(file, text, document.FaultLeft()), {StatusText(document.Status())});
    return kits::At({file, 1, 1}, {"expected a root element, found none"});
}

/// Returns the error with the window's alert for a document that cannot be loaded.
kits::Error NotLoaded(const std::filesystem::path& path, kits::Error fault) {
    fault.alerts = {"Could not load \n" + path.string()};
    return fault;
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

void InterpretInfoElement(const MXFragment* info, std::string& author, KeptElements& kept,
                          Remarks& remarks, std::span<const std::string_view> more) {
    std::vector<std::string_view> names{std::begin(kKnownInInfo), std::end(kKnownInInfo)};
    const ElementScope scope(info, names, remarks);
    scope.ReadText("author", author);
    names.insert(names.end(), more.begin(), more.end());
    kept.info = info ? ChildrenBut(*info, names) : "";
    if (info) {
        names.assign(std::begin(kKnownInInfo), std::end(kKnownInInfo));
        names.insert(names.end(), std::begin(kSoundInfoNames), std::end(kSoundInfoNames));
        TellUnreadChildren(*info, names, remarks);
    }
    const MXFragment* element = scope.Find("vexaversion");
    if (!element)
        return;
    const std::string version(std::string_view(element->GetContainedText()));
    if (VersionNumbers(version) > VersionNumbers(kVersion))
        remarks.Add(element->TextLeft(),
                    "saved by Vexa " + kits::Shown(version) + ", which is newer than " + kVersion +
                        "; what this version does not know is kept, but not heard");
}

std::string ChildrenBut(const MXFragment& parent, std::span<const std::string_view> known) {
    MXString elements;
    for (const auto& child : parent.children) {
        if (IsElement(*child) &&
            std::find(known.begin(), known.end(), std::string_view(child->name)) == known.end())
            child->AppendTo(elements);
    }
    return std::string(std::string_view(elements));
}

void AdoptChildren(MXFragment& parent, const std::string& elements) {
    MXString text{std::string_view(elements)};
    while (text.Length() > 0) {
        auto child = std::make_unique<MXFragment>(MX_UNPARSED);
        if (child->ParseString(text) != MX_OK)
            return;
        parent.Adopt(std::move(child));
    }
}

std::unique_ptr<MXFragment> ConstructTextElement(std::string_view name, std::string_view text) {
    return std::make_unique<MXFragment>(MXString(name), MXString(text));
}

kits::Result<LoadedDocument> LoadDocument(const std::filesystem::path& path, Remarks& remarks) {
    kits::Result<MXString> text = ReadDocumentText(path);
    if (!text)
        return NotLoaded(path, text.Fault());
    MXString unread = *text;
    LoadedDocument loaded{*std::move(text), MXDocument(unread, &remarks)};
    if (!loaded.document.root)
        return NotLoaded(path, NoRoot(path, loaded));
    return loaded;
}

kits::Error TooLarge(const std::filesystem::path& path) {
    return NotLoaded(path, kits::At({path.string()}, {"there is not enough memory"}));
}

kits::Error Refusal(const char* alert, const std::string& expected) {
    return {alert + (" " + expected), {alert}};
}

kits::Result<void> SaveDocument(const std::filesystem::path& path, MXDocument& document,
                                const char* fileType) {
    if (document.WriteFile(path.c_str(), kIndentation) != 0)
        return kits::Error{document.WriteError(), {"Could not save \n" + path.string()}};
    BNode node(path.c_str());
    BNodeInfo(&node).SetType(fileType);
    return {};
}

} // namespace vexa
