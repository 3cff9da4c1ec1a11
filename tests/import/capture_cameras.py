"""Made-up phones: cameras with frames, samples and threads, and the calls that they make of the library.

A scenario fixes cameras, exposure modes, threads, idle cameras and frame numbers; all else is random. Hall positions are
multiples of 1/64, so that the six decimals of the log hold them exactly.
"""
import itertools
import random
from dataclasses import dataclass

MS = 1000000
EXPOSURES = ("single", "multi", "mixed")
THREADS = ("own", "camera", "shared", "one")  # own: hand-over and shading apart; camera: a thread for both
IDLE = ("none", "lower", "higher")
NUMBERS = ("shared", "own", "offset", "restarting")
SCENARIOS = [(1, *rest) for rest in itertools.product(EXPOSURES[:2], THREADS[:2], ("none",), ("own", "restarting"))]
SCENARIOS += itertools.product((2, 3), EXPOSURES, THREADS, IDLE, NUMBERS)
random.Random(9).shuffle(SCENARIOS)


@dataclass
class Event:
    """A call with the lines that it needs before it, and who makes it."""
    time: int
    thread: int
    camera: int
    lines: list


class Camera:
    """One camera's frames and samples over the seconds of a session."""

    def __init__(self, source, number, count, scenario, begin, synchronised):
        _, exposures, threads, idle, self.numbers = scenario
        self.source, self.number, self.scenario = source, number, scenario
        self.sensor = number if source.random() < 0.7 else number * 3
        self.type = 5 if source.random() < 0.5 else 5 + number
        self.multi = exposures == "multi" or (exposures == "mixed" and number % 2 == 1)
        self.idle = count > 1 and number == {"none": -1, "lower": 0, "higher": count - 1}[idle]
        self.period = 33333333 if number == 0 or source.random() < 0.6 else source.choice((16666667, 41666667))
        self.phase = number * source.choice((0, 0, 1, 5)) * MS  # 0: synchronised
        self.step = source.choice((1, 2)) * MS + source.choice((0, -137, 311))
        self.readout = source.choice((9980000, 15980000))
        self.first = {"own": 1 + 7 * number, "offset": 1 + 1000 * number}.get(self.numbers, 1)
        if synchronised:  # one clock for all: samples and frames of all cameras have the same time stamps
            self.phase, self.step, self.period = 0, MS, 33333333
        self.begin = begin + (0 if synchronised else source.randrange(MS))
        self.sampled = self.begin - 150 * MS
        self.parked = self.idle and source.random() < 0.3
        self.position = [source.randrange(-3000, 3000), source.randrange(-3000, 3000)]
        self.update, self.fill = {"own": (10 + number, 20 + number), "camera": (10 + number, 10 + number),
                                  "shared": (10, 20 + number), "one": (1, 1)}[threads]
        self.main = 1

    def setup(self, time):
        """Describes the sensor and starts its monitor."""
        layout = {"oisCalibration": {"offset": 16, "size": 4, "valid": 8, "indexNum": 1, "tableNumber": 2}, "enable": 1}
        lines = [{"platform": "sensor", "sensor": self.sensor, "rolling_shutter": {"0": self.readout},
                  "otp_layout": layout, "otp": "00" * 8 + "01"}]
        if self.source.random() < 0.5:
            yield Event(time, self.main, self.number, lines + [{"call": "GetMultiTableIndex", "sensor": self.sensor}])
        yield Event(time, self.main, self.number, lines + [
            {"call": "RegisterAndStartSensorMonitor", "sensor": self.sensor, "type": self.type}])
        yield Event(time, self.main, self.number, [{"call": "StoreRollingShutter", "sensor": self.sensor, "mode": 0}])

    def samples(self, end):
        made = []
        while self.sampled + self.step <= end:
            self.sampled += self.step
            if not self.parked:
                self.position = [p + self.source.randrange(-40, 41) for p in self.position]
            x, y = (p / 64 for p in self.position)
            made.append([self.sampled, 2048 + int(x), 2048 + int(y), x, y])
        return made

    def hand_over(self, frame, sof, kept):
        """The batch of a frame; now and then late, repeated in part, stale or with a gap."""
        odd = self.source.random()
        time = sof + 2 * MS + self.source.randrange(2 * MS)
        batch = [] if odd < 0.03 else self.samples(time)
        if odd > 0.96 and kept:
            batch = kept[-4:] + batch  # the provider repeats itself: batches overlap
        elif odd > 0.95 and len(kept) > 3:
            batch = kept[:3]  # older than what is buffered: discarded
        elif odd > 0.94:
            batch = batch[:len(batch) // 2]  # samples are missing on the device, too
        elif odd > 0.93:
            batch.reverse()
        kept[:] = batch or kept
        lines = [{"samples": self.type, "data": batch}] if batch else []
        return Event(time, self.update, self.number, lines + [
            {"call": "UpdateSensorData", "sensor": self.sensor, "frame": frame, "timestamp": sof}])

    def ask(self, sof, time, frame):
        """A frame's metadata filled, now and then asked for again; seldom a calculation without a frame."""
        exposure = self.source.choice((1399290, 4962539, 9995403))
        if self.source.random() < 0.03:
            given = {"sof_timestamp": sof, "exposure_time": exposure}
            yield Event(time, self.fill, self.number, [
                {"call": "CalcOISValue", "type": 1, "input": given, "frame": frame, "sensor": self.sensor}])
            return
        entries = [{"tag": "0xC00A0002", "int32": [8 if self.multi else 0]}, {"tag": "0xC0010017", "int64": [sof]}]
        times = {"4592": exposure}
        if self.multi:
            entries.append({"tag": "0xC00A0006", "int64": [4, sof, 6, sof + 4 * MS + 77]})
            times["4704"] = exposure // 4
        entries.append({"tag": "0xC0030000", "memory": {"size": 4712, "u64": times}})
        call = {"call": "fillLscOISCompInfo", "sensor": self.sensor, "metadata": f"m{self.number}"}
        yield Event(time, self.fill, self.number, [{"metadata": f"m{self.number}", "entries": entries}, call])
        if self.source.random() < 0.03:
            yield Event(time + MS, self.fill, self.number, [call])

    def until(self, frames):
        """When the last of its frames is over."""
        return self.begin + (frames + 1) * self.period + (300 * MS if self.numbers == "restarting" else 0)

    def events(self, frames, until=0):
        """All calls of this camera; `restarting` numbers begin again with a new monitor in the middle.

        A camera whose monitor does not end runs until the recording is stopped.
        """
        yield from self.setup(self.begin - 40 * MS)
        kept, offset = [], 0
        ends = self.source.random() < 0.7
        for k in itertools.count():
            if k >= frames and (ends or self.begin + k * self.period > until):
                break
            if self.numbers == "restarting" and k == frames // 2:
                offset = k
                self.begin += 300 * MS
                stop = self.begin + k * self.period - 250 * MS
                yield self.end(stop)
                yield from self.setup(stop + 50 * MS)
                self.sampled, kept = stop + 60 * MS, []
            sof = self.begin + self.phase + k * self.period
            given = self.hand_over(self.first + k - offset, sof, kept)
            yield given
            if k - offset >= 2 and not self.idle:
                yield from self.ask(sof - 2 * self.period, given.time + self.source.randrange(MS, 5 * MS), k)
        if ends:
            yield self.end(self.begin + (frames + 1) * self.period)

    def end(self, time):
        return Event(time, self.main, self.number, [{"call": "UnRegisterSensorMonitor", "sensor": self.sensor}])
