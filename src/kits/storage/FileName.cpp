#include "kits/storage/FileName.h"

namespace kits {

namespace {

/// Bytes; what the file systems of Linux take (NAME_MAX).
constexpr std::size_t kLongestName = 255;

} // namespace

std::optional<std::string> FileNameFault(std::string_view name) {
    if (name.empty())
        return "Please enter a file name.";
    if (name.find('/') != std::string_view::npos)
        return "A file name cannot contain a slash (/).";
    if (name.find('\0') != std::string_view::npos)
        return "A file name cannot contain a zero character.";
    if (name == "." || name == "..")
        return std::string(name).append(" stands for a folder and cannot be a file name.");
    if (name.size() > kLongestName)
        return "The file name is too long: it takes " + std::to_string(name.size()) +
               " bytes, and at most " + std::to_string(kLongestName) + " are possible.";
    return std::nullopt;
}

} // namespace kits
