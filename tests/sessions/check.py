#!/usr/bin/env python3
"""Plays a session and compares the results, byte for byte, with the file beside it.

    check.py SESSION.jsonl LSC_REPLAY...

LSC_REPLAY may be several words, an emulator and the tool. The line number and path at the end of an error message are
compared as {#LINE:UNIT}. With UPDATE=1 in the environment the results are written down instead.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

SITE = re.compile(rb"\{#\d+:[^{}]*?(\w+)\.cpp\}")

session, replay = pathlib.Path(sys.argv[1]), sys.argv[2:]
expected_file = session.with_suffix(".results.jsonl")
with tempfile.NamedTemporaryFile() as results:
    subprocess.run([*replay, "--results", results.name, str(session)], check=True, stdout=subprocess.DEVNULL)
    actual = SITE.sub(rb"{#LINE:\1}", pathlib.Path(results.name).read_bytes())

if os.environ.get("UPDATE") == "1":
    expected_file.write_bytes(actual)
expected = expected_file.read_bytes()
if actual == expected:
    sys.exit(0)
pairs = zip(expected.splitlines() + [b"(end)"], actual.splitlines() + [b"(end)"])
want, got = next((pair for pair in pairs if pair[0] != pair[1]), (b"(as many lines)", b"(as many lines)"))
sys.exit(f"{expected_file}: results differ\nexpected: {want.decode()}\nactual:   {got.decode()}")
