#!/usr/bin/env python3
"""Checks who includes whom: every #include and #import of a room must be one that the room may have.

Prints one line for each that is not, and ends with status 1 when there is any."""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCES = {".h", ".cpp", ".mm"}

# Room: what else of this project it may include. The longest matching folder counts.
ROOMS = {
    "platform/ports": ["platform/ports"],
    "platform/posix": ["platform/posix", "platform/ports"],
    "platform/linux": ["platform/linux", "platform/posix", "platform/ports"],
    "platform/linux/services": ["platform/linux/services", "platform/posix", "platform/ports"],
    "platform/linux/rights": ["platform/linux/rights", "platform/posix", "platform/ports"],
    "platform/linux/rights/helper": [
        "platform/linux/rights/helper", "platform/linux/rights/wire", "platform/posix", "platform/ports"],
    "platform/linux/rights/wire": ["platform/linux/rights/wire", "platform/posix", "platform/ports"],
    "platform/macos": ["platform/macos", "platform/posix", "platform/ports"],
    "lib/base": ["lib/base", "platform/ports"],
    "lib": ["lib", "platform/ports"],
    "app": ["app", "lib", "platform/ports"],
    "tools": ["tools", "lib", "platform/ports", "platform/posix", "platform/linux/services"],
    "tools/wickfield-bundle": [
        "tools", "app", "lib", "platform/ports", "platform/posix", "platform/linux/services",
        "platform/linux/tools/archive"],
    "tools/wickfield-media": ["tools", "lib", "platform/ports", "platform/posix", "platform/linux"],
}
STANDARD_ONLY = {"platform/ports", "lib", "lib/base", "app"}
NO_TOOLKIT = STANDARD_ONLY | {"platform/posix", "platform/linux/services"} | {
    room for room in ROOMS if room.startswith("platform/linux/rights")}

STANDARD_HEADER = re.compile(r"^[a-z_]+$")  # <vector>, <cstring>; no folder, no ".h"
HOST_CONDITION = re.compile(r"^\s*#\s*(?:el)?if.*\b(Q_OS_\w+|__APPLE__|__linux__|__unix__|_WIN32|TARGET_OS_\w+)", re.M)
INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*([<"])([^>"]+)[>"]', re.M)


def room_of(path):
    inside = [room for room in ROOMS if path.startswith(room + "/")]
    return max(inside, key=len) if inside else None


def line_of(text, position):
    return text.count("\n", 0, position) + 1


def complaints(path, room, text):
    for found in INCLUDE.finditer(text):
        kind, target = found.groups()
        where = f"{path}:{line_of(text, found.start())}"
        if kind == '"':
            if target.startswith("ui_") or target.endswith(".moc"):
                continue
            if not any(target.startswith(allowed + "/") for allowed in ROOMS[room]):
                yield f"{where}: {room} may not include {target}"
        elif room in STANDARD_ONLY and not STANDARD_HEADER.match(target):
            yield f"{where}: {room} is portable and may not include <{target}>"
        elif room in NO_TOOLKIT and re.match(r"Q[A-Za-z]|Qt", target):
            yield f"{where}: {room} may not include the toolkit's <{target}>"
    for found in HOST_CONDITION.finditer(text):
        if room in STANDARD_ONLY:
            yield f"{path}:{line_of(text, found.start())}: {room} asks for the host: {found.group(1)}"


def main():
    found = []
    files = 0
    for source in sorted(ROOT.rglob("*")):
        path = source.relative_to(ROOT).as_posix()
        room = room_of(path)
        if room is None or source.suffix not in SOURCES:
            continue
        files += 1
        found += complaints(path, room, source.read_text(encoding="utf-8"))
    for line in found:
        print(line)
    print(f"{files} files read, {len(found)} includes that a room may not have", file=sys.stderr)
    return 1 if found or files == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
