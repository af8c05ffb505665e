# SPDX-License-Identifier: GPL-3.0-or-later
"""What the checks of the sources share: their command line, and trying them on a tree with faults.

A check is a function of the source folder; it returns the faults, as lines to print, and the line
to print where there are none.
"""
import argparse
import pathlib
import sys
import tempfile


def run(description, check, self_test):
    """The program of a check: without arguments for this tree's src/, with a folder for that one,
    with --self-test for what self_test() says is wrong with the check itself."""
    parser = argparse.ArgumentParser(description=description,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--self-test", action="store_true", help="try the check on faults instead")
    parser.add_argument("source", nargs="?", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parent.parent / "src",
                        help="this tree's src/ if not given")
    arguments = parser.parse_args()
    if arguments.self_test:
        faults, done = self_test(), "the check finds what it has to find"
    else:
        faults, done = check(arguments.source)
    for fault in faults:
        print(fault)
    sys.exit(print(done) if not faults else 1)


def tried(check, files, more=()):
    """What the check gets wrong about a tree of these files (text by name). A line of theirs that
    ends in "//! TEXT" has a fault with that text, and no other line has any; `more` are further
    faults, each by its begin and a text in it. Names of files count from the source folder."""
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
