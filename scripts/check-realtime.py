#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks that real-time code calls only real-time code.

A function is marked with VEXA_REALTIME (kits/support/RealtimeMark.h), by itself or with its class; a
class's mark does not cover constructors and destructors. A marked function may not call an unmarked
function of this tree, use new, delete or throw, or call a library function in BANNED. A function that
overrides a marked one must be marked. Defaulted and constexpr functions count as marked. The exit code
is 1 if there is a fault.

libclang reads every source that has the mark or includes a header of its own folder that has it. The
initialization of a function's static variable is not checked, because it runs once, at the first call,
which is made during set-up. The check does not see calls through function pointers, calls that depend
on template parameters, the destructors of members and of unnamed values, and the inside of the
standard library. tests/support/RealtimeWatch observes these while tests run.
"""

import collections
import fnmatch
import pathlib
import re
import tempfile

from clang import cindex
from clang.cindex import CursorKind as Kind

import sourcecheck

# Include folders and macros that the build passes to the compiler.
EXTRA = ["-I/usr/share/dpf/distrho/src", '-DVEXA_LOOPS_NAME=""', '-DVEXA_VERSION=""']
ARGUMENTS = ["-x", "c++", "-std=c++20", "-Wno-everything"]
MARK = "VEXA_REALTIME"
FUNCTIONS = {Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR,
             Kind.CONVERSION_FUNCTION, Kind.FUNCTION_TEMPLATE}
CLASSES = {Kind.CLASS_DECL, Kind.STRUCT_DECL, Kind.CLASS_TEMPLATE,
           Kind.CLASS_TEMPLATE_PARTIAL_SPECIALIZATION}
SCOPES = CLASSES | {Kind.NAMESPACE, Kind.LINKAGE_SPEC, Kind.UNEXPOSED_DECL}

# Functions of the libraries that wait, allocate or write.
BANNED = set("""
    malloc calloc realloc free printf fprintf puts fputs fflush fopen fclose open close fread fwrite
    syslog getenv lock unlock lock_guard unique_lock scoped_lock sem_wait usleep nanosleep sleep_for
    sleep_until join make_unique make_shared async to_string
    """.split())

# Permitted calls and unmarked overrides: patterns of the caller (or overriding function) and of the
# callee (or overridden function), and the reason.
EXCEPTIONS = {
    ("kits::EventGate::*", "BMidiLocalConsumer::*"):
        "the gate stands in the MIDI thread, before what real-time threads play, and may wait there",
    ("kits::SystemMixer::Await", "sleep_for"):
        "a server that freewheels wants to be kept waiting",
    ("kits::MidiThread::Inlet::AwaitDelivery", "sleep_for"): "the same",
    ("BBufferGroup::RequestBuffer", "kits::WaitUntil"):
        "only where all buffers are on their way, and no longer than one lasts",
}


def kind_of(cursor):
    """Returns the kind of a cursor, or None if these bindings do not know it."""
    try:
        return cursor.kind
    except ValueError:
        return None


def is_excused(user, used):
    return any(fnmatch.fnmatchcase(user, a) and fnmatch.fnmatchcase(used, b) for a, b in EXCEPTIONS)


class Tree:
    """Collects the marks, calls and faults of the functions in a source tree."""

    def __init__(self, source):
        self.source = source.resolve()
        self.index = cindex.Index.create()
        self.known = {}
        self.faults = {}
        self.checked = set()
        self.marked = 0

    def files(self):
        """Returns the sources to read, which have marks themselves or in a header of their folder, and the
        names of the standard headers that they need."""
        texts = {path: path.read_text("utf-8") for path in sorted(self.source.rglob("*"))
                 if path.suffix in (".h", ".cpp") and path.name != "RealtimeMark.h"}
        marked = {path for path, text in texts.items() if MARK in text}
        included = {path: {self.source / name
                           for name in re.findall(r'^\s*#\s*include\s+"([^"]+)"', text, re.M)}
                    for path, text in texts.items()}
        headers = {path for path in marked if path.suffix == ".h"}
        sources = [path for path in texts if path.suffix == ".cpp" and (path in marked or any(
            header.parent == path.parent for header in included[path] & headers))]
        # These headers are precompiled, so they are read once for all sources.
        standard = sorted({name for path in texts if path.suffix == ".h" or path in sources
                           for name in re.findall(r"^\s*#\s*include\s+<([a-z_]+)>", texts[path],
                                                  re.M)})
        return sources, standard

    def ours(self, cursor):
        file = cursor.location.file
        return file is not None and file.name.startswith(f"{self.source}/")

    def is_marked(self, cursor):
        """Returns whether the function or class is marked, by itself or by a class around it."""
        template = cindex.conf.lib.clang_getSpecializedCursorTemplate(cursor)
        if template is not None and template.kind != Kind.NO_DECL_FOUND:
            cursor = template
        cursor = cursor.canonical
        key = cursor.get_usr() or cursor.hash
        if key not in self.known:
            parent = cursor.semantic_parent
            if cursor.kind in (Kind.CONSTRUCTOR, Kind.DESTRUCTOR):
                parent = None
            self.known[key] = any(
                child.kind == Kind.ANNOTATE_ATTR and child.spelling == "realtime"
                for one in (cursor, cursor.get_definition()) if one is not None
                for child in one.get_children()) or (
                parent is not None and parent.kind in CLASSES and self.is_marked(parent))
        return self.known[key]

    def is_exempt(self, cursor):
        cursor = cursor.canonical
        if cursor.is_default_method() or cursor.location == cursor.semantic_parent.location:
            return True
        words = []
        for token in cursor.get_tokens():
            if token.spelling in (cursor.spelling, "("):
                break
            words.append(token.spelling)
        if "constexpr" in words or "consteval" in words:
            return True
        definition = cursor.get_definition()
        return definition is not None and definition.is_default_method()

    def name_of(self, cursor):
        names = [cursor.spelling]
        while (cursor := cursor.semantic_parent) and cursor.kind in SCOPES:
            if cursor.spelling:
                names.insert(0, cursor.spelling)
        return "::".join(names)

    def fault(self, cursor, text):
        place = f"{cursor.location.file.name}:{cursor.location.line}"
        self.faults[f"{place}: {text}"] = True

    def check_body(self, function, cursor):
        """Checks all calls below the cursor; the body of a lambda belongs to the function around it."""
        for child in cursor.get_children():
            kind = kind_of(child)
            if kind in (Kind.CXX_NEW_EXPR, Kind.CXX_DELETE_EXPR, Kind.CXX_THROW_EXPR):
                word = next(child.get_tokens()).spelling
                if not re.match(r"new\s*\(", " ".join(t.spelling for t in child.get_tokens())):
                    self.fault(child, f"{self.name_of(function)}, which is {MARK}, has a {word}")
            elif kind == Kind.CALL_EXPR and child.referenced is not None:
                self.check_call(function, child, child.referenced)
            elif kind == Kind.VAR_DECL:
                record = child.type.get_canonical().get_declaration()
                for member in record.get_children():
                    if member.kind == Kind.DESTRUCTOR and self.ours(member):
                        self.check_call(function, child, member)
                if child.storage_class == cindex.StorageClass.STATIC:
                    continue
            self.check_body(function, child)

    def check_call(self, function, place, callee):
        if callee.kind not in FUNCTIONS:
            return
        if not self.ours(callee):
            if callee.spelling in BANNED and not is_excused(self.name_of(function),
                                                            callee.spelling):
                self.fault(place, f"{self.name_of(function)}, which is {MARK}, calls "
                                  f"{callee.spelling}")
        elif not (self.is_marked(callee) or self.is_exempt(callee)
                  or is_excused(self.name_of(function), self.name_of(callee))):
            self.unmarked(function, place, callee)

    def unmarked(self, function, place, callee):
        self.fault(place, f"{self.name_of(function)}, which is {MARK}, calls "
                          f"{self.name_of(callee)}, which is not")

    def check_override(self, function):
        """Reports an unmarked function that overrides a marked one, because it is called in its place."""
        def bases(record):
            for child in record.get_children():
                if child.kind == Kind.CXX_BASE_SPECIFIER:
                    base = child.type.get_canonical().get_declaration()
                    yield base
                    yield from bases(base)
        for base in bases(function.semantic_parent):
            for member in base.get_children():
                if (member.kind == Kind.CXX_METHOD and member.displayname == function.displayname
                        and member.is_virtual_method() and self.is_marked(member)
                        and not is_excused(self.name_of(function), self.name_of(member))):
                    self.fault(function, f"{self.name_of(function)} is not {MARK}, but "
                                         f"{self.name_of(member)}, which it overrides, is")
                    return

    def visit(self, scope):
        for cursor in scope.get_children():
            if not self.ours(cursor):
                continue
            if cursor.kind in SCOPES:
                self.visit(cursor)
            elif cursor.kind in FUNCTIONS:
                self.visit_function(cursor)

    def visit_function(self, cursor):
        key = (cursor.get_usr(), cursor.is_definition(), cursor.location.file.name)
        if key in self.checked:
            return
        self.checked.add(key)
        if self.is_marked(cursor):
            if cursor.is_definition():
                self.marked += 1
                self.check_body(cursor, cursor)
        elif cursor.kind == Kind.CXX_METHOD and cursor.is_virtual_method():
            self.check_override(cursor)

    def read(self, folder):
        sources, standard = self.files()
        prefix = pathlib.Path(folder) / "standard.h"
        prefix.write_text("".join(f"#include <{name}>\n" for name in standard))
        precompiled = pathlib.Path(folder) / "standard.pch"
        self.index.parse(str(prefix), ["-x", "c++-header", *ARGUMENTS[2:]],
                         options=cindex.TranslationUnit.PARSE_INCOMPLETE).save(str(precompiled))
        # All sources of a folder are read as one, so that shared headers are read once.
        joined = collections.defaultdict(list)
        for path in sources:
            joined[path if path.parent.name == "loops" else path.parent].append(path)
        for paths in joined.values():
            text = "".join(f'#include "{path}"\n' for path in paths)
            unit = self.index.parse("joined.cpp", [*ARGUMENTS, f"-I{self.source}", *EXTRA,
                                                   "-include-pch", str(precompiled)],
                                    unsaved_files=[("joined.cpp", text)])
            for said in unit.diagnostics:
                if said.severity >= cindex.Diagnostic.Error and said.location.file:
                    self.faults[f"{said.location.file}:{said.location.line}: {said.spelling}"] = True
            self.visit(unit.cursor)
        return len(sources)




# A tree that contains every kind of fault. The text after "//!" must be in the report of its line.
FAULTY = {
    "kits/support/RealtimeMark.h": '#define VEXA_REALTIME [[clang::annotate("realtime")]]\n',
    "a/A.h": """#include "kits/support/RealtimeMark.h"
