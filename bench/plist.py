#!/usr/bin/env -S python3 -B
"""Compares reading and writing property lists with Python's plistlib.

Both read the same file and write what they read to another, which is flushed to the disk and renamed into place. The
rounds alternate, and each side times itself without its start-up. Prints medians in milliseconds and their ratios.
Exits with 3 if a goal is missed and with 1 if the two sides disagree about the content.
"""
import datetime
import gc
import os
import plistlib
import random
import statistics
import subprocess
import sys
import time

from benching import Goals, PROGRAMS, options, throwaway_folder

PROGRAM = f"{PROGRAMS}/plist_bench"

FORMATS = {"XML": (plistlib.FMT_XML, 0.3), "binary": (plistlib.FMT_BINARY, 0.6)}
GROWTH = 2.5


def preferences(count, seed=7):
    """Makes a list like a preference file: a dictionary of dictionaries with settings of all types."""
    chance = random.Random(seed)

    def window(number):
        return {
            "name": f"Window {number} of {chance.choice(['Übersicht', 'Documents', 'Музыка', 'Downloads'])}",
            "path": f"/home/someone/Documents/folder {chance.randrange(1000)}/file-{number}.txt",
            "frame": [chance.randrange(3000) for _ in range(4)],
            "opened": datetime.datetime(2020, 1, 1) + datetime.timedelta(seconds=chance.randrange(10**8)),
            "visits": chance.randrange(10**9),
            "zoom": chance.random(),
            "visible": chance.random() < 0.5,
            "bookmark": chance.randbytes(chance.randrange(30, 120)),
        }

    return {f"com.example.window.{number}": window(number) for number in range(count)}


def list_of_size(size, kind):
    """Returns the bytes of a list of about that size."""
    per_item = len(plistlib.dumps(preferences(2000), fmt=kind)) / 2000
    return plistlib.dumps(preferences(int(size / per_item)), fmt=kind)


def python_round(path, copy, kind):
    start = time.perf_counter()
    with open(path, "rb") as file:
        value = plistlib.load(file)
    read = time.perf_counter() - start
    start = time.perf_counter()
    with open(copy + ".new", "wb") as file:
        plistlib.dump(value, file, fmt=kind, sort_keys=False)
        file.flush()
        os.fsync(file.fileno())
    os.rename(copy + ".new", copy)
    return read, time.perf_counter() - start


def our_round(path, copy):
    return tuple(float(word) for word in subprocess.check_output([PROGRAM, path, copy]).split())


def medians(rounds):
    return [statistics.median(times) for times in (*zip(*rounds), [sum(both) for both in rounds])]


def content(path):
    with open(path, "rb") as file:
        return plistlib.load(file)


def compare(folder, name, sizes, rounds):
    """Returns, for each size, the medians of reading, writing and both, for Python and for ours.

    In each round all sizes have their turn, so that a slow moment of the disk meets them all, and the two sides take
    turns in being first."""
    kind, _ = FORMATS[name]
    path, theirs, ours = (os.path.join(folder, end) for end in ("list", "python", "ours"))
    times = {size: ([], []) for size in sizes}
    for size in sizes:
        with open(f"{path}{size}", "wb") as file:
            file.write(list_of_size(size * 10**6, kind))
    for turn in range(rounds):
        for size, (python, mine) in times.items():
            gc.collect()
            sides = [lambda: python.append(python_round(f"{path}{size}", theirs, kind)),
                     lambda: mine.append(our_round(f"{path}{size}", ours))]
            for side in sides if turn % 2 == 0 else reversed(sides):
                side()
            if content(ours) != content(theirs):
                sys.exit(f"{name}, {size} MB: what was written differs from what Python read")
    return {size: (medians(python), medians(mine)) for size, (python, mine) in times.items()}


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    sizes, rounds = ((1, 2, 4), 1) if quick else ((9, 10, 20), 7)
    print(f"{'':8}{'MB':>4} {'':8}{'Python ms':>10}{'ours ms':>9}{'ratio':>7}")
    with throwaway_folder() as folder:
        for name, (_, limit) in FORMATS.items():
            results = compare(folder, name, sizes, rounds)
            for size, times in results.items():
                for label, python, mine in zip(("read", "write", "both"), *times):
                    print(f"{name:8}{size:4} {label:8}{python * 1000:10.1f}{mine * 1000:9.1f}{mine / python:7.3f}")
            first, second, third = results.values()
            goals.at_most(f"{name}, both, of Python", limit, first[1][2] / first[0][2])
            goals.at_most(f"{name}, growth from {sizes[1]} to {sizes[2]} MB", GROWTH, third[1][2] / second[1][2])
    goals.end()


if __name__ == "__main__":
    main()
