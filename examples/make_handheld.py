#!/usr/bin/env python3
"""Writes a session of a phone held in the hand: hall samples, frames and the calls made for them.

    python3 examples/make_handheld.py > examples/handheld.jsonl
    python3 examples/make_handheld.py --truth > examples/handheld.truth.csv
    python3 examples/make_handheld.py --check examples/handheld.jsonl     exit status 1 when the file differs
    python3 examples/make_handheld.py --truth --check examples/handheld.truth.csv

Nothing in the session was recorded. The figures below are round numbers chosen to be plausible for a steady two-handed
grip and for a main camera's stabiliser; they are fitted to no measurement, hand or phone. Only the band of the tremor
is common knowledge: a relaxed hand trembles at 8 to 12 Hz.

The hand, per axis, is the sum of three damped resonators that seeded white noise drives. Each is a mass on a spring,
angle'' = w*w*(noise - angle) - 2*z*w*angle', stepped every 250 us:

    sway     0.35 Hz, damping 0.7,  0.30 deg rms         arms and body, 0.7 deg/s
    wander   1.6 Hz,  damping 0.4,  0.06 deg rms         wrists and breathing, 0.6 deg/s
    tremor   9.2 Hz (yaw), 10.4 Hz (pitch), damping 0.1, 0.4 deg/s rms

The lens has to move by f*tan(angle) to hold the image still; f is 5.6 mm, so a degree is 98 um. The target is held
within the stroke of +-150 um. The actuator follows it as a second-order low pass of 60 Hz, damping 0.7.

The hall sensor is polled at 1 kHz, each reading up to 30 us early or late. A reading is a 12-bit count around 2048,
12.5 counts/um, with 1.2 counts rms of noise: oisHallX and oisHallY. The position, oisX and oisY in um, is the count
times the axis' own calibrated scale, to 4 decimals. --stamp-delay stamps each reading later than it was taken, as a
driver does that filters before it reads the clock.

The true path is the lens itself every millisecond, without noise, in the unit of oisX and oisY: the lens moves within
0.003 um of the straight lines between these points.

Frames come 60 times a second, their time stamps (start of readout, ns) within 5 us of that. Exposure is in whole rows
and follows the scene with a time constant of a third of a second. Samples are handed over 14 ms after each start of
frame; on about three frames in ten the provider repeats the 2 ms before. A frame is asked for two frames later, the
last two before the mode change and before the end at once.

One piece, so that whoever doubts the session reads all that made it in one place, with nothing but Python.

The bytes are the same on every Python from 3.9 on: random numbers are random.Random's uniform ones, and what is made
of them uses only + - * / and sqrt, which IEEE doubles define to the last bit. (Not sum(): its rounding changed.)
"""

import argparse
import bisect
import json
import math
import random
import struct
import sys
from collections import namedtuple

SENSOR = 0
SENSOR_TYPE = 5
START_NS = 93_400_000_000  # first start of frame, in the clock that samples and frames share

STEP_NS = 250_000
WARM_UP_STEPS = 16_000  # 4 s, so that the session begins with a hand that has long been moving
TWO_PI = 6.283185307179586
RAD_PER_DEG = 0.017453292519943295
SQRT_12 = 3.4641016151377544  # a uniform number one wide has the deviation 1/sqrt(12), six of them 1/sqrt(2)
SQRT_2 = 1.4142135623730951
FOCAL_LENGTH_UM = 5600.0
STROKE_UM = 150.0

Axis = namedtuple("Axis", "tremor_hz um_per_count")
YAW = Axis(9.2, 0.0796)
PITCH = Axis(10.4, 0.0812)

HALL_PERIOD_NS = 1_000_000
HALL_JITTER_NS = 30_000
HALL_LEAD_NS = 1_000_000  # the monitor starts just before the first frame
HALL_CENTRE = 2048
HALL_COUNTS_PER_UM = 12.5
HALL_NOISE_COUNTS = 1.2
HALL_GAP_NS = 60_000_000
TRUTH_PERIOD_NS = 1_000_000

