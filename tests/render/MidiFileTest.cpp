// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/MidiFile.h"

#include "support/MidiFiles.h"
#include "support/TemporaryFolder.h"

#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using test::BigEndian;
using test::Header;
using test::kEnd;
using test::Track;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using vexa::MidiFile;
using Kind = vexa::MidiEvent::Kind;

/// A file of one track with 100 ticks per quarter note: 200 per second at the default tempo.
std::string Song(const std::string& events) {
    return Header(0, 1, 100) + Track(events);
}

std::string Tempo(uint32 microseconds) {
    return "\xFF\x51\3"s + BigEndian(microseconds, 3);
}

kits::Result<MidiFile> Read(const std::string& bytes) {
    // A copy without room to spare, so that the address sanitizer sees a read past its end.
    const std::vector<uint8> exact(bytes.begin(), bytes.end());
    return vexa::ReadMidiFile(exact, "a.mid");
}

/// Returns the file, which must be readable without a warning.
MidiFile Good(const std::string& bytes) {
    auto file = Read(bytes);
    EXPECT_TRUE(file) << file.Fault().text;
    if (!file)
        return {};
    EXPECT_THAT(file->warnings, IsEmpty());
    return *std::move(file);
}

std::string FaultOf(const std::string& bytes) {
    const auto file = Read(bytes);
    return file ? "none" : file.Fault().text;
}

std::vector<double> Times(const MidiFile& file) {
    std::vector<double> times;
    for (const vexa::MidiEvent& event : file.events)
        times.push_back(event.seconds);
    return times;
}

TEST(MidiFile, TellsTheEventsOfASynthesizer) {
    const MidiFile file = Good(Song("\0\x92\x3C\x64"       // note on, channel 3
                                    "\x64\x92\x3C\0"       // velocity 0 ends it
                                    "\0\x82\x3D\x40"       // note off
                                    "\0\xB0\1\x7F"         // modulation wheel
                                    "\0\xB0\x78\0"         // all sound off
                                    "\0\xBF\x7B\0"         // all notes off
                                    "\0\xB0\x79\0"         // reset all controllers
                                    "\0\xC0\5"             // program
                                    "\0\xD0\5"             // channel pressure
                                    "\0\xA0\x3C\5"         // key pressure
                                    "\x81\x48\xE0\0\0"s)); // pitch bend
    EXPECT_THAT(file.events, ElementsAre(vexa::MidiEvent{0, Kind::NoteOn, 2, 0x3C, 0x64},
                                         vexa::MidiEvent{0.5, Kind::NoteOff, 2, 0x3C, 0},
                                         vexa::MidiEvent{0.5, Kind::NoteOff, 2, 0x3D, 0x40},
                                         vexa::MidiEvent{0.5, Kind::ControlChange, 0, 1, 0x7F},
                                         vexa::MidiEvent{0.5, Kind::AllNotesOff, 1, 0, 0},
                                         vexa::MidiEvent{0.5, Kind::AllNotesOff, 1, 15, 0},
                                         vexa::MidiEvent{0.5, Kind::ControlChange, 0, 0x79, 0},
                                         vexa::MidiEvent{0.5, Kind::ProgramChange, 0, 5, 0},
                                         vexa::MidiEvent{0.5, Kind::ChannelPressure, 0, 5, 0},
                                         vexa::MidiEvent{0.5, Kind::KeyPressure, 0, 0x3C, 5},
                                         vexa::MidiEvent{1.5, Kind::PitchBend, 0, 0, 0}));
    EXPECT_EQ(file.notes, 1U);
    EXPECT_EQ(file.duration, 1.5) << "to the end of the track, 300 ticks";
}

TEST(MidiFile, ReadsRunningStatusAndStepsOverWhatIsNoNote) {
    const std::string on = "\x3C\x64"s;
    const MidiFile file =
        Good(Song("\0\x90"s + on + "\1" + on + "\1\xF0\3\1\2\xF7" + // system exclusive
                  "\1" + on +                                       // the running status continues
                  "\1\xF7\2\xF8\xF8" +                              // escape
                  "\1\xFF\3\2hi" +                                  // track name
                  "\1\xFF\x7F\x81\0"s + std::string(128, '\xFF') + "\1" + on));
    EXPECT_THAT(Times(file), ElementsAre(0, 1 / 200.0, 3 / 200.0, 7 / 200.0));
    EXPECT_EQ(file.notes, 4U);
}

