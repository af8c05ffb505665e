#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures how fast the window responds, on a display and a JACK server of its own.

measure-window.py [--only PART] [--scale S] [--runs N] [--picture FILE] [BUILD]: 20 runs and
build/release by default. PART is one of the three parts. Each prints its results with their limits:

load: the time from a click on a sound in the drawer until the output at JACK changes, under a held
note, for sounds with a formula, a sample and a picture. It includes the way of the click to the
program, a period of JACK (128 frames), and the window thread's change of the sound.
idle: the processor time of the window thread in percent of a core, while nothing happens and while 20
voices are drawn. The time of all other threads, which compute the sound, is printed without a limit.
scan: the response time of the window thread to queries over AT-SPI, repeated while 1000 sounds are
found, read and drawn. The longest response includes the longest stall, unless no query fell into it; a
busy machine lengthens it. Then the time in which the drawer lists all sounds again after a search.

The exit code is 1 if a limit is exceeded.
"""
import argparse
import ctypes
import os
import pathlib
import re
import statistics
import sys
import time

import numpy

import windowstage
from jackear import Ear
from windowstage import RATE, Window, program_folder, ring, running, wait_for, xdo

ROOT = pathlib.Path(__file__).resolve().parent.parent
THOUSAND = 1000
# The shipped sounds whose loading is measured, by kind.
SOUNDS = {"formula": "bell", "sample": "voice", "picture": "handwriting"}


class Report:
    def __init__(self):
        self.missed = 0

    def tell(self, what, value, limit, unit):
        good = value < limit
        self.missed += not good
        print(f"{what}: {value:.1f} {unit} (limit {limit} {unit}){'' if good else ' MISSED'}", flush=True)


class Mouse:
    """Presses the mouse button by XTest, without the time that starting xdotool would take."""

    def __init__(self):
        self.x, self.test = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXtst.so.6")
        self.x.XOpenDisplay.restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(self.x.XOpenDisplay(None))

    def click(self):
        """Clicks, and returns when the button went down, by time.monotonic()."""
        moment = time.monotonic()
        for down in (1, 0):
            self.test.XTestFakeButtonEvent(self.display, 1, down, ctypes.c_ulong(0))
        self.x.XFlush(self.display)
        return moment


def thread_times(process):
    """Returns the processor seconds of each thread by its id; the window thread's id is the process's."""
    times = {}
    for task in pathlib.Path(f"/proc/{process.pid}/task").iterdir():
        fields = (task / "stat").read_text().rsplit(")", 1)[1].split()
        times[int(task.name)] = (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
    return times


def window_share(process, seconds=4, repeats=5):
    """Returns the medians of the shares of a core that the window thread and all other threads take."""
    own, others = [], []
    for _ in range(repeats):
        before, start = thread_times(process), time.monotonic()
        time.sleep(seconds)
        after, passed = thread_times(process), time.monotonic() - start
        mine = after[process.pid] - before[process.pid]
        own.append(mine / passed)
        others.append((sum(after.values()) - sum(before.values()) - mine) / passed)
    return statistics.median(own), statistics.median(others)


def measure_shares(window, report, scale, picture):
    def tell(what, limit):
        xdo("mousemove", *window.middle("level, decibels of full scale"))
        time.sleep(1.5)
        own, others = window_share(window.process)
        report.tell(f"{what} at {scale}x, window thread", 100 * own, limit, "% of a core")
        print(f"    all other threads, the sound's among them: {100 * others:.1f} % of a core", flush=True)
    tell("idle", 1)
    window.click("hold")
    for octave in (3, 4):
        for key in ("C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#"):
            window.click(f"{key}{octave}")
    wait_for("the notes", lambda: window.value("level, decibels of full scale") > -40)
    tell("20 voices drawn", 10)
    if picture:
        windowstage.run("import", "-window", "root", picture)


def changed_at(samples, start, until):
    """Returns the first frame from `start` on that departs from the sine fitted to the 4800 frames before,
    or None if there is none before `until`."""
    before = 4800
    frames = numpy.arange(-before, until - start)
    heard = samples[start - before:until]
    size = 1 << 16
    spectrum = abs(numpy.fft.rfft(heard[:before] * numpy.hanning(before), size))
    peak = int(spectrum.argmax())
    best = None
    for frequency in (peak + numpy.arange(-40, 41) / 20) * RATE / size:
        angle = 2 * numpy.pi * frequency * frames / RATE
        basis = numpy.stack([numpy.cos(angle), numpy.sin(angle), numpy.ones(len(angle))], 1)
        fit = numpy.linalg.lstsq(basis[:before], heard[:before], rcond=None)[0]
        rest = float(((basis[:before] @ fit - heard[:before]) ** 2).sum())
        if best is None or rest < best[0]:
            best = rest, basis @ fit
    off = numpy.flatnonzero(abs(heard - best[1])[before:] > 0.05 * abs(heard[:before]).max())
    return start + int(off[0]) if len(off) else None


def measure_load(window, ear, report, runs):
    mouse = Mouse()
    window.click("search sounds by name, tag or formula")
    window.key("ctrl+a")
    xdo("type", "measured")
    rows = wait_for("the sounds", lambda: (lambda found: len(found) == 4 and found)(
        {row.name: row for row in windowstage.children(window["sounds"])}))

    def go_back():
        window.click(rows["measured ring"])
        window.settle()
        window.click("Silence")
        wait_for("silence", lambda: abs(ear.listen(0.05)).max() < 0.001)
        window.click("hold")
        window.click("A3")
        wait_for("the note", lambda: abs(ear.listen(0.05)).max() > 0.01)
    for kind, limit in (("picture", 100), ("sample", 100), ("formula", 20)):
        times, lost = [], 0
        while len(times) < runs and lost < 3 * runs:
            go_back()
            xdo("mousemove", *window.middle(rows["measured " + kind]))
            ear.listen(0.4)
            clicked = mouse.click()
            ear.listen(0.4)
            start = ear.frame_at(clicked)
            frame = changed_at(ear.samples[0], start, start + RATE // 3)
            # A busy machine may have dropped a period.
            if frame is None or not ear.is_whole(start - 4800, frame):
                lost += 1
                continue
            times.append(1000 * (ear.moment_of(frame) - clicked))
        if not times:
            print(f"{kind}: not measured, the machine is too busy")
            report.missed += 1
            continue
        report.tell(f"click to sound, {kind}, median of {len(times)}", statistics.median(times), limit, "ms")
        report.tell(f"click to sound, {kind}, worst of {len(times)}", max(times), limit, "ms")


def thousand(programs, sounds):
    """Fills a user's folder with 1000 copies of the shipped sounds under different names."""
    shipped = sorted((programs / "sounds").glob("*.xml"))
    for number in range(THOUSAND):
        source = shipped[number % len(shipped)]
        text = source.read_text("utf-8").replace("<name>", f"<name>{number} ", 1)
        (sounds / f"{number:04}.xml").write_text(text, "utf-8")


