# SPDX-License-Identifier: GPL-3.0-or-later
"""Processor time of programs, which other programs disturb least, for the scripts that compare."""
import resource
import statistics
import subprocess


def children():
    """Seconds of processor time of the programs that were run so far."""
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def run(command):
    """Seconds that a program takes."""
    start = children()
    subprocess.run(command, check=True, timeout=300, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)
    return children() - start


def rounds(commands, runs=5):
    """The seconds of each command in each of so many rounds, in which they are run in turns."""
    return [[run(command) for command in commands] for _ in range(runs)]


def medians(commands, runs=5):
    """The median seconds of each command, all of them run in turns."""
    return [statistics.median(column) for column in zip(*rounds(commands, runs))]
