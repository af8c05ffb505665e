# SPDX-License-Identifier: GPL-3.0-or-later
"""Plays and records LV2 plug-ins in jalv, under a JACK server of its own without a device."""
import contextlib
import os
import pathlib
import subprocess
import threading

import numpy

from windowstage import RATE, jack_server, wait_for

PERIOD = 256


@contextlib.contextmanager
def server():
    """Runs a JACK server, which meanwhile is the default of this process and its children."""
    import jack
    jack.set_error_function(lambda text: None)
    jack.set_info_function(lambda text: None)
    with jack_server(PERIOD):
        yield


class Jalv:
    """A plug-in in a process of jalv, connected to a JACK client that plays and records it."""

    def __init__(self, uri, bundles=None):
        import jack
        # For plug-ins that start Qt in the host: it needs no display then.
        environment = dict(os.environ, QT_QPA_PLATFORM="offscreen")
        if bundles:
            environment["LV2_PATH"] = f"{bundles}:/usr/lib/lv2"
        self.process = subprocess.Popen(["stdbuf", "-oL", "jalv", "-n", "played", uri], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                        env=environment)
        self.output = ""
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()
        self.client = jack.Client("recorder", no_start_server=True)
        self.midi = self.client.midi_outports.register("midi")
        self.ears = [self.client.inports.register(name) for name in ("left", "right")]
        self.events, self.frames, self.frame, self.done = [], 0, 0, threading.Event()
        self.recorded = []
        self.client.set_process_callback(self._process)
        self.client.activate()
        wait_for(f"jalv {uri}", lambda: len(self._ports(is_audio=True, is_output=True)) >= 2)
        for port, ear in zip(self._ports(is_audio=True, is_output=True), self.ears):
            self._connect(port, ear)
        self._connect(self.midi, self._ports(is_midi=True, is_input=True)[0])

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.client.close()
        self.process.terminate()
        self.process.wait(10)

    def _read(self):
        for line in self.process.stdout:
            self.output += line

    def _connect(self, source, destination):
        """Connects two ports once jalv is active; its ports exist before that."""
        import jack

        def is_done():
            with contextlib.suppress(jack.JackError):
                self.client.connect(source, destination)
                return True
            return False
        wait_for(f"a connection of {source.name} to {destination.name}", is_done)

    def _ports(self, **kind):
        return self.client.get_ports("played:", **kind)

    def _process(self, count):
        self.midi.clear_buffer()
        if self.frame >= self.frames:
            return
        for at, message in self.events:
            if self.frame <= at < self.frame + count:
                self.midi.write_midi_event(at - self.frame, message)
        self.recorded.append([ear.get_array().copy() for ear in self.ears])
        self.frame += count
        if self.frame >= self.frames:
            self.done.set()

    def tell(self, command, answer, times=1):
        """Gives jalv a command and waits until its output contains the answer `times` times."""
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()
        wait_for(f"jalv: {command}", lambda: self.output.count(answer) >= times)

    def load(self, preset):
        self.tell("presets", f"{preset} (")
        # jalv does not report that it has loaded a preset, but answers the next command only after that.
        self.process.stdin.write(f"preset {preset}\n")
        self.tell("presets", f"{preset} (", 2)

    def play(self, events, seconds):
        """Plays events, pairs (milliseconds, bytes), in freewheel. Returns the recorded samples, a row per
        channel, and the host's processor time in seconds. Recording begins at time 0 of the events."""
        self.events = [(ms * RATE // 1000, bytes(message)) for ms, message in events]
        self.recorded, self.frame = [], 0
        self.done.clear()
        self.client.set_freewheel(True)
        before = self._processor_time()
        self.frames = int(seconds * RATE)
        if not self.done.wait(240):
            raise SystemExit("JACK has not called its client")
        used = self._processor_time() - before
        self.client.set_freewheel(False)
        self.frames = 0
        return numpy.concatenate(self.recorded, axis=1), used

    def _processor_time(self):
        fields = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
