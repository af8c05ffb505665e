# SPDX-License-Identifier: GPL-3.0-or-later
"""Shared by the checks of the sources: their command line, and a self-test on a tree with faults.

A check is a function that takes the source folder and returns the faults, as lines to print, and the
line to print if there are none.
"""
import argparse
import pathlib
import sys
import tempfile


def run(description, check, self_test):
    """Runs a check as a program: on this tree's src/ without arguments, on a given folder, or with
    --self-test on the check itself, whose faults `self_test()` returns. Exits with 1 if there are any."""
    parser = argparse.ArgumentParser(description=description,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--self-test", action="store_true", help="try the check on faults instead")
    parser.add_argument("source", nargs="?", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parent.parent / "src",
                        help="this tree's src/ if not given")
    arguments = parser.parse_args()
    if arguments.self_test:
        faults, done = self_test(), "the check finds every planted fault"
    else:
        faults, done = check(arguments.source)
    for fault in faults:
        print(fault)
    sys.exit(print(done) if not faults else 1)


def tried(check, files, more=()):
    """Runs the check on a tree of these files (text by name, relative to the source folder) and returns
    its mistakes, as lines. A line of a file that ends in "//! TEXT" must have a fault with that text, and
    other lines must have none. `more` has further expected faults as pairs (beginning, text in it)."""
    with tempfile.TemporaryDirectory() as folder:
        source = pathlib.Path(folder).resolve() / "src"
        expected = list(more)
        for name, text in files.items():
            (source / name).parent.mkdir(parents=True, exist_ok=True)
            (source / name).write_text(text)
            expected += [(f"{name}:{number}:", line.split("//! ")[1])
                         for number, line in enumerate(text.splitlines(), 1) if "//! " in line]
        faults = [fault.removeprefix(f"{source}/") for fault in check(source)[0]]

    def fits(fault, begin, text):
        return fault.startswith(begin) and text in fault
    return ([f"not found: {begin} {text}" for begin, text in expected
             if not any(fits(fault, begin, text) for fault in faults)]
            + [f"found without reason: {fault}" for fault in faults
               if not any(fits(fault, *one) for one in expected)])
