#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks the window with mouse and keyboard gestures, on a display and a JACK server of its own.

check-window-gestures.py [--gestures N] [--seed N] [--only PART] [--scale S] [--picture FILE] [BUILD]:
100 gestures, seed 1 and build/release by default. PART is one of the three parts:

undo: xdotool makes random gestures in the window: it types, turns the wheel and presses Up and Down in
fields; adds, drags, moves by keys and removes points of envelopes; confirms formulas; chooses sounds in
the drawer and with Page Up and Page Down; turns macros, mutates, starts with the initial sound,
compares A with B, drags handles on the plane and zooms it. Then all is undone, and the saved sound must
equal the first one byte for byte; all is redone, and it must equal the last one.
sound: measures at JACK how the volume, a formula, its undoing, a coefficient, A4, the pitch bend, the
spread and a macro change the level, the frequency, or the angle between left and right.
smooth: under a held note with a smoothing of 10 ms, the wheel over a coefficient, the drag of a handle
and the drag of an envelope's point must not make a step in the signal.

The exit code is 1 if a check fails.
"""
import argparse
import difflib
import pathlib
import random
import sys
import time

import numpy

import windowstage
from jackear import Ear
from windowstage import RATE, UNDO, UNSAVED, Window, program_folder, ring, running, wait_for, xdo

ROOT = pathlib.Path(__file__).resolve().parent.parent
FORMULA = "formula f(x, y)"
FORMULAS = ("x", "sin(x)*cos(y)", "a*x+b*y", "x*y*vel", "y/2", "0.3*(x+d*y)")
PLACES = ("drift of centre x", "drift of centre y", "radius x", "radius y")


def inside(box, chance, inset=12):
    left, top, width, height = box
    return (chance.randrange(left + inset, left + width - inset), chance.randrange(top + inset, top + height - inset))


class Hands:
    """Gestures at random places with random values, a method each. The seed determines them."""

    def __init__(self, window, seed):
        self.window = window
        self.chance = random.Random(seed)
        self.fields = window.named(", velocity") + window.named(", key") + window.named(" period of the note") \
            + [f"{place}, times the envelope" for place in PLACES] + window.named(", for every note")

    def number(self):
        return str(self.chance.choice((-3, -1, -0.25, 0, 0.5, 1, 2, 7)))

    def typed_number(self):
        self.window.type(self.chance.choice(self.fields), self.number())

    def wheel(self):
        modifier = self.chance.choice((None, "shift", "ctrl"))
        where = self.chance.choice(self.fields)
        self.window.click(where)
        words = ["click", "--repeat", str(self.chance.randrange(1, 5)), "--delay", 20, self.chance.choice("45")]
        xdo(*(["keydown", modifier] if modifier else []), *words, *(["keyup", modifier] if modifier else []))

    def arrows_in_a_field(self):
        self.window.click(self.chance.choice(self.fields))
        self.window.key(*[self.chance.choice(("Up", "Down", "shift+Up", "ctrl+Down"))] * self.chance.randrange(1, 4))

    def envelope(self):
        return self.window[f"envelope of {self.chance.choice(PLACES)}"]

    def point(self, envelope=None):
        points = list(windowstage.children(envelope or self.envelope()))
        return self.chance.choice(points) if points else None

    def added_point(self):
        self.window.click(inside(self.window.box(self.envelope()), self.chance))

    def dragged_point(self):
        envelope = self.envelope()
        point = self.point(envelope)
        if point:
            self.window.drag(self.window.middle(point), inside(self.window.box(envelope), self.chance))

    def removed_point(self):
        point = self.point()
        if point:
            self.window.click(point, 3)

    def point_by_keys(self):
        point = self.point()
        if point:
            self.window.click(point)
            self.window.key(*[self.chance.choice(("Up", "Down", "Left", "Right"))] * 3)

    def formula(self):
        self.window.type(FORMULA, self.chance.choice(FORMULAS))

    def sound(self):
        self.window.click(self.chance.choice(self.window.rows()))
        self.window.answer(UNSAVED, "Discard")

    def next_sound(self):
        # The window gets the keys only if no field has the focus.
        self.window.click("piano")
        self.window.key(self.chance.choice(("Next", "Prior")))
        self.window.answer(UNSAVED, "Discard")

    def macro(self):
        x, y = self.window.middle(f"knob {self.chance.choice('abcd')}")
        if self.chance.random() < 0.5:
            self.window.drag((x, y), (x, y + self.chance.randrange(-60, 61)))
        else:
            xdo("mousemove", x, y, "click", "--repeat", 3, self.chance.choice("45"))

    def strip(self):
        name, values = self.chance.choice((("bend, semitones", (1, 7, 12)), ("spread, degrees", (0, 45, 90)),
                                           ("volume, decibels", (-12, -6, -3)), ("A4, hertz", (440, 432)),
                                           ("glide, seconds", (0, 0.2)), ("smoothing, milliseconds", (5, 20))))
        self.window.type(name, str(self.chance.choice(values)))

    def mutation(self):
        self.window.choose("Mutate")

    def initial_sound(self):
        self.window.choose("Initial Sound")
        self.window.answer(UNSAVED, "Discard")

    def other_slot(self):
        """Changes the sound in slot B, which has a history of its own, and returns to A."""
        self.window.choose("Compare with B")
        self.typed_number()
        self.window.choose("Compare with A")

    def handle(self):
        handles = ("start of centre", "radius x", "radius y", "drift of centre")
        plane = self.window.box("plane")
        start = self.window.middle(self.chance.choice(handles))
        if not (plane[0] < start[0] < plane[0] + plane[2] and plane[1] < start[1] < plane[1] + plane[3]):
            return
        xdo("mousemove", plane[0] + 20, plane[1] + 20)
        self.window.settle()
        self.window.drag(start, inside((start[0] - 40, start[1] - 40, 80, 80), self.chance))

    def zoomed_plane(self):
        xdo("mousemove", *inside(self.window.box("plane"), self.chance), "click", "--repeat", 2,
            self.chance.choice("45"))


# The relative frequency of each gesture.
WEIGHTS = {"typed_number": 3, "wheel": 3, "arrows_in_a_field": 3, "added_point": 3, "dragged_point": 4,
           "removed_point": 2, "point_by_keys": 3, "formula": 2, "sound": 2, "next_sound": 1, "macro": 3, "strip": 3,
           "mutation": 1, "initial_sound": 1, "other_slot": 1, "handle": 3, "zoomed_plane": 1}


class Report:
    def __init__(self):
        self.faults = 0

    def tell(self, good, text):
        print(("" if good else "FAULT: ") + text, flush=True)
        self.faults += not good

    def same(self, document, wanted, text):
        self.tell(document == wanted, text)
        lines = [d.decode().splitlines() for d in (wanted, document)]
        for line in difflib.unified_diff(*lines, "wanted", "found", n=0, lineterm=""):
            print("    " + line)


def check_undo(window, folder, gestures, seed, report):
    hands = Hands(window, seed)
    window.click("volume, decibels")
    window.key("Return")
    report.tell(not window.is_on(UNDO), "a field confirmed as it is: no step")
    window.undo_all()
    # A document's name follows its file, so all documents are saved under the same one.
    saved = folder / "saved.xml"
    first = window.save(saved)
    # A document contains the shown part of the plane, so zooming is a step like any other edit.
    hands.zoomed_plane()
    undoes = window.is_on(UNDO)
    window.key("ctrl+z")
    report.tell(undoes and window.becomes(UNDO, "SENSITIVE", False), "the plane zoomed: one step for the wheel")
    counts = {}
    # Each gesture once, in random order, then random ones; `gestures` limits the total.
    plan = list(WEIGHTS)
    hands.chance.shuffle(plan)
    plan = (plan + hands.chance.choices(list(WEIGHTS), WEIGHTS.values(), k=gestures))[:gestures]
    for kind in plan:
        getattr(hands, kind)()
        window.settle()
        counts[kind] = counts.get(kind, 0) + 1
        if window.process.poll() is not None:
            report.tell(False, f"the program has ended after {kind}")
            return
        others = [c.name for c in windowstage.children(window.application) if c.name != "Vexa"]
        if others:
            report.tell(False, f"after {kind} there is a window {others}")
            return
    print(f"{len(plan)} gestures, seed {seed}:", ", ".join(f"{n} x {kind}" for kind, n in sorted(counts.items())))
    last = window.save(saved)
    report.same(window.undo_all() and window.save(saved), first, "undone: the first sound byte for byte")
    report.same(window.redo_all() and window.save(saved), last, "redone: the last sound byte for byte")
    window.undo_all()
    report.same(window.save(saved), first, "undone again: the first sound byte for byte")


def level(samples):
    return 10 * numpy.log10(max(float((samples ** 2).mean()), 1e-12))


def tone(samples):
    """Returns the frequency (Hz) and phase (radians) of the loudest partial."""
    size = len(samples)
    spectrum = numpy.fft.rfft(samples * numpy.hanning(size))
    peak = int(abs(spectrum[2:]).argmax()) + 2
    low, mid, high = numpy.log(abs(spectrum[peak - 1:peak + 2]) + 1e-12)
    return ((peak + (low - high) / (2 * (low - 2 * mid + high))) * RATE / size, numpy.angle(spectrum[peak]))


def ratio_text(value, wanted, unit):
    return f"{value:.3f} {unit}, expected {wanted:.3f}"


def whole(ear, act):
    """Repeats `act` until JACK has dropped nothing during it, and returns its result; gives up after ten
    times."""
    for _ in range(10):
        start = ear.count()
        result = act()
        if ear.is_whole(start, ear.count()):
            return result
    raise SystemExit("the machine is too busy: each time something was missing of the sound")


class Listener:
    """Measures the program's output at JACK while a note is held."""

    def __init__(self, window, ear):
        self.window, self.ear = window, ear
        self.strike()

    def strike(self):
        self.window.click("Silence")
        wait_for("silence", lambda: abs(self.ear.listen(0.1)).max() < 0.001)
        # "hold" makes a note outlast the click on its key. "Silence" has switched it off.
        self.window.click("hold")
        self.window.click("A3")
        wait_for("the note", lambda: abs(self.ear.listen(0.1)).max() > 0.01)

    def measure(self):
        time.sleep(0.3)
        heard = whole(self.ear, lambda: self.ear.listen(1))
        frequency, phase = tone(heard[0])
        turn = numpy.degrees((tone(heard[1])[1] - phase + numpy.pi) % (2 * numpy.pi) - numpy.pi)
        return level(heard[0]), frequency, abs(float(turn))


