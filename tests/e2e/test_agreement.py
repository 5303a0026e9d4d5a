"""The agreement stands between the window and the Install button."""
from case import WindowCase
from driver.waiting import wait_until

TITLE = "Larkspur Reverb Installer"


class Agreement(WindowCase):
    def open_agreement(self, bundle=None):
        installer = self.launch(bundle or self.sample())
        installer.wait_for_window(TITLE)
        installer.wait_for_button("Agree")
        return installer

    def test_its_text_is_there_to_be_read(self):
        installer = self.open_agreement()
        self.assertTrue(any("Larkspur Reverb" in node.text and "Orrin Audio" in node.text for node in installer.nodes()))

    def test_return_agrees_and_leaves_the_window_ready(self):
        installer = self.open_agreement()
        installer.press("Return")
        wait_until("the sheet to go", lambda: installer.button("Agree") is None)
        self.assertTrue(installer.button("Install").enabled)

    def test_declining_ends_the_installer_and_installs_nothing(self):
        installer = self.open_agreement()
        installer.press_button("Disagree")
        self.assertEqual(installer.wait_for_end(), 0)
        self.assertFalse((self.home.path / "Library/Audio").exists())

    def test_install_cannot_be_reached_while_it_is_up(self):
        installer = self.open_agreement()
        names = set()
        for _ in range(12):
            installer.press("Tab")
            self.session.display.wait_until_still()
            names.add(installer.focused().name if installer.focused() else "")
        self.assertNotIn("Install", names)
        self.assertLessEqual({"Agree", "Disagree"}, names)

    def test_closing_the_window_beneath_ends_the_installer(self):
        installer = self.open_agreement()
        self.assertEqual(self.quit(installer), 0)

    def test_it_is_shown_again_at_the_next_launch(self):
        bundle = self.sample()
        installer = self.open_agreement(bundle)
        installer.press("Return")
        wait_until("the sheet to go", lambda: installer.button("Agree") is None)
        self.quit(installer)
        again = self.open_agreement(bundle)
        self.assertTrue(again.button("Disagree"))

    def test_a_bundle_without_one_is_ready_at_once(self):
        installer = self.open_window(self.small())
        self.assertIsNone(installer.button("Agree"))
        self.assertTrue(installer.button("Install").enabled)

    def test_a_reference_to_no_file_is_ignored(self):
        installer = self.open_window(self.small(KZEULAPath="Nowhere.rtf"))
        self.assertTrue(installer.button("Install").enabled)
