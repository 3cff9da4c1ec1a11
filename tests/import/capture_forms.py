"""A log's records as logcat writes them: its forms, their modifiers, and what shells and tools make of the text."""
import functools
import gzip
import io
import random
import time
import zipfile

FORMS = ("threadtime", "time", "brief", "process", "tag", "long")
MODIFIERS = ("year", "usec", "nsec", "uid", "zone", "epoch", "monotonic", "printable", "descriptive", "color")
THREADED = ("threadtime", "long")  # the forms that name threads
UID = "1047"
COLORS = {"D": 75, "E": 196, "I": 40, "W": 166}
SECOND = 10 ** 9


@functools.lru_cache(maxsize=64)
def second_text(second, year):
    return time.strftime("%Y-%m-%d %H:%M:%S" if year else "%m-%d %H:%M:%S", time.gmtime(second))


def stamp(ns, modifiers):
    second, rest = divmod(ns, SECOND)
    if "monotonic" in modifiers:
        text = f"{second - 1794900000:6}"
    elif "epoch" in modifiers:
        text = f"{second:19}"
    else:
        text = second_text(second, "year" in modifiers)
    digits = 9 if "nsec" in modifiers else 6 if "usec" in modifiers else 3
    text += f".{rest // 10 ** (9 - digits):0{digits}}"
    zoned = "zone" in modifiers and "epoch" not in modifiers and "monotonic" not in modifiers
    return text + " +0000" if zoned else text


def framing(form, record, modifiers):
    """What stands before and after the message."""
    r, uid = record, f"{UID:>5}:" if "uid" in modifiers else ""
    if form == "threadtime":
        return f"{stamp(r.time, modifiers)} {uid.replace(':', ' ')}{r.pid:5} {r.tid:5} {r.priority} {r.tag:8}: ", "\n"
    if form == "time":
        return f"{stamp(r.time, modifiers)} {r.priority}/{r.tag:8}({uid}{r.pid:5}): ", "\n"
    if form == "brief":
        return f"{r.priority}/{r.tag:8}({uid}{r.pid:5}): ", "\n"
    if form == "process":
        return f"{r.priority}({uid}{r.pid:5}) ", f"  ({r.tag})\n"
    if form == "tag":
        return f"{r.priority}/{r.tag:8}: ", "\n"
    return f"[ {stamp(r.time, modifiers)} {uid}{r.pid:5}:{r.tid:5} {r.priority}/{r.tag:8} ]\n", "\n\n"


def lines_of(records, form, modifiers=()):
    """The text of each record; a record that is text already is a line. All but `long` print each line of a message."""
    made = []
    for record in records:
        if isinstance(record, str):
            made.append(record + "\n")
            continue
        before, after = framing(form, record, modifiers)
        if "color" in modifiers:
            before, after = f"\x1b[38;5;{COLORS[record.priority]}m{before}", f"\x1b[0m{after}"
        if form == "long":
            lines = [record.text.replace("\n", "\\x0A") if "printable" in modifiers else record.text]
        else:
            lines = record.text.split("\n")
        made.append("".join(f"{before}{line}{after}" for line in lines))
    return made


def zipped(data):
    buffer = io.BytesIO()
    with zipfile.ZipFile(buffer, "w", zipfile.ZIP_DEFLATED) as archive:
        archive.writestr("version.txt", "2.0")
        archive.writestr("main_entry.txt", "bugreport-phone-2026-11-23.txt")
        archive.writestr("bugreport-phone-2026-11-23.txt",
                         b"== dumpstate: 2026-11-23 08:00:00\n------ SYSTEM LOG (logcat -v threadtime -d *:v) ------\n"
                         + data + b"------ 0.5s was the duration of 'SYSTEM LOG' ------\n")
    return buffer.getvalue()


# What becomes of the bytes on the way.
WRAPS = {
    "plain": lambda data: data,
    "crlf": lambda data: data.replace(b"\n", b"\r\n"),
    "crcrlf": lambda data: data.replace(b"\n", b"\r\r\n"),
    "utf16le": lambda data: data.decode().replace("\n", "\r\n").encode("utf-16"),
    "utf16be": lambda data: b"\xfe\xff" + data.decode().replace("\n", "\r\n").encode("utf-16-be"),
    "gzip": lambda data: gzip.compress(data, 1),
    "bugreport": zipped,
}


def choose(source):
    """A form, its modifiers and a wrapping; plain threadtime in every other case."""
    if source.random() < 0.5:
        return "threadtime", (), "plain"
    form = source.choice(FORMS)
    modifiers = tuple(sorted(source.sample(MODIFIERS, source.choice((0, 1, 2)))))
    return form, modifiers, source.choice(list(WRAPS)) if source.random() < 0.4 else "plain"


def foreign(records, source):
    """The records with lines of others between them: tags, processes, banners."""
    mixed = []
    for record in records:
        mixed.append(record)
        if source.random() < 0.01:
            other = type(record)(record.time, source.choice((record.pid, 301, 77)), source.randrange(300, 9999), "I",
                                 source.choice(("CameraProvider", "a tag: (12)", "chat:ty")),
                                 source.choice(("[pushValue] index:0", "F:(12)\nsize:3\n\nend", "", "sensorId = 0, x")))
            mixed.append(other)
    for banner in "--------- beginning of main", "--------- switch to system":
        mixed.insert(source.randrange(len(mixed)), banner)
    return mixed
