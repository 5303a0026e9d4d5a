"""What the window makes of its settings, good and bad."""
from case import WindowCase


class Settings(WindowCase):
    def test_name_version_and_author_are_shown(self):
        installer = self.open_window(self.small(KZPluginVersion="7.0b2", KZPluginAuthor="Somebody"))
        self.assertTrue(installer.reads("Small"))
        self.assertTrue(installer.reads("7.0b2"))
        self.assertTrue(installer.reads("by Somebody"))

    def test_absent_keys_read_null(self):
        installer = self.open_window(self.small(KZPluginName=None, KZPluginAuthor=None), "(null) Installer")
        self.assertTrue(installer.reads("by (null)"))

    def test_a_version_that_is_a_number_is_shown(self):
        installer = self.open_window(self.small(KZPluginVersion=3))
        self.assertTrue(installer.reads("3"))

    def test_settings_that_are_garbage_count_as_empty(self):
        bundle = self.small()
        (bundle.resources / "InstallerSettings.plist").write_bytes(b"\0\1\2 not a property list <dict>")
        self.open_window(bundle, "(null) Installer")

    def test_settings_that_are_cut_off_count_as_empty(self):
        bundle = self.small()
        path = bundle.resources / "InstallerSettings.plist"
        path.write_bytes(path.read_bytes()[:150])
        self.open_window(bundle, "(null) Installer")

    def test_missing_settings_are_refused_and_end_the_installer(self):
        bundle = self.small()
        (bundle.resources / "InstallerSettings.plist").unlink()
        installer = self.launch(bundle)
        installer.wait_for_window("Unable to install")
        installer.wait_for_text("This installer has been damaged.")
        installer.press("Escape")  # there is nothing to cancel
        installer.session.display.wait_until_still()
        self.assertIsNone(installer.process.poll())
        installer.press("Return")
        self.assertEqual(installer.wait_for_end(), 0)  # and no second refusal waits for an answer

    def test_a_name_of_megabytes_is_shown_as_far_as_it_fits(self):
        installer = self.launch(self.small(KZPluginName="W" * (20 << 20)))
        installer.wait_for_button("Install")
        self.session.display.wait_until_still()
        self.assertIsNone(installer.process.poll())

    def test_branding_can_be_taken_away(self):
        branded = self.open_window(self.small())
        hand_off = [node.name for node in branded.nodes() if "Gantry" in node.name]
        self.assertTrue(hand_off)
        self.quit(branded)
        plain_bundle = self.built.copy(self.folder / "Plain Installer.app", with_tree=False)
        plain_bundle.change_settings(KZPluginName="Plain", KZEULAPath=None, removeBranding="YES")
        plain = self.open_window(plain_bundle, "Plain Installer")
        self.assertEqual([node.name for node in plain.nodes() if "Gantry" in node.name or "Tallowmere" in node.text], [])

    def test_a_background_that_is_no_image_is_ignored(self):
        bundle = self.small(KZBgImagePath="Agreement.rtf")
        self.assertTrue(self.open_window(bundle).button("Install").enabled)

    def test_the_test_mode_leaves_the_window_unfilled(self):
        installer = self.launch(self.small(), KZTESTMODE="")
        installer.wait_for_button("Install")
        self.assertNotIn("Small Installer", installer.titles())
        self.assertFalse(installer.reads("Small"))
