#!/usr/bin/env -S python3 -B
"""Compares previewing a full Trash, with all sizes, with du -a.

Fills the Trash of a throwaway sandbox and has both programs add it up, round after round, and prints the medians with
their ratios and goals."""
import os

from benching import (Goals, TIDEWELL, environment, medians, options, print_times, rotated_rounds, seconds,
                      throwaway_folder)

TRASH = "home/.local/share/Trash/files"


def fill(trash, folders, files):
    """Makes that many items in the Trash: folders of that many files, or files if there are none in a folder."""
    os.makedirs(trash)
    for folder in range(folders):
        if files:
            os.mkdir(f"{trash}/{folder}")
        names = [f"{trash}/{folder}/{number}" for number in range(files)] or [f"{trash}/{folder}"]
        for name in names:
            with open(name, "wb") as file:
                file.write(b"x" * 100)


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    paths, rounds = (2_000, 1) if quick else (100_000, 11)
    for title, folders, files in [("in folders of 100", paths // 100, 100), ("side by side", paths, 0)]:
        with throwaway_folder() as folder:
            surroundings = environment(folder)
            trash = f"{folder}/sandbox/{TRASH}"
            fill(trash, folders, files)
            preview = [TIDEWELL, "--sandbox", f"{folder}/sandbox", "preview", "--only", "trash"]
            cases = {"preview": lambda: seconds(preview, surroundings),
                     "du -a": lambda: seconds(["du", "-a", trash], surroundings)}
            times = medians(rotated_rounds(cases, rounds))
            print_times(f"preview, {paths} paths {title}, {rounds} rounds", times, ours="preview")
            goals.at_most("preview, of du -a", 0.8, times["preview"] / times["du -a"])
    goals.end()


main()
