#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks that Ardour saves, opens and exports a session with the LV2 plug-in.

check-ardour.py [BUILD], build/release by default. Ardour runs without a window or a device; the Debian
package ardour must be installed. A Lua script makes a session with the instrument on a track, loads a
preset and sets two of its knobs. A MIDI region with note 69 is written into the session's file. A
second Lua script opens the session, checks that the knobs have kept their values, and saves it.
ardour7-export exports it. The exit code is 1 if a step fails, the export has another length than the
region, its pitch is not 440 Hz, or it differs by more than 1e-6 from the output of vexa-render, which
also tests that the host compensates the plug-in's latency.
"""
import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import numpy

from midifile import midi_file

ROOT = pathlib.Path(__file__).resolve().parent.parent
RATE = 48000
# The length of the region. Ardour counts 1920 ticks in a beat, and a new session has 120 beats a minute.
SECONDS = 4
TICKS = SECONDS * 2 * 1920
# Start and end of the note, in milliseconds.
BEGIN, END = 500, 2500

# This sound is oversampled, so the plug-in has a latency for which the host must compensate.
SOUND, LABEL = "bell", "Bell"


START = 'AudioEngine:set_backend("None (Dummy)", "", "")\n'
CREATE = START + f"""
local session = create_session("FOLDER", "vexa", {RATE})
local instrument = ARDOUR.LuaAPI.new_plugin_info("urn:vexa:instrument", ARDOUR.PluginType.LV2)
assert(not instrument:isnil(), "there is no such plug-in")
local none = ARDOUR.PresentationInfo.max_order
local tracks = session:new_midi_track(
  ARDOUR.ChanCount(ARDOUR.DataType("midi"), 1), ARDOUR.ChanCount(ARDOUR.DataType("audio"), 2), true,
  instrument, nil, nil, 1, "vexa", none, ARDOUR.TrackMode.Normal, true)
for track in tracks:iter() do
  local plugin = track:nth_plugin(0)
  local loaded = false
  for preset in instrument:get_presets():iter() do
    if preset.label == "PRESET" then
      loaded = plugin:to_insert():plugin(0):load_preset(preset)
    end
  end
  assert(loaded, "there is no such preset")
  assert(ARDOUR.LuaAPI.set_processor_param(plugin, 2, -6.0))
  assert(ARDOUR.LuaAPI.set_processor_param(plugin, 7, 30.0))
end
session:save_state("")
close_session()
quit()
"""
REOPEN = START + """
local session = load_session("FOLDER", "vexa")
local plugin = session:route_by_name("vexa"):nth_plugin(0)
assert(ARDOUR.LuaAPI.get_processor_param(plugin, 2) == -6.0)
assert(ARDOUR.LuaAPI.get_processor_param(plugin, 7) == 30.0)
session:save_state("")
close_session()
print("REOPENED")
quit()
"""


def note(beats_in_a_second):
    """Returns a MIDI file of the note whose times in beats suit the given tempo: Ardour reads the beats of
    a MIDI file and ignores its tempo."""
    return midi_file([(beats_in_a_second * BEGIN, (0x90, 69, 100)),
                      (beats_in_a_second * END, (0x80, 69, 0))])


def run(command, environment):
    done = subprocess.run(command, env=environment, capture_output=True, text=True, timeout=120)
    return done.stdout + done.stderr


def lua(text, folder, environment):
    script = folder / "script.lua"
    script.write_text(text.replace("FOLDER", str(folder / "session")).replace("PRESET", LABEL))
    return run(["ardour7-lua", script], environment)


def write_region(folder):
    """Inserts a region with the note into the session file that Ardour has saved."""
    session = folder / "session"
    midi = session / "interchange/session/midifiles"
    midi.mkdir(parents=True, exist_ok=True)
    (midi / "note.mid").write_bytes(note(2))
    file = session / "vexa.ardour"
    text = file.read_text()
    region = (f'<Region name="note" start="b0" length="b{TICKS}@b0" opaque="1" type="midi" id="%d" '
              'source-0="9001" master-source-0="9001" whole-file="%d" first-edit="nothing"/>')
    for pattern, put in (
            (r"<Sources/>", '<Sources><Source name="note.mid" type="midi" flags="" id="9001"/></Sources>'),
            (r"<Regions/>", f"<Regions>{region % (9002, 1)}</Regions>"),
            (r'(<Playlist [^>]*type="midi"[^>]*)/>', rf"\1>{region % (9003, 0)}</Playlist>"),
            (r"<Locations/>", f'<Locations><Location id="9004" name="session" start="b0" '
                              f'end="b{TICKS}" flags="IsSessionRange"/></Locations>')):
        text, count = re.subn(pattern, put, text, count=1)
        if count != 1:
            sys.exit(f"{file}: there is no {pattern}")
    file.write_text(text)


def samples(data):
    """Returns the channels of a WAV file of 32-bit floats, a row each."""
    channels = int.from_bytes(data[22:24], "little")
    size = int.from_bytes(data[data.index(b"data") + 4:][:4], "little")
    return numpy.frombuffer(data[data.index(b"data") + 8:][:size], "<f4").reshape(-1, channels).T


def pitch(samples):
    """Returns the frequency of the strongest partial in Hz; zero padding makes the spectrum eight times
    finer."""
    power = numpy.abs(numpy.fft.rfft(samples * numpy.hanning(len(samples)), 8 * len(samples)))
    return numpy.argmax(power) * RATE / (8 * len(samples))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", nargs="?", type=pathlib.Path, default=ROOT / "build/release")
    build = parser.parse_args().build.resolve()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        environment = dict(os.environ, HOME=name, XDG_CONFIG_HOME=name, XDG_DATA_HOME=name,
                           LV2_PATH=str(build / "lv2"))
        said = lua(CREATE, folder, environment)
        if not (folder / "session/vexa.ardour").is_file():
            sys.exit(said)
        write_region(folder)
        said = lua(REOPEN, folder, environment)
        if "REOPENED" not in said:
            sys.exit(said)
        out = folder / "out.wav"
        said = run(["ardour7-export", "-b", "float", "-o", out, folder / "session", "vexa"], environment)
        if not out.is_file():
            sys.exit(said)
        data = out.read_bytes()
        (folder / "note.mid").write_bytes(note(1))
        expected = folder / "expected.wav"
        subprocess.run([build / "bin/vexa-render", folder / "note.mid", expected, "--sound",
                        ROOT / f"data/sounds/{SOUND}.xml", "--rate", str(RATE), "--volume", "-6",
                        "--spread", "30", "--quiet"], check=True)
        expected = samples(expected.read_bytes())
        sound = samples(data)
        if sound.size == 0:
            sys.exit(f"{said}\nThe export has no frames.")
    seconds = sound.shape[1] / RATE
    expected = expected[:, :sound.shape[1]]
    worst = numpy.abs(sound - expected).max() if sound.shape == expected.shape else numpy.inf
    hertz = pitch(sound[0, RATE * BEGIN // 1000 + RATE // 2:RATE * END // 1000])
    print(f"{seconds:.3f} s, {hertz:.2f} Hz, difference from vexa-render {worst:.1e}, peak "
          f"{numpy.abs(sound).max():.3f}")
    right = seconds == SECONDS and abs(hertz - 440) < 0.5 and worst <= 1e-6
    sys.exit(0 if right and numpy.abs(sound).max() > 1e-3 else 1)


if __name__ == "__main__":
    main()
