#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Draws the folders of src/ and their dependencies into docs/ARCHITECTURE.md.

An arrow leads from a folder to each folder whose headers it includes, unless other arrows already lead
there. check-includes.py reads the includes. With --check nothing is written, and the exit code is 1 if
the picture in the page is out of date.
"""

import argparse
import importlib.util
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/ARCHITECTURE.md"
BEGIN, END = "<!-- scripts/make-house-picture.py draws this. -->\n", "<!-- Up to here. -->\n"


def load(name):
    spec = importlib.util.spec_from_file_location(name.replace("-", "_"),
                                                  ROOT / "scripts" / f"{name}.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def folders_used(includes):
    """Returns for each folder of the table the set of folders whose headers it includes."""
    used = {folder: set() for folder in includes.ALLOWED}
    for path, _, target in includes.includes_of(ROOT / "src"):
        match = includes.TARGET.match(target)
        if match and match.group(1):
            user, other = includes.folder_of(path), includes.folder_of(match.group(1))
            if user and other and user != other:
                used[user].add(other)
    return used


def reached(used, start):
    found, todo = set(), list(start)
    while todo:
        folder = todo.pop()
        if folder not in found:
            found.add(folder)
            todo += used[folder]
    return found


def picture(used):
    name = {folder: folder.replace("/", "_") for folder in used}
    lines = ["```mermaid", "flowchart TD"]
    for folder in used:
        shape = f"([{folder}])" if folder in ("app", "render", "plugin") else f"[{folder}]"
        lines.append(f"    {name[folder]}{shape}")
    for folder, others in used.items():
        for other in sorted(others):
            rest = {one for near in others - {other} for one in reached(used, used[near])}
            if other not in rest:
                lines.append(f"    {name[folder]} --> {name[other]}")
    return "\n".join(lines + ["```", ""])


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--check", action="store_true", help="only check, write nothing")
    check = parser.parse_args().check
    text = PAGE.read_text("utf-8")
    if BEGIN not in text or END not in text:
        sys.exit(f"{PAGE}: the lines that the picture stands between are not there")
    before, rest = text.split(BEGIN)
    drawn = before + BEGIN + picture(folders_used(load("check-includes"))) + END + rest.split(END)[1]
    if check:
        if drawn != text:
            sys.exit(f"{PAGE}: the picture of the folders is old: run {pathlib.Path(__file__).name}")
        print("the picture shows the folders as they are")
    else:
        PAGE.write_text(drawn, "utf-8")


if __name__ == "__main__":
    main()
