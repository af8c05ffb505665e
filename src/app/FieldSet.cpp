// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FieldSet.h"

#include "app/FieldNames.h"
#include "documents/NumberDoubt.h"
#include "kits/interface/Control.h"

namespace vexa {

void FieldSet::Add(BView& view, FieldId id, std::string_view name, std::string_view text,
                   uint32 code, BRect frame) {
    BTextControl*& field = fields[id.Index()];
    field = new BTextControl(frame, std::string(name).c_str(), nullptr, std::string(text).c_str(),
                             new BMessage(code), B_FOLLOW_LEFT | B_FOLLOW_TOP);
    field->SetAccessibleName(SpokenName(id));
    field->SetHelp(SpokenName(id));
    view.AddChild(field);
}

void FieldSet::Add(BView& view, FunctionField id, BRect frame) {
    const FunctionFieldRow& row = RowOf(id);
    Function initial;
    Add(view, id, row.name, row.text(initial), row.code, frame);
    if (id == FunctionField::Expression)
        return;
    const bool positive = id == FunctionField::Width || id == FunctionField::Frequency;
    MakeTurn(id, row.text(initial), {.least = positive ? 0.01 : -1e6});
}

void FieldSet::Add(BView& view, const Parameter& row, BRect frame) {
    Add(view, row.id, row.field, row.initialText, row.code, frame);
    if (row.controller)
        MakeTurn(row.id, row.initialText, {.least = 0, .most = 127, .whole = true});
    else
        MakeTurn(row.id, row.initialText, {});
}

/// Makes the wheel and the arrow keys step the field's number, and a click with Ctrl reset its
/// text.
void FieldSet::MakeTurn(FieldId id, std::string_view reset, const NumberRange& range) {
    BTextControl& field = (*this)[id];
    field.SetStepping([range](const std::string& text, int steps, uint32 modifiers) {
        return Stepped(text, steps, modifiers, range);
    });
    field.SetReset(reset);
}

std::string FieldSet::TextOf(FieldId id) const {
    return (*this)[id].Text();
}

bool FieldSet::Put(FieldId id, const std::string& text) {
    BTextControl& field = (*this)[id];
    if (field.Confirmed() == text && !field.IsEdited())
        return false;
    field.SetText(text.c_str());
    return true;
}

void FieldSet::MarkNumber(FieldId id, bool controller) {
    const std::string text = TextOf(id);
    const std::string doubt = id == FunctionField::Frequency ? FrequencyDoubt(text)
                              : id == FunctionField::Width   ? WidthDoubt(text)
                                                             : NumberDoubt(text, controller);
    (*this)[id].MarkWrong(!doubt.empty());
    (*this)[id].SetToolTip(doubt.c_str());
}

uint64 FieldSet::Changes() const {
    uint64 changes = 0;
    for (const BTextControl* field : fields)
        changes += field->Changes();
    return changes;
}

} // namespace vexa
