#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks which functions of the C maths library a program calls.

What the library rounds as it likes differs between its versions and processors, and with it a
render; kits/maths has such functions. What it computes exactly it may be asked for. Each call of
another is printed; the exit code is 1 then.
"""
import argparse
import re
import subprocess
import sys

INEXACT = re.compile(
    r"(a?(sin|cos|tan)h?|sincos|atan2|exp(2|10|m1)?|log(2|10|1p)?|pow|cbrt|hypot|erfc?|[tl]?gamma|"
    r"[jy][01n]|c(exp|log|pow|sqrt|abs|arg))[fl]?(_r)?")
# Asked by what is printed after a render.
ALLOWED = {"log10"}


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    program = parser.parse_args().program
    listed = subprocess.run(["nm", "-D", "--undefined-only", program], check=True,
                            capture_output=True, text=True).stdout
    names = {line.split()[-1].split("@")[0] for line in listed.splitlines()}
    if "llround" not in names:
        sys.exit(f"{program} calls nothing of the library, which it is known to do")
    found = sorted(name for name in names - ALLOWED if INEXACT.fullmatch(name))
    for name in found:
        print(f"{program} calls {name}")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
