#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks the includes of the source tree.

A folder below src/ may use only the folders that the table ALLOWED lists for it. A quoted include must
name an existing file. Third-party headers stay inside the kits and the plug-ins. No files may include
each other in a circle, except those in KNOWN_CIRCLES; a .h and its .cpp count as one file. Each fault
is printed with its place and the rule that it breaks; the exit code is 1 if there is any.
"""

import pathlib
import re

import sourcecheck

# The kits that the engine may use; none of them knows windows.
ENGINE_KITS = ["kits/support", "kits/storage", "kits/application", "kits/kernel", "kits/maths",
               "kits/media", "kits/midi", "kits/pictures"]
ALL_KITS = ENGINE_KITS + ["kits/network", "kits/spectrum", "kits/interface", "kits/translation"]
ENGINE = ["synth", "tuning", "midi", "audio", "formula", "functions", "xml", "documents", "instrument"]

# For each folder below src/, the folders that it may use besides itself.
ALLOWED = {
    "kits/support": [],
    "kits/storage": ["kits/support"],
    "kits/text": [],
    "kits/application": ["kits/support", "kits/storage"],
    "kits/kernel": ["kits/support", "kits/storage"],
    "kits/maths": ["kits/support"],
    "kits/media": ["kits/support", "kits/storage", "kits/application", "kits/kernel", "kits/maths"],
    "kits/midi": ["kits/support", "kits/storage", "kits/application", "kits/kernel"],
    "kits/network": ["kits/support"],
    "kits/pictures": ["kits/support", "kits/storage"],
    "kits/interface": ["kits/support", "kits/storage", "kits/application", "kits/kernel"],
    "kits/translation": ["kits/support", "kits/storage", "kits/application", "kits/kernel",
                         "kits/interface"],
    "kits/spectrum": [],
    "synth": ENGINE_KITS,
    "xml": ENGINE_KITS,
    "tuning": ["kits/support", "kits/storage", "kits/maths"],
    "midi": ENGINE_KITS + ["synth", "tuning"],
    # The audio graph is set up as a whole: notes in and sound out.
    "audio": ENGINE_KITS + ["synth", "midi"],
    "formula": ["kits/support", "kits/maths", "synth"],
    "functions": ENGINE_KITS + ["synth", "formula"],
    "documents": ENGINE_KITS + ["synth", "midi", "audio", "formula", "functions", "xml"],
    "instrument": ENGINE_KITS + ["synth", "midi", "formula", "functions", "documents"],
    "bank": ENGINE_KITS + ["kits/text", "synth", "formula", "functions", "documents", "instrument"],
    "attach": ["kits/support", "synth"],
    "render": ENGINE_KITS + ENGINE,
    # It becomes a part of libraries that have nothing of the engine.
    "plugin/frame": [],
    "plugin": ENGINE_KITS + ENGINE + ["attach", "plugin/frame"],
    "views": ALL_KITS + ENGINE,
    "app": ALL_KITS + ENGINE + ["bank", "attach", "views"],
}

# Groups of files that may include each other: the path that precedes the names, and the names. The
# comment gives the reason.
KNOWN_CIRCLES = [
    # Walking through a fragment walks through its lists, and these lists consist of fragments.
    ("xml/", "FragmentWalk MXFragment MXFragmentList"),
    # A handler asks the queue to forget it, and the queue delivers messages to handlers.
    ("kits/application/", "Handler MessageQueue"),
    # A view owns a widget that calls it, and both know their window.
    ("kits/interface/", "Font View Window backends/HeldKeys backends/ViewWidget "
                        "backends/WindowWidget"),
    # A tuning is computed from a keyboard map, whose defaults are constants of the tuning.
    ("tuning/", "Keymap Tuning"),
    # A consumer owns a gate, which is itself a consumer; an event calls a hook of a consumer.
    ("kits/midi/", "EventGate MidiConnection MidiEvent MidiLocalConsumer"),
    # Reading a picture uses the decoders and the orientation, which work on its result type.
    ("kits/pictures/", "Decoders Orientation PictureFile"),
    # The roster and the systems are the two sides of one interface.
    ("kits/midi/", "MidiRoster MidiSystems"),
    # The table of document kinds names their writers, and a writer states its kind.
    ("documents/", "DocumentKind FunctionDocument SoundDocument"),
    # The functions for the host take the instance, and the instance gives them to the host.
    ("plugin/clap/", "Extensions Plugin"),
    # The menu asks the window which items to mark, and the window fills the menu.
    ("app/", "MainMenu VexaWindow"),
    # The gestures on the plane change fields of the main view, and the main view owns the gestures.
    ("app/", "VexaView plane/PlaneDesk"),
    # A handle is drawn on the overlay, and the overlay owns the handles.
    ("views/plane/", "PlaneHandle PlaneOverlay"),
]

# The standard and system headers, in angle brackets, that every file may include.
CPP = set("""
    algorithm any array atomic barrier bit bitset charconv chrono codecvt compare complex concepts
    condition_variable coroutine deque exception execution filesystem format forward_list fstream
    functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits
    list locale map memory memory_resource mutex new numbers numeric optional ostream queue random
    ranges ratio regex scoped_allocator semaphore set shared_mutex source_location span sstream stack
    stdexcept stop_token streambuf string string_view strstream syncstream system_error thread tuple
    type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector version
    cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg cstddef
    cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype
    """.split())
C_AND_POSIX = set("""
    aio alloca arpa/inet assert complex cpio ctype dirent dlfcn elf endian err errno execinfo fcntl
    features fenv float fmtmsg fnmatch ftw getopt glob grp iconv ifaddrs inttypes iso646 langinfo
    libgen limits link locale malloc math monetary mqueue net/if netdb netinet/in netinet/tcp nl_types
    paths poll pthread pty pwd regex sched search semaphore setjmp signal spawn stdalign stdarg
    stdatomic stdbool stddef stdint stdio stdlib stdnoreturn string strings sysexits syslog tar termios
    tgmath threads time uchar ucontext ulimit unistd utime utmpx wchar wctype wordexp
    """.split())
SYSTEM = re.compile(r"(sys|linux|asm)/[\w/.-]+\.h")
# The compiler's headers for processor instructions.
PROCESSOR = {"cpuid.h", "immintrin.h", "xmmintrin.h", "emmintrin.h", "pmmintrin.h", "x86intrin.h",
             "arm_neon.h"}

INCLUDE = re.compile(r"\s*#\s*include\b\s*(.*)")
TARGET = re.compile(r'(?:"([^"]+)"|<([^>]+)>)')


def is_standard(header):
    return (header in CPP or header in PROCESSOR or SYSTEM.fullmatch(header) is not None
            or header.endswith(".h") and header[:-2] in C_AND_POSIX)


def folder_of(path):
    """Returns the row of the table for a path relative to src/, the longest that contains it, or None."""
    rows = [row for row in ALLOWED if path.startswith(row + "/")]
    return max(rows, key=len, default=None)


def may_name_libraries(path):
    parts = path.split("/")
    if path.startswith(("plugin/lv2/", "plugin/clap/", "plugin/frame/")):
        return True
    return parts[0] == "kits" and (path.endswith(".cpp") or "backends" in parts[:-1])


def fault_of(source, path, target):
    """Returns the fault of an include in the file at `path` (relative to src/), or None."""
    match = TARGET.match(target)
    if not match:
        return "names no file, so it cannot be checked"
    quoted, system = match.groups()
    if system:
        if is_standard(system) or may_name_libraries(path):
            return None
        return f"<{system}>: third-party headers only in .cpp files and backends/ folders of src/kits"
    if ".." in quoted.split("/"):
        return f'"{quoted}": paths start at src/'
    if not (source / quoted).is_file():
        return f'"{quoted}": no such file below src/'
    user, used = folder_of(path), folder_of(quoted)
    if used is None:
        return f'"{quoted}": its folder is not in the table of {pathlib.Path(__file__).name}'
    if used != user and used not in ALLOWED[user]:
        return f'"{quoted}": {user} must not use {used}'
    return None


def includes_of(source):
    """Yields each include of a tree: its file relative to the tree, its line number, and the text after
    #include."""
    for file in sorted(source.rglob("*")):
        if file.suffix in (".h", ".cpp"):
            for number, line in enumerate(file.read_text("utf-8").splitlines(), 1):
                if include := INCLUDE.match(line):
                    yield file.relative_to(source).as_posix(), number, include.group(1)


