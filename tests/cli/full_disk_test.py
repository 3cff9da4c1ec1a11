#!/usr/bin/env python3
"""lsc_replay with files that cannot be opened, read or written: a message and exit status 1, whichever it is."""
import resource
import subprocess
import unittest

from tool import HANDHELD, REPLAY, ROOT, WORDS, ToolTest

SESSION = ROOT / "tests/sessions/calc_mean.jsonl"
FILES = {"--results": "r.jsonl", "--csv": "e.csv", "--summary": "s.json", "--junit": "j.xml", "--plot": "p.svg",
         "--trace": "t.json"}


class FullDisk(ToolTest):
    def test_every_output_file(self):
        for option, name in [*FILES.items(), ("--plot", "p.png"), ("--plot", "p.gp"), ("--trace", "t.json.gz")]:
            with self.subTest(name):
                (self.folder / name).symlink_to("/dev/full")
                self.assertIn("cannot be written", self.replay(option, name, SESSION, status=1))

    def test_standard_output_and_import(self):
        capture = self.write("capture.txt", self.run_command([*REPLAY, "--log", HANDHELD]).stderr)
        for arguments in ([SESSION], ["--cost", SESSION], ["--results", "-", SESSION], ["accuracy", HANDHELD],
                          ["--help"], ["--version"], ["import", "--help"], ["import", capture]):
            with self.subTest(arguments), open("/dev/full", "w") as full:
                done = self.run_to(full, arguments)
                self.assertEqual((done.returncode, "cannot be written" in done.stderr), (1, True), done.stderr)
        self.assertIn("/dev/full: cannot be written", self.replay("import", capture, "-o", "/dev/full", status=1))

    def test_input_that_cannot_be_read(self):
        # Nothing is mapped at the begin of a process: an input/output error.
        for command in [], ["import"]:
            self.assertIn("/proc/self/mem: cannot be read", self.replay(*command, "/proc/self/mem", status=1))

    @unittest.skipIf(len(WORDS) > 1, "the limit would be the emulator's, too")
    def test_too_many_open_files(self):
        outputs = [word for pair in FILES.items() for word in pair]
        statuses = set()
        for limit in range(4, 24):
            with self.subTest(limit):
                done = self.run_to(None, [*outputs, SESSION],
                                   preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit)))
                self.assertIn(done.returncode, (0, 1))
                self.assertEqual(done.returncode == 0, done.stderr == "", done.stderr)
                statuses.add(done.returncode)
        self.assertEqual(statuses, {0, 1})

    def run_to(self, output, arguments, **more):
        return subprocess.run([*REPLAY, *map(str, arguments)], cwd=self.folder, stdout=output or subprocess.DEVNULL,
                              stderr=subprocess.PIPE, text=True, check=False, **more)


if __name__ == "__main__":
    unittest.main()
