#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks that vexa-render writes the same bytes with every instruction set.

Renders each piece with each instruction set of this machine and, if a second command is given, with
that one too. The pieces are every shipped sound, without oversampling to save time, and cases that
exercise the rest: all keys, the maths functions of formulas, macros and properties of the note,
oversampling, another rate. The files have 32-bit floats; no compiler is used. Each file that differs
from that of the first instruction set is printed; the exit code is 1 if there is any.
"""
import argparse
import array
import os
import pathlib
import subprocess
import sys
import tempfile

from midifile import midi_file, notes

ROOT = pathlib.Path(__file__).resolve().parent.parent
VARIABLE = "VEXA_INSTRUCTION_SET"

PHRASE = midi_file(
    notes([40, 52, 59], 0, 700) + notes([67], 150, 400, 30) + notes([71], 400, 900, 127)
    + notes([93, 100], 500, 600, 64)
    + [(300, (0xB0, 1, 90)), (450, (0xB0, 16, 20)), (800, (0xB0, 1, 10)), (850, (0xB0, 7, 64))])
ALL_KEYS = midi_file([event for key in range(128)
                      for event in notes([key], 5 * key, 5 * key + 20, 1 + key % 127)])

FORMULAS = [
    "sin(3*x)*cos(2*y)+exp(-x*x-y*y)",
    "tanh(sin(1e8*x))+sin(1e13*y)+cosf(4*y)*logf(fabsf(x)+0.1f)",
    "pow(fabs(x)+0.1,y)+atan2(y,x)+atan(x)+log(fabs(y)+0.01)",
    "tan(x)/(1+x*x)+asin(sin(x))+acos(cos(y))+sinh(x/4)+cosh(y/4)",
    "asinh(x)+acosh(1+x*x)+atanh(tanh(y/2))+exp2(y)+expm1(x)",
    "log2(1+x*x)+log10(1+y*y)+log1p(x*x)+cbrt(x*y)+hypot(x,y)",
    "erf(x)+erfc(y)+tgamma(1+fabs(x))+lgamma(1+fabs(y))",
    "j0(9*x)+j1(30*y)+jn(3,20*x)+y0(1+fabs(40*x))+yn(2,2+fabs(y))",
    "fmod(7*x,1.5)+remainder(y,0.7)+fma(x,y,0.1)+floor(3*x)/4+(int)(4*y)%3+(unsigned char)(99*x)/99.0f",
    "(0.2+0.8*vel)*sin(3*x+2*t)*cos(y+key)+a*ctl(1)+b*(x>y)",
]

# Each piece has a name, the bytes of a MIDI file, and options of vexa-render.
PIECES = (
    [(path.stem, PHRASE, ["--sound", path.stem, "--oversample", "1"])
     for path in sorted((ROOT / "data/sounds").glob("*.xml"))]
    + [(formula, PHRASE, ["--function", formula]) for formula in FORMULAS]
    + [("all keys", ALL_KEYS, ["--sound", "bell"]),
       ("oversampling", PHRASE, ["--oversample", "4", "--sound", "bell"]),
       ("another rate", PHRASE, ["--rate", "96000", "--normalize"])])


def machine_sets(program):
    """Returns the instruction sets that the program can use on this machine. It lists them in its error
    message for an unknown one."""
    said = subprocess.run([program, "a.mid", "a.wav"], env=os.environ | {VARIABLE: "?"},
                          capture_output=True, text=True).stderr
    head, separator, names = said.partition("this machine has ")
    if not separator:
        sys.exit(f"{program} does not name its instruction sets: {head}")
    return names.strip().split(", ")


def render(command, environment, folder, music, options):
    """Returns the bytes of the sound file that a command renders."""
    (folder / "music.mid").write_bytes(music)
    output = folder / "sound.wav"
    subprocess.run([*command, folder / "music.mid", output, "--quiet", "--tail", "0.3", *options],
                   check=True, env=os.environ | environment)
    return output.read_bytes()


def difference(one, other):
    """Returns a text about the difference of two files that should be equal."""
    if len(one) != len(other):
        return f"{len(other)} instead of {len(one)} bytes"
    data = one.index(b"data") + 8
    ours, theirs = array.array("f", one[data:]), array.array("f", other[data:])
    gaps = [abs(a - b) for a, b in zip(ours, theirs) if a != b]
    return f"{len(gaps)} of {len(ours)} samples, by up to {max(gaps, default=0):.2g}"


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", help="vexa-render")
    parser.add_argument("other", nargs=argparse.REMAINDER,
                        help="a command that runs vexa-render of another machine")
    arguments = parser.parse_args()
    program, other = arguments.program, arguments.other
    sets = machine_sets(program)
    ways = [(name, [program], {VARIABLE: name}) for name in sets]
    if other:
        ways.append(("the other machine", other, {}))
    failed = False
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for title, music, options in PIECES:
            first, *rest = (render(command, environment, folder, music, options)
                            for _, command, environment in ways)
            if not any(first[first.index(b"data") + 8:]):
                sys.exit(f"{title} is silent")
            for (way, _, _), bytes_ in zip(ways[1:], rest):
                if bytes_ != first:
                    failed = True
                    print(f"{title}: {way} differs from {ways[0][0]} in "
                          f"{difference(first, bytes_)}")
    print(f"{len(PIECES)} pieces with {', '.join(way for way, _, _ in ways)}: "
          + ("not the same bytes" if failed else "the same bytes"))
    return failed


if __name__ == "__main__":
    sys.exit(main())
