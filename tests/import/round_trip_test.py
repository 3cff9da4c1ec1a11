#!/usr/bin/env python3
"""Session to log to session: what the library logged must import to a session with the same positions.

The session is played with customer log level 4; its log is written in each form that logcat has, then damaged: lines
dropped, cut, doubled, mixed from two threads. Random damage prints its seed.
"""
import json
import os
import pathlib
import random
import re
import unittest

from tool import HANDHELD, REPLAY, ToolTest

SEED = int(os.environ.get("SEED", random.randrange(1 << 32)))
OUTPUTS = range(0xC0030033, 0xC0030039)
HEAD = ['{"platform":"property","key":"vendor.tarvo.3a.lscutil.log","value":4}',
        '{"platform":"log","mode":1,"details_level":5,"details_mask":"0x821000"}']


def tid(text):
    return 201 if re.match(r"\[(pushValue|updateSensorData)\]", text) else 202


def threadtime(parts, uid="", zone="", year="", digits=3):
    return [f"{year}11-22 10:{i // 60000:02}:{i // 1000 % 60:02}.{i % 1000:03}{'0' * (digits - 3)}{zone} "
            f"{uid}{1234:5} {tid(text):5} {letter} {tag:8}: {text}" for i, (letter, tag, text) in enumerate(parts)]


def time(parts, uid="", zone="", digits=3):
    return [f"11-22 10:{i // 60000:02}:{i // 1000 % 60:02}.{i % 1000:03}{'0' * (digits - 3)}{zone} "
            f"{letter}/{tag:8}({uid}{1234:5}): {text}" for i, (letter, tag, text) in enumerate(parts)]


def brief(parts, uid=""):
    return [f"{letter}/{tag:8}({uid}{1234:5}): {text}" for letter, tag, text in parts]


def find(lines, text):
    return next(i for i, line in enumerate(lines) if text in line)


def without(lines, *numbers):
    return [line for i, line in enumerate(lines) if i not in numbers]


def mixed(parts):
    """Moves the beginning of each frame's messages into the middle of the samples before it."""
    lines = list(parts)
    for i, (_, _, text) in enumerate(lines):
        if "is_multiexp_mode" in text and "sof_timestamp" in lines[i + 1][2] and "update sensor" in lines[i - 1][2]:
            lines[i - 6:i + 2] = lines[i - 6:i - 4] + [lines[i]] + lines[i - 4:i - 2] + [lines[i + 1]] + lines[i - 2:i]
    assert lines != list(parts)
    return lines


def seeded():
    print(f"SEED={SEED}")
    return random.Random(SEED)


