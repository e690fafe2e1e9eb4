#!/usr/bin/env -S python3 -B
"""Compares starting a command with bleachbit --version, and the window's first paint with a minimal window's."""
import contextlib
import shutil
import subprocess

from benching import (Goals, PROGRAMS, TIDEWELL, environment, medians, options, print_times, rotated_rounds, seconds,
                      throwaway_folder)


@contextlib.contextmanager
def server(*command):
    """Runs a server of the desktop for a while; yields its address, which is the line that it prints."""
    child = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    try:
        yield child.stdout.readline().strip()
    finally:
        child.terminate()
        child.wait()


@contextlib.contextmanager
def desktop():
    """Makes the environment of a session with its own bus and screen; without Xvfb, Qt's offscreen platform."""
    with server("dbus-daemon", "--session", "--nofork", "--print-address") as bus:
        if not shutil.which("Xvfb"):
            yield {"DBUS_SESSION_BUS_ADDRESS": bus, "QT_QPA_PLATFORM": "offscreen"}
            return
        with server("Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24") as number:
            yield {"DBUS_SESSION_BUS_ADDRESS": bus, "QT_QPA_PLATFORM": "xcb", "DISPLAY": f":{number}"}


def compare(title, commands, surroundings, rounds):
    """Prints the times of two commands and returns the ratio of the first one, which is ours, to the other."""
    cases = {" ".join(command).rsplit("/")[-1]: lambda command=command: seconds(command, surroundings)
             for command in commands}
    times = medians(rotated_rounds(cases, rounds))
    print_times(f"{title}, {rounds} rounds", times, "ms", 1000, ours=next(iter(times)))
    ours, other = times.values()
    return ours / other


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    with throwaway_folder() as folder:
        ratio = compare("command", [[TIDEWELL, "paths"], ["bleachbit", "--version"]], environment(folder),
                        3 if quick else 21)
        goals.at_most("of bleachbit", 0.06, ratio)
        with desktop() as screen:
            surroundings = environment(folder, LD_PRELOAD=f"{PROGRAMS}/first_paint.so", **screen)
            seconds([TIDEWELL], surroundings)  # the first launch would show the greeting
            ratio = compare(f"window, {screen['QT_QPA_PLATFORM']}, first paint",
                            [[TIDEWELL], [f"{PROGRAMS}/window_minimal_bench"]], surroundings, 3 if quick else 11)
            goals.at_most("of the minimal window", 1.5, ratio)
    goals.end()


main()
