#!/usr/bin/env python3
"""Feeds the player one bad line at a time: it must exit with 2 and print FILE:LINE: what is wrong, in one line.

The cases are in bad_input.txt: a session line, then a line "  -> " with a part of the message, in turn; "#" begins a
comment.
"""
import pathlib
import unittest

from tool import REPLAY, ToolTest

CASES = pathlib.Path(__file__).with_name("bad_input.txt")
GOOD = '{"call":"IsEnabled","sensor":0}\n'


class BadInput(ToolTest):
    def test_is_refused_with_its_place(self):
        with CASES.open(encoding="utf-8") as file:
            lines = [line.rstrip("\n") for line in file if not line.startswith("#")]
        self.assertTrue(lines and len(lines) % 2 == 0)
        for bad, expected in zip(lines[0::2], lines[1::2]):
            with self.subTest(bad):
                self.assertTrue(expected.startswith("  -> "), expected)
                self.write("session.jsonl", f"{GOOD}\n{bad}\n{GOOD}")
                done = self.run_command([*REPLAY, "--results", "-", "session.jsonl"], status=2)
                message, = done.stderr.splitlines()
                self.assertTrue(message.startswith("session.jsonl:3: "), message)
                self.assertIn(expected[5:], message)
                self.assertEqual(len(done.stdout.splitlines()), 1)


if __name__ == "__main__":
    unittest.main()
