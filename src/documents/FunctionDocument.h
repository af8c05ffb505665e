// SPDX-License-Identifier: GPL-3.0-or-later
// The function document: a Function as an XML tree and as a file.
#pragma once

#include "documents/DocumentFile.h"
#include "documents/Function.h"

namespace vexa {

/// The alert for a document that has no function.
constexpr const char* kInvalidFunction = "This is not a valid function.";

/// The element of each kind of functions, in the order in which a sound that has several of them is
/// looked through.
struct FunctionElement {
    FunctionKind kind;
    const char* name;
};
constexpr FunctionElement kFunctionElements[] = {{FunctionKind::Expression, "vexafunction"},
                                                 {FunctionKind::Sample, "vexasamplefunction"},
                                                 {FunctionKind::Picture, "vexapicturefunction"}};
/// Returns their names as tags, for a message that one of them was expected.
std::string FunctionTags();

/// Returns the name of the element for the function's kind.
const char* RootName(const Function& function);
/// Makes the element that holds the whole function, and what was kept of the document it came from.
std::unique_ptr<MXFragment> ConstructFunctionElement(const Function& function);

/// Takes the texts of a function element over, and what else is kept of it. What the element lacks
/// stays as it is in `function` and is a remark, and so is a text that is not the number that it
/// should be. An element of no kind is refused, with kInvalidFunction; nothing is changed
/// then.
kits::Result<void> InterpretFunction(const MXFragment& root, Function& function, Remarks& remarks);

/// Reads the function at `path`, `startFrom` for what it lacks. What is to be said about a function
/// that is taken replaces `warnings`, where there are any. Any thread.
kits::Result<Function> ReadFunction(const std::filesystem::path& path, const Function& startFrom,
                                    Warnings* warnings = nullptr);

/// Writes the function as the document at `path`, or leaves the file as it was. Any thread.
kits::Result<void> WriteFunction(const std::filesystem::path& path, const Function& function);

} // namespace vexa
