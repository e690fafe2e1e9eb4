#!/usr/bin/env -S python3 -B
"""Measures how much memory and time the worst lists and settings files take until they are read or refused.

Each file is as bad as its kind can be, and as long as a list may be or longer. Each is read twice, the second time with
so little address space that an allocation beyond the limits ends the program. Prints the peak memory of the process in
MB and the seconds. Exits with 3 if a goal is missed and with 1 if a reading does not end as expected.
"""
import os
import plistlib
import resource
import struct
import subprocess
import sys

from benching import Goals, PROGRAMS, options, throwaway_folder

PROGRAM = f"{PROGRAMS}/lists_bench"
MEMORY = 300
SECONDS = 3
ADDRESS_SPACE = 400 * 10**6

LONGEST = 64 * 10**6 - 1000
TOO_LONG = 100 * 10**6
HEAD = b'<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0">'


def xml(inside, repeated=b"", size=LONGEST, before=b"<array>", after=b"</array>"):
    count = max(0, size - len(inside)) // max(1, len(repeated))
    return HEAD + before + inside + repeated * count + after + b"</plist>"


def rules(count, kind):
    rule = [{"Active": True, "Description": f"Rule {n}", "FilePath": f"~/Documents/folder {n % 1000}/file-{n}",
             "WhatToDelete": 0}
            for n in range(count)]
    return plistlib.dumps(rule, fmt=kind, sort_keys=False)