def check_sound(window, ear, report):
    listener = Listener(window, ear)

    def compare(name, act, which, change, wanted, unit, tolerance):
        before = listener.measure()[which]
        act()
        after = listener.measure()[which]
        value = change(before, after)
        report.tell(abs(value - wanted) <= tolerance, f"{name}: {ratio_text(value, wanted, unit)}")

    def semitones(before, after):
        return 12 * numpy.log2(after / before)

    def difference(before, after):
        return after - before

    def field(name, text):
        return lambda: window.type(name, text)
    window.type("volume, decibels", "-6")
    compare("volume from -6 to -12", field("volume, decibels", "-12"), 0, difference, -6, "dB", 0.05)
    compare("formula x to 0.5*x", field(FORMULA, "0.5*x"), 0, difference, -6.0206, "dB", 0.05)
    compare("undone", lambda: window.key("ctrl+z"), 0, difference, 6.0206, "dB", 0.05)
    radius = "radius x, times the envelope"
    compare("radius x from 1 to 2", field(radius, "2"), 0, difference, 6.0206, "dB", 0.1)
    compare("A4 from 440 to 432", lambda: (window.type("A4, hertz", "432"), listener.strike()), 1, semitones, 12 * numpy.log2(432 / 440), "semitones", 0.01)
    window.type("bend, semitones", "7")
    compare("the wheel up, bend 7", lambda: setattr(window["pitch bend"].queryValue(), "currentValue", 1), 1,
            semitones, 7, "semitones", 0.02)
    compare("spread from 0 to 90", field("spread, degrees", "90"), 2, difference, 90, "degrees", 1)
    window.type(FORMULA, "x*a")
    setattr(window["knob a"].queryValue(), "currentValue", 0.25)
    before = window.value("knob a")
    compare("macro a by the wheel", lambda: xdo("mousemove", *window.middle("knob a"), "click", "--repeat", 5, 4), 0,
            difference, 20 * numpy.log10((before + 0.1) / before), "dB", 0.1)


