#!/usr/bin/env python3
"""What the player tells of a session: reasons, figures, pictures, traces, cost.

    check_look.py HANDHELD_SESSION LSC_REPLAY...
"""
import collections
import decimal
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

HANDHELD = sys.argv[1]
REPLAY = [shutil.which(sys.argv[2]) or sys.argv[2], *sys.argv[3:]]
MS = 1_000_000
BEGIN = 1_000 * MS
LAYOUT = {"oisCalibration": {"offset": 4, "size": 4, "valid": 3, "indexNum": 1, "tableNumber": 2}, "enable": 1}
PROPERTY_LINE = '{"platform":"property","key":"vendor.tarvo.3a.lscutil.log","value":1}\n'


def sensor(otp="0000000101020304", shutter=10 * MS, number=0):
    return {"platform": "sensor", "sensor": number, "otp_layout": LAYOUT, "otp": otp,
            "rolling_shutter": {"0": shutter}}


def call(function, **arguments):
    return {"call": function, "sensor": 0, **arguments}


MONITOR = [call("RegisterAndStartSensorMonitor", type=5), call("StoreRollingShutter", mode=0)]


def samples(count, period=MS, begin=BEGIN, frame=1):
    data = [[begin + i * period, 0, 0, 0.1 * i, -0.2 * i] for i in range(count)]
    return [{"samples": 5, "data": data}, call("UpdateSensorData", frame=frame, timestamp=1)]


def ask(start, exposure=2 * MS, leave_out=()):
    entries = [{"tag": 0xC0010017, "int64": [start]},
               {"tag": 0xC0030000, "memory": {"size": 4712, "u64": {"4592": exposure}}}]
    entries = [entry for entry in entries if entry["tag"] not in leave_out]
    return [{"metadata": "m", "entries": entries}, call("fillLscOISCompInfo", metadata="m")]


class LookTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def path(self, name):
        return pathlib.Path(self.folder.name, name)

    def session(self, lines):
        path = self.path("session.jsonl")
        path.write_text("".join(json.dumps(line) + "\n" for line in lines))
        return str(path)

    def replay(self, *arguments, status=0, **more):
        done = subprocess.run([*REPLAY, *arguments], capture_output=True, text=True, check=False, **more)
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stdout if status == 0 else done.stderr

    def look(self, *lines):
        return self.replay(self.session(sum(lines, [])))


class Reasons(LookTest):
    def test_each_with_its_numbers(self):
        full = [sensor(), *MONITOR, *samples(150)]
        gap = [sensor(), *MONITOR, *samples(100), *samples(50, begin=BEGIN + 150 * MS, frame=2)]
        cases = [
            ([sensor()], ask(BEGIN), "no running monitor: none is registered"),
            ([sensor(), call("RegisterSensorMonitor", type=5)], ask(BEGIN), "no running monitor: registered, not started"),
            ([sensor(), *MONITOR, *samples(51)], ask(BEGIN), "fewer than 100 samples buffered: 51"),
            (full, ask(BEGIN + 154 * MS), "start of frame: the newest is 5000 us before it"),
            # Samples count for 166 + 0.5432 * 2000 us later than stamped.
            (gap, ask(BEGIN + 120 * MS), "nearest sample 17748 us from exposure start, before it"),
            (gap, ask(BEGIN + 150 * MS), "nearest sample 3252 us from exposure start, after it"),
            ([sensor(shutter=0), *MONITOR, *samples(150)], ask(BEGIN + 90 * MS), "span of one sample: rolling shutter 0 us"),
            (full, ask(BEGIN, leave_out=[0xC0010017]), "timing missing in metadata: start of frame"),
            (full, ask(BEGIN, leave_out=[0xC0030000]), "timing missing in metadata: exposure block"),
            (full, ask(BEGIN + 90 * MS) + [call("fillLscOISCompInfo", metadata="m")], "already written"),
            ([sensor(otp="0000000001020304"), *MONITOR], ask(BEGIN), "OTP: no valid OIS calibration"),
            ([], [call("fillLscOISCompInfo", metadata=None, sensor=14)], "no metadata"),
        ]
        for before, asked, expected in cases:
            with self.subTest(expected):
                rows = self.look(before, asked).split("\n\n")[0].splitlines()
                self.assertTrue(rows[-1].endswith(expected), rows)

    def test_what_would_help(self):
        slow = [sensor(), *MONITOR, *samples(150, period=5 * MS)]
        # 2.5 ms after a sample that counts for 1.252 ms later, so that both neighbours are too far
        text = self.look(slow, ask(BEGIN + 405 * MS + 752_000))
        self.assertIn("nearest sample 2500 us", text)
        self.assertIn("1 exposure: sample rate 200 Hz: 60 % of all moments lie 1000 us or more from every sample", text)
        self.assertIn("30 hand-overs to bring 100: at most 60", self.look(
            [sensor(), *MONITOR], *[samples(2, 8 * MS, BEGIN + 16 * MS * i) for i in range(40)], ask(BEGIN + 600 * MS)))

    def test_a_silent_session_has_no_figures(self):
        self.assertNotIn("sensor 0", self.look([sensor()]))


