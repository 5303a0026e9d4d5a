"""Accounts that are made for one test, and the driver that asks for rights on behalf of one of them."""
import os
import pathlib
import re
import secrets
import select
import shutil
import signal
import subprocess
import tempfile
import time
import unittest


class Account:
    """An account of its own with a password; `administrator` puts it into the group sudo."""

    def __init__(self, password, administrator=False, shell="/bin/bash"):
        self.name = "wf" + secrets.token_hex(4)
        self.password = password
        run("useradd", "--create-home", "--shell", shell, self.name)
        subprocess.run(["chpasswd"], input=f"{self.name}:{password}\n", text=True, check=True)
        if administrator:
            run("usermod", "-aG", "sudo", self.name)
        self.home = pathlib.Path("/home") / self.name
        self.uid = int(subprocess.check_output(["id", "-u", self.name]))

    def remove(self):
        # What was orphaned may still be waiting to be reaped, and somebody else may hold the lock of the accounts.
        wait_until(lambda: subprocess.run(["userdel", "--force", "--remove", self.name], capture_output=True,
                                          check=False).returncode in (0, 6, 12))
        shutil.rmtree(f"/run/sudo/ts/{self.name}", ignore_errors=True)
        for path in (f"/run/sudo/ts/{self.name}", f"/var/lib/sudo/lectured/{self.name}"):
            if os.path.isfile(path):
                os.unlink(path)


def run(*command):
    subprocess.run(command, check=True, capture_output=True)


class Driver:
    """The driver as the account's own process. Every command gets one line as its answer."""

    def __init__(self, account, *arguments, wrapper=(), environment=()):
        self.folder = tempfile.mkdtemp(prefix="wickfield-rights-", dir="/var/tmp")
        os.chmod(self.folder, 0o755)
        self.program = shutil.copy(os.environ["RIGHTS_DRIVER"], self.folder)
        os.chmod(self.program, 0o755)
        command = [*wrapper, "runuser", "-u", account.name, "--", "env", "-i", f"HOME={account.home}",
                   f"USER={account.name}", f"LOGNAME={account.name}", "PATH=/usr/local/bin:/usr/bin:/bin",
                   "LANG=C.UTF-8", *environment, self.program, *arguments]
        self.unread = b""
        self.messages = tempfile.TemporaryFile(mode="w+")
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self.messages,
                                        text=True, cwd="/", start_new_session=True)

    def tell(self, *fields):
        """Sends a command without waiting for its answer."""
        self.process.stdin.write("\t".join(fields) + "\n")
        self.process.stdin.flush()

    def answer(self, timeout=30):
        """The next line that is an answer, and not something that the library printed."""
        deadline = time.monotonic() + timeout
        while True:
            while b"\n" not in self.unread:
                left = max(0.0, deadline - time.monotonic())
                if not select.select([self.process.stdout], [], [], left)[0]:
                    raise AssertionError(f"no answer within {timeout} seconds; standard error: {self.standard_error()}")
                more = os.read(self.process.stdout.fileno(), 65536)
                if not more:
                    raise AssertionError(f"the driver has ended; standard error: {self.standard_error()}")
                self.unread += more
            line, _, self.unread = self.unread.partition(b"\n")
            if line.startswith(b"> "):
                return line[2:].decode()

    def ask(self, *fields, timeout=30):
        self.tell(*fields)
        return self.answer(timeout)

    def start(self, timeout=30):
        """Whether the session was started, without the time that it took."""
        return self.ask("start", timeout=timeout).split("\t")[0]

    def questions(self):
        """What the prompt was asked so far: lists of problem, administrators, user, any or these, question, details."""
        text = self.ask("questions")
        return [question.split("\t") for question in text.split("|")] if text else []

    def standard_error(self):
        self.messages.seek(0)
        return self.messages.read()

    @property
    def pid(self):
        """The driver's own process number, below runuser and whatever it is wrapped in."""
        for process in processes():
            if process.executable == self.program:
                return process.pid
        return None

    def close(self):
        self.process.stdin.close()
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            os.killpg(self.process.pid, signal.SIGKILL)  # runuser and the driver below it
            self.process.wait()
        self.process.stdout.close()
        self.messages.close()
        shutil.rmtree(self.folder)


class Process:
    def __init__(self, pid):
        self.pid = pid
        self.folder = pathlib.Path("/proc") / str(pid)
        self.executable = os.readlink(self.folder / "exe")
        self.user = int(re.search(r"^Uid:\t(\d+)", (self.folder / "status").read_text(), re.M)[1])
        self.parent = int((self.folder / "stat").read_text().rpartition(")")[2].split()[1])

    def arguments(self):
        """The command line; one empty text for a process that is gone."""
        try:
            return (self.folder / "cmdline").read_bytes().decode().rstrip("\0").split("\0")
        except OSError:
            return [""]

    def is_helper(self):
        return self.executable.startswith("/memfd:wickfield-rights") and self.user == 0


def processes():
    found = []
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            try:
                found.append(Process(int(entry)))
            except OSError:
                pass  # gone meanwhile, or a kernel thread
    return found


def helpers(driver):
    """The helper processes that serve the driver: those that hold its image open or descend from it."""
    everything = {process.pid: process for process in processes()}
    mine = []
    for process in everything.values():
        above = process
        while process.is_helper() and above is not None:
            if above.pid == driver:
                mine.append(process.pid)
                break
            above = everything.get(above.parent)
    return mine


def wait_until(condition, seconds=5):
    """Whether the condition came true within that time."""
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.02)
    return True


def exists(pid):
    """Whether the process is there and not only waiting to be reaped."""
    try:
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0] != "Z"
    except OSError:
        return False


class RightsCase(unittest.TestCase):
    """Makes accounts and drivers that are gone after the test; needs the superuser to make them."""

    password = "correct horse"

    def setUp(self):
        if os.geteuid() != 0:
            self.skipTest("making accounts needs the superuser")

    def account(self, password=None, **options):
        made = Account(password or self.password, **options)
        self.addCleanup(made.remove)
        return made

    def driver(self, account, *arguments, **options):
        made = Driver(account, *arguments, **options)
        self.addCleanup(made.close)
        return made

    def private_folder(self):
        """A folder that only root may write to, with safe folders above it."""
        folder = pathlib.Path("/opt") / f"wickfield-{secrets.token_hex(4)}"
        folder.mkdir(mode=0o755)
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        return folder
