#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Plays every preset of the LV2 plug-in in jalv, twice, and compares with vexa-render.

compare-jalv.py [BUILD [STEP]]: build/release if not given; of the presets each STEP-th only. jalv and
a client of JACK run under a server of their own in freewheel; the client sends the events and records
both ears. vexa-render plays the same MIDI file through the sound. Prints the greatest difference of
each preset and ends with 1 where one is above 1e-6 or silent.
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
# Frames by which oversampling makes what is heard later.
LATENCIES = (0, 96)
EVENTS = [(100, (0x90, 60, 100)), (137, (0x90, 64, 90)), (900, (0x80, 60, 0)),
          (1200, (0x80, 64, 0)), (1300, (0x90, 72, 110)), (1800, (0x80, 72, 0))]


def rendered(build, folder, sound):
    """Two rows of samples."""
    out = folder / "out.wav"
    subprocess.run([build / "bin/vexa-render", folder / "notes.mid", out, "--sound", sound, "--rate",
                    str(RATE), "--quiet", "--tail", str(TAIL)], check=True)
    data = out.read_bytes()
    channels = int.from_bytes(data[22:24], "little")
    samples = numpy.frombuffer(data[data.index(b"data") + 8:], "<f4").reshape(-1, channels)
    return numpy.repeat(samples, 2 // channels, axis=1).T


def difference(heard, expected):
    """The least over the latencies of the greatest one, and the latency."""
    rows = []
    for latency in LATENCIES:
        # The recorder, which also sends the events, hears the host a period later.
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
                # Of an instance that has played before something may still sound.
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
