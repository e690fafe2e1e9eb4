#!/usr/bin/env python3
"""Makes the files that another implementation, Python's plistlib, writes of the value that it reads in ours."""
import pathlib
import plistlib

here = pathlib.Path(__file__).parent
value = plistlib.loads((here / "ours.binary.plist").read_bytes())
xml = plistlib.dumps(value, sort_keys=False)
(here / "python.xml.plist").write_bytes(xml)
(here / "utf16.xml.plist").write_bytes(xml.decode().replace("UTF-8", "UTF-16").encode("utf-16"))
(here / "python.binary.plist").write_bytes(plistlib.dumps(value, fmt=plistlib.FMT_BINARY, sort_keys=False))
