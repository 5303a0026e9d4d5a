#!/usr/bin/python3
"""How soon the installer's window is painted, against a minimal Qt window, and how much memory it takes.

usage: window_bench.py INSTALLER FLOOR [ROUNDS]

Both programs run in turns on one Xvfb. A window counts as painted once the pixel in the middle of the screen, black
before, has a colour. Prints the medians, their ratio and the installer's peak resident memory.
"""

import ctypes
import os
import pathlib
import shutil
import statistics
import struct
import subprocess
import sys
import tempfile
import time
import zlib

WIDTH, HEIGHT = 1024, 768
SETTLE = 0.3  # seconds that a painted program is left alone before its memory is read
GIVE_UP = 20

SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>KZPluginName</key><string>Larkspur Reverb</string>
<key>KZPluginVersion</key><string>2.4.1</string>
<key>KZPluginAuthor</key><string>Orrin Audio</string>
<key>KZBgImagePath</key><string>Background.png</string>
</dict></plist>
"""


class Pixel:
    """The colour in the middle of the screen, asked over libxcb."""

    def __init__(self, display):
        self.xcb = ctypes.CDLL("libxcb.so.1")
        self.libc = ctypes.CDLL(None)
        for name in ("xcb_connect", "xcb_get_setup", "xcb_get_image_reply", "xcb_get_image_data"):
            getattr(self.xcb, name).restype = ctypes.c_void_p
        self.xcb.xcb_setup_roots_iterator.restype = type(
            "Iterator", (ctypes.Structure,),
            {"_fields_": [("data", ctypes.POINTER(ctypes.c_uint32)), ("rem", ctypes.c_int), ("index", ctypes.c_int)]})
        self.connection = ctypes.c_void_p(self.xcb.xcb_connect(display.encode(), None))
        setup = ctypes.c_void_p(self.xcb.xcb_get_setup(self.connection))
        self.root = self.xcb.xcb_setup_roots_iterator(setup).data[0]

    def read(self):
        cookie = self.xcb.xcb_get_image(self.connection, ctypes.c_uint8(2), ctypes.c_uint32(self.root),
                                        ctypes.c_int16(WIDTH // 2), ctypes.c_int16(HEIGHT // 2), ctypes.c_uint16(1),
                                        ctypes.c_uint16(1), ctypes.c_uint32(0xFFFFFFFF))
        reply = ctypes.c_void_p(self.xcb.xcb_get_image_reply(self.connection, ctypes.c_uint(cookie), None))
        if not reply.value:
            raise RuntimeError("the display is gone")
        value = ctypes.string_at(ctypes.c_void_p(self.xcb.xcb_get_image_data(reply)), 3)
        self.libc.free(reply)
        return value

    def wait(self, painted):
        deadline = time.monotonic() + GIVE_UP
        while (self.read() != b"\0\0\0") != painted:
            if time.monotonic() > deadline:
                raise RuntimeError("no window was painted" if painted else "the window stays")
            time.sleep(0.0002)


def make_image(path):
    """A picture of the size that a plug-in maker would ship: 960 x 540."""
    rows = b"".join(b"\0" + bytes((x * 255 // 960, y * 255 // 540, 160)[c] for x in range(960) for c in range(3))
                    for y in range(540))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 960, 540, 8, 2, 0, 0, 0)) +
                     chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def make_bundle(folder, executable):
    contents = pathlib.Path(folder) / "Larkspur Installer.app" / "Contents"
    resources = contents / "Resources"
    (resources / "PluginStructure").mkdir(parents=True)
    (resources / "InstallerSettings.plist").write_text(SETTINGS)
    make_image(resources / "Background.png")
    (contents / "Linux").mkdir()
    return shutil.copy2(executable, contents / "Linux" / "Wickfield")


def peak_memory(pid):
    for line in pathlib.Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmHWM:"):
            return int(line.split()[1]) / 1024
    raise RuntimeError("no memory figure")


def measure(program, pixel, environment):
    pixel.wait(painted=False)
    began = time.perf_counter()
    process = subprocess.Popen([program], env=environment, stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        pixel.wait(painted=True)
        took = time.perf_counter() - began
        time.sleep(SETTLE)
        memory = peak_memory(process.pid)
    finally:
        process.terminate()
        process.wait(10)
    return took * 1000, memory


def start_display():
    read, write = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", f"{WIDTH}x{HEIGHT}x24", "-nolisten",
                               "tcp", "-noreset"], pass_fds=[write], stderr=subprocess.DEVNULL)
    os.close(write)
    with os.fdopen(read) as pipe:
        return server, f":{pipe.readline().strip()}"


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    rounds = int(sys.argv[3]) if len(sys.argv) == 4 else 15
    server, display = start_display()
    try:
        with tempfile.TemporaryDirectory() as folder:
            environment = dict(os.environ, DISPLAY=display, HOME=folder, QT_QPA_PLATFORM="xcb")
            programs = {"minimal": sys.argv[2], "installer": make_bundle(folder, sys.argv[1])}
            pixel = Pixel(display)
            for program in programs.values():
                measure(program, pixel, environment)  # warms the caches
            results = {name: [] for name in programs}
            for _ in range(rounds):
                for name, program in programs.items():
                    results[name].append(measure(program, pixel, environment))
    finally:
        server.terminate()
        server.wait(10)
    times = {name: statistics.median(took for took, _ in runs) for name, runs in results.items()}
    peaks = {name: max(memory for _, memory in runs) for name, runs in results.items()}
    for name in results:
        print(f"{name:10} painted after {times[name]:6.1f} ms (median of {rounds}), peak {peaks[name]:5.1f} MB")
    print(f"window painted: {times['installer'] / times['minimal']:.2f} x minimal (bound 1.50); "
          f"peak memory {peaks['installer']:.1f} MB (bound 40)")


if __name__ == "__main__":
    main()
