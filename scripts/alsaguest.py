#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks that Vexa plays through ALSA while its devices disappear and return.

scripts/check-alsa runs this in a virtual machine. It needs root, an ALSA loopback card (snd-aloop) as
card 0 and a virtual MIDI card (snd-virmidi) as card 1. The exit code is not 0 if a check fails.
"""
import argparse
import os
import pathlib
import subprocess
import time

from windowstage import SINE

RATE = 48000
FOLDER = pathlib.Path("/run/vexa-alsa")
LOG = FOLDER / "log"
# The name lacks ALSA's address (client and port), which another boot may give to another device.
KEYS = "Virtual Raw MIDI 1-0:VirMIDI 1-0"


def wait_for(what, is_so, seconds=60):
    end = time.monotonic() + seconds
    while not is_so():
        if time.monotonic() > end:
            raise SystemExit(f"{what}: timed out after {seconds} s\n{LOG.read_text()}")
        time.sleep(0.1)
    print(what, flush=True)


def says(text, times=1):
    return LOG.read_text().count(text) >= times


def is_connected():
    # The machine has no other connections.
    return "Connecting To" in subprocess.run(["aconnect", "-l"], capture_output=True, text=True, check=True).stdout


def plug(driver, in_again):
    path = pathlib.Path(f"/sys/bus/platform/drivers/{driver}/{'bind' if in_again else 'unbind'}")
    path.write_text(f"{driver}.0")


class Ear:
    """Records the output of the loopback card."""

    def __init__(self):
        self.path = FOLDER / "heard"
        # To the standard output: arecord would remove a file and make it anew, so that meanwhile there were none.
        with open(self.path, "wb") as heard:
            self.process = subprocess.Popen(["arecord", "-q", "-D", "hw:0,1", "-t", "raw", "-f", "S32_LE",
                                             "-r", str(RATE), "-c", "2"], stdout=heard)

    def loud(self):
        """Returns whether a note sounds: some sample of the next half second exceeds 1 % of full scale."""
        start = self.path.stat().st_size
        start -= start % 8
        end = start + RATE // 2 * 8
        while self.path.stat().st_size < end:
            time.sleep(0.05)
        heard = memoryview(self.path.read_bytes()[start:end]).cast("i")
        return any(abs(sample) > 2**31 / 100 for sample in heard)

    def close(self):
        self.process.kill()
        self.process.wait()


def strike(ear):
    """Waits until a held key is heard. The key is struck repeatedly, because an overloaded emulated machine may drop the
    voice of a note."""
    with open("/dev/snd/midiC1D0", "wb", buffering=0) as keys:
        def is_heard():
            keys.write(bytes([0x90, 69, 100]))
            return ear.loud()
        wait_for("a key is heard", is_heard)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", help="vexa")
    program = parser.parse_args().program
    FOLDER.mkdir()
    sound = FOLDER / "sine.xml"
    sound.write_text(SINE)
    with open(LOG, "w") as log:
        vexa = subprocess.Popen([program, "--no-window", "--oversample", "1", "--sound", sound, "--midi", KEYS],
                                env=os.environ | {"VEXA_TRACE": "1"}, stdout=log, stderr=log)
    wait_for("it plays through ALSA", lambda: says("playing through ALSA"))
    wait_for("the keys are connected", is_connected)
    ear = Ear()
    strike(ear)

    # Silence proves nothing if a voice was dropped meanwhile, so the check is repeated then.
    def dropped():
        return LOG.read_text().count("ReduceVoxByOne")
    tells = False
    while not tells:
        before = dropped()
        plug("snd_virmidi", False)
        wait_for("without them the note ends", lambda: not ear.loud(), 5)
        tells = dropped() == before
        plug("snd_virmidi", True)
        wait_for("they are connected again", is_connected)
        strike(ear)
    # The device returns before the program has noticed that it was gone.
    plug("snd_virmidi", False)
    plug("snd_virmidi", True)
    wait_for("they are connected though they were away for a moment only", is_connected)
    strike(ear)

    ear.close()
    plug("snd_aloop", False)
    wait_for("the card is missed", lambda: says("the audio device has disappeared"))
    plug("snd_aloop", True)
    wait_for("the card is played through again", lambda: says("playing through ALSA", 2))
    ear = Ear()
    strike(ear)
    ear.close()

    vexa.terminate()
    code = vexa.wait()
    print(LOG.read_text().splitlines()[-1])
    if code != 0:
        raise SystemExit(f"Vexa ends with {code}")


main()
