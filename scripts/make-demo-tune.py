#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes the demo tune, a Standard MIDI File: make-demo-tune.py OUT.mid

A little piece in E minor of about a minute: two bars of arpeggio, a theme, a slower middle part in
G major, the theme again and faster, and an end in E major. The same bytes on every run.
"""

import struct
import sys

TICKS = 480  # per beat
BAR = 4  # beats

# Each voice has a channel and a register of its own (its lowest key; but for the melody it spans one
# octave), so that no key is ever held by two of them.
CONDUCTOR, MELODY, ARPEGGIO, CHORDS, BASS = range(5)
NAMES = ("Demo tune", "Melody", "Arpeggio", "Chords", "Bass")
LOWEST = {ARPEGGIO: 60, CHORDS: 48, BASS: 35}
LOUDNESS = {MELODY: 92, ARPEGGIO: 60, CHORDS: 52, BASS: 84}

MODULATION_WHEEL, BREATH = 1, 2

PITCHES = {"C": 0, "C#": 1, "D": 2, "D#": 3, "Eb": 3, "E": 4, "F": 5, "F#": 6, "G": 7, "G#": 8,
           "A": 9, "Bb": 10, "B": 11}

# A chord's bass and, above it, its tones; the third of them follows the bass as its second note.
HARMONIES = {
    "Em9": "E  G B D F#",
    "Em": "E  E G B",
    "G6": "G  G B D E",
    "Gmaj7": "G  G B D F#",
    "Cmaj7": "C  C E G B",
    "Cm6": "C  C Eb G A",
    "Am7": "A  A C E G",
    "Am6": "A  A C E F#",
    "F#m7b5": "F#  F# A C E",
    "Bm7": "B  B D F# A",
    "B7sus4": "B  B E F# A",
    "B7": "B  B D# F# A",
    "D": "D  D F# A",
    "D7": "D  D F# A C",
    "E": "E  E G# B",
}

# A part: its tempo in beats per minute in each bar (the last one holds), arpeggio notes per beat,
# the beats on which the chords are struck, loudness in percent, and the bars: their harmonies, which
# share the bar, and the melody, each note a pitch and its beats, "-" a rest.
INTRO = ((126,), 2, (0,), 80, [
    ("Em9", "-:4"),
    ("Em9", "-:3 B5:.5 D6:.5"),
])
THEME = ((126,), 2, (0, 1.5), 90, [
    ("Em9", "E5:1.5 F#5:.5 G5:1 B5:1"),
    ("Cmaj7", "A5:.5 G5:.5 E5:3"),
    ("Am7", "C6:1.5 B5:.5 A5:1 E5:1"),
    ("B7sus4", "F#5:3 -:1"),
    ("G6", "B5:1.5 C6:.5 D6:1 G5:1"),
    ("Cmaj7", "E6:1 D6:.5 B5:.5 G5:2"),
    ("F#m7b5", "A5:1.5 G5:.5 F#5:1 E5:1"),
    ("B7", "F#5:1 D#5:1 F#5:1.5 D#5:.5"),
])
MIDDLE = ((104,), 2, (0,), 75, [
    ("Gmaj7", "D6:2 B5:1 G5:1"),
    ("Bm7", "A5:1.5 B5:.5 F#5:2"),
    ("Cmaj7", "E5:1 G5:1 B5:1 C6:1"),
    ("Cm6", "A5:2 G5:1 Eb5:1"),
    ("Gmaj7", "D6:2 E6:1 D6:1"),
    ("Em9", "B5:1.5 D6:.5 G5:2"),
    ("Am7", "C6:1 B5:.5 A5:.5 E5:1 G5:1"),
    ("D7 B7", "F#5:2 D#5:1 F#5:1"),
])
RETURN = ((132,), 4, (0, 1.5, 2.5), 100, [
    ("Em9", "E5:1 G5:.5 F#5:.5 G5:1 B5:1"),
    ("Cmaj7", "A5:.5 B5:.25 A5:.25 G5:.5 F#5:.5 E5:2"),
    ("Am7", "C6:1 D6:.5 B5:.5 A5:1 E5:1"),
    ("B7sus4 B7", "F#5:1 G5:.5 A5:.5 D#6:1 F#6:1"),
    ("Cmaj7", "E6:2 D6:1 C6:1"),
    ("D", "D6:1.5 C6:.5 A5:1 F#5:1"),
    ("Em9", "G5:1 B5:1 E6:1 D6:.5 B5:.5"),
    ("Am6 B7", "C6:1 A5:1 F#5:1 D#5:1"),
])
CODA = ((120, 104, 84, 66), 2, (0,), 70, [
    ("Em", "E5:3 -:.5 B5:.5"),
    ("Am6", "C6:2 B5:1 A5:1"),
    ("B7", "F#5:2 A5:1 D#5:1"),
    ("E", "E5:4"),
])
PARTS = (INTRO, THEME, MIDDLE, RETURN, CODA)


class Track:
    def __init__(self, name):
        self.events = []  # (tick, order among events of one tick, bytes)
        self.meta(0, 0x03, name.encode("ascii"))

    def meta(self, beat, kind, data):
        self.events.append((round(beat * TICKS), 1, bytes((0xFF, kind, len(data))) + data))

    def control(self, beat, channel, controller, value):
        self.events.append((round(beat * TICKS), 1, bytes((0xB0 | channel, controller, value))))

    def note(self, beat, beats, channel, key, velocity):
        """The key is released a sixteenth of a beat early, so that it can be struck again."""
        start, end = round(beat * TICKS), round((beat + beats) * TICKS) - TICKS // 16
        self.events.append((start, 2, bytes((0x90 | channel, key, min(velocity, 127)))))
        self.events.append((end, 0, bytes((0x80 | channel, key, 64))))

    def chunk(self, end):
        self.events.sort(key=lambda event: event[:2])
        self.events.append((round(end * TICKS), 3, b"\xFF\x2F\0"))
        data, now = bytearray(), 0
        for tick, _, message in self.events:
            data += quantity(tick - now) + message
            now = tick
        return b"MTrk" + struct.pack(">I", len(data)) + data


def quantity(number):
    """A variable-length quantity: seven bits per byte, all but the last marked."""
    text = [number & 127]
    while number := number >> 7:
        text.insert(0, number & 127 | 128)
    return bytes(text)


def key_in(voice, pitch):
    """The key of the pitch within the octave from the voice's lowest key on."""
    return LOWEST[voice] + (PITCHES[pitch] - LOWEST[voice]) % 12


