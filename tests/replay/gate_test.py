#!/usr/bin/env python3
"""Gates and data: comparing sessions, the check against a device, and the files for other programs."""
import json
import re
import subprocess
import unittest
import xml.etree.ElementTree

from tool import HANDHELD, REPLAY, ROOT, ToolTest

EXPECTED = '#expect {"frame":9,"sensor":0,"type":1,"x":"%s","y":"%s"}\n'
PYTHON = "/usr/bin/python3"  # which has Debian's packages


def has_pandas():
    try:
        return subprocess.run([PYTHON, "-c", "import pandas"], capture_output=True, check=False).returncode == 0
    except OSError:
        return False


class GateTest(ToolTest):
    def expecting(self, x, y):
        """The example up to its first position, with what a device would have made of it."""
        lines = HANDHELD.read_text().splitlines(keepends=True)
        asked = [i for i, line in enumerate(lines) if "fillLscOISCompInfo" in line]
        return self.write("session.jsonl", "".join(lines[:asked[3] + 1]) + EXPECTED % (x, y))


class Check(GateTest):
    def test_tolerance(self):
        session = self.expecting("-10.024919", "-15.151465")  # 0.0005 from y
        self.replay(session)
        self.assertIn("session.jsonl: check failed: 1 expectation not met", self.replay("--check", session, status=1))
        self.replay("--check=0.001", session)
        self.replay("--check=0.0004", session, status=1)
        self.replay("--check", self.expecting("-10.024919", "-15.150965"))

    def test_nothing_to_check_is_a_failure(self):
        self.assertIn("has no expectations", self.replay("--check", HANDHELD, status=1))
        self.assertIn("number from 0 on", self.replay("--check=-1", HANDHELD, status=2))

    def test_junit(self):
        for x, failures in ("-10.024919", 0), ("1.000000", 1):
            self.run_command([*REPLAY, "--junit", "report.xml", self.expecting(x, "-15.150965")])
            suite = xml.etree.ElementTree.parse(self.folder / "report.xml").getroot()
            self.assertEqual((suite.get("tests"), suite.get("failures")), ("1", str(failures)))
            self.assertEqual(suite[0].get("name"), "sensor 0 type 1")
            self.assertEqual(["frame 9: the device gave x 1.000000" in failure.text for failure in suite.iter("failure")],
                             [True] * failures)


class Compare(GateTest):
    def test_two_builds_and_two_sessions(self):
        self.replay("--csv", "rows.csv", HANDHELD)
        self.assertRegex(self.replay("compare", "rows.csv", HANDHELD), r"exposures served +(\d+) +\1\n")
        self.write("empty.jsonl", "")
        self.assertRegex(self.replay("compare", "empty.jsonl", "empty.jsonl"), r"distance of positions +none\n")
        text = HANDHELD.read_text()
        self.write("slow.jsonl", text.replace('"rolling_shutter":{"0":15980000', '"rolling_shutter":{"0":7990000'))
        done = self.run_command([*REPLAY, "compare", HANDHELD, "slow.jsonl"], status=1).stdout
        self.assertRegex(done, r"different positions +\d{3}\n")
        self.assertRegex(done, r"sensor 0 type 1 start of frame \d+: x \S+ y \S+ -> x")
        self.assertEqual(done.count("->"), 20)

    def test_unusable_input(self):
        self.write("bad.jsonl", "{}\n")
        self.replay("--csv", "rows.csv", HANDHELD)
        rows = (self.folder / "rows.csv").read_text().splitlines()
        self.write("short.csv", "\n".join([rows[0], rows[1][:9]]))
        self.assertIn("bad.jsonl:1: expected", self.replay("compare", HANDHELD, "bad.jsonl", status=2))
        self.assertIn("nope.csv: No such file", self.replay("compare", HANDHELD, "nope.csv", status=2))
        self.assertIn("short.csv:2: expected 14 values", self.replay("compare", "short.csv", HANDHELD, status=2))


class Data(GateTest):
    def test_summary_has_the_figures_that_are_printed(self):
        text = self.replay("--summary", "summary.json", HANDHELD)
        summary = json.loads((self.folder / "summary.json").read_text())
        sensor = summary["sensors"][0]
        self.assertRegex(text, rf"frames asked +{summary['frames']}\n")
        for reason, count in sensor["not_served"].items():
            self.assertRegex(text, rf"  {reason} +{count}\n")
        self.assertEqual(sensor["exposures"], 691)
        self.assertIn("median {median}, 95 % up to {p95}, largest {max}".format(**sensor["match_us"]), text)
        for finding in summary["findings"]:
            self.assertIn(finding["advice"], text)
            self.assertRegex(finding["code"], r"^[a-z-]+$")

    def test_rows_are_those_of_the_table(self):
        table = self.replay("--csv", "rows.csv", HANDHELD).split("\n\n")[0].splitlines()
        rows = (self.folder / "rows.csv").read_text().splitlines()
        self.assertEqual(len(table), len(rows))
        self.assertEqual(rows[0].count(","), 13)

    @unittest.skipUnless(has_pandas(), "python3-pandas is not installed")
    def test_recipe(self):
        code = re.search(r"```python\n(.*?)```", (ROOT / "docs/data.md").read_text(encoding="utf-8"), re.S)[1]
        self.replay("--csv", "rows.csv", HANDHELD)
        printed = self.run_command([PYTHON, "-c", code]).stdout
        self.assertRegex(printed, r"no sample within 1000 us of exposure start +3\n")
        self.assertRegex(printed, r"\[8, 16\) +120 +1\.44")


if __name__ == "__main__":
    unittest.main()
