#!/usr/bin/env python3
"""Captures that lie in every way a phone's log can lie, imported and compared with the sessions that made them.

    check_captures.py [--count N] [--first SEED] [--seed SEED] [--kind KIND] [--jobs N] [--keep DIR] LSC_REPLAY...

Each seed is one case: `--seed` runs it again, `--keep` leaves its capture, session and truth in a directory.
"""
import argparse
import collections
import multiprocessing
import pathlib
import random
import subprocess
import sys
import tempfile
import time
from dataclasses import replace

import capture_damage as damage
import capture_forms as forms
from capture_cameras import SCENARIOS
from capture_judge import Expected, judge, play_import, run_import
from capture_truth import truth

CASES_A_SCENARIO = 6  # that share a played session
FRAMES_IN_FLIGHT = 3  # that a device may leave without a request when a monitor starts or ends
COLUMNS = ("cases", "wrong", "silent", "misled", "unfaithful", "ambiguous", "noise", "boast", "unplayable", "refused")
KINDS = ("complete", "foreign", "cut_lines", "halves", "restart", "level", *damage.LOSSES, *damage.LOSSES_OF_CAMERAS)


class Case:
    """A capture made from a seed, with what an import of it must be."""

    def __init__(self, replay, seed, kind=None):
        source = random.Random(seed)
        group, place = divmod(seed, CASES_A_SCENARIO)
        self.kind = kind or ("complete" if place == 0 else source.choice(KINDS))
        self.form, self.modifiers, self.wrap = forms.choose(source)
        level = source.choice((0, 1, 3)) if self.kind == "level" else 4
        first = truth(replay, group, level)
        self.scenario, self.truths = first.scenario, [first]
        self.complete = self.kind in ("complete", "foreign")
        self.records = self.damaged(replay, source, first, group)
        self.options, self.standard_input = (), source.random() < 0.1
        kept = [r for r in self.records if not isinstance(r, str)]
        self.must_say = self.kind == "level" or (not self.complete and self.losses(first.records, kept) > 0)
        # Without threads, lines of concurrent cameras cannot always be told apart.
        self.may_say = self.form not in forms.THREADED
        if self.kind == "restart" and self.form != "tag" and source.random() < 0.5:
            # The second process alone is complete; the first is left out, and said to be.
            self.options, self.truths = ("--pid", str(self.records[-1].pid)), self.truths[1:]
            self.complete = self.may_say = True
        self.data = forms.WRAPS[self.wrap]("".join(forms.lines_of(self.records, self.form, self.modifiers)).encode())

    def damaged(self, replay, source, first, group):
        if self.kind == "foreign":
            return forms.foreign(first.records, source)
        if self.kind in ("halves", "restart"):
            self.truths.append(truth(replay, group + 1))
            return getattr(damage, self.kind)(first.records, self.truths[1].records, source)
        if self.kind == "cut_lines":
            return damage.cut_lines(first.records, source)
        if self.kind in damage.LOSSES_OF_CAMERAS:
            return damage.LOSSES_OF_CAMERAS[self.kind](first.records, source, first)
        return damage.LOSSES[self.kind](first.records, source) if self.kind in damage.LOSSES else first.records

    def losses(self, whole, kept):
        """How many records between the first and the last one kept are gone or changed."""
        if self.kind == "restart":
            return 1 if self.form != "tag" else 0  # a process is left out; this form does not show it
        if self.kind == "halves":
            return 1
        places = {id(r): i for i, r in enumerate(whole)}
        there = {places[id(r)] for r in kept if id(r) in places}
        gone = [whole[i].call for i in range(min(there), max(there)) if i not in there]
        seen = {r.call for r in kept}
        excused = self.truths[0].traceless - seen
        excused |= self.ends_of_rows(set(gone) - seen - excused, seen)
        return sum(call not in excused for call in gone)

    def ends_of_rows(self, lost, seen):
        """Calls that end a monitor's row of hand-overs or of requests: few of them look like frames in flight. So do
        a row's first requests: a camera may be asked late."""
        rows, first, last = self.truths[0].rows, {}, {}
        for call in sorted(seen):
            first.setdefault(rows[call], call)
            last[rows[call]] = call
        ends = [(rows[call], call < last.get(rows[call], -1), call) for call in lost if rows[call]
                and (call > last.get(rows[call], len(rows)) or (call < first.get(rows[call], -1) and not rows[call][2]))]
        many = collections.Counter(end[:2] for end in ends)
        # With a camera's last hand-overs goes one request more.
        return {call for *its, call in ends if many[tuple(its)] <= FRAMES_IN_FLIGHT + (not its[0][2])}

    def __str__(self):
        return f"{self.kind}, {self.form} {'+'.join(self.modifiers)} {self.wrap}, {'/'.join(map(str, self.scenario))}"


def options_of(replay):
    """`--strict`, where the tool has it."""
    text = subprocess.run([*replay, "import", "--help"], capture_output=True, text=True).stdout
    return ("--strict",) if "--strict" in text else ()


