#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Compares the processor time of vexa-render and of the same voices in Faust for 20 notes of 60 s.

compare-faust.py [VEXA-RENDER], build/release/bin/vexa-render by default; faust must be installed.
Faust's program has the voices of benchmarks/twin-hills.xml, a plain sound with a circular orbit, and
knows the notes at compile time. It uses single precision and vector mode and is compiled with
-O3 -march=native -ffast-math. Both write 32-bit floats at 44100 Hz to a file; the script ends with an
error if the two files do not have the same sound.

vexa-render is measured with the interpreted formula and with the compiled add-on. From the latter the
compiler's time is subtracted, because Faust's compilation is not counted either. Prints the medians of
21 rounds, in each of which all programs run once, and the medians of the ratios within a round, because
the load of the machine differs between rounds.
"""
import argparse
import array
import pathlib
import statistics
import subprocess
import sys
import tempfile

from midifile import midi_file, notes
from processortime import rounds

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOUND = ROOT / "benchmarks/twin-hills.xml"
NOTES = range(40, 80, 2)
SECONDS = 60
ROUNDS = 21
RATE = 44100
# The largest difference of samples in the first second, as a part of the peak, at which the two sounds
# count as the same. Rounding phases to float causes differences of this size.
SAME = 0.02

# benchmarks/twin-hills.xml without release segments and controllers, for notes of velocity 100.
VOICES = """import("stdfaust.lib");

time = ba.time / ma.SR;
line(from, t0, v0, t1, v1) = select2(time > t0, from, select2(time > t1,
    v0 + (time - t0) * (v1 - v0) / (t1 - t0), v1));
drift = 0.4 : line(_, 0, 0.4, 1.5, -0.4) : line(_, 1.5, -0.4, 4, 0.2) : line(_, 4, 0.2, 6, 0);
wide = 0 : line(_, 0, 0, 0.012, 1) : line(_, 0.012, 1, 0.25, 0.7) : line(_, 0.25, 0.7, 2, 0.55);
high = 0 : line(_, 0, 0, 0.012, 1) : line(_, 0.012, 1, 0.35, 0.6) : line(_, 0.35, 0.6, 2.5, 0.5);
radius = 0.5 + 0.9 * 100 / 127;

f(x, y) = 0.35 * (5 * (x * y * y - y * x * x) - 3 * (x - y)) / (d * d)
with { d = 1 + x * x + y * y; };

lowcut(freq, s) = s - gain * (decaying(a) - decaying(b))
with {
    k = log(2) * freq / 44100;
    a = exp(-k);
    b = exp(-2 * k);
    gain = (1 - a) * (1 - b) / (a - b);
    decaying(pole) = s : + ~ *(pole);
};

voice(freq) = f(x, y) : lowcut(freq)
with {
    step = freq / ma.SR;
    phase = (+(step) ~ ma.frac) - step : *(2 * ma.PI);
    cx = (0.5 * drift / ma.SR : + ~ _) - 0.5 * drift / ma.SR;
    x = radius * wide * cos(phase) + cx;
    y = radius * high * sin(phase);
};

process = par(i, %d, voice(440 * pow(2, (%d + %d * i - 69) / 12.0))) :> *(0.25);
"""

PROGRAM = """#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>
#define FAUSTFLOAT float
struct Meta { void declare(const char*, const char*) {} };
struct UI { void openVerticalBox(const char*) {} void closeBox() {} };
struct dsp {};
<<includeIntrinsic>>
<<includeclass>>
int main(int, char** arguments) {
    mydsp* const voices = new mydsp;
    voices->init(%d);
    std::FILE* const file = std::fopen(arguments[1], "wb");
    std::vector<float> block(4096);
    float* out = block.data();
    for (long left = %dL; left > 0; left -= 4096) {
        const int count = int(std::min(left, 4096L));
        voices->compute(count, nullptr, &out);
        std::fwrite(out, sizeof(float), std::size_t(count), file);
    }
    return std::fclose(file);
}
"""


def build_faust(folder):
    """Compiles the program that plays the voices into the file that its argument names; returns its path."""
    (folder / "voices.dsp").write_text(VOICES % (len(NOTES), NOTES.start, NOTES.step))
    (folder / "program.cpp").write_text(PROGRAM % (RATE, RATE * SECONDS))
    subprocess.run(["faust", "-vec", "-vs", "64", "-single", "-a", folder / "program.cpp", "-o",
                    folder / "voices.cpp", folder / "voices.dsp"], check=True)
    subprocess.run(["g++", "-O3", "-march=native", "-ffast-math", "-o", folder / "voices",
                    folder / "voices.cpp"], check=True)
    return folder / "voices"


def check(ours, theirs):
    """Ends the script with an error unless both files have the same sound."""
    data = ours.index(b"data") + 8
    one, other = array.array("f", ours[data:]), array.array("f", theirs)
    if len(one) != len(other):
        sys.exit(f"faust wrote {len(other)} samples, vexa-render {len(one)}")
    gap = max(abs(a - b) for a, b in zip(one[:RATE], other[:RATE]))
    peak = max(map(abs, one[:RATE]))
    if not gap < SAME * peak:
        sys.exit(f"not the same sound: a difference of {gap:.2g}, and a peak of {peak:.2g}")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", nargs="?", default=ROOT / "build/release/bin/vexa-render")
    program = parser.parse_args().program
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        long, short = folder / "notes.mid", folder / "moment.mid"
        long.write_bytes(midi_file(notes(NOTES, 0, 1000 * SECONDS)))
        short.write_bytes(midi_file(notes(NOTES, 0, 1)))
        faust = build_faust(folder)

        def vexa(music, *options):
            return [program, music, folder / "vexa.wav", "--tail", "0", "--sound", SOUND,
                    *options]

        times = rounds([[faust, folder / "faust.raw"], vexa(long, "--compile"),
                        vexa(short, "--compile"), vexa(long)], ROUNDS)
        check((folder / "vexa.wav").read_bytes(), (folder / "faust.raw").read_bytes())
    theirs, whole, compiler, formula = zip(*times)
    addon = [a - b for a, b in zip(whole, compiler)]

    def said(ours):
        ratio = statistics.median(a / b for a, b in zip(theirs, ours))
        return f"{statistics.median(ours):.3f} s, ratio {ratio:.2f}"
    print(f"faust {statistics.median(theirs):.3f} s, vexa-render by formula {said(formula)}; "
          f"with the add-on {said(addon)}")


if __name__ == "__main__":
    main()
