#!/usr/bin/env python3
"""What an import says of damaged captures: standard error, exit status and what the damage changes in the session.

Each case damages a small capture in one way. All that the import says is compared with the file beside this one. With
UPDATE=1 in the environment it is written to the file instead; read it before you commit it.
"""
import calendar
import difflib
import functools
import io
import json
import os
import pathlib
import re
import subprocess
import tarfile
import unittest
from dataclasses import replace

from capture_damage import later
from capture_forms import WRAPS, lines_of
from capture_quiet import IDLE, MORE, ONE, RESTARTED, TWO, TWO_ON_ONE_THREAD, records
from tool import REPLAY, ToolTest

HAND_OVER_4 = r"F:\(4\) TS"  # its last message
GOLDEN = pathlib.Path(__file__).with_suffix(".txt")
NEW_YEAR = calendar.timegm((2027, 1, 1, 0, 0, 0)) * 10 ** 9
MOST_CHANGED = 20  # lines of a session that are shown

# ---- Damages: each takes a capture's records and gives those that are left

def places(whole, pattern):
    found = [i for i, record in enumerate(whole) if re.search(pattern, record.text)]
    assert found, pattern
    return found


def lost(pattern, *which):
    """Without all messages that match, or without those of them that are numbered."""
    def damage(whole):
        found = places(whole, pattern)
        gone = {found[i] for i in which} if which else set(found)
        return [record for i, record in enumerate(whole) if i not in gone]
    return damage


def changed(pattern, which, old, new):
    def damage(whole):
        at = places(whole, pattern)[which]
        assert old in whole[at].text, whole[at]
        return [*whole[:at], replace(whole[at], text=whole[at].text.replace(old, new, 1)), *whole[at + 1:]]
    return damage


def calls_lost(pattern, *which):
    """Without all messages of some calls."""
    def damage(whole):
        found = places(whole, pattern)
        gone = {whole[found[i]].call for i in which}
        return [record for record in whole if record.call not in gone]
    return damage


def threads_lost_from(call, *patterns):
    """Without what the threads of some messages log from a call on."""
    def damage(whole):
        gone = {whole[places(whole, pattern)[0]].tid for pattern in patterns}
        return [record for record in whole if record.call < call or record.tid not in gone]
    return damage


def burst(first, last):
    """Without what lies from the first match of one pattern to the first match of the other after it."""
    def damage(whole):
        begin = places(whole, first)[0]
        end = next(i for i in places(whole, last) if i > begin)
        return whole[:begin] + whole[end + 1:]
    return damage


def begun_at(pattern):
    return lambda whole: whole[places(whole, pattern)[0]:]


def in_turn(*damages):
    return lambda whole: functools.reduce(lambda left, damage: damage(left), damages, whole)


def inserted(pattern, make):
    """With a record more, made from the first match, behind it."""
    def damage(whole):
        at = places(whole, pattern)[0]
        return [*whole[:at + 1], make(whole[at]), *whole[at + 1:]]
    return damage


def same(whole):
    return whole


def printed_again(whole):
    """The recording was interrupted; a line among those that came again was not there before."""
    at = places(whole, HAND_OVER_4)[0]
    again = whole[at - 60:at]
    again[30] = replace(again[30], text=again[30].text.replace("timestamp", "timestamp ", 1))
    return whole[:at] + again + whole[at:]


def printed_twice(whole):
    return whole + whole


def two_logs(whole):
    at = places(whole, HAND_OVER_4)[0]
    return whole[at:] + whole[:at]


def process_after(whole):
    return whole + later(whole[:200], whole, whole[0].pid + 100)


def cut_head(record):
    return f"11-18 11:06:40.0TarvoShadingCustomUtil: {record.text}"


def chatty(record):
    return replace(record, tag="chatty", priority="I", text="uid=1047(cameraserver) Binder:1_2 expire 12 lines")


def refused(record):
    return replace(record, text="[IsSupportFeature] sensorId(14) is invalid !!! (IsSupportFeature){#61:a.cpp}")


def identical(record):
    return replace(record, tag="chatty", priority="I", text="uid=1047(cameraserver) Binder:1_2 identical 2 lines")


def new_year(whole):
    """The log goes on into January, and its form names no year."""
    begin = whole[places(whole, HAND_OVER_4)[0]].time
    return [replace(record, time=record.time - begin + NEW_YEAR) for record in whole]


def bare(whole):
    """As the form raw prints them: without a head."""
    return [record.text for record in whole]