def check(arguments):
    replay, options, seed, kind, keep = arguments
    case = Case(replay, seed, kind)
    with tempfile.TemporaryDirectory() as scratch:
        directory = pathlib.Path(keep or scratch)
        directory.mkdir(parents=True, exist_ok=True)
        made = run_import(replay, case.data, directory, *options, *case.options, standard_input=case.standard_input)
        if keep:
            for i, known in enumerate(case.truths):
                (directory / f"truth{i}.jsonl").write_text(known.text)
            (directory / "import.jsonl").write_text(made.session)
            (directory / "import.txt").write_text(made.said)
            kept = set(map(id, case.records))
            (directory / "lost.txt").write_text("".join(
                line for record, line in zip(case.truths[0].records, forms.lines_of(case.truths[0].records, "threadtime"))
                if id(record) not in kept))
    return seed, case.kind, str(case), judge(Expected(*case.truths), made, case.complete, case.must_say, case.may_say)


def check_judge(replay, options):
    """Faults planted in the import of a complete capture, which the judge must see."""
    group = next(i for i, scenario in enumerate(SCENARIOS) if scenario[0] == 1)
    known = truth(replay, group)
    expected = Expected(known)
    data = "".join(forms.lines_of(known.records, "threadtime")).encode()
    with tempfile.TemporaryDirectory() as scratch:
        made = run_import(replay, data, pathlib.Path(scratch), *options)
        assert judge(expected, made, True, False).faults == [], judge(expected, made, True, False)
        assert "silent" in judge(expected, made, False, True).faults[0]
        assert "boast" in judge(expected, replace(made, said=f"replayed exactly {10 ** 6}"), False, False).faults[0]
        claims = [i for i, call in enumerate(made.calls) if call.expected and call.expected[0]["x"]]
        one, other = (made.calls[i].expected for i in (claims[3], claims[9]))
        one[0]["x"], other[0]["x"] = other[0]["x"], one[0]["x"]
        assert "wrong: 2" in judge(expected, made, False, False).faults[0]
        lines = made.session.splitlines()
        batches = [i for i, line in enumerate(lines) if line.startswith('{"samples"')]
        del lines[batches[len(batches) // 2]]
        made.session = "\n".join(lines)
        play_import(replay, made, pathlib.Path(scratch))
        assert "unfaithful" in judge(expected, made, True, False).faults[0]
        assert "misled" in judge(expected, made, False, False).faults[0]


def groups(seeds):
    """Seeds that share their sessions, for one worker."""
    by_group = collections.defaultdict(list)
    for seed in seeds:
        by_group[seed // CASES_A_SCENARIO].append(seed)
    return list(by_group.values())


def check_all(arguments):
    replay, options, seeds, kind, keep = arguments
    return [check((replay, options, seed, kind, keep)) for seed in seeds]


def report(results, shown):
    """A table of faults by kind of capture; how many captures have one."""
    counts, faulty = collections.defaultdict(collections.Counter), 0
    for seed, kind, description, verdict in results:
        count = counts[kind]
        count.update({"cases": 1, "exposures": verdict.exposures, "same": verdict.same, "right": verdict.right})
        count.update(fault.split(":")[0] for fault in verdict.faults)
        real = [fault for fault in verdict.faults if not fault.startswith("ambiguous")]
        faulty += bool(real)
        if real and faulty <= shown:
            print(f"seed {seed} ({description})\n  " + "\n  ".join(real), flush=True)
    print(f"{'':13}" + "".join(f"{column:>11}" for column in (*COLUMNS, "same %", "results %")))
    for kind, count in sorted(counts.items()):
        shares = [100 * count[what] / max(1, count["exposures"]) for what in ("same", "right")]
        print(f"{kind:13}" + "".join(f"{count[c]:11}" for c in COLUMNS) + "".join(f"{share:11.1f}" for share in shares))
    return faulty


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--count", type=int, default=60)
    parser.add_argument("--first", type=int, default=0)
    parser.add_argument("--seed", type=int)
    parser.add_argument("--kind", choices=KINDS)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--keep")
    parser.add_argument("--shown", type=int, default=20)
    parser.add_argument("replay", nargs="+")
    options = parser.parse_args()
    replay = tuple(options.replay)
    seeds = [options.seed] if options.seed is not None else range(options.first, options.first + options.count)
    check_judge(replay, options_of(replay))
    began = time.monotonic()
    work = [(replay, options_of(replay), group, options.kind, options.keep) for group in groups(seeds)]
    with multiprocessing.Pool(options.jobs) as pool:
        faulty = report((result for part in pool.imap(check_all, work) for result in part), options.shown)
    print(f"seeds {seeds[0]} to {seeds[-1]}: {len(seeds)} captures, {faulty} with a fault, "
          f"{time.monotonic() - began:.0f} s")
    sys.exit(faulty != 0)


if __name__ == "__main__":
    main()
