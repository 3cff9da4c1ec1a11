#!/usr/bin/env python3
"""Measures speed, waits and reliability, and writes the figures into their blocks: "speed" in README.md, "waits" in
docs/interface.md, "reliability" in docs/reliability.md.

    figures.py [BENCHMARK-ARGUMENT ...]    for example --benchmark_min_time=0.05 for a short run
    figures.py --check                     measures nothing; exits with 1 unless the blocks have their form

Benchmarks and fault sweep are run. Coverage and fuzzing take long: their figures come from what scripts/coverage.sh and
scripts/fuzz.sh left under build/; without that, the rows of the block stay.
"""
import collections
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGES = {"speed": ROOT / "README.md", "waits": ROOT / "docs/interface.md", "reliability": ROOT / "docs/reliability.md"}
RATES = ("17", "34", "267")  # samples a frame
TIMED = ("Query_WithCalculation/{}", "Query_Plain/{}", "Query_Floor/{}", "Frame_UpdateAndFill/{}/manual_time")
RUNS = 5  # of each benchmark; the shortest time counts, since others on the machine only add to it
WAITS_SECONDS = "20"  # of each scene
WAITS_HEAD = "| scene | call | calls | median (us) | 99 % | 99.9 % | worst |\n|---|---|---|---|---|---|---|"
WAITS_ROW = r"\| [^|]+ \| `\w+` \| \d+ \|( \d+\.\d \|){4}"
HEAD = "| shown by | last run |\n|---|---|"
FORMS = {"fault sweep": r"\d+ points in \d+ calls, each failing alone and with all after it; half of the calls have at most \d+",
         "coverage": r"\d+ places, \d+ branches, \d+ conditions in \d+ decisions; \d+ excused, \d+ missing",
         "`fuzz_": r"\d+ inputs in \d+ s, nothing found(; \d+ calculations completed)?"}


def run(*command):
    print("+", *(str(part).removeprefix(f"{ROOT}/") for part in command), file=sys.stderr)
    return subprocess.run(command, cwd=ROOT, stdout=subprocess.PIPE, text=True, check=True).stdout


def speed_block(ns, machine):
    def row(label, form, value):
        cells = " | ".join(form.format(value(*(ns[name.format(rate)] for name in TIMED))) for rate in RATES)
        return f"| {label} | {cells} |"
    return "\n".join([
        "| samples a frame | " + " | ".join(RATES) + " |",
        "|---" * (1 + len(RATES)) + "|",
        row("plain way, as a multiple of the query", "{:.1f}", lambda query, plain, floor, frame: plain / query),
        row("query, as a multiple of the floor", "{:.1f}", lambda query, plain, floor, frame: query / floor),
        row("both calls, as a multiple of the query", "{:.1f}", lambda query, plain, floor, frame: frame / query),
        row("query, us", "{:.2f}", lambda query, plain, floor, frame: query / 1000),
        row("plain way, us", "{:.2f}", lambda query, plain, floor, frame: plain / 1000),
        row("floor, us", "{:.2f}", lambda query, plain, floor, frame: floor / 1000),
        row("both calls, us", "{:.2f}", lambda query, plain, floor, frame: frame / 1000),
        "",
        *scale_rows(ns),
        "",
        f"The times are those of one machine, {machine}. There, a call through the facade takes "
        f"{ns['Facade_Call']:.1f} ns and a debug",
        f"message that no output wants {max(t for name, t in ns.items() if name.startswith('Debug_')):.1f} ns."])


def measure_speed(arguments):
    text = run(ROOT / "scripts/bench.sh", "--benchmark_format=json", f"--benchmark_repetitions={RUNS}", *arguments)
    runs = []
    while text := text.lstrip():  # a document for each benchmark program
        document, end = json.JSONDecoder().raw_decode(text)
        runs.append(document)
        text = text[end:]
    ns = collections.defaultdict(lambda: float("inf"))
    for result in (b for document in runs for b in document["benchmarks"] if b["run_type"] == "iteration"):
        clock = "real_time" if result["name"].endswith("manual_time") else "cpu_time"
        ns[result["name"]] = min(ns[result["name"]], result[clock])
    return speed_block(ns, f"{os.uname().machine} with {runs[0]['context']['num_cpus']} cores")


def scale_rows(ns):
    def ratios(name, counts, suffix=""):
        return ", ".join(f"{ns[f'{name}/{count}{suffix}'] / ns[f'{name}/1{suffix}']:.1f}" for count in counts)
    return [f"With 10, 100 and 1,000 monitors registered, a query costs {ratios('Query_Monitors', (10, 100, 1000))} times "
            "as much as with one.",
            "With 10, 100, 1,000 and 10,000 samples, an update costs "
            f"{ratios('Update_Samples', (10, 100, 1000, 10000), '/manual_time')} times as much as with one."]


