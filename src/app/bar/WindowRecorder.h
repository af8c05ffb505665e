// SPDX-License-Identifier: GPL-3.0-or-later
// Recordings that the user begins and ends in the window.
#pragma once

#include "kits/media/Recording.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/Result.h"

#include <filesystem>
#include <memory>
#include <string>

namespace vexa {

class AudioGraph;

/// Records the output into the user's folder "recordings", each time into a new 32-bit float WAV
/// file. Window thread.
class WindowRecorder {
  public:
    WindowRecorder(AudioGraph& graph, kits::ProgramFolders folders);
    /// Ends and keeps a recording in progress.
    ~WindowRecorder();
    WindowRecorder(const WindowRecorder&) = delete;
    WindowRecorder& operator=(const WindowRecorder&) = delete;

    /// Begins a file named after the sound and the local time. The error gives the reason if that
    /// fails.
    kits::Result<void> Begin(const std::string& soundName);
    /// Ends the recording, which must be in progress. Returns the path of the file, or an error
    /// that says what is missing in it.
    kits::Result<std::filesystem::path> End();
    bool IsRecording() const { return recording != nullptr; }
    /// Returns the length of the recording, which must be in progress, in seconds.
    double Seconds() const { return recording->Seconds(); }
    /// Returns whether the recording has stopped by itself and keeps nothing more; End reports why.
    bool HasEnded() const { return recording && recording->HasEnded(); }

  private:
    AudioGraph& graph;
    const kits::ProgramFolders folders;
    std::unique_ptr<kits::Recording> recording;
};

} // namespace vexa
