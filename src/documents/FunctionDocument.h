// The function document: a Function as an XML tree and as a file.
#pragma once

#include "documents/DocumentFile.h"
#include "documents/Function.h"

namespace vexa {

/// The alert for a document that has no function.
constexpr const char* kInvalidFunction = "This is not a valid function.";

/// The elements of the two kinds of functions.
constexpr const char* kExpressionFunction = "vexafunction";
constexpr const char* kSampleFunction = "vexasamplefunction";

const char* RootName(const Function& function);
std::unique_ptr<MXFragment> ConstructFunctionElement(const Function& function);

/// Takes the texts of a function element over. What the element lacks stays as it is in `function`
/// and is a warning. The error, for an element of neither kind, is kInvalidFunction; nothing is
/// changed then.
kits::Result<void> InterpretFunction(const MXFragment& root, Function& function,
                                     Warnings& warnings);

/// The function at `path`, `startFrom` for what it lacks. The error is the text for the window's
/// alert; see ReadReport for the terminal's.
kits::Result<Function> ReadFunction(const std::filesystem::path& path, const Function& startFrom,
                                    ReadReport& report);

/// The error names the path and the reason.
kits::Result<void> WriteFunction(const std::filesystem::path& path, const Function& function);

} // namespace vexa
