"""Imports a capture and compares what comes of it with the sessions that made it."""
import re
import subprocess
from collections import Counter, defaultdict
from dataclasses import dataclass, field

from capture_session import calls_of, key_of, play, positions


@dataclass
class Import:
    """What the importer made of a capture, and what the player made of that."""
    status: int
    said: str
    session: str
    played: int = 0
    positions: Counter = field(default_factory=Counter)
    calls: list = field(default_factory=list)


def run_import(replay, data, directory, *options, standard_input=False):
    capture = directory / "capture"
    capture.write_bytes(data)
    name = "-" if standard_input else capture
    with open(capture, "rb") as stream:
        done = subprocess.run([*replay, "import", name, *options], stdin=stream, capture_output=True)
    made = Import(done.returncode, done.stderr.decode(errors="replace"), done.stdout.decode(errors="replace"))
    if made.status in (0, 3):
        play_import(replay, made, directory)
    return made


def play_import(replay, made, directory):
    # What the library logs again costs time and changes nothing.
    text = made.session.replace('"details_level":5', '"details_level":0')
    played, results = play(replay, text, directory)
    made.played, made.calls = played.returncode, calls_of(text)
    made.positions = positions(made.calls, results)
    if played.returncode:
        made.said += played.stderr.decode(errors="replace")


class Expected:
    """The truth of one or several captures."""

    def __init__(self, *truths):
        self.exposures = defaultdict(list)
        self.positions = Counter()
        for truth in truths:
            for key, found in truth.exposures.items():
                self.exposures[key] += found
            self.positions += truth.positions

    def wrong_results(self, calls):
        """Expectations below a call that the device did not make so or gave another result; how many are right."""
        wrong, right = [], 0
        for call in calls:
            for claim in call.expected:
                kind = claim["type"]
                times = call.exposures.get(kind)
                known = self.exposures.get(key_of(call.sensor, kind, times), []) if times else []
                if not call.microseconds:
                    known = [k for k in known if k[0] == times]
                claimed = (claim["x"], claim["y"]) if claim["x"] is not None else None
                if claim["sensor"] != call.sensor or claimed not in [position for _, position in known]:
                    wrong.append((call.line, claim, times, known))
                else:
                    right += 1
        return wrong, right

    def same(self, got):
        """How many of the truth's positions were played, and how many of those played are the truth's."""
        return (got & self.positions).total(), sum(count for key, count in got.items() if key in self.positions)


def exact_in(said):
    """How many exposures the report calls reproduced exactly; None when it has no such line."""
    found = re.search(r"replayed exactly\s+(\d+)", said)
    return int(found.group(1)) if found else None


def only_untold(said):
    """Whether nothing is said but whose hand-overs without samples, which decide no position, may be several cameras'."""
    rest = re.sub(r".*: \d+ holes?\n|  line .*: a hand-over without samples, of which sensor nothing tells.*\n", "", said)
    return ": " not in rest


@dataclass
class Verdict:
    faults: list  # each a text that begins with its kind
    exposures: int = 0  # the device's
    same: int = 0  # of them with the same position when played
    right: int = 0  # expectations that are true


def judge(expected, made, complete, must_say, may_say=False):
    """`must_say`: lines are missing inside the capture. `may_say`: its form leaves things open."""
    if made.status not in (0, 3):
        return Verdict([f"refused: exit status {made.status}: {made.said.strip()[:200]}"])
    wrong, right = expected.wrong_results(made.calls)
    same, true = expected.same(made.positions)
    verdict = Verdict([], expected.positions.total(), same, right)
    faults = verdict.faults
    if made.played:
        faults.append(f"unplayable: {made.said.strip()[-200:]}")
    if wrong:
        line, claim, times, known = wrong[0]
        faults.append(f"wrong: {len(wrong)} results attached, first at line {line}: {claim} for {times}, truth {known}")
    spoke = made.status == 3 or "hole" in made.said
    if must_say and not spoke:
        faults.append("silent: lines are missing, nothing is said")
    all_there = same == right == verdict.exposures
    if complete and not all_there:
        faults.append(f"{'ambiguous' if may_say and spoke else 'unfaithful'}: {same} of {verdict.exposures} "
                      f"exposures as on the device, {right} with its result")
    if not complete and not spoke and made.positions - expected.positions:
        faults.append(f"misled: {(made.positions - expected.positions).total()} positions differ, nothing is said")
    if complete and spoke and not may_say:
        faults.append(f"{'ambiguous' if only_untold(made.said) else 'noise'}: {made.said.strip()[:300]}")
    exact = exact_in(made.said)
    if exact is not None and exact > true:
        faults.append(f"boast: {exact} exposures said to be exact, {true} are")
    return verdict
