#!/usr/bin/env python3
"""Makes the files that another implementation, Python's plistlib, writes of one value, and checks that it reads ours."""
import datetime
import pathlib
import plistlib

VALUE = {
    "zebra first": True,
    "no": False,
    "integers": [0, 1, -1, 255, 256, 65535, 65536, 2**32 - 1, 2**32, 2**63 - 1, -(2**63)],
    "reals": [0.5, -1e300, 0.1, 5e-324],
    "text": "a < b & \"c\" > 'd'\n\tTäglich, 東京, 😀",
    "empty": ["", b"", {}, []],
    "date": datetime.datetime(2024, 2, 29, 23, 59, 58),
    "early": datetime.datetime(1601, 1, 1),
    "data": bytes(range(256)),
    "again": {"text": "Täglich", "nested": {"data": [b"\x00", b"\x00\xff", b"abc"]}},
    "a long key with ümlauts, longer than fourteen": "fourteen bytes, and then some",
}

here = pathlib.Path(__file__).parent
xml = plistlib.dumps(VALUE, sort_keys=False)
(here / "python.xml.plist").write_bytes(xml)
(here / "utf16.xml.plist").write_bytes(xml.decode().replace("UTF-8", "UTF-16").encode("utf-16"))
(here / "python.binary.plist").write_bytes(plistlib.dumps(VALUE, fmt=plistlib.FMT_BINARY, sort_keys=False))
read = plistlib.loads((here / "ours.binary.plist").read_bytes())
assert read == VALUE and list(read) == list(VALUE)
