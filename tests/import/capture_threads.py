"""The log of a session's calls as their threads would have written it at the same time."""
import heapq
import itertools
from collections import defaultdict
from dataclasses import dataclass

MS = 1000000
LOCKED = ("[getDataByTimestamp]", "[getSensorData]", "[QuerySensorData]")  # logged under the registry's lock
LOCKED_CALLS = ("UpdateSensorData", "RegisterAndStartSensorMonitor", "UnRegisterSensorMonitor", "StoreRollingShutter")


@dataclass
class Record:
    """A line of the log, without its form."""
    time: int  # ns
    pid: int
    tid: int
    priority: str
    tag: str
    text: str
    call: int = -1  # the call of the session that logged it


def pieces(log):
    """A call's messages as runs that are logged under the registry's lock, or without it."""
    return [(locked, list(run)) for locked, run in
            itertools.groupby(log, lambda entry: entry["text"].startswith(LOCKED))]


def concurrent(events, logs, source):
    """The lines as the threads would have logged them at the same time.

    What is logged under the registry's lock is never mixed with another thread's such lines, and the calls of one
    camera take the lock in the session's order. All else runs as it comes.
    """
    pace = source.choice((4, 12, 30)) * 1000  # ns a line
    wall = 1795000000 * 1000 * MS + source.randrange(10 ** 15) - events[0].time
    pid = source.randrange(400, 9000)
    waiting, camera_queue = defaultdict(list), defaultdict(list)
    for i, (event, log) in enumerate(zip(events, logs)):
        parts = [(True, log)] if event.lines[-1]["call"] in LOCKED_CALLS and log else pieces(log)
        for j, (locked, run) in enumerate(parts):
            waiting[event.thread].append((i, j, event, locked, run))
            if locked:
                camera_queue[event.camera].append((i, j))
    for queue in camera_queue.values():
        queue.reverse()
    clocks = [(events[0].time, thread) for thread in waiting]
    for runs in waiting.values():
        runs.reverse()
    records, lock_free = [], 0
    heapq.heapify(clocks)
    while clocks:
        clock, thread = heapq.heappop(clocks)
        i, j, event, locked, run = waiting[thread][-1]
        now = max(clock, event.time, lock_free if locked else 0)
        blocked = locked and camera_queue[event.camera][-1] != (i, j)
        if now > clock or blocked:  # later, in the order of time
            heapq.heappush(clocks, (now + (pace if blocked else 0), thread))
            continue
        waiting[thread].pop()
        for entry in run:
            now += int(source.expovariate(1) * pace) + 1000 + (source.random() < 0.002) * 2 * MS
            records.append(Record(now + wall, pid, pid + 3 * thread, {3: "D", 6: "E"}[entry["priority"]], entry["tag"],
                                  entry["text"], i))
        if locked:
            camera_queue[event.camera].pop()
            lock_free = now
        if waiting[thread]:
            heapq.heappush(clocks, (now, thread))
    records.sort(key=lambda record: record.time)
    return records
