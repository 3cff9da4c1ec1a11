#!/usr/bin/env python3
"""Feeds the player one bad line at a time: it must exit with 2 and say FILE:LINE: what is wrong, in one line.

    check_bad_input.py CASES LSC_REPLAY...

CASES: a session line, then a line "  -> " with a part of the message, in turn; "#" begins a comment.
"""
import subprocess
import sys
import tempfile

replay = sys.argv[2:]
lines = [line.rstrip("\n") for line in open(sys.argv[1], encoding="utf-8") if not line.startswith("#")]
cases = list(zip(lines[0::2], lines[1::2]))
failures = []
for bad, expected in cases:
    assert expected.startswith("  -> "), expected
    with tempfile.NamedTemporaryFile("w", suffix=".jsonl") as session:
        session.write('{"call":"IsEnabled","sensor":0}\n\n' + bad + '\n{"call":"IsEnabled","sensor":0}\n')
        session.flush()
        done = subprocess.run([*replay, "--results", "-", session.name], capture_output=True, text=True)
        message = done.stderr.splitlines()
        ok = (done.returncode == 2 and len(message) == 1 and message[0].startswith(f"{session.name}:3: ")
              and expected[5:] in message[0] and len(done.stdout.splitlines()) == 1)
        if not ok:
            failures.append(f"{bad}\n  wanted: {expected[5:]}\n  status {done.returncode}: {done.stderr}")
print(f"{len(cases) - len(failures)} passed, {len(failures)} failed")
sys.exit("\n".join(failures) if failures or not cases else 0)
