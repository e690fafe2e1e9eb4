#!/usr/bin/env -S python3 -B
"""Compares deleting many paths, one child process each, with a bare spawn loop, find and BleachBit."""
import os

from benching import (Goals, PROGRAMS, TIDEWELL, environment, medians, options, print_times, printed, rotated_rounds,
                      seconds, throwaway_folder)

FLOOR, QUEUE = f"{PROGRAMS}/spawn_bench", f"{PROGRAMS}/delete_bench"
RECORD = b"[Trash Info]\nPath=/home/someone/a%20file\nDeletionDate=2024-05-06T07:08:09\n"


def fill(folder, count, ending="", content=b"x"):
    os.makedirs(folder, exist_ok=True)
    for number in range(count):
        with open(f"{folder}/file {number}{ending}", "wb") as file:
            file.write(content)


def expect_empty(folders, command):
    for folder in folders:
        if os.path.exists(folder) and os.listdir(folder):
            raise SystemExit(f"{command[0]} left {os.listdir(folder)[0]}: its figure means nothing")


class Trash:
    """A Trash with a number of files and their records, filled again before each measurement."""

    def __init__(self, surroundings, count):
        self.surroundings, self.count = surroundings, count
        trash = surroundings["XDG_DATA_HOME"] + "/Trash"
        self.folders = [f"{trash}/files", f"{trash}/info"]

    def emptied_by(self, *command):
        fill(self.folders[0], self.count)
        fill(self.folders[1], self.count, ".trashinfo", RECORD)
        taken = seconds(command, self.surroundings)
        expect_empty(self.folders, command)
        return taken

    def cases(self):
        return {
            "tidewell clean --only trash": lambda: self.emptied_by(TIDEWELL, "clean", "--only", "trash", "--yes"),
            "bare loop of posix_spawn and waitpid": lambda: self.emptied_by(FLOOR, *self.folders),
            "find -exec rm -rf {} \\;": lambda: self.emptied_by(
                "find", *self.folders, "-mindepth", "1", "-maxdepth", "1", "-exec", "rm", "-rf", "{}", ";"),
            "bleachbit --clean system.trash": lambda: self.emptied_by("bleachbit", "--clean", "system.trash"),
        }


def measure_trash(folder, count, rounds, unwanted=()):
    cases = Trash(environment(folder), count).cases()
    wanted = {name: case for name, case in cases.items() if name.split()[0] not in unwanted}
    times = medians(rotated_rounds(wanted, rounds))
    print_times(f"Trash of {count} files, {2 * count} children, {rounds} rounds", times, ours=next(iter(times)))
    return {name.split()[0]: value for name, value in times.items()}


def measure_queue(folder, count, rounds):
    """Measures seconds per child, timed inside the programs around the deletions only."""
    surroundings = environment(folder)
    heap = f"{folder}/heap"

    def case(*command):
        def measure():
            fill(heap, count)
            taken = printed([*command, heap], surroundings)[0]
            expect_empty([heap], command)
            return taken / count
        return measure

    times = medians(rotated_rounds({
        "bare loop of posix_spawn and waitpid": case(FLOOR),
        "queue": case(QUEUE, "queue"),
        "queue, 1 GB in memory": case(QUEUE, "ballast"),
        "queue, results window showing": case(QUEUE, "window"),
        "deleter, waiting for each": case(QUEUE, "synchronously"),
    }, rounds))
    print_times(f"per child, {count} files, {rounds} rounds", times, "us", 1e6)
    return list(times.values())


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    rounds = 1 if quick else 5
    few, many, more, most = (5, 20, 40, 100) if quick else (50, 2000, 10000, 50000)
    with throwaway_folder("tmpfs") as folder:
        print(f"files on {'tmpfs' if os.path.ismount(folder) else 'the file system of ' + os.path.dirname(folder)}")
        times = measure_trash(folder, few, 1 if quick else 15)
        goals.at_most(f"{few} files, of bleachbit", 0.7, times["tidewell"] / times["bleachbit"])
        times = measure_trash(folder, many, rounds)
        goals.at_most(f"{many} files, of the bare loop", 1.10, times["tidewell"] / times["bare"])
        goals.at_most(f"{many} files, of find", 0.8, times["tidewell"] / times["find"])
        times = measure_trash(folder, more, rounds, unwanted=["bare", "bleachbit"])
        goals.at_most(f"{more} files, of find", 0.8, times["tidewell"] / times["find"])

        # Compares within a round, because the machine may be busier in another one.
        per_child = [measure_trash(folder, count, 1, unwanted=["find", "bleachbit"]) for count in (many, most)]
        dearer = [times["tidewell"] / times["bare"] for times in per_child]
        goals.at_most(f"per child, {most} files against {many}, beside the bare loop", 1.05, dearer[1] / dearer[0])

        floor, queue, ballast, window, synchronously = measure_queue(folder, 20 if quick else 1000, rounds)
        goals.at_most("queue with 1 GB in memory, of the same without", 1.05, ballast / queue)
        goals.at_most("queue with the results window, of the bare loop", 1.15, window / floor)
        goals.at_most("waiting for each, of the bare loop", 1.3, synchronously / floor)
    goals.end()


if __name__ == "__main__":
    main()
