#!/usr/bin/env python3
"""Writes a long session for timing the player: two sensors at 60 frames a second with hall samples at 1 kHz each.

    python3 bench/long_session.py --minutes 10 > build/long.jsonl
    time build/release/tools/cli/lsc_replay build/long.jsonl > /dev/null

The lens moves on a smooth made-up path; samples and frames are as long as recorded ones are in text.
"""
import argparse
import math
import sys

SENSORS = (0, 1)
TYPES = (5, 6)
START_NS = 93_400_000_000
FRAME_NS = 16_666_667
SAMPLE_NS = 1_000_000
EXPOSURE_NS = 4_967_740
ASK_LAG = 2  # frames


def opening():
    for sensor in SENSORS:
        yield ('{"platform":"sensor","sensor":%d,"otp_layout":{"oisCalibration":{"offset":4,"size":4,"valid":3,'
               '"indexNum":1,"tableNumber":2},"enable":1},"otp":"0000000101020304","rolling_shutter":{"0":9600000}}'
               % sensor)
        yield '{"call":"RegisterAndStartSensorMonitor","sensor":%d,"type":%d}' % (sensor, TYPES[sensor])
        yield '{"call":"StoreRollingShutter","sensor":%d,"mode":0}' % sensor


def sample(time, phase):
    x, y = 60 * math.sin(time * 4e-9 + phase), 45 * math.sin(time * 3e-9 + 2 * phase)
    count_x, count_y = 2048 + round(x * 12.5), 2048 + round(y * 12.5)
    return "[%d,%d,%d,%.4f,%.4f]" % (time + (time // SAMPLE_NS * 7919) % 30_000, count_x, count_y, x, y)


def frame_lines(number, sensor):
    begin, end = (START_NS + FRAME_NS * (number + i) for i in (0, 1))
    times = range(-(-begin // SAMPLE_NS) * SAMPLE_NS, end, SAMPLE_NS)
    samples = ",".join(sample(time, sensor) for time in times)
    yield '{"samples":%d,"data":[%s]}' % (TYPES[sensor], samples)
    yield '{"call":"UpdateSensorData","sensor":%d,"frame":%d,"timestamp":%d}' % (sensor, number + 1, begin)
    if number < ASK_LAG:
        return
    start = START_NS + FRAME_NS * (number - ASK_LAG) + 1234
    name = "frame-%d" % sensor
    yield ('{"metadata":"%s","entries":[{"tag":"0xC00A0002","int32":[1]},{"tag":"0xC0010017","int64":[%d]},'
           '{"tag":"0xC0030000","memory":{"size":4712,"u64":{"4592":%d}}}]}' % (name, start, EXPOSURE_NS))
    yield '{"call":"fillLscOISCompInfo","sensor":%d,"metadata":"%s"}' % (sensor, name)


parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
parser.add_argument("--minutes", type=float, default=10)
arguments = parser.parse_args()
write = sys.stdout.write
for line in opening():
    write(line + "\n")
for number in range(int(arguments.minutes * 3600)):
    for sensor in SENSORS:
        for line in frame_lines(number, sensor):
            write(line + "\n")
