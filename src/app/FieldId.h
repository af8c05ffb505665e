// SPDX-License-Identifier: GPL-3.0-or-later
// Handles for the text fields of the main view.
#pragma once

#include "documents/Function.h"
#include "kits/support/SupportDefs.h"
#include "synth/ParameterTable.h"

#include <cstddef>
#include <span>
#include <string>

namespace vexa {

/// The fields that hold the texts of a Function.
enum class FunctionField : unsigned char {
    Expression,
    Width,
    LinkFunctionX,
    LinkFunctionY,
    LinkScreenX,
    LinkScreenY,
    Frequency,
};
constexpr std::size_t kFunctionFields = static_cast<std::size_t>(FunctionField::Frequency) + 1;

/// The handle of a text field, either of a coefficient or of the function.
class FieldId {
  public:
    constexpr FieldId(ParameterId id) : index(static_cast<std::size_t>(id)) {}
    constexpr FieldId(FunctionField field) : index(kParameters + static_cast<std::size_t>(field)) {}

    static constexpr std::size_t kCount = kParameters + kFunctionFields;
    /// Returns a number from 0 to kCount - 1.
    constexpr std::size_t Index() const { return index; }
    constexpr bool operator==(const FieldId&) const = default;

  private:
    std::size_t index;
};

/// The properties of one of the function's fields.
struct FunctionFieldRow {
    FunctionField id;
    /// The code of the field's message.
    uint32 code;
    /// The name of the view.
    const char* name;
    /// Returns the text of the function that the field shows.
    std::string& (*text)(Function& function);
};

/// Returns the rows in the order of the enumeration.
std::span<const FunctionFieldRow, kFunctionFields> FunctionFields();
inline const FunctionFieldRow& RowOf(FunctionField id) {
    return FunctionFields()[static_cast<std::size_t>(id)];
}

} // namespace vexa
