#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Copies and lists shipped content, and distinguishes it from files that a person has made or changed.

  shipped-content.py copy RECORD FOLDER SOURCE...
      Copies functions/, sounds/, samples/ and pictures/ of the SOURCE folders into the program folder
      FOLDER. A file there is replaced only if it is as it was copied or as some version of the program
      shipped it; any other file is a person's work and stays. RECORD keeps the digests of the copies.
  shipped-content.py rescue RECORD FOLDER
      Copies a person's work in FOLDER into the user's folder, $XDG_DATA_HOME/vexa, where it outlives
      the build, and prints each copy. A person's work that is already there is not replaced.
  shipped-content.py list [--check [MADE]]
      Adds to data/shipped-content the digests of all content of every commit and of the present files.
      With --check it writes nothing, prints what the list lacks, and exits with 1 if it lacks anything.
      The list also has the versions of the scripts that generate content. The content of a listed
      version is listed too, so that version need not run again. MADE is a folder with the content that
      the present versions have already generated.

RECORD and the list have the format of sha256sum.
"""

import hashlib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIST = ROOT / "data/shipped-content"
FOLDERS = ("functions", "sounds", "samples", "pictures")
# Files that the compilation of an expression leaves in the program folder.
COMPILED = ("functions/recent", "functions/recent.c")
# The scripts that generate content, and the folder of each; the tree does not contain that content.
SCRIPTS = {"scripts/make-samples.py": "samples", "scripts/make-pictures.py": "pictures"}
# The programs take any larger file for a person's work without reading it (kits/storage/ProgramFolder.cpp).
LARGEST = 1 << 20


def digest_of(data):
    return hashlib.sha256(data).hexdigest()


def digest_of_file(path):
    with open(path, "rb") as file:
        return hashlib.file_digest(file, "sha256").hexdigest()


def read_digests(path):
    """Returns the pairs (digest, name) of a record or of the list; none if the file does not exist."""
    if not path.exists():
        return set()
    return {tuple(line.split("  ", 1)) for line in path.read_text("utf-8").splitlines()}


def write_digests(path, pairs):
    lines = [f"{digest}  {name}\n" for digest, name in sorted(pairs, key=lambda pair: pair[::-1])]
    replace(path, lambda beside: beside.write_text("".join(lines), "utf-8"))


def replace(path, write):
    """Replaces a file atomically: `write` writes a new file beside it, which is then renamed."""
    path.parent.mkdir(parents=True, exist_ok=True)
    beside = path.with_name(f".{path.name}.{os.getpid()}")
    try:
        write(beside)
        os.replace(beside, path)
    finally:
        beside.unlink(missing_ok=True)


def content_of(folder):
    """Returns the files of the program folder or of a source, by name; hidden ones are left out."""
    files = {}
    for sub in FOLDERS:
        for path in sorted((folder / sub).rglob("*")):
            name = path.relative_to(folder).as_posix()
            if path.is_file() and "/." not in name and name not in COMPILED:
                files[name] = path
    return files


def copy(record, folder, *sources):
    copied = {name: digest for digest, name in read_digests(record)}
    shipped = read_digests(LIST)
    for source in sources:
        for name, path in content_of(source).items():
            new, place = digest_of_file(path), folder / name
            old = digest_of_file(place) if place.is_file() else None
            if old not in (None, new, copied.get(name)) and (old, name) not in shipped:
                print(f"{place} was changed by hand and stays as it is")
                continue
            if old != new:
                replace(place, lambda beside, path=path: shutil.copyfile(path, beside))
            copied[name] = new
    write_digests(record, {(digest, name) for name, digest in copied.items()})


def user_folder():
    data = os.environ.get("XDG_DATA_HOME", "")
    if not os.path.isabs(data):
        if not os.environ.get("HOME"):
            sys.exit("no folder for what you made: neither XDG_DATA_HOME nor HOME is set")
        data = os.path.join(os.environ["HOME"], ".local/share")
    return pathlib.Path(data) / "vexa"


def rescue(record, folder):
    known = read_digests(record) | read_digests(LIST)
    home = user_folder()
    for name, path in content_of(folder).items():
        digest, place = digest_of_file(path), home / name
        if (digest, name) in known:
            continue
        there = digest_of_file(place) if place.is_file() else None
        if there == digest:
            continue
        if there and (there, name) not in known:
            print(f"{path} differs from your {place}; both stay unchanged")
            continue
        # copy2 keeps the modification time and the extended attributes, which hold the file's type.
        replace(place, lambda beside, path=path: shutil.copy2(path, beside))
        print(f"{path} is yours: copied to {place}")


def git(*arguments):
    # The tree may belong to another user, for example if it is mounted into a container.
    command = ["git", "-c", "safe.directory=*", "-C", ROOT, *arguments]
    return subprocess.run(command, check=True, capture_output=True).stdout


def has_history():
    try:
        return bool(git("rev-parse", "--verify", "HEAD"))
    except (FileNotFoundError, subprocess.CalledProcessError):
        return False


def every_version(*paths):
    """Yields pairs (name, bytes) of the files at or below these paths, at present and in every commit."""
    for path in paths:
        for file in [ROOT / path] if (ROOT / path).is_file() else (ROOT / path).rglob("*"):
            if file.is_file():
                yield file.relative_to(ROOT).as_posix(), file.read_bytes()
    if not has_history():
        print(f"{ROOT} has no history here; only the files as they are were looked at")
        return
    changes = git("log", "--full-history", "-m", "--raw", "--relative", "--no-abbrev",
                  "--no-renames", "--format=", "HEAD", "--", *paths).decode()
    for blob, name in sorted({(line.split()[3], line.split("\t")[1])
                              for line in changes.splitlines()}):
        if blob.strip("0"):
            yield name, git("cat-file", "blob", blob)


def shipped_so_far(listed, made_already):
    """Returns pairs (digest, name) of all content so far. Samples and pictures are generated by running each
    version of their script, unless that version is listed."""
    pairs, scripts = set(), set()
    for name, data in every_version("data/functions", "data/sounds", *SCRIPTS):
        if name in SCRIPTS:
            scripts.add((name, data))
            continue
        pairs.add((digest_of(data), name.removeprefix("data/")))
        if len(data) > LARGEST:
            sys.exit(f"{name} is larger than {LARGEST} bytes")
    present = {path: (ROOT / path).read_bytes() for path in SCRIPTS}
    for name, script in scripts:
        kind, version = SCRIPTS[name], (digest_of(script), name)
        pairs.add(version)
        with tempfile.TemporaryDirectory() as folder:
            if made_already and script == present[name]:
                made = made_already / kind
            elif version in listed:
                continue
            else:
                made = pathlib.Path(folder) / kind
                subprocess.run([sys.executable, "-", made], input=script, check=True)
            pairs |= {(digest_of_file(path), f"{kind}/{path.name}") for path in made.iterdir()}
    return pairs


def list_shipped(check=False, made=None):
    listed = read_digests(LIST)
    missing = shipped_so_far(listed, made) - listed
    if check:
        for digest, name in sorted(missing):
            print(f"{LIST}: lacks {name} of digest {digest}")
        if missing:
            sys.exit(f"Run scripts/{pathlib.Path(__file__).name} list")
    elif missing:
        write_digests(LIST, listed | missing)


def main(arguments):
    match arguments:
        case ["copy", record, folder, *sources] if sources:
            copy(*map(pathlib.Path, (record, folder, *sources)))
        case ["rescue", record, folder]:
            rescue(pathlib.Path(record), pathlib.Path(folder))
        case ["list"]:
            list_shipped()
        case ["list", "--check", *made] if len(made) < 2:
            list_shipped(True, *map(pathlib.Path, made))
        case ["-h" | "--help"]:
            print(__doc__)
        case _:
            print(__doc__, file=sys.stderr)
            sys.exit(2)


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except OSError as error:
        sys.exit(f"{pathlib.Path(__file__).name}: {error}")
