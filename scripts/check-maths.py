#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks that a program calls no inexact function of the C maths library.

The C standard does not fix the rounding of functions such as sin, so their results, and with them a
render, differ between versions of the library and between processors. Programs call those of
kits/maths instead. Functions with exact results may be called. Each imported inexact function is
printed; the exit code is 1 if there is any.
"""
import argparse
import re
import subprocess
import sys

INEXACT = re.compile(
    r"(a?(sin|cos|tan)h?|sincos|atan2|exp(2|10|m1)?|log(2|10|1p)?|pow|cbrt|hypot|erfc?|[tl]?gamma|"
    r"[jy][01n]|c(exp|log|pow|sqrt|abs|arg))[fl]?(_r)?")
# The report that is printed after a render uses it.
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
        sys.exit(f"{program} does not import llround, as every such program does, so the check proves nothing")
    found = sorted(name for name in names - ALLOWED if INEXACT.fullmatch(name))
    for name in found:
        print(f"{program} calls {name}")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
