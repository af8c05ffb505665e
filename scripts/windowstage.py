# SPDX-License-Identifier: GPL-3.0-or-later
"""The window on a display, a session bus and a JACK server of a script's own, for the scripts that
drive it.

Controls are found by the names that screen readers are told, and that tells also where they are and
what they say, so that no place in the window is written down here.
"""
import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree

RATE = 48000
UNSAVED = "Unsaved changes"
UNDO, REDO = "undo (Ctrl Z)", "redo (Ctrl Shift Z)"


def wait_for(what, condition, seconds=30):
    """The first true value of `condition`."""
    end = time.monotonic() + seconds
    while True:
        found = condition()
        if found:
            return found
        if time.monotonic() > end:
            raise SystemExit(f"waited in vain for {what}")
        time.sleep(0.02)


def run(*command):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, timeout=60).stdout


def xdo(*command):
    return run("xdotool", *command)


@contextlib.contextmanager
def running(*command, **options):
    process = subprocess.Popen([str(word) for word in command], **options)
    try:
        yield process
    finally:
        end(process)


def end(process):
    """An X server loses the signal that comes just as it goes to sleep: it is sent more than once."""
    for _ in range(10):
        process.terminate()
        with contextlib.suppress(subprocess.TimeoutExpired):
            process.wait(2)
            return
    process.kill()
    process.wait(20)


def on_a_stage(main, scale="1", period=1024):
    """Ends with what `main(folder)` returns, run on a display with a session bus and a JACK server.
    The folder is an empty one for what programs keep."""
    if "VEXA_STAGE" not in os.environ:
        environment = dict(os.environ, VEXA_STAGE="1", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                           QT_SCALE_FACTOR=scale)
        for name in ("WAYLAND_DISPLAY", "QT_QPA_PLATFORM"):
            environment.pop(name, None)
        sys.exit(subprocess.run(["dbus-run-session", "--", sys.executable, *sys.argv], env=environment).returncode)
    # What was started is ended also where this is told to end.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    # Where the window has room for all of its parts.
    side = [int(pixels * float(scale)) for pixels in (1920, 1200)]
    with contextlib.ExitStack() as stack:
        folder = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory()))
        name = f"vexa-stage-{os.getpid()}"
        for variable, place in (("XDG_RUNTIME_DIR", "run"), ("XDG_DATA_HOME", "data"), ("XDG_CONFIG_HOME", "config")):
            (folder / place).mkdir(mode=0o700)
            os.environ[variable] = str(folder / place)
        os.environ.update(JACK_DEFAULT_SERVER=name, JACK_NO_START_SERVER="1")
        read, write = os.pipe()
        stack.enter_context(running("Xvfb", "-displayfd", write, "-screen", "0", f"{side[0]}x{side[1]}x24", "-nolisten",
                                    "tcp", pass_fds=(write,), **quiet))
        os.close(write)
        with os.fdopen(read) as number:
            os.environ["DISPLAY"] = ":" + number.readline().strip()
        stack.enter_context(running("/usr/libexec/at-spi-bus-launcher", "--launch-immediately", **quiet))
        stack.enter_context(running("openbox", **quiet))
        jackd = "jackd", "-r", "-n", name, "-d", "dummy", "-r", RATE, "-p", period
        for _ in range(30):
            # One gives up where the list of servers is full.
            server = stack.enter_context(running(*jackd, **quiet))
            if wait_for("the JACK server", lambda: server.poll() is not None or "system:playback_1" in run("jack_lsp")) \
                    and server.poll() is None:
                break
            run(pathlib.Path(__file__).with_name("forget-jack-servers"))
            time.sleep(1)
        else:
            raise SystemExit("no JACK server starts")
        return main(folder)


def program_folder(build, folder):
    """A copy of the built program and its content, so that what is made there goes with it."""
    shutil.copytree(pathlib.Path(build) / "bin", folder)
    return folder


def ring(template, formula, radius=1, name="ring"):
    """The document of a ring that stays where it is, with nothing that smooths it: on the plane of x
    it is a pure sine."""
    root = xml.etree.ElementTree.parse(template).getroot()
    root.find("info/name").text = name
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


def children(node):
    for index in range(node.childCount):
        child = node.getChildAtIndex(index)
        if child is not None:
            yield child


def nodes_below(node):
    for child in children(node):
        yield child
        yield from nodes_below(child)


