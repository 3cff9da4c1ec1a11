#!/usr/bin/env python3
"""Captures as Android's own formatter writes them, and what the library logs through Android's own log.

    check_liblog.py FORM LSC_LIBLOG LSC_REPLAY...    the form, with every modifier: the session that `brief` gives
    check_liblog.py play LSC_LIBLOG LSC_REPLAY...    the texts that the platform of the workstation gets
"""
import pathlib
import subprocess
import sys
import tempfile
from dataclasses import replace

import capture_forms as forms
from capture_cameras import SCENARIOS
from capture_threads import Record
from capture_truth import Truth

what, liblog, *replay = sys.argv[1:]
ONE_CAMERA = next(i for i, scenario in enumerate(SCENARIOS) if scenario[0] == 1)
NOT_OURS = ("monotonic",)  # counts from the start of this machine
truth = Truth(replay, ONE_CAMERA)
directory = tempfile.TemporaryDirectory()
work = pathlib.Path(directory.name)


def session_of(text):
    """The imported session without its comments, which name lines of the capture."""
    (work / "capture.txt").write_text(text, newline="")
    done = subprocess.run([*replay, "import", work / "capture.txt"], capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return [line for line in done.stdout.splitlines() if not line.startswith("# ")]


def with_foreign(records):
    """A message of several lines of another tag in the middle."""
    middle = len(records) // 2
    other = replace(records[middle], priority="I", tag="a tag: it's (12)", text="[pushValue] index:0,\nsecond\n\nfourth")
    return [*records[:middle], other, *records[middle:]]


def real(names, records):
    lines = []
    for r in records:
        text = r.text.replace("\n", "\\n")
        lines.append(f"{r.time // 10**9}\t{r.time % 10**9}\t{r.pid}\t{r.tid}\t{r.priority}\t{r.tag}\t{text}\n")
    return subprocess.run([liblog, "format", *names], input="".join(lines), capture_output=True, text=True,
                          check=True, env={"TZ": "UTC"}).stdout


def check_form(form):
    records = with_foreign(truth.records)
    brief = session_of(real(["brief"], records))
    assert sum(line.startswith("#expect") for line in brief) > 30
    for modifiers in [(), *((m,) for m in forms.MODIFIERS), ("uid", "usec", "year", "zone"), ("color", "uid")]:
        # What we write ourselves, with one modifier or none, is imported in the other tests of captures.
        imported = len(modifiers) != 1 or set(modifiers) & set(NOT_OURS)
        wanted = records if imported else with_foreign(truth.records[:2000])
        text = real([form, *modifiers], wanted)
        if not set(modifiers) & set(NOT_OURS):
            ours = "".join(forms.lines_of(wanted, form, modifiers))
            assert ours == text, (modifiers, ours[:300], text[:300])
        if imported:
            assert session_of(text) == brief, (form, modifiers)


def check_play():
    session = work / "session.jsonl"
    session.write_text(truth.text)
    through = subprocess.run([liblog, "play", session], capture_output=True, text=True, check=True).stdout
    host = subprocess.run([*replay, "--log", session], capture_output=True, text=True, check=True).stderr
    expected = "".join(f"{r.priority} {r.tag} {r.text}\n" for r in logged(host))
    assert through == expected and len(through) > 100000, (through[:300], expected[:300])


def logged(text):
    """The records of a log in the form brief."""
    for line in text.splitlines():
        head, message = line.split("): ", 1)
        yield Record(0, 0, 0, head[0], head[2:head.rindex("(")].strip(), message)


check_play() if what == "play" else check_form(what)
