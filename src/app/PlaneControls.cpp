// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PlaneControls.h"

#include "app/FieldSet.h"
#include "documents/NumberDoubt.h"
#include "instrument/History.h"
#include "kits/interface/Control.h"
#include "kits/support/NumberText.h"
#include "views/R2RFView.h"

#include <cmath>
#include <optional>
#include <string>

namespace vexa {

namespace {

/// The width in pixels of the plane's view, which shows the display width.
constexpr float kPlaneWidth = 300.0F;

constexpr struct {
    FunctionField field;
    void (R2RFView::*set)(float);
} kPlaneControls[] = {
    {FunctionField::Width, &R2RFView::SetScale},
    {FunctionField::LinkFunctionX, &R2RFView::SetLinkFunctionX},
    {FunctionField::LinkFunctionY, &R2RFView::SetLinkFunctionY},
    {FunctionField::LinkScreenX, &R2RFView::SetLinkScreenX},
    {FunctionField::LinkScreenY, &R2RFView::SetLinkScreenY},
};

/// Returns what the text sets in the plane's view; nothing if it changes nothing there.
std::optional<float> SettingIn(FunctionField field, const std::string& text) {
    if (field == FunctionField::Width) {
        const std::optional<float> width = WidthIn(text);
        return width ? std::optional(*width / kPlaneWidth) : std::nullopt;
    }
    const auto number = static_cast<float>(kits::NumberOf(text));
    return std::isnan(number) ? std::nullopt : std::optional(number);
}

} // namespace

bool PlaneControls::Take(uint32 code) {
    for (const auto& control : kPlaneControls) {
        if (RowOf(control.field).code != code)
            continue;
        fields.MarkNumber(control.field);
        if (const auto setting = SettingIn(control.field, fields.TextOf(control.field)))
            (plane.*control.set)(*setting);
        return true;
    }
    return false;
}

void PlaneControls::Put(Function function) {
    for (const auto& control : kPlaneControls) {
        const FunctionFieldRow& row = RowOf(control.field);
        if (fields.Put(row.id, row.text(function)))
            Take(row.code);
    }
}

void PlaneControls::Restore(const History& steps) {
    for (const auto& control : kPlaneControls) {
        if (SettingIn(control.field, fields.TextOf(control.field)))
            continue;
        for (Function function : steps.Functions()) {
            const auto setting = SettingIn(control.field, RowOf(control.field).text(function));
            if (!setting)
                continue;
            (plane.*control.set)(*setting);
            break;
        }
    }
}

void PlaneControls::GetConfirmed(Function& function) const {
    for (const auto& control : kPlaneControls)
        RowOf(control.field).text(function) = fields[control.field].Confirmed();
}

} // namespace vexa