class Window:
    """The program's main window, and the windows that come up beside it."""

    def __init__(self, process):
        import pyatspi
        self.states = pyatspi
        self.process = process
        self.application = wait_for("the window", lambda: next(
            (a for a in children(pyatspi.Registry.getDesktop(0)) if a.get_process_id() == process.pid
             and self.frame_of(a) is not None), None))
        self.frame = self.frame_of(self.application)
        self.window = wait_for("the window", lambda: xdo("search", "--onlyvisible", "--name", "^Vexa$").split())[0]
        xdo("windowactivate", "--sync", self.window)
        self.controls = {}
        wait_for("the sounds", lambda: self["sounds"].childCount > 0)

    @staticmethod
    def frame_of(application):
        return next((c for c in children(application) if c.name == "Vexa"), None)

    def __getitem__(self, name):
        """The control of that name."""
        if name not in self.controls:
            # What a control says may be a part of its name.
            self.controls |= {node.name: node for node in nodes_below(self.frame) if node.name}
        if name not in self.controls:
            raise SystemExit(f"the window has nothing called \"{name}\"")
        return self.controls[name]

    def named(self, ending):
        """The names of the controls that end so."""
        self["sounds"]
        return [name for name in self.controls if name.endswith(ending)]

    def has(self, node, state):
        return node.getState().contains(getattr(self.states, "STATE_" + state))

    def box(self, node):
        """Left, top, width and height on the screen."""
        node = self[node] if isinstance(node, str) else node
        extents = node.queryComponent().getExtents(self.states.DESKTOP_COORDS)
        # Qt tells pixels of the window.
        scale = float(os.environ["QT_SCALE_FACTOR"])
        return tuple(int(scale * pixels) for pixels in (extents.x, extents.y, extents.width, extents.height))

    def middle(self, node):
        left, top, width, height = self.box(node)
        return left + width // 2, top + height // 2

    def value(self, name):
        return self[name].queryValue().currentValue

    def text(self, name):
        text = self[name].queryText()
        return text.getText(0, -1)

    def settle(self):
        """Until the window has taken up what mouse and keyboard did: it answers in turn."""
        for _ in range(2):
            time.sleep(0.03)
            self.frame.getState()

    def move(self, x, y):
        xdo("mousemove", x, y)

    def click(self, node, button=1, *more):
        x, y = node if isinstance(node, tuple) else self.middle(node)
        xdo("mousemove", x, y, *more, "click", button)

    def key(self, *keys):
        xdo("key", "--delay", 15, *keys)

    def drag(self, start, to, steps=4):
        words = ["mousemove", *start, "mousedown", 1]
        for step in range(1, steps + 1):
            words += ["mousemove", *(a + (b - a) * step // steps for a, b in zip(start, to)), "sleep", "0.02"]
        xdo(*words, "mouseup", 1)

    def type(self, name, text):
        """Replaces the text of a field and confirms it."""
        def is_typed():
            self.click(name)
            self.key("ctrl+a")
            xdo("type", "--delay", 3, "--", text)
            self.settle()
            return self.text(name) == text
        def is_taken():
            self.key("Return")
            self.settle()
            return not self.has(self[name], "FOCUSED")
        # A busy machine may lose a key.
        wait_for(f"\"{text}\" in \"{name}\"", is_typed)
        wait_for(f"the end of typing in \"{name}\"", is_taken)

    def shown(self, title):
        """Another window of the program, of that title."""
        return next((c for c in children(self.application) if c.name == title), None)

    def answer(self, title, button):
        """Presses a button of an alert that may be there."""
        self.settle()
        alert = self.shown(title)
        if not alert:
            return
        self.click(next(node for node in nodes_below(alert) if node.name == button))
        wait_for("the alert's end", lambda: not self.shown(title))
        self.settle()

    def choose(self, label):
        """An item of the main menu, by the keyboard: that of a menu is told as it moves, but a menu
        is in no tree."""
        from gi.repository import GLib
        told = []
        listener = lambda event: told.append(event.source.name)
        self.states.Registry.registerEventListener(listener, "object:state-changed:focused")
        try:
            self.click("main menu")
            for _ in range(40):
                self.key("Down")
                self.settle()
                while GLib.MainContext.default().iteration(False):
                    pass
                if told and told[-1] == label:
                    break
            else:
                raise SystemExit(f"the main menu has no \"{label}\"")
        finally:
            self.states.Registry.deregisterEventListener(listener, "object:state-changed:focused")
        self.key("Return")
        self.settle()

    def rows(self):
        """The rows of the drawer that are in sight."""
        _, top, _, height = self.box("sounds")
        rows = []
        for row in children(self["sounds"]):
            _, y, _, h = self.box(row)
            if top <= y and y + h <= top + height:
                rows.append(row)
            elif rows:
                break
        return rows

    def save(self, path):
        """Saves the sound as a file of that name in its folder, and returns the document."""
        path.unlink(missing_ok=True)
        self.click("Save Sound")
        panel = wait_for("the panel", lambda: xdo("search", "--onlyvisible", "--name", "^Save Sound$").split())[0]
        xdo("windowactivate", "--sync", panel)
        xdo("type", "--delay", 3, path.name)
        self.key("Return")
        wait_for(path.name, path.exists)
        wait_for("the panel's end", lambda: not xdo("search", "--onlyvisible", "--name", "^Save Sound$").split())
        xdo("windowactivate", "--sync", self.window)
        return path.read_bytes()

    def becomes(self, button, state, on=True):
        """Whether the button gets the state, or loses it, while the window answers ten times: those
        of the bar follow ten times a second what there is."""
        for _ in range(10):
            self.settle()
            if self.has(self[button], state) == on:
                return True
        return False

    def is_on(self, button):
        return self.becomes(button, "SENSITIVE")

    def step_all(self, key, button):
        """Undoes or redoes until there is nothing left; says how often the key was pressed."""
        steps = 0
        xdo("mousemove", *self.middle("level, decibels of full scale"))
        while self.is_on(button):
            self.key(key)
            steps += 1
            if steps > 10000:
                raise SystemExit(f"\"{button}\" never ends")
        return steps

    def undo_all(self):
        return self.step_all("ctrl+z", UNDO)

    def redo_all(self):
        return self.step_all("ctrl+shift+z", REDO)