def samples_lost(whole):
    """Without a hand-over's samples, but with the messages that count them."""
    call = whole[places(whole, HAND_OVER_4)[0]].call
    return [record for record in whole if record.call != call or "index:" not in record.text]


CASES = {
    "one camera": (ONE, same),
    "one camera, more calls": (MORE, same),
    "two cameras": (TWO, same),
    "an idle camera": (IDLE, same),
    "calculation mode 2, a forced table": ({**MORE, "mode": 2, "table": 3}, same),
    "hand-overs without samples": ({**ONE, "empty": (5, 6)}, same),
    "customer log level 3": ({**ONE, "level": 3}, same),
    "customer log level 0": ({**ONE, "level": 0}, same),

    "sample lost": (ONE, lost("index:3,", 4)),
    "sample lost, lists off": (ONE, in_turn(lost("index:3,", 4), lost("get source ois data"))),
    "sample lost, in the lists, too": (
        ONE, in_turn(lost("index:12,", 4), lost("source ois data .*timestamp = 100128051"))),
    "other sample": (ONE, changed("index:12,", 4, "OIS_X:1", "OIS_X:9")),
    "samples of a hand-over lost": (ONE, samples_lost),
    "all samples lost": (ONE, lost("index:.*OIS_X")),
    "batch's message lost": (ONE, lost(r"^\[pushValue\] F:\(4\)")),
    "hand-over's last message lost": (ONE, lost(HAND_OVER_4)),
    "both lost": (ONE, lost(r"F:\(4\)")),
    "hand-over lost": (ONE, calls_lost(HAND_OVER_4, 0)),
    "hand-over of two cameras lost": (TWO, calls_lost(r"F:\((4|12)\) TS", 0, 1)),
    "three hand-overs lost": (ONE, calls_lost(r"F:\([456]\) TS", 0, 1, 2)),
    "hand-over and all lists lost": (ONE, in_turn(calls_lost(HAND_OVER_4, 0), lost("get source ois data"))),
    "three hand-overs and all lists lost": (
        ONE, in_turn(calls_lost(r"F:\([456]\) TS", 0, 1, 2), lost("get source ois data"))),
    "empty hand-over lost": ({**ONE, "empty": (5, 6)}, lost("no sensor data", 0)),
    "all hand-overs lost": (ONE, lost(r"pushValue|updateSensorData")),
    "division lost": (MORE, lost("split data")),
    "other division": (MORE, changed("split data", 0, "lastData:17", "lastData:16")),
    "hand-over before a division lost": (MORE, calls_lost(r"F:\(7\) TS", 0)),
    "burst from one hand-over into the next": (ONE, burst(HAND_OVER_4, "index:7,")),
    "other count": (ONE, changed(HAND_OVER_4, 0, "size:16", "size:19")),
    "other last time": (ONE, changed(HAND_OVER_4, 0, "100102047105", "100102047106")),
    "other buffer": (ONE, changed(HAND_OVER_4, 0, "queue size:4", "queue size:6")),
    "other frame number": (ONE, changed(HAND_OVER_4, 0, "F:(4)", "F:(9)")),

    "mode lost": (ONE, lost("is_multiexp_mode", 3)),
    "mode of a frame asked for again lost": (MORE, lost("is_multiexp_mode", 4)),
    "timing lost": (ONE, lost("exposure_time:", 3)),
    "mode and timing lost": (TWO, lost("is_multiexp_mode|exposure_time:", *range(8, 12))),
    "all but the mode lost": (ONE, lost("CalcOIS|getData|getSensor|QuerySensor|fill OIS")),
    "query lost": (ONE, lost("getDataByTimestamp|getSensorData|QuerySensorData", 12, 13, 14, 15)),
    "message of a query lost": (ONE, lost("getSensorData", 3)),
    "other total": (ONE, changed("total data size", 3, "size:", "size:1")),
    "lower total": (ONE, changed("total data size", 9, "size:2", "size:")),
    "entry of a list lost": (ONE, lost("get source ois data index = 40", 3)),
    "end of a list lost": (ONE, lost("get source ois data index = 99", 3)),
    "step lost": (ONE, lost("endIndex, i", 30)),
    "step printed twice": (ONE, inserted("endIndex, i", lambda record: replace(record, time=record.time + 1))),
    "all lists lost": (ONE, lost("get source ois data")),
    "position lost": (TWO, lost("out_frame_ois0", 3)),
    "all positions lost": (ONE, lost("out_frame_ois0|fill OIS")),
    "other position": (ONE, changed("out_frame_ois0", 3, "ois0(x = 1", "ois0(x = 9")),
    "other position of the first frame": (ONE, changed("out_frame_ois0", 0, "ois0(x = 1", "ois0(x = 9")),
    "other calculation mode": (ONE, changed("out_frame_ois0", 3, "Mode = 0", "Mode = 1")),
    "last message of a frame lost": (ONE, lost("fill OIS value", 3)),
    "calculation's head lost": (ONE, lost("oisCount", 3)),
    "second exposure's head lost": (TWO, lost("type = 6, oisCount", 3)),
    "calculation and its list lost": (ONE, burst("oisCount = 100, sof_timestamp = 1000566", "Match OIS")),
    "head of a calculation without a match lost": (MORE, lost("oisCount", -1)),
    "first exposure lost": (TWO, burst("is_multiexp_mode:1", "cust_lsc_type:5")),
    "frame lost": (ONE, calls_lost("is_multiexp", 3)),
    "frames up to the end lost": (ONE, calls_lost("is_multiexp", *range(3, 10))),
    "frames of a monitor up to its end lost": (RESTARTED, calls_lost("is_multiexp", 2, 3)),
    "last frame lost": (ONE, calls_lost("is_multiexp", 9)),
    "a camera's frames up to the end lost": (TWO, threads_lost_from(20, "type = 5")),
    "camera gone": (TWO, in_turn(threads_lost_from(20, "updateSensorData.*F:.1. TS", "type = 1"), lost("Stop sensorId:0"))),
    "all frames lost": (ONE, lost("CalcOIS|getData|getSensor|QuerySensor|fillLsc")),

    "registration lost": (TWO, lost("Register Sensor Monitor", 0)),
    "delivery's start lost": (TWO, lost("enable sensorType", 0)),
    "monitor's start lost": (TWO, lost("Enable Sensor Monitor", 0)),
    "registration and start lost": (TWO, calls_lost("Register Sensor Monitor", 1)),
    "failed start, registration lost": (MORE, lost("Register Sensor Monitor sensorId:2|Stop sensorId:2")),
    "rolling shutter lost": (TWO, lost("rolling_shutter:", 0)),
    "end lost": (TWO, lost("Stop sensorId", 0)),
    "end and registration lost": (RESTARTED, burst("disableSensor", "Register Sensor Monitor")),
    "end lost, started again": (RESTARTED, lost("disableSensor|Stop sensorId", 0, 1)),
    "begun late": (TWO, begun_at(HAND_OVER_4)),
    "begun late, one thread": (TWO_ON_ONE_THREAD, begun_at(HAND_OVER_4)),
    "OTP layout lost": (ONE, lost(r"multiGolden\[", 0)),
    "OTP memory lost": (TWO, lost("ReadOTPInfo")),
    "silence": (ONE, burst(HAND_OVER_4, "disableSensor")),

    "message cut": (ONE, changed(HAND_OVER_4, 0, ", queue size:4", "")),
    "all lines cut": (ONE, lambda whole: [replace(record, text=record.text[:90]) for record in whole]),
    "line cut": (ONE, inserted(HAND_OVER_4, cut_head)),
    "lines dropped": (ONE, inserted(HAND_OVER_4, chatty)),
    "lines dropped, of which process nothing tells": (ONE, inserted(HAND_OVER_4, chatty), {"form": "tag"}),
    "identical lines": (ONE, inserted(HAND_OVER_4, identical)),
    "identical hand-overs without samples": (
        {**ONE, "empty": (5, 6, 7, 8)}, in_turn(inserted("no sensor data", identical), lost("no sensor data", 1, 2))),
    "refused sensor": (ONE, in_turn(inserted(HAND_OVER_4, refused), inserted(HAND_OVER_4, refused))),
    "new year": (ONE, new_year),
    "interrupted": (ONE, printed_again),
    "two logs": (ONE, two_logs),
    "every ninth line lost": (TWO, lambda whole: [record for i, record in enumerate(whole) if i % 9]),
    "two processes": (ONE, process_after),
    "two processes, the second": (ONE, process_after, {"options": ("--pid", "7755")}),
    "two processes, none of them": (ONE, process_after, {"options": ("--pid", "12")}),
    "brief": (TWO, same, {"form": "brief"}),
    "brief, one camera": (ONE, same, {"form": "brief"}),
    "brief, twice": (ONE, printed_twice, {"form": "brief"}),
    "raw": (ONE, bare),
    "raw in part": (ONE, lambda whole: whole[:600] + bare(whole[600:610]) + whole[610:]),
    "other lines": (ONE, lambda whole: ["--------- beginning of main"]),
}


