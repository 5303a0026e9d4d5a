#!/usr/bin/python3
"""Looks at the installer as a screen reader does: over AT-SPI, from outside, in a real window.

usage: accessibility.py EXECUTABLE

Makes a bundle around the executable, starts it under Xvfb and a private session bus, and checks names, roles and states
of the window, the agreement's sheet and the outcome's alert. Exit code 77: this machine cannot run it.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
PATIENCE = 20  # seconds until something that must appear has appeared

SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>KZPluginName</key><string>Larkspur &amp; Sons Reverb</string>
<key>KZPluginVersion</key><string>2.4.1</string>
<key>KZPluginAuthor</key><string>Orrin Audio</string>
<key>KZEULAPath</key><string>Agreement.txt</string>
</dict></plist>
"""


def skip(reason):
    print(f"skipped: {reason}")
    sys.exit(SKIPPED)


def make_bundle(folder, executable):
    contents = pathlib.Path(folder) / "Larkspur Installer.app" / "Contents"
    resources = contents / "Resources"
    (resources / "PluginStructure").mkdir(parents=True)
    (resources / "InstallerSettings.plist").write_text(SETTINGS)
    (resources / "Agreement.txt").write_text("You may listen to it.\n" * 100)
    (contents / "Linux").mkdir()
    program = contents / "Linux" / "Wickfield"
    shutil.copy2(executable, program)
    return program


def walk(node):
    yield node
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child is not None:
            yield from walk(child)


class Screen:
    """The accessible tree of one running process."""

    def __init__(self, atspi, pid):
        self.atspi = atspi
        self.pid = pid

    def nodes(self):
        # Without a main loop nobody tells this side of the bus what has come since the last look.
        from gi.repository import GLib
        while GLib.MainContext.default().iteration(False):
            pass
        desktop = self.atspi.get_desktop(0)
        desktop.clear_cache()
        for index in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(index)
            try:
                if application is not None and application.get_process_id() == self.pid:
                    yield from walk(application)
            except self.glib_error():
                continue  # it went while we looked

    @staticmethod
    def glib_error():
        from gi.repository import GLib
        return GLib.Error

    def find(self, role, name):
        for node in self.nodes():
            if node.get_role_name() == role and node.get_name() == name and self.has(node, "SHOWING"):
                return node
        return None

    def has(self, node, state):
        return node.get_state_set().contains(getattr(self.atspi.StateType, state))

    def wait(self, role, name):
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            node = self.find(role, name)
            if node is not None:
                return node
            time.sleep(0.1)
        seen = sorted({f"{node.get_role_name()}: {node.get_name()!r}" for node in self.nodes()})
        raise AssertionError(f"no {role} {name!r}; there are:\n  " + "\n  ".join(seen))


def expect(condition, what):
    if not condition:
        raise AssertionError(what)
    print(f"ok: {what}")


def press(screen, name):
    expect(screen.atspi.Action.do_action(screen.wait("push button", name), 0), f"{name} can be pressed")


def check(screen, process):
    sheet = screen.wait("dialog", "Licence Agreement")
    expect(screen.has(sheet, "MODAL"), "the agreement's sheet is a modal dialog")
    text = screen.wait("label", "Licence agreement")
    expect(screen.atspi.Text.get_text(text, 0, 21) == "You may listen to it.", "the agreement's text can be read")
    expect(screen.has(text, "FOCUSED"), "the agreement has the focus, so that it can be scrolled")
    expect(screen.has(text, "READ_ONLY") or not screen.has(text, "EDITABLE"), "the agreement cannot be edited")
    install = screen.wait("push button", "Install")
    expect(not screen.has(install, "ENABLED"), "Install is disabled under the agreement")
    for name in ("Agree", "Disagree"):
        expect(screen.has(screen.wait("push button", name), "FOCUSABLE"), f"{name} can be reached by the keyboard")

    press(screen, "Agree")
    deadline = time.monotonic() + PATIENCE
    while not screen.has(install, "ENABLED") and time.monotonic() < deadline:
        time.sleep(0.1)
    expect(screen.has(install, "ENABLED"), "Install is enabled once the agreement is agreed to")
    expect(screen.find("dialog", "Licence Agreement") is None, "the agreement's sheet is gone")
    for text in ("Larkspur & Sons Reverb", "2.4.1", "by Orrin Audio",
                 "Installer created with Tallowmere by Corvane."):
        expect(screen.wait("label", text) is not None, f"{text!r} is a label")
    expect(screen.wait("push button", "Send to Gantry…") is not None, "the hand-off is a button")
    expect(screen.wait("frame", "Larkspur & Sons Reverb Installer") is not None, "the window has its title")
    expect(screen.wait("progress bar", "Installing") is not None, "the spinner is a progress bar")

    press(screen, "Install")
    alert = screen.wait("alert", "Installation complete")
    expect(screen.has(alert, "MODAL"), "the outcome is a modal alert")
    expect(screen.wait("label", "The plugin was successfully installed.") is not None, "the outcome's text is a label")
    ok = screen.wait("push button", "OK")
    expect(screen.has(ok, "FOCUSED"), "the alert's button has the focus")
    press(screen, "OK")
    deadline = time.monotonic() + PATIENCE
    while screen.find("alert", "Installation complete") is not None and time.monotonic() < deadline:
        time.sleep(0.1)
    expect(screen.find("alert", "Installation complete") is None, "the alert goes when it is dismissed")
    expect(not screen.has(install, "ENABLED"), "Install stays disabled after a run")
    expect(process.poll() is None, "the installer is still there")


def inside(executable):
    import gi
    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi

    with tempfile.TemporaryDirectory() as folder:
        home = pathlib.Path(folder) / "home"
        home.mkdir()
        environment = dict(os.environ, HOME=str(home), QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb",
                           WICKFIELD_MOTION="reduced")
        process = subprocess.Popen([make_bundle(folder, executable)], env=environment, stdin=subprocess.DEVNULL)
        try:
            check(Screen(Atspi, process.pid), process)
        finally:
            process.terminate()
            process.wait(10)


def start_display():
    read, write = os.pipe()
    # A server that starts anew when its last client goes refuses the next one meanwhile.
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "1024x768x24", "-nolisten", "tcp",
                               "-noreset"], pass_fds=[write], stderr=subprocess.DEVNULL)
    os.close(write)
    with os.fdopen(read) as pipe:
        number = pipe.readline().strip()
    if not number:
        skip("Xvfb does not start")
    return server, f":{number}"


def main():
    if len(sys.argv) == 3 and sys.argv[1] == "--inside":
        inside(sys.argv[2])
        return
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    for tool in ("Xvfb", "dbus-run-session"):
        if shutil.which(tool) is None:
            skip(f"{tool} is not installed")
    try:
        import gi
        gi.require_version("Atspi", "2.0")
    except (ImportError, ValueError) as error:
        skip(f"AT-SPI for Python is missing ({error})")
    if not os.path.exists("/usr/share/dbus-1/services/org.a11y.Bus.service"):
        skip("the accessibility bus is not installed")
    server, display = start_display()
    try:
        with tempfile.TemporaryDirectory() as runtime:
            environment = dict(os.environ, DISPLAY=display, XDG_RUNTIME_DIR=runtime)
            environment.pop("WAYLAND_DISPLAY", None)
            result = subprocess.run(["dbus-run-session", "--", sys.executable, __file__, "--inside", sys.argv[1]],
                                    env=environment)
    finally:
        server.terminate()
        server.wait(10)
    sys.exit(result.returncode)


if __name__ == "__main__":
    main()
