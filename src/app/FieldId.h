// SPDX-License-Identifier: GPL-3.0-or-later
// The text fields of the main view by handle.
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

/// The handle of any text field: that of a coefficient or of the function.
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

/// The record of what the main view knows of a function's field.
struct FunctionFieldRow {
    FunctionField id;
    /// The message that it sends.
    uint32 code;
    /// The name of the view.
    const char* name;
    /// The text of a function that it holds.
    std::string& (*text)(Function& function);
};

/// Returns the rows in the order of the enumeration.
std::span<const FunctionFieldRow, kFunctionFields> FunctionFields();
inline const FunctionFieldRow& RowOf(FunctionField id) {
    return FunctionFields()[static_cast<std::size_t>(id)];
}

} // namespace vexa
