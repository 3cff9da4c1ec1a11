#!/usr/bin/env python3
"""What the player tells of a session: reasons, figures, pictures, traces, cost."""
import collections
import decimal
import gzip
import json
import os
import re
import unittest
import xml.etree.ElementTree

from tool import HANDHELD, REPLAY, ToolTest

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


class ReportTest(ToolTest):
    def session(self, lines):
        return self.write("session.jsonl", "".join(json.dumps(line) + "\n" for line in lines))

    def report(self, *lines):
        return self.replay(self.session(sum(lines, [])))


class Reasons(ReportTest):
    def test_each_with_its_numbers(self):
        full = [sensor(), *MONITOR, *samples(150)]
        gap = [sensor(), *MONITOR, *samples(100), *samples(50, begin=BEGIN + 150 * MS, frame=2)]
        cases = [
            ([sensor()], ask(BEGIN), "no running monitor: none is registered"),
            ([sensor(), call("RegisterSensorMonitor", type=5)], ask(BEGIN),
             "no running monitor: registered, not started"),
            ([sensor(), *MONITOR, *samples(51)], ask(BEGIN), "fewer than 100 samples buffered: 51"),
            (full, ask(BEGIN + 154 * MS), "start of frame: the newest is 5000 us before it"),
            # Samples count for 166 + 0.5432 * 2000 us later than stamped.
            (gap, ask(BEGIN + 120 * MS), "nearest sample 17748 us from exposure start, before it"),
            (gap, ask(BEGIN + 150 * MS), "nearest sample 3252 us from exposure start, after it"),
            ([sensor(shutter=0), *MONITOR, *samples(150)], ask(BEGIN + 90 * MS),
             "span of one sample: rolling shutter 0 us"),
            ([sensor(shutter=15_980), *MONITOR, *samples(150)], ask(BEGIN + 90 * MS),
             "span of one sample: rolling shutter 15.98 us"),
            (full, ask(BEGIN, leave_out=[0xC0010017]), "timing missing in metadata: start of frame"),
            (full, ask(BEGIN, leave_out=[0xC0030000]), "timing missing in metadata: exposure block"),
            (full, ask(BEGIN + 90 * MS) + [call("fillLscOISCompInfo", metadata="m")], "already written"),
            ([sensor(otp="0000000001020304"), *MONITOR], ask(BEGIN), "OTP: no valid OIS calibration"),
            ([], [call("fillLscOISCompInfo", metadata=None, sensor=14)], "no metadata"),
            ([*full, {"platform": "operation", "name": "IMetadata::burstWrite", "throws": True}], ask(BEGIN + 90 * MS),
             "the session makes the platform fail"),
        ]
        for before, asked, expected in cases:
            with self.subTest(expected):
                rows = self.report(before, asked).split("\n\n")[0].splitlines()
                self.assertTrue(rows[-1].endswith(expected), rows)

    def test_what_would_help(self):
        slow = [sensor(), *MONITOR, *samples(150, period=5 * MS)]
        # 2.5 ms after a sample that counts for 1.252 ms later, so that both neighbours are too far
        text = self.report(slow, ask(BEGIN + 405 * MS + 752_000))
        self.assertIn("nearest sample 2500 us", text)
        self.assertIn("1 exposure: raise the sample rate to 1 kHz: at 200 Hz, 60 % of all moments lie 1000 us or more"
                      " from every sample", text)
        self.assertIn("raise the sample rate to 1 kHz: at 125 Hz, 30 hand-overs hold fewer than 100 samples, and at most 60", self.report(
            [sensor(), *MONITOR], *[samples(2, 8 * MS, BEGIN + 16 * MS * i) for i in range(40)], ask(BEGIN + 600 * MS)))

    def test_a_silent_session_has_no_figures(self):
        self.assertNotIn("sensor 0", self.report([sensor()]))


