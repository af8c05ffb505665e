# SPDX-License-Identifier: GPL-3.0-or-later
"""Measurements of samples: loudness, spectra, changes, clicks, pitch.

Samples are arrays with a row per channel, at RATE.
"""
import functools

import numpy

RATE = 48000


def decibels(power):
    return 10 * numpy.log10(numpy.maximum(power, 1e-20))


def peak(samples):
    return 20 * numpy.log10(max(abs(samples).max(), 1e-10))


@functools.lru_cache(4)
def k_weighting(size):
    """Returns the response of the two filters of ITU-R BS.1770, whose coefficients are for 48000 Hz, at the
    frequencies of a transform of `size` samples."""
    z = numpy.exp(-2j * numpy.pi * numpy.fft.rfftfreq(size))
    shelf = ((1.53512485958697 - 2.69169618940638 * z + 1.19839281085285 * z * z)
             / (1 - 1.69065929318241 * z + 0.73248077421585 * z * z))
    low_cut = (1 - 2 * z + z * z) / (1 - 1.99004745483398 * z + 0.99007225036621 * z * z)
    return shelf * low_cut


def k_weighted(samples):
    """Returns the samples behind these filters."""
    size = 1 << (samples.shape[1] + RATE).bit_length()
    spectrum = numpy.fft.rfft(samples, size) * k_weighting(size)
    return numpy.fft.irfft(spectrum)[:, :samples.shape[1]]


def momentary(samples):
    """Returns the loudness (LUFS) of windows of 400 ms, one each 100 ms. A single channel counts as two
    equal ones, because it plays from both sides."""
    weighted = k_weighted(samples)
    tenth = RATE // 10
    whole = (weighted.shape[1] // tenth) * tenth
    power = (weighted[:, :whole] ** 2).reshape(len(samples), -1, tenth).mean(2).mean(0) * 2
    return -0.691 + decibels(numpy.convolve(power, numpy.ones(4) / 4, "valid"))


def integrated(samples):
    """Returns the integrated loudness (LUFS) with the two gates of EBU R128: -70 LUFS, and 10 LU below the
    mean."""
    blocks = momentary(samples)

    def mean(chosen):
        return -0.691 + decibels((10 ** ((chosen + 0.691) / 10)).mean()) if len(chosen) else -99.0
    blocks = blocks[blocks > -70]
    return mean(blocks[blocks > mean(blocks) - 10])


def spectrum(samples):
    """Returns the frequencies (Hz) and the power at each, as the mean of the channels."""
    window = numpy.hanning(samples.shape[1])
    size = max(8192, samples.shape[1])
    power = abs(numpy.fft.rfft(samples * window, size)) ** 2 / (window ** 2).sum()
    return numpy.fft.rfftfreq(size, 1 / RATE), power.sum(0) / len(samples)


def level_and_centroid(samples):
    """Returns the level (dB) and the centroid of the amplitude spectrum from 20 to 20000 Hz (Hz)."""
    frequencies, power = spectrum(samples)
    heard = (frequencies > 20) & (frequencies < 20000)
    amplitudes = numpy.sqrt(power[heard])
    return (float(decibels((samples ** 2).mean())),
            float((amplitudes * frequencies[heard]).sum() / max(amplitudes.sum(), 1e-15)))


# Edges, in seconds, of the parts of a note that `change` compares: the stroke, the decay, and the
# held sound.
PARTS = (0, 0.1, 0.4, 99)


def change(pieces):
    """Returns the largest changes between any two of the pieces in any part: of the level in decibels, and
    of the centroid in percent. Parts more than 30 dB below the loudest are ignored."""
    parts = numpy.array([[level_and_centroid(piece[:, int(begin * RATE):int(end * RATE)])
                          for begin, end in zip(PARTS, PARTS[1:])] for piece in pieces])
    levels, centroids = parts[..., 0], parts[..., 1]
    heard = levels.max(0) > levels.max() - 30
    return (float((levels.max(0) - levels.min(0))[heard].max()),
            float(100 * ((centroids.max(0) / centroids.min(0))[heard].max() - 1)))


def mel_bands(samples, bands):
    """Returns the power in bands of equal width in mel, from 60 to 16000 Hz."""
    frequencies, power = spectrum(samples)
    mel = numpy.linspace(*(2595 * numpy.log10(1 + numpy.array([60, 16000]) / 700)), bands + 1)
    edges = numpy.searchsorted(frequencies, 700 * (10 ** (mel / 2595) - 1))
    sums = numpy.concatenate([[0], numpy.cumsum(power)])
    return (sums[edges[1:]] - sums[edges[:-1]]) * (frequencies[1] / RATE)


# Clicks are measured by the power of short windows (frames) in third octaves from 500 Hz. In each band an
# event may have the power of the loudest window of the sound around it, or the power OWN_FLOOR decibels
# below the loudest band, which masks it. SILENT is the result for a silent sound.
WINDOW, HOP, OWN_FLOOR, SILENT = 256, 64, 40, -99.0


def short_bands(samples):
    count = (samples.shape[1] - WINDOW) // HOP + 1
    index = numpy.arange(WINDOW) + HOP * numpy.arange(count)[:, None]
    power = (abs(numpy.fft.rfft(samples[:, index] * numpy.hanning(WINDOW))) ** 2).sum(0)
    edges = numpy.unique(numpy.round(500 * 2 ** (numpy.arange(17) / 3) * WINDOW / RATE).astype(int))
    sums = numpy.concatenate([numpy.zeros((count, 1)), numpy.cumsum(power, 1)], 1)
    return sums[:, edges[1:]] - sums[:, edges[:-1]]


def click(samples, at):
    """Returns by how many decibels the event in the 4 ms after `at` (seconds) exceeds the sound itself
    in the 200 ms on either side."""
    before, after = 0.2, 0.25
    start = max(0, int((at - before) * RATE))
    piece = samples[:, start:int((at + after) * RATE)]
    powers = short_bands(piece)
    begins = start / RATE + HOP / RATE * numpy.arange(len(powers))
    event = (begins + WINDOW / RATE > at) & (begins < at + 0.004)
    own = powers[(begins + WINDOW / RATE <= at - 0.002) | (begins >= at + 0.006)]
    floor = powers.max() * 10 ** (-OWN_FLOOR / 10)
    if floor <= 0:
        return SILENT
    return float(decibels((powers[event].max(0) / numpy.maximum(own.max(0), floor)).max()))


def amplitude(samples):
    """Returns the RMS of windows of 5 ms, one each millisecond."""
    power = numpy.cumsum(numpy.concatenate([[0], (samples ** 2).mean(0)]))
    begins = numpy.arange(0, samples.shape[1] - RATE // 200, RATE // 1000)
    return numpy.sqrt(numpy.maximum(power[begins + RATE // 200] - power[begins], 0) / (RATE // 200))


def cents(samples, key):
    """Returns by how many cents, -50 to 50, the partials deviate from those of the key: the shift of a comb
    of partials that gathers the largest sum of amplitudes."""
    frequencies, power = spectrum(samples)
    magnitude = numpy.sqrt(power)
    pitch = 440 * 2 ** ((key - 69) / 12)
    offsets = numpy.arange(-50, 51)

    def comb(offset):
        # The comb has the multiples of half the key's frequency, because an orbit with ratios such as 1
        # and 1.5 repeats at that frequency.
        multiples = pitch * 2 ** (offset / 1200) * numpy.arange(1, 41) / 2
        return numpy.interp(multiples[multiples < 12000], frequencies, magnitude).sum()
    return float(offsets[numpy.argmax([comb(offset) for offset in offsets])])
