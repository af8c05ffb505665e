#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Draws the logo bar's images and the icons: make-artwork.py FOLDER

This script generates SVG drawings, and rsvg-convert renders them. It writes orvo.png, orvobar.png and
vexa.png, each also at twice the resolution (NAME@2x.png), and the application's icon as vexa-icon.svg
and vexa-icon.png.
"""

import argparse
import math
import pathlib
import subprocess

HEIGHT = 48
INK = "#e8ecf4"
ORBIT = "#35d04f"
POSITIVE = "#4f7df0"
NEGATIVE = "#e0503c"

BACKGROUND = """
<defs><linearGradient id="night" x1="0" y1="0" x2="0" y2="1">
<stop offset="0" stop-color="#2b3350"/><stop offset="1" stop-color="#141829"/>
</linearGradient></defs>
<rect width="{width}" height="48" fill="url(#night)"/>
<rect y="43" width="{width}" height="1" fill="#5a678f"/>
"""

# Letters: the width of a cell and the path of the strokes in it. The baseline is y = 30, and lower-case
# letters are 12 high.
LETTERS = {
    "o": (15, "M1,24 a6,6 0 1 0 12,0 a6,6 0 1 0 -12,0"),
    "r": (10, "M1,18 V30 M1,24 C1,20 4,18 8,18"),
    "v": (14, "M1,18 L6.5,30 L12,18"),
    "V": (20, "M1,12 L9,30 L17,12"),
    "e": (15, "M1,23.5 H12.8 A6,6 0 1 0 11,28.5"),
    "x": (14, "M1,18 L12,30 M12,18 L1,30"),
    "a": (15, "M13,24 a6,6 0 1 0 -12,0 a6,6 0 1 0 12,0 M13,18 V30"),
}


def text(word, x, color, weight=2.2):
    """Returns a word that begins at x, as an SVG group, and the x at which the next letter would begin."""
    strokes = []
    for letter in word:
        width, path = LETTERS[letter]
        strokes.append(f'<path transform="translate({x},-2)" d="{path}"/>')
        x += width + 3
    group = (f'<g fill="none" stroke="{color}" stroke-width="{weight}" stroke-linecap="round" '
             f'stroke-linejoin="round">{"".join(strokes)}</g>')
    return group, x


def orbit(cx, cy, rx, ry, fx, fy, color, weight):
    """Returns an orbit with the frequency ratios fx and fy as a closed curve in SVG."""
    points = []
    for k in range(241):
        angle = 2 * math.pi * k / 240
        points.append(f"{cx + rx * math.cos(fx * angle):.2f},{cy + ry * math.sin(fy * angle):.2f}")
    return (f'<polygon points="{" ".join(points)}" fill="none" stroke="{color}" '
            f'stroke-width="{weight}" stroke-linejoin="round"/>')


def svg(width, height, body):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
            f'viewBox="0 0 {width} {height}">{body}</svg>')


def left():
    word, _ = text("orvo", 64, INK)
    return 150, orbit(34, 22, 21, 15, 3, 2, ORBIT, 1.6) + word


def middle():
    return 8, ""


def right():
    word, end = text("Vexa", 74, INK, 2.6)
    hills = (f'<circle cx="30" cy="22" r="13" fill="{POSITIVE}" opacity="0.85"/>'
             f'<circle cx="44" cy="22" r="13" fill="{NEGATIVE}" opacity="0.75"/>')
    return 160, hills + orbit(37, 22, 24, 11, 1, 2, ORBIT, 1.4) + word


def icon():
    return svg(128, 128, """
<defs><linearGradient id="night" x1="0" y1="0" x2="0" y2="1">
<stop offset="0" stop-color="#323b5e"/><stop offset="1" stop-color="#12162a"/></linearGradient>
<radialGradient id="plus"><stop offset="0" stop-color="#6d97ff"/>
<stop offset="1" stop-color="#3158c8" stop-opacity="0"/></radialGradient>
<radialGradient id="minus"><stop offset="0" stop-color="#ff7a64"/>
<stop offset="1" stop-color="#c03020" stop-opacity="0"/></radialGradient></defs>
<rect x="4" y="4" width="120" height="120" rx="24" fill="url(#night)"/>
<circle cx="46" cy="64" r="38" fill="url(#plus)"/><circle cx="84" cy="64" r="38" fill="url(#minus)"/>
""" + orbit(64, 64, 44, 34, 3, 2, ORBIT, 5))


def render(drawing, path, zoom):
    subprocess.run(["rsvg-convert", f"--zoom={zoom}", f"--output={path}"], input=drawing.encode(),
                   check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path)
    folder = parser.parse_args().folder
    folder.mkdir(parents=True, exist_ok=True)
    for name, draw in {"orvo": left, "orvobar": middle, "vexa": right}.items():
        width, body = draw()
        drawing = svg(width, HEIGHT, BACKGROUND.format(width=width) + body)
        render(drawing, folder / f"{name}.png", 1)
        render(drawing, folder / f"{name}@2x.png", 2)
    (folder / "vexa-icon.svg").write_text(icon() + "\n")
    render(icon(), folder / "vexa-icon.png", 1)


if __name__ == "__main__":
    main()