class Figures(ReportTest):
    def test_batches_agree_with_the_librarys_log(self):
        session = self.write("logged.jsonl", PROPERTY_LINE + HANDHELD.read_text())
        text = self.replay("--results", "results", session)
        log = (self.folder / "results").read_text()
        split, filed = log.count("split data frameNumber"), log.count(" dataSize:")
        empty = log.count("no sensor data for type")
        self.assertGreater(split, 100)
        self.assertIn(f"{filed} filed, {split} of them split, 0 discarded, {empty} empty", text)

    def test_buffered_agrees_with_the_librarys_log(self):
        lines = [json.loads(PROPERTY_LINE),
                 {"platform": "log", "mode": 1, "details_level": 5, "details_mask": "0x821000"}, sensor(), *MONITOR]
        lines += samples(40) + samples(30, begin=BEGIN + 35 * MS) + samples(9, begin=BEGIN) + ask(BEGIN)
        text = self.replay("--results", "results", self.session(lines))
        self.assertIn("total data size:70", (self.folder / "results").read_text())
        self.assertIn("fewer than 100 samples buffered: 70", text)
        self.assertIn("2 filed, 1 of them split, 1 discarded, 0 empty", text)
        self.assertIn("begin before it: 1 batch was discarded", text)

    def test_match_span_and_rate(self):
        # The exposure starts 0.3 ms after what the nearest sample counts for; 10 ms of readout make 11 samples.
        text = self.report([sensor(), *MONITOR, *samples(150)], ask(BEGIN + 93 * MS + 552_000))
        self.assertRegex(text, r"match distance \(us\) +median 300, 95 % up to 300, largest 300")
        self.assertRegex(text, r"span \(samples\) +median 11,.*expected 11\n")
        self.assertRegex(text, r"sensor .* x +y +span match \(us\)\n +1 +0 .* 11 +300\n")
        self.assertRegex(text, r"sample rate +1000 Hz, longest step 1\.000 ms, 0 gaps")

    def test_clock_frames_and_hand_overs(self):
        lines = [sensor(), *MONITOR]
        for number in (1, 2, 4):  # every hand-over brings 20 ms of samples, up to 9 ms after the start of frame
            lines += samples(20, begin=BEGIN + 20 * MS * number, frame=number)
            lines[-1]["timestamp"] = BEGIN + 20 * MS * number + 10 * MS
        text = self.report(lines, samples(1, begin=BEGIN + 80 * MS, frame=5), ask(BEGIN + 70 * MS, exposure=3 * MS))
        self.assertRegex(text, r"hand-overs +1 missing in the frame numbers, 1 of 61 samples repeated")
        self.assertRegex(text, r"clock difference \(us\) median 9000, least 9000, largest 1079999")
        self.assertRegex(text, r"frames \(ms\) +interval 20\.\d+, rolling shutter 10\.00, exposure 3\.00 to 3\.00")

    def test_times_in_another_unit(self):
        session = self.session([sensor(shutter=15_980), *MONITOR, *samples(150)] + ask(BEGIN + 90 * MS, exposure=20_000))
        text = self.replay("--summary", "s.json", session)
        self.assertRegex(text, r"rolling shutter 0\.01598, exposure 0\.02 to 0\.02\n")
        its, = json.loads((self.folder / "s.json").read_text())["sensors"]
        self.assertEqual((its["readout_us"]["median"], its["span"]), (15, {"count": 0}))

    def test_no_figure_of_stamps_that_are_no_clocks(self):
        cases = [([1, 2, 3], "unknown, longest step 0.000 ms, 0 gaps"),
                 ([BEGIN, BEGIN + 5_000 * MS], "less than 1 Hz, longest step 5000.000 ms, 0 gaps"),
                 ([-2**63, 0, MS, 2 * MS], "1000 Hz, longest step more than a day, 1 gap")]
        for stamps, rate in cases:
            data = {"samples": 5, "data": [[stamp, 0, 0, 0, 0] for stamp in stamps]}
            text = self.report([sensor(), *MONITOR, data, samples(0)[1]])
            self.assertRegex(text, f"sample rate +{rate}")
        self.assertIn("the samples have a gap of more than a day\n", text)
        frames = [line for i in range(40) for line in samples(1, begin=BEGIN - i * MS, frame=i)]
        for i, line in enumerate(frames[1::2]):
            line["timestamp"] = BEGIN + i
        self.assertNotIn("drift", self.report([sensor(), *MONITOR], frames))

    def test_a_pause_of_the_monitor_is_no_gap(self):
        pause = [call("UnRegisterSensorMonitor"), MONITOR[0]]
        text = self.report([sensor(), *MONITOR, *samples(10), *pause, *samples(10, begin=BEGIN + 9_000 * MS)])
        self.assertRegex(text, r"sample rate +1000 Hz, longest step 1\.000 ms, 0 gaps")


