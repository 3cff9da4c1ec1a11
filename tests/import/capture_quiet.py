"""Small captures without chance, the same wherever they are made: what a damage changes in them is its doing alone."""
import functools
import json
import pathlib
import tempfile

from capture_cameras import MS, Camera, Event
from capture_session import play
from capture_threads import concurrent
from capture_truth import head
from tool import REPLAY


class Steady:
    """In place of a source of random numbers: nothing odd happens, lenses move."""

    def __init__(self):
        self.made = 0

    def random(self):
        return 0.5

    def choice(self, among):
        return among[-1]

    def randrange(self, first, end=None):
        first, end = (0, first) if end is None else (first, end)
        self.made += 1
        return first + self.made * 7919 % (end - first)

    def expovariate(self, rate):
        return 1 / rate


ONE = {"scenario": (1, "single", "own", "none", "own")}
TWO = {"scenario": (2, "mixed", "own", "none", "own")}  # the second takes two exposures a frame
TWO_ON_ONE_THREAD = {"scenario": (2, "mixed", "one", "none", "own")}
IDLE = {"scenario": (2, "single", "own", "higher", "shared")}
MORE = {**ONE, "more": True}
RESTARTED = {"scenario": (1, "single", "own", "none", "restarting")}


def more_calls(events):
    """Calls that a camera rarely makes, after its fourth frame and its last; a batch overlaps the one before."""
    given = [e for e in events if e.lines[-1]["call"] == "UpdateSensorData"]
    given[7].lines[0]["data"][:0] = given[6].lines[0]["data"][-4:]
    asked = [e for e in events if e.lines[-1]["call"] == "fillLscOISCompInfo"]
    frame, lone = asked[3], asked[-1]
    start = lone.lines[0]["entries"][1]["int64"][0]
    of_frame = [frame.lines[-1:], [{"call": "QueryOTPInfo", "sensor": 0, "length": 5}],
                [{"call": "GetMultiTableIndex", "sensor": 0}],
                [{"platform": "provider", "type": 9, "enable": False},
                 {"call": "RegisterAndStartSensorMonitor", "sensor": 2, "type": 9}]]
    alone = [[{"call": "CalcOISValue", "type": 1, "frame": 77, "sensor": 0,
               "input": {"sof_timestamp": time, "exposure_time": 4 * MS}}] for time in (start, start - 4000 * MS)]
    return [Event(near.time + i * MS, near.thread, near.camera, lines)
            for near, calls in ((frame, of_frame), (lone, alone)) for i, lines in enumerate(calls, 1)]


@functools.cache
def records(scenario, level=4, mode=0, table=0, frames=12, more=False, empty=()):
    """The log of a capture. `more`: with calls that are rare; `empty`: frames whose hand-overs have no samples."""
    source = Steady()
    cameras = [Camera(source, i, scenario[0], scenario, 10 ** 11, False) for i in range(scenario[0])]
    events = sorted((e for c in cameras for e in c.events(frames)), key=lambda e: e.time)
    if more:
        events = sorted(events + more_calls(events), key=lambda e: e.time)
    for event in events:
        if event.lines[-1].get("frame") in empty:
            del event.lines[:-1]
    lines, ends = head(level, mode), []
    if table:
        lines.append({"platform": "property", "key": "vendor.debug.lsc_mgr.otp_tbl_idx", "value": table})
    for event in events:
        lines += event.lines
        ends.append(len(lines))
    with tempfile.TemporaryDirectory() as directory:
        done, results = play(REPLAY, "".join(json.dumps(line) + "\n" for line in lines), pathlib.Path(directory))
    assert done.returncode == 0, done
    logs = [[entry for entry in results[end]["log"] if entry["output"] == "android"] for end in ends]
    return concurrent(events, logs, source)