def circles(uses):
    """Returns the groups of files that include each other, directly or not, each as a sorted list."""
    reached = {}
    for start in uses:
        seen, todo = set(), [start]
        while todo:
            for used in uses.get(todo.pop(), ()):
                if used not in seen:
                    seen.add(used)
                    todo.append(used)
        reached[start] = seen
    groups = {tuple(sorted(other for other in reached[unit] if unit in reached.get(other, ())))
              for unit in uses if unit in reached[unit]}
    return [list(group) for group in sorted(groups)]


def circle_faults(source, uses):
    known = [sorted(path + name for name in names.split()) for path, names in KNOWN_CIRCLES]
    return ([f"{source / group[0]}.h:1: uses what uses it: {' '.join(group)}"
             for group in circles(uses) if group not in known]
            + [f"{pathlib.Path(__file__).name}: there is no such circle any more: {' '.join(group)}"
               for group in known if source.joinpath(group[0] + ".h").is_file()
               and group not in circles(uses)])


def check(source):
    """Returns the faults of a whole tree, and the line to print if there are none."""
    faults = [f"{file}:1: its folder is not in the table of {pathlib.Path(__file__).name}"
              for file in sorted(source.rglob("*")) if file.suffix in (".h", ".cpp")
              and folder_of(file.relative_to(source).as_posix()) is None]
    count, uses = 0, {}
    for path, number, included in includes_of(source):
        if folder_of(path) is None:
            continue
        count += 1
        target, unit = TARGET.match(included), path.rsplit(".", 1)[0]
        if target and target.group(1) and target.group(1).rsplit(".", 1)[0] != unit:
            uses.setdefault(unit, set()).add(target.group(1).rsplit(".", 1)[0])
        if fault := fault_of(source, path, included):
            faults.append(f"{source / path}:{number}: {fault}")
    if count == 0:
        faults.append("no include was found: is this the source folder?")
    return faults + circle_faults(source, uses), f"{count} includes, all allowed"


