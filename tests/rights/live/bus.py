#!/usr/bin/env python3
"""A system bus and a polkit of their own, for one command that is run with them.

As a program, within namespaces of its own: bus.py OPTIONS -- COMMAND. As a module: wrapper() gives the beginning of a
command line that runs the rest of it so, and missing() says why this machine cannot do that.
"""
import argparse
import os
import pathlib
import pwd
import shutil
import subprocess
import sys
import time

UNSHARE = ("unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc")
DAEMON = pathlib.Path("/usr/lib/polkit-1/polkitd")
CHECKER = pathlib.Path("/usr/lib/polkit-1/polkit-agent-helper-1")
RULES = pathlib.Path("/etc/polkit-1/rules.d")
POLKIT = ("org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority")


def missing():
    """What this machine lacks for a private polkit; None when it has everything."""
    for program in ("unshare", "dbus-daemon", "dbus-send", "pkexec", "runuser"):
        if shutil.which(program, path="/usr/sbin:/usr/bin:/sbin:/bin") is None:
            return f"{program} is not installed"
    if not DAEMON.exists() or not CHECKER.exists():
        return "polkitd is not installed"
    tried = subprocess.run([*UNSHARE, "mount", "-t", "tmpfs", "tmpfs", "/run"], capture_output=True, text=True,
                           check=False)
    return None if tried.returncode == 0 else f"namespaces are not permitted: {tried.stderr.strip()}"


def wrapper(*options):
    return (*UNSHARE, sys.executable, os.path.abspath(__file__), *options, "--")


def mount(*arguments):
    subprocess.run(["mount", *map(str, arguments)], check=True)


def hide(path):
    mount("--bind", "/dev/null", os.path.realpath(path))


def put_in_place_of(path, text):
    replacement = pathlib.Path("/run/dbus") / path.name
    replacement.write_text(text)
    mount("--bind", replacement, path)


def start(options):
    mount("-t", "tmpfs", "-o", "mode=755", "tmpfs", "/run/dbus")
    for path in options.hide:
        hide(path)
    for path, text in options.replace:
        put_in_place_of(pathlib.Path(path), text)
    if options.rule:
        mount("-t", "tmpfs", "-o", f"mode=700,uid={pwd.getpwnam('polkitd').pw_uid}", "tmpfs", RULES)
        (RULES / "00-test.rules").write_text(options.rule)
    if options.no_bus:
        return
    subprocess.run(["dbus-daemon", "--system", "--fork", "--nopidfile", "--nosyslog"], check=True)
    if options.warm:
        subprocess.run(["dbus-send", "--system", "--print-reply", f"--dest={POLKIT[0]}", POLKIT[1],
                        "org.freedesktop.DBus.Peer.Ping"], check=True, stdout=subprocess.DEVNULL)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--no-bus", action="store_true")
    parser.add_argument("--warm", action="store_true", help="polkit's daemon runs before the command does")
    parser.add_argument("--rule", help="text of a rule that comes before the machine's own")
    parser.add_argument("--hide", action="append", default=[], metavar="PATH", help="nobody can use this file")
    parser.add_argument("--replace", action="append", default=[], nargs=2, metavar=("PATH", "TEXT"))
    parser.add_argument("--linger", type=float, default=0, help="seconds that all of it outlives the command")
    separator = sys.argv.index("--")
    options = parser.parse_args(sys.argv[1:separator])
    start(options)
    # Not in place of this program: pkexec serves no child of the first process.
    code = subprocess.run(sys.argv[separator + 1:], check=False).returncode
    time.sleep(options.linger)
    return code


if __name__ == "__main__":
    sys.exit(main())
