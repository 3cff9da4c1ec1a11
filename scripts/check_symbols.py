#!/usr/bin/env python3
"""Compares the dynamic symbols that a library defines with a committed list; fails on a missing or an extra one.

    check_symbols.py LIBRARY LIST [--update]
"""
import pathlib
import subprocess
import sys

library, list_file = sys.argv[1], pathlib.Path(sys.argv[2])
listing = subprocess.run(["nm", "--dynamic", "--defined-only", "--format=posix", library],
                         check=True, capture_output=True, text=True).stdout
actual = {line.split()[0] for line in listing.splitlines()}
if "--update" in sys.argv:
    list_file.write_text("".join(f"{name}\n" for name in sorted(actual)))
expected = set(list_file.read_text().split())
for name in sorted(expected - actual):
    print(f"missing: {name}")
for name in sorted(actual - expected):
    print(f"extra:   {name}")
print(f"{library}: {len(actual)} dynamic symbols, {len(expected)} expected.")
sys.exit(0 if actual == expected else 1)
