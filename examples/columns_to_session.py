#!/usr/bin/env python3
"""Makes a session from recorded lens positions and the frames they were recorded with.

    columns_to_session.py --ois ois_log.txt --frames frame_log.txt -o session.jsonl
    columns_to_session.py --ois lens.csv --ois-columns time,x,y --ois-unit us \\
        --frames frames.csv --frame-columns frame,time,exposure --frame-unit us --readout 15980

Both files hold numbers in columns, separated by spaces, tabs, commas or semicolons. Empty lines, lines that begin with
'#' and a first line of words are skipped. Columns are named from the left; '-' skips one, further ones are ignored.

A position goes with the frame that its column names or, without such a column, with the first frame whose readout ends
after it. Each frame is asked for --delay frames later, the last ones at the end. The sensor is 0, its OTP memory made up.

Exit status: 0 when the session is written, 1 for a file that cannot be read or written, 2 for anything wrong in a line
(FILE:LINE: what is wrong) or on the command line.
"""

import argparse
import bisect
import ctypes
import decimal
import math
import os
import re
import sys
from dataclasses import dataclass, field

NS_PER_UNIT = {"ns": 1, "us": 1000, "ms": 1_000_000, "s": 1_000_000_000}
MAX_TIME_NS = 2**63 - 1  # samples and metadata hold signed times
MAX_U32 = 2**32 - 1
SENSOR_TYPE = 5
SENSOR = ('{{"platform":"sensor","sensor":0,"otp_layout":{{'
          '"multiGolden":{{"offset":0,"size":8,"valid":0,"gradient":1,"flag":2}},'
          '"oisCalibration":{{"offset":16,"size":40,"valid":8,"indexNum":4,"tableNumber":5}},"enable":1}},'
          '"otp":"000000000000000001","rolling_shutter":{{{shutter}}}}}')
ROLLING_SHUTTER = '{"call":"StoreRollingShutter","sensor":0,"mode":0}'

TIME = re.compile(r"0*(\d{1,20})(?:\.(\d*))?", re.A)
WHOLE = re.compile(r"0*(\d{1,10})", re.A)
NUMBER = re.compile(r"[+-]?((\d+(\.\d*)?|\.\d+)(e[+-]?\d+)?|inf|infinity|nan)", re.A | re.I)
SEPARATORS = re.compile(r"[ \t\r\n,;]+")


class BadLine(Exception):
    """A line that cannot be read; the text names it."""


class BadOption(Exception):
    """A command line that asks for nothing sensible."""


def to_ns(text, unit):
    """A decimal number of units in ns, or None. Exact: no detour through binary fractions; below 1 ns it is cut off."""
    match = TIME.fullmatch(text)
    if not match:
        return None
    digits = len(str(NS_PER_UNIT[unit])) - 1
    return int(match[1] + (match[2] or "").ljust(digits, "0")[:digits])


def single(value):
    """The nearest number of single precision: what a sample holds. Infinite beyond their range."""
    return ctypes.c_float(value).value


def shortest(value):
    """The fewest digits that read back to this number of single precision."""
    for digits in range(1, 10):
        # Above a power of two more numbers read back to it than below: the nearest may not when the next one does.
        for rounding in decimal.ROUND_HALF_EVEN, decimal.ROUND_UP:
            short = float(decimal.Context(digits, rounding).create_decimal(value))
            if single(short) == value:
                return repr(short)
    raise AssertionError(f"{value} is not of single precision")


def split(text):
    return [part for part in SEPARATORS.split(text) if part]


class ColumnLog:
    """The rows of a file. `option` names its columns on the command line."""

    def __init__(self, file, option, columns, unit, required, optional):
        self.file, self.option, self.unit = file, option, unit
        self.columns, self.cells, self.line = split(columns), [], 0
        for name in self.columns:
            if name == "-":
                continue
            if name not in required + optional:
                raise BadOption(f'{option}: no column is called "{name}"')
            if self.columns.count(name) > 1:
                raise BadOption(f'{option}: duplicate column "{name}"')
        for name in required:
            if name not in self.columns:
                raise BadOption(f'{option}: the column "{name}" is missing')

    def rows(self, lines):
        """Takes one row after the other; what is read from the log is of the newest."""
        some = False
        for line in lines:
            self.line += 1
            self.cells = split(line)
            words = not some and not any(NUMBER.fullmatch(cell) for cell in self.cells)
            if line.startswith("#") or not self.cells or words:
                continue
            some = True
            if len(self.cells) < len(self.columns):
                self.fail(f"{len(self.cells)} columns, expected {len(self.columns)}; name the columns that there are "
                          f"with {self.option}")
            yield

    def has(self, column):
        return column in self.columns

    def time(self, column, offset_ns=0):
        ns = to_ns(self.cell(column), self.unit)
        if ns is None or not 0 <= ns + offset_ns <= MAX_TIME_NS:
            self.refuse(column, f"a time in {self.unit}", " and the unit")
        return ns + offset_ns

    def whole(self, column):
        match = WHOLE.fullmatch(self.cell(column))
        if not match or int(match[1]) > MAX_U32:
            self.refuse(column, "a whole number")
        return int(match[1])

    def number(self, column, scale=1.0):
        text = self.cell(column)
        value = float(text) * scale if NUMBER.fullmatch(text) else math.nan
        if not math.isfinite(single(value)):
            self.refuse(column, "a number")
        return single(value)

    def cell(self, column):
        return self.cells[self.columns.index(column)]

    def refuse(self, column, expected, more=""):
        self.fail(f'{column}: expected {expected}, got "{self.cell(column)}"; check the columns ({self.option}){more}')

    def fail(self, text):
        raise BadLine(f"{self.file}:{self.line}: {text}")


