#!/usr/bin/env python3
"""Fails on an include that goes against the layers.

    platform            declarations alone; includes nothing of this project but itself
    platform/host       may include: platform
    aaa (headers)       may include: platform, aaa headers
    customer            may include: platform, aaa headers, customer
    aaa (sources)       may include: what the headers may, and customer (the facade forwards to it)
    tools/*             may include: any of the above, their own folder, and those named here:
                        session <- diagnose <- play, report; session <- import; cli takes all
    bench               may include: any of the above but tools, and its own folder
    tests, fuzz         may include: anything

The library stands on the standard library alone, so aaa and customer may name no other header in angle brackets, but for
the file that opens the hall dump, which takes POSIX to open it safely.
"""
import pathlib
import re
import subprocess
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^>"]+)[>"]', re.M)
POSIX = {"customer/aaa/aaa/lsc/OisHallDump.cpp"}
LIBRARY = {"platform", "aaa headers", "customer"}
BELOW_TOOLS = LIBRARY | {"host"}
TOOLS = {
    "session": (),
    "diagnose": ("session",),
    "play": ("session", "diagnose"),
    "report": ("session", "diagnose"),
    "import": ("session",),
    "cli": ("session", "diagnose", "play", "report", "import"),
}
ALLOWED = {
    "platform": {"platform"},
    "host": {"platform", "host"},
    "aaa headers": {"platform", "aaa headers"},
    "aaa sources": LIBRARY,
    "customer": LIBRARY,
    **{f"tools/{folder}": BELOW_TOOLS | {f"tools/{name}" for name in (folder, *below)} for folder, below in TOOLS.items()},
    "bench": BELOW_TOOLS | {"bench"},
}


def layer(path):
    if path.startswith("platform/host/"):
        return "host"
    top = path.split("/")[0]
    if top == "aaa":
        return "aaa headers" if path.endswith(".h") else "aaa sources"
    if top == "tools":
        return "/".join(path.split("/")[:2])
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
            elif bracket == "<" and layer(path) in LIBRARY | {"aaa sources"} and "." in included and path not in POSIX:
                yield f"{path}:{line}: <{included}> is not a header of the C++ standard library"


root = pathlib.Path(__file__).resolve().parent.parent
found = list(problems(root))
print("\n".join(found) if found else "Include arrows agree with the layers.")
sys.exit(1 if found else 0)
