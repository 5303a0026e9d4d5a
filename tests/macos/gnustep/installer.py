"""The installer on GNUstep: its bundle, its surroundings, and the probe inside it."""
import json
import os
import plistlib
import re
import select
import shutil
import signal
import subprocess
from pathlib import Path

from driver.display import stop
from driver.waiting import wait_until

CONFIGURATION = Path("/etc/GNUstep/GNUstep.conf")
SUPPRESSIONS = Path(__file__).resolve().parent / "leaks.txt"


def make_bundle(folder, program, settings, resources=(), tree=()):
    """A bundle of the program; settings None leaves them out. Resources and tree: pairs of a path and its content."""
    contents = Path(folder) / "Probe Installer.app" / "Contents"
    inside = contents / "Resources"
    (inside / "PluginStructure").mkdir(parents=True)
    (contents / "Linux").mkdir()
    shutil.copy2(program, contents / "Linux" / "Wickfield")
    if settings is not None:
        (inside / "InstallerSettings.plist").write_bytes(plistlib.dumps(settings))
    for path, content in list(resources) + [(f"PluginStructure/{path}", content) for path, content in tree]:
        place = inside / path
        place.parent.mkdir(parents=True, exist_ok=True)
        place.write_bytes(content)
    # What GNUstep reads of a bundle, so that it finds the class of the application.
    (inside / "Info-gnustep.plist").write_text('{ NSPrincipalClass = "NSApplication"; }\n')
    return contents / "Linux" / "Wickfield"


def make_configuration(home):
    """GNUstep's own settings, with everything of the user's below that folder."""
    lines = []
    for line in CONFIGURATION.read_text().splitlines():
        if re.match(r"GNUSTEP_(?!USER)\w+=", line):
            lines.append(line)
    lines += [f"GNUSTEP_USER_DIR={home}/GNUstep", f"GNUSTEP_USER_DIR_LIBRARY={home}/GNUstep/Library",
              f"GNUSTEP_USER_DEFAULTS_DIR={home}/GNUstep/Defaults"]
    path = home / "GNUstep.conf"
    path.write_text("\n".join(lines) + "\n")
    return path


class Installer:
    """One run of it. Whatever was started on the way is gone after close()."""

    def __init__(self, program, display, home, more, arguments):
        self.home = home
        home.mkdir()
        self.errors = home / "errors"
        environment = {
            "PATH": "/usr/bin:/bin", "LANG": "C.UTF-8", "DISPLAY": display.name, "HOME": str(home),
            "TEMP": str(home),  # where GNUstep's programs find each other: those of another test are not to be found
            "GNUSTEP_CONFIG_FILE": str(make_configuration(home)),
            "ASAN_OPTIONS": "detect_leaks=1:exitcode=24:abort_on_error=0",
            "LSAN_OPTIONS": f"suppressions={SUPPRESSIONS}:print_suppressions=0", **more}
        with open(self.errors, "wb") as errors:
            self._process = subprocess.Popen([program, "-GSX11HandlesWindowDecorations", "NO", *arguments], env=environment,
                                             cwd=home, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=errors,
                                             start_new_session=True)

    @property
    def pid(self):
        return self._process.pid

    def tell(self, command):
        """For what may not live to answer."""
        self._process.stdin.write(command.encode() + b"\n")
        self._process.stdin.flush()

    def ask(self, command, seconds=20):
        self.tell(command)
        if not select.select([self._process.stdout], [], [], seconds)[0]:
            raise AssertionError(f"{command}: no answer within {seconds} s; {self.told()}")
        return json.loads(self._process.stdout.readline())

    def answers(self, seconds=20):
        """Whether the event loop runs: nothing is answered before. GNUstep's start hangs now and then, say once in
        a thousand times, where many programs are started at once."""
        try:
            self._process.stdin.write(b"state\n")
            self._process.stdin.flush()
        except BrokenPipeError:
            return False
        return bool(select.select([self._process.stdout], [], [], seconds)[0] and self._process.stdout.readline())

    def state(self):
        return self.ask("state")

    def wait(self, what, look):
        """The first state of which look() says yes."""
        def seen():
            state = self.state()
            return state if look(state) else None
        return wait_until(what, seen)

    def press(self, title):
        wait_until(f"the button {title}", lambda: self.ask(f"press {title}")["done"])

    def is_running(self):
        return self._process.poll() is None

    def wait_for_end(self, seconds=20):
        try:
            return self._process.wait(seconds)
        except subprocess.TimeoutExpired:
            return None

    def terminate(self):
        self._process.send_signal(signal.SIGTERM)
        return self.wait_for_end()

    def told(self):
        return self.errors.read_text(errors="replace")

    def printed(self):
        """What it said besides, once it has ended."""
        return self._process.stdout.read().decode(errors="replace")

    def defaults(self):
        """What the user defaults hold, as text."""
        path = self.home / "GNUstep" / "Defaults" / "Wickfield.plist"
        return path.read_text() if path.exists() else ""

    def close(self):
        stop(self._process)
        self._process.stdin.close()
        self._process.stdout.close()
        self._stop_servants()

    def _stop_servants(self):
        """GNUstep starts a server of its own; it is known by the home folder that it was given."""
        for process in Path("/proc").glob("[0-9]*"):
            try:
                if f"HOME={self.home}\0".encode() in (process / "environ").read_bytes():
                    os.kill(int(process.name), signal.SIGKILL)
            except OSError:
                continue