def answers(window, seconds):
    """Returns the response times of the window thread, in milliseconds, to queries during `seconds`."""
    times = []
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        start = time.monotonic()
        window.frame.queryComponent().getExtents(0)
        times.append(1000 * (time.monotonic() - start))
        time.sleep(0.002)
    return times


def measure_scan(window, programs, sounds, report):
    quiet = answers(window, 5)
    thousand(programs, sounds)
    busy = answers(window, 20)
    count = window["sounds"]

    def rows():
        count.clear_cache()
        return count.childCount
    wait_for("all sounds", lambda: rows() > THOUSAND, 60)
    print(f"    {len(quiet)} answers without: median {statistics.median(quiet):.1f} ms, longest {max(quiet):.1f} ms")
    print(f"    {len(busy)} answers with: median {statistics.median(busy):.1f} ms, "
          f"99 of 100 within {numpy.percentile(busy, 99):.1f} ms")
    report.tell("longest answer while 1000 sounds are written, read and drawn", max(busy), 50, "ms")
    shown = []
    for _ in range(10):
        window.click("search sounds by name, tag or formula")
        window.key("ctrl+a")
        xdo("type", "qqqq")
        wait_for("an empty list", lambda: rows() == 0)
        window.key("ctrl+a")
        start = time.monotonic()
        xdo("key", "BackSpace")
        wait_for("all sounds", lambda: rows() > THOUSAND)
        shown.append(1000 * (time.monotonic() - start))
    report.tell("1000 sounds listed after a key, that of xdotool and the question included, median of 10",
                statistics.median(shown), 200, "ms")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", nargs="?", default=ROOT / "build" / "release", type=pathlib.Path)
    parser.add_argument("--only", choices=("load", "idle", "scan"))
    parser.add_argument("--scale", default="1", help="pixels of the screen to one of the window")
    parser.add_argument("--picture", help="where to leave a picture of the window with 20 voices")
    parser.add_argument("--runs", type=int, default=20)
    options = parser.parse_args()

    def measure(folder):
        report = Report()
        print("load of the machine, of 1, 5 and 15 minutes:", *(f"{load:.1f}" for load in os.getloadavg()))
        programs = program_folder(options.build, folder / "program")
        sounds = folder / "data" / "vexa" / "sounds"
        sounds.mkdir(parents=True)
        template = programs / "sounds" / "default.xml"
        command = [programs / "vexa", "--user-folder", "--voices", "20"]
        if options.only in (None, "idle"):
            # The orbits are large and keep their size.
            wide = folder / "wide.xml"
            wide.write_text(ring(template, "sin(x)*cos(y)/9", radius=5))
            with running(*command, "--sound", wide) as vexa:
                measure_shares(Window(vexa), report, options.scale, options.picture)
        if options.only in (None, "scan"):
            with running(*command) as vexa:
                measure_scan(Window(vexa), programs, sounds, report)
            for sound in sounds.iterdir():
                sound.unlink()
        if options.only in (None, "load"):
            (sounds / "ring.xml").write_text(ring(template, "x", name="measured ring"))
            for kind in ("formula", "sample", "picture"):
                text = (programs / "sounds" / f"{SOUNDS[kind]}.xml").read_text("utf-8")
                text = re.sub("<name>[^<]*", f"<name>measured {kind}", text, count=1)
                (sounds / f"{kind}.xml").write_text(text, "utf-8")
            with running(*command, "--sound", sounds / "ring.xml") as vexa:
                window = Window(vexa)
                ports = "Vexa:Vexa audio out", "Vexa:Vexa audio out right"
                with Ear(folder / "heard", *ports, seconds=600) as ear:
                    measure_load(window, ear, report, options.runs)
        print("load of the machine:", *(f"{load:.1f}" for load in os.getloadavg()))
        return min(report.missed, 1)
    return windowstage.on_a_stage(measure, options.scale, period=128)


if __name__ == "__main__":
    sys.exit(main())
