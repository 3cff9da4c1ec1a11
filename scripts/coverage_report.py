#!/usr/bin/env python3
"""Prints which lines, branches and conditions of the shipped library no test reached, from llvm-cov's JSON export.

    coverage_report.py EXPORT.json

Copies of one source place (template instances, the shared library and the tests' own objects) count together: a place
is reached when it is in any copy. What can't be reached is excused below, with the reason. Exits with 1 when anything
else is missing.
"""
import collections
import json
import pathlib
import re
import sys

INVARIANT = "asserted after every change; nothing breaks it"

# Source text of a line -> why no test can reach all of it.
EXCUSED = {
    "if (x.empty() || x.size() != y.size()) continue;":
        "a calculation gives both axes or none; the comparison guards the write all the same",
    "return std::fclose(file.release()) == 0 && written;":
        "after a failed write glibc's close of the stream fails, too; another C library's may not",
    "if (mEntries.size() > mMaxFrames || sampleCount() > kMaxBufferedSamples) return false;": INVARIANT,
    "if (samples.empty() || !std::is_sorted(samples.begin(), samples.end(), isEarlier)) return false;": INVARIANT,
    "if (older != nullptr && relationOf(*older, samples) != BatchRelation::kFollows) return false;": INVARIANT,
}

SHIPPED = re.compile(r"(?:^|/)((?:customer/)?aaa/aaa/lsc/[^/]+)$")
REGION_CODE = 0


def shipped(name):
    match = SHIPPED.search(name)
    return match and match.group(1)


lines = collections.defaultdict(int)        # (file, line) -> how often
branches = collections.defaultdict(lambda: [0, 0])   # (file, line, column) -> [taken, not taken]
decisions = collections.defaultdict(list)   # (file, line, column) -> conditions, true when shown to matter
export = json.load(open(sys.argv[1], encoding="utf-8"))["data"][0]
for function in export["functions"]:
    names = [shipped(name) for name in function["filenames"]]
    for l1, _, l2, _, count, file_id, _, kind in function["regions"]:
        if kind == REGION_CODE and names[file_id]:
            lines[names[file_id], l1] = max(lines[names[file_id], l1], count)
    for l1, c1, _, _, taken, skipped, file_id, _, _ in function.get("branches", []):
        if names[file_id]:
            seen = branches[names[file_id], l1, c1]
            seen[0] += taken
            seen[1] += skipped
for file in export["files"]:
    name = shipped(file["filename"])
    for record in file.get("mcdc_records", []):
        if name:
            conditions = record[-1]
            seen = decisions[name, record[0], record[1]]
            seen[:] = [a or b for a, b in zip(seen, conditions)] if seen else list(conditions)

missing = [f"{f}:{l}: not reached" for (f, l), count in sorted(lines.items()) if count == 0]
missing += [f"{f}:{l}:{c}: never {'true' if taken == 0 else 'false'}"
            for (f, l, c), (taken, skipped) in sorted(branches.items()) if (taken == 0) != (skipped == 0)]
missing += [f"{f}:{l}:{c}: condition {i + 1} never decides"
            for (f, l, c), shown in sorted(decisions.items()) for i, ok in enumerate(shown) if not ok]


def source_line(place):
    file, line = place.split(":")[:2]
    return pathlib.Path(file).read_text(encoding="utf-8").splitlines()[int(line) - 1].strip()


excused = [place for place in missing if source_line(place) in EXCUSED]
missing = [place for place in missing if place not in excused]
for place in excused:
    print(f"{place} (excused: {EXCUSED[source_line(place)]})")
print("\n".join(missing))
conditions = sum(len(shown) for shown in decisions.values())
print(f"{len(lines)} places, {2 * len(branches)} branches, {conditions} conditions in {len(decisions)} decisions; "
      f"{len(excused)} excused, {len(missing)} missing.")
sys.exit(1 if missing else 0)
