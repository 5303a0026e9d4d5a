"""Files for folders that the user may not change: the question for a password, and what comes of its answers."""
import os
import secrets
import shutil
from pathlib import Path

from case import WindowCase
from driver.account import Account, CleanUp
from driver.waiting import wait_until

PASSWORD = "correct horse 9!"
WRONG = "That password is not right. Try again."
COPY_FAILED = "Please check your permissions."
LIBRARY = Path("/Library")


class RightsCase(WindowCase):
    as_superuser = True  # until the account has been made

    def setUp(self):
        if os.geteuid() != 0:
            self.skipTest("making an account with a password needs the superuser")
        for tool in ("sudo", "useradd", "chpasswd"):
            if shutil.which(tool) is None:
                self.skipTest(f"not on this machine: {tool}")
        account = Account(PASSWORD, administrator=True)
        self.folder_name = "WickfieldTest-" + secrets.token_hex(6)
        self.had_library = LIBRARY.exists()
        self.addCleanup(CleanUp(lambda: self.remove(account)).run)
        self.prepare()
        account.become()
        super().setUp()

    def prepare(self):
        """What the superuser does before the test."""

    def remove(self, account):
        shutil.rmtree(self.installed(), ignore_errors=True)
        if not self.had_library and LIBRARY.is_dir() and not any(LIBRARY.iterdir()):
            LIBRARY.rmdir()
        account.remove()

    def installed(self, name=""):
        return LIBRARY / self.folder_name / name

    def bundle_with(self, count=1):
        bundle = self.small()
        for number in range(count):
            bundle.add(f"Library/{self.folder_name}/{number}.txt", f"file {number}\n".encode())
        return bundle

    def asked(self, bundle):
        """An installer whose question for a password is up."""
        installer = self.open_window(bundle)
        installer.press_button("Install")
        self.wait_for_question(installer)
        return installer

    def wait_for_question(self, installer):
        wait_until("the field for the password", installer.asks_for_password)

    def answer(self, installer, password):
        self.session.display.type(password)
        installer.press("Return")


class Rights(RightsCase):
    def test_files_are_installed_once_the_password_is_right(self):
        installer = self.asked(self.bundle_with())
        self.assertTrue(any("Small Installer" in node.name and "wants to make changes." in node.name
                            for node in installer.nodes()))
        self.answer(installer, PASSWORD)
        installer.wait_for_text("Installation complete", seconds=60)
        self.assertEqual(self.installed("0.txt").read_bytes(), b"file 0\n")
        self.assertEqual(self.installed().stat().st_uid, 0)

    def test_a_wrong_password_may_be_put_right(self):
        installer = self.asked(self.bundle_with())
        self.answer(installer, "incorrect")
        installer.wait_for_text(WRONG)
        self.wait_for_question(installer)
        self.answer(installer, PASSWORD)
        installer.wait_for_text("Installation complete", seconds=60)
        self.assertTrue(self.installed("0.txt").exists())

    def test_twenty_files_take_one_question(self):
        installer = self.asked(self.bundle_with(count=20))
        self.answer(installer, PASSWORD)
        installer.wait_for_text("Installation complete", seconds=60)
        self.assertEqual(len(list(self.installed().iterdir())), 20)

    def test_files_for_the_user_alone_take_no_question(self):
        bundle = self.small()
        bundle.add("Users/user/Music/tone.txt", b"mine\n")
        self.install(bundle)
        self.assertEqual((self.home.path / "Music/tone.txt").stat().st_uid, os.getuid())

    def test_closing_the_window_cancels_and_ends_the_installer(self):
        installer = self.asked(self.bundle_with())
        self.assertEqual(self.quit(installer), 0)
        self.assertFalse(self.installed().exists())

    def test_caps_lock_is_warned_of_while_it_is_on(self):
        installer = self.asked(self.bundle_with())
        self.assertFalse(installer.reads("Caps Lock is on."))
        self.session.display.xdotool("key", "Caps_Lock")
        installer.wait_for_text("Caps Lock is on.")
        self.session.display.xdotool("key", "Caps_Lock")
        wait_until("the warning to go", lambda: not installer.reads("Caps Lock is on."))

    def test_the_password_is_in_no_log_and_on_no_command_line(self):
        installer = self.asked(self.bundle_with())
        self.session.display.type(PASSWORD)
        seen = set()
        for process in Path("/proc").glob("[0-9]*/cmdline"):
            try:
                seen.add(process.read_bytes())
            except OSError:
                pass  # gone meanwhile
        installer.press("Return")
        installer.wait_for_text("Installation complete", seconds=60)
        self.assertNotIn(PASSWORD, self.home.log())
        self.assertNotIn(PASSWORD, installer.output())
        self.assertFalse([line for line in seen if PASSWORD.encode() in line])


class RightsForAFolderThatIsThere(RightsCase):
    def prepare(self):
        self.installed().mkdir(parents=True, mode=0o755)

    def test_a_cancelled_question_fails_the_installation(self):
        installer = self.asked(self.bundle_with())
        installer.press("Escape")
        installer.wait_for_text("Installation failed", seconds=60)
        self.assertTrue(installer.reads(COPY_FAILED))
        self.assertEqual(list(self.installed().iterdir()), [])
