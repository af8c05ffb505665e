// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/SoundParts.h"

#include <string_view>
#include <utility>
#include <vector>

namespace vexa {

namespace {

using Words = std::pair<std::string_view, const char*>;

/// Words by the element names of documents, which ParameterTable uses too.
constexpr Words kGroups[] = {
    {"dcxdt", "drift of centre x"},
    {"dcydt", "drift of centre y"},
    {"ax", "radius x"},
    {"ay", "radius y"},
    {"cx0", "start of centre x"},
    {"cy0", "start of centre y"},
    {"fx", "turns in x"},
    {"fy", "turns in y"},
};
constexpr Words kElements[] = {
    {"env", "times the envelope"},
    {"one", "for every note"},
    {"vel", "velocity"},
    {"key", "key"},
    {"ctl", "controller"},
    {"ctlnum", "number of the controller"},
    {"", "per period of the note"},
};

template<std::size_t N>
const char* WordsFor(const Words (&table)[N], std::string_view name) {
    for (const auto& [known, words] : table) {
        if (known == name)
            return words;
    }
    return "";
}

/// The names of the parts that differ, in order.
using Names = std::vector<std::string>;

void AddFunction(const Function& from, const Function& to, Names& names) {
    if (!HaveOneSource(from, to))
        names.emplace_back(to.kind == FunctionKind::Expression ? "formula"
                           : to.kind == FunctionKind::Sample   ? "sample"
                                                               : "picture");
    if (to.kind == FunctionKind::Sample && from.frequency != to.frequency)
        names.emplace_back("sample frequency");
    if (from.width != to.width || from.linkFunction != to.linkFunction ||
        from.linkScreen != to.linkScreen)
        names.emplace_back("view of the plane");
    for (std::size_t i = 0; i < kMacros; i++) {
        const std::string letter(1, static_cast<char>('a' + i));
        if (from.macros[i].value != to.macros[i].value)
            names.push_back("macro " + letter);
        if (from.macros[i].controller != to.macros[i].controller)
            names.push_back("controller of macro " + letter);
    }
}

void AddPlaying(const Sound& from, const Sound& to, Names& names) {
    if (!from.playing || !to.playing || from.playing->kept != to.playing->kept) {
        if (from.playing != to.playing)
            names.emplace_back("playing");
        return;
    }
    for (std::size_t i = 0; i < PlayingRows().size(); i++) {
        if (from.playing->texts[i] != to.playing->texts[i])
            names.emplace_back(PlayingRows()[i].name);
    }
}

} // namespace

std::string NameOf(const Parameter& row) {
    return std::string(WordsFor(kGroups, row.group)) + ", " + WordsFor(kElements, row.element);
}

std::string NameOfEnvelope(std::size_t envelope) {
    return std::string("envelope of ") + WordsFor(kGroups, EnvelopePlaces()[envelope].group);
}

std::string Difference(const Sound& from, const Sound& to) {
    Names names;
    AddFunction(from.function, to.function, names);
    for (std::size_t i = 0; i < Parameters().size(); i++) {
        if (from.texts[i] != to.texts[i])
            names.push_back(NameOf(Parameters()[i]));
    }
    for (std::size_t i = 0; i < EnvelopePlaces().size(); i++) {
        if (from.envelopes[i] != to.envelopes[i])
            names.push_back(NameOfEnvelope(i));
    }
    AddPlaying(from, to, names);
    if (names.size() > 2)
        return "several parts";
    if (!names.empty())
        return names.size() == 1 ? names[0] : names[0] + " and " + names[1];
    if (from.info != to.info)
        return "description";
    // The remaining differences are in the authors, in unknown elements of the documents, and in
    // texts that a function of this kind does not use.
    return from == to ? "" : "author";
}

bool AreAlike(Sound a, const Sound& b) {
    a.author = b.author;
    a.function.author = b.function.author;
    if (a.function.kind != FunctionKind::Expression)
        a.function.expression = b.function.expression;
    if (a.function.kind != FunctionKind::Sample) {
        a.function.sampleFile = b.function.sampleFile;
        a.function.frequency = b.function.frequency;
    }
    if (a.function.kind != FunctionKind::Picture)
        a.function.pictureFile = b.function.pictureFile;
    return a == b;
}

} // namespace vexa