@dataclass
class Frame:
    number: int
    start: int
    exposure: int
    readout: int
    clock: int  # what the clock of the lens positions is ahead of that of the frames
    samples: list = field(default_factory=list)


def readout_of(log, given):
    if not log.has("readout"):
        return given
    ns = log.time("readout")
    if ns > MAX_U32:
        log.fail("readout: longer than 4 s; check the columns and the unit")
    return ns


def read_frames(lines, options):
    log = ColumnLog(options.frames, "--frame-columns", options.frame_columns, options.frame_unit,
                    ["time", "exposure"], ["readout", "frame", "ois_time"])
    if not log.has("readout") and options.readout is None:
        raise BadOption('--frame-columns: without the column "readout", --readout must give the time')
    frames = []
    for _ in log.rows(lines):
        # Frames count from 1: 0 asks the library for no frame.
        number = log.whole("frame") if log.has("frame") else len(frames) + 1
        start = log.time("time")
        exposure = log.time("exposure")
        readout = readout_of(log, options.readout)
        clock = log.time("ois_time") - start if log.has("ois_time") else 0
        frames.append(Frame(number, start, exposure, readout, clock))
    if not frames:
        log.fail("no frame in the file")
    return frames


def finder(frames, log):
    """A function that finds the frame of the log's newest position, or None."""
    if log.has("frame"):
        by_number = {frame.number: frame for frame in reversed(frames)}
        return lambda _: by_number.get(log.whole("frame"))
    by_end = {frame.start + frame.readout + frame.clock: frame for frame in reversed(frames)}
    ends = sorted(by_end)

    def by_time(ns):
        index = bisect.bisect_left(ends, ns)
        return by_end[ends[index]] if index < len(ends) else None
    return by_time


def read_samples(lines, options, frames):
    """Gives each frame its samples. Returns how many there were, and how many of them belong to no frame."""
    log = ColumnLog(options.ois, "--ois-columns", options.ois_columns, options.ois_unit,
                    ["x", "y", "time"], ["frame", "hall_x", "hall_y"])
    frame_of = finder(frames, log)
    has_hall = log.has("hall_x") and log.has("hall_y")
    count = unused = 0
    for _ in log.rows(lines):
        time = log.time("time", options.offset)
        hall = [log.number(column) for column in ("hall_x", "hall_y")] if has_hall else []
        position = [log.number(column, options.scale) for column in "xy"]
        count += 1
        frame = frame_of(time)
        if frame is None:
            unused += 1
            continue
        time = log.time("time", options.offset - frame.clock)
        numbers = ",".join(shortest(value) for value in (hall or position) + position)
        frame.samples.append(f"[{time},{numbers}]")
    if not count:
        log.fail("no lens position in the file")
    return count, unused


def hand_over_lines(frame):
    if frame.samples:
        yield f'{{"samples":{SENSOR_TYPE},"data":[{",".join(frame.samples)}]}}'
        yield f'{{"call":"UpdateSensorData","sensor":0,"frame":{frame.number},"timestamp":{frame.start}}}'


def ask_lines(frame):
    yield ('{"metadata":"frame","entries":[{"tag":"0xC00A0002","int32":[0]},'
           f'{{"tag":"0xC0010017","int64":[{frame.start}]}},'
           f'{{"tag":"0xC0030000","memory":{{"size":4712,"u64":{{"4592":{frame.exposure}}}}}}}]}}')
    yield '{"call":"fillLscOISCompInfo","sensor":0,"metadata":"frame"}'


def sensor_line(readout):
    return SENSOR.format(shutter=f'"0":{readout}' if readout else "")