#include <mutex>
struct VEXA_REALTIME Whole {
    Whole();
    void Fine() {}
    int Also();
};
struct Base {
    VEXA_REALTIME virtual void Hook() {}
    virtual void Slow() {}
    virtual ~Base() = default;
};
struct Section {
    ~Section() {}
};
void Unmarked();
constexpr int Constant() { return 1; }
VEXA_REALTIME void Marked();
template<class T> VEXA_REALTIME void Each(T call) {
    Unmarked(); //! Each, which is VEXA_REALTIME, calls Unmarked, which is not
    call();
}
""",
    "a/A.cpp": """#include "a/A.h"
#include <cstdio>
struct Derived : Base {
    void Slow() override { Unmarked(); }
    void Hook() override {} //! Derived::Hook is not VEXA_REALTIME, but Base::Hook
};
void Unmarked() { delete new int; }
int Whole::Also() {
    Unmarked(); //! Whole::Also, which is VEXA_REALTIME, calls Unmarked, which is not
    return Constant();
}
std::mutex mutex;
void Marked() {
    static int* const once = new int;
    Whole* whole = nullptr;
    whole->Fine();
    Base copy = Base(Base());
    copy.Hook();
    copy.Slow(); //! calls Base::Slow, which is not
    Each([] { Unmarked(); }); //! Marked, which is VEXA_REALTIME, calls Unmarked, which is not
    Whole other; //! calls Whole::Whole, which is not
    Section section; //! calls Section::~Section, which is not
    *once = *new int; //! has a new
    delete once; //! has a delete
    std::printf("trace"); //! calls printf
    mutex.lock(); //! calls lock
}
""",
}


def check(source):
    """Returns the faults of a whole tree, and the line to print if there are none."""
    tree = Tree(source)
    with tempfile.TemporaryDirectory() as folder:
        count = tree.read(folder)
    if not tree.marked:
        tree.faults[f"no function is {MARK}: is this the source folder?"] = True
    return list(tree.faults), f"{tree.marked} marked functions in {count} sources call marked ones only"


def self_test():
    return sourcecheck.tried(check, FAULTY)


if __name__ == "__main__":
    sourcecheck.run(__doc__, check, self_test)
