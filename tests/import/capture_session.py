"""Sessions and their results: which exposures a session asks for, and which positions they got."""
import json
import subprocess
from collections import Counter
from dataclasses import dataclass

OUTPUTS = {1: (0xC0030033, 0xC0030034), 5: (0xC0030035, 0xC0030036), 6: (0xC0030037, 0xC0030038)}


@dataclass
class Call:
    """A call that asks for positions: its exposures by type, and what was expected of them."""
    line: int
    sensor: int
    exposures: dict  # type: (start of frame, exposure time) in ns
    microseconds: bool  # made from a calculation alone
    expected: list
    before: object = None  # the call before it for the same metadata


def exposures_of(entries):
    """Start of frame and exposure time of each type that the metadata asks for; none when it holds the results."""
    by_tag = {int(e["tag"], 16) if isinstance(e["tag"], str) else e["tag"]: e for e in entries}
    flags = by_tag.get(0xC00A0002, {"int32": [0]})["int32"][0]
    types = (5, 6) if flags & 0x618 else (1,)
    if all(tag in by_tag for t in types for tag in OUTPUTS[t]):
        return {}
    times = by_tag.get(0xC0030000, {"memory": {"u64": {}}})["memory"]["u64"]
    sof = by_tag.get(0xC0010017, {"int64": [0]})["int64"][0]
    pairs = by_tag.get(0xC00A0006, {"int64": []})["int64"]
    keyed = dict(zip(pairs[0::2], pairs[1::2]))
    starts = {1: sof, 5: keyed.get(4, 0), 6: keyed.get(6, 0)}
    return {t: (starts[t], times.get("4704" if t == 6 else "4592", 0)) for t in types}


def calls_of(text):
    """The calls of a session that ask for positions, with the expectations below them."""
    metadata, calls = {}, []
    for number, line in enumerate(text.splitlines(), 1):
        if line.startswith("#expect "):
            calls[-1].expected.append(json.loads(line[8:]))
        elif line.startswith('{"metadata"'):
            made = json.loads(line)
            metadata[made["metadata"]] = exposures_of(made["entries"]), None
        elif line.startswith('{"call":"fillLsc') and "CompInfo" in line:
            made = json.loads(line)
            exposures, before = metadata.get(made["metadata"], ({}, None))
            calls.append(Call(number, made["sensor"], exposures, False, [], before))
            metadata[made["metadata"]] = exposures, calls[-1]
        elif line.startswith('{"call":"CalcOISValue"'):
            made = json.loads(line)
            suffix = {5: "_ne", 6: "_se", 4: "_se"}.get(made["type"], "")
            times = tuple(made["input"].get(key + suffix, 0) for key in ("sof_timestamp", "exposure_time"))
            calls.append(Call(number, made["sensor"], {made["type"]: times}, True, []))
    return calls


def key_of(sensor, kind, times):
    return sensor, kind, times[0] // 1000, times[1] // 1000


def position_in(result, kind):
    """The position of an exposure in a call's result, to six decimals; None without one."""
    if result["call"] == "CalcOISValue":
        return (f"{result['x'][0]:.6f}", f"{result['y'][0]:.6f}") if result["x"] else None
    found = {e["tag"]: e["double"][0] for e in result["metadata"] if e["tag"] in OUTPUTS[kind] and e.get("double")}
    return tuple(f"{found[tag]:.6f}" for tag in OUTPUTS[kind]) if len(found) == 2 else None


def play(replay, text, directory):
    """Results of a session by line, and the exit status."""
    session, results = directory / "s.jsonl", directory / "r.jsonl"
    session.write_text(text, encoding="utf-8")
    results.write_text("")  # for a player that ends before it writes
    done = subprocess.run([*replay, "--results", results, session], capture_output=True)
    with open(results, encoding="utf-8") as lines:
        return done, {r["line"]: r for r in map(json.loads, lines)}


def positions(calls, results):
    """How often each exposure got each position."""
    found = Counter()
    for call in calls:
        result = results.get(call.line)
        before = results.get(call.before.line) if call.before else None
        if before and all(position_in(before, kind) for kind in call.exposures):
            call.exposures = {}  # the frame has its positions already
        for kind, times in call.exposures.items() if result else ():
            found[key_of(call.sensor, kind, times), position_in(result, kind)] += 1
    return found
