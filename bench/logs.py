#!/usr/bin/env -S python3 -B
"""What the logs sheet costs with 200,000 logs in 5,000 folders: the first tree beside a bare loop of fstatat, a change,
saved choices, memory, and the longest turn of the event loop."""
import os
import statistics
import subprocess

from benching import (Goals, PROGRAMS, environment, medians, options, print_times, printed, rotated_rounds,
                      throwaway_folder)

PROGRAM = f"{PROGRAMS}/window_logs_bench"
PER_FOLDER = 40


def make_logs(folder, count):
    for number in range(count // PER_FOLDER):
        os.makedirs(f"{folder}/folder {number}")
        for log in range(PER_FOLDER - 1):
            with open(f"{folder}/folder {number}/{log:08}.log", "wb"):
                pass


def measure_reading(surroundings, folder, rounds, goals):
    times = medians(rotated_rounds(
        {name: lambda mode=mode: printed([PROGRAM, mode, folder], surroundings)[0]
         for name, mode in (("first tree", "read"), ("bare loop of fstatat", "bare"))}, rounds))
    print_times(f"first tree, {rounds} rounds", times, "ms", ours="first tree")
    goals.at_most("first tree, of the bare loop", 0.8, times["first tree"] / times["bare loop of fstatat"])


def measure_sheet(mode, surroundings, folder, longest, goals):
    lines = subprocess.run([PROGRAM, mode, folder], env=surroundings, stdout=subprocess.PIPE, text=True,
                           check=True).stdout
    print(f"\n{mode:50}{'ms':>12}{'longest turn':>14}")
    steps = [line.split("\t") for line in lines.splitlines()]
    for name, taken, turn in steps:
        print(f"  {name:48}{taken:>12}{turn:>14}")
    goals.at_most(f"longest turn, {mode}, in ms", longest, max(float(turn) for _, _, turn in steps))
    subprocess.run(["find", folder, "-name", "new.log", "-delete"], check=True)


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    count, rounds = (2_000, 1) if quick else (200_000, 5)
    with throwaway_folder("tmpfs") as place:
        surroundings = environment(place)
        folder = f"{place}/logs"
        make_logs(folder, count)
        measure_reading(surroundings, folder, rounds, goals)
        several = {mode: [printed([PROGRAM, mode, folder], surroundings) for _ in range(rounds)]
                   for mode in ("memory", "reload", "merge")}
        goals.at_most("memory, in bytes an entry", 250, statistics.median(one for one, in several["memory"]))
        goals.at_most("a reload after one change, in ms of CPU time", 5, statistics.median(
            one for one, in several["reload"]))
        few, many = (statistics.median(column) for column in zip(*several["merge"]))
        goals.at_most("a saved node among 100,000, of one among 10,000", 2, many / few)
        measure_sheet("sheet", surroundings, folder, 50, goals)
        # Qt lays out all 200,000 rows anew at each change.
        measure_sheet("expanded", surroundings, folder, 150, goals)
    goals.end()


main()
