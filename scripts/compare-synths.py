#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Compares the processor time of Vexa and of other LV2 synthesizers, all in jalv.

compare-synths.py [BUILD], build/release by default; the Debian packages synthv1-lv2 and zynaddsubfx-lv2
must be installed. A chord of 8 notes is held for 60 s of sound while JACK freewheels. Vexa plays with
presets, the others with their initial sound. Prints the processor time of the whole host for 60 s of
sound: with the chord, before it ("idle"), and from 15 s after its release ("after"). The times are
medians of three alternating runs.
"""
import argparse
import pathlib
import statistics
import sys

import numpy

from jalvhost import Jalv, server
from midifile import notes

ROOT = pathlib.Path(__file__).resolve().parent.parent
VEXA = "urn:vexa:instrument"
SYNTHS = [("Vexa, default", VEXA, "default"), ("Vexa, pad", VEXA, "pad"),
          ("Vexa, voice", VEXA, "voice"), ("synthv1", "http://synthv1.sourceforge.net/lv2", None),
          ("ZynAddSubFX", "http://zynaddsubfx.sourceforge.net", None)]
CHORD = (48, 52, 55, 59, 60, 64, 67, 71)
SECONDS = 60
FADING = 15
RUNS = 3


def measured(build, uri, preset):
    """Returns the seconds of processor time with the chord, before it and after it."""
    with Jalv(uri, build / "lv2") as jalv:
        if preset:
            jalv.load(f"{uri}#preset_{preset}")
        _, idle = jalv.play([], SECONDS)
        heard, used = jalv.play(notes(CHORD, 0, 1000 * SECONDS - 1), SECONDS)
        jalv.play([], FADING)
        _, after = jalv.play([], SECONDS)
    # The chord has to sound to its end.
    if numpy.abs(heard[:, -48000:]).max() < 1e-4:
        sys.exit(f"{uri} {preset or ''}: silent before the end")
    return used, idle, after


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", nargs="?", type=pathlib.Path, default=ROOT / "build/release")
    build = parser.parse_args().build.resolve()
    with server():
        runs = [[measured(build, uri, preset) for _, uri, preset in SYNTHS] for _ in range(RUNS)]
    print(f"{'':16} chord   idle  after (s of processor time, {SECONDS} s of sound)")
    for (name, _, _), rows in zip(SYNTHS, zip(*runs)):
        used, idle, after = (statistics.median(column) for column in zip(*rows))
        print(f"{name:16} {used:5.2f}  {idle:5.2f}  {after:5.2f}")


if __name__ == "__main__":
    main()
