"""The keyboard and the ways to leave the window, on GNUstep."""
from driver.waiting import wait_until
from window_case import AGREEMENT, SETTINGS, WindowCase


class Keyboard(WindowCase):
    """Full keyboard access is a setting of the user's: without it Tab passes over the buttons on a Mac."""

    def begin(self, arguments=()):
        self.told_browser = self.folder / "address"
        program = self.folder / "bin" / "xdg-open"
        program.parent.mkdir()
        program.write_text(f'#!/bin/sh\necho "$1" >> "{self.told_browser}"\n')
        program.chmod(0o755)
        self.start(arguments=arguments, environment={"PATH": f"{program.parent}:/usr/bin:/bin"})

    def focus(self):
        (window,) = self.installer.state()["windows"]
        return window["focus"]

    def tab_to_the_link(self):
        for _ in range(4):
            if self.focus() == "WickfieldLinkField":
                return
            self.key("Tab")
        self.fail("Tab does not reach the link, but " + self.focus())

    def opened(self):
        wait_until("the address", self.told_browser.exists)
        return self.told_browser.read_text()

    def test_the_link_is_reached_by_tab_and_opened_by_space(self):
        self.begin()
        self.tab_to_the_link()
        self.keep_picture()
        self.key("space")
        self.assertIn("tallowmere", self.opened())
        self.end()

    def test_nothing_has_the_keyboard_unasked(self):
        self.begin()
        self.assertNotIn(self.focus(), ("WickfieldLinkField", "NSTextView"))
        self.end()

    def test_with_full_keyboard_access_install_has_it_first(self):
        self.begin(["-FullKeyboardAccess", "YES"])
        self.assertEqual(self.focus(), "Install")
        self.end()


class Quitting(WindowCase):
    """Whatever is up: the window can be left in every state."""

    def test_quit_while_the_agreement_is_up_declines_it(self):
        self.start({**SETTINGS, **AGREEMENT})
        self.sheet("Please read the licence agreement before you install.")
        self.installer.tell("quit")
        self.assertEqual(self.installer.wait_for_end(), 0, self.installer.told())

    def test_quit_while_a_question_is_up_ends_the_installer(self):
        self.start()
        self.installer.press("Send to Gantry…")
        self.sheet("This feature requires Tallowmere")
        self.installer.tell("quit")
        self.assertEqual(self.installer.wait_for_end(), 0, self.installer.told())

    def test_a_signal_ends_it_while_an_alert_panel_is_up(self):
        self.start()
        self.installer.ask("panel")
        self.window("A loop of its own, 100%@.")
        self.end()

    def test_an_agreement_that_cannot_be_shown_ends_the_installer(self):
        self.start({**SETTINGS, **AGREEMENT}, arguments=["-SheetsCannotBeShown", "YES"], wait=False)
        self.assertEqual(self.installer.wait_for_end(), 0, self.installer.told())
        self.assertIn("Exception in showing a sheet", self.installer.told())
