#!/usr/bin/env python3
"""Fails on an include that goes against the layers.

    platform            declarations alone; includes nothing of this project but itself
    platform/host       may include: platform
    aaa (headers)       may include: platform, aaa headers
    customer            may include: platform, aaa headers, customer
    aaa (sources)       may include: what the headers may, and customer (the facade forwards to it)
    tools, bench        may include: any of the above, and their own folder
    tests, fuzz         may include: anything

The library stands on the standard library alone, so aaa and customer may name no other header in angle brackets.
"""
import pathlib
import re
import subprocess
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^>"]+)[>"]', re.M)
LIBRARY = {"platform", "aaa headers", "customer"}
ALLOWED = {
    "platform": {"platform"},
    "host": {"platform", "host"},
    "aaa headers": {"platform", "aaa headers"},
    "aaa sources": LIBRARY,
    "customer": LIBRARY,
    "tools": LIBRARY | {"host", "tools"},
    "bench": LIBRARY | {"host", "bench"},
}


def layer(path):
    if path.startswith("platform/host/"):
        return "host"
    top = path.split("/")[0]
    if top == "aaa":
        return "aaa headers" if path.endswith(".h") else "aaa sources"
    return top


def problems(root):
    listed = subprocess.run(["git", "ls-files", "*.h", "*.cpp"], cwd=root, check=True, capture_output=True, text=True)
    for path in listed.stdout.split():
        allowed = ALLOWED.get(layer(path))
        if allowed is None:
            continue
        text = (root / path).read_text(encoding="utf-8")
        for match in INCLUDE.finditer(text):
            line = text.count("\n", 0, match.start(2)) + 1
            bracket, included = match.groups()
            if bracket == '"' and not (root / included).is_file():
                yield f'{path}:{line}: "{included}" is not named from the top of the project'
            elif bracket == '"' and layer(included) not in allowed:
                yield f"{path}:{line}: {layer(path)} must not include {layer(included)} ({included})"
            elif bracket == "<" and layer(path) in LIBRARY | {"aaa sources"} and "." in included:
                yield f"{path}:{line}: <{included}> is not a header of the C++ standard library"


root = pathlib.Path(__file__).resolve().parent.parent
found = list(problems(root))
print("\n".join(found) if found else "Include arrows agree with the layers.")
sys.exit(1 if found else 0)
