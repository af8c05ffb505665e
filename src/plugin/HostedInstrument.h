// SPDX-License-Identifier: GPL-3.0-or-later
// An instrument inside somebody else's process, whatever the kind of plug-in.
#pragma once

#include "instrument/Instrument.h"
#include "kits/support/Ring.h"
#include "plugin/Controls.h"
#include "synth/Oversampler.h"

#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vexa {

/// What a host may ask for while the instrument plays.
enum class Request : uint8 {
    /// The text is an expression.
    Formula,
    /// The text is the path of a sample.
    Sample,
    /// The text is the path of a sound document.
    Sound,
};

/// Two sides, which any two threads may be on at a time: the audio side computes and never waits;
/// the other one works on documents, and its calls wait for each other.
class HostedInstrument {
  public:
    /// `rate` in samples per second. Plays the sound that a new window has.
    HostedInstrument(kits::ProgramFolders folders, double rate);

    /// Audio side: no allocation, lock, wait or system call.
    /// Takes the knobs up; those that leave it to the sound give it back what it says.
    void TakeControls(const ControlValues& values) noexcept;
    /// One message, which takes effect with the next sample. What is no whole message is ignored.
    void Midi(std::span<const uint8> message) noexcept;
    /// The next `count` samples of both ears.
    void Render(float* left, float* right, std::size_t count) noexcept;
    /// Samples by which what Render gives is later than it was asked for.
    std::size_t Delay() const noexcept { return oversampler.Delay(); }
    /// Puts a request down for Work; false where it is longer than kMostText or too many wait.
    bool Post(Request request, std::string_view text) noexcept;

    static constexpr std::size_t kMostText = 16384;

    /// The other side.
    /// Does what was posted. Returns what there is to tell a person, empty where all went well.
    std::string Work();
    /// The whole sound as a document.
    std::string State();
    /// Puts a document in the place of the present sound. `sample` is where its sample is here, and
    /// stands before the document's own path if there is such a file. Where the document cannot be
    /// taken all stays as it was. Returns as Work.
    std::string Restore(const std::string& document, const std::string& sample, bool& taken);
    /// The file that the sound's sample is read from; nothing for an expression.
    std::optional<std::string> SampleFile();

  private:
    std::string Do(Request request, const std::string& text);
    std::string Install(Sound next, const std::string& sample, bool& taken);
    void TellSound();

    const kits::ProgramFolders folders;
    Instrument instrument;
    Oversampler oversampler{instrument.Playing().renderer};
    std::mutex documents;
    kits::Ring<char> requests{4 * kMostText};
    /// What the sound says for each knob, and whether it says at all how it is played.
    std::array<kits::Shared<float>, kControls> told;
    kits::Shared<bool> given{false};
    /// Of the audio side: the knobs that a value was taken from, and the limit that was set.
    std::array<std::optional<float>, kControls> taken;
    int32 limit = 0;
    uint32 loads = 0;
};

} // namespace vexa
