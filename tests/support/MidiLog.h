// SPDX-License-Identifier: GPL-3.0-or-later
// A MIDI consumer that records its calls.
#pragma once

#include "kits/midi/MidiLocalConsumer.h"

#include <string>
#include <vector>

namespace test {

/// One text per call: the hook's name and its arguments without the time.
class MidiLog : public BMidiLocalConsumer {
  public:
    MidiLog() : BMidiLocalConsumer("log") {}

    void NoteOff(uchar c, uchar n, uchar v, bigtime_t t) override { Add("off", {c, n, v}, t); }
    void NoteOn(uchar c, uchar n, uchar v, bigtime_t t) override { Add("on", {c, n, v}, t); }
    void KeyPressure(uchar c, uchar n, uchar p, bigtime_t t) override { Add("key", {c, n, p}, t); }
    void ControlChange(uchar c, uchar n, uchar v, bigtime_t t) override {
        Add("control", {c, n, v}, t);
    }
    void ProgramChange(uchar c, uchar p, bigtime_t t) override { Add("program", {c, p}, t); }
    void ChannelPressure(uchar c, uchar p, bigtime_t t) override { Add("pressure", {c, p}, t); }
    void PitchBend(uchar c, uchar l, uchar m, bigtime_t t) override { Add("bend", {c, l, m}, t); }
    void SystemExclusive(const void* data, std::size_t length, bigtime_t t) override {
        const auto* bytes = static_cast<const uint8*>(data);
        Add("sysex", {bytes, bytes + length}, t);
    }
    void SystemCommon(uchar s, uchar a, uchar b, bigtime_t t) override {
        Add("common", {s, a, b}, t);
    }
    void SystemRealTime(uchar s, bigtime_t t) override { Add("realtime", {s}, t); }
    void SourceEnded(uchar c, bigtime_t t) override { Add("ended", {c}, t); }
    void AllNotesOff(bool justChannel, bigtime_t t) override {
        Add("alloff", {uint8(justChannel)}, t);
    }

    std::vector<std::string> calls;
    std::vector<bigtime_t> times;

  private:
    void Add(std::string call, const std::vector<uint8>& arguments, bigtime_t time) {
        for (const uint8 argument : arguments)
            call += ' ' + std::to_string(argument);
        calls.push_back(std::move(call));
        times.push_back(time);
        Added();
    }
    virtual void Added() {}
};

} // namespace test
