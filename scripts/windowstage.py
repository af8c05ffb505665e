# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the window on a display, a session bus and a JACK server of a script's own, and drives it.

Controls are found by their names in the tree for screen readers (AT-SPI). The tree also has their
positions and values, so that no coordinate of the window is written down here.
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
# The plane f = x with a circle: each note is a pure sine, at its full size until 20 ms after its end.
SINE = """<vexasound><vexafunction><expression>x</expression></vexafunction>
<dcxdt><env>0</env></dcxdt><dcydt><env>0</env></dcydt>
<ax><env>1</env><envdata><envpoint t="0" val="1" fku="false"/><envpoint t="0.02" val="0" fku="true"/></envdata></ax>
<ay><env>0</env></ay></vexasound>"""
UNSAVED = "Unsaved changes"
UNDO, REDO = "undo (Ctrl Z)", "redo (Ctrl Shift Z)"


def wait_for(what, condition, seconds=30):
    """Calls `condition` until it returns a true value, and returns that; ends the script after `seconds`."""
    end = time.monotonic() + seconds
    while True:
        found = condition()
        if found:
            return found
        if time.monotonic() > end:
            raise SystemExit(f"timed out waiting for {what}")
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
    """Ends a process by SIGTERM, sent up to ten times, because an X server loses a signal that arrives just
    as it goes to sleep; then by SIGKILL."""
    for _ in range(10):
        process.terminate()
        with contextlib.suppress(subprocess.TimeoutExpired):
            process.wait(2)
            return
    process.kill()
    process.wait(20)


@contextlib.contextmanager
def display(width, height):
    """Runs an X server with one screen, on which programs that are started later have their windows. It must
    not reset itself when its only client goes, as it refuses the next one meanwhile."""
    read, write = os.pipe()
    with running("Xvfb", "-displayfd", write, "-screen", "0", f"{width}x{height}x24", "-nolisten", "tcp",
                 "-noreset", pass_fds=(write,), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL):
        os.close(write)
        with os.fdopen(read) as number:
            os.environ["DISPLAY"] = ":" + number.readline().strip()
        yield


@contextlib.contextmanager
def jack_server(period):
    """Runs a JACK server without a device, which meanwhile is the default of this process and its children."""
    name = f"vexa-stage-{os.getpid()}"
    os.environ.update(JACK_DEFAULT_SERVER=name, JACK_NO_START_SERVER="1")
    for _ in range(30):
        # A server gives up if JACK's list of servers is full.
        with running("jackd", "-r", "-n", name, "-d", "dummy", "-r", RATE, "-p", period,
                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as server:
            if wait_for("the JACK server", lambda: server.poll() is not None or "system:playback_1" in run("jack_lsp")) \
                    and server.poll() is None:
                yield
                return
        run(pathlib.Path(__file__).with_name("forget-jack-servers"))
        time.sleep(1)
    raise SystemExit("no JACK server starts")


def on_a_stage(main, scale="1", period=1024):
    """Runs `main(folder)` on a display with a session bus and a JACK server, and returns its result or
    exits with it. `folder` is a new one for the files of programs. `scale` is the number of screen pixels
    per window pixel, `period` that of frames in a period of JACK."""
    # On SIGTERM the script exits as usual, so that all started processes are ended.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    if "VEXA_STAGE" not in os.environ:
        environment = dict(os.environ, VEXA_STAGE="1", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                           QT_SCALE_FACTOR=scale)
        for name in ("WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "NSM_URL"):
            environment.pop(name, None)
        # The bus's program passes no signal on; it has a process group of its own for that.
        with subprocess.Popen(["dbus-run-session", "--", sys.executable, *sys.argv], env=environment,
                              start_new_session=True) as session:
            try:
                sys.exit(session.wait())
            finally:
                with contextlib.suppress(ProcessLookupError):
                    os.killpg(session.pid, signal.SIGTERM)
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    # A screen on which the window has room for all its parts.
    side = [int(pixels * float(scale)) for pixels in (1920, 1200)]
    with contextlib.ExitStack() as stack:
        folder = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory()))
        for variable, place in (("XDG_RUNTIME_DIR", "run"), ("XDG_DATA_HOME", "data"), ("XDG_CONFIG_HOME", "config")):
            (folder / place).mkdir(mode=0o700)
            os.environ[variable] = str(folder / place)
        stack.enter_context(display(*side))
        stack.enter_context(running("/usr/libexec/at-spi-bus-launcher", "--launch-immediately", **quiet))
        stack.enter_context(running("openbox", **quiet))
        stack.enter_context(jack_server(period))
        return main(folder)


def program_folder(build, folder):
    """Copies the built programs and their content, so that files made beside them disappear with the copy."""
    shutil.copytree(pathlib.Path(build) / "bin", folder)
    return folder


def ring(template, formula, radius=1, name="ring"):
    """Returns a sound document whose orbit is a fixed circle (an ellipse if `radius` is not 1), without
    playing parameters such as smoothing. With the formula x it plays a pure sine."""
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
    """Drives the program's main window and the windows that it opens."""

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
        """Returns the control of that name; ends the script if there is none."""
        if name not in self.controls:
            # Some names contain the control's value, so that the cache may be outdated.
            self.controls |= {node.name: node for node in nodes_below(self.frame) if node.name}
        if name not in self.controls:
            raise SystemExit(f"the window has no control called \"{name}\"")
        return self.controls[name]

    def named(self, ending):
        """Returns the names of controls that have this ending."""
        self["sounds"]
        return [name for name in self.controls if name.endswith(ending)]

    def has(self, node, state):
        return node.getState().contains(getattr(self.states, "STATE_" + state))

    def box(self, node):
        """Returns left, top, width and height of a control in pixels of the screen."""
        node = self[node] if isinstance(node, str) else node
        extents = node.queryComponent().getExtents(self.states.DESKTOP_COORDS)
        # Qt reports window pixels, without the scale factor.
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
        """Waits until the window has handled the mouse and keyboard events so far: it answers a query in turn
        with them."""
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
        """Returns the other window of the program with this title, or None."""
        return next((c for c in children(self.application) if c.name == title), None)

    def answer(self, title, button):
        """Presses a button of an alert if it is open."""
        self.settle()
        alert = self.shown(title)
        if not alert:
            return
        self.click(next(node for node in nodes_below(alert) if node.name == button))
        wait_for("the alert's end", lambda: not self.shown(title))
        self.settle()

    def choose(self, label):
        """Chooses an item of the main menu by the keyboard. Menus are not in the accessible tree, but each
        item is reported when it gets the focus."""
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
        """Returns the rows of the drawer's list that are wholly visible."""
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
        """Saves the sound by the file panel and returns the bytes of the document. The panel must show the
        folder of `path`."""
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
        """Returns whether a button gets the state, or loses it if not `on`, within ten queries. The buttons of
        the bar are updated ten times a second."""
        for _ in range(10):
            self.settle()
            if self.has(self[button], state) == on:
                return True
        return False

    def is_on(self, button):
        return self.becomes(button, "SENSITIVE")

    def step_all(self, key, button):
        """Undoes or redoes until nothing is left; returns how often the key was pressed."""
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
