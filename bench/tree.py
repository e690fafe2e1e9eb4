#!/usr/bin/env -S python3 -B
"""Compares deleting one path that holds a large tree with rm -rf and BleachBit."""
import os
import sys

from benching import (Goals, TIDEWELL, environment, medians, options, print_times, rotated_rounds, seconds,
                      throwaway_folder)

RECORD = "[Trash Info]\nPath=/home/someone/tree\nDeletionDate=2024-05-06T07:08:09\n"
PER_FOLDER = 100


def make_trash(surroundings, count):
    """Makes a trashed folder with a number of small files, a hundred per folder, and its record."""
    trash = surroundings["XDG_DATA_HOME"] + "/Trash"
    tree = f"{trash}/files/tree"
    os.makedirs(f"{trash}/info")
    with open(f"{trash}/info/tree.trashinfo", "w") as file:
        file.write(RECORD)
    for number in range(count):
        if number % PER_FOLDER == 0:
            folder = f"{tree}/folder {number // PER_FOLDER}"
            os.makedirs(folder)
        with open(f"{folder}/file {number}", "wb") as file:
            file.write(b"x")
    os.sync()
    return tree


def case(count, *command):
    """Uses a new file system each time, because many deletions slow ext4 down and the layout affects the speed."""
    def measure():
        with throwaway_folder("ext4") as folder:
            surroundings = environment(folder)
            tree = make_trash(surroundings, count)
            taken = seconds([*command, *([tree] if command[0] == "rm" else [])], surroundings)
            if os.path.exists(tree):
                sys.exit(f"{command[0]} left the tree: its figure means nothing")
            return taken
    return measure


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    count, rounds = (1000, 1) if quick else (100_000, 5)
    times = medians(rotated_rounds({
        "tidewell clean --only trash": case(count, TIDEWELL, "clean", "--only", "trash", "--yes"),
        "rm -rf": case(count, "rm", "-rf"),
        "bleachbit --clean system.trash": case(count, "bleachbit", "--clean", "system.trash"),
    }, rounds))
    where = "a fresh ext4 in memory" if os.geteuid() == 0 else "the file system of the temporary folder"
    print_times(f"one tree of {count} files, {rounds} rounds", times, ours=next(iter(times)))
    print(f"  each on {where}")
    ours, rm, bleachbit = times.values()
    goals.at_most("of rm -rf", 1.05, ours / rm)
    goals.at_most("of bleachbit", 0.4, ours / bleachbit)
    goals.end()


main()
