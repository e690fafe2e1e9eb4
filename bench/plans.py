#!/usr/bin/env -S python3 -B
"""What a long list of paths costs around its deletion: stopping, long turns of the event loop, the plan's memory and
the deletion rules.

Fills a Trash and a folder in a throwaway folder, has delete_plan_bench work on them, and prints medians and goals."""
import os
import shutil

from benching import (Goals, PROGRAMS, environment, medians, options, print_times, printed, rotated_rounds,
                      throwaway_folder)
from delete import fill

PROGRAM = f"{PROGRAMS}/delete_plan_bench"
STOPS = ["planning", "deleting", "checking", "line"]


def fill_trash(surroundings, paths):
    """Files without records, so that all of them are in one queue."""
    trash = surroundings["XDG_DATA_HOME"] + "/Trash"
    shutil.rmtree(trash, ignore_errors=True)
    fill(f"{trash}/files", paths)


def measure_turns(surroundings, paths, rounds, goals):
    def case(*words):
        def measure():
            fill_trash(surroundings, paths)
            return printed([PROGRAM, *words], surroundings)
        return measure

    cases = {when: case("stop", when) for when in STOPS}
    figures = rotated_rounds({**cases, "whole run": case("run")}, rounds)
    stops = medians({when: [stopped for stopped, _ in figures[when]] for when in STOPS})
    turns = medians({when: [numbers[-1] for numbers in figures[when]] for when in figures})
    print(f"\n{paths} paths, {rounds} rounds")
    for when, taken in stops.items():
        goals.at_most(f"stop until the end, {when}, in ms", 200, taken)
    for when, taken in turns.items():
        goals.at_most(f"longest turn, {when}, in ms", 50, taken)


def measure_guard(surroundings, folder, paths, rounds, goals):
    fill(folder, paths, content=b"")
    names = {"deletion rules": "guard", "with 1,000 kept paths": "keep",
             "with 1,000 kept names": "patterns",
             "bare loop of fstatat": "looks", "bare loop of realpath": "realpaths"}
    times = medians(rotated_rounds(
        {name: lambda mode=mode: printed([PROGRAM, mode, folder], surroundings)[0] for name, mode in names.items()},
        rounds))
    print_times(f"per 100,000 of {paths} paths, {rounds} rounds", times, "ms", ours="deletion rules")
    goals.at_most("deletion rules, per 100,000 paths, in ms", 100, times["deletion rules"])
    ratio = times["deletion rules"] / times["bare loop of fstatat"]
    goals.at_most("deletion rules, of the bare loop of fstatat", 1, ratio)
    for name in ("with 1,000 kept paths", "with 1,000 kept names"):
        goals.at_most(f"{name}, of the deletion rules without", 1.1, times[name] / times["deletion rules"])


def measure_memory(surroundings, folder, paths, rounds, goals):
    fill(folder, paths, content=b"")
    figures = rotated_rounds({"plan": lambda: printed([PROGRAM, "memory", folder], surroundings)}, rounds)["plan"]
    if any(items != paths for items, _ in figures):
        raise SystemExit(f"not all of {paths} paths were planned: the figures mean nothing")
    taken = medians({"plan": [taken for _, taken in figures]})["plan"]
    goals.at_most(f"plan of {paths} items, bytes an item beyond its name", 150, taken)


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    rounds = 1 if quick else 5
    trashed, judged, planned = (2_000, 1_000, 10_000) if quick else (200_000, 100_000, 1_000_000)
    with throwaway_folder("tmpfs") as folder:
        print(f"files on {'tmpfs' if os.path.ismount(folder) else 'the file system of ' + os.path.dirname(folder)}")
        surroundings = environment(folder)
        measure_turns(surroundings, trashed, rounds, goals)
        measure_guard(surroundings, f"{folder}/judged", judged, rounds, goals)
        measure_memory(surroundings, f"{folder}/planned", planned, rounds, goals)
    goals.end()


main()
