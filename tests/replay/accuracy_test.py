#!/usr/bin/env python3
"""How far positions are from where the lens was: the figures of the example session, against sums made here."""
import bisect
import csv
import json
import sys
import unittest

from tool import HANDHELD, REPLAY, ROOT, ToolTest

TRUTH = HANDHELD.with_suffix(".truth.csv")
MODE = "vendor.debug.ois.hall.calculation"
STEPS = 40  # of rows, and of moments in a row's exposure


def path_of(session):
    """Times in ns and positions of the session's samples."""
    rows = sorted({tuple(row) for line in session.read_text().splitlines() if line.startswith('{"samples"')
                   for row in json.loads(line)["data"]})
    return [row[0] for row in rows], [row[3:] for row in rows]


def mean_over(path, start, exposure, readout):
    """The mean over STEPS rows of the mean over STEPS moments of each row's exposure."""
    times, places = path
    sums = [0.0, 0.0]
    for row in range(STEPS):
        for moment in range(STEPS):
            time = start - exposure + (row + 0.5) / STEPS * readout + (moment + 0.5) / STEPS * exposure
            i = bisect.bisect_right(times, time)
            share = (time - times[i - 1]) / (times[i] - times[i - 1])
            for axis in 0, 1:
                sums[axis] += places[i - 1][axis] + share * (places[i][axis] - places[i - 1][axis])
    return [total / STEPS ** 2 for total in sums]


class Accuracy(ToolTest):
    def figures(self, *arguments):
        """Rows of both tables by their first words: the modes, then the classes of exposure time."""
        tables = self.replay("accuracy", *arguments).split("\n\n")[1:]
        rows = [line.split() for table in tables for line in table.splitlines()[2:]]
        return {row[0]: [float(cell) for cell in row[1:] if cell not in ("to", "-")] for row in rows}

    def made(self, *options):
        done = self.run_command([sys.executable, "-B", ROOT / "examples/make_handheld.py", *options])
        return self.write("made" + "".join(options).replace("-", "_"), done.stdout)

    def test_errors_of_rows_are_those_of_plain_sums(self):
        self.replay("--csv", "rows.csv", HANDHELD)
        with open(self.folder / "rows.csv", encoding="ascii", newline="") as file:
            rows = [row for row in csv.DictReader(file) if row["error_x"]]
        self.assertGreater(len(rows), 600)
        path = path_of(HANDHELD)
        for row in rows[::40]:
            mean = mean_over(path, *(int(row[name]) for name in ("start_ns", "exposure_ns", "readout_ns")))
            for axis, place in zip("xy", mean):
                self.assertAlmostEqual(float(row["error_" + axis]), float(row[axis]) - place, delta=0.002)

    def test_the_example_against_its_true_path(self):
        found = self.figures("--summary", "summary.json", "--truth", TRUTH, HANDHELD)
        accuracy = json.loads((self.folder / "summary.json").read_text())["accuracy"]
        for row, figures in zip(list(found.values())[:5], [*accuracy["modes"], accuracy["weighted"]], strict=True):
            sizes = [figures[size][axis] for size in ("rms", "p95", "max") for axis in ("x", "y", "both")]
            sizes = [f"{size:.3f}" for size in sizes] + [f"{figures['lag_us']:.0f}", f"{figures['rms_without_lag']:.3f}"]
            self.assertEqual(row, [figures["exposures"], *map(float, sizes)])
        both = {mode: (row[0], row[3]) for mode, row in list(found.items())[:5]}
        self.assertEqual(both, {"mean": (683, 0.803), "largest": (683, 1.281), "middle": (683, 0.817),
                                "last": (683, 0.577), "weighted": (682, 0.037)})
        # 166 us, 0.5432 of the exposure or readout, half the exposure; less what a span is too long, 0.2 ms at most.
        self.assertAlmostEqual(found["8"][3], 11_300, delta=500)

    def test_samples_stamped_late_make_positions_older(self):
        options = "--seconds", "3", "--stamp-delay", "2000"
        session, truth = self.made(*options), self.made(*options, "--truth")
        on_time = self.figures("--truth", truth, self.made("--seconds", "3"))
        late = self.figures("--truth", truth, "--stamp-delay", "2000", session)
        self.assertAlmostEqual(late["mean"][-2] - on_time["mean"][-2], 2000, delta=100)
        self.assertLess(late["weighted"][3], 0.05)
        self.assertGreater(self.figures("--truth", truth, session)["weighted"][3], 0.1)

    def beginning(self):
        """The first seconds of the example."""
        return "".join(HANDHELD.read_text().splitlines(keepends=True)[:600])

    def test_the_sessions_own_mode_is_overridden(self):
        line = json.dumps({"platform": "property", "key": MODE, "value": 3})
        session = self.write("last.jsonl", line + "\n" + self.beginning())
        self.assertEqual(self.replay("accuracy", session),
                         self.replay("accuracy", self.write("first.jsonl", self.beginning())))

    def test_one_sensor_of_two_is_not_taken_for_the_session(self):
        second = self.beginning().replace('"sensor":0', '"sensor":3').replace('"samples":5', '"samples":6')
        session = self.write("two.jsonl", self.beginning() + second.replace('"type":5', '"type":6'))
        done = self.run_command([*REPLAY, "accuracy", session])
        self.assertEqual(done.stderr, "lsc_replay: only sensor 0 is judged; others with positions: 3 (--sensor ID)\n")
        asked = self.run_command([*REPLAY, "accuracy", "--sensor", "3", session])
        self.assertEqual((asked.stderr, asked.stdout), ("", done.stdout.replace("sensor 0", "sensor 3")))

    def test_says_what_is_wrong(self):
        session = self.write("first.jsonl", self.beginning())
        bad = self.write("bad.csv", "time_ns,x,y\n1,2\n")
        broken = self.write("broken.jsonl", "{}\n")
        unserved = self.write("unserved.jsonl", "".join(line for line in self.beginning().splitlines(keepends=True)
                                                        if "RegisterAndStart" not in line))
        far = self.write("far.csv", "time_ns,x,y\n1,2,3\n2,3,4\n")
        for status, message, arguments in [(1, "covers none of ", ["--truth", far, session]),
                                           (2, "must be a number", ["--stamp-delay", "nan", session]),
                                           (2, "bad.csv:2: expected 3 values", ["--truth", bad, session]),
                                           (2, "broken.jsonl:1: expected one of the keys", [broken]),
                                           (1, "no sensor 7", ["--sensor", "7", session]),
                                           (1, "sensor 0 has no position; what lsc_replay finds in the session says why", [unserved]),
                                           (1, "missing.jsonl: No such file", ["missing.jsonl"])]:
            with self.subTest(message):
                self.assertEqual(self.replay("accuracy", *arguments, status=status).count(message), 1)


if __name__ == "__main__":
    unittest.main()
