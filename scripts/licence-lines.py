#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks that every source file states its licence in its first two lines.

Prints each file without the line; the exit code is 1 if there is any. Source files are C++, scripts,
CMake files and templates of pages. Content, seeds and pictures are not checked; README.md puts
them under the same licence.
"""

import argparse
import os
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LINE = "SPDX-License-Identifier: GPL-3.0-or-later"
# The beginning of a comment, by the end of the file's name. Scripts without a suffix are recognized by
# their first line.
COMMENTS = {".cpp": "//", ".h": "//", ".py": "#", ".sh": "#", ".cmake": "#", "CMakeLists.txt": "#", ".bash.in": "#", ".zsh.in": "#",
            ".1.in": '.\\"', "debian/rules": "#"}
SKIPPED = {"build", "__pycache__", "seeds"}
# Beginnings of lines that must stay the first of their file.
FIRST = ("#!", "#compdef")


def sources():
    """Yields pairs (path, beginning of a comment) for all source files."""
    for folder, folders, names in os.walk(ROOT):
        folders[:] = sorted(name for name in folders if name not in SKIPPED and name != ".git")
        for name in sorted(names):
            path = pathlib.Path(folder, name)
            comment = next((begin for end, begin in COMMENTS.items() if str(path).endswith(end)), None)
            if comment is None and "." not in name and path.is_file():
                with open(path, "rb") as file:
                    comment = "#" if file.read(2) == b"#!" else None
            if comment:
                yield path, comment


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--fix", action="store_true", help="put the line into them instead")
    fix = parser.parse_args().fix
    missing = False
    for path, comment in sources():
        lines = path.read_text("utf-8").splitlines(keepends=True)
        line = f"{comment} {LINE}\n"
        if line in lines[:2]:
            continue
        if fix:
            lines.insert(1 if lines and lines[0].startswith(FIRST) else 0, line)
            path.write_text("".join(lines), "utf-8")
        else:
            missing = True
            print(f"{path.relative_to(ROOT)} does not say its licence; scripts/licence-lines.py --fix adds it", file=sys.stderr)
    sys.exit(missing)


if __name__ == "__main__":
    main()
