// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/MidiFile.h"

#include "kits/storage/ReadFile.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstring>
#include <optional>

namespace vexa {

namespace {

// The format's constants.
constexpr std::size_t kChunkHeader = 8; // four characters and a 32-bit length
constexpr uint32 kHeaderLength = 6;     // type, number of tracks, division, 16 bits each
constexpr int kMaxLengthBytes = 4;      // of a variable-length quantity, 7 bits each
constexpr std::size_t kChannels = 16, kKeys = 128;
constexpr uint32 kDefaultTempo = 500000; // microseconds per quarter note

enum : uint8 {
    kSystemExclusive = 0xF0,
    kEscape = 0xF7,
    kMeta = 0xFF,
};
enum : uint8 { kEndOfTrack = 0x2F, kSetTempo = 0x51 };

/// An event at a tick, before the tempo map gives its time.
struct ChannelEvent {
    uint64 tick;
    /// The offset in the file at which the event begins.
    uint32 position;
    MidiEvent::Kind kind;
    uint8 channel : 4;
    /// True for a note-off that ends a note which its track began at an earlier tick. Shares a byte
    /// with the channel, because a large file has millions of events.
    uint8 endsEarlier : 1;
    uint8 number, value;
};
static_assert(sizeof(ChannelEvent) == 16);

/// Returns true if a message that begins with this byte is for a synthesizer.
bool IsChannelMessage(uint8 status) {
    return status > 127 && status < kSystemExclusive;
}

struct TempoChange {
    uint64 tick;
    uint32 position;
    /// Microseconds per quarter note.
    uint32 tempo;
};

/// Sorts by tick; what happens at the same tick stays in the order of the tracks.
template<class Event>
void SortByTick(std::vector<Event>& events) {
    std::stable_sort(events.begin(), events.end(),
                     [](const Event& a, const Event& b) { return a.tick < b.tick; });
}

/// Moves note-offs that end earlier notes to the front of the events at one tick, if a note on the
/// same key begins before them there, as another track may have it: they would end the new note
/// too, also on another channel, unless that is a member of an MPE zone.
void PutEndsFirst(std::span<ChannelEvent> moment) {
    std::bitset<kKeys> begun;
    std::vector<ChannelEvent> ends, others;
    for (const ChannelEvent& event : moment) {
        const bool isLate = event.endsEarlier && begun[event.number];
        (isLate ? ends : others).push_back(event);
        if (event.kind == MidiEvent::Kind::NoteOn)
            begun.set(event.number);
    }
    std::ranges::copy(others, std::ranges::copy(ends, moment.begin()).out);
}

/// Sorts by tick, and what happens at the same tick by its track, except as PutEndsFirst says.
void SortInTime(std::vector<ChannelEvent>& events) {
    SortByTick(events);
    for (auto first = events.begin(); first != events.end();) {
        const auto next = std::find_if(
            first, events.end(), [&](const ChannelEvent& e) { return e.tick != first->tick; });
        if (std::any_of(first, next, [](const ChannelEvent& e) { return e.endsEarlier; }))
            PutEndsFirst({first, next});
        first = next;
    }
}

/// The unit of time into which ticks are converted: a tick lasts `tempo` units, a second has
/// `unitsPerSecond`. Both are integers for every division, so times add up without rounding.
struct TimeBase {
    uint32 tempo = kDefaultTempo;
    uint64 unitsPerSecond = 0;
    bool followsTempo = true;
};

/// Reads a file front to back. It keeps the first fault; after it nothing is left to read: reads
/// return 0 and every loop over the remaining bytes ends.
class Parser {
  public:
    explicit Parser(std::span<const uint8> bytes) : bytes(bytes), end(bytes.size()) {}

    kits::Result<MidiFile> Parse(std::string_view name);

  private:
    void Unwrap();
    void ParseHeader();
    void ParseTracks();
    void ParseTrack();
    void ParseMeta(uint64 tick, std::size_t start, bool& ended);
    void ParseChannelEvent(uint8 status, uint64 tick, std::size_t start);
    bool EndsEarlier(const kits::MidiEvent& end, uint64 tick);
    void PlaceInTime();
    bool IsInTime(uint64 tick) const;
    void PassTo(uint64 tick, uint32 where);