def velocity(voice, loudness, beat):
    accent = 8 if beat % BAR == 0 else 4 if beat % 1 == 0 else 0
    return LOUDNESS[voice] * loudness // 100 + accent


def play_harmony(tracks, name, beat, beats, density, strikes, loudness):
    """One harmony for so many beats in the three lower voices."""
    bass, *tones = HARMONIES[name].split()

    starts = [start for start in strikes if start < beats] + [beats]
    for start, end in zip(starts, starts[1:]):
        for tone in tones:
            tracks[CHORDS].note(beat + start, end - start, CHORDS - 1, key_in(CHORDS, tone),
                                velocity(CHORDS, loudness, beat + start))

    walk = ((0, 1.5, bass), (1.5, .5, bass), (2, 1, tones[2]), (3, 1, bass))
    for start, length, pitch in walk if beats == BAR else ((0, 1.5, bass), (1.5, .5, bass)):
        tracks[BASS].note(beat + start, length, BASS - 1, key_in(BASS, pitch),
                          velocity(BASS, loudness, beat + start))

    keys = sorted(key_in(ARPEGGIO, tone) for tone in tones)
    wave = keys + keys[-2:0:-1]  # up and down again
    for i in range(beats * density):
        tracks[ARPEGGIO].note(beat + i / density, 1 / density, ARPEGGIO - 1, wave[i % len(wave)],
                              velocity(ARPEGGIO, loudness, beat + i / density))


def play_melody(track, line, beat, loudness):
    for word in line.split():
        pitch, beats = word.split(":")
        if pitch != "-":
            key = 12 * (int(pitch[-1]) + 1) + PITCHES[pitch[:-1]]
            track.note(beat, float(beats), MELODY - 1, key,
                       velocity(MELODY, loudness, beat) + (key - 76) // 2)
        beat += float(beats)
    return beat


def hill(position, length, height):
    """Rises from 0 to the height and falls to 0 again over the length."""
    return round(height * (1 - abs(2 * position / length - 1)))


def compose():
    tracks = [Track(name) for name in NAMES]
    tracks[CONDUCTOR].meta(0, 0x58, bytes((4, 2, 24, 8)))  # 4/4
    tracks[CONDUCTOR].meta(0, 0x59, bytes((1, 1)))  # E minor
    beat = 0
    for tempos, density, strikes, loudness, bars in PARTS:
        first, beats = beat, len(bars) * BAR
        for i, (names, line) in enumerate(bars):
            if i < len(tempos):
                tracks[CONDUCTOR].meta(beat, 0x51, struct.pack(">I", 60000000 // tempos[i])[1:])
            harmonies = names.split()
            share = BAR // len(harmonies)
            for k, name in enumerate(harmonies):
                play_harmony(tracks, name, beat + k * share, share, density, strikes, loudness)
            assert play_melody(tracks[MELODY], line, beat, loudness) == beat + BAR, line
            beat += BAR
        # The wheel moves every two bars, the breath once in a part.
        for step in range(2 * beats + 1):
            at = step / 2
            wheel = hill(at % (2 * BAR), 2 * BAR, loudness)
            tracks[MELODY].control(first + at, MELODY - 1, MODULATION_WHEEL, wheel)
            tracks[MELODY].control(first + at, MELODY - 1, BREATH, hill(at, beats, 127))
    header = b"MThd" + struct.pack(">IHHH", 6, 1, len(tracks), TICKS)
    return header + b"".join(track.chunk(beat) for track in tracks)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with open(sys.argv[1], "wb") as file:
        file.write(compose())


if __name__ == "__main__":
    main()
