#!/usr/bin/env python3
"""lsc_replay from the command line: messages and exit statuses for what cannot be played or imported."""
import gzip
import resource
import subprocess
import unittest

from tool import HANDHELD, REPLAY, ToolTest


class Command(ToolTest):
    def test_says_what_is_wrong(self):
        self.write("s.jsonl", '{"call":"IsEnabled","sensor":0}\n')
        self.write("expect.jsonl", '{"call":"CalcOISValue","type":1,"input":{},"frame":0,"sensor":0}\n'
                                   '#expect {"sensor":0,"type":1,"x":"1.0","y":"one"}\n')
        self.write("packed.jsonl", gzip.compress(HANDHELD.read_bytes()))
        self.write("wide.jsonl", HANDHELD.read_text().encode("utf-16"))
        self.write("wide_unmarked.jsonl", HANDHELD.read_text().encode("utf-16-le"))
        cases = [
            (1, "missing.txt: No such file", ["import", "missing.txt"]),
            (1, ".: is a directory", ["import", "."]),
            (2, "s.jsonl:1: no message of the library", ["import", "s.jsonl"]),
            (2, "CAPTURE is required", ["import"]),
            (2, "SESSION is required", []),
            (2, "expect.jsonl:2: y: expected a number as text", ["expect.jsonl"]),
            (2, "packed.jsonl:1: compressed: unpack", ["packed.jsonl"]),
            (2, "make it UTF-8 first, with iconv", ["wide.jsonl"]),
            (2, "make it UTF-8 first, with iconv", ["wide_unmarked.jsonl"]),
            (2, "as in --check=0.1", ["--check", "0.1", "s.jsonl"]),
            (2, "as in --check=0.1", ["s.jsonl", "--check", "0.1"]),
            (2, "as in --check=0.1", ["--check", "0.1"]),
        ]
        for status, message, arguments in cases:
            with self.subTest(message):
                self.assertIn(message, self.replay(*arguments, status=status))

    def test_a_session_may_come_from_standard_input(self):
        with HANDHELD.open() as session:
            self.assertEqual(self.replay("-", stdin=session), self.replay(HANDHELD))

    def test_input_is_not_overwritten(self):
        log = self.run_command([*REPLAY, "--log", HANDHELD]).stderr
        capture = self.write("capture.txt", log)
        message = self.replay("import", "capture.txt", "-o", "capture.txt", status=1)
        self.assertIn("capture.txt: this is an input file; choose another output file", message)
        self.assertEqual(capture.read_text(), log)

    def test_lack_of_memory_is_said(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_AS, (100 << 20, 100 << 20))
        if subprocess.run([*REPLAY, "--version"], preexec_fn=limit, capture_output=True, check=False).returncode != 0:
            self.skipTest("a build that needs more memory by itself")
        self.write("s.jsonl", '{"samples":5,"data":[%s]}' % ",".join(["[1,2,3,4,5]"] * 2_000_000))
        self.assertEqual(self.replay("s.jsonl", status=1, preexec_fn=limit), "lsc_replay: not enough memory\n")

    def test_help_ends_with_examples(self):
        for arguments in ["--help"], ["import", "--help"]:
            self.assertIn("Examples:", self.replay(*arguments))


if __name__ == "__main__":
    unittest.main()
