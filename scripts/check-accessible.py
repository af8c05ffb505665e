#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks that the window can be used with a screen reader and with the Tab key.

Starts an X server, a session bus, a JACK server without a device and vexa with all its parts shown,
and reads the window's tree of accessible objects over AT-SPI. The exit code is 1 if a control or a
part of one has no name, if two controls that are shown in one view have the same name, if Tab does
not reach every control that takes the keyboard and then return to the first, if a view that draws
itself does not tell what its keys choose and change, or if the window does not survive a question about
the text at the end of a field or about a child that is no longer there.
"""
import argparse
import pathlib
import subprocess
import sys
import time

from windowstage import children, on_a_stage, running, wait_for

ROOT = pathlib.Path(__file__).resolve().parent.parent
# The longest wait for the window, in seconds.
START = 60
# An upper bound of the number of controls.
MOST_TABS = 400
WINDOW_ROLES = ("window", "frame")
# Roles of views that draw their parts themselves and have keys to move among them.
PARTED_ROLES = ("chart", "list", "image", "grouping", "panel")
FOCUS, VALUE, DESCRIPTION = ("object:state-changed:focused", "object:property-change:accessible-value",
                             "object:property-change:accessible-description")
# Views that draw themselves, a key for each, and the event and the role of what that key chooses or changes.
KEYS = (("list", "sounds", "Down", FOCUS, "list item"),
        ("list", "kinds of sounds", "Right", FOCUS, "list item"),
        ("panel", "piano", "Right", FOCUS, "push button"),
        ("panel", "piano", "space", DESCRIPTION, "push button"),
        ("chart", "envelope of radius x", "alt+Right", FOCUS, "slider"),
        ("chart", "envelope of radius x", "Down", VALUE, "slider"),
        ("panel", "radius x", "Right", DESCRIPTION, "panel"),
        ("slider", "knob a", "Up", VALUE, "slider"),
        ("slider", "modulation", "Up", VALUE, "slider"),
        ("check box", "hold", "space", "object:state-changed:checked", "check box"))
SILENT_ROLES = {"filler", "frame", "application", "panel", "scroll pane", "layered pane", "viewport",
                "separator", "scroll bar", "unknown", "window", "internal frame", "root pane"}


def tree(node, path=()):
    yield node, path
    for child in children(node):
        yield from tree(child, path + (node,))


def shown(node):
    import pyatspi
    states = node.getState()
    return states.contains(pyatspi.STATE_SHOWING) and states.contains(pyatspi.STATE_VISIBLE)


def state(node, which):
    import pyatspi
    return node.getState().contains(getattr(pyatspi, "STATE_" + which))


def describe(node):
    """Returns a line about a control: role, name, value with its range, and actions."""
    text = f"{node.getRoleName()} \"{node.name}\""
    try:
        value = node.queryValue()
        text += f" = {value.currentValue:.4g} ({value.minimumValue:.4g} to {value.maximumValue:.4g})"
    except NotImplementedError:
        pass
    try:
        action = node.queryAction()
        text += " [" + ", ".join(action.getName(i) for i in range(action.nActions)) + "]"
    except NotImplementedError:
        pass
    return text


def faults_of_names(nodes):
    seen = {}
    for node, path in nodes:
        role = node.getRoleName()
        if role in SILENT_ROLES or not shown(node):
            continue
        if not node.name.strip():
            yield f"a {role} has no name, in " + " / ".join(p.name or p.getRoleName() for p in path)
        key = (role, node.name, path[-1].path if path else None)
        if node.name and state(node, "FOCUSABLE") and key in seen:
            yield f"two of the role {role} are called \"{node.name}\""
        seen[key] = node


def focused(window):
    """Returns the innermost focused object, or None; the objects that contain it also count as focused."""
    found = None
    for node, path in tree(window):
        part = path and path[-1].getRoleName() in PARTED_ROLES
        if state(node, "FOCUSED") and not part:
            found = node
    return found


def identity(node):
    """Returns the roles, names and indices from the object up to the window. Unlike object paths they stay
    the same from one query to the next."""
    parts = []
    while node is not None and node.getRoleName() not in WINDOW_ROLES:
        parts.append((node.getRoleName(), node.name, node.getIndexInParent()))
        node = node.parent
    return tuple(parts)


def focused_after(window, last):
    """Returns the object that has the keyboard once it differs from `last`, or after 2 s whatever has it then: a busy
    machine reports the change late."""
    end = time.monotonic() + 2
    nowhere = 0
    while True:
        # The query itself takes longer than this pause.
        time.sleep(0.05)
        node = focused(window)
        # Inside a view with parts there is lastingly no focused object; while the focus moves, only for one query.
        nowhere += node is None
        if nowhere == 2 or (node is not None and identity(node) != last) or time.monotonic() > end:
            return node


def faults_of_tabs(window, nodes):
    """Presses Tab until the first place comes again, and yields the faults."""
    wanted = {}
    for node, path in nodes:
        # Parts of a view are reached by the view's own keys.
        part = path and path[-1].getRoleName() in PARTED_ROLES
        usable = state(node, "FOCUSABLE") and state(node, "ENABLED") and shown(node)
        if usable and not part and node.getRoleName() not in WINDOW_ROLES:
            wanted[identity(node)] = describe(node)
    first = None
    reached = set()
    last = None
    for count in range(MOST_TABS):
        subprocess.run(["xdotool", "key", "Tab"], check=True)
        node = focused_after(window, last)
        here = identity(node) if node is not None else None
        if here is not None and here == last:
            yield f"Tab does not leave {describe(node)}"
            return
        last = here
        if here is None:
            continue
        if first is None:
            first = here
        elif here == first:
            break
        reached.add(here)
    else:
        yield "Tab does not come round again"
    for key, text in wanted.items():
        if key not in reached:
            yield f"Tab does not reach {text}"
    print(f"Tab: {len(reached)} places, {len(wanted)} that take the keyboard")


def faults_of_keys(window):
    """Presses the keys of KEYS, and yields those after which nothing is told."""
    import pyatspi
    from gi.repository import GLib
    told = []
    def listen(event):
        told.append((event.type, event.source.getRoleName(), event.source.name))
    def heard(found, seconds):
        """Takes the events of so many seconds, or until `found` is true of one; returns the first such."""
        end = time.monotonic() + seconds
        while time.monotonic() < end and not any(map(found, told)):
            GLib.MainContext.default().iteration(False)
            time.sleep(0.01)
        return next(filter(found, told), None)
    for kind in (FOCUS, VALUE, DESCRIPTION, "object:state-changed:checked"):
        pyatspi.Registry.registerEventListener(listen, kind)
    views = {(node.getRoleName(), node.name): node for node, _ in tree(window)}
    for role, name, key, kind, of in KEYS:
        view = views.get((role, name))
        if view is None:
            yield f"there is no {role} \"{name}\""
            continue
        view.queryComponent().grabFocus()
        # Getting the focus is told too, and lasts.
        heard(lambda _: False, 0.5)
        told.clear()
        subprocess.run(["xdotool", "key", key], check=True)
        event = heard(lambda event: event[:2] == (kind, of), 3)
        if not event or not event[2]:
            yield f"{key} in the {role} \"{name}\" tells no {kind} of a {of}, only {told}"


def faults_of_questions(nodes):
    """Asks what a screen reader asks when the cursor reaches the end of a text, and when a child vanishes
    between two questions, and yields those that are not answered."""
    import pyatspi
    from gi.repository import GLib
    for node, _ in nodes:
        # A node that is gone by now, such as one of a list, has no answers, and no faults.
        try:
            text = node.queryText()
        except (NotImplementedError, GLib.Error):
            text = None
        try:
            node.getChildAtIndex(node.childCount)
            for kind in (pyatspi.TEXT_BOUNDARY_WORD_START, pyatspi.TEXT_BOUNDARY_SENTENCE_START):
                text and text.getTextAtOffset(text.characterCount, kind)
        except GLib.Error as fault:
            yield f"no answer from {node.path}: {fault}"
            return


def walk(verbose):
    import pyatspi
    window = wait_for("the window", lambda: next(
        (child for application in children(pyatspi.Registry.getDesktop(0))
         if application.name.lower() == "vexa" for child in children(application)
         if child.getRoleName() in WINDOW_ROLES), None), START)
    time.sleep(2)
    nodes = list(tree(window))
    if verbose:
        for node, path in nodes:
            if shown(node):
                print("  " * len(path) + describe(node))
    faults = [*faults_of_names(nodes), *faults_of_tabs(window, nodes), *faults_of_keys(window),
              *faults_of_questions(nodes)]
    print(f"{len(nodes)} things in the window, {len(faults)} faults")
    for fault in faults:
        print("check-accessible: " + fault)
    return 1 if faults else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("-v", "--verbose", action="store_true", help="print the tree")
    parser.add_argument("build", nargs="?", type=pathlib.Path, default=ROOT / "build/release")
    parser.add_argument("options", nargs=argparse.REMAINDER, help="options for vexa, after the build")
    arguments = parser.parse_args()

    def check(_):
        with running(arguments.build / "bin/vexa", "--user-folder", *arguments.options):
            return walk(arguments.verbose)
    return on_a_stage(check)


if __name__ == "__main__":
    sys.exit(main())
