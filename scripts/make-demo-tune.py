#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes the demo tune, a Standard MIDI File: make-demo-tune.py OUT.mid

The tune is a bossa nova in A minor, about a minute long, for five instruments, each on a channel of its
own: a melody, chords with the sustain pedal, a pad, a bass and hand drums. The script ./run names the
sounds for which it was written. Every run writes the same bytes.
"""
import argparse
import pathlib
import struct
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
from midifile import variable_length

TICKS = 480  # per beat
BAR = 4  # beats
WHEEL, VOLUME, SUSTAIN = 1, 7, 64

# Channels count from 0, as in MIDI messages; LEVEL is the volume controller.
MELODY, CHORDS, PAD, BASS, DRUMS = range(5)
NAMES = ("Melody", "Chords", "Pad", "Bass", "Hand drums")
CHANNEL = (0, 1, 2, 3, 9)
LEVEL = (122, 127, 118, 116, 127)

STEPS = {"C": 0, "D": 2, "E": 4, "F": 5, "G": 7, "A": 9, "B": 11}

# For each chord its root, the fifth to which the bass moves, and the notes of the right hand, which
# leaves out the root.
HARMONIES = {
    "Am9": "A E  G B C E",
    "D9": "D A  F# A C E",
    "Fmaj7": "F C  E G A C",
    "G6": "G D  E G B D",
    "Cmaj9": "C G  D E G B",
    "Dm9": "D A  E F A C",
    "G13": "G D  E F A B",
    "Bm7b5": "B F  D F A B",
    "E7sus4": "E B  D E A B",
    "E7": "E B  D F G# B",
    "Am69": "A E  F# B C E",
}

# A part has its loudness in percent, whether the drums play, and its bars. A bar has its harmonies, which
# share it equally, and the melody as PITCH:BEATS. "-" is a rest; "~" bends up to the pitch from below.
INTRO = (70, True, [
    ("Am9", "-:4"),
    ("D9", "-:3 E5:.5 G5:.5"),
])
THEME = (85, True, [
    ("Am9", "~A5:1.5 G5:.5 E5:1.5 C5:.5"),
    ("D9", "D5:.5 E5:.5 ~F#5:2 -:.5 E5:.5"),
    ("Am9", "A5:1.5 B5:.5 ~C6:1 B5:.5 A5:.5"),
    ("D9", "F#5:.5 E5:.5 D5:2.5 E5:.5"),
    ("Fmaj7", "~C6:1.5 A5:.5 G5:.5 A5:.5 E5:1"),
    ("G6", "~D6:1.5 B5:.5 A5:.5 B5:.5 G5:1"),
    ("Cmaj9", "~E6:1.5 D6:.5 B5:1 G5:1"),
    ("E7sus4 E7", "A5:1 B5:1 ~G#5:1.5 E5:.5"),
])
BRIDGE = (75, False, [
    ("Dm9", "F5:.5 A5:.5 C6:.5 ~E6:1.5 D6:.5 C6:.5"),
    ("G13", "B5:1.5 A5:.5 ~E5:1.5 D5:.5"),
    ("Cmaj9", "E5:.5 G5:.5 B5:.5 ~D6:1.5 C6:.5 B5:.5"),
    ("Bm7b5 E7", "A5:1 F5:1 G#5:1 B5:1"),
])
RETURN = (100, True, [
    ("Am9", "C6:.5 B5:.5 A5:.5 G5:.5 ~E5:1.5 G5:.5"),
    ("D9", "F#5:.5 G5:.5 ~A5:2 -:.5 A5:.5"),
    ("Am9", "C6:.75 D6:.25 ~E6:1 D6:.5 C6:.5 B5:.5 A5:.5"),
    ("D9", "F#5:.5 A5:.5 ~D6:2 -:1"),
    ("Fmaj7", "C6:1 A5:.5 C6:.5 ~E6:1 D6:.5 C6:.5"),
    ("G6", "B5:1 G5:.5 B5:.5 ~D6:1 C6:.5 B5:.5"),
    ("Cmaj9", "~E6:1.5 D6:.25 C6:.25 B5:.5 G5:.5 D5:1"),
    ("E7sus4 E7", "A5:1 E5:1 ~G#5:1 B5:1"),
])
CODA = (75, True, [
    ("Fmaj7", "~A5:2 G5:.5 A5:.5 C6:1"),
    ("G6", "~B5:2.5 -:.5 D6:1"),
    ("Am69", "~E6:4"),
])
PARTS = (INTRO, THEME, BRIDGE, RETURN, CODA)
# Beats per minute, and those of the last three bars.
TEMPO, SLOWER = 116, (108, 92, 76)

# Start and length, in beats, of the chords in an even and in an odd bar.
COMPING = ((0, 1), (1.5, .5), (2.5, .5), (3.5, .5)), ((0.5, .5), (1.5, 1), (3, .5), (3.5, .5))
# The sixteenths of the hand drums: heel, toe, slap and open tone of the higher drum, and the open tone
# of the lower one ("l"). Every fourth bar has the second pattern.
GROOVE = "h.t.s.t.h.t.o.oo", "h.t.s.to.olloolo"
# For each stroke its key, its velocity and the value of the modulation wheel, which is how much the hand
# damps the skin.
STROKES = {"h": (55, 64, 50), "t": (60, 56, 70), "s": (67, 122, 30), "o": (60, 112, 0), "l": (53, 120, 0)}


class Track:
    """The track of one player, or of the conductor, which has no channel."""

    def __init__(self, name):
        self.channel = None
        self.events = []  # (tick, order among events of one tick, bytes)
        self.meta(0, 0x03, name.encode("ascii"))

    def meta(self, beat, kind, data):
        self.events.append((round(beat * TICKS), 1, bytes((0xFF, kind, len(data))) + data))

    def send(self, beat, status, *data):
        self.events.append((max(0, round(beat * TICKS)), 1, bytes((status | self.channel, *data))))

    def control(self, beat, controller, value):
        self.send(beat, 0xB0, controller, round(value))

    def bend(self, beat, part):
        """Adds a pitch bend by `part` of its range, from -1 to 1."""
        number = min(8192 + round(8192 * part), 16383)
        self.send(beat, 0xE0, number & 127, number >> 7)

    def note(self, beat, beats, key, velocity):
        start, end = round(beat * TICKS), round((beat + beats) * TICKS)
        velocity = max(1, min(round(velocity), 127))
        self.events.append((start, 2, bytes((0x90 | self.channel, key, velocity))))
        self.events.append((end, 0, bytes((0x80 | self.channel, key, 64))))

    def chunk(self, end):
        self.events.sort(key=lambda event: event[:2])
        self.events.append((round(end * TICKS), 3, b"\xFF\x2F\0"))
        data, now = bytearray(), 0
        for tick, _, message in self.events:
            data += variable_length(tick - now) + message
            now = tick
        return b"MTrk" + struct.pack(">I", len(data)) + data


def key_of(pitch):
    """Returns the MIDI key of a pitch with its octave, such as F#5."""
    return 12 * (int(pitch[-1]) + 1) + STEPS[pitch[0]] + pitch.count("#")


