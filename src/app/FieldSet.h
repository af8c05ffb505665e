// SPDX-License-Identifier: GPL-3.0-or-later
// The text fields of the main view.
#pragma once

#include "app/FieldId.h"
#include "app/NumberStep.h"
#include "kits/support/Geometry.h"
#include "kits/support/SupportDefs.h"

#include <array>
#include <string>
#include <string_view>

class BTextControl;
class BView;

namespace vexa {

/// The fields, which a view owns as its children. Window thread.
class FieldSet {
  public:
    /// Add a field to the view, with the initial text of a new window.
    void Add(BView& view, FunctionField id, BRect frame);
    void Add(BView& view, const Parameter& row, BRect frame);

    /// Access the fields. All must have been added.
    BTextControl& operator[](FieldId id) const { return *fields[id.Index()]; }
    auto begin() const { return fields.begin(); }
    auto end() const { return fields.end(); }

    std::string TextOf(FieldId id) const;
    /// Puts the text into the field as confirmed. Returns false if it is there already.
    bool Put(FieldId id, const std::string& text);
    /// Marks a field of a number if its text is not used completely; its tool tip says what was
    /// understood. `controller` says that the number is one of a controller.
    void MarkNumber(FieldId id, bool controller = false);
    /// Counts the changes of all fields.
    uint64 Changes() const;

  private:
    void Add(BView& view, FieldId id, std::string_view name, std::string_view text, uint32 code,
             BRect frame);
    void MakeTurn(FieldId id, std::string_view reset, const NumberRange& range);

    std::array<BTextControl*, FieldId::kCount> fields{};
};

} // namespace vexa
