"""One launched installer, seen and handled as its user would."""
import os
import subprocess
from pathlib import Path

from .waiting import TookTooLong, wait_until


class Home:
    """A home folder of its own for one user of the installer."""

    def __init__(self, path, logging=True):
        self.path = Path(path)
        self.path.mkdir(parents=True, exist_ok=True)
        self.log_folder = self.path / "Library" / "Logs" / "Corvane"
        self.log_file = self.log_folder / "Wickfield.1.log"
        if logging:
            self.log_folder.mkdir(parents=True, exist_ok=True)
            self.log_file.touch()

    def log(self):
        return self.log_file.read_text(encoding="utf-8") if self.log_file.exists() else ""

    def trashed(self):
        """The names in the Trash."""
        folder = self.path / ".local" / "share" / "Trash" / "files"
        return sorted(os.listdir(folder)) if folder.is_dir() else []


class Installer:
    def __init__(self, bundle, home, session, environment=None):
        self.session = session
        self.home = home
        self._output = open(session.folder / "installer-output.txt", "wb")  # pylint: disable=consider-using-with
        self.process = subprocess.Popen(
            [bundle.executable], cwd=session.folder, stdin=subprocess.DEVNULL, stdout=self._output,
            stderr=subprocess.STDOUT, env={**session.environment(home), **(environment or {})})

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self._output.close()

    def output(self):
        return (self.session.folder / "installer-output.txt").read_text(errors="replace")

    # What is to be seen

    def nodes(self):
        return self.session.reader.nodes(self.process.pid)

    def reads(self, text):
        """Whether a label, a heading or a text with exactly this content is showing."""
        return any(text in (node.name, node.text.strip()) for node in self.nodes())

    def button(self, name):
        return next((node for node in self.nodes() if node.role in ("push button", "button") and node.name == name), None)

    def focused(self):
        return next((node for node in self.nodes() if node.focused), None)

    def asks_for_password(self):
        focused = self.focused()
        return focused is not None and focused.role == "password text" and focused.enabled

    def titles(self):
        return sorted(self.session.display.windows(self.process.pid).values())

    # Waiting

    def wait_for_window(self, title, seconds=20.0):
        """Waits for the window of that title, gives it the keyboard focus, and returns its number."""
        def look():
            self._must_run()
            return [number for number, name in self.session.display.windows(self.process.pid).items() if name == title]
        window = wait_until(f'a window "{title}"', look, seconds)[0]
        self.session.display.focus(window)
        return window

    def wait_for_text(self, text, seconds=20.0):
        def look():
            self._must_run()
            return self.reads(text)
        try:
            wait_until(f'the text "{text}"', look, seconds)
        except TookTooLong as late:
            shown = sorted({shown for node in self.nodes() for shown in (node.name, node.text) if shown})
            raise TookTooLong(f"{late}; what is showing: {shown}") from None

    def wait_for_button(self, name, seconds=20.0):
        wait_until(f'a button "{name}"', lambda: self.button(name), seconds)

    def wait_for_end(self, seconds=15.0):
        """The exit code of the process once it has ended."""
        wait_until("the end of the installer", lambda: self.process.poll() is not None, seconds)
        return self.process.returncode

    def _must_run(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the installer ended with {self.process.returncode}: {self.output()}")

    # Doing

    def press(self, *keys):
        self.session.display.press(*keys)

    def press_button(self, name):
        """Goes to the button with Tab and presses it with the space bar."""
        self.wait_for_button(name)
        for _ in range(25):
            focused = self.focused()
            if focused is not None and focused.name == name:
                self.press("space")
                return
            before = focused
            self.press("Tab")
            try:
                wait_until("the focus to move on", lambda: self.focused() != before, 2.0)
            except TookTooLong:
                pass  # the only control that takes the focus keeps it
        raise AssertionError(f'the button "{name}" cannot be reached with Tab')

    def screenshot(self, path, window=None):
        display = self.session.display
        display.wait_until_still()
        display.screenshot(path, display.geometry(window) if window else None)