FRAMES_PER_SECOND = 60
FRAME_NS = 16_666_667
FRAME_JITTER_NS = 5_000
SWITCH_FRAMES = 2  # frame times that pass without a frame while the sensor changes its mode
HAND_OVER_NS = 14_000_000
OVERLAP_NS = 2_000_000
OVERLAP_SHARE = 0.3
ASK_LAG = 2
METADATA_NAMES = ("frame-a", "frame-b", "frame-c")

SensorMode = namedtuple("SensorMode", "number width height readout_ns")
FULL = SensorMode(0, 4096, 3072, 15_980_000)
BINNED = SensorMode(1, 2048, 1536, 9_600_000)

EXPOSURE_MIN_NS = 1_000_000
EXPOSURE_MAX_NS = 12_000_000
EXPOSURE_GAIN = 0.05  # per frame
# What the scene asks for, from this share of the session on: daylight, indoors, a dark corner, back to the window.
SCENE_NS = ((0.0, 1_400_000), (0.15, 5_000_000), (0.40, 12_500_000), (0.58, 6_000_000), (0.82, 900_000))

# The events, as shares of the session.
GAP_AT = 0.30
SWITCH_AT = 0.50
MULTI_FROM, MULTI_TO = 0.65, 0.80
ASK_TWICE_AT = 0.20

SINGLE_FLAGS = 0x001
MULTI_FLAGS = 0x010  # any bit of 0x618 marks a frame of two exposures
NE_KEY, SE_KEY = 4, 6
SE_DELAY_NS = 4_200_000  # the se exposure's first row is read this long after the ne exposure's
SE_RATIO = 8

TAG_FLAGS = "0xC00A0002"
TAG_SOF = "0xC0010017"
TAG_MULTI_SOF = "0xC00A0006"
TAG_EXPOSURE_BLOCK = "0xC0030000"
BLOCK_SIZE = 4712
BLOCK_EXPOSURE = "4592"
BLOCK_EXPOSURE_SE = "4704"

Frame = namedtuple("Frame", "number mode sof exposure se_exposure")  # se_exposure 0: a single-exposure frame


class Resonator:
    """A damped mass on a spring, moved by the place its spring is fixed to."""

    def __init__(self, hz, damping):
        w = TWO_PI * hz
        self.stiffness = w * w
        self.drag = 2.0 * damping * w
        self.place = 0.0
        self.speed = 0.0

    def step(self, target):
        dt = STEP_NS / 1_000_000_000
        self.speed += dt * (self.stiffness * (target - self.place) - self.drag * self.speed)
        self.place += dt * self.speed
        return self.place


class Tremble:
    """A resonator driven by white noise so that its angle has the deviation asked for."""

    def __init__(self, hz, damping, rms, rng):
        self.resonator = Resonator(hz, damping)
        # White noise of deviation s a step leaves it with the deviation s * sqrt(w * dt / (4 * damping)).
        self.scale = rms * SQRT_12 * math.sqrt(4.0 * damping / (TWO_PI * hz * STEP_NS / 1_000_000_000))
        self.rng = rng

    def step(self):
        return self.resonator.step(self.scale * (self.rng.random() - 0.5))


def lens_trace(axis, rng, steps):
    """The lens position in um every 250 us, from the start of the session."""
    sway = Tremble(0.35, 0.7, 0.30, rng)
    wander = Tremble(1.6, 0.4, 0.06, rng)
    tremor = Tremble(axis.tremor_hz, 0.1, 0.4 / (TWO_PI * axis.tremor_hz), rng)
    actuator = Resonator(60.0, 0.7)
    trace = []
    for step in range(WARM_UP_STEPS + steps):
        angle = RAD_PER_DEG * (sway.step() + wander.step() + tremor.step())
        target = FOCAL_LENGTH_UM * (angle + angle * angle * angle / 3.0)  # tan, exact enough below 2 degrees
        lens = actuator.step(min(STROKE_UM, max(-STROKE_UM, target)))
        if step >= WARM_UP_STEPS:
            trace.append(lens)
    return trace


