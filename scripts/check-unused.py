#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks that the kits offer no function without a caller.

The name of each public function that a header of src/kits declares must occur in the sources below
src/ outside its declaration and definition. Exempt are virtual functions, which a base class or a
library calls, the functions in EXCEPTIONS, and the headers in backends/. The exit code is 1 if there
is a fault.
"""

import collections
import pathlib
import re

import sourcecheck

# Functions that the product does not call, with the reason why they exist.
EXCEPTIONS = {
    "kits/interface/Alert.h Details": "the same as SetResponder",
    "kits/interface/Alert.h Heading": "the same as SetResponder",
    "kits/interface/Alert.h SetResponder": "tests answer alerts",
    "kits/interface/Control.h Placeholder": "tests see what an empty field shows",
    "kits/interface/FilePanel.h GetNextSelectedRef": "tests see what is selected",
    "kits/interface/FilePanel.h GetPanelDirectory": "tests see what is shown",
    "kits/interface/FilePanel.h Rewind": "the same as GetNextSelectedRef",
    "kits/interface/Font.h SetPlainFontFamily": "tests lay windows out in several fonts",
    "kits/interface/Menu.h ShownTitle": "tests see whether a title has room",
    "kits/media/MediaNode.h ReportedErrors": "tests see what a node has reported",
    "kits/translation/BitmapStream.h DetachBitmap": "tests look at what was read",
}

NO_CODE = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\])*"|^\s*#\s*include[^\n]*', re.S | re.M)
NAME = re.compile(r"([~\w]+)\s*\(")
NO_NAMES = {"void", "bool", "int", "if", "for", "while", "switch", "return", "sizeof", "decltype",
            "noexcept", "alignas", "static_assert", "defined", "explicit", "requires"}


def code_of(text):
    return NO_CODE.sub(" ", text)


def declared(code):
    """Returns the names of the public functions that a header declares, virtual ones excepted."""
    names, scopes, statement = [], ["open"], ""

    def note():
        words = re.sub(r"\[\[.*?\]\]|template\s*<[^;{]*?>\s(?=\w)", " ", statement)
        if scopes[-1] != "open" or re.search(r"\b(virtual|override|friend|operator|using|typedef)\b",
                                             words):
            return
        found = NAME.search(re.sub(r"<[^()]*?\([^()]*\)[^()]*?>", "", words))
        if found and found.group(1) not in NO_NAMES and not found.group(1).startswith("~"):
            names.append(found.group(1))

    for token in re.findall(r"\b(?:public|private|protected)\s*:(?!:)|[{};]|[^{};\n]+?(?=\bpublic\b|"
                            r"\bprivate\b|\bprotected\b|[{};\n])|\n|[^{};]", code):
        if token in ("{", ";"):
            if token == ";":
                note()
            else:
                kind = re.search(r"\b(class|struct|union|namespace|enum|extern)\b", statement)
                if kind is None or "(" in re.sub(r"\[\[.*?\]\]|alignas\s*\(.*?\)", "", statement):
                    note()
                    scopes.append("body")
                elif kind.group(1) == "enum":
                    scopes.append("body")
                elif scopes[-1] != "open":
                    scopes.append(scopes[-1])
                else:
                    scopes.append("closed" if kind.group(1) == "class" else "open")
            statement = ""
        elif token == "}":
            if len(scopes) > 1:
                scopes.pop()
            statement = ""
        elif re.fullmatch(r"(public|private|protected)\s*:", token):
            scopes[-1] = "open" if token.startswith("public") else "closed"
            statement = ""
        else:
            statement += token
    return names


def check(source):
    """Returns the faults of a whole tree, and the line to print if there are none."""
    codes = {path.relative_to(source).as_posix(): code_of(path.read_text("utf-8"))
             for path in sorted(source.rglob("*")) if path.suffix in (".h", ".cpp")}
    uses = {path: collections.Counter(re.findall(r"\w+", code)) for path, code in codes.items()}
    total = sum(uses.values(), collections.Counter())
    faults, count, excused = [], 0, set()
    for path, code in codes.items():
        if not path.startswith("kits/") or not path.endswith(".h") or "/backends/" in path:
            continue
        classes = set(re.findall(r"\b(?:class|struct)\s+(?:\w+\s+)?(\w+)", code))
        names = collections.Counter(name for name in declared(code) if name not in classes)
        for name, declarations in sorted(names.items()):
            count += 1
            own = codes.get(path[:-2] + ".cpp", "")
            definitions = len(re.findall(rf"^\S[^=;(]*?\b{name}\s*\([^;]*?\{{", own, re.M))
            if total[name] > declarations + definitions:
                continue
            if f"{path} {name}" in EXCEPTIONS:
                excused.add(f"{path} {name}")
            else:
                faults.append(f"{source / path}: nobody calls {name}")
    faults += [f"{pathlib.Path(__file__).name}: no exception any more: {entry}"
               for entry in EXCEPTIONS if (source / entry.split()[0]).is_file()
               and entry not in excused]
    if count == 0:
        faults.append("no function was found: is this the source folder?")
    return faults, f"{count} functions of the kits, all called"


FAULTY = {
    "kits/a/A.h": """class A {
  public:
    A();
    ~A();
    void Called();
    int Unused() const { return Hidden(); }
    virtual void Hook() {}
    template<class T> void UnusedToo(T value);
  private:
    int Hidden();
};
inline int Free(int) { return 1; }
void Own();
""",
    "kits/a/A.cpp": "#include \"kits/a/A.h\"\nvoid A::Called() {}\nvoid Own() {}\n"
                    "static int before = (Own(), 1); // Free\n",
    "b/B.cpp": "void B() { A().Called(); }\n",
}


def self_test():
    return sourcecheck.tried(check, FAULTY, [("kits/a/A.h: ", f"nobody calls {name}")
                                             for name in ("Free", "Unused", "UnusedToo")])


if __name__ == "__main__":
    sourcecheck.run(__doc__, check, self_test)