class Figures(LookTest):
    def test_batches_agree_with_the_librarys_log(self):
        session = self.path("logged.jsonl")
        session.write_text(PROPERTY_LINE + pathlib.Path(HANDHELD).read_text())
        text = self.replay("--results", str(self.path("results")), str(session))
        log = self.path("results").read_text()
        split, filed = log.count("split data frameNumber"), log.count(" dataSize:")
        empty = log.count("no sensor data for type")
        self.assertGreater(split, 100)
        self.assertIn(f"{filed} filed, {split} of them split, 0 discarded, {empty} empty", text)

    def test_buffered_agrees_with_the_librarys_log(self):
        lines = [json.loads(PROPERTY_LINE), {"platform": "log", "mode": 1, "details_level": 5, "details_mask": "0x821000"},
                 sensor(), *MONITOR]
        lines += samples(40) + samples(30, begin=BEGIN + 35 * MS) + samples(9, begin=BEGIN) + ask(BEGIN)
        text = self.replay("--results", str(self.path("results")), self.session(lines))
        self.assertIn("total data size:70", self.path("results").read_text())
        self.assertIn("fewer than 100 samples buffered: 70", text)
        self.assertIn("2 filed, 1 of them split, 1 discarded, 0 empty", text)
        self.assertIn("1 discarded batch: deliver", text)

    def test_match_span_and_rate(self):
        # The exposure starts 0.3 ms after what the nearest sample counts for; 10 ms of readout make 11 samples.
        text = self.look([sensor(), *MONITOR, *samples(150)], ask(BEGIN + 93 * MS + 552_000))
        self.assertRegex(text, r"match distance \(us\) +median 300, 95 % up to 300, largest 300")
        self.assertRegex(text, r"span \(samples\) +median 11,")
        self.assertRegex(text, r"sample rate +1000 Hz, longest step 1\.000 ms, 0 gaps")

    def test_a_pause_of_the_monitor_is_no_gap(self):
        pause = [call("UnRegisterSensorMonitor"), MONITOR[0]]
        text = self.look([sensor(), *MONITOR, *samples(10), *pause, *samples(10, begin=BEGIN + 9_000 * MS)])
        self.assertRegex(text, r"sample rate +1000 Hz, longest step 1\.000 ms, 0 gaps")


class Trace(LookTest):
    def events(self, session=HANDHELD):
        path = self.path("trace.json")
        self.replay("--trace", str(path), session)
        return json.loads(path.read_text(), parse_float=decimal.Decimal)["traceEvents"]

    def test_slices_are_paired_and_in_order(self):
        open_slices, done, last = {}, collections.Counter(), None
        for event in self.events():
            if event["ph"] == "M":
                self.assertIsNone(last)
                continue
            self.assertTrue(last is None or last <= event["ts"])
            last = event["ts"]
            key = (event["pid"], event.get("cat"), event.get("id"))
            if event["ph"] == "b":
                self.assertNotIn(key, open_slices)
                open_slices[key] = event["name"]
            elif event["ph"] == "e":
                self.assertEqual(open_slices.pop(key), event["name"])
                done[event["name"]] += 1
        self.assertFalse(open_slices)
        self.assertEqual(done, {"exposure": 691, "readout": 691, "span": 683})

    def test_every_sample_and_event_with_its_nanosecond(self):
        events = self.events()
        wanted = {(row[0], row[3]) for line in pathlib.Path(HANDHELD).read_text().splitlines()
                  if line.startswith('{"samples"') for row in json.loads(line)["data"]}
        found = {(int(e["ts"] * 1000), float(e["args"]["x"])) for e in events if e["name"] == "hall x"}
        self.assertEqual(found, wanted)
        names = collections.Counter(event["name"] for event in events if event["ph"] == "i")
        self.assertEqual(names, {"split": 177, "no position": 7})
        missed = [event["args"]["reason"] for event in events if event["name"] == "no position"]
        self.assertEqual(missed[0], "fewer than 100 samples buffered: 49")

    def test_times_of_an_exposure(self):
        lines = [sensor(), *MONITOR, *samples(150), *samples(9), *ask(BEGIN + 90 * MS + 1, exposure=2 * MS + 3)]
        slices = {(e["name"], e["ph"]): str(e["ts"]) for e in self.events(self.session(lines)) if e["ph"] in "bei"}
        self.assertEqual(slices[("exposure", "b")], "1087999.998")
        self.assertEqual(slices[("exposure", "e")], slices[("readout", "b")])
        self.assertEqual(slices[("readout", "e")], "1100000.001")
        self.assertEqual(slices[("drop", "i")], "1000000.000")


