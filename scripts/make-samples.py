#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes the samples that come with the program: make-samples.py FOLDER

pluck.wav is a plucked string, voice.wav a sung vowel that moves from "ah" to "ee"; harp.wav is a string
that is damped until nothing is left of it, vowel.wav the vowel from hardly anything to full voice. All
are tones of 220 Hz, so that is their sample frequency. The same bytes on every run.
"""

import argparse
import math
import pathlib
import random
import wave

RATE = 44100
PITCH = 220.0
SECONDS = 1.5
FRAMES = int(RATE * SECONDS)


def pluck(damping=0.997, softness=1, swell=0):
    """A string after Karplus and Strong: a burst of noise goes round a loop of one period, and every
    round leaves `damping` of it, and less of its high partials than of its low ones. The higher
    `softness`, the less hiss there is in its beginning; and it swells for so many rounds."""
    # The averaging delays by half a frame, the all-pass by what is left to the exact period: 0.1 to
    # 1.1 frames, since its delay is the same for all partials only well above 0.
    delay = int(RATE / PITCH - 0.5 - 0.1)
    rest = RATE / PITCH - 0.5 - delay
    allpass = (1 - rest) / (1 + rest)

    noise = random.Random(220)
    line = [noise.uniform(-1, 1) for _ in range(delay)]
    # Struck with something soft: the noise loses its hiss before it enters the loop.
    for _ in range(softness):
        for i in range(1, delay):
            line[i] = 0.5 * line[i] + 0.5 * line[i - 1]
    mean = sum(line) / delay
    line = [value - mean for value in line]

    samples = []
    last_out = last_average = last_tuned = 0.0
    for i in range(FRAMES):
        out = line[i % delay]
        average = damping * 0.5 * (out + last_out)
        tuned = allpass * (average - last_tuned) + last_average
        line[i % delay] = tuned
        last_out, last_average, last_tuned = out, average, tuned
        samples.append(out * min(1, (i + delay) / delay / (swell + 1)))
    return samples


# Frequency, bandwidth (Hz) and level of a vowel's resonances.
AH = ((730, 90, 1.0), (1090, 110, 0.5), (2440, 170, 0.2), (3400, 250, 0.08))
EE = ((270, 60, 1.0), (2290, 110, 0.35), (3010, 170, 0.25), (3600, 250, 0.1))


def resonance(vowel, frequency):
    return sum(level / (1 + ((frequency - centre) / width) ** 2) for centre, width, level in vowel)


def voice(beginning=0.25, power=3):
    """Partials of a constant pitch, each as loud as the moving resonances let it be. `beginning` is
    the level of the first of it; it swells with this power of the time."""
    samples = [0.0] * FRAMES
    for partial in range(1, int(5000 / PITCH) + 1):
        frequency = partial * PITCH
        # The glottis gives less to higher partials; the resonances do not close altogether.
        first, last = ((resonance(vowel, frequency) + 0.02) / partial ** 0.5 for vowel in (AH, EE))
        for i in range(FRAMES):
            way = i / FRAMES
            level = first + (last - first) * way * way * (3 - 2 * way)
            samples[i] += level * math.sin(2 * math.pi * frequency * i / RATE)
    # It swells: an orbit that grows over the spiral gets louder, and a chord in its middle still
    # has room.
    return [value * (beginning + (1 - beginning) * (i / FRAMES) ** power)
            for i, value in enumerate(samples)]


def finish(samples):
    """Fades both ends in and out, so that neither clicks, and scales to a peak of 0.9."""
    fade_in, fade_out = RATE // 500, RATE // 10
    peak = max(abs(value) for value in samples)
    count = len(samples)
    return [0.9 / peak * value * min(1, i / fade_in, (count - 1 - i) / fade_out)
            for i, value in enumerate(samples)]


def write(path, samples):
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(b"".join(round(32767 * value).to_bytes(2, "little", signed=True)
                                  for value in finish(samples)))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path)
    folder = parser.parse_args().folder
    folder.mkdir(parents=True, exist_ok=True)
    write(folder / "pluck.wav", pluck())
    write(folder / "voice.wav", voice())
    write(folder / "harp.wav", pluck(0.98, 12, 8))
    write(folder / "vowel.wav", voice(0.02, 1.4))


if __name__ == "__main__":
    main()
