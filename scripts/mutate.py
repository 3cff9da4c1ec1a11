#!/usr/bin/env python3
"""Plants one fault at a time and runs the tests that should see it.

    mutate.py [--area library|host|tool] [--sample N [--seed S]] [--match TEXT] [--list]

A fault is a changed comparison, operator, constant or letter of a text, a negation or a statement dropped, two arguments
swapped, a lock left out. Each is planted in a copy of the tree under build/mutants, where only what depends on it is
built again. It is killed when a test fails or takes far too long. Faults that change nothing a test could see stand in
tests/equivalent_mutants.txt with the reason; a survivor that is not listed there makes the exit status 1.
"""
import argparse
import collections
import concurrent.futures
import hashlib
import os
import pathlib
import queue
import random
import re
import shutil
import subprocess
import sys
import time
from dataclasses import dataclass

ROOT = pathlib.Path(__file__).resolve().parent.parent
SCRATCH = ROOT / "build" / "mutants"
EQUIVALENT = ROOT / "tests" / "equivalent_mutants.txt"


@dataclass(frozen=True)
class Stage:
    """What is built for a fault, and which tests then run."""
    targets: tuple
    labels: str
    preset: str = "debug"
    slow: bool = False


UNIT_TESTS = Stage(("lsc_host_tests", "lsc_unit_tests", "lsc_exhaustive_tests"), "unit")
API_TESTS = Stage(("lsc_api_tests",), "api")
SESSIONS = Stage(("lsc_replay",), "session")
THREADS = Stage(("lsc_unit_tests", "lsc_api_tests"), "unit|api", "tsan")
TOOL_TESTS = Stage(("lsc_replay", "lsc_replay_tests", "lsc_import_tests"), "session|tool")
SLOW = Stage(("lsc_replay",), "tool", slow=True)

UNITS = "ShadingCustom.cpp", "ShadingCustomUtil.cpp"  # the API's tests know them best

AREAS = {
    "library": (("aaa/", "customer/"), (UNIT_TESTS, API_TESTS, SESSIONS)),
    "host": (("platform/host/",), (UNIT_TESTS, API_TESTS, SESSIONS)),
    "tool": (("tools/",), (TOOL_TESTS, SLOW)),
}
TEST_SECONDS = 60

# ---- Faults

TOKEN = re.compile(r"""(?P<comment>//[^\n]*|/\*.*?\*/)|(?P<text>"(?:\\.|[^"\\\n])*")|(?P<char>'(?:\\.|[^'\\])+')
    |(?P<number>\b(?:0x[0-9A-Fa-f]+|0[0-7]+|0|[1-9]\d*)[uUlL]*\b(?![.'\w]))|(?P<word>[A-Za-z_]\w*)
    |(?P<sign>(?<=\ )(?:<=|>=|==|!=|&&|\|\||<|>|\+|-)(?=\s))|(?P<not>!(?=[\w(:]))""", re.X | re.S)
OPPOSITE = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&", "+": "-",
            "-": "+", "true": "false", "false": "true"}
KIND = {"&&": "operator", "||": "operator", "+": "operator", "-": "operator"}
STATEMENT = re.compile(r"^ +(?!return|delete|throw|break|continue|case|default|else|static_assert)"
                       r"[\w:.>\[\]\-*]+(?:\((?:[^;{}]|\n)*\)|(?: [-+|&^]?= |\+\+|--)[^;{}]*);$"
                       r"|^ +(?:\+\+|--)[\w.\->]+;$", re.M)
LOCK = re.compile(r"^ *(?:const )?(?:std::)?(?:lock_guard|unique_lock|scoped_lock|Lock)\b[^;]*;$", re.M)
SIMPLE = r"[A-Za-z_][\w.]*(?:->\w+)*"
ARGUMENTS = re.compile(rf"(?<=[\w>]\()({SIMPLE}), ({SIMPLE})(?=[,)])|(?<=, )({SIMPLE}), ({SIMPLE})(?=[,)])")

SYMMETRIC = re.compile(r"std::(?:min|max)(?:<[\w:]+>)?\($")


@dataclass(frozen=True)
class Fault:
    path: str
    kind: str
    begin: int
    end: int
    new: str
    line: int
    before: str  # the line, or the first one
    after: str

    def __str__(self):
        return f"{self.path}:{self.line}: {self.kind}\n    - {self.before}\n    + {self.after}"

    @property
    def key(self):
        return self.path, self.before, self.after


