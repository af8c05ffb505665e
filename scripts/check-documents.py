#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks what documents point to: check-documents.py [FOLDER], this tree by default.

Each relative link of a page (*.md) must lead to an existing file and, with #, to a heading of it. In a
folder with tests/, each test that a page names in backquotes, such as `Suite.Name`, `Suite.*` or
`Suite.Name*`, must exist. Each fault is printed with its place; the exit code is 1 if there is any.
"""
import argparse
import fnmatch
import pathlib
import re
import sys

# GoogleTest's tests, and those that CMake adds under names of the same form.
TEST = re.compile(r"\bTEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)|\bNAME (\w+)\.(\w+)")
# The second word of a test's name begins with a capital, that of a file's does not.
NAMED_TEST = re.compile(r"`([A-Z]\w*\.(?:[A-Z]\w*\*?|\*))`")
LINK = re.compile(r"\]\(([^)\s]+)\)")


def without_code(text):
    """Returns a page without what stands in its blocks of code, with all of its lines."""
    return re.sub(r"^ *```.*?^ *```", lambda code: "\n" * code[0].count("\n"), text, flags=re.DOTALL | re.MULTILINE)


def headings(page):
    titles = re.findall(r"^#+ (.*)$", without_code(page.read_text("utf-8")), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def broken(page, link):
    """Says what is wrong with a link, or None."""
    name, _, heading = link.partition("#")
    target = page.parent / name if name else page
    if not target.exists():
        return f"{link} leads nowhere"
    if heading and heading not in headings(target):
        return f"{link}: there is no such heading"
    return None


def pages(folder):
    """Returns the pages of a folder, without what is built or hidden."""
    return sorted(page for page in folder.rglob("*.md")
                  if not any(part == "build" or part.startswith(".") for part in page.relative_to(folder).parts))


def faults(folder):
    sources = [*folder.glob("tests/**/*.cpp"), *folder.glob("tests/**/CMakeLists.txt")]
    tests = {".".join(word for word in found if word)
             for source in sources for found in TEST.findall(source.read_text("utf-8"))}
    for page in pages(folder):
        for number, line in enumerate(without_code(page.read_text("utf-8")).splitlines(), 1):
            said = [broken(page, link) for link in LINK.findall(line) if "://" not in link]
            if sources:
                said += [f"there is no test {name}" for name in NAMED_TEST.findall(line) if not fnmatch.filter(tests, name)]
            yield from (f"{page}:{number}: {fault}" for fault in said if fault)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", nargs="?", type=pathlib.Path, default=pathlib.Path(__file__).resolve().parent.parent)
    folder = parser.parse_args().folder
    found = list(faults(folder))
    for fault in found:
        print(fault, file=sys.stderr)
    if not pages(folder):
        sys.exit(f"{folder} has no pages")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