def words(size):
    return plistlib.dumps([b"%08d" % n for n in range(size // 8)])


def binary(objects, reference=4):
    """Makes a binary list of the given objects, of which the first is the top object."""
    table, offset = [], 8
    for each in objects:
        table.append(struct.pack(">Q", offset))
        offset += len(each)
    trailer = [bytes(6), bytes([8, reference]), struct.pack(">QQQ", len(objects), 0, offset)]
    return b"".join([b"bplist00", *objects, *table, *trailer])


def array(references):
    return b"\xaf\x12" + struct.pack(">I", len(references)) + b"".join(struct.pack(">I", each) for each in references)


def shared(count):
    """Makes an array of very many references to one value."""
    return binary([b"\xaf\x12" + struct.pack(">I", count) + bytes([0, 0, 0, 1]) * count, b"\x09"])


def blow_up():
    """Makes twenty arrays, each of which holds the next one 14 times."""
    return binary([array([n + 1] * 14) for n in range(20)] + [b"\x09"])


def dictionary(count):
    """Makes a binary dictionary with a number of unsorted keys."""
    keys = [b"\x57" + b"%07d" % (n * 7919 % count) for n in range(count)]
    references = b"".join(struct.pack(">I", n + 2) for n in range(count))
    return binary([b"\xdf\x12" + struct.pack(">I", count) + references + bytes([0, 0, 0, 1]) * count, b"\x09", *keys])


def entities():
    levels = "".join(f'<!ENTITY e{n + 1} "{f"&e{n};" * 10}">' for n in range(10))
    return f'<!DOCTYPE plist [<!ENTITY e0 "ha">{levels}]><plist><string>&e10;</string></plist>'.encode()


def keys(count):
    return b"".join(b"<key>%07d</key><true/>" % (n * 7919 % count) for n in range(count))


def ragged(size):
    """Makes arrays just longer than the capacity of a growing vector, with single values between them."""
    one = b"<array>" + b"<true/>" * 131073 + b"</array>" + b"<array><true/><true/><true/><true/><true/></array>" * 9
    return xml(b"", one, size)


# Name, kind of list, expected outcome of reading it, and the file.
CASES = [
    ("200,000 rules, XML", "rules", "read", lambda: rules(200_000, plistlib.FMT_XML)),
    ("200,000 rules, binary", "rules", "read", lambda: rules(200_000, plistlib.FMT_BINARY)),
    ("as many empty rules as are read", "rules", "read",
     lambda: xml(b"", b"<dict><key>FilePath</key><string/></dict>", 832_000 * 41)),
    ("rules with one unknown key", "rules", "read",
     lambda: xml(b"", b"<dict><key>FilePath</key><string/><key>a</key><true/></dict>", 499_000 * 59)),
    ("rules with long paths", "rules", "read",
     lambda: xml(b"", b"<dict><key>FilePath</key><string>/%s</string></dict>" % (b"p" * 1900))),
    ("rules with many unknown keys", "rules", "read",
     lambda: xml(b"", b"<dict><key>FilePath</key><string/>" + keys(1000) + b"</dict>", 1200 * 23_000)),
    ("<true/>", "rules", "refused", lambda: xml(b"", b"<true/>")),
    ("<true/>, just within the budget", "rules", "refused", lambda: xml(b"", b"<true/>", 2_499_000 * 7)),
    ("<string/>", "rules", "refused", lambda: xml(b"", b"<string/>")),
    ("<dict/>", "rules", "refused", lambda: xml(b"", b"<dict/>")),
    ("short arrays", "rules", "refused", lambda: xml(b"", b"<array>" + b"<true/>" * 5 + b"</array>")),
    ("short arrays, just within the budget", "rules", "refused",
     lambda: xml(b"", b"<array>" + b"<true/>" * 5 + b"</array>", 400_000 * 50)),
    ("short strings", "rules", "refused", lambda: xml(b"", b"<string>sixteen bytes +</string>")),
    ("arrays of awkward lengths", "rules", "refused", lambda: ragged(16 * 10**6)),
    ("512 levels of arrays", "rules", "refused",
     lambda: xml(b"", b"<true/>" * 40, before=b"<array>" * 512, after=b"</array>" * 512)),
    ("100,000 levels of arrays", "rules", "refused", lambda: xml(b"<array>" * 100_000)),
    ("one string", "rules", "refused", lambda: xml(b"<string>", b"s", after=b"</string></array>")),
    ("one string of character references", "rules", "refused",
     lambda: xml(b"<string>", b"&#x20AC;", after=b"</string></array>")),
    ("one string in CDATA", "rules", "refused", lambda: xml(b"<string><![CDATA[", b"s", after=b"]]></string></array>")),
    ("one string in UTF-16", "rules", "refused",
     lambda: ('\ufeff<plist><array><string>' + '€' * 31_900_000 + '</string></array></plist>').encode("utf-16-le")),
    ("one data", "rules", "refused", lambda: xml(b"<data>", b"QUJD", after=b"</data></array>")),
    ("one integer", "rules", "refused", lambda: xml(b"<integer>", b"1", after=b"</integer></array>")),
    ("many data", "rules", "refused", lambda: xml(b"", b"<data>QUJDQUJDQUJDQUJDQUJDQUJD</data>")),
    ("one comment", "rules", "refused", lambda: xml(b"<!--", b"c", after=b"--></array>")),
    ("one attribute", "rules", "refused", lambda: xml(b"<array a='", b"a", after=b"'/></array>")),
    ("many attributes", "rules", "refused",
     lambda: HEAD + b"<array" + b"".join(b" a%d=''" % n for n in range(5_000_000)) + b"/></plist>"),
    ("many comments", "rules", "read", lambda: xml(b"", b"<!--" + b"c" * 999_000 + b"-->")),
    ("one name of an element", "rules", "refused", lambda: xml(b"<", b"n", after=b"/></array>")),
    ("entities in entities", "rules", "refused", entities),
    ("binary: references to one value", "rules", "refused", lambda: shared(2_499_000)),
    ("binary: more references to one value", "rules", "refused", lambda: shared(15_900_000)),
    ("binary: arrays in arrays in arrays", "rules", "refused", blow_up),
    ("binary: one string in UTF-16", "rules", "refused",
     lambda: binary([array([1]), b"\x6f\x12" + struct.pack(">I", 31_900_000) + b"\x20\xac" * 31_900_000])),
    ("binary: one data", "rules", "refused",
     lambda: binary([array([1]), b"\x4f\x12" + struct.pack(">I", LONGEST - 100) + bytes(LONGEST - 100)])),
    ("beyond the length: <true/>", "rules", "refused", lambda: xml(b"", b"<true/>", TOO_LONG)),
    ("beyond the length: one string", "rules", "refused",
     lambda: xml(b"<string>", b"s", TOO_LONG, after=b"</string></array>")),
    ("beyond the length: binary", "rules", "refused", lambda: shared(TOO_LONG // 4)),
    ("a sparse terabyte", "rules", "refused", None),
    ("words, 1 MB", "words", "read", lambda: words(10**6)),
    ("words, too many", "words", "refused", lambda: words(40 * 10**6)),
    ("one long word", "words", "refused", lambda: xml(b"<data>", b"QUJD", after=b"</data></array>")),
    ("empty words", "words", "read", lambda: xml(b"", b"<data/>", 2_400_000 * 7)),
    ("settings: as many keys as are read", "settings", "read",
     lambda: xml(keys(1_300_000), before=b"<dict>", after=b"</dict>")),
    ("settings: more keys", "settings", "refused", lambda: xml(keys(2_000_000), before=b"<dict>", after=b"</dict>")),
    ("settings: binary keys", "settings", "read", lambda: dictionary(1_300_000)),
    ("settings: one string", "settings", "read",
     lambda: xml(b"<key>a</key><string>", b"s", before=b"<dict>", after=b"</string></dict>")),
]


def write(path, contents):
    with open(path, "wb") as file:
        if contents:
            file.write(contents())
        else:
            file.truncate(2**40)


def reading(kind, path, address_space=None):
    """Reads the file and returns the outcome, the seconds and the memory in MB."""
    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (address_space, address_space))
    ended = subprocess.run([PROGRAM, kind, path], stdout=subprocess.PIPE, text=True,
                           preexec_fn=limit if address_space else None)
    if ended.returncode != 0:
        sys.exit(f"reading {path} ended with {ended.returncode}")
    outcome, seconds, memory, problem = ended.stdout.rstrip("\n").split(" ", 3)
    return outcome, float(seconds), int(memory) / 1000, problem


def main():
    quick = options(__doc__).quick
    goals = Goals(quick)
    worst_memory = worst_seconds = 0
    failed = False
    print(f"{'':40}{'file MB':>9}{'MB':>7}{'s':>7}  ends")
    with throwaway_folder() as folder:
        path = os.path.join(folder, "List.plist")
        for name, kind, expected, contents in CASES[:3] if quick else CASES:
            write(path, contents)
            outcome, seconds, memory, problem = reading(kind, path)
            narrow = reading(kind, path, ADDRESS_SPACE)[0]
            print(f"{name:40}{os.path.getsize(path) / 10**6:9.1f}{memory:7.0f}{seconds:7.2f}  {outcome}", flush=True)
            if expected != outcome or expected != narrow:
                failed = True
                print(f"  expected {expected}, with little address space it was {narrow}: {problem}")
            worst_memory, worst_seconds = max(worst_memory, memory), max(worst_seconds, seconds)
        goals.at_most("memory in MB", MEMORY, worst_memory)
        goals.at_most("seconds", SECONDS, worst_seconds)
    if failed:
        sys.exit(1)
    goals.end()


main()