def lens_at(trace, since_start):
    step, rest = divmod(since_start, STEP_NS)
    return trace[step] + (trace[step + 1] - trace[step]) * (rest / STEP_NS)


def hall_reading(axis, trace, since_start, rng):
    """One polled axis: the raw count, and the position in um that the driver makes of it."""
    lens = lens_at(trace, since_start)
    noise = rng.random() + rng.random() + rng.random() + rng.random() + rng.random() + rng.random() - 3.0
    count = round(HALL_CENTRE + HALL_COUNTS_PER_UM * lens + HALL_NOISE_COUNTS * SQRT_2 * noise)
    count = min(4095, max(0, count))
    return count, round((count - HALL_CENTRE) * axis.um_per_count, 4)


def lens_traces(seed, begin, end):
    """Both axes from one time to another."""
    steps = (end - begin) // STEP_NS + 2
    return lens_trace(YAW, stream(seed, "yaw"), steps), lens_trace(PITCH, stream(seed, "pitch"), steps)


def hall_samples(seed, begin, end, gap, stamp_delay):
    """All samples of the session in time order, without those that fall into the gap."""
    yaw, pitch = lens_traces(seed, begin, end)
    jitter, noise = stream(seed, "poll"), stream(seed, "hall")
    samples = []
    for nominal in range(begin + HALL_JITTER_NS, end - HALL_JITTER_NS, HALL_PERIOD_NS):
        time = nominal + int((jitter.random() + jitter.random() - 1.0) * HALL_JITTER_NS)
        hall_x, x = hall_reading(YAW, yaw, time - begin, noise)
        hall_y, y = hall_reading(PITCH, pitch, time - begin, noise)
        if not gap[0] <= time < gap[1]:
            samples.append([time + stamp_delay, hall_x, hall_y, x, y])
    return samples


def stream(seed, name):
    """Random numbers for one purpose, so that more of one kind leaves the others as they are."""
    return random.Random(seed * 16 + ("yaw", "pitch", "poll", "hall", "frame", "hand-over").index(name))


