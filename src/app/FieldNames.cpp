// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FieldNames.h"

#include <string_view>
#include <utility>

namespace vexa {

namespace {

using Words = std::pair<std::string_view, const char*>;

/// By the names of documents, which are those of the tables.
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

const char* NameOf(FunctionField field) {
    switch (field) {
    case FunctionField::Expression:
        return "formula f(x, y)";
    case FunctionField::Width:
        return "width of the shown plane";
    case FunctionField::LinkFunctionX:
        return "shown point of the plane, x";
    case FunctionField::LinkFunctionY:
        return "shown point of the plane, y";
    case FunctionField::LinkScreenX:
        return "its place in the picture, from the left";
    case FunctionField::LinkScreenY:
        return "its place in the picture, from the bottom";
    case FunctionField::Frequency:
        return "frequency of the sample, hertz";
    }
    return "";
}

} // namespace

std::string SpokenName(FieldId id) {
    for (const Parameter& row : Parameters()) {
        if (id == FieldId(row.id))
            return std::string(WordsFor(kGroups, row.group)) + ", " +
                   WordsFor(kElements, row.element);
    }
    for (const FunctionFieldRow& row : FunctionFields()) {
        if (id == FieldId(row.id))
            return NameOf(row.id);
    }
    return "";
}

std::string SpokenEnvelopeName(std::size_t envelope) {
    return std::string("envelope of ") + WordsFor(kGroups, EnvelopePlaces()[envelope].group);
}

} // namespace vexa
