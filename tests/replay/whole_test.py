#!/usr/bin/env python3
"""Everything that is written about a short session, to the letter, beside the files in whole/.

With UPDATE=1 in the environment the files are written instead; read them before you commit them.
"""
import os
import re
import unittest

from tool import HANDHELD, REPLAY, ROOT, ToolTest

WHOLE = ROOT / "tests/replay/whole"
FRAMES = range(172, 190)  # around the example's gap
# What a device gave for some of them: the same, another position, none, one where there is none here.
DEVICE = {180: ("-50.356243", "-11.536615"), 184: ("-41.050190", "-5.325764"), 186: ("-36.5", "-2.0"), 187: (None, None)}


def session():
    lines = HANDHELD.read_text(encoding="utf-8").splitlines(keepends=True)
    begins = [i for i, line in enumerate(lines) if '"samples"' in line]
    head = [line for line in lines[:begins[0]] if not line.startswith("#")]
    text = "".join(head)
    for number in FRAMES:
        text += "".join(line for line in lines[begins[number]:begins[number + 1]])
        if number in DEVICE:
            x, y = (f'"{value}"' if value else "null" for value in DEVICE[number])
            text += f'#expect {{"sensor":0,"type":1,"x":{x},"y":{y}}}\n'
    return text


class Whole(ToolTest):
    def check(self, name, text):
        if os.environ.get("UPDATE") == "1":
            (WHOLE / name).write_text(text, encoding="utf-8")
        self.assertEqual(text, (WHOLE / name).read_text(encoding="utf-8"), name)

    def test_every_output(self):
        self.write("session.jsonl", session())
        files = {"--plot": "picture.gp", "--csv": "rows.csv", "--summary": "summary.json", "--junit": "report.xml",
                 "--trace": "trace.json"}
        options = [word for option in files.items() for word in option]
        self.check("table.txt", self.replay(*options, "--from", "120", "--to", "270", "session.jsonl"))
        for name in files.values():
            text = (self.folder / name).read_text(encoding="utf-8")
            self.check(name, re.sub(r"(\.\d{6})\d+", r"\1", text))  # processors differ in what follows

    def test_comparison_and_accuracy(self):
        self.write("after.jsonl", session())
        self.write("before.jsonl", session().replace("15980000", "7990000"))
        compared = self.run_command([*REPLAY, "compare", "before.jsonl", "after.jsonl"], status=1)
        self.check("comparison.txt", compared.stdout)
        self.check("accuracy.txt", self.replay("accuracy", "--stamp-delay", "250", "after.jsonl"))


if __name__ == "__main__":
    unittest.main()
