#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Records two ports of JACK, in a process of its own that does nothing else.

The program connects itself to two output ports and writes their samples into files that other
processes can read meanwhile. The class Ear starts it and reads these files.
"""
import argparse
import ctypes
import gc
import pathlib
import signal
import subprocess
import sys
import time

import numpy

RATE = 48000
MOST_PERIODS = 1 << 18


class Ear:
    """The recording of two ports, from its construction on, for at most `seconds`."""

    def __init__(self, folder, left, right, seconds=300):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir()
        self.process = subprocess.Popen([sys.executable, __file__, folder, str(seconds), left, right],
                                        stdout=subprocess.PIPE, text=True)
        if self.process.stdout.readline().strip() != "hears":
            raise SystemExit(f"jackear: could not hear {left} and {right}")
        self.samples = numpy.memmap(self.folder / "samples", "<f4", "r").reshape(2, -1)
        self.periods = numpy.memmap(self.folder / "periods", "<f8", "r").reshape(-1, 3)

    def count(self):
        """Returns the number of frames recorded so far."""
        return int(self.periods[0, 0])

    def listen(self, seconds):
        """Waits for the next `seconds` and returns the samples of both ports, a row each."""
        start = self.count()
        while self.count() < start + int(seconds * RATE):
            time.sleep(0.02)
            if self.process.poll() is not None:
                raise SystemExit("jackear: the ear has ended")
        return numpy.array(self.samples[:, start:start + int(seconds * RATE)])

    def is_whole(self, start, end):
        """Returns whether the recording of a held note is complete from frame `start` to `end`. On a busy
        machine JACK drops periods, which leaves gaps in its frame times or runs of zeros."""
        periods = numpy.array(self.periods[1:])
        inside = periods[(periods[:, 1] > 0) & (periods[:, 0] >= start) & (periods[:, 0] < end)]
        in_turn = (numpy.diff(inside[:, 0]) == numpy.diff(inside[:, 2])).all()
        silent = numpy.flatnonzero(numpy.concatenate([[1], self.samples[0, start:end], [1]]))
        return bool(in_turn) and int(numpy.diff(silent).max()) < 24

    def frame_at(self, moment):
        """Returns the first frame recorded after a moment of time.monotonic()."""
        periods = numpy.array(self.periods[1:])
        heard = periods[periods[:, 1] > 0]
        later = numpy.flatnonzero(heard[:, 1] >= moment)
        return int(heard[later[0], 0]) if len(later) else self.count()

    def moment_of(self, frame):
        """Returns when the period of a frame was recorded, by time.monotonic()."""
        periods = numpy.array(self.periods[1:])
        heard = periods[periods[:, 1] > 0]
        return float(heard[numpy.searchsorted(heard[:, 0], frame, "right") - 1, 1])

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(10)


def hear(folder, seconds, ports):
    jack = ctypes.CDLL("libjack.so.0")
    for function in ("jack_client_open", "jack_port_register", "jack_port_get_buffer", "jack_port_name"):
        getattr(jack, function).restype = ctypes.c_void_p
    client = ctypes.c_void_p(jack.jack_client_open(b"ear", 1, None))
    if not client:
        return 1
    own = [ctypes.c_void_p(jack.jack_port_register(client, name, b"32 bit float mono audio", ctypes.c_ulong(1),
                                                   ctypes.c_ulong(0))) for name in (b"left", b"right")]
    jack.jack_last_frame_time.restype = ctypes.c_uint32
    frames = seconds * RATE
    samples = numpy.memmap(folder / "samples", "<f4", "w+", shape=(2, frames))
    # The first row has the number of frames so far. Each other row describes a period: its first frame,
    # its time by time.monotonic(), and JACK's own number of that frame.
    periods = numpy.memmap(folder / "periods", "<f8", "w+", shape=(MOST_PERIODS, 3))
    places = [samples[row].ctypes.data for row in (0, 1)]
    heard = [0, 1]
    get, move, clock = jack.jack_port_get_buffer, ctypes.memmove, time.monotonic

    @ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_uint32, ctypes.c_void_p)
    def process(count, _):
        start, row = heard
        if start + count > frames or row >= MOST_PERIODS:
            return 0
        for port, place in zip(own, places):
            move(place + 4 * start, get(port, count), 4 * count)
        periods[row] = start, clock(), jack.jack_last_frame_time(client)
        heard[:] = start + count, row + 1
        periods[0, 0] = start + count
        return 0

    jack.jack_set_process_callback(client, process, None)
    gc.disable()
    if jack.jack_activate(client) != 0:
        return 1
    for port, other in zip(own, ports):
        name = ctypes.string_at(jack.jack_port_name(port))
        if jack.jack_connect(client, other.encode(), name) != 0:
            return 1
    print("hears", flush=True)
    signal.sigwait({signal.SIGTERM, signal.SIGINT})
    jack.jack_client_close(client)
    return 0


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path, help="where the files are written")
    parser.add_argument("seconds", type=int, help="the longest recording")
    parser.add_argument("ports", nargs=2, help="the left and the right port")
    arguments = parser.parse_args()
    signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGTERM, signal.SIGINT})
    sys.exit(hear(arguments.folder, arguments.seconds, arguments.ports))
