#!/usr/bin/env python3
"""The options as lsc_replay's help lists them: manual page, completion and documents name these, and no others."""
import re
import subprocess
import unittest

from tool import ROOT, ToolTest

COMMANDS = [], ["accuracy"], ["compare"], ["import"]
FILES = "FILE", "SESSION"  # arguments that are names of files
COMPLETE = """source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _lsc_replay; printf '%s\\n' "${COMPREPLY[@]}" """
OPTION = re.compile(r"(?<![\w-])(--?[a-z][a-z-]*)(?: +([A-Z]+))?")


class Options(ToolTest):
    def options(self, command):
        """Each name of an option with its argument, or None."""
        lines = re.findall(r"^  (-[\w,-]+)(?: ([A-Z]+))?", self.replay(*command, "--help"), re.M)
        found = {name: argument or None for names, argument in lines for name in names.split(",")}
        self.assertIn("--help", found)
        return found

    def manual(self, section):
        """A section without its markup, by lines."""
        text = (ROOT / "docs/lsc_replay.1").read_text(encoding="utf-8")
        lines = re.search(rf"^\.SH {section}\n(.*?)^\.SH", text, re.M | re.S)[1].replace("\\-", "-")
        return re.sub(r'\\f[A-Z]|["\[\]]', "", lines).splitlines()

    def completions(self, *words):
        done = subprocess.run(["bash", "-c", COMPLETE, "-", ROOT / "tools/cli/completion.bash", "lsc_replay", *words],
                              cwd=self.folder, capture_output=True, text=True, check=True)
        return done.stdout.split()

    def test_help(self):
        helps = "".join(self.replay(*command, "--help") for command in COMMANDS)
        self.assertEqual(helps, (ROOT / "tests/cli/help.txt").read_text(encoding="utf-8"))

    def test_manual_page(self):
        for command, section in zip(COMMANDS, ("OPTIONS", "ACCURACY", "COMPARE", "IMPORT")):
            lines = self.manual(section)
            tags = " ".join(tag for before, tag in zip(lines, lines[1:]) if before == ".TP")
            options = self.options(command)
            if command:  # as described for the tool
                del options["-h"], options["--help"]
            self.assertEqual({name: argument or None for name, argument in OPTION.findall(tags)}, options)

    def test_synopsis(self):
        synopsis = re.sub(r"\.[A-Z]+\b", "", " ".join(self.manual("SYNOPSIS"))).split(".br")
        self.assertEqual(len(synopsis), len(COMMANDS))
        for command, text in zip(COMMANDS, synopsis):
            options = self.options(command)
            shown = {name: argument or None for name, argument in OPTION.findall(text)}
            self.assertEqual(shown, {name: argument for name, argument in options.items() if name in shown})
            for name in "-h", "--help", "--version", "--output":  # -o stands for --output
                options.pop(name, None)
            self.assertLessEqual(set(options), set(shown))

    def test_completion(self):
        self.write("some_file", "")
        for command in COMMANDS:
            options = self.options(command)
            self.assertEqual(sorted(self.completions(*command, "-")), sorted(name for name in options if name != "-h"))
            for name, argument in options.items():
                if argument:
                    expected = ["some_file"] if argument in FILES else []
                    self.assertEqual(self.completions(*command, name, ""), expected, name)
        self.assertEqual(self.completions("some"), ["some_file"])
        self.assertEqual(self.completions("im"), ["import"])
        self.assertEqual(self.completions(""), ["some_file", "accuracy", "compare", "import"])

    def test_documents(self):
        known = set().union(*map(self.options, COMMANDS))
        for path in ROOT / "README.md", *ROOT.glob("docs/*.md"), ROOT / "examples/README.md":
            for command in re.findall(r"(?:lsc_replay|\./run) [^`\n#]*", path.read_text(encoding="utf-8")):
                self.assertLessEqual({name for name, _ in OPTION.findall(command)}, known, path)


if __name__ == "__main__":
    unittest.main()
