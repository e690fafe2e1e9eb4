"""What the tables share: a throwaway world, rounds in rotated order, medians, and goals."""
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
MISSED = 3  # the exit status of a table; others mean that it could not be measured


def options(description):
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--quick", action="store_true",
                        help="small sizes, to see that everything runs; no goal is judged")
    return parser.parse_args()


@contextlib.contextmanager
def throwaway_folder(file_system=None, size="4G"):
    """A new folder; with a file system of its own ("tmpfs" or "ext4", the latter in memory) when we may mount one."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that what follows "finally" is done
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
    """The only environment that anything measured here ever gets: every place of the user lies below the folder."""
    # Where each folder lies usually, because not every program looks at the variables.
    places = {"HOME": "home", "XDG_DATA_HOME": "home/.local/share", "XDG_STATE_HOME": "home/.local/state",
              "XDG_CONFIG_HOME": "home/.config", "XDG_CACHE_HOME": "home/.cache", "XDG_RUNTIME_DIR": "run",
              "TMPDIR": "tmp"}
    for name in places.values():
        os.makedirs(f"{folder}/{name}", mode=0o700, exist_ok=True)
    return {"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8", "QT_QPA_PLATFORM": "offscreen",
            "QT_LOGGING_RULES": "default.warning=false",
            **{variable: f"{folder}/{name}" for variable, name in places.items()}, **more}


def seconds(command, surroundings, status=0):
    """How long the whole command took. What it printed goes to a file, as it would from a script."""
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
    """The numbers that the command printed."""
    result = subprocess.run(command, env=surroundings, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True)
    return [float(word) for word in result.stdout.split()]


def rotated_rounds(cases, rounds):
    """cases: functions by name. Each round calls all of them and begins with another one. Their results, in lists."""
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
    """One line for each case. The ratios are those of the goals: our case to each other one, or each to the first."""
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
