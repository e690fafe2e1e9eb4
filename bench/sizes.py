#!/usr/bin/env -S python3 -B
"""Compares adding up a tree's size with du and gdu.

Makes a home-like tree in a throwaway folder, has every program add it up, round after round, and prints the medians
with their ratios and goals."""
import os
import subprocess
import sys

from benching import (Goals, PROGRAMS, environment, medians, options, print_times, rotated_rounds, seconds,
                      throwaway_folder)
from search import make_tree

PROGRAM = f"{PROGRAMS}/sizes_bench"
GDU_FOLDER = 4096  # what gdu counts for each folder, whatever its size on disk


def fill(tree):
    """Writes into some of the empty files and gives some a hard link. Returns the number of folders and their own size
    on disk in bytes."""
    number = folders = own = 0
    for folder, _, names in os.walk(tree):
        for name in names:
            number += 1
            if number % 20 == 0:
                with open(f"{folder}/{name}", "wb") as file:
                    file.write(b"x" * (number % 30_000))
            elif number % 50 == 1:
                os.link(f"{folder}/{name}", f"{folder}/again {number}")
            elif number % 20 == 11:
                os.link(f"{tree}/linked", f"{folder}/linked {number}")
    for folder, _, _ in os.walk(tree):
        folders += 1
        own += os.lstat(folder).st_blocks * 512
    return folders, own


def first_number(command, surroundings):
    """Returns the total, which the programs print first."""
    return int(subprocess.run(command, env=surroundings, stdout=subprocess.PIPE, check=True).stdout.split()[0])


def check_totals(cases, surroundings, folders, own):
    """Exits unless all programs have found the same total."""
    totals = {name: first_number(command, surroundings) for name, command in cases.items()}
    expected = totals["du -s"]
    totals["gdu"] += own - GDU_FOLDER * folders
    for name, total in totals.items():
        if total != expected:
            sys.exit(f"{name} added up {total} bytes, du {expected}")


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    entries, rounds = (10_000, 1) if quick else (200_000, 11)
    with throwaway_folder() as folder:
        surroundings = environment(folder)
        tree = f"{folder}/tree"
        make_tree(tree, entries, 1)
        with open(f"{tree}/linked", "wb") as file:
            file.write(b"x" * 100_000)
        folders, own = fill(tree)
        os.sync()
        cases = {
            "all threads": [PROGRAM, "0", tree],
            "one thread": [PROGRAM, "1", tree],
            "du -s": ["du", "-s", "--block-size=1", tree],
            "gdu": ["gdu", "--non-interactive", "--no-progress", "--no-color", "--summarize", "--no-prefix", tree],
        }
        check_totals(cases, surroundings, folders, own)
        runs = {name: lambda command=command: seconds(command, surroundings) for name, command in cases.items()}
        times = medians(rotated_rounds(runs, rounds))
        print_times(f"sizes, {entries} entries in {folders} folders, {rounds} rounds", times, ours="all threads")
        goals.at_most("all threads, of du -s", 0.6, times["all threads"] / times["du -s"])
        goals.at_most("all threads, of gdu", 1.0, times["all threads"] / times["gdu"])
    goals.end()


main()
