#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""What a desktop and a shell get to know of the programs is true: desktop_test.py BUILD, the build folder."""

import os
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import unittest

import yaml

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = pathlib.Path(sys.argv.pop(1))
DESKTOP = ROOT / "data/desktop"


def output(*command, **more):
    done = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60, **more)
    return done.stdout if done.returncode == 0 else f"exit code {done.returncode}: {done.stdout}"


def completions(program, *words):
    """What bash offers for the last of the words behind the program."""
    script = f"""source '{BUILD}/pages/bash/{program}'
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
        _{program.replace("-", "_")}
        printf '%s\\n' "${{COMPREPLY[@]}}\""""
    return [line for line in output("bash", "-c", script, "-", program, *words).splitlines() if line]


class Pages(unittest.TestCase):
    def test_all_name_the_options_that_the_help_does(self):
        for program in ("vexa", "vexa-render"):
            told = output(BUILD / "bin" / program, "--help")
            options = re.findall(r"^  (--[a-z0-9-]+)(?: ([A-Z=]+))?", told, re.M)
            self.assertGreater(len(options), 15, told)
            page = BUILD / f"pages/man/{program}.1"
            shown = output("man", "-l", page, env=os.environ | {"MANWIDTH": "100", "LC_ALL": "C"})
            self.assertEqual(re.findall(r"^ {7}(--[a-z0-9-]+)(?: ([A-Z=]+)$)?", shown, re.M), options)
            zsh = (BUILD / f"pages/zsh/_{program}").read_text("utf-8")
            self.assertEqual(re.findall(r"^    '(--[a-z0-9-]+)(?:=\[.*?\]:([A-Z=]+):.*|\[.*\])' \\$", zsh, re.M), options)
            names = [name for name, _ in options]
            self.assertEqual(completions(program, "--"), names)
            for name, value in options:
                words = re.search(rf"^  {name} .*; ([a-z0-9, ]+ or [a-z0-9]+)$", told, re.M)
                offered = completions(program, name, "")
                if words:
                    self.assertEqual(offered, re.split(", | or ", words[1]))
                elif value not in ("", "FILE", "SOUND"):
                    self.assertEqual(offered, [], name)

    def test_completions_offer_sounds_and_files(self):
        with tempfile.TemporaryDirectory() as folder:
            sounds = pathlib.Path(folder) / "vexa/sounds"
            sounds.mkdir(parents=True)
            for name in ("mine", "warm pad", "warm$(touch run)"):
                (sounds / f"{name}.xml").touch()
            before = os.environ.get("XDG_DATA_HOME")
            os.environ["XDG_DATA_HOME"] = folder
            self.assertEqual(completions("vexa", "--sound", "mi"), ["mine"])
            self.assertEqual(completions("vexa", "--sound", "=", "mi"), ["mine"])
            self.assertEqual(completions("vexa", "--sound", "warm"), ["warm pad", "warm$(touch run)"])
            self.assertFalse(pathlib.Path("run").exists())
            self.assertEqual(completions("vexa-render", "--channel-sound", "2", "=", "mi"), ["mine"])
            self.assertIn("mine", completions("vexa-render", "a.mid", "--channel-sound", "2", "="))
            self.assertEqual(completions("vexa-render", f"{sounds}/m"), [f"{sounds}/mine.xml"])
            os.environ.pop("XDG_DATA_HOME") if before is None else os.environ.update(XDG_DATA_HOME=before)

    def test_man_has_no_complaint(self):
        for page in (BUILD / "pages/man").iterdir():
            told = output("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", page)
            self.assertRegex(told, "^x T utf8\n")
            self.assertNotIn("warning", told)


