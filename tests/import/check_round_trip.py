#!/usr/bin/env python3
"""Session to log to session: what the library logged must import to a session with the same positions.

    check_round_trip.py SESSION LSC_REPLAY...

The session is played with customer log level 4; its log is written in each form that logcat has, then damaged: lines
dropped, cut, doubled, mixed from two threads. Random damage prints its seed.
"""
import json
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

SEED = int(os.environ.get("SEED", random.randrange(1 << 32)))
OUTPUTS = range(0xC0030033, 0xC0030039)
HEAD = ['{"platform":"property","key":"vendor.tarvo.3a.lscutil.log","value":4}',
        '{"platform":"log","mode":1,"details_level":5,"details_mask":"0x821000"}']
replay = sys.argv[2:]
directory = tempfile.TemporaryDirectory()
work = pathlib.Path(directory.name)


def play(text):
    """Positions of every frame asked for, to six decimals; the log's (letter, tag, text); the table."""
    (work / "s.jsonl").write_text(text, encoding="utf-8")
    done = subprocess.run([*replay, "--log", "--results", work / "r.jsonl", work / "s.jsonl"], capture_output=True,
                          check=True)
    positions = []
    for line in open(work / "r.jsonl", encoding="utf-8"):
        result = json.loads(line)
        if result["call"] == "fillLscOISCompInfo":
            found = {e["tag"]: e["double"][0] for e in result["metadata"] if e["tag"] in OUTPUTS and "double" in e}
            positions.append(tuple(f"{found[tag]:.6f}" if tag in found else None for tag in OUTPUTS))
        elif result["call"] == "CalcOISValue":
            values = [f"{result[k][0]:.6f}" if result[k] else None for k in "xy"]
            positions.append((*values, None, None, None, None))
    parts = [re.match(r"(.)/(.*?)\( *\d+\): (.*)", line).groups() for line in done.stderr.decode().splitlines()]
    return positions, parts, done.stdout.decode()


def imported(lines, *options, status=0):
    """Positions, holes and table of the session made from these lines."""
    data = lines if isinstance(lines, bytes) else "".join(line + "\n" for line in lines).encode()
    (work / "capture.txt").write_bytes(data)
    done = subprocess.run([*replay, "import", work / "capture.txt", *options], capture_output=True)
    assert done.returncode == status, (done.returncode, done.stderr)
    if status:
        return done.stderr.decode()
    # What the library logs again costs time and changes nothing.
    positions, _, table = play(done.stdout.decode().replace('"details_level":5', '"details_level":0'))
    return positions, done.stderr.decode(), table


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


def same_but(got, *calls):
    """Whether all positions are the session's but those of these calls."""
    return len(got) == len(POSITIONS) and all(
        mine == theirs or i in calls for i, (mine, theirs) in enumerate(zip(got, POSITIONS)))


def mixed(parts):
    """Moves the beginning of each frame's messages into the middle of the samples before it."""
    lines = list(parts)
    for i, (_, _, text) in enumerate(lines):
        if "is_multiexp_mode" in text and "sof_timestamp" in lines[i + 1][2] and "update sensor" in lines[i - 1][2]:
            lines[i - 6:i + 2] = lines[i - 6:i - 4] + [lines[i]] + lines[i - 4:i - 2] + [lines[i + 1]] + lines[i - 2:i]
    assert lines != list(parts)
    return lines


CASES = []


def case(function):
    CASES.append(function)


