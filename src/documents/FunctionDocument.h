// SPDX-License-Identifier: GPL-3.0-or-later
// The function document: a Function as an XML tree and as a file.
#pragma once

#include "documents/DocumentFile.h"
#include "documents/Function.h"

namespace vexa {

/// The alert for a document without a function.
constexpr const char* kInvalidFunction = "This is not a valid function.";

/// The name of the element for each kind of function. If a sound has elements of several kinds, the
/// first kind in this order is read.
struct FunctionElement {
    FunctionKind kind;
    const char* name;
};
constexpr FunctionElement kFunctionElements[] = {{FunctionKind::Expression, "vexafunction"},
                                                 {FunctionKind::Sample, "vexasamplefunction"},
                                                 {FunctionKind::Picture, "vexapicturefunction"}};
/// Returns the row with that name; null if no function element has it.
const FunctionElement* FunctionElementNamed(std::string_view name);
/// Returns these names as tags, for a message that one of them was expected.
std::string FunctionTags();

/// Returns the name of the element for the function's kind.
const char* RootName(const Function& function);
/// Makes the element of the whole function, including the unknown elements that were kept.
std::unique_ptr<MXFragment> ConstructFunctionElement(const Function& function);

/// Reads the texts and the unknown elements of a function element into `function`. A missing
/// element leaves its texts in `function` unchanged and adds a remark; a missing macro text gets
/// its initial value without a remark. A text that should be a number and is not adds a remark. An
/// element that is not one of kFunctionElements is refused with kInvalidFunction, and `function`
/// remains unchanged.
kits::Result<void> InterpretFunction(const MXFragment& root, Function& function, Remarks& remarks);

/// Reads the function at `path`. Texts that it lacks are taken from `startFrom`. `warnings` is that
/// of ReadValue. Any thread.
kits::Result<Function> ReadFunction(const std::filesystem::path& path, const Function& startFrom,
                                    Warnings* warnings = nullptr);

/// Writes the function as the document at `path`; an error leaves the file unchanged. Any thread.
kits::Result<void> WriteFunction(const std::filesystem::path& path, const Function& function);

} // namespace vexa
