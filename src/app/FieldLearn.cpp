// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FieldLearn.h"

#include "app/FieldSet.h"
#include "kits/interface/Control.h"
#include "synth/ParameterTable.h"

#include <algorithm>
#include <string>

namespace vexa {

void FieldLearn::Pulse(FieldSet& fields, const ControllerTable& controllers) {
    const auto focused = std::ranges::find_if(Parameters(), [&fields](const Parameter& row) {
        return row.controller && fields[row.id].IsFocus();
    });
    if (focused == Parameters().end()) {
        learning.reset();
        return;
    }
    if (!learning || learning->field != FieldId(focused->id))
        learning = Learning{focused->id, ControllerLearn(controllers)};
    const std::optional<int> moved = learning->from.Moved();
    if (!moved)
        return;
    learning.reset();
    BTextControl& field = fields[focused->id];
    const std::string number = std::to_string(*moved);
    if (number == field.Text())
        return;
    field.Type(number.c_str());
    field.Confirm();
}

} // namespace vexa
