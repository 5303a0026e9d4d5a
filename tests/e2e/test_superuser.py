"""The installer run by the superuser installs for the person at the console, never into the superuser's own home."""
import os
import pwd

from case import WindowCase
from driver.installer import Home


class Superuser(WindowCase):
    as_superuser = True

    def setUp(self):
        account = os.environ.get("WICKFIELD_TEST_ACCOUNT")
        if os.geteuid() != 0:
            self.skipTest("this user is not the superuser")
        if not account:
            self.skipTest("needs a throw-away account, which ./test makes: WICKFIELD_TEST_ACCOUNT is not set")
        super().setUp()
        self.person = pwd.getpwnam(account)

    def test_files_of_the_user_s_folders_go_to_the_console_user(self):
        bundle = self.small()
        bundle.add("Users/user/Library/Preferences/x.plist", b"from the superuser\n")
        self.home = Home(self.folder / "superuser-home")
        self.install(bundle, SUDO_UID=str(self.person.pw_uid))
        installed = os.path.join(self.person.pw_dir, "Library/Preferences/x.plist")
        with open(installed, "rb") as file:
            self.assertEqual(file.read(), b"from the superuser\n")
        self.assertFalse((self.home.path / "Library/Preferences/x.plist").exists())

    def test_without_a_person_at_the_console_nothing_is_installed(self):
        bundle = self.small()
        bundle.add("Users/user/Library/Preferences/x.plist", b"for nobody\n")
        installer = self.install(bundle, outcome="Installation failed")
        self.assertTrue(installer.reads("Please check your permissions."))
        for place in ("/", pwd.getpwnam("root").pw_dir, self.home.path):
            self.assertFalse(os.path.exists(os.path.join(place, "Library/Preferences/x.plist")), place)
