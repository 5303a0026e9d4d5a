"""What every end-to-end test starts from: a display, a home folder and the built bundle."""
import os
import shutil
import tempfile
import unittest
from pathlib import Path

from driver.bundle import Bundle
from driver.display import missing_tools
from driver.installer import Home, Installer
from driver.session import Session
from driver.waiting import wait_until

NOBODY = 65534


def become_ordinary_user():
    """The superuser has no home folder to install into; its place is taken by the account with no rights at all."""
    if os.geteuid() == 0:
        os.setgroups([])
        os.setgid(NOBODY)
        os.setuid(NOBODY)


def reason_to_skip(bundle):
    if missing_tools():
        return "not on this machine: " + ", ".join(missing_tools())
    try:
        import gi  # pylint: disable=import-outside-toplevel
        gi.require_version("Atspi", "2.0")
    except (ImportError, ValueError):
        return "the accessibility library for Python (gir1.2-atspi-2.0, python3-gi) is not on this machine"
    if not os.access(bundle, os.R_OK | os.X_OK):
        return f"this user cannot read {bundle}"
    return None


class WindowCase(unittest.TestCase):
    screen = (1024, 768)
    as_superuser = False

    def setUp(self):
        if not self.as_superuser:
            become_ordinary_user()
        path = os.environ["WICKFIELD_E2E_BUNDLE"]
        reason = reason_to_skip(path)
        if reason:
            self.skipTest(reason)
        self.folder = Path(tempfile.mkdtemp(prefix="wickfield-e2e."))
        self.addCleanup(self.remove_folder)
        self.built = Bundle(path)
        self.home = Home(self.folder / "home")
        self.session = Session(self.folder, self.screen)
        self.addCleanup(self.session.close)
        self.addCleanup(self.keep_evidence)

    def remove_folder(self):
        for path in self.folder.rglob("*"):
            if path.is_dir() and not path.is_symlink():
                path.chmod(0o700)
        shutil.rmtree(self.folder, ignore_errors=True)

    def keep_evidence(self):
        """After a failure: what the screen showed, beside where the test was started from."""
        failed = any(error for _, error in getattr(self._outcome.result, "errors", [])
                     + getattr(self._outcome.result, "failures", []))
        folder = os.environ.get("WICKFIELD_E2E_EVIDENCE")
        if failed and folder:
            os.makedirs(folder, exist_ok=True)
            self.session.display.screenshot(Path(folder) / f"{self.id()}.png")

    # Making bundles

    def sample(self):
        """A copy of the sample with its whole tree."""
        return self.built.copy(self.folder / "Larkspur Reverb Installer.app")

    def small(self, **settings):
        """A copy with an empty tree, no scripts and no agreement, to be filled by the test."""
        bundle = self.built.copy(self.folder / "Small Installer.app", with_tree=False)
        bundle.set_script("preinstall.sh", None)
        bundle.set_script("postinstall.sh", None)
        bundle.change_settings(**{"KZPluginName": "Small", "KZEULAPath": None, **settings})
        return bundle

    # Running them

    def launch(self, bundle, home=None, **environment):
        installer = Installer(bundle, home or self.home, self.session, environment)
        self.addCleanup(installer.__exit__)
        return installer

    def open_window(self, bundle, title="Small Installer", **environment):
        installer = self.launch(bundle, **environment)
        installer.wait_for_window(title)
        installer.wait_for_button("Install")
        return installer

    def install(self, bundle, title="Small Installer", outcome="Installation complete", **environment):
        """Presses Install, cancels every question for a password, and waits for the outcome sheet, which stays up."""
        installer = self.open_window(bundle, title, **environment)
        installer.press_button("Install")
        if outcome == "Installation failed":
            wait_until("the outcome or a question", lambda: self.has_come(installer, outcome), seconds=60)
        installer.wait_for_text(outcome, seconds=60)
        return installer

    def has_come(self, installer, outcome):
        if installer.asks_for_password():
            installer.press("Escape")
        return installer.reads(outcome)

    def install_sample(self, bundle):
        """Agrees, installs, and dismisses the outcome sheet."""
        installer = self.launch(bundle)
        installer.wait_for_window("Larkspur Reverb Installer")
        installer.press_button("Agree")
        installer.press_button("Install")
        installer.wait_for_text("Installation complete", seconds=60)
        installer.press("Return")
        return installer

    def quit(self, installer):
        window = installer.wait_for_window(installer.titles()[0])
        self.session.display.close_window(window)
        return installer.wait_for_end()

    # Looking at what came of it

    def assert_log_says(self, home, text):
        self.assertIn(text, home.log())
