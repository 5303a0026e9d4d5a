"""A program for the command line in tests: a folder and a home of its own for each, and the program run in it through
pipes or on a terminal."""
import fcntl
import os
import pathlib
import pty
import re
import select
import shutil
import signal
import struct
import subprocess
import tempfile
import termios
import time
import unittest

LONGEST = 60  # seconds that a run may take


class CommandCase(unittest.TestCase):
    program = ""  # the path; a class for one program sets it

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix=self.program_name() + "-test."))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.home = self.folder / "home"
        self.work = self.folder / "desk"
        self.home.mkdir()
        self.work.mkdir()
        self.environment = {"HOME": str(self.home), "PATH": os.environ["PATH"], "LANG": "C.UTF-8", "TZ": "UTC",
                            "TERM": "xterm-256color"}

    def program_name(self):
        return os.path.basename(self.program)

    def file(self, name, contents=b"contents\n", mode=None):
        path = self.work / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(contents)
        if mode is not None:
            path.chmod(mode)
        return path

    def run_program(self, *words, **options):
        """Through pipes; the result has stdout and stderr as bytes."""
        options.setdefault("stdin", subprocess.DEVNULL)
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        options.setdefault("cwd", self.work)
        options.setdefault("env", self.environment)
        return subprocess.run([self.program, *words], timeout=LONGEST, check=False, **options)

    def output(self, *words, code=0, **options):
        """What a run prints that complains of nothing and ends with the code, as text."""
        run = self.run_program(*words, **options)
        self.assertEqual((run.returncode, run.stderr), (code, b""))
        return run.stdout.decode()

    def assert_fails(self, run, code, *words):
        """With one line on standard error that holds the words, and nothing printed."""
        self.assertEqual(run.returncode, code, run.stderr)
        self.assertEqual(run.stdout, b"")
        text = run.stderr.decode()
        self.assertRegex(text, rf"\A{self.program_name()}: [^\n]*\n\Z")
        for word in words:
            self.assertIn(word, text)

    def run_on_terminal(self, *words, columns=100, environment=None, typed=b"", typed_after=b""):
        """All three streams on a terminal; the exit code and what appeared there. What is typed, is typed once that
        has appeared."""
        child, terminal = pty.fork()
        if child == 0:
            fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", 25, columns, 0, 0))
            os.chdir(self.work)
            os.execve(self.program, [self.program, *words], {**self.environment, **(environment or {})})
        shown = b""
        deadline = time.monotonic() + LONGEST
        while time.monotonic() < deadline:
            if not select.select([terminal], [], [], 0.2)[0]:
                continue
            try:
                piece = os.read(terminal, 65536)
            except OSError:  # how Linux says that the other side has closed it
                break
            if not piece:
                break
            shown += piece
            if typed and typed_after in shown:
                os.write(terminal, typed)
                typed = b""
        else:
            os.kill(child, signal.SIGKILL)
        os.close(terminal)
        return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), shown.decode(errors="surrogateescape")


def without_colour(text):
    return re.sub(r"\x1b\[[0-9;]*m", "", text)


def is_root():
    return os.geteuid() == 0
