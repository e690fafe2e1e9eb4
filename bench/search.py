#!/usr/bin/env -S python3 -B
"""Compares the search for words with a bare walk and with fdfind.

Makes five home-like trees in a throwaway folder, runs the cases in turn, round after round, and prints the medians with
their ratios and goals."""
import os
import random
import statistics
import subprocess
import time

from benching import Goals, PROGRAMS, options, rotated_rounds, medians, throwaway_folder

PROGRAM = f"{PROGRAMS}/search_bench"

TREES = 5
DEEPEST = 14
PER_FOLDER = 16
CONSONANTS, VOWELS = "bcdfghjklmnprstvw", "aeiou"
FOREIGN = ["Größe", "résumé", "Отчёт", "Φάκελος", "写真", "Łódź", "señal", "şehir"]
ENDINGS = [".txt", ".jpg", ".png", ".html", ".json", ".cpp", ".pdf", ".sqlite", ".log", ""]
WORD_COUNTS = [1, 10, 100, 1000, 10000]


def syllables(rng, least, most):
    return "".join(rng.choice(CONSONANTS) + rng.choice(VOWELS) for _ in range(rng.randint(least, most)))


def file_name(rng, number):
    kind = rng.random()
    if kind < 0.03:
        stem = f"{rng.choice(FOREIGN)} {number}"
    elif kind < 0.15:
        stem = f"IMG_{rng.randrange(10 ** 8):08}_{number % 1000}"
    elif kind < 0.25:
        stem = f"{rng.getrandbits(64):016x}"
    elif kind < 0.251:
        stem = f"the Secret of {number}"
    else:
        stem = f"{syllables(rng, 2, 4).capitalize()}{rng.choice('_- .')}{syllables(rng, 1, 4)}_{number}"
    return stem + rng.choice(ENDINGS)


def make_tree(top, entries, seed):
    """Fills every folder with about PER_FOLDER entries, with as many folders among them as are needed to go on."""
    rng = random.Random(seed)
    waiting = [(top, 0)]
    os.makedirs(top)
    number = 0
    while number < entries:
        folder, depth = waiting.pop(rng.randrange(len(waiting)))
        descriptor = os.open(folder, os.O_RDONLY)
        for _ in range(min(entries - number, 1 + int(rng.expovariate(1 / PER_FOLDER)))):
            number += 1
            if depth < DEEPEST and (not waiting or rng.random() < 1.05 / PER_FOLDER):
                name = f"{file_name(rng, number)}.d"
                os.mkdir(name, dir_fd=descriptor)
                waiting.append((f"{folder}/{name}", depth + 1))
            else:
                os.mknod(file_name(rng, number), dir_fd=descriptor)
        os.close(descriptor)
        if not waiting:
            waiting.append((top, 0))


def word_list(count):
    """Makes words of usual length that seldom match but whose beginnings often do."""
    rng = random.Random(42)
    words = {"secret": None}
    while len(words) < count:
        word = syllables(rng, 4, 6)
        words[rng.choice(FOREIGN) + word if rng.random() < 0.05 else word] = None
    return list(words)


def write_lines(path, lines):
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(lines) + "\n")
    return path


def seconds(command, output=subprocess.DEVNULL):
    start = time.perf_counter()
    subprocess.run(command, check=True, stdout=output)
    return time.perf_counter() - start


def lines(command):
    return subprocess.run(command, check=True, capture_output=True).stdout.splitlines()


def measure_searches(program, folder, lists, trees, rounds):
    ten = "|".join(word_list(10))
    cases = {
        "bare walk": [program, "walk", *trees],
        "1 word": [program, "search", lists[1], *trees],
        "10 words": [program, "search", lists[10], *trees],
        "10,000 words": [program, "search", lists[10000], *trees],
        "10 words, walker, one thread": [program, "walker", "1", lists[10], *trees],
        "10 words, walker, all threads": [program, "walker", "0", lists[10], *trees],
        "fdfind, 10 words": ["fdfind", "-uuu", "-i", "--prune", ten, *trees],
    }
    if lines(cases["10 words, walker, all threads"]) != lines(cases["10 words, walker, one thread"]):
        raise SystemExit("with all threads the walker finds something else, or in another order")
    found, expected = len(lines(cases["10 words"])), len(lines(cases["fdfind, 10 words"]))
    if found != expected:
        raise SystemExit(f"found {found} items, fdfind {expected}")
    timed = {name: lambda command=command: seconds(command) for name, command in cases.items()}
    return found, medians(rotated_rounds(timed, rounds))


def measure_matching(program, lists, names, rounds):
    results = {count: [] for count in lists}
    for _ in range(rounds):
        for count, words in lists.items():
            output = subprocess.run([program, "match", words, names], check=True, capture_output=True, text=True).stdout
            results[count].append([float(field) for field in output.split()])
    return {count: [statistics.median(column) for column in zip(*rows)] for count, rows in results.items()}


def report(goals, found, times, matching):
    print(f"{'search, ' + str(found) + ' found':34}{'seconds':>10}")
    for name, value in times.items():
        print(f"  {name:32}{value:10.3f}")
    for name, other, goal in [("10 words", "bare walk", 1.2), ("10 words", "fdfind, 10 words", 0.75),
                              ("10,000 words", "1 word", 1.5), ("10 words, walker, all threads", "bare walk", 0.65),
                              ("10 words, walker, all threads", "fdfind, 10 words", 0.65)]:
        goals.at_most(f"{name}, of {other}", goal, times[name] / times[other])
    print(f"\n{'matching alone':34}{'build ms':>10}{'ns/name':>10}")
    for count, (build, name_time, _) in matching.items():
        print(f"{count:>8} words{'':20}{build:10.2f}{name_time:10.1f}")
    goals.at_most("building for the most words, ms", 50, max(build for build, _, _ in matching.values()))
    slowest = max(name_time for _, name_time, _ in matching.values())
    goals.at_most("matching a name, any number of words, ns", 150, slowest)


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    entries, rounds = (20_000, 1) if quick else (1_000_000, 7)
    with throwaway_folder() as folder:
        trees = [f"{folder}/tree{number}" for number in range(TREES)]
        for number, tree in enumerate(trees):
            make_tree(tree, entries // TREES, number)
        lists = {count: write_lines(f"{folder}/words{count}", word_list(count)) for count in WORD_COUNTS}
        rng = random.Random(99)
        names = write_lines(f"{folder}/names", [file_name(rng, number) for number in range(200_000)])
        found, times = measure_searches(PROGRAM, folder, lists, trees, rounds)
        report(goals, found, times, measure_matching(PROGRAM, lists, names, rounds))
    goals.end()


if __name__ == "__main__":
    main()