TEST(MidiFile, MergesTracksByTimeThenOrderUnderOneTempoMap) {
    const MidiFile file = Good(Header(1, 3, 100) +                                //
                               Track("\0\x90\1\1\x64\x90\2\1"s) +                 // ticks 0, 100
                               Track("\x32"s + Tempo(1000000) + "\x32\x91\3\1") + // 50, 100
                               Track("\x5A\x92\4\1\x0A\x92\5\1"s));               // 90, 100
    std::vector<int> numbers;
    for (const vexa::MidiEvent& event : file.events)
        numbers.push_back(event.number);
    EXPECT_THAT(numbers, ElementsAre(1, 4, 2, 3, 5));
    EXPECT_THAT(Times(file), ElementsAre(0, 0.65, 0.75, 0.75, 0.75));

    const auto independent = Read(Header(2, 2, 100) + Track("\0\x90\1\1"s) + Track("\0\x90\2\1"s));
    ASSERT_TRUE(independent);
    EXPECT_EQ(independent->notes, 1U);
    EXPECT_THAT(independent->warnings, ElementsAre(HasSubstr("only the first is read")));
}

/// Two hands on one keyboard: one leaves a key at the tick at which the other strikes it.
TEST(MidiFile, TheEndOfANoteDoesNotEndTheOneThatAnotherTrackBeginsThen) {
    const auto names = [](const MidiFile& file) {
        std::string text;
        for (const vexa::MidiEvent& event : file.events) {
            text += event.kind == Kind::NoteOn ? '+' : event.kind == Kind::NoteOff ? '-' : '*';
            text += std::to_string(event.number) + '@' + std::to_string(event.channel) + ' ';
        }
        return text;
    };
    const auto merged = [&](const std::string& first, const std::string& second) {
        return names(Good(Header(1, 2, 100) + Track(first) + Track(second)));
    };
    const std::string right = "\x64\xB0\1\5\0\x90\x3C\x64\0\x90\x40\x64"s; // 60 and 64 at tick 100
    EXPECT_EQ(merged(right, "\0\x90\x3C\x64\x64\x80\x3C\0"s), "+60@0 -60@0 *1@0 +60@0 +64@0 ");
    EXPECT_EQ(merged(right, "\0\x91\x3C\x64\x64\x91\x3C\0\0\x91\x3C\x64"s),
              "+60@1 -60@1 *1@0 +60@0 +64@0 +60@1 ")
        << "on another channel too";
    EXPECT_EQ(merged(right, "\0\x90\x3C\x64\1\x90\x3C\x64\1\x80\x3C\0\x62\x80\x3C\0"s),
              "+60@0 +60@0 -60@0 -60@0 *1@0 +60@0 +64@0 ")
        << "of two notes of a key, the second end";

    // Elsewhere the order stays: another key, a note without length, an end without a beginning.
    EXPECT_EQ(merged(right, "\0\x90\x3D\x64\x64\x80\x3D\0"s), "+61@0 *1@0 +60@0 +64@0 -61@0 ");
    EXPECT_EQ(merged(right, "\x64\x90\x3C\x64\0\x80\x3C\0"s), "*1@0 +60@0 +64@0 +60@0 -60@0 ");
    EXPECT_EQ(merged(right, "\0\x90\x3C\x64\1\x80\x3C\0\x63\x80\x3C\0"s),
              "+60@0 -60@0 *1@0 +60@0 +64@0 -60@0 ");
    EXPECT_EQ(names(Good(Song("\0\x90\x3C\x64\x64\x90\x3C\x64\0\x80\x3C\0"s))),
              "+60@0 +60@0 -60@0 ")
        << "in one track";
}

