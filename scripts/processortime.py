# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures the processor time of programs, which other load disturbs less than elapsed time."""
import resource
import statistics
import subprocess


def children():
    """Returns the processor seconds of all child processes that have ended so far."""
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def run(command):
    """Runs a program and returns its processor seconds."""
    start = children()
    subprocess.run(command, check=True, timeout=300, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)
    return children() - start


def rounds(commands, runs=5):
    """Runs all commands once in each of `runs` rounds; returns a row of processor seconds per round."""
    return [[run(command) for command in commands] for _ in range(runs)]


def medians(commands, runs=5):
    """Runs all commands in rounds and returns the median of the processor seconds of each."""
    return [statistics.median(column) for column in zip(*rounds(commands, runs))]
