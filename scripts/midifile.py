# SPDX-License-Identifier: GPL-3.0-or-later
"""Standard MIDI Files, for the scripts that play something."""
import struct


def variable_length(number):
    """A number as MIDI files have it: 7 bits a byte, the first the highest."""
    bytes_ = [number & 127]
    while number := number >> 7:
        bytes_.insert(0, 128 | number & 127)
    return bytes(bytes_)


def midi_file(events):
    """A file of one track from (milliseconds, bytes of a channel event), in any order; events of
    the same time stay in theirs."""
    track = b"\x00\xff\x51\x03" + (1000000).to_bytes(3, "big")
    now = 0
    for time, event in sorted(events, key=lambda pair: pair[0]):
        track += variable_length(time - now) + bytes(event)
        now = time
    track += b"\x00\xff\x2f\x00"
    return (b"MThd" + struct.pack(">IHHH", 6, 0, 1, 1000)
            + b"MTrk" + struct.pack(">I", len(track)) + track)


def notes(numbers, begin, end, velocity=100):
    """The events of keys that are pressed together and let go together."""
    return ([(begin, (0x90, note, velocity)) for note in numbers]
            + [(end, (0x80, note, 0)) for note in numbers])
