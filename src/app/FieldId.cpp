// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FieldId.h"

#include "app/MessageCodes.h"

namespace vexa {

namespace {

using Id = FunctionField;
using F = Function;
using Text = std::string;

constexpr FunctionFieldRow kRows[] = {
    {Id::Expression, kExpressionCode, "Fxy", [](F& f) -> Text& { return f.expression; }},
    {Id::Width, kScaleCode, "Sc", [](F& f) -> Text& { return f.width; }},
    {Id::LinkFunctionX, kLinkFunctionXCode, "LFx", [](F& f) -> Text& { return f.linkFunction.x; }},
    {Id::LinkFunctionY, kLinkFunctionYCode, "LFy", [](F& f) -> Text& { return f.linkFunction.y; }},
    {Id::LinkScreenX, kLinkScreenXCode, "LSx", [](F& f) -> Text& { return f.linkScreen.x; }},
    {Id::LinkScreenY, kLinkScreenYCode, "LSy", [](F& f) -> Text& { return f.linkScreen.y; }},
    {Id::Frequency, kSampleFrequencyCode, "SFreq", [](F& f) -> Text& { return f.frequency; }},
};

consteval bool IdsAreInOrder() {
    for (std::size_t i = 0; i < std::size(kRows); i++) {
        if (kRows[i].id != static_cast<Id>(i))
            return false;
    }
    return std::size(kRows) == kFunctionFields;
}
static_assert(IdsAreInOrder());

} // namespace

std::span<const FunctionFieldRow, kFunctionFields> FunctionFields() {
    return kRows;
}

} // namespace vexa
