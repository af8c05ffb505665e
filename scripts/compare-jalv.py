#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks that the presets of the LV2 plug-in sound the same in jalv as in vexa-render.

compare-jalv.py [BUILD [STEP]], build/release and 1 by default; every STEP-th preset is checked, twice.
jalv and a JACK client run under a JACK server of their own, which freewheels. The client sends the
events and records both channels. vexa-render plays a MIDI file of the same events with the same sound.
Prints the largest difference for each preset; the exit code is 1 if one is above 1e-6 or a preset is
silent.
"""
import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

import numpy

from jalvhost import PERIOD, RATE, Jalv, server
from midifile import midi_file

ROOT = pathlib.Path(__file__).resolve().parent.parent
URI = "urn:vexa:instrument"
SECONDS = 5
TAIL = 4
LIMIT = 1e-6
# The latency in frames without and with oversampling.
LATENCIES = (0, 96)
EVENTS = [(100, (0x90, 60, 100)), (137, (0x90, 64, 90)), (900, (0x80, 60, 0)),
          (1200, (0x80, 64, 0)), (1300, (0x90, 72, 110)), (1800, (0x80, 72, 0))]


def rendered(build, folder, sound):
    """Renders the notes with a sound and returns the samples as two rows, left and right."""
    out = folder / "out.wav"
    subprocess.run([build / "bin/vexa-render", folder / "notes.mid", out, "--sound", sound, "--rate",
                    str(RATE), "--quiet", "--tail", str(TAIL)], check=True)
    data = out.read_bytes()
    channels = int.from_bytes(data[22:24], "little")
    samples = numpy.frombuffer(data[data.index(b"data") + 8:], "<f4").reshape(-1, channels)
    # The end of the file fades.
    return numpy.repeat(samples, 2 // channels, axis=1)[:-RATE // 100].T


def difference(heard, expected):
    """Returns the largest difference of two samples for the latency at which it is least, and that
    latency."""
    rows = []
    for latency in LATENCIES:
        # The recorder also sends the events, so it receives the host's output one period later.
        begin = PERIOD + latency
        count = min(heard.shape[1] - begin, expected.shape[1])
        rows.append((numpy.abs(heard[:, begin:begin + count] - expected[:, :count]).max(), latency))
    return min(rows)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", nargs="?", type=pathlib.Path, default=ROOT / "build/release")
    parser.add_argument("step", nargs="?", type=int, default=1)
    options = parser.parse_args()
    build, step = options.build.resolve(), options.step
    failed = False
    with tempfile.TemporaryDirectory() as name, server():
        folder = pathlib.Path(name)
        (folder / "notes.mid").write_bytes(midi_file(EVENTS))
        for sound in sorted((ROOT / "data/sounds").glob("*.xml"))[::step]:
            preset = f"{URI}#preset_" + re.sub("[^A-Za-z0-9]", "_", sound.stem)
            expected = rendered(build, folder, sound)
            for _ in range(2):
                # A new host each time, because in an old one earlier notes may still sound.
                with Jalv(URI, build / "lv2") as jalv:
                    jalv.load(preset)
                    heard, _ = jalv.play(EVENTS, SECONDS)
                worst, latency = difference(heard, expected)
                peak = numpy.abs(heard).max()
                print(f"{sound.stem:15} peak {peak:.3f}, latency {latency:2}, difference {worst:.1e}",
                      flush=True)
                failed |= not (worst <= LIMIT and peak > 1e-3)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