TEST(MidiFile, TimesDoNotDrift) {
    // A tempo that a double cannot represent exactly, over 100000 short steps.
    std::string events = "\0"s + Tempo(333333);
    for (int i = 0; i < 100000; i++)
        events += "\1\x90\x3C\x64";
    const MidiFile file = Good(Header(0, 1, 96) + Track(events));
    EXPECT_EQ(file.duration, 100000.0 * 333333 / (96 * 1e6)) << "exact to the last bit";
}

TEST(MidiFile, ReadsFramesAsTime) {
    const std::string notes = Track("\0\x90\1\1\xA3\x30\x80\1\1"s);
    const auto duration = [&notes](int frames, int ticks) {
        return Good(Header(0, 1, (256 - frames) << 8 | ticks) + notes).duration;
    };
    const double ticks = 0x23 * 128 + 0x30; // of the second event
    EXPECT_EQ(duration(24, 100), ticks / 2400);
    EXPECT_EQ(duration(25, 40), ticks / 1000) << "milliseconds";
    EXPECT_EQ(duration(29, 100), ticks * 1001 / 3000000);
    EXPECT_EQ(duration(30, 80), ticks / 2400);
    const std::string fast =
        Header(0, 1, (256 - 25) << 8 | 40) + Track("\0"s + Tempo(1) + "\x64\x90\1\1");
    EXPECT_EQ(Good(fast).duration, 0.1) << "frames know no tempo";
}

TEST(MidiFile, UnwrapsRiffAndStepsOverUnknownChunks) {
    const std::string note = Track("\0\x90\1\1"s);
    const std::string plain = "MThd\0\0\0\x8\0\1\0\2\0\x64??"s + note + "XFIH\0\0\0\2ab"s + note;
    EXPECT_EQ(Good(plain).notes, 2U) << "a longer header, a chunk between the tracks";
    const std::string size(1, static_cast<char>(plain.size()));
    const std::string wrapped =
        "RIFF\0\0\0\0RMIDLIST\3\0\0\0abc\0data"s + size + "\0\0\0"s + plain + "more";
    EXPECT_EQ(Good(wrapped).notes, 2U);
    EXPECT_THAT(FaultOf(wrapped.substr(0, wrapped.size() - 5)),
                HasSubstr("a chunk is longer than the file, at byte 24"));
    EXPECT_THAT(FaultOf("RIFF\0\0\0\0WAVEfmt "s), HasSubstr("not a MIDI file"));
    EXPECT_THAT(FaultOf("RIFF\0\0\0\0RMID"s), HasSubstr("holds no MIDI data"));
}

TEST(MidiFile, ReadsOverSlightFaultsWithAWarning) {
    const std::string note = "\0\x90\1\1"s;
    const std::string endless = "MTrk\0\0\0\4"s + note;
    const std::string late = "MTrk\0\0\0\xB"s + note + "\xFF\xFF\xFF\x7F\xFF\x2F\0"s;
    const struct {
        std::string bytes;
        const char* warning;
    } faults[] = {
        {Song(note) + "\0\0\0"s, "3 bytes after the last track are left out"},
        {Header(1, 1, 100) + endless, "1 track has no end-of-track event"},
        {Header(1, 1, 100) + late, "the end lies beyond 24 hours, so the last event is the end"},
        {Header(1, 3, 100) + Track(note), "the number of tracks is 1, not 3 as the header says"},
        {Header(1, 0, 100) + Track(note), "the number of tracks is 1, not 0 as the header says"},
        {Song(note + kEnd + "\xFF\xFF\xFF"), "1 track goes on after its end-of-track event; "},
        {Song("\0"s + Tempo(0) + note), "1 tempo event of 0 microseconds is left out"},
        {Song(note + "\0\xF7\3\x90\3\1\0\xF7\3\x80\3\1"s),
         "2 escape events with channel messages are left out"},
    };
    for (const auto& fault : faults) {
        const auto file = Read(fault.bytes);
        ASSERT_TRUE(file) << fault.warning << ": " << file.Fault().text;
        EXPECT_EQ(file->notes, 1U) << fault.warning;
        EXPECT_EQ(file->duration, 0) << fault.warning;
        EXPECT_THAT(file->warnings, ElementsAre(HasSubstr(fault.warning)));
    }
    const auto silent = Read(Song(""));
    ASSERT_TRUE(silent);
    EXPECT_THAT(silent->warnings, ElementsAre("there is no note"));
}

