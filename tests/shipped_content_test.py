#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The build copies shipped content, and nothing of a person's is lost by it.

Builds the folder data/ of a small tree of its own, with the rules and scripts of this one.
"""

import hashlib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parent.parent
TREE_RULES = """cmake_minimum_required(VERSION 3.25)
project(content NONE)
set(VEXA_PROGRAM_FOLDER ${CMAKE_BINARY_DIR}/bin)
set(VEXA_MADE_CONTENT ${CMAKE_BINARY_DIR}/content)
add_subdirectory(data)
"""
# Faster than computing tones and terrains.
SCRIPT = """import pathlib, sys
folder = pathlib.Path(sys.argv[1])
folder.mkdir(parents=True, exist_ok=True)
for name in %s:
    (folder / name).write_text(name)
"""
MADE = {"samples": ("harp.wav", "pluck.wav", "voice.wav", "vowel.wav"),
        "pictures": ("island.png", "julia.png", "letters.png", "rose.png", "weave.png")}


class ShippedContent(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.tree = pathlib.Path(temporary.name)
        self.build = self.tree / "build"
        self.home = self.tree / "home"
        for name in ("data", "scripts"):
            shutil.copytree(SOURCE / name, self.tree / name)
        (self.tree / "CMakeLists.txt").write_text(TREE_RULES)
        for kind, names in MADE.items():
            (self.tree / f"scripts/make-{kind}.py").write_text(SCRIPT % repr(names))

    def run_command(self, *command):
        environment = dict(os.environ, XDG_DATA_HOME=str(self.home))
        return subprocess.run(command, env=environment, text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT)

    def run_ok(self, *command):
        result = self.run_command(*command)
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def make(self):
        if not self.build.exists():
            self.run_ok("cmake", "-G", "Ninja", "-S", self.tree, "-B", self.build)
        return self.run_ok("ninja", "-C", self.build, "copied-content")

    def script(self, *arguments):
        return self.run_command(sys.executable, self.tree / "scripts/shipped-content.py",
                                *arguments)

    def rescue(self):
        result = self.script("rescue", self.build / "copied-content", self.build / "bin")
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def sound(self, folder, name):
        return self.tree / folder / "sounds" / name

    def copy_of(self, name):
        return self.sound("build/bin", name)

    def test_what_a_person_changed_stays_and_what_is_as_copied_follows_the_source(self):
        self.make()
        for kind, names in MADE.items():
            self.assertEqual({path.name for path in (self.build / "bin" / kind).iterdir()}, set(names))
        self.copy_of("bass.xml").write_text("edited")
        self.copy_of("mine.xml").write_text("mine")
        for name in ("bass.xml", "bell.xml"):
            self.sound("data", name).write_text("newer")
        self.assertIn("bin/sounds/bass.xml was changed by hand", self.make())
        self.assertEqual(self.copy_of("bass.xml").read_text(), "edited")
        self.assertEqual(self.copy_of("bell.xml").read_text(), "newer")
        self.assertIn("no work to do", self.make())

        # Without the record a differing file counts as the user's, unless some version shipped it.
        self.run_ok("ninja", "-C", self.build, "-t", "clean")
        self.assertFalse((self.build / "copied-content").exists())
        self.copy_of("pad.xml").write_text("older")
        self.copy_of("wind.xml").unlink()
        with open(self.tree / "data/shipped-content", "a") as file:
            file.write(f"{hashlib.sha256(b'older').hexdigest()}  sounds/pad.xml\n")
        self.make()
        self.assertEqual(self.copy_of("bass.xml").read_text(), "edited")
        self.assertEqual(self.copy_of("mine.xml").read_text(), "mine")
        for name in ("pad.xml", "wind.xml"):
            self.assertEqual(self.copy_of(name).read_bytes(), self.sound("data", name).read_bytes())

    def test_a_persons_work_in_the_build_is_copied_to_the_users_folder(self):
        self.make()
        self.copy_of("bass.xml").write_text("edited")
        self.copy_of("mine.xml").write_text("mine")
        self.copy_of("pad.xml").write_text("edited here")
        self.sound("home/vexa", "pad.xml").parent.mkdir(parents=True)
        self.sound("home/vexa", "pad.xml").write_text("edited there")
        # A copy of shipped content is replaced.
        shutil.copy(self.sound("data", "bass.xml"), self.sound("home/vexa", "bass.xml"))
        (self.build / "bin/functions/recent.c").write_text("compiled")
        said = self.rescue()
        for name, text in (("bass.xml", "edited"), ("mine.xml", "mine"),
                           ("pad.xml", "edited there")):
            self.assertEqual(self.sound("home/vexa", name).read_text(), text)
            self.assertIn(str(self.sound("home/vexa", name)), said)
        found = {path.name for path in self.home.rglob("*") if path.is_file()}
        self.assertEqual(found, {"bass.xml", "mine.xml", "pad.xml"})
        self.assertEqual(self.copy_of("bass.xml").read_text(), "edited")

    def test_a_version_that_the_list_lacks_is_found(self):
        self.assertEqual(self.script("list").returncode, 0)
        self.assertEqual(self.script("list", "--check").returncode, 0)
        self.sound("data", "bass.xml").write_text("newer")
        check = self.script("list", "--check")
        self.assertEqual(check.returncode, 1)
        self.assertIn("lacks sounds/bass.xml", check.stdout)
        self.assertEqual(self.script("list").returncode, 0)
        self.assertEqual(self.script("list", "--check").returncode, 0)

    def test_of_the_scripts_each_version_runs_once(self):
        script, runs = self.tree / "scripts/make-samples.py", self.tree / "runs"
        told = f"pathlib.Path({str(runs)!r}).open('a').write('x')\n"
        script.write_text(SCRIPT % repr(("new.wav",)) + told)
        check = self.script("list", "--check")
        self.assertEqual(check.returncode, 1)
        self.assertIn("lacks samples/new.wav", check.stdout)
        self.assertEqual(self.script("list").returncode, 0)
        self.assertEqual(runs.read_text(), "xx")
        self.assertEqual(self.script("list", "--check").returncode, 0)
        self.assertEqual(runs.read_text(), "xx")
        # What the script as it is has made already is looked at all the same.
        made = self.tree / "made"
        for kind in MADE:
            (made / kind).mkdir(parents=True)
        (made / "samples/other.wav").write_text("other")
        check = self.script("list", "--check", made)
        self.assertEqual(check.returncode, 1)
        self.assertIn("lacks samples/other.wav", check.stdout)


if __name__ == "__main__":
    unittest.main()
