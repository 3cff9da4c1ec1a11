#!/usr/bin/env python3
"""Fails when tools/ types a number again that a header of the library states.

The constants are read from the headers. A number from 1024 on counts wherever it stands in code or text, in decimal or
in hexadecimal. A smaller one has other uses: it counts where an integer constant is defined with it, and below 32 only
when the names of the two constants share a word.
"""
import pathlib
import re
import subprocess
import sys

FOLDER = "customer/aaa/aaa/lsc/"
HEADERS = ("OisMetadata.h", "OisSpan.h", "OtpCalibration.h", "SampleQueue.h", "SampleWindow.h", "TarvoShadingCustomUtil.h")
DEFINITION = re.compile(r"constexpr\s+(?:auto|(?:unsigned |signed )?(?:int|long)|std::u?\w*(?:int\w*_t|size_t|ptrdiff_t))\s+"
                        r"(\w+)\s*(?:=\s*([^;]+);|\{([^}]+)\};)")
ENUM = re.compile(r"enum \w+[^{;]*\{([^}]*=[^}]*)\}")
COMMENT = re.compile(r"//[^\n]*")
NUMBER = re.compile(r"(?<![\w.#'])(0[xX][0-9a-fA-F']+|\d[\d']*)[uUlLzZ]*(?![\w.'])")
LARGE, TINY = 1024, 32
# Equal by chance.
OWN = {"kMaxMemorySize", "kSupplementary"}  # a limit of the session format, a plane of Unicode


def value_of(expression):
    """The number that a constant expression of literals gives, or None."""
    plain = re.sub(r"std::\w+\{([^}]*)\}", r"(\1)", expression).replace("'", "")
    plain = re.sub(r"(?<=[0-9a-fA-F])[uUlLzZ]+\b", "", plain)
    if not re.fullmatch(r"[\s()+*<>-]*(?:(?:0[xX][0-9a-fA-F]+|\d+)[\s()+*<>-]*)+", plain):
        return None
    try:
        return eval(plain)  # digits and operators alone, as just tested
    except SyntaxError:
        return None


def definitions(text):
    for match in DEFINITION.finditer(text):
        yield match.start(), match[1], value_of(match[2] or match[3])


def words(name):
    return {word.lower().rstrip("s") for word in re.findall(r"[A-Z]+(?![a-z])|[A-Z][a-z]+", name)}


def constants(texts):
    """Names of the library's constants by value."""
    found = {}
    for text in texts:
        text = COMMENT.sub("", text)
        pairs = [(name, value) for _, name, value in definitions(text)]
        for match in ENUM.finditer(text):
            pairs += [(name, int(value, 0)) for name, value in re.findall(r"(\w+) = (\w+)", match[1])]
        for name, value in pairs:
            if value is not None and value > 1:
                found.setdefault(value, []).append(name)
    return found


def problems(text, known):
    """(line, value, name) of each number of `text` that `known` states."""
    text = COMMENT.sub("", text)
    hits = {}
    for start, name, value in definitions(text):
        same = known.get(value, [])
        if value is None or name in OWN or (value < TINY and not any(words(name) & words(its) for its in same)):
            continue
        if same:
            hits[text.count("\n", 0, start) + 1, value] = same[0]
    for match in NUMBER.finditer(text):
        value = int(match[1].replace("'", ""), 0) if re.match(r"0[xX]|[1-9]", match[1]) else 0
        line = text.count("\n", 0, match.start()) + 1
        owner = re.search(r"(\w+) = $", text[:match.start()])
        if value >= LARGE and value in known and not (owner and owner[1] in OWN):
            hits[line, value] = known[value][0]
    return [(line, value, name) for (line, value), name in sorted(hits.items())]


def check_itself(known):
    """Planted numbers are found, harmless ones are not."""
    planted = ["constexpr std::uint32_t kTag = 0xC00A0002;", '"{\\"tag\\":\\"0xC0010017\\"}"', "constexpr auto kSize = 64 * 1024;",
               "constexpr std::int32_t kSensors = 14;", "constexpr std::int32_t kLastCalculationMode = 3;",
               "constexpr std::size_t kFrames{30};", 'line += "4592";', "if (flags & 0x618U)", "constexpr long kUs = 1'000;"]
    harmless = ["constexpr double kPeriods = 3;", "constexpr int kReasonRows = 6;", "constexpr int kWidth = 14;", "// 0xC00A0002", "f(100, 1000, 14);",
                "constexpr std::uint64_t kMaxMemorySize = 1048576;", "constexpr int kBits = 10;"]
    missed = [text for text in planted if len(problems(text, known)) != 1]
    false = [text for text in harmless if problems(text, known)]
    if missed or false:
        sys.exit(f"check_constants.py is broken: misses {missed}, objects to {false}")


root = pathlib.Path(__file__).resolve().parent.parent
stated = constants((root / FOLDER / name).read_text(encoding="utf-8") for name in HEADERS)
check_itself(stated)
listed = subprocess.run(["git", "ls-files", "tools/*.h", "tools/*.cpp"], cwd=root, check=True, capture_output=True, text=True)
found = [f"{path}:{line}: {value} is {name} of the library"
         for path in listed.stdout.split()
         for line, value, name in problems((root / path).read_text(encoding="utf-8"), stated)]
print("\n".join(found) if found else f"No number of the library is typed again under tools/ ({len(stated)} numbers known).")
sys.exit(1 if found else 0)
