#!/usr/bin/env -S python3 -B
"""How long the preview's window takes to show, sort, filter, scroll and untick a million items, and the longest turn of
the event loop meanwhile."""
import statistics
import subprocess

from benching import Goals, PROGRAMS, environment, options, throwaway_folder
from delete import fill

PROGRAM = f"{PROGRAMS}/window_preview_bench"


def measured(surroundings):
    """Returns milliseconds and the longest turn by step."""
    lines = subprocess.run([PROGRAM], env=surroundings, stdout=subprocess.PIPE, text=True, check=True).stdout
    steps = (line.split("\t") for line in lines.splitlines())
    return {name: (float(taken), float(turn)) for name, taken, turn in steps}


def table(items, rounds):
    """Fills one folder with that many items, prints a table and returns the figures of each round."""
    with throwaway_folder("tmpfs") as folder:
        surroundings = environment(folder)
        fill(surroundings["XDG_DATA_HOME"] + "/Trash/files", items, content=b"")
        figures = [measured(surroundings) for _ in range(rounds)]
    print(f"\n{items} items, {rounds} rounds, medians{'':26}{'ms':>12}{'longest turn':>14}")
    for name in figures[0]:
        taken, turn = (statistics.median(figure[name][column] for figure in figures) for column in (0, 1))
        print(f"  {name:48}{taken:12.1f}{turn:14.1f}")
    return figures


def median_of(figures, step):
    return statistics.median(figure[step][0] for figure in figures)


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    few, many, rounds = (2_000, 20_000, 1) if quick else (100_000, 1_000_000, 5)
    # A folder is listed whole before its first item is planned, so this grows with the largest folder.
    goals.at_most(f"first rows of {few}, in ms", 100, median_of(table(few, rounds), "first rows"))
    figures = table(many, rounds)
    goals.at_most("from the end of planning to all rows, in ms", 100, median_of(figures, "all rows"))
    # One round in five may be spoilt by other load on the machine.
    opening = ["first rows", "plan"]
    for what, steps in (("while planning", opening), ("later", [name for name in figures[0] if name not in opening])):
        turns = sorted(max(figure[name][1] for name in steps) for figure in figures)
        goals.at_most(f"longest turn {what}, all rounds but the worst, in ms", 50, turns[-2 if rounds > 1 else -1])
    goals.end()


main()
