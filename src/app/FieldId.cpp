// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FieldId.h"

#include "app/MessageCodes.h"

namespace vexa {

namespace {

using Id = FunctionField;
using F = Function;
using FieldText = std::string;

constexpr FunctionFieldRow kFieldRows[] = {
    {Id::Expression, kExpressionCode, "Fxy", [](F& f) -> FieldText& { return f.expression; }},
    {Id::Width, kScaleCode, "Sc", [](F& f) -> FieldText& { return f.width; }},
    {Id::LinkFunctionX, kLinkFunctionXCode, "LFx",
     [](F& f) -> FieldText& { return f.linkFunction.x; }},
    {Id::LinkFunctionY, kLinkFunctionYCode, "LFy",
     [](F& f) -> FieldText& { return f.linkFunction.y; }},
    {Id::LinkScreenX, kLinkScreenXCode, "LSx", [](F& f) -> FieldText& { return f.linkScreen.x; }},
    {Id::LinkScreenY, kLinkScreenYCode, "LSy", [](F& f) -> FieldText& { return f.linkScreen.y; }},
    {Id::Frequency, kSampleFrequencyCode, "SFreq", [](F& f) -> FieldText& { return f.frequency; }},
};

consteval bool IdsAreInOrder() {
    for (std::size_t i = 0; i < std::size(kFieldRows); i++) {
        if (kFieldRows[i].id != static_cast<Id>(i))
            return false;
    }
    return std::size(kFieldRows) == kFunctionFields;
}
static_assert(IdsAreInOrder());

} // namespace

std::span<const FunctionFieldRow, kFunctionFields> FunctionFields() {
    return kFieldRows;
}

} // namespace vexa
