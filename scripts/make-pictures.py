#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes the pictures that come with the program: make-pictures.py FOLDER

They are terrains: black is the deepest ground, white the highest, and grey what is level. island.png
is a country in a sea that is level; rose.png a round window of five rings of panes, each pane of a
glass of its own; letters.png a word in a broad pen; julia.png the slopes round a Julia set; weave.png
what a cellular automaton makes of one cell. Grey of 16 bits, the same bytes on every run.
"""

import argparse
import functools
import math
import pathlib
import random
import struct
import zlib

# Pixels of a side, which spans 10 on the plane.
SIDE = 384
SPAN = 10


def smooth(way):
    """From 0 to 1, level at both ends and bent nowhere."""
    way = min(max(way, 0.0), 1.0)
    return way ** 3 * (way * (6 * way - 15) + 10)


def island():
    """Hills of five sizes, each half as high as the one before, under a dome that ends at the coast."""
    grains = random.Random(1771)
    octaves = []
    for octave in range(5):
        cells = 3 * 2 ** octave
        octaves.append((cells, [[grains.uniform(-1, 1) for _ in range(cells + 2)]
                                for _ in range(cells + 2)]))

    # All pixels of a row or a column have the same.
    @functools.cache
    def cell(place, cells):
        along = (place / SPAN + 0.5) * cells
        return int(along), smooth(along - int(along))

    def height(x, y):
        sum_ = 0.0
        for octave, (cells, corners) in enumerate(octaves):
            (i, a), (j, b) = cell(x, cells), cell(y, cells)
            low = corners[j][i] + a * (corners[j][i + 1] - corners[j][i])
            high = corners[j + 1][i] + a * (corners[j + 1][i + 1] - corners[j + 1][i])
            sum_ += (low + b * (high - low)) / 2 ** octave
        return 0.8 * sum_ * smooth((4.8 - math.hypot(x, y)) / 2.5)
    return height


def rose():
    """Ring n has 2n + 1 panes. What a ring shows has no mean, so that its level is none."""
    glass = random.Random(12)
    rings = []
    for ring in range(5):
        panes = [glass.uniform(-1, 1) for _ in range(2 * ring + 3)]
        mean = sum(panes) / len(panes)
        most = max(abs(pane - mean) for pane in panes)
        rings.append([(pane - mean) / most for pane in panes])

    def shown(ring, turn):
        panes = rings[min(ring, 4)]
        place = turn * len(panes)
        pane = int(place)
        # The lead between two panes is as broad as a third of one.
        way = smooth((place - pane - 0.66) / 0.34)
        first, second = panes[pane % len(panes)], panes[(pane + 1) % len(panes)]
        return first + way * (second - first)

    def height(x, y):
        radius = math.hypot(x, y)
        turn = math.atan2(y, x) / (2 * math.pi) % 1
        ring = int(radius)
        way = smooth((radius - ring - 0.5) / 0.5)
        value = shown(ring, turn) + way * (shown(ring + 1, turn) - shown(ring, turn))
        # All panes meet in a middle of no colour.
        return value * smooth(radius / 0.6)
    return height


# The strokes of the word, in a square of 1.
LETTERS = {
    "V": (((0, 1), (0.5, 0)), ((0.5, 0), (1, 1))),
    "E": (((0, 0), (0, 1)), ((0, 1), (1, 1)), ((0, 0.5), (0.8, 0.5)), ((0, 0), (1, 0))),
    "X": (((0, 0), (1, 1)), ((0, 1), (1, 0))),
    "A": (((0, 0), (0.5, 1)), ((0.5, 1), (1, 0)), ((0.25, 0.4), (0.75, 0.4))),
}


def letters():
    """White ink on grey paper, and the paper is pressed down beside the pen."""
    strokes = []
    for place, letter in enumerate("VEXA"):
        left = -4.3 + 2.25 * place
        for (ax, ay), (bx, by) in LETTERS[letter]:
            dx, dy = 1.6 * (bx - ax), 2.8 * (by - ay)
            strokes.append((left + 1.6 * ax, -1.4 + 2.8 * ay, dx, dy, dx * dx + dy * dy))

    def height(x, y):
        nearest = math.inf
        for ax, ay, dx, dy, square in strokes:
            px, py = x - ax, y - ay
            way = (px * dx + py * dy) / square
            if way > 0:
                way = min(way, 1.0)
                px, py = px - way * dx, py - way * dy
            nearest = min(nearest, px * px + py * py)
        distances = nearest / 0.09
        return (1 - distances) * math.exp(-0.5 * distances)
    return height


def julia():
    """Terraces of the potential round the set of z^2 - 0.8 + 0.156i, finer the nearer they are."""
    constant = complex(-0.8, 0.156)

    def height(x, y):
        z = complex(x, y) / 3
        for step in range(40):
            if abs(z) > 1000:
                potential = math.log(math.log(abs(z))) / math.log(2) - step
                return math.cos(2 * potential) * smooth((5 - math.hypot(x, y)) / 2)
            z = z * z + constant
        return 0.0
    return height


def weave():
    """Rule 30, a row under the other, from one cell in the middle of a torus; two pixels a cell."""
    cells = SIDE // 2
    rows = [[int(i == cells // 2) for i in range(cells)]]
    for _ in range(cells - 1):
        row = rows[-1]
        rows.append([row[i - 1] ^ (row[i] | row[(i + 1) % cells]) for i in range(cells)])

    def height(x, y):
        column, row = (int((place / SPAN + 0.5) * cells) for place in (x, -y))
        return 2 * rows[row][column] - 1
    return height


def chunk(name, data):
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))


def stored(data):
    """A zlib stream that is not packed: how well it is packed depends on the library's version."""
    blocks = [data[at:at + 65535] for at in range(0, len(data), 65535)]
    body = b"".join(struct.pack("<BHH", at == len(blocks) - 1, len(block), len(block) ^ 0xFFFF) + block
                    for at, block in enumerate(blocks))
    return b"\x78\x01" + body + struct.pack(">I", zlib.adler32(data))


def write(path, height):
    middle = (SIDE - 1) / 2
    rows = bytearray()
    for row in range(SIDE):
        rows += b"\0"
        for column in range(SIDE):
            value = height((column - middle) * SPAN / SIDE, (middle - row) * SPAN / SIDE)
            rows += struct.pack(">H", round(65535 * (min(max(value, -1.0), 1.0) + 1) / 2))
    header = struct.pack(">IIBBBBB", SIDE, SIDE, 16, 0, 0, 0, 0)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", stored(bytes(rows))) +
                     chunk(b"IEND", b""))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path)
    folder = parser.parse_args().folder
    folder.mkdir(parents=True, exist_ok=True)
    for draw in (island, rose, letters, julia, weave):
        write(folder / f"{draw.__name__}.png", draw())


if __name__ == "__main__":
    main()
