#!/usr/bin/env python3
"""Recorded lens positions as sessions: what counts as a row, exact numbers, whose a sample is, messages."""
import json
import sys
import unittest

from tool import ROOT, ToolTest

PROGRAM = [sys.executable, ROOT / "examples/columns_to_session.py", "--ois", "ois.txt", "--frames", "frames.txt"]
UNITS = {"ns": "1639493638769", "us": "1639493638.769", "ms": "1639493.6387699", "s": "01639.493638769"}


class ColumnsTest(ToolTest):
    def convert(self, ois, frames, *options, status=0):
        self.write("ois.txt", ois)
        self.write("frames.txt", frames)
        done = self.run_command([*PROGRAM, *options], status)
        return done.stderr if status else done.stdout

    def batches(self, *arguments):
        """The samples of each hand-over, by its frame number."""
        lines = [json.loads(line) for line in self.convert(*arguments).splitlines() if line.startswith("{")]
        pairs = [(line, lines[i + 1]) for i, line in enumerate(lines) if "samples" in line]
        return {update["frame"]: samples["data"] for samples, update in pairs}


class Rows(ColumnsTest):
    def test_every_separator_and_head(self):
        expected = {1: [[99, -2.5, 1, -2.5, 1]]}
        for head in "", "#1 2 3 4 5 6 7\n", "\n \t\n", "frame;zoom;x;y;time\n":
            for row in "1 0.5 -2.5 1 99", "1,0.5,-2.5,1,99\r\n", "  1;\t0.5 ; -2.5,1,99 more", "1 zoom -25e-1 1E0 99":
                with self.subTest(head + row):
                    frames = head + "99 5 - 10 99 - 1\n"
                    self.assertEqual(self.batches(head + row, frames, "--ois-columns", "frame,-,x,y,time"), expected)

    def test_every_nanosecond_counts(self):
        for unit, text in UNITS.items():
            frames = f"{text} 0\n"
            text = self.convert("0 0 1639493638769\n", frames, "--ois-columns", "x,y,time", "--frame-columns",
                                "time,exposure", "--frame-unit", unit, "--readout", "0")
            self.assertIn('"int64":[1639493638769]', text, unit)

    def test_numbers_of_single_precision_in_their_fewest_digits(self):
        cases = {"0.1": "0.1", "-0": "-0.0", "16777217": "16777216.0", "1e16": "1e+16", "0.00001": "1e-05",
                 "3.4028235e38": "3.4028235e+38", "1e-45": "1e-45", "1.262177448e-29": "1.2621775e-29", ".5": "0.5"}
        for text, written in cases.items():
            made = self.convert(f"1 {text} 1 5\n", "5 0 - 0 5 - 1\n")
            self.assertIn(f'"data":[[5,{written},1.0,{written},1.0]]', made)
            self.assertIn('"rolling_shutter":{}', made)  # a readout of 0 is none

    def test_what_is_no_number(self):
        for bad in "-2", "2e9", "nine", "9223372036854775808", "99999999999999999999", "0x10", "9" * 5000:
            message = self.convert(f"1 1 1 1\n1 1 1 {bad}\n", "5 0 - 0 5 - 1\n", status=2)
            self.assertIn(f'ois.txt:2: time: expected a time in ns, got "{bad}"; check the columns', message)
        for bad in "nan", "1e39", "-", "1.0.0", "1_0", "0x10":
            message = self.convert(f"1 1 1 1\n1 1 {bad} 1\n", "5 0 - 0 5 - 1\n", status=2)
            self.assertIn(f'ois.txt:2: y: expected a number, got "{bad}"; check the columns (--ois-columns)', message)
        message = self.convert("4294967296 1 1 1\n", "5 0 - 0 5 - 1\n", status=2)
        self.assertIn('ois.txt:1: frame: expected a whole number, got "4294967296"', message)


