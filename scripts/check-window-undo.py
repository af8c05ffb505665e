#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Undoes and redoes on a real display, with a real JACK server, what a person may do to a sound.

check-window-undo.py [--gestures N] [--seed N] [--pictures FOLDER] [--log FILE] [BUILD]: 100 gestures, seed 1 and
build/release if not given. xdotool types into fields, adds, drags and removes points of the
envelopes, confirms formulas, loads sounds, functions and a sample. Then all is undone, and the saved
sound must be the first one byte for byte; all is redone, and it must be the last one. After each
gesture the sound is saved as well, and undoing one step after the other must pass through all of
them.

A second window then undoes and redoes a coefficient, an envelope, a formula and another sound under a
note that is held, and no step in what JACK gets may be larger than 2.5 times the largest that the note
has by itself. Ends with 1 where anything is otherwise.
"""
import argparse
import contextlib
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree

import numpy

ROOT = pathlib.Path(__file__).resolve().parent.parent
RATE = 48000

# In the window: where the main view begins, and the editors of the envelopes in it.
TOP = 41
EDITOR_LEFT, EDITOR_RIGHT, EDITOR_HEIGHT = 450, 800, 78
EDITOR_TOPS = (14, 116, 222, 324)
FORMULA = (100, TOP + 325)
# The buttons below the plane, whose panels have their names as titles.
BUTTONS = {"Load f(x,y)": (275, 388), "Save Sound": (275, 418), "Load Sound": (275, 448)}
UNSAVED = "Unsaved changes"


def ring(template, formula, radius):
    """The document of a ring that stays where it is, with nothing that smooths it: on the plane of x
    it is a pure sine."""
    tree = xml.etree.ElementTree.parse(template)
    root = tree.getroot()
    root.find("vexafunction/expression").text = formula
    for group in ("dcxdt", "dcydt", "ax", "ay", "cx0", "cy0"):
        for element in root.find(group):
            if element.tag != "envdata":
                element.text = "0"
    for group, factor in (("ax", radius), ("ay", 1)):
        root.find(group + "/env").text = str(factor)
        points = root.find(group + "/envdata")
        points.clear()
        for t, value, released in ((0, 0, "false"), (0.05, 1, "false"), (0.1, 0, "true")):
            xml.etree.ElementTree.SubElement(points, "envpoint", t=str(t), val=str(value), fku=released)
    for ratio in ("fx", "fy"):
        root.find(ratio).text = "1"
    root.find("playing").clear()
    return xml.etree.ElementTree.tostring(root, "unicode")


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, timeout=60).stdout


def xdo(*command):
    return run("xdotool", *map(str, command))


def wait_for(what, condition, seconds=30):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise SystemExit(f"waited in vain for {what}")
        time.sleep(0.03)


@contextlib.contextmanager
def running(*command, **options):
    process = subprocess.Popen(command, **options)
    try:
        yield process
    finally:
        process.send_signal(signal.SIGTERM)
        process.wait(20)


class Window:
    """The program's main window, and the windows that come up beside it."""

    def __init__(self, folder):
        self.folder = folder
        self.use("Vexa")
        picture = subprocess.run(["import", "-window", self.window, "-depth", "8", "ppm:-"], capture_output=True,
                                 check=True).stdout
        self.fields = fields_of(picture)

    @staticmethod
    def number(title):
        pattern = "^" + title.replace("(", ".").replace(")", ".") + "$"
        found = xdo("search", "--onlyvisible", "--name", pattern).split()
        return found[0] if found else None

    def use(self, title):
        wait_for(title, lambda: self.number(title))
        self.window = self.number(title)
        xdo("windowactivate", "--sync", self.window)

    def move(self, x, y):
        xdo("mousemove", "--window", self.window, x, y)

    def click(self, x, y, button=1):
        self.move(x, y)
        xdo("click", button)

    def replace(self, x, y, text):
        self.click(x, y)
        xdo("key", "ctrl+a")
        xdo("type", "--delay", "3", text)
        xdo("key", "Return")

    def drag(self, x, y, to_x, to_y):
        self.move(x, y)
        xdo("mousedown", 1)
        for step in (1, 2, 3):
            self.move(x + (to_x - x) * step // 3, y + (to_y - y) * step // 3)
        xdo("mouseup", 1)

    def answer(self, title, steps):
        """Presses a button of an alert, counted from the one that has the keyboard."""
        self.use(title)
        xdo("key", *["shift+Tab"] * steps, "Return")
        wait_for("the alert's end", lambda: not self.number(title))
        self.use("Vexa")

    def panel(self, title, name, x=None, y=None):
        if x is None:
            x, y = BUTTONS[title]
        self.click(x, TOP + y)
        self.use(title)
        xdo("type", "--delay", "3", name)
        xdo("key", "Return")
        wait_for("the panel's end", lambda: not self.number(title))
        self.use("Vexa")

    def load(self, title, name):
        self.panel(title, name)
        time.sleep(0.2)
        if self.number(UNSAVED):
            self.answer(UNSAVED, 1)

    def save(self, name):
        """Saves the sound and returns the document."""
        path = self.folder / "sounds" / name
        path.unlink(missing_ok=True)
        self.panel("Save Sound", name)
        wait_for(name, path.exists)
        return path.read_bytes()

    def undo(self, times=1, key="ctrl+z"):
        xdo("key", "--delay", "30", *[key] * times)

    def redo(self, times=1):
        self.undo(times, "ctrl+shift+z")


def fields_of(picture):
    """The middles of the text fields that take a number: light boxes of their height, right of the
    plane."""
    _, size, _, pixels = picture.split(b"\n", 3)
    width, height = map(int, size.split())
    image = numpy.frombuffer(pixels, numpy.uint8).reshape(height, width, 3)
    light = (image == 251).all(axis=2)
    fields, seen = [], numpy.zeros_like(light)
    for y in range(TOP, height):
        for x in range(315, width):
            if not light[y, x] or seen[y, x]:
                continue
            right, bottom = x, y
            while right + 1 < width and light[y, right + 1]:
                right += 1
            while bottom + 1 < height and light[bottom + 1, x]:
                bottom += 1
            seen[y:bottom + 1, x:right + 1] = True
            if 10 <= bottom - y <= 22 and 15 <= right - x <= 60:
                fields.append(((x + right) // 2, (y + bottom) // 2))
    return fields


def gesture(window, chance, point):
    """Does one thing; returns what, and a point of an envelope that is there now."""
    kind = chance.choices(("number", "add", "drag", "remove", "formula", "sound", "function", "sample"),
                          (6, 3, 4, 1, 2, 1, 1, 0.5))[0]
    at = (chance.randrange(EDITOR_LEFT + 4, EDITOR_RIGHT),
          TOP + chance.choice(EDITOR_TOPS) + chance.randrange(EDITOR_HEIGHT - 8))
    if kind in ("drag", "remove") and not point:
        kind = "add"
    if kind == "number":
        text = str(chance.choice((0, 1, 2, 7, -1, 0.25, 0.5, 1.5)))
        window.replace(*chance.choice(window.fields), text)
        time.sleep(0.1)
        # No controller has that number.
        if window.number("Error"):
            window.answer("Error", 0)
    elif kind == "add":
        window.click(*at)
        point = at
    elif kind == "drag":
        to = (max(EDITOR_LEFT, point[0] + chance.randrange(-15, 16)),
              max(TOP, point[1] + chance.randrange(-20, 21)))
        window.drag(*point, *to)
        point = None
    elif kind == "remove":
        window.click(*point, 3)
        point = None
    elif kind == "formula":
        window.replace(*FORMULA, chance.choice(("x", "sin(x)*cos(y)", "a*x+b*y", "x*y*vel", "y/2")))
    elif kind == "sound":
        window.load("Load Sound", chance.choice(("bell", "choir", "bass", "default")) + ".xml")
        point = None
    elif kind == "function":
        window.load("Load f(x,y)", chance.choice(("ripples", "vowels", "sand")) + ".xml")
    else:
        window.panel("Load Sample", chance.choice(("pluck", "voice")) + ".wav", *window.sample_button)
    return kind, point


def check_documents(window, gestures, seed):
    chance = random.Random(seed)
    documents, kinds = [window.save("0.xml")], [""]
    point, counts = None, {}
    for i in range(gestures):
        kind, point = gesture(window, chance, point)
        counts[kind] = counts.get(kind, 0) + 1
        document = window.save("now.xml")
        if document != documents[-1]:
            documents.append(document)
            kinds.append(kind)
    print(f"{gestures} gestures have made {len(documents) - 1} changes:",
          ", ".join(f"{count} x {kind}" for kind, count in sorted(counts.items())))
    faults = 0
    more = len(documents) + 20
    for name, act, expected in (("first", window.undo, documents[0]), ("last", window.redo, documents[-1]),
                                ("first", window.undo, documents[0])):
        act(more)
        time.sleep(0.5)
        same = window.save(name + ".xml") == expected
        print(f"{act.__name__} all: the {name} sound", "byte for byte" if same else "is ANOTHER one")
        faults += not same
    for i, expected in enumerate(documents[1:], 1):
        window.redo()
        if window.save("step.xml") != expected:
            print(f"step {i} of {len(documents) - 1}, {kinds[i]}, is ANOTHER one")
            faults += 1
            break
    else:
        print(f"each of {len(documents) - 1} steps by itself: the sound of its gesture")
    return faults


def heard_note(path):
    """The left samples of the only note of a recording, but for its begin and end."""
    data = path.read_bytes()
    form = data.index(b"fmt ")
    channels = int.from_bytes(data[form + 10:form + 12], "little")
    samples = numpy.frombuffer(data[data.index(b"data") + 8:], "<f4").reshape(-1, channels)[:, 0]
    loud = numpy.flatnonzero(numpy.abs(samples) > 0.01)
    return samples[loud[0] + RATE // 2:loud[-1] - RATE // 2] if len(loud) else samples


def check_sound(window, record, vexa):
    # Two sounds, and what undo goes between: all within one note.
    window.replace(*FORMULA, "y-x")
    window.click(EDITOR_LEFT + 60, TOP + 222 + 60)
    window.load("Load Sound", "other.xml")
    window.undo(20)
    time.sleep(0.5)
    xdo("mousemove", "--window", window.window, 5, 5)
    xdo("keydown", "q")
    time.sleep(2)
    for _ in range(4):
        for key in ("ctrl+shift+z",) * 3 + ("ctrl+z",) * 3:
            xdo("key", key)
            time.sleep(0.15)
    time.sleep(1)
    xdo("keyup", "q")
    time.sleep(0.5)
    vexa.send_signal(signal.SIGTERM)
    vexa.wait(20)
    note = heard_note(record)
    steps = numpy.abs(numpy.diff(note))
    alone = slice(0, RATE)
    held, level = steps[alone].max(), numpy.abs(note[alone]).max()
    moved, most = steps.max(), numpy.abs(note).max()
    # One of the formulas is louder by a factor of 1.41.
    allowed = 2.5 * held
    print(f"24 times undone and redone under a note: largest step {moved:.4f}, that of the note "
          f"{held:.4f}, allowed {allowed:.4f}; level {level:.3f} to {most:.3f}")
    return int(moved > allowed or level < 0.05)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("build", nargs="?", default=ROOT / "build" / "release", type=pathlib.Path)
    parser.add_argument("--gestures", type=int, default=100)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--pictures", type=pathlib.Path, help="where to leave pictures of the window")
    parser.add_argument("--log", type=pathlib.Path, help="where to leave what the program says")
    options = parser.parse_args()
    with contextlib.ExitStack() as stack:
        work = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory()))
        name = f"vexa-undo-{os.getpid()}"
        os.environ.update(JACK_DEFAULT_SERVER=name, JACK_NO_START_SERVER="1", XDG_RUNTIME_DIR=str(work))
        os.environ.pop("QT_QPA_PLATFORM", None)
        work.chmod(0o700)
        programs = work / "program"
        programs.mkdir()
        for folder in ("functions", "sounds", "samples"):
            shutil.copytree(options.build / "bin" / folder, programs / folder)
        for file in ("vexa", "orvo.png", "orvobar.png", "vexa.png", "vexa-icon.png"):
            shutil.copy(options.build / "bin" / file, programs)
        template = programs / "sounds" / "default.xml"
        (programs / "sounds" / "sine.xml").write_text(ring(template, "x", 1))
        (programs / "sounds" / "other.xml").write_text(ring(template, "0.5*x+3", 0.5))
        quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        said = {"stdout": stack.enter_context(open(options.log or os.devnull, "w")),
                "stderr": subprocess.STDOUT}
        read, write = os.pipe()
        stack.enter_context(running("Xvfb", "-displayfd", str(write), "-screen", "0", "1600x900x24",
                                    "-nolisten", "tcp", pass_fds=(write,), **quiet))
        with os.fdopen(read) as number:
            os.environ["DISPLAY"] = ":" + number.readline().strip()
        stack.enter_context(running("openbox", **quiet))
        stack.enter_context(running("jackd", "-r", "-n", name, "-d", "dummy", "-r", str(RATE), "-p", "256",
                                    **quiet))
        wait_for("the JACK server", lambda: "system:playback_1" in run("jack_lsp"))
        faults = 0
        with running(programs / "vexa", "--classic", **said):
            window = Window(programs)
            window.sample_button = (55, 399)
            print(f"{len(window.fields)} fields")
            faults += check_documents(window, options.gestures, options.seed)
            if options.pictures:
                run("import", "-window", "root", str(options.pictures / "undo.png"))
        record = work / "heard.wav"
        with running(programs / "vexa", "--classic", "--voices", "4", "--sound",
                     programs / "sounds" / "sine.xml", "--record", record, **said) as vexa:
            faults += check_sound(Window(programs), record, vexa)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
