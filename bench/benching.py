"""Shared by the benchmark tables: throwaway folders, rounds in rotated order, medians and goals."""
import argparse
import contextlib
import os
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time

PROGRAMS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../build/bench/bin")
TIDEWELL = f"{PROGRAMS}/tidewell"
MISSED = 3  # exit status of a table that missed a goal; any other failure means that it could not be measured


def options(description):
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--quick", action="store_true",
                        help="small sizes, to see that everything runs; no goal is judged")
    return parser.parse_args()


@contextlib.contextmanager
def throwaway_folder(file_system=None, size="4G"):
    """Makes a new folder, as root with its own file system: "tmpfs", or "ext4" in memory. Removes it at the end."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that the "finally" clauses run
    folder = tempfile.mkdtemp(prefix="tidewell-bench-")
    mounted = []
    try:
        if file_system and os.geteuid() == 0:
            mounted.append(mount(["-t", "tmpfs", "-o", f"size={size}", "tmpfs"], folder))
        if file_system == "ext4" and mounted:
            folder = f"{folder}/mounted"
            os.mkdir(folder)
            mounted.append(mount(["-o", "loop", ext4_image(f"{folder}.ext4")], folder))
        yield folder
    finally:
        for place in reversed(mounted):
            subprocess.run(["umount", place], check=True)
        shutil.rmtree(mounted[0] if mounted else folder)


def mount(words, folder):
    subprocess.run(["mount", *words, folder], check=True)
    return folder


def ext4_image(path):
    with open(path, "wb") as file:
        file.truncate(2 ** 30)
    subprocess.run(["mkfs.ext4", "-q", "-F", "-N", "200000", "-E", "lazy_itable_init=0,lazy_journal_init=0", path],
                   check=True)
    return path


def environment(folder, **more):
    """The complete environment of every measured program: all of the user's folders are below the given one."""
    # The folders have their usual names, because some programs ignore the variables.
    places = {"HOME": "home", "XDG_DATA_HOME": "home/.local/share", "XDG_STATE_HOME": "home/.local/state",
              "XDG_CONFIG_HOME": "home/.config", "XDG_CACHE_HOME": "home/.cache", "XDG_RUNTIME_DIR": "run",
              "TMPDIR": "tmp"}
    for name in places.values():
        os.makedirs(f"{folder}/{name}", mode=0o700, exist_ok=True)
    return {"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8", "QT_QPA_PLATFORM": "offscreen",
            "QT_LOGGING_RULES": "default.warning=false",
            **{variable: f"{folder}/{name}" for variable, name in places.items()}, **more}


def seconds(command, surroundings, status=0):
    """Runs the command with its output in a file and returns how long it took. Exits if the status is another one."""
    with tempfile.TemporaryFile(dir=surroundings["TMPDIR"]) as output:
        start = time.perf_counter()
        ended = subprocess.run(command, env=surroundings, stdin=subprocess.DEVNULL, stdout=output,
                               stderr=subprocess.STDOUT).returncode
        taken = time.perf_counter() - start
        if ended != status:
            output.seek(0)
            sys.exit(f"{command[0]} ended with {ended}: {output.read()[-1000:].decode(errors='replace')}")
    return taken


def printed(command, surroundings):
    """Runs the command and returns the numbers that it prints."""
    result = subprocess.run(command, env=surroundings, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True)
    return [float(word) for word in result.stdout.split()]


def rotated_rounds(cases, rounds):
    """Calls all cases (functions by name) once per round, in rotated order. Returns lists of results by name."""
    results = {name: [] for name in cases}
    names = list(cases)
    for _ in range(rounds):
        for name in names:
            results[name].append(cases[name]())
        names = names[1:] + names[:1]
    return results


def medians(results):
    return {name: statistics.median(values) for name, values in results.items()}


def print_times(title, times, unit="s", scale=1, ours=None):
    """Prints one line per case. The ratio is ours to each other case or, without ours, each case to the first."""
    print(f"\n{title:50}{unit:>12}{'ours : this' if ours else 'this : first':>14}")
    for name, value in times.items():
        ratio = times[ours] / value if ours else value / next(iter(times.values()))
        print(f"  {name:48}{value * scale:12.3f}{ratio:14.3f}")
    sys.stdout.flush()


class Goals:
    def __init__(self, quick):
        self.quick = quick
        self.missed = 0

    def at_most(self, what, limit, value):
        good = value <= limit
        verdict = "not judged" if self.quick else "ok" if good else "MISSED"
        self.missed += not good and not self.quick
        print(f"  {what}: goal <= {limit:g}: {value:.3g} {verdict}", flush=True)

    def end(self):
        sys.exit(MISSED if self.missed else 0)
