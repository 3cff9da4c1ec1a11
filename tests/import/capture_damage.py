"""What happens to captures: losses, cuts, joins, restarts of the camera service, too low a log level.

Each damage takes the records of a capture and gives back those that are left.
"""
import math
from dataclasses import replace


def burst(records, source, most=3000):
    size = min(int(math.exp(source.uniform(0, math.log(most)))), len(records) - 2)
    begin = source.randrange(1, max(2, len(records) - size))
    return records[:begin] + records[begin + size:]


def bursts(records, source):
    for _ in range(source.randrange(2, 7)):
        records = burst(records, source, 800)
    return records


def single_lines(records, source):
    lost = set(source.sample(range(1, len(records) - 1), source.randrange(1, 11)))
    return [r for i, r in enumerate(records) if i not in lost]


def every_third(records, source):
    """Every third line, of all or of a stretch."""
    begin = source.choice((0, source.randrange(len(records) // 2)))
    end = source.choice((len(records), begin + source.randrange(6, 3000)))
    return [r for i, r in enumerate(records) if not (begin < i < end and i % 3 == 0)]


def one_thread(records, source):
    """Lines of one thread alone, as a chatty process is pruned."""
    tid = source.choice(records).tid
    begin = source.randrange(len(records))
    end = begin + source.randrange(1, 2000)
    return [r for i, r in enumerate(records) if not (begin <= i < end and r.tid == tid)]


def whole_calls(records, source):
    """All lines of some calls that follow each other, and no other line."""
    begin = source.randrange(records[-1].call)
    lost = range(begin, begin + source.choice((1, 1, 2, 3, 5, 10, 30)))
    return [r for r in records if r.call not in lost]


def camera_gone(records, source, truth):
    """All calls of one camera from one of its frames on, none of the last few; other cameras go on."""
    camera = source.choice(sorted(set(truth.cameras)))
    frames = [i for i, row in enumerate(truth.rows) if row and row[0] == camera]
    begin = source.choice(frames[2:-8])
    return [r for r in records if r.call < begin or truth.cameras[r.call] != camera]


def requests_gone(records, source, truth):
    """A monitor's requests from one of them to its end."""
    its = source.choice(sorted({row for row in truth.rows if row and not row[2]}))
    requests = [i for i, row in enumerate(truth.rows) if row == its]
    begin = source.choice(requests[1:] or requests)
    return [r for r in records if r.call < begin or truth.rows[r.call] != its]


def head_cut(records, source):
    return records[source.randrange(1, len(records) // 2):]


def tail_cut(records, source):
    return records[:source.randrange(len(records) // 2, len(records) - 1)]


def cut_lines(records, source):
    """Some messages end early."""
    return [replace(r, text=r.text[:source.randrange(len(r.text))]) if source.random() < 0.001 else r
            for r in records]


def repeated(records, source):
    """A recording that was interrupted: the log's buffer is printed again from some point before."""
    cut = source.randrange(10, len(records))
    return records[:cut] + records[max(0, cut - source.randrange(1, 20000)):]


LOSSES = {f.__name__: f for f in (burst, bursts, single_lines, every_third, one_thread, whole_calls, head_cut, tail_cut, repeated)}
LOSSES_OF_CAMERAS = {f.__name__: f for f in (camera_gone, requests_gone)}


def later(records, after, pid):
    """The records as another capture's, that begins a second after the first one ends, in process `pid`."""
    shift = after[-1].time + 10 ** 9 - records[0].time
    moved = pid - records[0].pid
    return [replace(r, time=r.time + shift, pid=r.pid + moved, tid=r.tid + moved) for r in records]


def halves(first, second, source):
    """The beginning of one capture and the end of another one, of the same process or not."""
    cut, rest = source.randrange(len(first) // 4, len(first)), source.randrange(1, len(second) * 3 // 4)
    pid = first[0].pid + source.choice((0, 117))
    return first[:cut] + later(second[rest:], first[:cut], pid)


def restart(first, second, source):
    """The camera service ends in the middle of a session; a new process begins another one."""
    cut = source.randrange(len(first) // 2, len(first))
    return first[:cut] + later(second, first[:cut], first[0].pid + 1500)
