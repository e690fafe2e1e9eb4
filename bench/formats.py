#!/usr/bin/env -S python3 -B
"""Compares removing entries from other programs' files with what any program needs for such a file.

Each case reads a file, removes a key at every depth and replaces the file by a new one, which is flushed and renamed
into place; Tidewell does that as its cleaner does, with everything that it checks and keeps.
Property lists are compared with Python's plistlib; other formats with reading, writing and flushing the same bytes, XML
also with a bare pass of Expat. What is written is compared with what Python removes. Each side times itself without its
start-up. Prints medians and ratios. Exits with 3 if a goal is missed and with 1 if a result is wrong.
"""
import gc
import json
import os
import plistlib
import re
import subprocess
import sys
import time

from benching import Goals, PROGRAMS, medians, options, print_times, rotated_rounds, throwaway_folder
from plist import list_of_size

PROGRAM = f"{PROGRAMS}/formats_bench"
KEY = "visits"
PLISTS = {"XML list": (plistlib.FMT_XML, 0.2), "binary list": (plistlib.FMT_BINARY, 0.15)}


def record(number):
    return {"name": f"Window {number}", "path": f"/home/someone/Documents/file-{number}.txt", "frame": [number, 7, 1.5],
            KEY: number, "visible": number % 2 == 0, "title": "Übersicht \\ \"Музыка\"", "zoom": None}


def json_text(count):
    return json.dumps([record(number) for number in range(count)], indent=2, ensure_ascii=False)


def ini_text(count):
    return "".join(f"[Window {number}]\n" + "".join(f"{key}={value}\n" for key, value in record(number).items()) + "\n"
                   for number in range(count))


def xml_text(count):
    return "<windows>\n" + "".join(
        f'  <window id="{number}">\n'
        + "".join(f"    <{key}>{value}</{key}>\n" for key, value in record(number).items())
        + "  </window>\n" for number in range(count)) + "</windows>\n"


# Format: how to make a text of so many records, and how Python removes the key from it.
TEXTS = {
    "JSON": (json_text, lambda text: re.sub(f'    "{KEY}": .*\n', "", text)),
    "INI": (ini_text, lambda text: re.sub(f"(?m)^{KEY}=.*\n", "", text)),
    "XML": (xml_text, lambda text: re.sub(f"    <{KEY}>.*\n", "", text)),
}


def without(value):
    if isinstance(value, dict):
        return {key: without(inner) for key, inner in value.items() if key != KEY}
    return [without(inner) for inner in value] if isinstance(value, list) else value


def ours(path, copy, task=KEY):
    return float(subprocess.check_output([PROGRAM, path, copy, task]))


def python_list(path, copy, kind):
    gc.collect()
    start = time.perf_counter()
    with open(path, "rb") as file:
        value = without(plistlib.load(file))
    with open(copy + ".new", "wb") as file:
        plistlib.dump(value, file, fmt=kind, sort_keys=False)
        file.flush()
        os.fsync(file.fileno())
    os.rename(copy + ".new", copy)
    return time.perf_counter() - start


def content(path):
    with open(path, "rb") as file:
        return file.read()


def property_lists(folder, goals, size, rounds):
    path, theirs, mine = (f"{folder}/{end}" for end in ("list", "python", "ours"))
    for name, (kind, limit) in PLISTS.items():
        with open(path, "wb") as file:
            file.write(list_of_size(size, kind))
        times = medians(rotated_rounds({"Tidewell": lambda: ours(path, mine),
                                        "plistlib": lambda: python_list(path, theirs, kind)}, rounds))
        print_times(f"{name}, {size // 10**6} MB", times, "ms", 1000, "Tidewell")
        if plistlib.loads(content(mine)) != plistlib.loads(content(theirs)):
            sys.exit(f"{name}: what was written differs from what Python wrote")
        goals.at_most(f"{name}, of plistlib", limit, times["Tidewell"] / times["plistlib"])


def texts(folder, goals, size, rounds):
    path, copy, mine = (f"{folder}/{end}" for end in ("text", "copy", "ours"))
    for name, (make, removed) in TEXTS.items():
        text = make(size * 1000 // len(make(1000).encode()))
        with open(path, "wb") as file:
            file.write(text.encode())
        cases = {"Tidewell": lambda: ours(path, mine), "reading and writing": lambda: ours(path, copy, "copy")}
        if name == "XML":
            cases["the same with Expat"] = lambda: ours(path, copy, "expat")
        times = medians(rotated_rounds(cases, rounds))
        print_times(f"{name}, {len(text.encode()) // 10**6} MB", times, "ms", 1000, "Tidewell")
        if content(mine).decode() != removed(text):
            sys.exit(f"{name}: what was written differs from what Python wrote")
        if name == "XML":
            goals.at_most("XML, of Expat, reading and writing", 1.5, times["Tidewell"] / times["the same with Expat"])
        else:
            goals.at_most(f"{name}, of reading and writing", 4, times["Tidewell"] / times["reading and writing"])


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    list_size, text_size, rounds = (10**6, 2 * 10**6, 1) if quick else (9 * 10**6, 50 * 10**6, 7)
    with throwaway_folder() as folder:
        property_lists(folder, goals, list_size, rounds)
        texts(folder, goals, text_size, rounds)
    goals.end()


if __name__ == "__main__":
    main()