class Plot(LookTest):
    def script(self, *arguments):
        path = self.path("plot.gp")
        self.replay("--plot", str(path), *arguments)
        text = path.read_text()
        blocks = {name: rows.splitlines() for name, rows in re.findall(r"^\$(\w+) << EOD\n(.*?)^EOD$", text, re.M | re.S)}
        return text, blocks

    def test_script_holds_what_happened(self):
        text, blocks = self.script("--from", "2960", "--to", "3180", HANDHELD)
        self.assertIn("set xlabel 'ms from the first sample'", text)
        self.assertIn("15 exposures, 4 without a position", text)
        self.assertEqual([len(blocks[name]) for name in ("exposures", "readouts", "missed", "reasons")], [15, 15, 4, 4])
        self.assertEqual(len(blocks["positions"]), 11)
        self.assertIn("nearest sample 22855 us from exposure start, after it", blocks["reasons"][2])
        times = [float(row.split()[0]) for row in blocks["samples"] if row]
        self.assertEqual((len(times), blocks["samples"].count("")), (160, 1))  # 220 ms with a gap of 60
        self.assertTrue(2960 <= times[0] and times[-1] <= 3180)

    def test_whole_session_by_default_and_long_ones_reduced(self):
        _, blocks = self.script(HANDHELD)
        self.assertEqual(len(blocks["missed"]), 7)
        self.assertLess(len(blocks["samples"]), 7000)
        self.assertIn("3 x fewer than 100 samples buffered", blocks["reasons"][0])

    def test_gnuplot_draws_it(self):
        for name, begin in (("plot.png", b"\x89PNG"), ("plot.svg", b"<?xml")):
            self.replay("--plot", str(self.path(name)), "--from", "2960", "--to", "3180", HANDHELD)
            picture = self.path(name).read_bytes()
            self.assertTrue(picture.startswith(begin) and len(picture) > 10_000)

    def test_a_part_without_samples_is_drawn_without_complaint(self):
        done = subprocess.run([*REPLAY, "--plot", str(self.path("gap.png")), "--from", "3020", "--to", "3050", HANDHELD],
                              capture_output=True, text=True, check=True)
        self.assertEqual(done.stderr, "")

    def test_says_what_to_do(self):
        no_path = {**os.environ, "PATH": "/nonexistent"}
        png = str(self.path("p.png"))
        self.assertIn("install the package gnuplot-nox", self.replay("--plot", png, HANDHELD, status=1, env=no_path))
        self.assertIn("must end in .svg, .png or .gp", self.replay("--plot", "p.jpg", HANDHELD, status=2))
        self.assertIn("no such sensor", self.replay("--plot", png, "--sensor", "3", HANDHELD, status=2))
        self.assertIn("between these times", self.replay("--plot", png, "--from", "1e6", "--to", "2e6", HANDHELD, status=2))


class Cost(LookTest):
    def test_every_call_is_counted_once_a_play(self):
        plain = self.replay(HANDHELD)
        text = self.replay("--cost", "--repeat", "3", HANDHELD)
        self.assertTrue(text.startswith(plain + "\n"))
        rows = {row.split()[0]: row.split()[1:] for row in text[len(plain):].splitlines()[2:]}
        self.assertEqual(rows["fillLscOISCompInfo"][0], "2404")
        self.assertEqual(len(rows), 22)
        for name, figures in rows.items():
            self.assertEqual(sorted(map(float, figures[1:])), [*map(float, figures[1:])], name)

    def test_only_a_file_can_be_played_again(self):
        self.assertIn("leave out --repeat", self.replay("--cost", "--repeat", "1", "/dev/null", status=1))


unittest.main(argv=sys.argv[:1])
