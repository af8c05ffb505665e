#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures rendering and the computation of pictures, and writes the tables into docs/PERFORMANCE.md.

Each table replaces the text between a line "<!-- measured: NAME -->" and the next "<!-- end -->" of the
page. All figures of a table are medians of nine repetitions in one run, in random order, so that their
ratios also hold on a busy machine. Needs the benchmarks of the release build.
"""
import argparse
import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/PERFORMANCE.md"


def measure(program, counter):
    """Runs a benchmark program and returns the median of `counter` for each benchmark, by name."""
    command = [program, "--benchmark_format=json", "--benchmark_repetitions=9",
               "--benchmark_min_time=0.03", "--benchmark_enable_random_interleaving=true",
               "--benchmark_report_aggregates_only=true"]
    run = subprocess.run(command, stdout=subprocess.PIPE, check=True, timeout=600)
    return {row["run_name"].removesuffix("/real_time"): row[counter]
            for row in json.loads(run.stdout)["benchmarks"]
            if row["aggregate_name"] == "median"}


def table(heads, rows):
    lines = [heads, ["---"] * len(heads), *rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def compared(medians, heads, factor, digits):
    """Returns a table of the benchmarks that exist as Reference/... and Product/..., with their ratio."""
    rows = []
    for name, reference in medians.items():
        if name.startswith("Reference/"):
            what = name.split("/")[1:]
            product = medians["Product/" + "/".join(what)]
            rows.append([*what, f"{reference * factor:.{digits}f}", f"{product * factor:.{digits}f}",
                         f"{reference / product:.1f}"])
    rows.sort(key=lambda row: (row[0], int(row[1])))
    return table([*heads, "point by point", "product", "ratio"], rows)


def row(medians, name, unit):
    names = sorted((n for n in medians if n.startswith(name + "/")),
                   key=lambda n: int(n.split("/")[1]))
    return table([unit, *(n.split("/")[1] for n in names)],
                 [["ns", *(f"{medians[n] * 1e9:.2f}" for n in names)]])


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("benchmarks", nargs="?", type=pathlib.Path,
                        default=ROOT / "build/release/benchmarks", help="the folder of the built ones")
    folder = parser.parse_args().benchmarks
    voices = measure(folder / "RenderVoicesBenchmark", "per_voice_sample")
    pictures = measure(folder / "PlanePictureBenchmark", "real_time")
    model = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())[1]
    tables = {
        "machine": f"CPU of the tables of rendering and pictures: {model}.",
        "voices": compared(voices, ["function", "voices"], 1e9, 2),
        "envelopes": row(voices, "EnvelopePoints", "points"),
        "blocks": row(voices, "BlockLength", "samples"),
        "hours": row(voices, "NoteHours", "hours"),
        "pictures": compared(pictures, ["function", "side"], 1, 0),
    }
    text = PAGE.read_text()
    for name, content in tables.items():
        mark = f"<!-- measured: {name} -->"
        before, found, rest = text.partition(mark)
        if not found:
            sys.exit(f"{PAGE}: there is no line {mark}")
        text = before + mark + "\n" + content + "\n" + rest[rest.index("<!-- end -->"):]
    PAGE.write_text(text)


if __name__ == "__main__":
    main()
