#!/usr/bin/env python3
"""lsc_replay import from the command line: column logs, and messages and exit statuses for what cannot be imported.

    check_command.py LSC_REPLAY...
"""
import pathlib
import subprocess
import sys
import tempfile

replay = sys.argv[1:]
directory = tempfile.TemporaryDirectory()
work = pathlib.Path(directory.name)


def run(*arguments):
    return subprocess.run([*replay, *arguments], cwd=work, capture_output=True, text=True)


def write(name, lines):
    (work / name).write_text("\n".join(lines) + "\n")


FRAMES = [(1, 1000000000 + i * 16000000, 2000000, 10000000) for i in range(20)]
samples = [(900000000 + k * 1000000, k * 0.25, -k) for k in range(500)]
write("ois.txt", [f"{max(0, (t - 1000000000) // 16000000) + 1} {x} {y} {t}" for t, x, y in samples])
write("frames.txt", [f"{t} {exposure} - {readout} - - {n + 1}" for n, (_, t, exposure, readout) in enumerate(FRAMES)])
write("ois.csv", ["time_us,x,y"] + [f"{t / 1000:.3f},{x},{y}" for t, x, y in samples])
write("frames.csv", ["frame,start_us,exposure_us"] +
      [f"{n + 1},{t / 1000:.3f},{exposure / 1000}" for n, (_, t, exposure, _) in enumerate(FRAMES)])

done = run("import", "--ois", "ois.txt", "--frames", "frames.txt", "-o", "plain.jsonl")
assert done.returncode == 0 and done.stdout == "", done
plain = run("plain.jsonl").stdout
assert "exposures served                                       20" in plain, plain
done = run("import", "--ois", "ois.csv", "--frames", "frames.csv", "--ois-columns", "time,x,y", "--frame-columns",
           "frame,time,exposure", "--ois-unit", "us", "--frame-unit", "us", "--readout", "10000")
write("csv.jsonl", [done.stdout])
# By frame or by time: what lies around each exposure is the same.
assert run("csv.jsonl").stdout.splitlines()[:21] == plain.splitlines()[:21], done

write("bad.txt", ["1 2 3 4", "1 2 three 4"])
write("s.jsonl", ['{"call":"IsEnabled","sensor":0}'])
ois = ("import", "--ois", "ois.txt", "--frames")
write("expect.jsonl", ['{"call":"CalcOISValue","type":1,"input":{},"frame":0,"sensor":0}',
                       '#expect {"sensor":0,"type":1,"x":"1.0","y":"one"}'])
CASES = [
    (1, "missing.txt: No such file", ["import", "missing.txt"]),
    (1, ".: is a directory", ["import", "."]),
    (1, "ois.txt: is read", [*ois, "frames.txt", "-o", "ois.txt"]),
    (2, "s.jsonl:1: no message of the library", ["import", "s.jsonl"]),
    (2, "expected a CAPTURE, or --ois and --frames", ["import"]),
    (2, "expected a CAPTURE, or --ois and --frames", ["import", "s.jsonl", *ois[1:], "frames.txt"]),
    (2, "--frames", ["import", "--ois", "ois.txt"]),
    (2, "bad.txt:2: y: expected a number, got \"three\"", ["import", "--ois", "bad.txt", "--frames", "frames.txt"]),
    (2, "frames.csv:2: 3 columns, expected 7", [*ois, "frames.csv"]),
    (2, "no column is called \"speed\"", [*ois, "frames.txt", "--frame-columns", "time,exposure,speed"]),
    (2, "--readout must give the time", [*ois, "frames.txt", "--frame-columns", "time,exposure"]),
    (2, "--ois-unit", [*ois, "frames.txt", "--ois-unit", "days"]),
    (2, "SESSION is required", []),
    (2, "expect.jsonl:2: y: expected a number as text", ["expect.jsonl"]),
]
for status, message, arguments in CASES:
    done = run(*arguments)
    assert done.returncode == status and message in done.stderr, (arguments, done)
assert (work / "ois.txt").read_text().startswith("1 "), "the input was overwritten"
assert "Examples:" in run("import", "--help").stdout
