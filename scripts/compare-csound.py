#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Compares the processor time of vexa-render and of Csound's opcode wterrain for 20 notes of 60 s.

compare-csound.py [VEXA-RENDER], build/release/bin/vexa-render by default; csound must be installed.
Both read their score from a file and write 32-bit floats at 44100 Hz to another; Csound works in blocks
of 64 samples (ksmps). Its instrument corresponds to a note of benchmarks/twin-hills.xml: four envelopes,
an orbit on a terrain, and a filter that removes DC. Prints the medians of five alternating runs.
"""
import argparse
import pathlib
import sys
import tempfile

from midifile import midi_file, notes
from processortime import medians

ROOT = pathlib.Path(__file__).resolve().parent.parent
NOTES = range(40, 80, 2)
SECONDS = 60

ORCHESTRA = """sr = 44100
ksmps = 64
nchnls = 1
0dbfs = 1
giX ftgen 1, 0, 8192, 10, 1, 0.3, 0.2
giY ftgen 2, 0, 8192, 10, 1, 0.5, 0.1
instr 1
  kx linseg 0, 20, 1, 40, 0.2
  ky linseg 0.5, 30, 0, 30, 1
  krx linseg 0, 0.02, 1, 0.5, 0.6, 60, 0.6
  kry linseg 0.2, 0.7, 0.9, 60, 0.9
  aout wterrain 0.03, p4, kx, ky, krx, kry, giX, giY
  ahigh dcblock2 aout
  out ahigh
endin
"""


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", nargs="?", default=ROOT / "build/release/bin/vexa-render")
    program = parser.parse_args().program
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "notes.mid").write_bytes(midi_file(notes(NOTES, 0, 1000 * SECONDS)))
        (folder / "terrain.orc").write_text(ORCHESTRA)
        (folder / "notes.sco").write_text("".join(
            f"i1 0 {SECONDS} {440 * 2 ** ((note - 69) / 12):.4f}\n" for note in NOTES))
        vexa, csound = medians([
            [program, folder / "notes.mid", folder / "vexa.wav", "--tail", "0", "--sound",
             ROOT / "benchmarks/twin-hills.xml"],
            ["csound", "-d", "-m0", "-W", "-f", "-o", folder / "csound.wav",
             folder / "terrain.orc", folder / "notes.sco"]])
        for file in ("vexa.wav", "csound.wav"):
            size = (folder / file).stat().st_size
            if size < 4 * 44100 * SECONDS:
                sys.exit(f"{file} has only {size} bytes")
    print(f"vexa-render {vexa:.2f} s, csound {csound:.2f} s, ratio {csound / vexa:.1f}")


if __name__ == "__main__":
    main()
