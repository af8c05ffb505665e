// The whole of a file at once.
#pragma once

#include "kits/support/Result.h"

#include <filesystem>
#include <string>

namespace kits {

/// The bytes of the regular file at `path`, links followed. The error names the path and the
/// system's reason.
Result<std::string> ReadFile(const std::filesystem::path& path);

} // namespace kits
