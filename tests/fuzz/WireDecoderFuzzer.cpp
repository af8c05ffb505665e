// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if the hooks that a stream calls depend on where it is cut, or if their data are out of
// range.

#include "fuzz/Fuzzing.h"
#include "kits/midi/WireDecoder.h"
#include "support/MidiLog.h"

#include <algorithm>

namespace {

/// Data bytes of channel messages are below 128.
class Watch : public test::MidiLog {
  public:
    void NoteOn(uchar channel, uchar note, uchar velocity, bigtime_t time) override {
        fuzz::Require(channel < 16 && note < 128 && velocity > 0 && velocity < 128,
                      "a note is in range");
        MidiLog::NoteOn(channel, note, velocity, time);
    }
    void ControlChange(uchar channel, uchar controller, uchar value, bigtime_t time) override {
        fuzz::Require(channel < 16 && controller < 120 + 8 && value < 128,
                      "a controller is in range");
        MidiLog::ControlChange(channel, controller, value, time);
    }
    void SystemExclusive(const void* data, std::size_t length, bigtime_t time) override {
        fuzz::Require(length <= kits::WireDecoder::kLongestSysex, "the data are bounded");
        MidiLog::SystemExclusive(data, length, time);
    }
};

} // namespace

/// The first byte gives the length of the pieces.
extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::size_t step = std::size_t{1} + data[0] % 16;
    const std::span<const uint8> bytes(data + 1, size - 1);
    Watch whole;
    kits::WireDecoder(whole).Decode(bytes, 0);
    Watch pieces;
    kits::WireDecoder decoder(pieces);
    for (std::size_t at = 0; at < bytes.size(); at += step)
        decoder.Decode(bytes.subspan(at, std::min(step, bytes.size() - at)), 0);
    fuzz::Require(whole.calls == pieces.calls, "pieces mean the same as the whole");
    return 0;
}