def whole_rows(time, mode):
    """The time in ns, cut to a whole number of the mode's rows."""
    rows = max(1, int(time) * mode.height // mode.readout_ns)
    return rows * mode.readout_ns // mode.height


def make_frames(seed, count):
    """The frames of the session; exposure follows the scene, and the mode changes on the way."""
    jitter = stream(seed, "frame")
    exposure = float(SCENE_NS[0][1])
    frames = []
    for i in range(count):
        wanted = [level for share, level in SCENE_NS if i >= share * count][-1]
        exposure += EXPOSURE_GAIN * (wanted - exposure)
        exposure = min(EXPOSURE_MAX_NS, max(EXPOSURE_MIN_NS, exposure))
        switched = i >= int(SWITCH_AT * count)
        mode = BINNED if switched else FULL
        multi = int(MULTI_FROM * count) <= i < int(MULTI_TO * count)
        sof = START_NS + FRAME_NS * (i + (SWITCH_FRAMES if switched else 0))
        sof += int((jitter.random() * 2.0 - 1.0) * FRAME_JITTER_NS)
        frames.append(Frame(i + 1, mode, sof, whole_rows(exposure, mode),
                            whole_rows(exposure / SE_RATIO, mode) if multi else 0))
    return frames


def make_batches(seed, frames, samples):
    """The samples handed over with each frame: those since the last time, on some frames 2 ms more."""
    rng = stream(seed, "hand-over")
    times = [sample[0] for sample in samples]
    batches, since, previous = [], 0, []
    for frame in frames:
        until = frame.sof + HAND_OVER_NS
        repeat = rng.random() < OVERLAP_SHARE
        # A batch that begins where the last one began would be refused whole; it never happens to a full one.
        room = bool(previous) and previous[0][0] < since - 2 * OVERLAP_NS
        begin = since - OVERLAP_NS if repeat and room else since
        previous = samples[bisect.bisect_right(times, begin):bisect.bisect_right(times, until)]
        batches.append(previous)
        since = until
    return batches


def otp_lines():
    """The sensor as driver and OTP provider describe it: gradient -6, and a table of 6 rows of 9 entries."""
    rows, entries, table_at = 6, 9, 0x30
    otp = bytearray(table_at + rows * entries * 2)
    otp[0x10:0x13] = bytes((1, 6, 0x81))  # valid marker, gradient magnitude, sign marker
    otp[0x20] = 1
    for row in range(rows):
        hall = 512 + row * 614
        shifts = [hall + (k - 4) * (96 + 2 * row) for k in range(entries - 1)]
        struct.pack_into(f"<{entries}H", otp, table_at + row * entries * 2, hall, *shifts)
    layout = {"multiGolden": {"offset": 0x10, "size": 8, "valid": 0x10, "gradient": 0x11, "flag": 0x12},
              "oisCalibration": {"offset": table_at, "size": rows * entries * 2, "valid": 0x20,
                                 "indexNum": rows, "tableNumber": entries},
              "enable": 1}
    yield {"platform": "sensor", "sensor": SENSOR, "device": 1, "otp_layout": layout, "otp": otp.hex(),
           "rolling_shutter": {str(mode.number): mode.readout_ns for mode in (FULL, BINNED)}}
    yield {"call": "GetMultiTableIndex", "sensor": SENSOR}
    yield {"call": "QueryOTPInfo", "sensor": SENSOR, "length": rows * entries * 2 // 4}


def colour_lines():
    """The colour sensor's 18 values into the metadata and back, and from record to record."""
    values = [612.5, 540.25, 433.75, 1.0, 0.8125, 0.40625, 5120.0, 310.5, 288.0,
              251.25, 198.5, 160.0, 143.75, 120.5, 96.25, 0.0, 0.0, 1.5]
    record = struct.pack("<18f", *values).hex()
    yield {"metadata": "colour", "entries": []}
    yield {"call": "UpdateMetaInfo", "type": 2, "metadata": "colour", "array": values}
    yield {"call": "QueryMetaInfo", "type": 2, "metadata": "colour", "array": [0.0] * 18}
    yield {"call": "ConvertColorSensorInfo", "type": 1, "source": record, "destination": "00" * 672}


def configure_lines(mode, frame):
    """What the shading manager does when the sensor starts in a mode, up to its first frame."""
    yield {"call": "config", "index": SENSOR, "dummy": 0, "eSensorMode": mode.number,
           "u4Width": mode.width, "u4Height": mode.height}
    yield {"call": "StoreRollingShutter", "sensor": SENSOR, "mode": mode.number}
    yield {"call": "QueryRollingShutter", "sensor": SENSOR}
    yield {"call": "setParam", "index": SENSOR, "dummy": 0, "fgLscOnOff": 1, "request_id": frame,
           "seamlessSensorMode": mode.number}
    yield {"call": "calculate", "index": SENSOR, "dummy": 0, "rto": 100, "eCmd": 0, "u4FrmId": frame,
           "prTSFStatR1": 4096, "table": [8192, 8192, 8192, 8192]}


def opening_lines():
    yield {"platform": "log", "mode": 1, "details_level": 5, "details_mask": "0x821000"}
    yield {"platform": "camera_mode", "name": "high_pixel_mode"}
    yield "# The sensor, its calibration data and what it can do"
    yield from otp_lines()
    for feature in (1, 2, 3):
        yield {"call": "IsSupportFeature", "feature": feature, "sensor": SENSOR}
    yield {"call": "IsEnableOisCompensation", "sensor": SENSOR}
    yield {"call": "IsSupportSeamlessSwitchForRemosaic", "sensor": SENSOR}
    yield {"call": "IsEnabled", "sensor": SENSOR}
    yield "# The monitor and the hooks start, at full resolution"
    yield {"call": "RegisterAndStartSensorMonitor", "sensor": SENSOR, "type": SENSOR_TYPE}
    yield {"call": "IsEnabled", "sensor": SENSOR}
    yield {"call": "getInstance", "index": SENSOR}
    yield {"call": "init", "index": SENSOR, "dummy": 0, "eSensorDev": 1, "i4SensorIdx": SENSOR}
    yield from configure_lines(FULL, 1)
    yield "# The colour sensor"
    yield from colour_lines()


def metadata_name(frame):
    return METADATA_NAMES[frame.number % len(METADATA_NAMES)]  # few names, so that a player's memory stays flat


def ask_lines(frame):
    """The frame's metadata, and the call that writes the lens position into it."""
    entries = [{"tag": TAG_FLAGS, "int32": [MULTI_FLAGS if frame.se_exposure else SINGLE_FLAGS]},
               {"tag": TAG_SOF, "int64": [frame.sof]}]
    block = {BLOCK_EXPOSURE: frame.exposure}
    if frame.se_exposure:
        entries.append({"tag": TAG_MULTI_SOF, "int64": [NE_KEY, frame.sof, SE_KEY, frame.sof + SE_DELAY_NS]})
        block[BLOCK_EXPOSURE_SE] = frame.se_exposure
    entries.append({"tag": TAG_EXPOSURE_BLOCK, "memory": {"size": BLOCK_SIZE, "u64": block}})
    yield {"metadata": metadata_name(frame), "entries": entries}
    yield {"call": "fillLscOISCompInfo", "sensor": SENSOR, "metadata": metadata_name(frame)}


def ask_again_lines(frame):
    yield f"# Frame {frame.number} is asked for a second time: its position stands"
    yield {"call": "fillLscOISCompInfo", "sensor": SENSOR, "metadata": metadata_name(frame)}


def change_lines(before, frame):
    """Comments where something changes, and the calls of a mode change."""
    if before.mode != frame.mode:
        yield f"# The sensor changes to its binned mode; frame {frame.number} is the first there"
        yield {"platform": "camera_mode", "name": "normal_mode"}
        yield {"call": "IsSupportSeamlessSwitchForRemosaic", "sensor": SENSOR}
        yield from configure_lines(frame.mode, frame.number)
    if bool(before.se_exposure) != bool(frame.se_exposure):
        kind = "ne and se exposures" if frame.se_exposure else "a single exposure again"
        yield f"# From frame {frame.number} on: {kind}"


def hand_over_lines(frame, batch, batch_before):
    if not batch and batch_before:
        yield "# The hall sensor falls silent for 60 ms"
    if batch:
        yield {"samples": SENSOR_TYPE, "data": batch}
    yield {"call": "UpdateSensorData", "sensor": SENSOR, "frame": frame.number, "timestamp": frame.sof}


def frame_lines(frames, batches):
    """Frame by frame: hand the samples over, then ask for the frame whose samples are complete."""
    twice = frames[int(ASK_TWICE_AT * len(frames))]
    waiting = []
    for i, frame in enumerate(frames):
        if i > 0:
            if frame.mode != frames[i - 1].mode:  # the pipeline runs empty before the sensor changes
                for late in waiting:
                    yield from ask_lines(late)
                waiting = []
            yield from change_lines(frames[i - 1], frame)
        yield from hand_over_lines(frame, batches[i], batches[i - 1])
        waiting.append(frame)
        if len(waiting) > ASK_LAG:
            ready = waiting.pop(0)
            yield from ask_lines(ready)
            if ready == twice:
                yield from ask_again_lines(ready)
    for late in waiting:
        yield from ask_lines(late)


def closing_lines():
    yield "# The camera closes; the second and third unregistering find no monitor"
    yield {"call": "getResult", "index": SENSOR, "dummy": 0}
    yield {"call": "UnRegisterSensorMonitor", "sensor": SENSOR}
    yield {"call": "IsEnabled", "sensor": SENSOR}
    yield {"call": "UnRegisterSensorMonitor", "sensor": SENSOR}
    yield {"call": "UnRegisterSensorMonitor", "sensor": SENSOR + 1}
    yield {"call": "uninit", "index": SENSOR, "dummy": 0}


def session_limits(frames):
    return START_NS - HALL_LEAD_NS, frames[-1].sof + FRAME_NS


def command_line(options):
    """The command that makes a file, for its head."""
    delay = f" --stamp-delay {options.stamp_delay}" if options.stamp_delay else ""
    truth = " --truth" if options.truth else ""
    return f"python3 examples/make_handheld.py --seed {options.seed} --seconds {options.seconds}{delay}{truth}"


def truth_lines(options):
    """The path of the lens as columns."""
    frames = make_frames(options.seed, options.seconds * FRAMES_PER_SECOND)
    begin, end = session_limits(frames)
    yaw, pitch = lens_traces(options.seed, begin, end)
    yield f"# Where the lens of the session was. Made by: {command_line(options)}"
    yield "time_ns,x,y"
    for time in range(begin, end, TRUTH_PERIOD_NS):
        place = (lens_at(trace, time - begin) * (HALL_COUNTS_PER_UM * axis.um_per_count)
                 for axis, trace in ((YAW, yaw), (PITCH, pitch)))
        yield f"{time}," + ",".join(f"{value:.4f}" for value in place)


def session_lines(options):
    count = options.seconds * FRAMES_PER_SECOND
    frames = make_frames(options.seed, count)
    gap_begin = frames[int(GAP_AT * count)].sof + 5_000_000
    samples = hall_samples(options.seed, *session_limits(frames), (gap_begin, gap_begin + HALL_GAP_NS),
                           options.stamp_delay * 1000)
    yield f"# A phone held in the hand for {options.seconds} s: {count} frames at 60 a second, hall samples at 1 kHz."
    yield "# Modelled, not recorded; the head of make_handheld.py documents the model."
    yield f"# Made by: {command_line(options)}"
    yield "# Samples are [time ns, raw count x, raw count y, lens um x, lens um y]."
    yield from opening_lines()
    yield "# The frames; the first ones come before 100 samples are there and get no position"
    yield from frame_lines(frames, make_batches(options.seed, frames, samples))
    yield from closing_lines()


def render(options):
    made = truth_lines(options) if options.truth else session_lines(options)
    lines = (line if isinstance(line, str) else json.dumps(line, separators=(",", ":")) for line in made)
    return "".join(line + "\n" for line in lines).encode("ascii")


def check(path, made):
    """0 when the file holds just these bytes, 1 otherwise."""
    try:
        with open(path, "rb") as file:
            found = file.read()
    except OSError as error:
        print(f"{path}: {error.strerror}", file=sys.stderr)
        return 1
    if found == made:
        return 0
    ours, theirs = made.split(b"\n"), found.split(b"\n")
    shared = min(len(ours), len(theirs))
    line = next((i for i in range(shared) if ours[i] != theirs[i]), shared) + 1
    print(f"{path}:{line}: differs from what the script makes", file=sys.stderr)
    return 1


def number_within(low, high):
    def convert(text):
        number = int(text)
        if not low <= number <= high:
            raise ValueError
        return number
    convert.__name__ = f"number from {low} to {high}"  # argparse says "invalid ... value" with it
    return convert


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--seed", type=number_within(0, 1_000_000), default=1, help="another hand (default 1)")
    parser.add_argument("--seconds", type=number_within(1, 60), default=10, help="1 to 60 (default 10)")
    parser.add_argument("--stamp-delay", type=number_within(-1_000_000, 1_000_000), default=0, metavar="US",
                        help="stamp the samples this much late (default 0)")
    parser.add_argument("--truth", action="store_true", help="write the path of the lens, not the session")
    parser.add_argument("--check", metavar="FILE", help="write nothing; exit status 1 when FILE differs")
    arguments = parser.parse_args()
    made = render(arguments)
    if arguments.check is not None:
        return check(arguments.check, made)
    sys.stdout.buffer.write(made)
    return 0


if __name__ == "__main__":
    sys.exit(main())
