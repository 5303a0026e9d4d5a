"""A virtual display and a session bus, both private to the one who starts them."""
import os
import shutil
import signal
import struct
import subprocess
import zlib
from pathlib import Path

from .closing import ask_to_close
from .waiting import wait_until

NEEDED_TOOLS = ("Xvfb", "xdotool", "dbus-daemon")


def missing_tools():
    return [tool for tool in NEEDED_TOOLS if shutil.which(tool) is None]


def stop(process, seconds=3.0):
    """Ends a process that was started in a session of its own, and what it left in its group."""
    for sign in (signal.SIGTERM, signal.SIGKILL):
        if process.poll() is not None:
            break
        process.send_signal(sign)
        try:
            process.wait(seconds)
        except subprocess.TimeoutExpired:
            continue
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except (ProcessLookupError, PermissionError):
        pass


class Display:
    """An Xvfb server on a free display number; its screen can be saved as a PNG."""

    def __init__(self, folder, size=(1024, 768)):
        self._folder = Path(folder) / "framebuffer"
        self._folder.mkdir(parents=True, exist_ok=True)
        reading, writing = os.pipe()
        self._process = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", f"{size[0]}x{size[1]}x24", "-fbdir", str(self._folder),
             "-nolisten", "tcp", "-noreset", "-dpi", "96"],
            pass_fds=[writing], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            start_new_session=True)
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        if not number:
            stop(self._process)
            raise RuntimeError("Xvfb did not start")
        self.name = f":{number}"
        self.xdotool("mousemove", *size)  # out of the pictures, and over nothing that would react to it

    def close(self):
        stop(self._process)

    def xdotool(self, *arguments, check=True):
        done = subprocess.run(["xdotool", *map(str, arguments)], env={**os.environ, "DISPLAY": self.name}, text=True,
                              capture_output=True, check=False, timeout=20)
        if check and done.returncode != 0:
            raise RuntimeError(f"xdotool {' '.join(map(str, arguments))}: {done.stderr.strip()}")
        return done.stdout

    def windows(self, pid):
        """The visible windows of a process that have a title, as a dictionary of number to title."""
        found = self.xdotool("search", "--onlyvisible", "--pid", pid, "--name", ".+", check=False).split()
        titles = {int(window): self.xdotool("getwindowname", window, check=False).rstrip("\n") for window in found}
        return {window: title for window, title in titles.items() if title}

    def focus(self, window):
        self.xdotool("windowfocus", window)
        wait_until("the focus", lambda: self.xdotool("getwindowfocus", check=False).strip() == str(window))

    def press(self, *keys):
        self.xdotool("key", "--clearmodifiers", *keys)

    def type(self, text):
        """Types it, key by key; it is in no argument."""
        subprocess.run(["xdotool", "type", "--delay", "20", "--file", "-"], input=text, text=True, check=True,
                       env={**os.environ, "DISPLAY": self.name}, timeout=20)

    def close_window(self, window):
        ask_to_close(self.name, window)

    def pixels(self):
        """Width, height and the rows of RGB bytes of the screen."""
        data = (self._folder / "Xvfb_screen0").read_bytes()
        head = struct.unpack(">25I", data[:100])
        width, height, bytes_per_line, colours = head[4], head[5], head[12], head[19]
        start = head[0] + colours * 12
        rows = []
        for y in range(height):
            line = data[start + y * bytes_per_line:start + y * bytes_per_line + width * 4]
            row = bytearray(width * 3)
            row[0::3], row[1::3], row[2::3] = line[2::4], line[1::4], line[0::4]
            rows.append(bytes(row))
        return width, height, rows

    def screenshot(self, path, area=None):
        """Saves the screen, or the area (x, y, width, height) of it, as a PNG."""
        width, height, rows = self.pixels()
        if area:
            left, top = max(0, area[0]), max(0, area[1])
            rows = [row[left * 3:(left + area[2]) * 3] for row in rows[top:top + area[3]]]
            width, height = len(rows[0]) // 3, len(rows)
        raw = b"".join(b"\0" + row for row in rows)

        def chunk(kind, body):
            return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

        Path(path).write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
                               + chunk(b"IDAT", zlib.compress(raw, 6)) + chunk(b"IEND", b""))

    def geometry(self, window):
        """x, y, width and height of a window on the screen."""
        values = dict(line.split("=") for line in self.xdotool("getwindowgeometry", "--shell", window).split())
        return tuple(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT"))

    def wait_until_still(self, seconds=10.0):
        """Waits until the screen has stayed the same for a quarter of a second."""
        seen = {"pixels": None, "times": 0}

        def look():
            now = self.pixels()
            seen["times"] = seen["times"] + 1 if now == seen["pixels"] else 0
            seen["pixels"] = now
            return seen["times"] >= 8

        wait_until("a still screen", look, seconds)


class SessionBus:
    """A message bus, so that the accessibility services of one test meet nobody else's."""

    def __init__(self, environment):
        self._process = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"],
                                         env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                         stderr=subprocess.DEVNULL, start_new_session=True)
        self.address = self._process.stdout.readline().decode().strip()
        if not self.address:
            stop(self._process)
            raise RuntimeError("dbus-daemon did not start")

    def close(self):
        stop(self._process)
        self._process.stdout.close()
