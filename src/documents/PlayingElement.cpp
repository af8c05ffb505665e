// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/PlayingElement.h"

#include "kits/support/Quoted.h"

#include <algorithm>

namespace vexa {

namespace {

/// The members of SoundInfo in the order of kSoundInfoNames.
constexpr std::optional<std::string> SoundInfo::*kInfoTexts[] = {
    &SoundInfo::name, &SoundInfo::category, &SoundInfo::tags, &SoundInfo::comment};

/// Returns the text of the first child with that name; std::nullopt if there is none.
std::optional<std::string> ChildText(const MXFragment& parent, std::string_view name,
                                     Remarks& remarks) {
    const MXFragment* child = ChildNamed(parent, name);
    if (!child)
        return std::nullopt;
    std::string text;
    const ElementScope scope(child, {name}, remarks);
    if (scope.Find(name))
        scope.ReadText(name, text);
    return text;
}

void RemarkUnknown(const MXFragment& parent, std::string_view name, const std::string& expected,
                   const std::string& text, Remarks& remarks) {
    remarks.Add(ChildNamed(parent, name)->TextLeft(),
                Tag(name) + ": expected " + expected + ", found " +
                    (text.empty() ? "nothing" : kits::Quoted(text)) +
                    ", which counts as if it were not there");
}

} // namespace

std::unique_ptr<MXFragment> ConstructPlayingElement(const PlayingTexts& playing) {
    auto element = std::make_unique<MXFragment>(MX_ELEMENT, kPlaying);
    for (std::size_t i = 0; i < playing.texts.size(); i++) {
        if (playing.texts[i])
            element->Adopt(ConstructTextElement(PlayingRows()[i].name, *playing.texts[i]));
    }
    AdoptChildren(*element, playing.kept);
    return element;
}

PlayingTexts ReadPlaying(const MXFragment& element, Remarks& remarks) {
    PlayingTexts playing;
    std::vector<std::string_view> names;
    for (const PlayingRow& row : PlayingRows()) {
        std::optional<std::string>& text = playing.texts[names.size()];
        names.push_back(row.name);
        text = ChildText(element, row.name, remarks);
        if (text && !PlayingValue(row, *text))
            RemarkUnknown(element, row.name, row.allowed, *text, remarks);
    }
    TellUnreadChildren(element, names, remarks);
    playing.kept = ChildrenBut(element, names);
    return playing;
}

std::string InfoFault(std::string_view text) {
    const auto isForbidden = [](char c) {
        return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r';
    };
    if (std::any_of(text.begin(), text.end(), isForbidden))
        return "it contains a control character, which XML does not allow";
    if (text.size() > kLongestInfo)
        return "it is longer than " + std::to_string(kLongestInfo) + " bytes";
    return "";
}

void AdoptSoundInfo(MXFragment& element, const SoundInfo& info) {
    for (std::size_t i = 0; i < std::size(kInfoTexts); i++) {
        if (const auto& text = info.*kInfoTexts[i])
            element.Adopt(ConstructTextElement(kSoundInfoNames[i], *text));
    }
}

SoundInfo ReadSoundInfo(const MXFragment& element, Remarks& remarks) {
    SoundInfo info;
    for (std::size_t i = 0; i < std::size(kInfoTexts); i++)
        info.*kInfoTexts[i] = ChildText(element, kSoundInfoNames[i], remarks);
    const auto known = [&info] {
        return std::find(std::begin(kCategories), std::end(kCategories), *info.category) !=
               std::end(kCategories);
    };
    if (info.category && !known()) {
        std::string expected = "one of";
        for (const std::string_view category : kCategories)
            expected += (category == kCategories[0] ? " " : ", ") + std::string(category);
        RemarkUnknown(element, "category", expected, *info.category, remarks);
    }
    return info;
}

} // namespace vexa
