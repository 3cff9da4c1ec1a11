"""What the tests of the tool stand on.

LSC_REPLAY names the tool, behind its emulator where it needs one; without it, that of the debug build is tested. A file
of tests runs alone with PYTHONPATH=tests/support python3 FILE [Class.test].
"""
import os
import pathlib
import shlex
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
HANDHELD = ROOT / "examples/handheld.jsonl"
WORDS = shlex.split(os.environ.get("LSC_REPLAY", str(ROOT / "build/debug/tools/cli/lsc_replay")))
REPLAY = [shutil.which(WORDS[0]) or WORDS[0], *WORDS[1:]]  # found, so that a test may take the search path away


class ToolTest(unittest.TestCase):
    """A scratch folder and the tool's commands, which run in it."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, text):
        path = self.folder / name
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    def run_command(self, command, status=0, **more):
        """What a command ended with, which must be this exit status. Its outputs are texts."""
        done = subprocess.run([str(word) for word in command], cwd=self.folder, capture_output=True, text=True,
                              check=False, **more)
        self.assertEqual(done.returncode, status, (command, done.stderr))
        return done

    def replay(self, *arguments, status=0, **more):
        """What lsc_replay printed; on another exit status than 0, its messages."""
        done = self.run_command([*REPLAY, *arguments], status, **more)
        return done.stderr if status else done.stdout