# A tree that contains every kind of fault. The text after "//!" must be in the report of its line.
FAULTY = {
    "kits/support/A.h": '#include <vector>\n#include <sndfile.h> //! third-party\n',
    "kits/support/B.cpp": '#include <sndfile.h>\n#include "kits/support/A.h"\n'
                          '#include "kits/storage/A.h" //! kits/support must not use kits/storage\n'
                          '#include "synth/A.h" //! kits/support must not use synth\n',
    "kits/media/backends/A.h": '#include <jack/jack.h>\n#include "kits/support/A.h"\n',
    "kits/storage/A.h": '#include "kits/support/A.h"\n#  include <sys/stat.h>\n',
    "kits/interface/A.h": '#include "kits/midi/A.h" //! kits/interface must not use kits/midi\n',
    "kits/midi/A.h": '#include <alsa/asoundlib.h> //! third-party\n',
    "synth/A.h": '#include <xmmintrin.h>\n#include "kits/storage/A.h"\n'
                 '#include "kits/interface/A.h" //! synth must not use kits/interface\n'
                 '#include "midi/A.h" //! synth must not use midi\n',
    "midi/A.h": '//! uses what uses it: midi/A synth/A\n#include "synth/A.h"\n'
                '#include "kits/midi/A.h"\n#include HEADER //! cannot be\n',
    "xml/A.cpp": '#include "synth/A.h" //! xml must not use synth\n',
    "views/A.cpp": '#include "kits/interface/A.h"\n#include <QWidget> //! third-party\n'
                   '#include "app/A.h" //! views must not use app\n',
    "app/A.h": '#include "A.h" //! no such file\n#include "app/../synth/A.h" //! start at src/\n',
    "render/A.cpp": '#include "midi/A.h"\n#include "kits/translation/A.h" //! no such file\n'
                    '#include "views/A.h" //! render must not use views\n',
    "views/A.h": "",
    "new/A.h": "//! not in the table\n",
    "synth/B.h": '//! uses what uses it: synth/B synth/C\n#include "synth/A.h"\n',
    "synth/B.cpp": '#include "synth/C.h"\n',
    "synth/C.h": '#include "synth/B.h"\n',
    "tuning/Keymap.h": "",
}


def self_test():
    circle = ("check-includes.py", "there is no such circle any more: tuning/Keymap")
    return sourcecheck.tried(check, FAULTY, [circle])


if __name__ == "__main__":
    sourcecheck.run(__doc__, check, self_test)
