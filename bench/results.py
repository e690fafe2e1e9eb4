#!/usr/bin/env -S python3 -B
"""Compares showing 100,000 results lines with a table that scrolls to each of them."""
import statistics

from benching import Goals, PROGRAMS, environment, options, print_times, printed, rotated_rounds, throwaway_folder

PROGRAM = f"{PROGRAMS}/window_results_bench"


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    with throwaway_folder() as folder:
        surroundings = environment(folder)
        rounds = rotated_rounds({mode: lambda mode=mode: printed([PROGRAM, mode], surroundings)
                                 for mode in ("widget", "turns", "burst", "memory")}, 1 if quick else 5)
    times = {mode: statistics.median(numbers[0] for numbers in rounds[mode]) for mode in rounds}
    longest = sorted(numbers[1] for numbers in rounds["turns"])
    print_times("100,000 lines, offscreen", {
        "QTableWidget, scrolled for each, 100 in a turn": times["widget"],
        "results window, 100 in a turn": times["turns"],
        "results window, all in one turn": times["burst"]})
    goals.at_most("100 in a turn, of the QTableWidget", 0.02, times["turns"] / times["widget"])
    # One round in five may be spoilt by other load on the machine.
    goals.at_most("longest turn of all rounds but the worst, ms", 16, longest[-2] if len(longest) > 1 else longest[0])
    goals.at_most("all in one turn, ms", 60, times["burst"] * 1000)
    goals.at_most("memory for each line beyond its text, bytes", 300, times["memory"])
    goals.end()


main()