def changed_letter(text):
    """Another letter in the middle of a text, outside of its conversions."""
    masked = re.sub(r"%[-+ #0]*\d*(?:\.\d+)?[hlz]*\w|\\.", lambda m: " " * len(m.group()), text)
    letters = [i for i, c in enumerate(masked) if c.isalpha()]
    if not letters:
        return None
    i = letters[len(letters) // 2]
    return text[:i] + ("q" if text[i] != "q" else "k") + text[i + 1:]


def replacements(source):
    """Kind, place and replacement of each fault."""
    code = list(source)
    for token in TOKEN.finditer(source):
        kind, text = token.lastgroup, token.group()
        if kind in ("comment", "text", "char"):
            code[token.start():token.end()] = " " * len(text)
        if kind == "number":
            digits = text.rstrip("uUlL")
            base = 0 if digits[:2].lower() == "0x" else 8 if digits[0] == "0" else 10
            yield "constant", token.span(), str(int(digits, base) + 1) + text[len(digits):]
        elif kind == "sign" or text in ("true", "false"):
            yield KIND.get(text, "comparison"), token.span(), OPPOSITE[text]
        elif kind == "not":
            yield "negation", token.span(), ""
        elif kind == "text" and (new := changed_letter(text)):
            yield "text", token.span(), new
    code = "".join(code)
    for found in STATEMENT.finditer(code):
        begin = found.start() + len(found.group()) - len(found.group().lstrip())
        yield "statement", (begin, found.end()), ";"
    for found in LOCK.finditer(code):
        yield "lock", found.span(), ""
    for found in ARGUMENTS.finditer(code):
        first, second = (g for g in found.groups() if g)
        if first != second and not SYMMETRIC.search(code[max(0, found.start() - 40):found.start()]):
            yield "arguments", found.span(), f"{second}, {first}"


def faults_in(path):
    source = (ROOT / path).read_text()
    for kind, (begin, end), new in replacements(source):
        start = source.rfind("\n", 0, begin) + 1
        stop = source.find("\n", begin)
        before = source[start:stop]
        if re.match(r"\s*(#|static_assert|using|namespace|//)", before):
            continue
        after = (source[start:begin] + new + (source[end:stop] if end <= stop else "")).strip()
        yield Fault(path, kind, begin, end, new, source.count("\n", 0, begin) + 1, before.strip(), after)


def all_faults(area):
    tracked = subprocess.run(["git", "ls-files", "*.cpp"], cwd=ROOT, check=True, capture_output=True, text=True).stdout
    return [fault for path in tracked.split() if path.startswith(AREAS[area][0]) for fault in faults_in(path)]


def equivalents():
    """Faults that change nothing a test could see: blocks of path, line before, line after, reason."""
    known = set()
    for block in EQUIVALENT.read_text().split("\n\n"):
        lines = [line for line in block.splitlines() if line and not line.startswith("#")]
        if lines:
            path, before, after, reason = lines[0], lines[1], lines[2], lines[3:]
            assert before.startswith("- ") and after.startswith("+") and reason, f"{EQUIVALENT.name}: {block}"
            known.add((path, before[2:], after[1:].strip()))
    return known


# ---- Copies of the tree

class Workshop:
    """A copy of the tree with its builds, in which one fault at a time is planted."""

    def __init__(self, number, stages):
        self.root = SCRATCH / f"tree{number}"
        files = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, capture_output=True, text=True).stdout.split()
        for name in files:
            self.update(name)
        wanted = collections.defaultdict(set)
        for stage in stages:
            wanted[stage.preset].update(stage.targets)
        for preset, targets in wanted.items():
            options = ["-DLSC_BUILD_TESTS=ON", "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST"]
            if shutil.which("ld.lld"):
                options += [f"-DCMAKE_{what}_LINKER_FLAGS=-fuse-ld=lld" for what in ("EXE", "SHARED")]
            self.run(["cmake", "--preset", preset, *options], check=True)
            done = self.build(preset, targets)
            assert done.returncode == 0, f"the tree does not build:\n{done.stdout[-3000:]}"

    def update(self, name):
        source, copy = ROOT / name, self.root / name
        if copy.exists() and copy.read_bytes() == source.read_bytes():
            return
        copy.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(source, copy)
        copy.touch()

    def run(self, command, check=False):
        return subprocess.run(command, cwd=self.root, check=check, text=True, errors="replace",
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)

    def build(self, preset, targets):
        return self.run(["cmake", "--build", "--preset", preset, "-j", "1", "--target", *sorted(targets)])

    def test(self, stage):
        slow = ("-L", "slow") if stage.slow else ("-LE", "slow")
        return self.run(["ctest", "--preset", stage.preset, "-L", stage.labels, *slow, "-E", "liblog", "--stop-on-failure",
                         "--timeout", str(TEST_SECONDS), "--no-tests=error"])

    def try_fault(self, fault, stages):
        """`killed` with the tests that did it, `survived`, or `stillborn` when it does not compile."""
        place = self.root / fault.path
        source = place.read_text()
        place.write_text(source[:fault.begin] + fault.new + source[fault.end:])
        try:
            for stage in stages:
                built = self.build(stage.preset, stage.targets)
                if built.returncode:
                    return "stillborn", ""
                tested = self.test(stage)
                if tested.returncode:
                    failed = re.search(r"The following tests FAILED:\n(.*)", tested.stdout, re.S)
                    return "killed", failed.group(1).strip() if failed else tested.stdout[-200:]
            return "survived", ""
        finally:
            place.write_text(source)