def session_lines(frames, delay):
    yield '{"platform":"log","mode":1,"details_level":5,"details_mask":"0x821000"}'
    readout = frames[0].readout
    yield sensor_line(readout)
    yield f'{{"call":"RegisterAndStartSensorMonitor","sensor":0,"type":{SENSOR_TYPE}}}'
    yield ROLLING_SHUTTER
    delay = min(delay, len(frames))
    for i in range(len(frames) + delay):
        if i < len(frames):
            yield from hand_over_lines(frames[i])
        if i < delay:
            continue
        asked = frames[i - delay]
        if asked.readout != readout:
            readout = asked.readout
            yield sensor_line(readout)
            yield ROLLING_SHUTTER
        yield from ask_lines(asked)
    yield '{"call":"UnRegisterSensorMonitor","sensor":0}'


def head_lines(options, frames, count, unused):
    ois, frame_log = (re.sub(r"[\r\n]", "?", name) for name in (options.ois, options.frames))
    left_out = f", {unused} of them of frames that are not there" if unused else ""
    yield f"# Made from {ois} ({count} lens positions{left_out}) and {frame_log} ({len(frames)} frames)."
    yield f"# The sensor's OTP memory is made up. Each frame is asked for {options.delay} frames later."


def write(text, options):
    for source in (options.ois, options.frames):
        if options.output and os.path.exists(options.output) and os.path.samefile(options.output, source):
            raise OSError(None, "this is an input file; choose another output file", options.output)
    with open(options.output or 1, "wb", closefd=bool(options.output)) as output:
        output.write(text.encode(errors="surrogateescape"))


def convert(options):
    if options.readout is not None:
        options.readout = to_ns(options.readout, options.frame_unit)
        if options.readout is None or options.readout > MAX_U32:
            raise BadOption(f"--readout: expected a time in {options.frame_unit} of at most 4 s")
    offset = to_ns(options.offset.removeprefix("-"), options.ois_unit)
    if offset is None:
        raise BadOption(f"--offset: expected a time in {options.ois_unit}")
    options.offset = -offset if options.offset.startswith("-") else offset
    with (open(options.ois, encoding="utf-8", errors="surrogateescape", newline="\n") as ois,
          open(options.frames, encoding="utf-8", errors="surrogateescape", newline="\n") as frame_log):
        frames = read_frames(frame_log, options)
        count, unused = read_samples(ois, options, frames)
    lines = [*head_lines(options, frames, count, unused), *session_lines(frames, options.delay)]
    write("".join(line + "\n" for line in lines), options)
    if unused:
        print(f"{options.ois}: {unused} lens positions belong to no frame; left out", file=sys.stderr)


def frame_count(text):
    if not WHOLE.fullmatch(text):
        raise ValueError
    return int(text)


def parser():
    result = argparse.ArgumentParser(description=__doc__, allow_abbrev=False,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    add = result.add_argument
    add("--ois", metavar="FILE", required=True, help="lens positions, one a line")
    add("--frames", metavar="FILE", required=True, help="frames, one a line")
    add("-o", "--output", metavar="SESSION", help="session to write; standard output without it")
    add("--ois-columns", metavar="NAMES", default="frame,x,y,time",
        help="columns of the lens positions: x, y, time, and if there frame, hall_x, hall_y (default %(default)s)")
    add("--frame-columns", metavar="NAMES", default="time,exposure,-,readout,ois_time,-,frame",
        help="columns of the frames: time (start of frame), exposure, and if there readout, frame, ois_time (the start "
             "of frame in the clock of the lens positions) (default %(default)s)")
    add("--ois-unit", choices=NS_PER_UNIT, default="ns", help="unit of times of the lens positions (default ns)")
    add("--frame-unit", choices=NS_PER_UNIT, default="ns", help="unit of times of the frames (default ns)")
    add("--readout", metavar="TIME", help="readout of every frame, where no column gives it")
    add("--offset", metavar="TIME", default="0", help="added to the times of the lens positions, in their unit")
    add("--scale", metavar="FACTOR", type=float, default=1.0, help="x and y are multiplied by it")
    add("--delay", metavar="FRAMES", type=frame_count, default=2,
        help="how many frames later a frame is asked for (default %(default)s)")
    return result


def with_joined_columns(arguments):
    """The arguments with names of columns joined to their option: they may begin with '-', as options do."""
    words = iter(arguments)
    return [f"{word}={next(words, '')}" if word in ("--ois-columns", "--frame-columns") else word for word in words]


def main():
    command = parser()
    options = command.parse_args(with_joined_columns(sys.argv[1:]))
    sys.stderr.reconfigure(errors="surrogateescape")  # names and cells as they are, whatever their encoding
    try:
        convert(options)
    except BadOption as error:
        command.error(str(error))
    except BadLine as error:
        print(error, file=sys.stderr)
        return 2
    except OSError as error:
        print(f"{command.prog}: {error.filename or 'the session'}: {error.strerror}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
