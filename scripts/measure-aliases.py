#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures how far the aliases of the shipped sounds are down.

measure-aliases.py [PROGRAM-FOLDER] [--check]: build/release/bin if not given. Each sound plays keys 96
and 108 (C7 and C8) by itself at 48000 Hz, with its own oversampling and with none, and at 64 times
that rate. An alias is what a spectrum has below 18 kHz beside the one of the 64 times: the largest,
in decibels below the loudest partial. With --check it fails where a sound that has a pitch and is no
sample has one of more than -80 dB; the others are listed.
"""
import pathlib
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

import numpy

from midifile import midi_file, notes

ROOT = pathlib.Path(__file__).resolve().parent.parent
RATE = 48000
KEYS = {96: "C7", 108: "C8"}
MOST = -80
NOT_JUDGED = ("texture", "effect", "percussion")
# The rate moves the corner of the low-cut, and with it by a little what is near the fundamental; a
# tenth is no alias. Nor is what is left of the envelopes' slow changes below this.
TOLERANCE = 1.12
LOWEST = 200


def spectrum(program, sound, key, rate, oversample, folder):
    """Levels of one note, 0.3 to 1.3 s after its beginning, for each whole frequency to 18 kHz."""
    tune, wav = folder / "note.mid", folder / "note.wav"
    tune.write_bytes(midi_file(notes([key], 0, 2000)))
    option = ["--oversample", str(oversample)] if oversample else []
    subprocess.run([program, tune, wav, "--quiet", "--tail", "0", "--sound", sound,
                    "--rate", str(rate), *option], check=True)
    raw = subprocess.run(["sox", "-V1", wav, "-t", "f32", "-c", "1", "-"], check=True,
                         stdout=subprocess.PIPE).stdout
    samples = numpy.frombuffer(raw, "<f4").astype(float)[int(0.3 * rate):][:rate]
    return abs(numpy.fft.rfft(samples * numpy.kaiser(rate, 24)))[:18001] / rate


def worst(program, sound, key, folder):
    """Decibels of the loudest alias with the sound's own oversampling and with none."""
    reference = spectrum(program, sound, key, 4 * RATE, 16, folder)

    def level(oversample):
        excess = spectrum(program, sound, key, RATE, oversample, folder) - TOLERANCE * reference
        return 20 * numpy.log10(max(excess[LOWEST:].max(), 1e-12) / reference.max())
    return level(None), level(1)


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--check"]
    folder = pathlib.Path(arguments[0] if arguments else ROOT / "build/release/bin")
    failures = []
    print(f"{'sound':16} key  own  none  (dB)")
    with tempfile.TemporaryDirectory() as temporary:
        for sound in sorted((folder / "sounds").glob("*.xml")):
            root = xml.etree.ElementTree.parse(sound).getroot()
            judged = (root.findtext("info/category") not in NOT_JUDGED
                      and root.find("vexasamplefunction") is None)
            for key, name in KEYS.items():
                own, none = worst(folder / "vexa-render", sound, key, pathlib.Path(temporary))
                print(f"{sound.stem:16} {name}  {own:4.0f} {none:4.0f}{'' if judged else '  not judged'}")
                if judged and own > MOST:
                    failures.append(f"{sound.stem} at {name}: aliases of {own:.1f} dB")
    if "--check" in sys.argv and failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
