"""What every test of the window on GNUstep starts from."""
import os
import tempfile
import unittest
from pathlib import Path

from driver.display import Display, missing_tools
from driver.waiting import wait_until
from installer import CONFIGURATION, Installer, make_bundle

SAMPLE = Path(__file__).resolve().parents[3] / "resources" / "Sample"
SETTINGS = {"KZPluginName": "Larkspur Reverb", "KZPluginVersion": "2.4.1", "KZPluginAuthor": "Orrin Audio",
            "KZBgImagePath": "Background.png"}
AGREEMENT = {"KZEULAPath": "Agreement.rtf"}
STARTS = 3


def sample(name):
    return name, (SAMPLE / name).read_bytes()


class WindowCase(unittest.TestCase):
    screen = (1024, 768)

    def setUp(self):
        self.pictures = 0
        if missing_tools():
            self.skipTest("not on this machine: " + ", ".join(missing_tools()))
        if not CONFIGURATION.exists():
            self.skipTest("GNUstep is not on this machine")
        folder = tempfile.TemporaryDirectory(prefix="wickfield-gnustep.", ignore_cleanup_errors=True)
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.display = Display(self.folder, self.screen)
        self.addCleanup(self.display.close)

    def start(self, settings=None, resources=(), tree=(), environment=None, prepare=None,
              arguments=(), wait=True):
        program = make_bundle(self.folder, os.environ["WICKFIELD_GNUSTEP_PROGRAM"],
                              SETTINGS if settings is None else settings or None,
                              [sample("Background.png"), sample("Agreement.rtf"), *resources], tree)
        if prepare:
            prepare(program.parents[1] / "Resources")
        for attempt in range(STARTS):
            self.installer = Installer(program, self.display, self.folder / f"home{attempt}", environment or {}, arguments)
            self.addCleanup(self.installer.close)
            if not wait or attempt == STARTS - 1 or self.installer.answers():
                break
            print("GNUstep did not get its event loop going; once more")
            self.installer.close()
        if wait:
            return self.installer.wait("the window", lambda state: state["installer"]["visible"])["installer"]
        return None

    def keep_picture(self):
        """Saves the screen, numbered, where evidence is wanted and the installer is there to be seen."""
        evidence = os.environ.get("WICKFIELD_E2E_EVIDENCE")
        if evidence and self.installer.is_running():
            self.display.wait_until_still()
            self.pictures += 1
            Path(evidence).mkdir(parents=True, exist_ok=True)
            self.display.screenshot(Path(evidence) / f"gnustep-{self._testMethodName}-{self.pictures}.png")

    def sheet(self, text):
        """Waits for a sheet that shows that text."""
        return self.installer.wait(f"a sheet with {text!r}", lambda state: text in state["sheet"].get("texts", []))["sheet"]

    def no_sheet(self):
        return self.installer.wait("the end of the sheet", lambda state: not state["sheet"])

    def answers(self, count):
        """What the alerts of the probe were answered, once there are so many."""
        found = self.installer.wait(f"{count} answers", lambda state: len(state["answers"]) >= count)["answers"]
        return [tuple(answer) for answer in found]

    def window(self, text):
        """Waits for a window that shows that text, sheet or not."""
        def find(state):
            return [window for window in state["windows"] if text in window["texts"]]
        return find(self.installer.wait(f"a window with {text!r}", find))[0]

    def key(self, name):
        """Presses a key once the display has given the keyboard to the window that the program means."""
        def has_keyboard():
            meant = [window["title"] for window in self.installer.state()["windows"] if window["key"]]
            return meant == [self.display.xdotool("getwindowfocus", "getwindowname", check=False).rstrip("\n")]
        wait_until("the keyboard's focus", has_keyboard)
        self.display.press(name)

    def end(self):
        """Ends the installer by a signal; no memory error and no leak may have been seen until then."""
        self.keep_picture()
        status = self.installer.terminate()
        self.assertEqual(status, 0, self.installer.told())
