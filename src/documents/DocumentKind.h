// What a file is that somebody wants to open.
#pragma once

#include <filesystem>

namespace vexa {

enum class DocumentKind { Sound, Function, Sample };

/// By the file's type or else its root element; what is no XML is taken for a sample, and so is
/// what cannot be read. Any thread.
DocumentKind KindOf(const std::filesystem::path& path);

/// The types of the files that documents are saved in.
constexpr const char* kSoundFileType = "text/orvo-Vexa-sound";
constexpr const char* kFunctionFileType = "text/orvo-Vexa-function";

} // namespace vexa
