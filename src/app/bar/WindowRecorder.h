// SPDX-License-Identifier: GPL-3.0-or-later
// Recordings that a person begins and ends in the window.
#pragma once

#include "kits/media/Recording.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/Result.h"

#include <filesystem>
#include <memory>
#include <string>

namespace vexa {

class AudioGraph;

/// Records what is heard into the person's folder "recordings", into a new 32-bit float WAV file
/// each time. Window thread.
class WindowRecorder {
  public:
    WindowRecorder(AudioGraph& graph, kits::ProgramFolders folders);
    /// Ends the recording, if one goes on, and keeps it.
    ~WindowRecorder();
    WindowRecorder(const WindowRecorder&) = delete;
    WindowRecorder& operator=(const WindowRecorder&) = delete;

    /// Begins a file that has the sound's name and the time in its own. The error says why there is
    /// none.
    kits::Result<void> Begin(const std::string& soundName);
    /// Ends the recording. Returns the path of the file, or the error that says what is missing in
    /// it.
    kits::Result<std::filesystem::path> End();
    bool IsRecording() const { return recording != nullptr; }
    /// True where the recording keeps nothing more, as End will tell.
    bool HasEnded() const { return recording && recording->HasEnded(); }

  private:
    AudioGraph& graph;
    const kits::ProgramFolders folders;
    std::filesystem::path path;
    std::unique_ptr<kits::Recording> recording;
};

} // namespace vexa