def shown(line):
    """A line of a session, its samples and zeros counted."""
    if not line.startswith('{"samples"'):
        return re.sub("0{9,}", lambda zeros: f"0*{len(zeros[0])}", line)
    data = json.loads(line)["data"]
    return f"{line.split(',')[0]}: {len(data)} from {data[0][0]} to {data[-1][0]}"


def tarred(log, name):
    archive = io.BytesIO()
    with tarfile.open(fileobj=archive, mode="w") as tar:
        about = tarfile.TarInfo(name)
        about.size = len(log)
        tar.addfile(about, io.BytesIO(log))
    return archive.getvalue()


class Damage(ToolTest):
    def imported(self, log, form="threadtime", options=()):
        """Exit status, standard error and the session's lines."""
        self.write("capture.txt", "".join(lines_of(log, form)))
        done = subprocess.run([*REPLAY, "import", "--strict", "capture.txt", *options], cwd=self.folder,
                              capture_output=True, text=True, check=False)
        return done.returncode, done.stderr, [shown(line) for line in done.stdout.splitlines()]

    @functools.cache
    def whole(self, capture):
        return self.imported(records(**dict(capture)))[2]

    def said(self, capture, damage, how={}):
        status, message, session = self.imported(damage(records(**capture)), **how)
        if damage is same and not how:
            more = [line for line in session if line.startswith(("# ", '{"platform"'))]
            fewer = 0
        else:
            change = list(difflib.unified_diff(self.whole(tuple(capture.items())), session, n=0, lineterm=""))[2:]
            more = [line[1:] for line in change if line.startswith("+")]
            fewer = sum(line.startswith("-") for line in change)
        return (f"exit status {status}\n{message}---- in the session {len(more)} other lines, {fewer} fewer\n"
                + "".join(line + "\n" for line in more[:MOST_CHANGED]))

    def test_messages(self):
        cases = {name: self.said(*case) for name, case in CASES.items()}
        text = "".join(f"======== {name}: {said}" for name, said in cases.items())
        if os.environ.get("UPDATE") == "1":
            GOLDEN.write_text(text, encoding="utf-8")
        expected = GOLDEN.read_text(encoding="utf-8")
        parts = dict(part.split(": ", 1) for part in expected.split("======== ")[1:])
        for name, said in cases.items():
            with self.subTest(name):
                self.assertMultiLineEqual(said, parts.get(name, ""))
        self.assertEqual(text, expected)

    def test_files(self):
        log = b"".join(line.encode() for line in lines_of(records(**ONE), "threadtime"))
        packed, archive = WRAPS["gzip"](log), WRAPS["bugreport"](log)
        in_folder = archive.replace(b"bugreport-phone", b"bugreport/phone")
        for name in b"version", b"main_entry":
            in_folder = in_folder.replace(name + b".txt", name + b".bin")
        said = "messages of the library                                  2172"
        for name, argument, data, status, message in (
                ("gzip", "capture", packed, 0, said), ("bug report", "-", archive, 0, said),
                ("tar", "-", WRAPS["gzip"](tarred(log, "./logcat.txt")), 0, said),
                ("tar without a log", "capture", tarred(log, "logcat"), 1,
                 "lsc_replay: capture: an archive without a .txt or .log file at its top\n"),
                ("UTF-16", "capture", WRAPS["utf16be"](log), 0, said),
                ("cut", "capture", packed[:-2000], 1, "lsc_replay: capture: cannot be unpacked: "),
                ("bug report cut", "-", archive[:-2000], 1, "lsc_replay: standard input: cannot be unpacked: "),
                ("bug report in a folder", "capture", in_folder, 1,
                 "lsc_replay: capture: an archive without a .txt or .log file at its top\n"),
                ("program", "-", b"\x7fELF\0", 1,
                 "lsc_replay: standard input: is neither text nor compressed in a known way\n"),
                ("other lines", "-", b"--------- beginning of main\n", 2,
                 "standard input:1: no message of the library in this file; ")):
            with self.subTest(name), open(self.write("capture", data), "rb") as stream:
                done = self.run_command([*REPLAY, "import", argument, "-o", "s.jsonl"], status, stdin=stream)
                self.assertEqual(done.stderr[:len(message)], message)


if __name__ == "__main__":
    unittest.main()
