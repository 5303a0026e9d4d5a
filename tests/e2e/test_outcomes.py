"""What the outcome sheet says, and what is on the disk when it says so."""
import os

from case import WindowCase
from driver.waiting import wait_until

SCRIPT_FAILED = "A script terminated the installation."
COPY_FAILED = "Please check your permissions."


class Outcomes(WindowCase):
    def bundle_with_one_file(self):
        bundle = self.small()
        bundle.add("Users/user/Music/tone.txt", b"new\n")
        return bundle

    def installed(self):
        return self.home.path / "Music/tone.txt"

    def test_success_is_reported_in_a_sheet(self):
        installer = self.install(self.bundle_with_one_file())
        self.assertTrue(installer.reads("The plugin was successfully installed."))
        self.assertEqual(self.installed().read_bytes(), b"new\n")

    def test_an_empty_tree_is_a_success(self):
        installer = self.install(self.small())
        self.assertTrue(installer.reads("The plugin was successfully installed."))

    def test_a_failing_script_before_the_files_copies_nothing(self):
        bundle = self.bundle_with_one_file()
        bundle.set_script("preinstall.sh", "exit 3\n")
        installer = self.install(bundle, outcome="Installation failed")
        self.assertTrue(installer.reads(SCRIPT_FAILED))
        self.assertFalse(self.installed().exists())

    def test_a_failing_script_after_the_files_leaves_them_in_place(self):
        bundle = self.bundle_with_one_file()
        bundle.set_script("postinstall.sh", "kill -9 $$\n")
        installer = self.install(bundle, outcome="Installation failed")
        self.assertTrue(installer.reads(SCRIPT_FAILED))
        self.assertTrue(self.installed().exists())

    def test_scripts_know_their_own_path_and_are_given_the_bundle_s(self):
        bundle = self.small()
        bundle.set_script("preinstall.sh", 'printf "%s\\n" "$0" "$@" > "$HOME/arguments"\n')
        self.install(bundle)
        self.assertEqual((self.home.path / "arguments").read_text().splitlines(),
                         [str(bundle.resources / "preinstall.sh"), str(bundle.path)])

    def test_a_folder_that_cannot_be_written_to_fails_the_copy(self):
        bundle = self.bundle_with_one_file()
        (self.home.path / "Music").mkdir(mode=0o555)
        installer = self.install(bundle, outcome="Installation failed")
        self.assertTrue(installer.reads(COPY_FAILED))
        self.assertEqual(os.listdir(self.home.path / "Music"), [])

    def test_a_failed_copy_is_in_the_log(self):
        bundle = self.bundle_with_one_file()
        (self.home.path / "Music").mkdir(mode=0o555)
        self.install(bundle, outcome="Installation failed")
        wait_until("the log entry", lambda: "Error copying file: " in self.home.log())
        self.assertRegex(self.home.log(), r"(?m)^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \+0000 - Error copying file: .*Authorizing\.\.\.$")

    def test_the_script_after_the_files_does_not_run_when_the_copy_failed(self):
        bundle = self.bundle_with_one_file()
        bundle.set_script("postinstall.sh", 'touch "$HOME/ran"\n')
        (self.home.path / "Music").mkdir(mode=0o555)
        self.install(bundle, outcome="Installation failed")
        self.assertFalse((self.home.path / "ran").exists())

    def test_a_link_to_what_is_there_is_installed_as_a_link(self):
        bundle = self.small()
        link = bundle.add("Users/user/Music/link.txt")
        link.unlink()
        link.symlink_to("there.txt")
        (self.home.path / "Music").mkdir()
        (self.home.path / "Music/there.txt").touch()
        self.install(bundle)
        self.assertEqual(os.readlink(self.home.path / "Music/link.txt"), "there.txt")

    def test_a_link_that_leads_nowhere_once_it_is_in_place_fails_the_copy(self):
        bundle = self.small()
        link = bundle.add("Users/user/Music/link.txt")
        link.unlink()
        link.symlink_to("nowhere.txt")
        installer = self.install(bundle, outcome="Installation failed")
        self.assertTrue(installer.reads(COPY_FAILED))

    def test_after_a_failure_install_stays_disabled(self):
        bundle = self.small()
        bundle.set_script("preinstall.sh", "exit 1\n")
        installer = self.install(bundle, outcome="Installation failed")
        installer.press("Return")
        wait_until("the sheet to go", lambda: not installer.reads("Installation failed"))
        self.assertFalse(installer.button("Install").enabled)

    def test_a_script_s_child_that_keeps_running_does_not_hold_up_the_outcome(self):
        bundle = self.small()
        bundle.set_script("preinstall.sh", "sleep 300 & echo $! > \"$HOME/child\"\n")
        try:
            self.install(bundle)
        finally:
            child = self.home.path / "child"
            if child.exists():
                try:
                    os.kill(int(child.read_text()), 15)
                except ProcessLookupError:
                    pass

    def test_a_tree_that_is_missing_is_refused_and_ends_the_installer(self):
        bundle = self.small()
        bundle.tree.rmdir()
        installer = self.open_window(bundle)
        installer.press_button("Install")
        installer.wait_for_text("This installer has been damaged.")
        panel = installer.wait_for_window("Unable to install")
        self.assertTrue(panel)
        installer.press("Return")
        self.assertEqual(installer.wait_for_end(), 0)
