"""The installer is ended while it works: nothing half is left under a final name."""
import os
import signal

from case import WindowCase
from driver.waiting import wait_until

COUNT = 3000


def content(number):
    return (b"%06d\n" % number) * 3000


class Ending(WindowCase):
    def setUp(self):
        super().setUp()
        self.bundle = self.small()
        for number in range(COUNT):
            self.bundle.add(f"Users/user/Library/Application Support/Many/{number:06d}.dat", content(number))
        self.target = self.home.path / "Library/Application Support/Many"

    def arrived(self):
        return [name for name in os.listdir(self.target) if not name.startswith(".")] if self.target.is_dir() else []

    def start_copying(self):
        installer = self.open_window(self.bundle)
        installer.press_button("Install")
        wait_until("the first files", lambda: len(self.arrived()) > 20)
        return installer

    def assert_nothing_is_half(self):
        names = self.arrived()
        self.assertLess(len(names), COUNT, "the run was over before it was ended: this test has shown nothing")
        halves = [name for name in names if (self.target / name).read_bytes() != content(int(name[:6]))]
        self.assertEqual(halves, [])

    def test_sigterm_leaves_no_half_file(self):
        installer = self.start_copying()
        installer.process.send_signal(signal.SIGTERM)
        code = installer.wait_for_end()
        self.assertNotIn(code, (-signal.SIGSEGV, -signal.SIGABRT))
        self.assert_nothing_is_half()

    def test_sigkill_leaves_no_half_file(self):
        installer = self.start_copying()
        installer.process.kill()
        installer.wait_for_end()
        self.assert_nothing_is_half()

    def test_closing_the_window_ends_it_and_leaves_no_half_file(self):
        installer = self.start_copying()
        code = self.quit(installer)
        self.assertEqual(code, 0)
        self.assert_nothing_is_half()

    def test_a_display_that_goes_away_ends_it_and_leaves_no_half_file(self):
        installer = self.start_copying()
        self.session.display.close()
        self.assertEqual(installer.wait_for_end(), 1)
        self.assert_nothing_is_half()

    def test_a_second_run_after_a_killed_one_finishes_the_work(self):
        installer = self.start_copying()
        installer.process.kill()
        installer.wait_for_end()
        self.install(self.bundle)
        self.assertEqual(len(self.arrived()), COUNT)

    def test_sigterm_keeps_what_the_log_was_given(self):
        self.home.log_file.write_text("an older line\n")
        (self.home.path / "Music").mkdir(mode=0o555)
        bundle = self.built.copy(self.folder / "Refused Installer.app", with_tree=False)
        bundle.set_script("preinstall.sh", None)
        bundle.change_settings(KZPluginName="Refused", KZEULAPath=None)
        bundle.add("Users/user/Music/tone.txt")
        installer = self.install(bundle, "Refused Installer", outcome="Installation failed")
        installer.process.send_signal(signal.SIGTERM)
        installer.wait_for_end()
        self.assertTrue(self.home.log().startswith("an older line\n"))
        self.assertIn("Error copying file: ", self.home.log())