class Sessions(ColumnsTest):
    def test_by_frame_or_by_time(self):
        ois = "1 0.5 1 105\n1 1 1 110\n2 2 1 111\n9 3 1 999\n"
        for columns in "frame,x,y,time", "-,x,y,time":
            options = ["--ois-columns", columns, "--frame-columns", "time,exposure", "--readout", "10"]
            self.assertEqual(self.batches(ois, "100 5\n200 5\n", *options),
                             {1: [[105, .5, 1, .5, 1], [110, 1, 1, 1, 1]], 2: [[111, 2, 1, 2, 1]]})
            self.assertIn("# Made from ois.txt (4 lens positions, 1 of them of frames that are not there) and",
                          self.convert(ois, "100 5\n200 5\n", *options))

    def test_the_first_of_frames_with_one_number(self):
        text = self.convert("1 0 0 1\n", "100 5 - 10 100 - 1\n200 5 - 10 200 - 1\n")
        self.assertEqual(text.count('"UpdateSensorData"'), 1)
        self.assertIn('"frame":1,"timestamp":100}', text)

    def test_hall_counts_scale_and_offset(self):
        options = ["--ois-columns", "x,y,time,hall_x,hall_y,frame", "--ois-unit", "us", "--scale", "0.5"]
        frames = "1000 0 - 0 1000 - 1\n"
        self.assertEqual(self.batches("3 4 2.5 7 8 1\n", frames, "--offset", "-0.5", *options),
                         {1: [[2000, 7, 8, 1.5, 2]]})
        self.assertIn("ois.txt:1: time: expected a time", self.convert("3 4 2.5 7 8 1\n", frames, "--offset", "-3",
                                                                       *options, status=2))

    def test_clock_of_the_lens_positions(self):
        options = ["--frame-columns", "time,exposure,readout,ois_time"]
        frames = "100 5 10 1100\n200 5 10 1203\n"
        for columns in "frame,x,y,time", "-,x,y,time":
            self.assertEqual(self.batches("1 1 1 1105\n2 2 2 1210\n", frames, "--ois-columns", columns, *options),
                             {1: [[105, 1, 1, 1, 1]], 2: [[207, 2, 2, 2, 2]]})
        self.assertEqual(self.batches("1 1 1 1105\n", "100 5 - 10 1100 - 1\n"), {1: [[105, 1, 1, 1, 1]]})

    def test_asked_after_the_delay_with_its_own_readout(self):
        frames = "".join(f"{n}00 5 - {readout} {n}00 - {n}\n" for n, readout in ((1, 10), (2, 10), (3, 20)))
        for delay, order in (0, "q1 h2 q2 h3 20 q3"), (1, "h2 q1 h3 q2 20 q3"), (4_000_000_000, "h2 h3 q1 q2 20 q3"):
            text = self.convert("1 0 0 1\n2 0 0 2\n3 0 0 3\n", frames, "--delay", delay)
            seen = {f'"frame":{n},': f"h{n}" for n in (1, 2, 3)} | {f"[{n}00]": f"q{n}" for n in (1, 2, 3)}
            seen |= {f'shutter":{{"0":{readout}}}': str(readout) for readout in (10, 20)}
            found = [name for line in text.splitlines() for part, name in seen.items() if part in line]
            self.assertEqual(found, ["10", "h1", *order.split()])

    def test_plays(self):
        samples = [(900_000_000 + k * 1_000_000, k * 0.25, -k) for k in range(500)]
        ois = "".join(f"{max(0, (t - 1_000_000_000) // 16_000_000) + 1} {x} {y} {t}\n" for t, x, y in samples)
        frames = "".join(f"{start} 2000000 - 10000000 {start} - {n + 1}\n"
                         for n, start in enumerate(range(1_000_000_000, 1_320_000_000, 16_000_000)))
        self.write("by_number.jsonl", self.convert(ois, frames))
        self.write("by_time.jsonl", self.convert(ois, frames, "--ois-columns", "-,x,y,time"))
        table = self.replay("by_number.jsonl")
        self.assertIn("exposures served                                       20", table)
        # Around each exposure lie the same samples.
        self.assertEqual(self.replay("by_time.jsonl").splitlines()[:21], table.splitlines()[:21])


class Messages(ColumnsTest):
    def test_options_and_files(self):
        row, frame = "1 2 3 4\n", "4 5 - 6 4 - 1\n"
        cases = [
            (1, "nowhere/s.jsonl: No such file", row, frame, ["-o", "nowhere/s.jsonl"]),
            (1, "ois.txt: this is an input file; choose another output file", row, frame, ["-o", "ois.txt"]),
            (1, "missing.txt: No such file", row, frame, ["--frames", "missing.txt"]),
            (1, ".: Is a directory", row, frame, ["--ois", "."]),
            (2, "ois.txt:1: no lens position in the file", "# x\n", frame, []),
            (2, "frames.txt:0: no frame in the file", row, "", []),
            (2, "frames.txt:1: 3 columns, expected 7; name the columns", row, "4 5 6\n", []),
            (2, "ois.txt:2: 2 columns, expected 4", row + "two words\n", frame, []),
            (2, "frames.txt:1: readout: longer than 4 s", row, "4 5 - 4294967296 4 - 1\n", []),
            (2, 'no column is called "speed"', row, frame, ["--frame-columns", "time,exposure,speed"]),
            (2, 'duplicate column "x"', row, frame, ["--ois-columns", "x,x,y,time"]),
            (2, 'the column "time" is missing', row, frame, ["--ois-columns", "x,y"]),
            (2, "--readout must give the time", row, frame, ["--frame-columns", "time,exposure"]),
            (2, "--readout: expected a time in s of at most 4 s", row, frame, ["--readout", "5", "--frame-unit", "s"]),
            (2, "--ois-unit", row, frame, ["--ois-unit", "days"]),
            (2, "--delay", row, frame, ["--delay", "-1"]),
        ]
        for status, message, ois, frames, options in cases:
            with self.subTest(message):
                self.assertIn(message, self.convert(ois, frames, *options, status=status))
                self.assertEqual((self.folder / "ois.txt").read_text(), ois)

    def test_left_out_positions_are_counted(self):
        self.write("ois.txt", "1 2 3 4\n9 2 3 4\n")
        self.write("frames.txt", "4 5 - 6 4 - 1\n")
        done = self.run_command([*PROGRAM, "-o", "s.jsonl"])
        self.assertEqual((done.stdout, done.stderr), ("", "ois.txt: 1 lens positions belong to no frame; left out\n"))
        self.replay("s.jsonl")


if __name__ == "__main__":
    unittest.main()
