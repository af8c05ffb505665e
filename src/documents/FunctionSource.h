// From a function as a document holds it to the plane function that is heard.
#pragma once

#include "documents/Function.h"
#include "functions/FunctionSwitch.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/Result.h"

#include <filesystem>

namespace vexa {

/// The file that a sample function names: what does not begin with "/" lies in the folder
/// "samples", a person's own or the program's.
std::filesystem::path SamplePath(const Function& function, const kits::ProgramFolders& folders);

/// Compiles the expression or loads the sample, and installs it; on failure the function before
/// stays. The error, for a terminal, says all that is known: the alert, and the compiler's words or
/// the file's fault. For programs without a window; one thread.
kits::Result<void> InstallFunction(const Function& function, const kits::ProgramFolders& folders,
                                   FunctionSwitch& receivers);

} // namespace vexa
