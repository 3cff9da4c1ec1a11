"""Ground truth for captures: a scenario's session, each exposure's position, and the log that the library writes."""
import functools
import json
import pathlib
import random
import tempfile
from collections import Counter, defaultdict

from capture_cameras import MS, SCENARIOS, Camera
from capture_session import calls_of, key_of, play, position_in, positions
from capture_threads import concurrent


def head(level, mode):
    return [{"platform": "property", "key": "vendor.tarvo.3a.lscutil.log", "value": level},
            {"platform": "property", "key": "vendor.debug.ois.hall.calculation", "value": mode},
            {"platform": "log", "mode": 1, "details_level": 5, "details_mask": "0x821000"}]


class Truth:
    """A scenario played: its session, each exposure's position, and the log's records."""

    def __init__(self, replay, number, level=4, begin=0):
        self.scenario = SCENARIOS[number % len(SCENARIOS)]
        source = random.Random(number)
        begin = begin or source.randrange(90, 90000) * 1000 * MS
        count, frames = self.scenario[0], source.randrange(36, 56)
        synchronised, mode = source.random() < 0.3, source.choice((0, 0, 0, 0, 0, 0, 0, 1, 2, 3))
        cameras = [Camera(source, i, count, self.scenario, begin, synchronised) for i in range(count)]
        until = max(c.until(frames) for c in cameras)
        events = sorted((e for c in cameras for e in c.events(frames, until)), key=lambda e: e.time)
        text = [json.dumps(line, separators=(",", ":")) for line in head(level, mode)]
        ends = []
        for event in events:
            text += [json.dumps(line, separators=(",", ":")) for line in event.lines]
            ends.append(len(text))
        self.text = "\n".join(text) + "\n"
        with tempfile.TemporaryDirectory() as directory:
            done, results = play(replay, self.text, pathlib.Path(directory))
        assert done.returncode == 0, done
        self.calls = calls_of(self.text)
        self.positions = positions(self.calls, results)
        self.exposures = defaultdict(list)  # (times in ns, position) of each key
        for call in self.calls:
            for kind, times in call.exposures.items():
                found = position_in(results[call.line], kind)
                self.exposures[key_of(call.sensor, kind, times)].append((times, found))
        logs = [[entry for entry in results[end]["log"] if entry["output"] == "android"] for end in ends]
        # A frame that has its positions already leaves two lines and no trace in any other.
        self.traceless = {i for i, log in enumerate(logs) if any("has been written" in entry["text"] for entry in log)}
        self.ended = Counter()
        self.cameras = [event.camera for event in events]
        self.rows = [self.row_of(event) for event in events]
        self.records = concurrent(events, logs, source)

    def row_of(self, event):
        """Camera, monitor and kind of a call that belongs to a frame: what a row of such calls has in common."""
        function = event.lines[-1]["call"]
        if function == "UnRegisterSensorMonitor":
            self.ended[event.camera] += 1
        if function in ("UpdateSensorData", "fillLscOISCompInfo", "CalcOISValue"):
            return event.camera, self.ended[event.camera], function == "UpdateSensorData"
        return None


@functools.lru_cache(maxsize=6)
def truth(replay, number, level=4, begin=0):
    return Truth(replay, number, level, begin)