class Trace(ReportTest):
    def events(self, session=HANDHELD, *arguments, name="trace.json"):
        self.replay("--trace", name, *arguments, session)
        data = (self.folder / name).read_bytes()
        text = gzip.decompress(data) if name.endswith(".gz") else data
        return json.loads(text, parse_float=decimal.Decimal)["traceEvents"]

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
        table = self.replay(HANDHELD)
        asked, without = (int(re.search(label + r" +(\d+)\n", table)[1]) for label in ("served", "not served"))
        asked += without
        self.assertEqual(done, {"exposure": asked, "readout": asked, "span": asked - without})

    def test_every_sample_and_event_with_its_nanosecond(self):
        events = self.events()
        wanted = {(row[0], row[3]) for line in HANDHELD.read_text().splitlines()
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

    def test_part(self):
        begin, end = decimal.Decimal(93_397_900), decimal.Decimal(93_420_000)
        session_begin = min(event["ts"] for event in self.events() if event["ph"] == "C")
        limits = [str((time - session_begin) / 1000) for time in (begin, end)]
        part = self.events(HANDHELD, "--from", limits[0], "--to", limits[1])
        samples = [event for event in self.events() if event["ph"] == "C" and begin <= event["ts"] <= end]
        self.assertEqual([event for event in part if event["ph"] == "C"], samples)
        phases = collections.Counter((event["name"], event["ph"]) for event in part if event["ph"] in "be")
        for name in "exposure", "readout":  # whole, if only a part lies within
            self.assertEqual((phases[name, "b"], phases[name, "e"]), (2, 2), phases)

    def test_compressed(self):
        self.assertEqual(self.events(name="trace.json.gz"), self.events())
        self.assertIn("missing/trace.gz: there is no folder missing", self.replay("--trace", "missing/trace.gz", HANDHELD, status=1))

    def test_more_than_waits_for_earlier_events(self):
        lines = [sensor(), *MONITOR, *samples(100)]
        for batch in range(4):
            lines += samples(10_000, begin=BEGIN + (100 + 10_000 * batch) * MS, frame=2 + batch)
        lines += ask(BEGIN + 20_050 * MS) + samples(5, begin=BEGIN + 50_000 * MS, frame=9)
        times = [event["ts"] for event in self.events(self.session(lines)) if "ts" in event]
        self.assertEqual(len([event for event in times]), 2 * 40_105 + 6)
        self.assertEqual(times, sorted(times))


class Plot(ReportTest):
    def script(self, *arguments):
        self.replay("--plot", "plot.gp", *arguments)
        text = (self.folder / "plot.gp").read_text()
        blocks = re.findall(r"^\$(\w+) << EOD\n(.*?)^EOD$", text, re.M | re.S)
        return text, {name: rows.splitlines() for name, rows in blocks}

    def test_script_holds_what_happened(self):
        text, blocks = self.script("--from", "2960", "--to", "3180", HANDHELD)
        self.assertIn("set xlabel 'ms from the first sample'", text)
        self.assertIn("15 exposures, 4 without a position", text)
        self.assertIn("rolling shutter 15.98 ms, exposure 4.957 to 4.978 ms, span 13 to 17 samples", text)
        counts = dict(re.findall(r"title '([^']+): (\d+)'", text))
        self.assertEqual(counts, {"with a position": "11", "no sample at or after the start of frame": "1",
                                  "no sample within 1000 us of exposure start": "3"})
        frames = {name: rows.count("") for name, rows in blocks.items() if name.startswith("frames")}
        self.assertEqual(sorted(frames.values()), [1, 3, 11])
        self.assertEqual(len(blocks["positions"]), 11)
        self.assertEqual(len(blocks["bars"]), 11)
        self.assertIn("'nearest sample 22855 us from exposure start, after it'", text)
        times = [float(row.split()[0]) for row in blocks["samples"] if row]
        self.assertEqual((len(times), blocks["samples"].count("")), (160, 1))  # 220 ms with a gap of 60
        self.assertTrue(2960 <= times[0] and times[-1] <= 3180)

    def test_a_frame_has_the_shape_of_its_rows(self):
        _, blocks = self.script(self.session([sensor(), *MONITOR, *samples(150), *ask(BEGIN + 90 * MS)]))
        corners = [float(row.split()[0]) for row in blocks["frames0"] if row]
        self.assertEqual(corners, [88, 90, 100, 98])  # 2 ms exposed, 10 ms of rolling shutter

    def check_labels(self, text, expected):
        """Labels of the lower panel: a height each, and towards the middle of the picture."""
        middle = sum(map(float, re.search(r"set xrange \[(.*):(.*)\]", text).groups())) / 2
        labels = re.findall(r"^set label '(.*)' at ([-\d.]+),([\d.]+) (left|right)", text, re.M)
        self.assertEqual(sorted(label[0] for label in labels), sorted(expected))
        self.assertEqual(len({height for _, _, height, _ in labels}), len(labels))
        for _, begin, _, side in labels:
            self.assertEqual(side, "left" if float(begin) <= middle else "right")

    def test_few_labels_however_many_failures(self):
        lines = [sensor(), *MONITOR, *samples(51)]
        for i in range(200):
            lines += ask(BEGIN + i * 5 * MS)
        text, blocks = self.script(self.session(lines + samples(2000, begin=BEGIN + 60 * MS, frame=2)
                                                + ask(BEGIN + 2_500 * MS)))
        self.check_labels(text, ["fewer than 100 samples buffered: 51",
                                 "no sample at or after the start of frame: the newest is 441000 us before it"])
        self.assertIn("fewer than 100 samples buffered: 200'", text)
        self.assertNotIn("graph 0 to", text)  # no lines through the hall trace

    def test_a_single_failure_among_many_can_be_seen(self):
        lines = [sensor(), *MONITOR, *samples(3000, period=MS // 10)]
        for i in range(2999):
            lines += ask(BEGIN + 100 * MS + i * 50_000)
        lines[-1:-1] = ask(BEGIN - 50 * MS)
        _, blocks = self.script("--from", "-100", "--to", "1000", self.session(lines))
        missed = next(rows for name, rows in blocks.items() if name.startswith("frames") and name != "frames0")
        times, heights = zip(*(map(float, row.split()) for row in missed if row))
        self.assertGreater(max(times) - min(times), 1.4)  # of 1100: two columns of pixels
        self.assertGreaterEqual(max(heights) - min(heights), 0.1)

    def test_no_more_points_than_pixels(self):
        lines = [sensor(), *MONITOR]
        for frame in range(200):
            lines += samples(160, period=MS // 10, begin=BEGIN + frame * 16 * MS, frame=frame)
            lines += sum((ask(BEGIN + frame * 16 * MS - 50 * MS + i * 10_000) for i in range(20)), [])
        _, blocks = self.script(self.session(lines))
        self.assertGreater(len(blocks["samples"]), 1500)
        for name, rows in blocks.items():
            self.assertLessEqual(len(rows), 4000, name)

    def test_device_positions_and_differences(self):
        lines = [json.dumps(line) for line in [sensor(), *MONITOR, *samples(150)]]
        _, blocks = self.script(self.session([sensor(), *MONITOR, *samples(150), *ask(BEGIN + 90 * MS)]))
        x, y = map(float, blocks["positions"][0].split()[1:3])
        for start, position in ((90, (x, y)), (110, (9.5, -7.25)), (120, None), (200, (1, 2))):
            lines += map(json.dumps, ask(BEGIN + start * MS))
            its = dict(zip("xy", [f"{value:f}" for value in position] if position else (None, None)))
            lines.append("#expect " + json.dumps({"sensor": 0, "type": 1, **its}))
        text, blocks = self.script(self.write("device.jsonl", "\n".join(lines)))
        self.assertEqual([[float(number) for number in row.split()[1:]] for row in blocks["device"]],
                         [[round(x, 6), round(y, 6)], [9.5, -7.25], [1, 2]])
        self.assertIn("'device differs: 3'", text)
        differing = {tuple(row.split()[3:]) for row in blocks["differences"]}
        only_here = tuple(blocks["positions"][2].split()[1:3])
        self.assertEqual(differing, {("9.5", "-7.25"), only_here, ("1", "2")})

    def test_whole_session_by_default(self):
        text, blocks = self.script(HANDHELD)
        self.assertIn("690 exposures, 7 without a position, 1 asked for again", text)
        self.assertLess(len(blocks["samples"]), 4000)
        self.check_labels(text, [
            "fewer than 100 samples buffered: 49", "nearest sample 21484 us from exposure start, before it",
            "no sample at or after the start of frame: the newest is 12646 us before it"])

    def test_gnuplot_draws_it(self):
        for name, begin in (("plot.png", b"\x89PNG"), ("plot.svg", b"<?xml")):
            self.replay("--plot", name, "--from", "2960", "--to", "3180", HANDHELD)
            picture = (self.folder / name).read_bytes()
            self.assertTrue(picture.startswith(begin) and len(picture) > 10_000)

    def test_script_draws_a_picture_beside_it(self):
        (self.folder / "sub").mkdir()
        self.replay("--plot", "sub/look.gp", HANDHELD)
        done = self.run_command(["gnuplot", "sub/look.gp"])
        self.assertEqual(done.stdout + done.stderr, "")
        self.assertTrue((self.folder / "sub/look.png").read_bytes().startswith(b"\x89PNG"))

    def test_nothing_but_the_table_reaches_standard_output(self):
        (self.folder / "p.png").mkdir()  # cannot be written
        done = self.run_command([*REPLAY, "--plot", "p.png", HANDHELD], status=1)
        self.assertEqual(done.stdout, self.replay(HANDHELD))

    def test_nothing_is_drawn_with_complaint(self):
        done = self.run_command([*REPLAY, "--plot", "gap.png", "--from", "3020", "--to", "3050", HANDHELD])
        self.assertEqual(done.stderr, "")
        for data in ([[BEGIN, 0, 0, 3, 4]], [[BEGIN, 0, 0, 1e30, -3e38], [BEGIN + MS, 0, 0, 1e30, -3e38]],
                     [[1, 0, 0, 0, 0], [2, 0, 0, 0, 0]]):
            with self.subTest(data):
                session = self.session([sensor(), *MONITOR, {"samples": 5, "data": data}, samples(0)[1]])
                self.assertEqual(self.run_command([*REPLAY, "--plot", "rest.svg", session]).stderr, "")

    def test_a_lens_at_rest_does_not_fill_the_panel(self):
        at_rest = [[BEGIN + i * MS, 0, 0, 50 + 1e-5 * i, -0.4 * i] for i in range(9)]
        text, _ = self.script(self.session([sensor(), *MONITOR, {"samples": 5, "data": at_rest}, samples(0)[1]]))
        x, y = re.findall(r"^set yrange \[(.*):(.*)\]\nset ylabel 'hall", text, re.M)
        self.assertAlmostEqual(float(x[1]) - float(x[0]), 2)
        self.assertAlmostEqual(float(x[0]), 49, delta=0.001)
        self.assertEqual(y, ("*", "*"))

    def test_a_panel_without_samples_has_no_scale(self):
        text, _ = self.script(self.session([sensor(), *MONITOR, *ask(BEGIN)]))
        self.assertEqual(text.count("'no samples'"), 2)
        self.assertIn("sensor 0: 1 exposure, 1 without a position'", text)
        self.assertNotIn("no samples", self.script(HANDHELD)[0])

    def test_says_what_to_do(self):
        no_path = {**os.environ, "PATH": "/nonexistent"}
        text = self.replay("--plot", "p.png", HANDHELD, status=1, env=no_path)
        self.assertIn("install the package gnuplot-nox", text)
        self.assertIn("must end in .svg, .png or .gp", self.replay("--plot", "p.jpg", HANDHELD, status=2))
        self.assertIn("no sensor 3", self.replay("--plot", "p.png", "--sensor", "3", HANDHELD, status=2))
        text = self.replay("--plot", "p.png", "--from", "1e6", "--to", "2e6", HANDHELD, status=2)
        self.assertIn("nothing from 1000000 ms on: the session ends 10030.997 ms", text)
        self.assertIn("between these times", self.replay("--plot", "p.png", "--to", "-900", HANDHELD, status=2))
        self.assertIn("less than --to", self.replay("--plot", "p.png", "--from", "2", "--to", "1", HANDHELD, status=2))
        self.assertIn("need --plot, --trace or --html", self.replay("--from", "1", HANDHELD, status=2))
        self.assertIn("no folder missing/folder", self.replay("--plot", "missing/folder/p.png", HANDHELD, status=1))
        self.assertIn("no folder missing\n", self.replay("--csv", "missing/e.csv", HANDHELD, status=1))

    def test_nothing_to_draw_leaves_every_other_output_complete(self):
        silent = self.session([sensor(), call("IsEnabled")])
        for session, part, message in (silent, [], "neither samples nor frames"), \
                                      (HANDHELD, ["--sensor", "7"], "no sensor 7"), \
                                      (HANDHELD, ["--from", "20000"], "the session ends"):
            with self.subTest(message):
                printed = self.replay(*part, "--plot", "p.png", "--trace", "t.json", "--html", "p.html", "--csv", "e.csv",
                                      "--summary", "s.json", "--junit", "j.xml", session, status=2)
                self.assertIn(message, printed)
                self.assertFalse((self.folder / "p.png").exists())
                frames = json.loads((self.folder / "s.json").read_text())["frames"]
                self.assertEqual(len((self.folder / "e.csv").read_text().splitlines()), 1 + (691 if frames else 0))
                self.assertIn("traceEvents", json.loads((self.folder / "t.json").read_text()))
                self.assertTrue((self.folder / "p.html").read_text().endswith("</html>\n"))
                xml.etree.ElementTree.parse(self.folder / "j.xml")

    def test_a_part_that_is_not_there_prints_nothing(self):
        for view in ("--plot", "p.png"), ("--trace", "t.json"):
            done = self.run_command([*REPLAY, *view, "--from", "20000", HANDHELD], status=2)
            self.assertEqual(done.stdout, "")
            self.assertIn("the session ends", done.stderr)


class Cost(ReportTest):
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
        self.assertIn("--repeat needs a regular file", self.replay("--cost", "--repeat", "1", "/dev/null", status=1))


if __name__ == "__main__":
    unittest.main()