class Desktop(unittest.TestCase):
    def test_files_are_valid(self):
        self.assertEqual(output("desktop-file-validate", DESKTOP / "org.orvo.Vexa.desktop"), "")
        about = DESKTOP / "org.orvo.Vexa.metainfo.xml"
        told = output("appstreamcli", "validate", "--pedantic", "--no-net", "--no-color", about)
        # The name of the program begins with a capital.
        told = re.sub(r"^P: .* cid-contains-uppercase-letter .*\n", "", told, flags=re.M)
        self.assertRegex(told, r"^\s*✔ Validation was successful")
        version = output(BUILD / "bin/vexa", "--version").split()[1]
        self.assertIn(f'<release version="{version}"', about.read_text("utf-8"))
        pictures = re.findall(r'width="(\d+)" height="(\d+)">.*/(.*)</image>', about.read_text("utf-8"))
        self.assertGreater(len(pictures), 1)
        for width, height, name in pictures:
            header = (ROOT / "docs/figures" / name).read_bytes()[:24]
            self.assertEqual(struct.unpack(">II", header[16:]), (int(width), int(height)), name)

    def test_the_flatpak_is_of_this_tree(self):
        path = ROOT / "packaging/flatpak/org.orvo.Vexa.yml"
        manifest = yaml.safe_load(path.read_text("utf-8"))
        entry = (DESKTOP / f"{manifest['id']}.desktop").read_text("utf-8")
        self.assertIn(f"Exec={manifest['command']} ", entry)
        for module in manifest["modules"]:
            for source in module["sources"]:
                pinned = {"archive": "sha256", "git": "tag", "dir": "path"}[source["type"]]
                self.assertIn(pinned, source, module["name"])
        # The packages that the build needs, except those in the runtime.
        needed = re.search(r"\[render\].*(?=\n\[test\])", (ROOT / "scripts/packages.txt").read_text("utf-8"), re.S)[0]
        runtime = "sndfile1 png jpeg62-turbo ogg jack-jackd2 asound2 xcb1 x11".split()
        libraries = set(re.findall(r"^lib(\S+)-dev\b", needed, re.M)) - set(runtime)
        self.assertEqual({module["name"].removeprefix("lib") for module in manifest["modules"][:-1]},
                         {re.sub(r"\d$", "", library) for library in libraries})
        vexa = manifest["modules"][-1]
        self.assertTrue((path.parent / vexa["sources"][0]["path"] / "CMakeLists.txt").samefile(ROOT / "CMakeLists.txt"))
        options = (ROOT / "CMakeLists.txt").read_text("utf-8")
        for name in re.findall(r"-D(VEXA_\w+)=", " ".join(vexa["config-opts"])):
            self.assertIn(f"option({name} ", options)

    def test_all_is_installed_below_the_prefix(self):
        with tempfile.TemporaryDirectory() as stage:
            output("cmake", "--install", BUILD, "--prefix", "/opt/vexa", env=os.environ | {"DESTDIR": stage})
            files = [path for path in pathlib.Path(stage).rglob("*") if path.is_file()]
            prefix = pathlib.Path(stage) / "opt/vexa"
            self.assertIn(prefix / "share/vexa/shipped/sounds/default.xml", files)
            self.assertEqual([path for path in files if not path.is_relative_to(prefix)], [])

    def test_content_decides_which_xml_is_ours(self):
        own = (DESKTOP / "org.orvo.Vexa.xml").read_text("utf-8")
        types = re.findall(r'<mime-type type="(text/[^"]*)"', own)
        entry = (DESKTOP / "org.orvo.Vexa.desktop").read_text("utf-8")
        for mime in types:
            self.assertIn(f"{mime};", entry)
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            packages = folder / "mime/packages"
            packages.mkdir(parents=True)
            (packages / "org.orvo.Vexa.xml").write_text(own, "utf-8")
            output("update-mime-database", folder / "mime")
            environment = os.environ | {"XDG_DATA_DIRS": "/usr/share", "XDG_DATA_HOME": name, "LC_ALL": "C"}

            def type_of(path):
                told = output("gio", "info", "-a", "standard::content-type", path, env=environment)
                return re.search(r"content-type: (.*)", told)[1]

            sound, function = types
            for path in (ROOT / "data/sounds").glob("*.xml"):
                self.assertEqual(type_of(path), sound, path)
            for path in (ROOT / "data/functions").glob("*.xml"):
                self.assertEqual(type_of(path), function, path)
            for text in ('<?xml version="1.0"?>\n<other/>\n', "<other/>\n", "<!-- vexasound -->\n<svg/>\n"):
                other = folder / "other.xml"
                other.write_text(text, "utf-8")
                self.assertEqual(type_of(other), "application/xml", text)


if __name__ == "__main__":
    unittest.main()
