// SPDX-License-Identifier: GPL-3.0-or-later
// An instrument inside somebody else's process, whatever the kind of plug-in.
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
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vexa {

/// The requests that a host may make while the instrument plays, and the texts that it may read.
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
    /// The text is the path of a keyboard map of Scala, or empty for the usual keys.
    Keymap,
};
constexpr std::size_t kRequests = 6;

/// The instrument has two sides, which any two threads may be on at a time: the audio side computes
/// and never waits; the other one works on documents, and its calls wait for each other.
class HostedInstrument {
  public:
    /// Makes an instrument at `rate` samples per second, which plays the sound "default", or that
    /// of a new window where there is none.
    HostedInstrument(kits::ProgramFolders folders, double rate);
    /// Forgets all notes and what wheels, pedals and modulation hold, and goes on at a rate. Audio
    /// side, or while that does nothing.
    VEXA_REALTIME void Restart(double rate) noexcept;

    /// Audio side: no allocation, lock, wait or system call.
    /// Takes up the knobs and, where they leave it to the sound, what that says.
    VEXA_REALTIME void TakeControls(const ControlValues& values) noexcept;
    /// Plays one message, which takes effect with the next sample. What is no whole message is
    /// ignored.
    VEXA_REALTIME void Midi(std::span<const uint8> message) noexcept;
    /// Returns the engine that plays, for what MIDI has no words for.
    VEXA_REALTIME Engine& Audio() noexcept { return instrument.Playing(); }
    /// Renders the next `count` samples of both ears.
    VEXA_REALTIME void Render(float* left, float* right, std::size_t count) noexcept;
    /// Returns the samples by which what Render gives is later than it was asked for.
    VEXA_REALTIME std::size_t Delay() const noexcept { return oversampler.Delay(); }
    /// Puts a request down for Work; false where it is longer than kMostText or too many wait.
    VEXA_REALTIME bool Post(Request request, std::string_view text) noexcept;

    static constexpr std::size_t kMostText = kLongestExpression;

    /// From here on functions are the other side's. True where there is anything for Work to do.
    bool Requested() const noexcept { return requests.Readable() > 0; }
    /// Does what was posted. Returns what there is to tell a person, empty where all went well.
    std::string Work();
    /// Returns what a host reads of a request: the file or expression of the sound as it is now,
    /// the document that a host has asked for, as long as it is the sound that plays, or the
    /// tuning.
    std::string Text(Request request);
    /// Returns the whole sound as a document.
    std::string State();
    /// Puts a document in the place of the present sound. `file` is where its sample or picture is
    /// here, and stands before the document's own path if there is such a file. Where the document
    /// cannot be taken all stays as it was. It returns what Work does.
    std::string Restore(const std::string& document, const std::string& file, bool& taken);
    /// The file that the sound's sample or picture is read from; nothing for an expression.
    std::optional<std::filesystem::path> FunctionFile();
    /// The files that the keys are tuned by, which are the player's and not the sound's.
    TuningChoice TunedBy();
    /// Tunes the keys as in another session. Where the files cannot be read equal temperament
    /// plays, and TunedBy still says which they were. It returns what Work does.
    std::string RestoreTuning(const TuningChoice& choice);

    // The following are for windows, each of which shows the sound and edits it (window/Windows.h).
    // They are the other side's too.

    /// The sound, and a number that tells it from those before.
    struct Shown {
        Sound sound;
        uint64 changes = 0;
    };
    /// Returns the sound and its number; nothing where it is still the one of the number `changes`.
    /// A sample or picture that the document's own name does not find is named by its path here.
    std::optional<Shown> ShownSince(uint64 changes);
    /// Does what Instrument::Change does, from what a window was shown. Where the sound has become
    /// another one since it returns nothing, and nothing happens.
    std::optional<Shown> Edit(const Shown& before, const Sound& next);
    /// Posts a message that takes effect with the next samples. While a host stands still there is
    /// room for some, and what does not fit is lost, but never the end of a note whose beginning is
    /// not.
    void PostMidi(const std::array<uint8, 3>& message);
    /// Returns the records of what plays. Any thread may read of them what any thread may read.
    const SoundRecords& Records() const { return instrument.Playing(); }
    /// True where a window has edited the sound since the last call. Audio side.
    VEXA_REALTIME bool TakeEdited() noexcept { return edited.exchange(false); }

  private:
    std::string Do(Request request, const std::string& text);
    std::string Tune(const TuningChoice& choice, bool anyway);
    std::string Install(Sound next, const std::string& file, bool& taken);
    std::optional<std::filesystem::path> PresentFile() const;
    VEXA_REALTIME void PlayPosted() noexcept;

    const kits::ProgramFolders folders;
    SoundsSay said;
    Instrument instrument{folders, Addons::None, &said};
    /// The filter is that of a whole render, so that what is heard in a session is what its export
    /// gives.
    Oversampler oversampler{instrument.Playing().renderer, DecimationFilter::kWhole};
    std::mutex documents;
    kits::Ring<char> requests{2 * kMostText};
    /// The messages that windows play, and the lock of those who write them.
    kits::Ring<std::array<uint8, 3>> posted{256};
    std::mutex posting;
    /// The notes of those messages that are on, by channel and key.
    std::bitset<16 * 128> notesOn;
    std::atomic<bool> edited{false};
    std::string soundFile;
    TuningChoice tunedBy;
    /// True where the files of `tunedBy` could be read, so that the keys are tuned by them.
    bool tuned = true;
    /// The values that the audio side has taken up last.
    std::array<float, kMacros> macros{};
    int32 limit = 0;
    bool expectsMpe = false;
    uint32 loads = 0;
};

} // namespace vexa