def waits_block(rows, machine):
    lines = [f"| {row['scene']} | `{row['call']}` | {row['calls']} | " + " | ".join(f"{us:.1f}" for us in row["us"]) + " |"
             for row in rows]
    return "\n".join([WAITS_HEAD, *lines, "", f"One machine, {machine}."])


def measure_waits(_):
    text = run(ROOT / "scripts/bench.sh", "--waits", WAITS_SECONDS)
    return waits_block([json.loads(line) for line in text.splitlines()],
                       f"{os.uname().machine} with {os.cpu_count()} cores")


def fault_sweep():
    report = ROOT / "build/debug/fault-sweep.json"
    run("cmake", "--preset", "debug", "-DLSC_BUILD_TESTS=ON")
    run("cmake", "--build", "--preset", "debug", "--target", "lsc_api_tests")
    os.environ["CI"] = "true"  # every traced step
    run(ROOT / "build/debug/tests/lsc_api_tests", "--gtest_filter=*/FaultSweep.*", f"--gtest_output=json:{report}")
    points = [int(test["points"]) for suite in json.loads(report.read_text())["testsuites"]
              for test in suite["testsuite"]]
    return (f"{sum(points)} points in {len(points)} calls, each failing alone and with all after it; half of the calls have "
            f"at most {statistics.median_low(points)}")


def measure_reliability(old_block):
    rows = dict(re.findall(r"^\| (.*?) \| (.*?) \|$", old_block, re.MULTILINE)[1:])
    rows["fault sweep"] = fault_sweep()
    coverage = ROOT / "build/coverage/coverage.json"
    if coverage.exists():
        rows["coverage"] = run("python3", ROOT / "scripts/coverage_report.py", coverage).splitlines()[-1].rstrip(".")
    for log in sorted((ROOT / "build/fuzz").glob("*.log")):
        text = log.read_text(errors="replace")
        if done := re.search(r"^Done (\d+) runs in (\d+) second", text, re.MULTILINE):
            counted = re.search(r"^calculations: (\d+) completed", text, re.MULTILINE)
            more = f"; {counted[1]} calculations completed" if counted else ""
            rows[f"`fuzz_{log.stem}`"] = f"{done[1]} inputs in {done[2]} s, nothing found{more}"
    return "\n".join([HEAD, *(f"| {name} | {rows[name]} |" for name in sorted(rows, reverse=True))])


def split_at_block(name):
    """The page before, in and after the block."""
    parts = re.split(rf"(?<=<!-- figures: {name} -->\n)(.*?)(?=\n<!-- end of figures -->)",
                     PAGES[name].read_text(encoding="utf-8"), flags=re.DOTALL)
    if len(parts) != 3:
        sys.exit(f"{PAGES[name].name}: expected one block <!-- figures: {name} --> … <!-- end of figures -->")
    return parts


def check():
    def shape(text):
        return re.sub(r"\d+(\.\d+)?", "0", re.sub(r"one machine, .*?\. There", "", text))
    ones = collections.defaultdict(lambda: 1.0, {"Debug_": 1.0})
    if shape(split_at_block("speed")[1]) != shape(speed_block(ones, "any")):
        sys.exit("README.md: the block of speed figures is not what scripts/figures.py writes")
    waits = split_at_block("waits")[1]
    if not waits.startswith(WAITS_HEAD) or not all(re.fullmatch(WAITS_ROW, line) for line in waits.splitlines()[2:-2]):
        sys.exit("docs/interface.md: the block of waits is not what scripts/figures.py writes")
    block = split_at_block("reliability")[1]
    if not block.startswith(HEAD) or "| fault sweep |" not in block:
        sys.exit("docs/reliability.md: the head of the table or the fault sweep is missing")
    for line in block.splitlines()[2:]:
        if not any(re.fullmatch(rf"\| {name}.* \| {form} \|", line) for name, form in FORMS.items()):
            sys.exit(f"docs/reliability.md: not a row that scripts/figures.py writes: {line}")


if sys.argv[1:] == ["--check"]:
    check()
else:
    for page, measure in (("speed", lambda _: measure_speed(sys.argv[1:])), ("waits", measure_waits),
                          ("reliability", measure_reliability)):
        before, block, after = split_at_block(page)
        PAGES[page].write_text(before + measure(block) + after, encoding="utf-8")
