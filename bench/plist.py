#!/usr/bin/env python3
"""Property lists from file to file, beside Python's plistlib: bench/plist.py build/bench/bin/plist_bench [rounds]

Both read the same file and write what they read to another, which is flushed to the disk and renamed into place. The rounds
of both take turns; each side times itself without its start-up. Prints medians in milliseconds and their ratios, and ends with 1
when a figure is missed or the two sides disagree about the content.
"""
import datetime
import gc
import os
import plistlib
import random
import statistics
import subprocess
import sys
import tempfile
import time

FORMATS = {"XML": (plistlib.FMT_XML, 0.3), "binary": (plistlib.FMT_BINARY, 0.6)}
MEGABYTES = (9, 10, 20)
GROWTH = 2.5


def preferences(count, seed=7):
    """Like a preference file: a dictionary of dictionaries with settings of all types."""
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
    """Bytes of a list of about that size."""
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


def our_round(program, path, copy):
    return tuple(float(word) for word in subprocess.check_output([program, path, copy]).split())


def medians(rounds):
    return [statistics.median(times) for times in (*zip(*rounds), [sum(both) for both in rounds])]


def content(path):
    with open(path, "rb") as file:
        return plistlib.load(file)


def compare(program, folder, name, rounds):
    """For each size the medians of reading, writing and both, of Python and of ours. In each round all sizes have their turn, so
    that a slow moment of the disk meets them all."""
    kind, _ = FORMATS[name]
    path, theirs, ours = (os.path.join(folder, end) for end in ("list", "python", "ours"))
    times = {size: ([], []) for size in MEGABYTES}
    for size in MEGABYTES:
        with open(f"{path}{size}", "wb") as file:
            file.write(list_of_size(size * 10**6, kind))
    for _ in range(rounds):
        for size, (python, mine) in times.items():
            gc.collect()
            python.append(python_round(f"{path}{size}", theirs, kind))
            mine.append(our_round(program, f"{path}{size}", ours))
            if content(ours) != content(theirs):
                sys.exit(f"{name}, {size} MB: what was written differs from what Python read")
    return {size: (medians(python), medians(mine)) for size, (python, mine) in times.items()}


def main():
    program = sys.argv[1]
    rounds = max(5, int(sys.argv[2])) if len(sys.argv) > 2 else 7
    missed = False
    print(f"{'':8}{'MB':>4} {'':8}{'Python ms':>10}{'ours ms':>9}{'ratio':>7}   figure")
    with tempfile.TemporaryDirectory(dir=os.environ.get("BENCH_FOLDER")) as folder:
        for name, (_, limit) in FORMATS.items():
            results = compare(program, folder, name, rounds)
            for size, times in results.items():
                for label, python, mine in zip(("read", "write", "both"), *times):
                    ratio = mine / python
                    figure = f"at most {limit}" if (size, label) == (9, "both") else ""
                    missed |= bool(figure) and ratio > limit
                    print(f"{name:8}{size:4} {label:8}{python * 1000:10.1f}{mine * 1000:9.1f}{ratio:7.3f}   {figure}")
            growth = results[20][1][2] / results[10][1][2]
            missed |= growth > GROWTH
            print(f"{name:8} 10 to 20 MB: {growth:.2f} times   at most {GROWTH}")
    sys.exit(1 if missed else 0)


main()