def check_healthy(workshop, stages):
    for stage in stages:
        done = workshop.test(stage)
        assert done.returncode == 0, f"tests fail without a fault:\n{done.stdout[-3000:]}"


def stages_of(fault, area):
    if area == "library" and fault.kind == "lock":
        return (THREADS,)
    if area == "library" and fault.path.endswith(UNITS):
        return API_TESTS, UNIT_TESTS, SESSIONS
    return AREAS[area][1]


# ---- The command

def judge(chosen, area, jobs, listed):
    """Outcome of each fault, told while they run."""
    stages = [stage for fault in chosen for stage in stages_of(fault, area)]
    stages = list(dict.fromkeys(stages))
    free = queue.Queue()
    for number in range(jobs):
        workshop = Workshop(number, stages)
        if number == 0:
            check_healthy(workshop, stages)
        free.put(workshop)

    def work(fault):
        workshop = free.get()
        try:
            return fault, *workshop.try_fault(fault, stages_of(fault, area))
        finally:
            free.put(workshop)

    outcomes = collections.defaultdict(collections.Counter)
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for number, (fault, outcome, by) in enumerate(pool.map(work, chosen), 1):
            if outcome == "survived" and fault.key in listed:
                outcome = "equivalent"
            outcomes[fault.kind][outcome] += 1
            if outcome == "survived":
                print(fault, flush=True)
            if number % 20 == 0:
                print(f"  {number} of {len(chosen)}", file=sys.stderr, flush=True)
    return outcomes


def report(area, outcomes):
    columns = ("killed", "survived", "equivalent", "stillborn")
    print(f"{area:12}" + "".join(f"{column:>12}" for column in columns))
    total = collections.Counter()
    for kind, counts in sorted(outcomes.items()):
        total += counts
        print(f"{kind:12}" + "".join(f"{counts[column]:12}" for column in columns))
    print(f"{'all':12}" + "".join(f"{total[column]:12}" for column in columns))
    share = 100 * total["killed"] / max(1, total["killed"] + total["survived"])
    print(f"{share:.1f} % killed of those that compile and are not listed as equivalent.")
    return total["survived"]


def content_seed():
    """The same as long as the library and the host platform are, whatever tests are added for what a run has found."""
    trees = subprocess.run(["git", "rev-parse", "HEAD:aaa", "HEAD:customer", "HEAD:platform"], cwd=ROOT,
                           capture_output=True, text=True).stdout
    return int(hashlib.sha256(trees.encode()).hexdigest()[:8], 16)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--area", choices=AREAS, action="append", help="may be repeated; library and host by default")
    parser.add_argument("--sample", type=int, help="this many faults of each area, chosen at random")
    parser.add_argument("--seed", type=int, default=content_seed(), help="of the choice; by default made from the sources")
    parser.add_argument("--match", default="", help="faults whose place and lines contain this text")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--list", action="store_true", help="show the faults and stop")
    options = parser.parse_args()
    survivors, listed, began = 0, equivalents(), time.monotonic()
    for area in options.area or ("library", "host"):
        faults = [fault for fault in all_faults(area) if options.match in str(fault)]
        chosen = faults
        if options.sample is not None and options.sample < len(faults):
            print(f"{options.sample} of {len(faults)} faults, seed {options.seed}")
            chosen = random.Random(options.seed).sample(faults, options.sample)
        if options.list:
            print("\n".join(map(str, chosen)))
        else:
            survivors += report(area, judge(chosen, area, options.jobs, listed))
    print(f"{time.monotonic() - began:.0f} s")
    sys.exit(survivors != 0)


if __name__ == "__main__":
    main()