    std::size_t Left() const { return end - position; }
    bool NextIs(std::string_view id) const {
        return Left() >= id.size() && std::memcmp(&bytes[position], id.data(), id.size()) == 0;
    }
    uint8 Byte();
    uint8 DataByte();
    uint32 BigEndian(int count);
    uint32 VariableLength();
    void Skip(uint32 count, const char* what);
    void Fail(std::string text, std::size_t where) {
        if (!fault)
            fault = std::move(text) + ", at byte " + std::to_string(where);
        position = end;
    }
    void WarnIf(std::size_t count, const char* one, const char* many) {
        if (count > 0)
            file.warnings.push_back(std::to_string(count) + (count == 1 ? one : many));
    }

    std::span<const uint8> bytes;
    std::size_t position = 0;
    /// The end of the part that is read at present: a track, or the whole file.
    std::size_t end;
    const char* part = "file";
    std::optional<std::string> fault;

    uint32 type = 0;
    uint32 declaredTracks = 0;
    uint32 tracks = 0;
    TimeBase base;
    std::vector<ChannelEvent> events;
    /// The notes of a key in the track that last began one there: the number of those without an
    /// end, and the tick of the last.
    struct Open {
        uint32 track, count;
        uint64 tick;
    };
    std::array<std::array<Open, kKeys>, kChannels> open{};
    std::vector<TempoChange> tempos;
    /// The tick at which the longest track ends.
    uint64 lastTick = 0;
    /// The position up to which events have their times, in ticks and in units of the time base.
    uint64 tick = 0, units = 0;
    std::size_t tracksWithoutEnd = 0;
    std::size_t tracksWithRest = 0;
    std::size_t escapedMessages = 0;
    MidiFile file;
};

uint8 Parser::Byte() {
    if (Left() == 0) {
        Fail(std::string("the ") + part + " ends inside an event", end);
        return 0;
    }
    return bytes[position++];
}

uint8 Parser::DataByte() {
    const uint8 byte = Byte();
    if (byte > 127)
        Fail("a status byte where a data byte is expected", position - 1);
    return byte;
}

uint32 Parser::BigEndian(int count) {
    uint32 value = 0;
    for (int i = 0; i < count; i++)
        value = value << 8 | Byte();
    return value;
}

uint32 Parser::VariableLength() {
    const std::size_t start = position;
    uint32 value = 0;
    for (int i = 0; i < kMaxLengthBytes; i++) {
        const uint8 byte = Byte();
        value = value << 7 | (byte & 0x7F);
        if (byte <= 127)
            return value;
    }
    Fail("a number of more than four bytes", start);
    return 0;
}

void Parser::Skip(uint32 count, const char* what) {
    if (count > Left())
        Fail(std::string(what) + " of " + std::to_string(count) +
                 " bytes goes on after the end of the " + part,
             position);
    else
        position += count;
}

kits::Result<MidiFile> Parser::Parse(std::string_view name) {
    Unwrap();
    ParseHeader();
    ParseTracks();
    PlaceInTime();
    if (fault)
        return kits::Error{"could not read " + std::string(name) + ": " + *fault};
    return std::move(file);
}

/// Moves into the data chunk of a RIFF wrapper, if there is one.
void Parser::Unwrap() {
    if (bytes.empty())
        return Fail("the file is empty", 0);
    if (!NextIs("RIFF"))
        return;
    position += std::min<std::size_t>(kChunkHeader, Left());
    if (!NextIs("RMID"))
        return Fail("not a MIDI file", 0);
    position += 4;
    while (Left() >= kChunkHeader) {
        const bool isData = NextIs("data");
        const std::size_t start = position;
        position += 4;
        uint64 length = 0;
        for (int shift = 0; shift < 32; shift += 8)
            length |= uint64(Byte()) << shift;
        if (length > Left())
            return Fail("a chunk is longer than the file", start);
        if (isData) {
            end = position + length;
            return;
        }
        // Chunks begin at even offsets.
        position += std::min<std::size_t>(length + length % 2, Left());
    }
    Fail("the RIFF wrapper holds no MIDI data", position);
}

void Parser::ParseHeader() {
    if (fault)
        return;
    const std::size_t start = position;
    if (!NextIs("MThd"))
        return Fail("not a MIDI file", start);
    if (Left() < kChunkHeader + kHeaderLength)
        return Fail("the file ends in its header", end);
    position += 4;
    const uint32 length = BigEndian(4);
    if (length < kHeaderLength)
        return Fail("a header of " + std::to_string(length) + " bytes, at least 6 are needed",
                    start);
    type = BigEndian(2);
    declaredTracks = BigEndian(2);
    const uint32 division = BigEndian(2);
    if (type > 2)
        return Fail("a MIDI file of the unknown type " + std::to_string(type), start + 8);

    // A division above 32767 holds the negated frames per second in its high byte and the ticks per
    // frame in the low one.
    const uint32 frames = division > 0x7FFF ? 256 - (division >> 8) : 0;
    const uint32 ticks = frames > 0 ? division & 0xFF : division;
    if (ticks == 0)
        return Fail("a time division of 0", start + 12);
    if (frames == 0)
        base = {kDefaultTempo, uint64(1000000) * ticks, true};
    else if (frames == 29) // 30000/1001 frames per second
        base = {1001, uint64(30000) * ticks, false};
    else if (frames == 24 || frames == 25 || frames == 30)
        base = {1, uint64(frames) * ticks, false};
    else
        return Fail("a time division of " + std::to_string(frames) + " frames per second",
                    start + 12);
    Skip(length - kHeaderLength, "a header");
}

void Parser::ParseTracks() {
    const std::size_t fileEnd = end;
    while (Left() > 0) {
        const std::size_t start = position;
        const bool isTrack = NextIs("MTrk");
        if (!isTrack && tracks >= declaredTracks) {
            WarnIf(Left(), " byte after the last track is left out",
                   " bytes after the last track are left out");
            break;
        }
        if (Left() < kChunkHeader)
            return Fail("the file ends inside the header of a track", end);
        position += 4;
        const uint32 length = BigEndian(4);
        if (length > Left())
            return Fail(std::string(isTrack ? "a track" : "a chunk") + " of " +
                            std::to_string(length) + " bytes is longer than the rest of the file",
                        start);
        if (!isTrack) {
            position += length;
            continue;
        }
        tracks++;
        end = position + length;
        part = "track";
        ParseTrack();
        position = end;
        end = fault ? position : fileEnd;
        part = "file";
        if (type == 2 && declaredTracks > 1) {
            file.warnings.push_back(std::to_string(declaredTracks) +
                                    " independent tracks (type 2), only the first is read");
            declaredTracks = tracks;
            break;
        }
    }
    if (tracks != declaredTracks)
        file.warnings.push_back("the number of tracks is " + std::to_string(tracks) + ", not " +
                                std::to_string(declaredTracks) + " as the header says");
    WarnIf(tracksWithoutEnd, " track has no end-of-track event",
           " tracks have no end-of-track event");
    WarnIf(tracksWithRest, " track goes on after its end-of-track event; the rest is left out",
           " tracks go on after their end-of-track events; the rest is left out");
    WarnIf(escapedMessages, " escape event with a channel message is left out",
           " escape events with channel messages are left out");
}

void Parser::ParseTrack() {
    uint64 tick = 0;
    // System exclusive and meta events cancel the running status. Files that use it after them
    // nevertheless mean the status before, so it is kept.
    uint8 running = 0;
    bool ended = false;
    while (Left() > 0 && !ended) {
        const std::size_t start = position;
        tick += VariableLength();
        const std::size_t statusPosition = position;
        const uint8 status = Byte();
        if (fault)
            return;
        if (status == kMeta) {
            ParseMeta(tick, start, ended);
        } else if (status == kSystemExclusive || status == kEscape) {
            const uint32 length = VariableLength();
            // Other data is meant for a device that this program is not.
            if (status == kEscape && length > 0 && Left() > 0 && IsChannelMessage(bytes[position]))
                escapedMessages++;
            Skip(length, "a system exclusive event");
        } else if (status > kSystemExclusive) {
            Fail("a status byte that MIDI files do not have", statusPosition);
        } else if (IsChannelMessage(status)) {
            running = status;
            ParseChannelEvent(running, tick, start);
        } else if (running == 0) {
            Fail("a data byte where a status byte is expected", statusPosition);
        } else {
            position = statusPosition;
            ParseChannelEvent(running, tick, start);
        }
    }
    lastTick = std::max(lastTick, tick);
    if (!ended)
        tracksWithoutEnd++;
    if (Left() > 0)
        tracksWithRest++;
}

void Parser::ParseMeta(uint64 tick, std::size_t start, bool& ended) {
    const uint8 kind = Byte();
    const uint32 length = VariableLength();
    const std::size_t data = position;
    Skip(length, "a meta event");
    if (fault)
        return;
    if (kind == kEndOfTrack) {
        ended = true;
    } else if (kind == kSetTempo) {
        if (length < 3)
            return Fail("a tempo of less than three bytes", data);
        tempos.push_back(
            {tick, static_cast<uint32>(start),
             uint32(bytes[data]) << 16 | uint32(bytes[data + 1]) << 8 | bytes[data + 2]});
    }
}

void Parser::ParseChannelEvent(uint8 status, uint64 tick, std::size_t start) {
    const uint8 number = DataByte();
    const uint8 value = kits::DataBytesOf(status) > 1 ? DataByte() : 0;
    // The number may be none that a key has.
    if (fault)
        return;
    const kits::MidiEvent e = kits::EventOf(status, number, value, 0);
    const bool endsEarlier = e.hook == MidiEvent::Kind::NoteOff && EndsEarlier(e, tick);
    events.push_back(
        {tick, static_cast<uint32>(start), e.hook, e.channel, endsEarlier, e.data1, e.data2});
    if (e.hook == MidiEvent::Kind::NoteOn) {
        file.notes++;
        Open& key = open[e.channel][e.data1];
        key = {tracks, key.track == tracks ? key.count + 1 : 1, tick};
    }
}

/// Returns true if the note-off ends a note that its track began at an earlier tick. Counts it as
/// ended.
bool Parser::EndsEarlier(const kits::MidiEvent& end, uint64 tick) {
    Open& key = open[end.channel][end.data1];
    if (key.track != tracks || key.count == 0)
        return false;
    key.count--;
    return key.tick < tick;
}

/// Returns true if the tick, which is not before the present one, is not too late.
bool Parser::IsInTime(uint64 next) const {
    return base.tempo == 0 ||
           next - tick <= (base.unitsPerSecond * kMaxMidiSeconds - units) / base.tempo;
}

/// Advances the time to a tick; a fault is reported at the given offset of the file.
void Parser::PassTo(uint64 next, uint32 where) {
    if (!IsInTime(next))
        return Fail("the music lasts longer than 24 hours", where);
    units += (next - tick) * base.tempo;
    tick = next;
    file.duration = static_cast<double>(units) / static_cast<double>(base.unitsPerSecond);
}

/// Sorts the events of all tracks and gives each its time.
void Parser::PlaceInTime() {
    SortInTime(events);
    SortByTick(tempos);
    std::size_t stopped = 0;
    auto change = tempos.begin();
    const auto passTempos = [&](uint64 next) {
        for (; change != tempos.end() && change->tick <= next; ++change) {
            PassTo(change->tick, change->position);
            if (change->tempo == 0)
                stopped++;
            else if (base.followsTempo)
                base.tempo = change->tempo;
        }
    };
    for (const ChannelEvent& event : events) {
        passTempos(event.tick);
        PassTo(event.tick, event.position);
        if (fault)
            return;
        file.events.push_back(
            {file.duration, event.kind, event.channel, event.number, event.value});
    }
    passTempos(lastTick);
    if (IsInTime(lastTick))
        PassTo(lastTick, 0);
    else
        file.warnings.emplace_back("the end lies beyond 24 hours, so the last event is the end");
    WarnIf(stopped, " tempo event of 0 microseconds is left out",
           " tempo events of 0 microseconds are left out");
    if (file.notes == 0)
        file.warnings.emplace_back("there is no note");
}

} // namespace

kits::Result<MidiFile> ReadMidiFile(std::span<const uint8> bytes, std::string_view name) {
    if (bytes.size() > kMaxMidiFileSize)
        return kits::Error{"could not read " + std::string(name) + ": it is larger than 64 MB"};
    return Parser(bytes).Parse(name);
}

kits::Result<MidiFile> ReadMidiFile(const std::filesystem::path& path) {
    const kits::Result<std::string> bytes = kits::ReadStream(path, kMaxMidiFileSize);
    if (!bytes)
        return bytes.Fault();
    return ReadMidiFile({reinterpret_cast<const uint8*>(bytes->data()), bytes->size()},
                        path.string());
}

} // namespace vexa