def key_from(lowest, name):
    """Returns the lowest key from `lowest` on that has the name."""
    return lowest + (STEPS[name[0]] + name.count("#") - lowest) % 12


def play_melody(track, line, following, beat, loudness):
    words = line.split()
    for word, next_word in zip(words, [*words[1:], following]):
        pitch, beats = word.lstrip("~").split(":")
        beats = float(beats)
        if pitch != "-":
            key = key_of(pitch)
            if word[0] == "~":
                for step in range(9):
                    track.bend(beat + step / 32, -0.4 * (1 - step / 8) ** 2)
            if beats > 1:
                # Long notes swell.
                for step in range(17):
                    part = step / 16
                    track.control(beat + part * beats, WHEEL, 70 * part * (1 - part) * loudness / 25)
            # Overlaps the next note, so that the two are legato, unless that has the same key.
            bound = next_word.lstrip("~").split(":")[0] not in (pitch, "-")
            track.note(beat, beats + (.02 if bound else -.05), key,
                       loudness + (key - 76) // 2 + 6 * (beat % 1 == 0))
        beat += beats
    return beat


def play_chords(track, keys, beat, beats, bar, loudness):
    # The pedal is released and pressed again with each harmony, shortly after its first chord.
    track.control(beat + .1, SUSTAIN, 0)
    track.control(beat + .2, SUSTAIN, 127)
    for start, length in COMPING[bar % 2]:
        if start < beats:
            for i, key in enumerate(keys):
                # The chord is slightly broken, from the lowest note up.
                track.note(beat + start + .012 * i, min(length, beats - start) - .05, key,
                           0.88 * loudness + 3 * i + 8 * (start % 1 == 0))


def play_bass(track, root, fifth, beat, beats, loudness):
    low, high = key_from(33, root), key_from(33, fifth)
    for start, length, key, accent in ((0, 1.4, low, 12), (1.5, .45, high, 0), (2, 1.4, high, 6), (3.5, .45, low, -4)):
        if start < beats:
            track.note(beat + start, length, key, loudness + accent)
    # The wheel rises toward the next harmony.
    for step in range(8):
        track.control(beat + beats * step / 8, WHEEL, step * loudness / 25)


def play_drums(track, pattern, beat, loudness):
    for i, stroke in enumerate(pattern):
        if stroke != ".":
            key, velocity, damping = STROKES[stroke]
            at = beat + i / 4
            track.control(at - 1 / 16, WHEEL, damping)
            track.note(at, 1 / 5, key, velocity * loudness / 100 + 6 * (i % 8 == 0))


def compose():
    conductor = Track("Demo tune")
    conductor.meta(0, 0x58, bytes((4, 2, 24, 8)))  # 4/4
    conductor.meta(0, 0x59, bytes((0, 1)))  # A minor
    players = [Track(name) for name in NAMES]
    for track, channel, level in zip(players, CHANNEL, LEVEL):
        track.channel = channel
        track.control(0, VOLUME, level)
    tempos = {0: TEMPO} | {-len(SLOWER) + i: tempo for i, tempo in enumerate(SLOWER)}
    bars = [(loudness, drums, *line) for loudness, drums, lines in PARTS for line in lines]
    for bar, tempo in tempos.items():
        conductor.meta(bar % len(bars) * BAR, 0x51, struct.pack(">I", 60000000 // tempo)[1:])

    for bar, (loudness, drums, names, line) in enumerate(bars):
        beat, last = bar * BAR, bar == len(bars) - 1
        harmonies = names.split()
        beats = BAR // len(harmonies)
        for i, name in enumerate(harmonies):
            at = beat + i * beats
            root, fifth, *tones = HARMONIES[name].split()
            chord = sorted(key_from(52, tone) for tone in tones)
            struck = 1 if last else beats
            play_chords(players[CHORDS], chord, at, struck, bar, loudness)
            play_bass(players[BASS], root, fifth, at, struck, loudness)
            for key in chord:
                players[PAD].note(at, beats - .05, key + 12 * (key < 56), 0.8 * loudness)
        if drums:
            groove = "o" if last else GROOVE[bar % 4 == 1]
            play_drums(players[DRUMS], groove, beat, loudness)
        following = "-" if last else bars[bar + 1][-1].split()[0]
        end = play_melody(players[MELODY], line, following, beat, loudness)
        assert end == beat + BAR, line
        # The pad's wheel rises and falls once in four bars.
        for step in range(16):
            part = (bar % 4 + step / 16) / 4
            players[PAD].control(beat + step / 4, WHEEL, 4 * part * (1 - part) * loudness)
    beat = len(bars) * BAR
    for track in players:
        track.control(beat, SUSTAIN, 0)
    tracks = [conductor, *players]
    header = b"MThd" + struct.pack(">IHHH", 6, 1, len(tracks), TICKS)
    return header + b"".join(track.chunk(beat) for track in tracks)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("file", type=pathlib.Path)
    parser.parse_args().file.write_bytes(compose())


if __name__ == "__main__":
    main()
