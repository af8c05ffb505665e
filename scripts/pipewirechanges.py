#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks that Vexa plays on while PipeWire changes its rate and its period.

scripts/check-pipewire runs this in an environment that finds PipeWire and its JACK library. The exit code
is not 0 if a check fails.
"""
import argparse
import contextlib
import pathlib
import subprocess
import time

import jack
import numpy

from windowstage import SINE, display, run, running, wait_for

KEY, PITCH = 69, 440
# Seconds after most changes by which the note must be back; of the stretch that shows it; after the slowest change.
MOST, STRETCH, LIMIT = 0.5, 0.1, 5
RATES = [44100, 48000, 96000, 44100, 96000, 48000]
PERIODS = [256, 1024, 512, 2048, 128]
SINK = ("{ factory.name=support.null-audio-sink node.name=nowhere media.class=Audio/Sink object.linger=true "
        "audio.position=[FL FR] }")


class Stage:
    """A client that sends a held note, and one that records the rate and the samples of each period."""

    def __init__(self):
        self.player = jack.Client("player", no_start_server=True)
        self.keys = self.player.midi_outports.register("out")
        self.ear = jack.Client("ear", no_start_server=True)
        self.input = self.ear.inports.register("in")
        self.messages = []
        # A time, a rate and samples for each period since the last change.
        self.periods = []
        self.player.set_process_callback(self.send)
        self.ear.set_process_callback(self.record)
        self.player.activate()
        self.ear.activate()

    def close(self):
        self.player.close()
        self.ear.close()

    def send(self, _):
        self.keys.clear_buffer()
        if self.messages:
            self.keys.write_midi_event(0, self.messages.pop())

    def record(self, _):
        self.periods.append((time.monotonic(), self.ear.samplerate, numpy.array(self.input.get_array())))

    def sounds(self, rate, period):
        """Returns when the note was first heard at that rate and period (None: any) for a STRETCH, or None."""
        periods = list(self.periods)
        fits = [heard[1] == rate and period in (None, len(heard[2])) for heard in periods]
        for first, (begin, _, _) in enumerate(periods):
            last, frames = first, 0
            while last < len(periods) and fits[last] and frames < STRETCH * rate:
                frames += len(periods[last][2])
                last += 1
            if frames >= STRETCH * rate and is_the_note(numpy.concatenate([p[2] for p in periods[first:last]]), rate):
                return begin
        return None

    def strike(self):
        """Strikes the key and holds it; returns whether it is heard. A message that is sent while the connection is
        still being made gets lost."""
        self.periods = []
        self.messages = [(0x90, KEY, 100), (0x80, KEY, 0)]
        time.sleep(0.5)
        return self.sounds(self.ear.samplerate, None)

    def change(self, setting, value, rate, period):
        """Changes a setting of PipeWire; returns the seconds until the note was heard with it, or None."""
        begin = time.monotonic()
        self.periods = []
        force(setting, value)
        while time.monotonic() < begin + LIMIT:
            time.sleep(0.02)
            back = self.sounds(rate, period)
            if back:
                return back - begin
        return None


def force(setting, value):
    """Sets "rate" or "quantum", the period, for the whole of PipeWire; 0 returns to its own choice."""
    subprocess.run(["pw-metadata", "-n", "settings", "0", f"clock.force-{setting}", str(value)], check=True,
                   timeout=LIMIT, stdout=subprocess.DEVNULL)


def is_the_note(samples, rate):
    """Returns whether the samples are a loud sine of the note's pitch, to 2 Hz, from the first to the last."""
    before, after = samples[:-1], samples[1:]
    rising = numpy.flatnonzero((before < 0) & (after >= 0))
    if numpy.abs(samples).max() < 0.01 or len(rising) < 3:
        return False
    crossings = rising + before[rising] / (before[rising] - after[rising])
    longest = numpy.diff([0, *crossings, len(samples)]).max()
    pitch = (len(crossings) - 1) * rate / (crossings[-1] - crossings[0])
    return longest < 1.1 * rate / PITCH and abs(pitch - PITCH) < 2


def play(stage, folder, program, options, times):
    """Runs Vexa through the changes; returns what went wrong."""
    faults = []
    log = folder / "log"
    with open(log, "w") as output:
        vexa = subprocess.Popen([program, *options, "--sound", folder / "sine.xml", "--midi", "player:out"],
                                stdout=output, stderr=output)
    try:
        wait_for("the source's connection", lambda: stage.keys.connections)
        stage.ear.connect("Vexa:Vexa audio out", stage.input)
        wait_for("the note", stage.strike)
        rate = stage.ear.samplerate
        changes = [("rate", RATES[i % len(RATES)]) for i in range(times)]
        changes += [("quantum", PERIODS[i % len(PERIODS)]) for i in range(times)]
        seconds = []
        for what, value in changes:
            rate = value if what == "rate" else rate
            took = stage.change(what, value, rate, value if what == "quantum" else None)
            print(f"{what} {value}:", f"back after {took:.2f} s" if took else "not back", flush=True)
            if not took:
                faults.append(f"{what} {value}")
                break
            seconds.append(took)
        # A busy machine delays single changes.
        if seconds and numpy.median(seconds) > MOST:
            faults.append(f"back after {numpy.median(seconds):.2f} s")
        vexa.terminate()
        with contextlib.suppress(subprocess.TimeoutExpired):
            vexa.wait(LIMIT)
        if vexa.returncode != 0:
            faults.append(f"SIGTERM: exit code {vexa.returncode}")
    finally:
        vexa.kill()
        vexa.wait()
        force("rate", 0)
        force("quantum", 0)
    if faults:
        print(log.read_text())
    return faults


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path, help="an empty folder")
    parser.add_argument("program", help="vexa")
    parser.add_argument("times", type=int, help="how many changes of the rate, and of the period")
    arguments = parser.parse_args()
    (arguments.folder / "sine.xml").write_text(SINE)
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    with contextlib.ExitStack() as stack:
        stack.enter_context(running("pipewire", **quiet))
        wait_for("PipeWire", lambda: "force-rate" in run("pw-metadata", "-n", "settings"))
        stack.enter_context(running("wireplumber", **quiet))
        run("pw-cli", "create-node", "adapter", SINK)
        wait_for("the sink", lambda: "nowhere:playback" in run("pw-link", "-i"))
        stage = Stage()
        stack.callback(stage.close)
        print("without the window", flush=True)
        faults = play(stage, arguments.folder, arguments.program, ["--no-window"], arguments.times)
        print("with the window", flush=True)
        with display(1920, 1200):
            faults += play(stage, arguments.folder, arguments.program, [], arguments.times)
    if faults:
        raise SystemExit(f"PipeWire: {', '.join(faults)}")


if __name__ == "__main__":
    main()