@case
def every_form():
    brackets = "--------- beginning of main"
    foreign = ["11-22 10:00:00.000  1234  202 I Camera: [pushValue] index:0", "not a line of a log", ""]
    forms = [threadtime(PARTS), threadtime(PARTS, uid="1047 ", zone=" +0100", year="2026-", digits=6),
             threadtime(PARTS, uid="media ", digits=9), time(PARTS), time(PARTS, uid=" 1047:", digits=6),
             brief(PARTS), brief(PARTS, uid="1047:"), [line + "\r" for line in threadtime(PARTS, zone=" -0330")],
             [f"{i}.{i % 1000:03} " + line.split(" ", 2)[2] for i, line in enumerate(threadtime(PARTS))]]
    for lines in forms:
        got, holes, table = imported([brackets, *lines[:50], *foreign, *lines[50:]])
        assert got == POSITIONS and holes == "", (lines[0], holes)
        assert "  another position                                      0" in table, table


@case
def whole_session():
    positions, parts, _ = play("\n".join(session) + "\n")
    got, holes, table = imported(threadtime(parts))
    assert got == positions and holes == "" and "position on the device only                         0" in table, holes


@case
def lost_sample():
    lines = threadtime(PARTS)
    lost = find(lines, "update sensor data F:(40)") - 5
    for damaged in without(lines, lost), lines[:lost] + [lines[lost][:-9]] + lines[lost + 1:]:
        got, holes, _ = imported(damaged)
        assert "frame 40: 1 sample is not in the capture" in holes and len(got) == len(POSITIONS), holes


@case
def lost_batch():
    lines = threadtime(PARTS)
    end = find(lines, "update sensor data F:(40)")
    begin = max(i for i in range(end) if "index:0," in lines[i])
    _, holes, _ = imported(lines[:begin] + lines[end:])
    assert "frame 40: " in holes and "left out" in holes, holes


@case
def lost_ends_of_batches():
    lines = threadtime(PARTS)
    end = find(lines, "update sensor data F:(40)")
    got, holes, _ = imported(without(lines, end))
    assert got == POSITIONS and holes == "", holes  # the frame number stands in the message before
    numbers = [i for i, line in enumerate(lines) if "F:(40)" in line or "frameNumber: 40 " in line]
    got, holes, _ = imported(without(lines, *numbers))
    assert got == POSITIONS and "frame 40: its frame number is assumed" in holes, holes


@case
def lost_lines_of_a_frame():
    lines = threadtime(PARTS)
    mode = [i for i, line in enumerate(lines) if "is_multiexp_mode" in line][50]
    for lost, words in (mode, "exposure mode"), (mode + 1, "timing"):
        got, holes, _ = imported(without(lines, lost))
        assert words in holes and same_but(got, *([] if lost == mode else [50])), holes
        assert got[50][:2] == POSITIONS[50][:2]
    result = next(i for i in range(mode, len(lines)) if "out_frame_ois0" in lines[i])
    got, holes, _ = imported(without(lines, result))
    assert got == POSITIONS and "what became of its exposure of type 1" in holes, holes


@case
def disagreement():
    lines = threadtime(PARTS)
    number = [i for i, line in enumerate(lines) if "out_frame_ois0" in line][3]
    other = re.sub(r"ois0\(x = [-0-9.]+", "ois0(x = 999.000000", lines[number])
    _, _, table = imported(lines[:number] + [other] + lines[number + 1:])
    assert "the device gave x 999.000000" in table and re.search("  another position +1\n", table), table


@case
def doubled():
    source = random.Random(SEED)
    for lines in threadtime(PARTS), brief(PARTS):
        got, holes, _ = imported([line for line in lines for _ in range(1 + (source.random() < 0.1))])
        assert got == POSITIONS and holes == "", holes


@case
def two_threads():
    for form in threadtime, brief:
        got, holes, _ = imported(form(mixed(PARTS)))
        assert got == POSITIONS and holes == "", holes


@case
def chatty_and_other_processes():
    lines = threadtime(PARTS)
    chatty = "11-22 10:00:00.100  1234   201 I chatty  : uid=1047(cameraserver) Thread expire 12 lines"
    other = lines[100].replace(" 1234 ", " 4321 ")
    got, holes, _ = imported(lines[:100] + [chatty, other] + lines[100:])
    assert got == POSITIONS and "12 lines of the process were dropped by the log" in holes, holes


