#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures the level of the aliases of the shipped sounds.

measure-aliases.py [PROGRAM-FOLDER], build/release/bin by default. Each sound plays the keys 96 and 108
(C7 and C8), one at a time, at 48000 Hz with its own oversampling and without oversampling. The
reference is a render at 64 times that rate: 192000 Hz, oversampled 16 times. An alias is what the
spectrum has below 18 kHz in excess of the reference. Printed is the largest, in decibels relative to
the loudest partial. Sounds without a pitch and samples are listed as not judged; measure-sounds --check
fails if any other sound has an alias above MOST.
"""
import argparse
import functools
import pathlib
import subprocess
import tempfile
import xml.etree.ElementTree

import numpy

from midifile import midi_file, notes

ROOT = pathlib.Path(__file__).resolve().parent.parent
RATE = 48000
KEYS = {96: "C7", 108: "C8"}
MOST = -80
NOT_JUDGED = ("texture", "effect", "percussion")
# Rounding and the decimators may change a partial by this factor; the excess counts as an alias. Below
# LOWEST (Hz) remains of the envelopes' slow changes would be mistaken for aliases.
TOLERANCE = 1.12
LOWEST = 200


@functools.lru_cache(2)
def window(length):
    return numpy.kaiser(length, 24)


def spectrum(program, sound, key, rate, oversample, folder):
    """Returns the amplitude of one note at each whole frequency from 0 to 18000 Hz, from 0.3 to 1.3 s
    after its beginning."""
    tune, wav = folder / "note.mid", folder / "note.wav"
    tune.write_bytes(midi_file(notes([key], 0, 1350)))
    option = ["--oversample", str(oversample)] if oversample else []
    subprocess.run([program, tune, wav, "--quiet", "--tail", "0", "--sound", sound,
                    "--rate", str(rate), *option], check=True)
    raw = subprocess.run(["sox", "-V1", wav, "-t", "f32", "-c", "1", "-"], check=True,
                         stdout=subprocess.PIPE).stdout
    samples = numpy.frombuffer(raw, "<f4").astype(float)[int(0.3 * rate):][:rate]
    return abs(numpy.fft.rfft(samples * window(rate)))[:18001] / rate


def low_cut(key, rate):
    """Returns the gain of the low-cut filter at each whole frequency. Its constants are those of 44100 Hz,
    so its corner depends on the rate of a render (without oversampling)."""
    k = numpy.log(2) * 440 * 2 ** ((key - 69) / 12) / 44100
    z = numpy.exp(-2j * numpy.pi * numpy.arange(18001) / rate)
    a, b = numpy.exp(-k), numpy.exp(-2 * k)
    return abs(1 - (1 - a) * (1 - b) / (a - b) * (1 / (1 - a * z) - 1 / (1 - b * z)))


def worst(program, sound, key, folder, oversamplings=(None,)):
    """Returns the level of the loudest alias, in decibels, with each of these oversamplings; None is the
    sound's own."""
    reference = spectrum(program, sound, key, 4 * RATE, 16, folder)
    reference *= low_cut(key, RATE) / numpy.maximum(low_cut(key, 4 * RATE), 1e-9)

    def level(oversample):
        excess = spectrum(program, sound, key, RATE, oversample, folder) - TOLERANCE * reference
        return 20 * numpy.log10(max(excess[LOWEST:].max(), 1e-12)
                                / max(reference.max(), 1e-12))
    return [level(oversample) for oversample in oversamplings]


def is_judged(root):
    """Returns whether the sound of a document has a pitch and is not a sample."""
    return (root.findtext("info/category") not in NOT_JUDGED
            and root.find("vexasamplefunction") is None)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", nargs="?", type=pathlib.Path, default=ROOT / "build/release/bin")
    folder = parser.parse_args().folder
    print(f"{'sound':16} key  own  none  (dB)")
    with tempfile.TemporaryDirectory() as temporary:
        for sound in sorted((folder / "sounds").glob("*.xml")):
            judged = is_judged(xml.etree.ElementTree.parse(sound).getroot())
            for key, name in KEYS.items():
                own, none = worst(folder / "vexa-render", sound, key, pathlib.Path(temporary),
                                  (None, 1))
                print(f"{sound.stem:16} {name}  {own:4.0f} {none:4.0f}{'' if judged else '  not judged'}")


if __name__ == "__main__":
    main()
