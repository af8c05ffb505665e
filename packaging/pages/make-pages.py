#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Generates man pages and shell completions from the tables of options.

make-pages.py TABLE VERSION CONTENT FOLDER: TABLE is a file with the output of OptionTable.cpp, CONTENT the folder of the
installed content. For each program it writes FOLDER/man/PROGRAM.1, FOLDER/bash/PROGRAM and FOLDER/zsh/_PROGRAM from the
templates beside this file. In a template, @NAME@ is replaced by the text of that name (see main).
"""

import collections
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent

Option = collections.namedtuple("Option", "name value allowed help")


def read_table(path):
    """Returns the options of each program, in the order of the table."""
    programs = collections.defaultdict(list)
    for line in pathlib.Path(path).read_text("utf-8").splitlines():
        program, *cells = line.split("\t")
        programs[program].append(Option(*cells))
    return programs


def words(option):
    """Returns the values of an option whose text about allowed values has the form "a, b or c"; otherwise none."""
    found = re.fullmatch(r"((?:[a-z0-9]+, )*[a-z0-9]+) or ([a-z0-9]+)", option.allowed)
    return found[1].split(", ") + [found[2]] if found else []


def roff(text):
    """Escapes a text for troff."""
    return text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(cq").replace('"', "\\(dq")


def man_option(option):
    value = f' " {roff(option.value)}"' if option.value else ""
    allowed = f"; {option.allowed}" if option.allowed else ""
    return f".TP\n.BI \\-\\-{roff(option.name)}{value}\n{roff(option.help + allowed)}.\n"


def bash_case(option):
    """Returns the line of a shell "case" that completes the value of an option; without known values it offers none."""
    if option.value in ("FILE", "SOUND"):
        return f"    --{option.name}) _@NAME@_{option.value.lower()} ;;\n"
    if option.value == "N=SOUND":
        return f"    --{option.name}) $split && _@NAME@_sound ;;\n"
    return f"    --{option.name}) COMPREPLY=($(compgen -W '{' '.join(words(option))}' -- \"$cur\")) ;;\n"


def zsh_spec(option):
    def plain(text):
        return re.sub(r"([\\:\[\]])", r"\\\1", text).replace("'", "'\\''")

    # With "=" in the specification, zsh takes a value both after "=" and as the next word.
    spec = f"--{option.name}{'=' if option.value else ''}[{plain(option.help)}]"
    if option.value:
        action = {"FILE": "_files", "SOUND": "_vexa_sounds", "N=SOUND": "_vexa_channel_sounds"}.get(
            option.value, f"({' '.join(words(option))})")
        spec += f":{plain(option.value)}:{action if action != '()' else ' '}"
    return f"    '{spec}' \\\n"


def main():
    table, version, content, folder = sys.argv[1:]
    for program, options in read_table(table).items():
        texts = {
            # A text that ends with a line feed replaces a whole line.
            "MAN_OPTIONS": "".join(map(man_option, options)),
            "BASH_CASES": "".join(bash_case(option) for option in options if option.value),
            "ZSH_OPTIONS": "".join(map(zsh_spec, options)),
            "OPTIONS": " ".join(f"--{option.name}" for option in options),
            "PROGRAM": program,
            "NAME": program.replace("-", "_"),
            "VERSION": version,
            "CONTENT": content,
        }
        for template, page in ((f"{program}.1.in", f"man/{program}.1"), ("vexa.bash.in", f"bash/{program}"),
                               ("vexa.zsh.in", f"zsh/_{program}")):
            text = (HERE / template).read_text("utf-8")
            for name, value in texts.items():
                text = text.replace(f"@{name}@" + "\n" * value.endswith("\n"), value)
            path = pathlib.Path(folder) / page
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, "utf-8")


if __name__ == "__main__":
    main()