class RoundTrip(ToolTest):
    def setUp(self):
        super().setUp()
        self.session = HEAD + HANDHELD.read_text(encoding="utf-8").splitlines()
        # The first second and a half is enough for most: the start, a frame asked for twice.
        self.positions, self.parts, _ = self.play("\n".join(self.session[:400]) + "\n")
        self.assertTrue(any(p[0] for p in self.positions) and len(self.parts) > 10000)

    def play(self, text):
        """Positions of every frame asked for, to six decimals; the log's (letter, tag, text); the table."""
        self.write("s.jsonl", text)
        done = self.run_command([*REPLAY, "--log", "--results", "r.jsonl", "s.jsonl"])
        positions = []
        for line in (self.folder / "r.jsonl").read_text(encoding="utf-8").splitlines():
            result = json.loads(line)
            if result["call"] == "fillLscOISCompInfo":
                found = {e["tag"]: e["double"][0] for e in result["metadata"] if e["tag"] in OUTPUTS and "double" in e}
                positions.append(tuple(f"{found[tag]:.6f}" if tag in found else None for tag in OUTPUTS))
            elif result["call"] == "CalcOISValue":
                values = [f"{result[k][0]:.6f}" if result[k] else None for k in "xy"]
                positions.append((*values, None, None, None, None))
        parts = [re.match(r"(.)/(.*?)\( *\d+\): (.*)", line).groups() for line in done.stderr.splitlines()]
        return positions, parts, done.stdout

    def imported(self, lines, *options, status=0):
        """Positions, holes and table of the session made from these lines."""
        self.write("capture.txt", lines if isinstance(lines, bytes) else "".join(line + "\n" for line in lines))
        done = self.run_command([*REPLAY, "import", "capture.txt", *options], status)
        if status:
            return done.stderr
        # What the library logs again costs time and changes nothing.
        positions, _, table = self.play(done.stdout.replace('"details_level":5', '"details_level":0'))
        return positions, done.stderr.partition("messages of the library")[0], table

    def same_but(self, got, *calls):
        """Whether all positions are the session's but those of these calls."""
        return len(got) == len(self.positions) and all(
            mine == theirs or i in calls for i, (mine, theirs) in enumerate(zip(got, self.positions)))

    def test_every_form(self):
        brackets = "--------- beginning of main"
        foreign = ["11-22 10:00:00.000  1234  202 I Camera: [pushValue] index:0", "not a line of a log", ""]
        forms = [threadtime(self.parts), threadtime(self.parts, uid="1047 ", zone=" +0100", year="2026-", digits=6),
                 threadtime(self.parts, uid="media ", digits=9), time(self.parts),
                 time(self.parts, uid=" 1047:", digits=6), brief(self.parts), brief(self.parts, uid="1047:"),
                 [line + "\r" for line in threadtime(self.parts, zone=" -0330")],
                 [f"{i}.{i % 1000:03} " + line.split(" ", 2)[2] for i, line in enumerate(threadtime(self.parts))]]
        for lines in forms:
            got, holes, table = self.imported([brackets, *lines[:50], *foreign, *lines[50:]])
            assert got == self.positions and holes == "", (lines[0], holes)
            assert "  different positions                                   0" in table, table

    def test_whole_session(self):
        positions, parts, _ = self.play("\n".join(self.session) + "\n")
        got, holes, table = self.imported(threadtime(parts))
        assert got == positions and holes == "", holes
        assert "position on the device only                         0" in table, table

    def test_lost_sample(self):
        lines = threadtime(self.parts)
        lost = find(lines, "update sensor data F:(40)") - 5
        for damaged in without(lines, lost), lines[:lost] + [lines[lost][:-9]] + lines[lost + 1:]:
            got, holes, _ = self.imported(damaged)
            assert "frame 40: 1 sample of its hand-over missing; 1 sample taken from lists" in holes, holes
            assert got == self.positions

    def test_lost_batch(self):
        lines = threadtime(self.parts)
        end = find(lines, "update sensor data F:(40)")
        begin = max(i for i in range(end) if "index:0," in lines[i])
        got, holes, _ = self.imported(lines[:begin] + lines[end:])
        assert "frame 40: 18 samples of its hand-over missing; 16 samples taken from lists" in holes, holes
        assert got == self.positions

    def test_lost_ends_of_batches(self):
        lines = threadtime(self.parts)
        end = find(lines, "update sensor data F:(40)")
        got, holes, _ = self.imported(without(lines, end))
        assert got == self.positions and "frame 40: the message that ends its hand-over is missing" in holes, holes
        numbers = [i for i, line in enumerate(lines) if "F:(40)" in line or "frameNumber: 40 " in line]
        got, holes, _ = self.imported(without(lines, *numbers))
        assert got == self.positions and "frame 40: its frame number is assumed" in holes, holes

    def test_lost_lines_of_a_frame(self):
        lines = threadtime(self.parts)
        mode = [i for i, line in enumerate(lines) if "is_multiexp_mode" in line][50]
        for lost, words in (mode, "exposure mode"), (mode + 1, "timing"):
            got, holes, _ = self.imported(without(lines, lost))
            assert words in holes and self.same_but(got, *([] if lost == mode else [50])), holes
            assert got[50][:2] == self.positions[50][:2]
        result = next(i for i in range(mode, len(lines)) if "out_frame_ois0" in lines[i])
        got, holes, _ = self.imported(without(lines, result))
        assert got == self.positions and "what became of its exposure of type 1" in holes, holes

    def test_disagreement(self):
        lines = threadtime(self.parts)
        number = [i for i, line in enumerate(lines) if "out_frame_ois0" in line][3]
        other = re.sub(r"ois0\(x = [-0-9.]+", "ois0(x = 999.000000", lines[number])
        _, holes, table = self.imported(lines[:number] + [other] + lines[number + 1:])
        assert holes == "", holes
        assert "the device gave x 999.000000" in table and re.search("  different positions +1\n", table), table

    def test_doubled(self):
        source = seeded()
        for lines in threadtime(self.parts), brief(self.parts):
            got, holes, _ = self.imported([line for line in lines for _ in range(1 + (source.random() < 0.1))])
            assert got == self.positions and holes == "", holes

    def test_two_threads(self):
        for form in threadtime, brief:
            got, holes, _ = self.imported(form(mixed(self.parts)))
            assert got == self.positions and holes == "", holes

    def test_chatty_and_other_processes(self):
        lines = threadtime(self.parts)
        chatty = "11-22 10:00:00.100  1234   201 I chatty  : uid=1047(cameraserver) Thread expire 12 lines"
        other = lines[100].replace(" 1234 ", " 4321 ")
        got, holes, _ = self.imported(lines[:100] + [chatty, other] + lines[100:])
        assert got == self.positions and "12 lines of the process were dropped by the log" in holes, holes

    def test_begun_late(self):
        lines = threadtime(self.parts)
        got, holes, _ = self.imported(lines[find(lines, "update sensor data F:(30)") + 1:])
        assert "start of its monitor is not in the capture" in holes and "rolling shutter of 15980 us" in holes, holes
        assert got[-40:] == self.positions[-40:]

    def test_random_damage(self):
        source = seeded()
        lines = threadtime(self.parts[:6000])
        for _ in range(5):
            damaged = [line[:source.randrange(len(line))] if source.random() < 0.03 else line
                       for line in lines if source.random() > 0.03]
            assert self.imported(damaged)[1] != ""
        data = bytearray("\n".join(lines).encode())
        for _ in range(2000):
            data[source.randrange(4096, len(data))] = source.randrange(256)  # zeros at the beginning are no text
        self.imported(bytes(data))

    def test_two_sensors(self):
        lines = list(HEAD)
        for sensor, kind in (0, 5), (1, 6):
            lines.append(json.dumps({"platform": "sensor", "sensor": sensor, "rolling_shutter": {"0": 10000000},
                                     "otp_layout": {"oisCalibration": {"offset": 16, "size": 4, "valid": 8,
                                                                       "indexNum": 1, "tableNumber": 2}, "enable": 1},
                                     "otp": "00" * 8 + "01"}))
            lines.append(json.dumps({"call": "RegisterAndStartSensorMonitor", "sensor": sensor, "type": kind}))
            lines.append(json.dumps({"call": "StoreRollingShutter", "sensor": sensor, "mode": 0}))
        for frame in range(1, 30):
            start = frame * 33000000
            # One thread hands over first the one, then the other.
            for sensor, kind in ((0, 5), (1, 6)) if frame % 2 else ((1, 6), (0, 5)):
                data = [[start + k * 1000000, 0, 0, sensor * 100 + frame, k] for k in range(33)]
                lines.append(json.dumps({"samples": kind, "data": data}))
                lines.append(json.dumps({"call": "UpdateSensorData", "sensor": sensor, "frame": frame,
                                         "timestamp": start}))
            for sensor in 0, 1:
                lines.append(json.dumps({"metadata": "m", "entries": [
                    {"tag": "0xC0010017", "int64": [start + 15000000 + sensor * 700000]},
                    {"tag": "0xC0030000", "memory": {"size": 4712, "u64": {"4592": 2000000}}}]}))
                lines.append(json.dumps({"call": "fillLscOISCompInfo", "sensor": sensor, "metadata": "m"}))
        positions, parts, _ = self.play("\n".join(lines) + "\n")
        for form in threadtime, brief:
            got, holes, table = self.imported(form(parts))
            assert got == positions and positions[-1][0] != positions[-2][0], holes
            assert ("names no threads" in holes) == (form == brief) and "line " not in holes, holes
        # Both sensors' frames begin at once, on two threads that brief does not tell apart.
        modes = [i for i, (_, _, text) in enumerate(parts) if "is_multiexp_mode" in text]
        for first, second in zip(modes[0::2], modes[1::2]):
            parts[first + 1:second + 2] = [parts[second], parts[first + 1], parts[second + 1], *parts[first + 2:second]]
        got, holes, _ = self.imported(brief(parts))
        assert got == positions and "line " not in holes, holes

    def test_nothing_of_the_library(self):
        message = self.imported(["--------- beginning of main", "I/Camera( 12): hello"], status=2)
        assert message.startswith(f"capture.txt:2: no message of the library"), message


if __name__ == "__main__":
    unittest.main()
