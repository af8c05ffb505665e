// Which texts can be the name of a file.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kits {

/// Why no file can have that name, as a sentence for the person who chose it; none where one can.
/// Any thread.
std::optional<std::string> FileNameFault(std::string_view name);

} // namespace kits