@case
def begun_late():
    lines = threadtime(PARTS)
    got, holes, _ = imported(lines[find(lines, "update sensor data F:(30)") + 1:])
    assert "start of its monitor is not in the capture" in holes and "rolling shutter of 15980 us" in holes, holes
    assert got[-40:] == POSITIONS[-40:]


@case
def random_damage():
    source = random.Random(SEED)
    lines = threadtime(PARTS[:6000])
    for _ in range(5):
        damaged = [line[:source.randrange(len(line))] if source.random() < 0.03 else line
                   for line in lines if source.random() > 0.03]
        assert imported(damaged)[1] != ""
    data = bytearray("\n".join(lines).encode())
    for _ in range(2000):
        data[source.randrange(len(data))] = source.randrange(256)
    imported(bytes(data))


@case
def two_sensors():
    lines = list(HEAD)
    for sensor, kind in (0, 5), (1, 6):
        lines.append(json.dumps({"platform": "sensor", "sensor": sensor, "rolling_shutter": {"0": 10000000},
                                 "otp_layout": {"oisCalibration": {"offset": 16, "size": 4, "valid": 8, "indexNum": 1,
                                                                   "tableNumber": 2}, "enable": 1}, "otp": "00" * 8 + "01"}))
        lines.append(json.dumps({"call": "RegisterAndStartSensorMonitor", "sensor": sensor, "type": kind}))
        lines.append(json.dumps({"call": "StoreRollingShutter", "sensor": sensor, "mode": 0}))
    for frame in range(1, 30):
        start = frame * 33000000
        # One thread hands over first the one, then the other.
        for sensor, kind in ((0, 5), (1, 6)) if frame % 2 else ((1, 6), (0, 5)):
            data = [[start + k * 1000000, 0, 0, sensor * 100 + frame, k] for k in range(33)]
            lines.append(json.dumps({"samples": kind, "data": data}))
            lines.append(json.dumps({"call": "UpdateSensorData", "sensor": sensor, "frame": frame, "timestamp": start}))
        for sensor in 0, 1:
            lines.append(json.dumps({"metadata": "m", "entries": [
                {"tag": "0xC0010017", "int64": [start + 15000000 + sensor * 700000]},
                {"tag": "0xC0030000", "memory": {"size": 4712, "u64": {"4592": 2000000}}}]}))
            lines.append(json.dumps({"call": "fillLscOISCompInfo", "sensor": sensor, "metadata": "m"}))
    positions, parts, _ = play("\n".join(lines) + "\n")
    for form in threadtime, brief:
        got, holes, table = imported(form(parts))
        assert got == positions and holes == "" and positions[-1][0] != positions[-2][0], holes
    # Both sensors' frames begin at once, on two threads that brief does not tell apart.
    modes = [i for i, (_, _, text) in enumerate(parts) if "is_multiexp_mode" in text]
    for first, second in zip(modes[0::2], modes[1::2]):
        parts[first + 1:second + 2] = [parts[second], parts[first + 1], parts[second + 1], *parts[first + 2:second]]
    got, holes, _ = imported(brief(parts))
    assert got == positions and holes == "", holes


@case
def nothing_of_the_library():
    message = imported(["--------- beginning of main", "I/Camera( 12): hello"], status=2)
    assert message.startswith(f"{work}/capture.txt:2: no message of the library"), message


session = HEAD + pathlib.Path(sys.argv[1]).read_text(encoding="utf-8").splitlines()
# The first seconds are enough for most: the start, a frame asked for twice, a gap in the samples.
POSITIONS, PARTS, _ = play("\n".join(session[:900]) + "\n")
assert any(p[0] for p in POSITIONS) and len(PARTS) > 10000
for function in CASES:
    try:
        function()
    except Exception:
        print(f"{function.__name__} failed (SEED={SEED})", flush=True)
        raise
