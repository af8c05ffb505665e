# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes Standard MIDI Files, for the scripts that play music."""
import struct


def variable_length(number):
    """Returns a number as a variable-length quantity of MIDI files: 7 bits a byte, the highest first."""
    bytes_ = [number & 127]
    while number := number >> 7:
        bytes_.insert(0, 128 | number & 127)
    return bytes(bytes_)


def midi_file(events):
    """Returns the bytes of a file with one track. `events` are pairs (milliseconds, bytes of a channel
    event) in any order; events of the same time keep their order."""
    track = b"\x00\xff\x51\x03" + (1000000).to_bytes(3, "big")
    now = 0
    for time, event in sorted(events, key=lambda pair: pair[0]):
        track += variable_length(time - now) + bytes(event)
        now = time
    track += b"\x00\xff\x2f\x00"
    return (b"MThd" + struct.pack(">IHHH", 6, 0, 1, 1000)
            + b"MTrk" + struct.pack(">I", len(track)) + track)


def notes(numbers, begin, end, velocity=100):
    """Returns the events of keys that are pressed together and released together, times in
    milliseconds."""
    return ([(begin, (0x90, note, velocity)) for note in numbers]
            + [(end, (0x80, note, 0)) for note in numbers])
