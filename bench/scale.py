#!/usr/bin/env python3
"""Draws what play, trace, plot and import cost against the length of a recording, in time and peak memory.

    python3 bench/scale.py build/release/tools/cli/lsc_replay build/scale.svg [--minutes 1 10 60]

Sessions are bench/long_session.py's, captures bench/long_capture.sh's: a capture has 220 MB a minute, and is piped, so
that none is kept. The processor time is drawn, because others on the machine add to any other. No peak can be below
this script's own memory, some 14 MB. Needs gnuplot.
"""
import argparse
import os
import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
SCRIPT = """set terminal {terminal} size 900,420
set output "{picture}"
set multiplot layout 1,2
set logscale xy
set key left top
set xlabel "minutes of two sensors"
set ylabel "processor time (s)"
plot {seconds}
set ylabel "peak memory (MB)"
plot {memory}
"""


def cost_of(command, **streams):
    """Processor time in s and peak memory in MB of a command that must succeed."""
    process = subprocess.Popen([str(word) for word in command], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               **streams)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command}: exit status {process.returncode}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def costs(replay, minutes, folder):
    session = folder / "session.jsonl"
    with session.open("wb") as file:
        subprocess.run([sys.executable, HERE / "long_session.py", "--minutes", str(minutes)], stdout=file, check=True)
    yield "play", cost_of([replay, session])
    yield "trace", cost_of([replay, "--trace", folder / "trace.json", session])
    yield "plot", cost_of([replay, "--plot", folder / "plot.gp", session])
    session.unlink()
    with subprocess.Popen([HERE / "long_capture.sh", str(minutes), replay], stdout=subprocess.PIPE) as capture:
        yield "import", cost_of([replay, "import", "-", "-o", os.devnull], stdin=capture.stdout)


def plot_of(data, column):
    return ", ".join(f'"{path}" using 1:{column} with linespoints title "{name}"' for name, path in data.items())


parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
parser.add_argument("replay", type=pathlib.Path)
parser.add_argument("picture", help=".svg or .png")
parser.add_argument("--minutes", type=float, nargs="+", default=[1, 10, 60])
arguments = parser.parse_args()
with tempfile.TemporaryDirectory() as scratch:
    folder = pathlib.Path(scratch)
    data = {}
    for minutes in arguments.minutes:
        for name, (seconds, megabytes) in costs(arguments.replay.resolve(), minutes, folder):
            print(f"{name:<8}{minutes:>8g} min{seconds:>10.2f} s{megabytes:>10.1f} MB", flush=True)
            data[name] = folder / f"{name}.dat"
            with data[name].open("a", encoding="ascii") as file:
                print(minutes, seconds, megabytes, file=file)
    script = SCRIPT.format(terminal="svg" if arguments.picture.endswith(".svg") else "pngcairo",
                           picture=arguments.picture, seconds=plot_of(data, 2), memory=plot_of(data, 3))
    subprocess.run(["gnuplot"], input=script, text=True, check=True)
