#!/usr/bin/env -S python3 -B
"""Measures looking for the running copies of an application among 10,000 processes, beside pgrep and ps.

Starts the processes, all with the same environment as a desktop's, and prints medians of CPU times."""
import contextlib
import os
import shutil
import signal
import subprocess
import sys
import time

from benching import (Goals, PROGRAMS, environment, medians, options, print_times, printed, rotated_rounds,
                      throwaway_folder)

PROGRAM = f"{PROGRAMS}/applications_bench"
COPIES = 3
SETTLING = 4  # seconds; younger processes are looked at more closely


@contextlib.contextmanager
def processes(program, count, surroundings):
    """Runs so many copies of the program, which gets a time in seconds, and ends them."""
    started = []
    try:
        for _ in range(count):
            started.append(os.posix_spawn(program, [program, "3600"], surroundings))
        yield
    finally:
        for process in started:  # not reaped yet, so nobody else has the identifier
            os.kill(process, signal.SIGKILL)
        for process in started:
            os.waitpid(process, 0)


def processor_time(command, surroundings):
    """Runs the command and returns the milliseconds of CPU time that it took."""
    child = subprocess.Popen(command, env=surroundings, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        sys.exit(f"{command[0]} ended with {child.returncode}")
    return (usage.ru_utime + usage.ru_stime) * 1000


def look(looks, victim, surroundings):
    first, later, found = printed([PROGRAM, str(looks), victim], surroundings)
    if found != COPIES:
        sys.exit(f"{found:.0f} copies found, not {COPIES}")
    return first, later


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    count, rounds, looks = (500, 1, 5) if quick else (10_000, 5, 30)
    with throwaway_folder() as folder:
        surroundings = environment(folder)
        victim = f"{folder}/victim"
        shutil.copy("/bin/sleep", victim)
        with processes("/bin/sleep", count, {**surroundings, **{f"VARIABLE_{n}": "x" * 40 for n in range(60)}}), \
                processes(victim, COPIES, surroundings):
            time.sleep(SETTLING)
            runs = {"look": lambda: look(looks, victim, surroundings),
                    "pgrep": lambda: processor_time(["pgrep", "-f", victim], surroundings),
                    "ps": lambda: processor_time(["ps", "-e", "-o", "pid,args"], surroundings)}
            results = rotated_rounds(runs, rounds)
        times = medians({"first look": [first for first, _ in results["look"]],
                         "later look": [later for _, later in results["look"]],
                         "pgrep -f": results["pgrep"], "ps": results["ps"]})
        print_times(f"CPU time among {count} processes, {rounds} rounds", times, "ms", ours="later look")
        goals.at_most("first look, in ms", 400, times["first look"])
        goals.at_most("later look, in ms", 20, times["later look"])
    goals.end()


main()
