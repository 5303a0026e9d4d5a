"""A folder and a home of its own for each test, and wickfield-bundle run in it through pipes or on a terminal."""
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

WICKFIELD_BUNDLE = os.environ["WICKFIELD_BUNDLE"]
LONGEST = 60  # seconds that a run may take
NOBODY = 65534
RESOURCES = "Contents/Resources"
TREE = "Contents/Resources/PluginStructure"


class BundleCase(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="wickfield-bundle-test."))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.home = self.folder / "home"
        self.work = self.folder / "desk"
        self.home.mkdir()
        self.work.mkdir()
        self.environment = {"HOME": str(self.home), "PATH": os.environ["PATH"], "LANG": "C.UTF-8", "TZ": "UTC",
                            "TERM": "xterm-256color"}

    # Making things

    def file(self, name, contents=b"contents\n", mode=None):
        path = self.work / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(contents)
        if mode is not None:
            path.chmod(mode)
        return path

    def template(self, name="Template.app"):
        """What an installer is made of, with a program that does nothing."""
        self.file(f"{name}/Contents/Linux/Wickfield", b"#!/bin/sh\n", 0o755)
        return self.work / name

    def bundle(self, name="Small Installer.app"):
        """A complete installer with an empty tree, made by hand."""
        bundle = self.template(name)
        (bundle / TREE).mkdir(parents=True)
        self.file(f"{name}/{RESOURCES}/InstallerSettings.plist",
                  b'<plist version="1.0"><dict><key>KZPluginName</key><string>Small</string>'
                  b"<key>KZPluginVersion</key><string>1.0</string>"
                  b"<key>KZPluginAuthor</key><string>Nobody</string></dict></plist>\n")
        return bundle

    # Running it

    def run_tool(self, *words, **options):
        """Through pipes; the result has stdout and stderr as bytes."""
        options.setdefault("stdin", subprocess.DEVNULL)
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        options.setdefault("cwd", self.work)
        options.setdefault("env", self.environment)
        return subprocess.run([WICKFIELD_BUNDLE, *words], timeout=LONGEST, check=False, **options)

    def output(self, *words, **options):
        """What a run that succeeds prints, as text."""
        run = self.run_tool(*words, **options)
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        return run.stdout.decode()

    def assert_fails(self, run, code, *words):
        """With one line on standard error that holds the words, and nothing printed."""
        self.assertEqual(run.returncode, code, run.stderr)
        self.assertEqual(run.stdout, b"")
        text = run.stderr.decode()
        self.assertRegex(text, r"\Awickfield-bundle: [^\n]*\n\Z")
        for word in words:
            self.assertIn(word, text)

    def run_on_terminal(self, *words, columns=100, environment=None):
        """All three streams on a terminal; the exit code and what appeared there."""
        child, terminal = pty.fork()
        if child == 0:
            fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", 25, columns, 0, 0))
            os.chdir(self.work)
            os.execve(WICKFIELD_BUNDLE, [WICKFIELD_BUNDLE, *words], {**self.environment, **(environment or {})})
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
        else:
            os.kill(child, signal.SIGKILL)
        os.close(terminal)
        return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), shown.decode(errors="surrogateescape")


def snapshot(folder):
    """Everything in a folder by path: kind, mode, owner, size, times but the last access, content or target of a
    link."""
    found = {}
    for path in [pathlib.Path(folder), *sorted(pathlib.Path(folder).rglob("*"))]:
        status = path.lstat()
        content = os.readlink(path) if path.is_symlink() else path.read_bytes() if path.is_file() else None
        found[str(path)] = (status.st_mode, status.st_uid, status.st_gid, status.st_size, status.st_mtime_ns,
                            status.st_ctime_ns, content)
    return found


def without_colour(text):
    return re.sub(r"\x1b\[[0-9;]*m", "", text)


def is_root():
    return os.geteuid() == 0
