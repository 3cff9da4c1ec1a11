#!/usr/bin/env python3
"""Plays each session of this folder and compares its results, byte for byte, with the file beside it.

The line number and path at the end of an error message are compared as {#LINE:UNIT}. With UPDATE=1 in the environment
the results are written to the file instead.
"""
import os
import pathlib
import re
import unittest

from tool import ToolTest

SITE = re.compile(rb"\{#\d+:[^{}]*?(\w+)\.cpp\}")


class Sessions(ToolTest):
    def check(self, session):
        results = self.folder / "results.jsonl"
        self.replay("--results", results, session)
        actual = SITE.sub(rb"{#LINE:\1}", results.read_bytes())
        expected_file = session.with_suffix(".results.jsonl")
        if os.environ.get("UPDATE") == "1":
            expected_file.write_bytes(actual)
        expected = expected_file.read_bytes()
        pairs = zip(expected.splitlines() + [b"(end)"], actual.splitlines() + [b"(end)"])
        want, got = next((pair for pair in pairs if pair[0] != pair[1]), (b"", b""))
        self.assertEqual(got.decode(), want.decode(), expected_file)
        self.assertEqual(actual, expected)


def check_of(session):
    return lambda self: self.check(session)


for path in pathlib.Path(__file__).parent.glob("*.jsonl"):
    if not path.name.endswith(".results.jsonl"):
        setattr(Sessions, f"test_{path.stem}", check_of(path))

if __name__ == "__main__":
    unittest.main()
