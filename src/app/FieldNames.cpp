// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FieldNames.h"

#include "instrument/SoundParts.h"

namespace vexa {

namespace {

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
            return NameOf(row);
    }
    for (const FunctionFieldRow& row : FunctionFields()) {
        if (id == FieldId(row.id))
            return NameOf(row.id);
    }
    return "";
}

} // namespace vexa
