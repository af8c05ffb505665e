// SPDX-License-Identifier: GPL-3.0-or-later
// Finding out what a file is that somebody wants to open.
#pragma once

#include <filesystem>

namespace vexa {

/// What a file is opened as.
enum class DocumentKind { Sound, Function, Sample, Picture };

/// Tells what a file is by its content: XML by its root element, a picture by its first bytes, and
/// what else there is in a file is taken for a sample. The file's type counts only where the
/// content tells nothing: for an XML text with a root element of another program or none, and for
/// what is neither XML nor a sound file. What is empty or in UTF-16, is no regular file, or cannot
/// be read is a document where its name ends in ".xml". Whoever loads the file says what is wrong
/// with it. Throws nothing, whatever the file. Any thread.
DocumentKind KindOf(const std::filesystem::path& path);

/// The types of the files that documents are saved in.
constexpr const char* kSoundFileType = "text/orvo-Vexa-sound";
constexpr const char* kFunctionFileType = "text/orvo-Vexa-function";

} // namespace vexa