TEST(MidiFile, NamesTheFaultAndItsPlace) {
    const std::string header = Header(0, 1, 100); // 14 bytes; a track's events begin at 22
    const struct {
        std::string bytes;
        const char* fault;
    } faults[] = {
        {"", "the file is empty, at byte 0"},
        {"GIF89a etc.", "not a MIDI file, at byte 0"},
        {"MThd\0\0\0\6\0"s, "the file ends in its header, at byte 9"},
        {"MThd\0\0\0\5\0\0\0\1\0\x60"s, "a header of 5 bytes, at least 6 are needed, at byte 0"},
        {"MThd\xFF\xFF\xFF\xFF\0\0\0\1\0\x60"s, "a header of 4294967289 bytes goes on"},
        {Header(3, 1, 100), "unknown type 3, at byte 8"},
        {Header(0, 1, 0), "a time division of 0, at byte 12"},
        {Header(0, 1, 0xE700), "a time division of 0, at byte 12"},
        {Header(0, 1, 0xE164), "a time division of 31 frames per second, at byte 12"},
        {header + "MTrk\0", "the file ends inside the header of a track, at byte 18"},
        {header + "MTrk\xFF\xFF\xFF\xFF"s, "a track of 4294967295 bytes is longer than the rest"},
        {header + "MTrk\0\0\0\2\0\x90\x3C\x64"s, "the track ends inside an event, at byte 24"},
        {header + "MTrk\0\0\0\3\0\x90\x3C"s, "the track ends inside an event, at byte 25"},
        {header + "MTrk\0\0\0\1\x81"s, "the track ends inside an event, at byte 23"},
        {Song("\0\x3C\x64"s), "a data byte where a status byte is expected, at byte 23"},
        {Song("\0\x90\x3C\x80"s), "a status byte where a data byte is expected, at byte 25"},
        {Song("\0\x90\xFF\x40"s), "a status byte where a data byte is expected, at byte 24"},
        {Song("\0\xF8"s), "a status byte that MIDI files do not have, at byte 23"},
        {Song("\x81\x81\x81\x81\1\x90\1\1"s), "a number of more than four bytes, at byte 22"},
        {Song("\0\xF0\xFF\xFF\xFF\x7F"s), "exclusive event of 268435455 bytes goes on after"},
        {Song("\0\xFF\1\x10"s), "a meta event of 16 bytes goes on after the end of the track"},
        {Song("\0\xFF\x51\2\1\1"s), "a tempo of less than three bytes, at byte 26"},
        {Song("\0"s + Tempo(0xFFFFFF) + "\xFF\xFF\xFF\x7F\x90\1\1"),
         "the music lasts longer than 24 hours, at byte 29"},
    };
    for (const auto& fault : faults) {
        EXPECT_THAT(FaultOf(fault.bytes), HasSubstr(fault.fault));
        EXPECT_THAT(FaultOf(fault.bytes), testing::StartsWith("could not read a.mid: "));
    }
}

TEST(MidiFile, NamesAFileThatCannotBeRead) {
    const test::TemporaryFolder folder;
    const auto missing = vexa::ReadMidiFile(folder.Path() / "none.mid");
    ASSERT_FALSE(missing);
    EXPECT_THAT(missing.Fault().text, HasSubstr("none.mid: No such file or directory"));
    const auto aFolder = vexa::ReadMidiFile(folder.Path());
    ASSERT_FALSE(aFolder);
    EXPECT_THAT(aFolder.Fault().text, HasSubstr("Is a directory"));
    const auto endless = vexa::ReadMidiFile("/dev/zero");
    ASSERT_FALSE(endless);
    EXPECT_THAT(endless.Fault().text, HasSubstr("/dev/zero: it is larger than 64 MB"));

    const auto good = vexa::ReadMidiFile(folder.Write("a.mid", Song("\0\x90\1\1"s)));
    ASSERT_TRUE(good) << good.Fault().text;
    EXPECT_EQ(good->notes, 1U);
}

} // namespace
