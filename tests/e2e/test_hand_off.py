"""The button that hands the tree to the maker's plug-in manager."""
import shlex
from urllib.parse import unquote

from case import WindowCase
from driver.waiting import wait_until

IDENTIFIER = "com.corvane.Gantry"
QUESTION = "This feature requires Tallowmere"
BUTTON = "Send to Gantry…"


class HandOff(WindowCase):
    def setUp(self):
        super().setUp()
        self.opened = self.folder / "opened"

    def add_program(self, path):
        """A program that notes what it was started with, one word a line."""
        path.parent.mkdir(parents=True, exist_ok=True)
        noted = shlex.quote(str(self.opened))
        path.write_text(f"#!/bin/sh\nprintf '%s\\n' \"$@\" > {noted}.part\nmv {noted}.part {noted}\n")
        path.chmod(0o755)
        return path

    def press_hand_off(self, bundle):
        self.add_program(self.folder / "bin" / "xdg-open")
        installer = self.open_window(bundle, PATH=f"{self.folder}/bin:/usr/bin:/bin", XDG_DATA_DIRS=str(self.folder / "none"))
        installer.press_button(BUTTON)
        return installer

    def what_was_opened(self):
        wait_until("something to be opened", self.opened.exists)
        return self.opened.read_text().splitlines()

    def test_an_installed_manager_gets_the_tree(self):
        program = self.add_program(self.folder / "Gantry.app" / "Contents" / "Linux" / "Gantry")
        entry = self.home.path / ".local" / "share" / "applications" / f"{IDENTIFIER}.desktop"
        entry.parent.mkdir(parents=True)
        entry.write_text(f'[Desktop Entry]\nType=Application\nName=Gantry\nExec="{program}" %U\n')
        bundle = self.small()
        installer = self.press_hand_off(bundle)
        self.assertEqual([unquote(address) for address in self.what_was_opened()], [f"file://{bundle.tree}"])
        self.assertFalse(installer.reads(QUESTION))
        self.assertTrue(installer.button("Install").enabled)

    def test_without_a_manager_a_download_opens_the_product_page(self):
        installer = self.press_hand_off(self.small())
        installer.wait_for_text(QUESTION)
        self.assertTrue(installer.reads("Gantry gives you more options for installing and managing your plugins."))
        installer.press_button("Download")
        self.assertEqual(self.what_was_opened(), ["https://www.corvane.example/tallowmere"])

    def test_without_a_manager_cancel_opens_nothing(self):
        installer = self.press_hand_off(self.small())
        installer.wait_for_text(QUESTION)
        installer.press_button("Cancel")
        wait_until("the end of the question", lambda: not installer.reads(QUESTION))
        installer.session.display.wait_until_still()
        self.assertFalse(self.opened.exists())
        self.assertTrue(installer.button("Install").enabled)
        self.assertEqual(self.quit(installer), 0)
