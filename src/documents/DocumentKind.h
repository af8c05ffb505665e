// SPDX-License-Identifier: GPL-3.0-or-later
// Detects the kind of a file that is to be opened.
#pragma once

#include <filesystem>

namespace vexa {

/// The ways in which a file can be opened.
enum class DocumentKind { Sound, Function, Sample, Picture };

/// Returns the kind of a file by its content: XML by its root element, a picture by its first
/// bytes, anything else is a sample. The file's MIME type decides only where the content does not:
/// - XML with an unknown root element or none; without a type of Vexa it is a function;
/// - content that is neither XML nor a picture nor a sound file; without a type it is a sample;
/// - a file that is blank, in UTF-16, not regular or unreadable; without a type it is a function if
///   its name ends in ".xml", else a sample.
///
/// The code that loads the file reports its faults. Throws nothing. Any thread.
DocumentKind KindOf(const std::filesystem::path& path);

/// Returns whether the content itself is of one of the kinds, so far as its beginning tells. Only
/// such a file can be opened. A document for which there is not enough memory counts as one. Throws
/// nothing. Any thread.
bool IsOfAKind(const std::filesystem::path& path);

/// The MIME types of the files of saved documents.
constexpr const char* kSoundFileType = "text/orvo-Vexa-sound";
constexpr const char* kFunctionFileType = "text/orvo-Vexa-function";

} // namespace vexa