def content_above(samples, hertz):
    """Returns the level above a frequency, in decibels of full scale: the largest RMS of all blocks of
    20 ms."""
    size = len(samples)
    spectrum = numpy.fft.rfft(samples)
    spectrum[:int(hertz * size / RATE)] = 0
    high = numpy.fft.irfft(spectrum, size)[960:-960]
    blocks = high[:len(high) // 960 * 960].reshape(-1, 960)
    return 10 * numpy.log10(max(float((blocks ** 2).mean(1).max()), 1e-14))


def check_smooth(window, ear, report):
    """Checks that gestures make no step under a note of 220 Hz, with a smoothing of 10 ms."""
    window.type("smoothing, milliseconds", "10")
    Listener(window, ear)
    radius = "radius x, times the envelope"
    x, y = window.middle("radius x")

    def wheel():
        xdo("mousemove", *window.middle(radius), "click", "--repeat", 20, "--delay", 40, 4,
            "click", "--repeat", 20, "--delay", 40, 5)

    def handle():
        window.drag((x, y), (x + 25, y), 25)
        window.drag((x + 25, y), (x, y), 25)

    def point():
        points = list(windowstage.children(window["envelope of radius x"]))
        held = points[1]
        place = window.middle(held)
        window.drag(place, (place[0], place[1] + 30), 25)

    def heard_during(act):
        def heard():
            start = ear.count()
            act()
            window.settle()
            time.sleep(0.3)
            return numpy.array(ear.samples[0, start:ear.count()])
        return whole(ear, heard)

    def levels(samples):
        return numpy.sqrt((samples[:len(samples) // 960 * 960].reshape(-1, 960) ** 2).mean(1))

    time.sleep(0.5)
    alone = heard_during(lambda: time.sleep(1))
    step, loud = abs(numpy.diff(alone)).max(), levels(alone).max()
    for name, act in (("wheel over a field", wheel), ("drag of a handle", handle),
                      ("drag of an envelope's point", point)):
        heard = heard_during(act)
        moved = levels(heard)
        # The steps between samples grow with the level of a note.
        own = step * max(1, moved.max() / loud)
        high, most = content_above(heard, 2000), abs(numpy.diff(heard)).max()
        good = most <= 1.1 * own and high < 20 * numpy.log10(moved.max()) - 50
        report.tell(good and moved.max() > 1.1 * moved.min(), f"{name}: level over a range of {20 * numpy.log10(moved.max() / moved.min()):.1f} dB; largest "
                    f"step {most:.4f}, of a note of that level {own:.4f}; above 2 kHz {high:.1f} dB, "
                    f"alone {content_above(alone, 2000):.1f} dB")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", nargs="?", default=ROOT / "build" / "release", type=pathlib.Path)
    parser.add_argument("--gestures", type=int, default=100)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", choices=("undo", "sound", "smooth"))
    parser.add_argument("--scale", default="1", help="pixels of the screen to one of the window")
    parser.add_argument("--picture", type=pathlib.Path, help="where to leave a picture of the window")
    options = parser.parse_args()

    def play(folder):
        report = Report()
        programs = program_folder(options.build, folder / "program")
        sounds = folder / "data" / "vexa" / "sounds"
        sounds.mkdir(parents=True)
        sine = folder / "sine.xml"
        sine.write_text(ring(programs / "sounds" / "default.xml", "x"))
        command = [programs / "vexa", "--user-folder", "--voices", "20"]
        if options.only in (None, "undo"):
            with running(*command) as vexa:
                window = Window(vexa)
                check_undo(window, sounds, options.gestures, options.seed, report)
                if options.picture:
                    windowstage.run("import", "-window", "root", options.picture)
        for number, (part, check) in enumerate((("sound", check_sound), ("smooth", check_smooth))):
            if options.only in (None, part):
                with running(*command, "--sound", sine) as vexa:
                    window = Window(vexa)
                    ports = "Vexa:Vexa audio out", "Vexa:Vexa audio out right"
                    with Ear(folder / f"heard{number}", *ports) as ear:
                        check(window, ear, report)
                    if options.picture:
                        windowstage.run("import", "-window", "root", options.picture)
        return min(report.faults, 1)
    return windowstage.on_a_stage(play, options.scale)


if __name__ == "__main__":
    sys.exit(main())
