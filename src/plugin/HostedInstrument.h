// SPDX-License-Identifier: GPL-3.0-or-later
// An instrument inside the process of a host, for every kind of plug-in.
#pragma once

#include "formula/ExpressionLimits.h"
#include "instrument/Instrument.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Ring.h"
#include "plugin/Controls.h"
#include "synth/Oversampler.h"
#include "tuning/TuningChoice.h"

#include <array>
#include <atomic>
#include <bitset>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vexa {

/// The requests that a host may make while the instrument plays. Each has a text that the host may
/// also read.
enum class Request : uint8 {
    /// The text is an expression.
    Formula,
    /// The text is the path of a sample.
    Sample,
    /// The text is the path of a picture.
    Picture,
    /// The text is the path of a sound document.
    Sound,
    /// The text is the path of a Scala file, or empty for equal temperament.
    Tuning,
    /// The text is the path of a Scala keyboard map, or empty for the default keys.
    Keymap,
};
constexpr std::size_t kRequests = 6;

/// The instrument has two sides, which may run at the same time on any two threads. The audio side
/// computes and never waits. The other side works on documents; its calls are serialized by a
/// mutex.
class HostedInstrument {
  public:
    /// Makes an instrument at `rate` samples per second. It plays the sound "default" or, if that
    /// cannot be read, the one that stands in for it. If its function cannot be played, it plays
    /// the initial sound, because hosts could not restore the former from their sessions. `wake`,
    /// unless empty, asks a host that may have stopped to render to go on, as there is something to
    /// hear; any thread calls it.
    HostedInstrument(kits::ProgramFolders folders, double rate, std::function<void()> wake = {});
    /// Returns what was wrong with the sound "default" of a new instrument, and what plays instead;
    /// empty if nothing was.
    const std::string& StartFault() const { return startFault; }
    /// Ends all notes and forgets every event, and continues at `rate` samples per second: from
    /// here on the instrument sounds like a new one with the same sound, controls and tuning. Audio
    /// side, or any thread while the audio side is idle.
    VEXA_REALTIME void Restart(double rate) noexcept;

    /// The audio side: no allocation, lock, wait or system call.
    /// Applies the controls, and the sound's settings where the controls leave them to the sound.
    VEXA_REALTIME void TakeControls(const ControlValues& values) noexcept;
    /// Plays one MIDI message, which takes effect with the next sample. Incomplete messages are
    /// ignored.
    VEXA_REALTIME void Midi(std::span<const uint8> message) noexcept;
    /// Returns the engine that plays, for events that MIDI cannot express.
    VEXA_REALTIME Engine& Audio() noexcept { return instrument.Engine(); }
    /// Renders the next `count` samples of both ears.
    VEXA_REALTIME void Render(float* left, float* right, std::size_t count) noexcept;
    /// Returns the latency of Render in samples.
    VEXA_REALTIME std::size_t Delay() const noexcept { return oversampler.Delay(); }
    /// Queues a request for Work; returns false if it is longer than kMostText or the queue is
    /// full.
    VEXA_REALTIME bool Post(Request request, std::string_view text) noexcept;
    /// Returns true if the next Render plays messages of PostMidi.
    VEXA_REALTIME bool HasPosted() const noexcept { return posted.Readable() > 0; }

    static constexpr std::size_t kMostText = kLongestExpression;

    /// The functions from here on belong to the other side. Returns true if Work has anything to
    /// do.
    bool Requested() const noexcept { return requests.Readable() > 0; }
    /// Processes the queued requests. Returns the message for the user; empty if all succeeded.
    std::string Work();
    /// Returns the text of a request as a host reads it: the file or expression of the present
    /// sound, the path of the document that the host has loaded, as long as that sound plays, or
    /// the path of the tuning.
    std::string Text(Request request);
    /// Returns the whole sound as a document.
    std::string State();
    /// Replaces the present sound by a document. `file` is the path of its sample or picture on
    /// this machine, and takes precedence over the document's own path if the file exists. `taken`
    /// becomes false, and nothing changes, if the document cannot be used. Returns a message as
    /// Work does.
    std::string Restore(const std::string& document, const std::string& file, bool& taken);
    /// What a session keeps.
    struct Kept {
        /// The whole sound.
        std::string document;
        /// The file of its sample or picture; no value for an expression.
        std::optional<std::filesystem::path> file;
        /// The files of the tuning, which belongs to the player and not to the sound.
        TuningChoice tuning;
    };
    /// Returns what plays at one moment.
    Kept Keep();
    /// Restores the tuning of a session. If the files cannot be read equal temperament plays, and
    /// Keep still returns them. Returns a message as Work does.
    std::string RestoreTuning(const TuningChoice& choice);

    // The following are for windows, each of which shows the sound and edits it (window/Windows.h).
    // They belong to the other side too.

    /// The sound, and a number that distinguishes it from earlier ones.
    struct Shown {
        Sound sound;
        uint64 changes = 0;
    };
    /// Returns the sound and its number; no value if the number is still `changes`. A sample or
    /// picture that is not found under the document's own name has its path as its name here.
    std::optional<Shown> ShownSince(uint64 changes);
    /// Applies an edit as Instrument::Change does, where `before` is the sound that the window was
    /// shown. If the sound has changed since, it does nothing and returns no value.
    std::optional<Shown> Edit(const Shown& before, const Sound& next);
    /// Queues a message that takes effect with the next samples, and wakes the host. As long as the
    /// host does not render, the queue may fill up; further messages are then lost, but never the
    /// note-off of a note whose note-on was queued.
    void PostMidi(const std::array<uint8, 3>& message);
    /// Returns the records of the engine. Any thread may read those members that are open to any
    /// thread.
    const SoundRecords& Records() const { return instrument.Engine(); }
    /// Return the settings of playing and the macros that the controls set in place of the sound: a
    /// bit for each, by its row of PlayingRows() or its number. Any thread.
    uint32 HostsPlaying() const { return hostsPlaying; }
    uint32 HostsMacros() const { return hostsMacros; }
    /// Returns true if a window has edited the sound since the last call. Any thread.
    VEXA_REALTIME bool TakeEdited() noexcept { return edited.exchange(false); }

  private:
    std::string Do(Request request, const std::string& text);
    std::string Tune(const TuningChoice& choice, bool anyway);
    std::string Install(Sound next, const std::string& file, bool& taken);
    std::optional<std::filesystem::path> PresentFile() const;
    VEXA_REALTIME void PlayPosted() noexcept;

    const kits::ProgramFolders folders;
    const std::function<void()> wake;
    SoundsSay said;
    Instrument instrument{folders, Addons::None, &said};
    /// The filter is that of an offline render, so that a session sounds exactly like its export.
    Oversampler oversampler{instrument.Engine().renderer, DecimationFilter::kWhole};
    std::string startFault;
    std::mutex documents;
    kits::Ring<char> requests{2 * kMostText};
    /// The messages that windows play, and the mutex of their writers.
    kits::Ring<std::array<uint8, 3>> posted{256};
    std::mutex posting;
    /// The notes that these messages hold down, by channel and key.
    std::bitset<16 * 128> notesOn;
    std::atomic<bool> edited{false};
    std::string soundFile;
    TuningChoice tunedBy;
    /// True if the files of `tunedBy` could be read, so that the keys are tuned by them.
    bool tuned = true;
    /// The values that the audio side applied last.
    std::array<float, kMacros> macros{};
    int32 limit = 0;
    bool expectsMpe = false;
    kits::Shared<uint32> hostsPlaying{0}, hostsMacros{0};
    uint32 loads = 0;
};

} // namespace vexa
