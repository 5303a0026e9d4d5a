"""The window that AppKit draws, run on GNUstep: what a user sees of it and what each key does."""
import os
import signal
import tempfile
import time
import unittest
from pathlib import Path

from driver.display import Display, missing_tools
from driver.waiting import wait_until
from installer import CONFIGURATION, Installer, make_bundle

SAMPLE = Path(__file__).resolve().parents[3] / "resources" / "Sample"
SETTINGS = {"KZPluginName": "Larkspur Reverb", "KZPluginVersion": "2.4.1", "KZPluginAuthor": "Orrin Audio",
            "KZBgImagePath": "Background.png"}
AGREEMENT = {"KZEULAPath": "Agreement.rtf"}
LEAKED = 23
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


class Starting(WindowCase):
    def test_the_window_is_filled_from_the_settings(self):
        shown = self.start()
        self.assertEqual(shown["title"], "Larkspur Reverb Installer")
        self.assertEqual(shown["name"], "Larkspur Reverb")
        self.assertEqual(shown["version"], "2.4.1")
        self.assertEqual(shown["author"], "by Orrin Audio")
        self.assertEqual(shown["branding"], "Installer created with Tallowmere by Corvane.")
        self.assertIn("tallowmere", shown["link"])
        self.assertTrue(shown["background"])
        self.assertTrue(shown["installEnabled"])
        self.assertEqual(shown["spinnerLabel"], "Installing")
        self.end()

    def test_absent_settings_show_as_null(self):
        shown = self.start({"KZBgImagePath": "Missing.png"})
        self.assertEqual(shown["title"], "(null) Installer")
        self.assertEqual((shown["name"], shown["version"], shown["author"]), ("(null)", "(null)", "by (null)"))
        self.assertFalse(shown["background"])
        self.end()

    def test_branding_can_be_removed(self):
        shown = self.start({**SETTINGS, "removeBranding": True})
        self.assertTrue(shown["brandingHidden"])
        self.assertTrue(shown["gantryHidden"])
        self.end()

    def test_files_that_are_no_image_and_no_text_are_ignored(self):
        shown = self.start({**SETTINGS, "KZBgImagePath": "Noise.png"}, [("Noise.png", b"\x89PNG\r\n\x1a\nnothing more")])
        self.assertFalse(shown["background"])
        self.end()

    def test_in_test_mode_the_window_stays_as_it_was_designed(self):
        shown = self.start(environment={"KZTESTMODE": ""})
        self.assertEqual(shown["title"], "Installer")
        self.assertEqual((shown["name"], shown["version"], shown["author"]), ("Plug-in", "1.0", "by Author"))
        self.end()

    def test_a_damaged_installer_says_so_and_ends(self):
        self.start({}, wait=False)
        self.window("This installer has been damaged.")
        self.keep_picture()
        self.key("Return")
        self.assertEqual(self.installer.wait_for_end(), 0, self.installer.told())

    def test_closing_the_window_ends_the_installer(self):
        self.start()
        (window,) = [number for number, title in self.display.windows(self.installer.pid).items()
                     if title == "Larkspur Reverb Installer"]
        self.display.close_window(window)
        self.assertEqual(self.installer.wait_for_end(), 0, self.installer.told())


class Agreement(WindowCase):
    def begin(self):
        self.start({**SETTINGS, **AGREEMENT})
        sheet = self.sheet("Please read the licence agreement before you install.")
        self.keep_picture()
        return sheet

    def test_the_agreement_is_a_sheet_that_keeps_install_from_being_pressed(self):
        sheet = self.begin()
        self.assertIn("This agreement is between you and Orrin Audio", sheet["agreement"])
        self.assertFalse(sheet["editable"])
        self.assertTrue(sheet["standardColour"])
        self.assertEqual(sheet["label"], "Licence agreement")
        self.assertEqual(sheet["keys"], {"Agree": "\r", "Disagree": "\033"})
        self.assertFalse(self.installer.ask("press Install")["done"])
        self.end()

    def test_a_plain_text_is_shown_as_it_is(self):
        self.start({**SETTINGS, "KZEULAPath": "Terms.txt"}, [("Terms.txt", b"One %@ term.\nAnother.\n")])
        sheet = self.sheet("Please read the licence agreement before you install.")
        self.assertEqual(sheet["agreement"], "One %@ term.\nAnother.\n")
        self.end()

    def shown(self, name, content, *beside):
        """What the sheet shows of an agreement of that name, or hands to the reader of web pages."""
        self.start({**SETTINGS, "KZEULAPath": name}, [(name, content), *beside])
        return self.sheet("Please read the licence agreement before you install.")["agreement"]

    def test_a_web_page_loads_nothing_and_runs_nothing(self):
        page = self.shown("Terms.html", b"<h1>Terms</h1><img src=http://127.0.0.1:9/seal.png alt=Seal>"
                          b"<script>run()</script><link rel=stylesheet href=s.css>You <b>agree</b>.")
        self.assertIn("<h1>Terms</h1>SealYou <b>agree</b>.", page)
        self.assertTrue(page.isascii())
        self.end()

    def test_a_web_page_is_known_by_its_contents_too(self):
        self.assertIn("<body> \n<p>t</p>", self.shown("Terms", b"\xef\xbb\xbf <!DOCTYPE html>\n<p onclick=x>t</p>"))
        self.end()

    def test_a_web_page_is_read_in_the_encoding_that_it_names(self):
        page = self.shown("Terms.htm", '<meta charset="windows-1251">Привет'.encode("cp1251"))
        self.assertIn("<body>" + "".join(f"&#{ord(letter)};" for letter in "Привет"), page)
        self.end()

    def test_a_web_page_shows_the_pictures_beside_it_and_no_others(self):
        page = self.shown("Terms.html", b"<img src=Seal.png><img src=Link.png alt=None>", ("Seal.png", b"\x89PNG"))
        self.assertIn('<body><img src="data:image/png;base64,iVBORw==">None</body>', page)
        self.end()

    def test_rich_text_is_known_by_its_contents_too(self):
        self.assertEqual(self.shown("Terms.txt", b"{\\rtf1\\ansi You agree.}"), "You agree.")
        self.end()

    def test_what_only_calls_itself_rich_text_is_shown_as_it_stands(self):
        self.assertEqual(self.shown("Terms.rtf", b"You <img src=x> agree."), "You <img src=x> agree.")
        self.end()

    def test_a_text_in_no_encoding_is_shown_all_the_same(self):
        self.assertEqual(self.shown("Terms.txt", b"Caf\xe9 \x81."), "Caf\u00e9 \u0081.")
        self.end()

    def test_a_pipe_in_the_place_of_the_text_does_not_hold_the_window_up(self):
        def make_pipe(resources):
            os.mkfifo(resources / "Terms.rtf")
        self.start({**SETTINGS, "KZEULAPath": "Terms.rtf"}, prepare=make_pipe)
        self.assertEqual(self.sheet("Please read the licence agreement before you install.")["agreement"], "")
        self.key("Return")
        self.no_sheet()
        self.end()

    def test_agreeing_by_return_leaves_the_window_ready(self):
        self.begin()
        self.key("Return")
        state = self.no_sheet()
        self.assertTrue(state["installer"]["installEnabled"])
        self.assertEqual([window["title"] for window in state["windows"]], ["Larkspur Reverb Installer"])
        self.end()

    def test_agreeing_by_the_button_leaves_the_window_ready(self):
        self.begin()
        self.installer.press("Agree")
        self.no_sheet()
        self.end()

    def test_declining_by_escape_ends_the_installer(self):
        self.begin()
        self.key("Escape")
        self.assertEqual(self.installer.wait_for_end(), 0, self.installer.told())

    def test_declining_by_the_button_ends_the_installer(self):
        self.begin()
        self.installer.press("Disagree")
        self.assertEqual(self.installer.wait_for_end(), 0, self.installer.told())


class Installing(WindowCase):
    def begin(self, resources=()):
        self.target = self.folder / "target" / "Deep" / "preset.txt"
        tree = [(str(self.target).lstrip("/"), b"warm and wide")]
        self.start(resources=resources, tree=tree)
        self.key("Return")

    def test_return_installs_the_tree_and_the_outcome_is_a_sheet(self):
        self.begin()
        self.sheet("Installation complete")
        self.sheet("The plugin was successfully installed.")
        self.assertEqual(self.target.read_bytes(), b"warm and wide")
        self.keep_picture()
        self.key("Return")
        self.assertFalse(self.no_sheet()["installer"]["installEnabled"])
        self.end()

    def test_a_script_that_fails_is_reported_and_nothing_is_copied(self):
        self.begin([("preinstall.sh", b"exit 3\n")])
        self.sheet("Installation failed")
        self.sheet("A script terminated the installation.")
        self.assertFalse(self.target.exists())
        self.keep_picture()
        self.installer.press("OK")
        self.assertFalse(self.no_sheet()["installer"]["installEnabled"])
        self.end()

    def test_a_question_about_the_missing_manager_waits_on_the_main_thread(self):
        self.start()
        self.installer.press("Send to Gantry…")
        self.sheet("This feature requires Tallowmere")
        self.key("Escape")
        self.assertTrue(self.no_sheet()["installer"]["installEnabled"])
        self.end()


class Alerts(WindowCase):
    def test_a_timed_alert_closes_itself(self):
        self.start()
        began = time.monotonic()
        self.installer.ask("worker timed")
        sheet = self.sheet("Timed")
        self.assertIn("It answers itself, 100%@ surely.", sheet["texts"])
        self.keep_picture()
        self.assertEqual(self.answers(1), [("timed", 1)])
        self.assertGreaterEqual(time.monotonic() - began, 1.9)
        self.no_sheet()
        self.installer.ask("worker question")  # the window takes another one
        self.sheet("Which way?")
        self.installer.press("Left")
        self.no_sheet()
        self.end()

    def test_each_button_has_its_answer(self):
        self.start()
        for number, (title, code) in enumerate([("Left", 1), ("Right", 0), ("Straight on", -1)], 1):
            self.installer.ask("worker question")
            self.sheet("Which way?")
            self.installer.press(title)
            self.assertEqual(self.answers(number)[-1], ("question", code))
        self.end()

    def test_return_and_escape_answer(self):
        self.start()
        for number, (key, code) in enumerate([("Return", 1), ("Escape", 0)], 1):
            self.installer.ask("main question")
            self.sheet("Which way?")
            self.key(key)
            self.assertEqual(self.answers(number)[-1], ("question", code))
            self.no_sheet()
        self.end()

    def test_the_suppression_box_is_bound_to_its_user_default(self):
        self.start()
        self.installer.ask("worker suppressed")
        self.assertEqual(self.sheet("Again?")["checked"], [])
        self.installer.ask("toggle")
        self.installer.press("OK")
        self.answers(1)
        self.no_sheet()
        self.installer.ask("main suppressed")
        self.assertEqual(self.sheet("Again?")["checked"], ["Do not show this message again"])
        self.installer.press("OK")
        self.answers(2)
        self.end()
        self.assertIn("hideAgain", self.installer.defaults())

    def test_a_default_that_nothing_can_be_bound_to_leaves_the_alert(self):
        # GNUstep loses the binding that it was about to make.
        self.start(environment={"ASAN_OPTIONS": "detect_leaks=0:exitcode=24"})
        self.installer.ask("worker oddly-suppressed")
        self.sheet("Again?")
        self.installer.press("OK")
        self.assertEqual(self.answers(1), [("oddly-suppressed", 1)])
        self.end()
        self.assertIn("Exception in binding an alert's suppression", self.installer.told())

    def test_a_second_alert_stands_free_of_the_sheet(self):
        self.start()
        self.installer.ask("main two")
        self.window("Above")
        self.keep_picture()
        self.sheet("Beneath")
        self.installer.press("Enough")
        self.assertEqual(self.answers(1), [("two", 1)])
        self.sheet("Beneath")
        self.installer.press("OK")
        self.no_sheet()
        self.end()


    def take_two(self):
        self.installer.ask("worker two")
        self.window("Above")
        self.key("Return")
        self.assertEqual(self.answers(1), [("two", 1)])
        self.installer.press("OK")
        self.no_sheet()
        self.installer.ask("worker timed-above")
        self.window("Timed")
        self.assertEqual(self.answers(2)[1], ("timed-above", 1))
        state = self.installer.wait("the end of the alert", lambda state: len(state["windows"]) == 2)
        self.assertFalse(state["modal"])
        self.installer.press("OK")
        self.assertTrue(self.no_sheet()["installer"]["installEnabled"])
        self.end()

    def test_a_free_standing_alert_is_answered_and_times_out(self):
        self.start()
        self.take_two()

    def test_so_it_does_where_it_runs_a_loop_of_its_own(self):
        self.start(arguments=["-FreeStandingAlertsRunALoop", "YES"])
        self.take_two()


    def test_one_that_is_taken_away_beneath_another_leaves_nothing_behind(self):
        self.start(arguments=["-FreeStandingAlertsRunALoop", "YES"])
        self.installer.ask("worker alone-timed")
        self.window("Timed")
        self.installer.ask("worker alone-question")
        self.window("Which way?")
        self.assertEqual(self.answers(1), [("alone-timed", 1)])
        self.window("Which way?")
        self.installer.press("Right")
        self.assertEqual(self.answers(2)[1], ("alone-question", 0))
        state = self.installer.wait("the end of the alerts", lambda state: len(state["windows"]) == 1)
        self.assertFalse(self.installer.wait("the end of the loops", lambda state: not state["modal"])["modal"])
        self.assertTrue(state["installer"]["installEnabled"])
        self.end()


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


class Serving(WindowCase):
    """The probe asks from a thread of its own and waits for the main thread, as the installation does."""

    def test_a_thread_is_served_while_an_alert_panel_is_up(self):
        self.start()
        self.installer.ask("panel")
        self.window("A loop of its own, 100%@.")
        self.assertTrue(self.installer.state()["modal"])
        self.key("Return")
        self.assertEqual(self.answers(1), [("panel", 0)])
        self.end()

    def test_a_thread_is_served_while_a_sheet_is_up(self):
        self.start({**SETTINGS, **AGREEMENT})
        self.sheet("Please read the licence agreement before you install.")
        began = time.monotonic()
        self.assertFalse(self.installer.state()["modal"])
        self.assertLess(time.monotonic() - began, 5)
        self.key("Return")
        self.no_sheet()
        self.end()

    def test_cocoa_knows_that_there_are_threads(self):
        self.start()
        self.assertTrue(self.installer.state()["multithreaded"])
        self.end()

    def test_a_thread_is_served_while_a_menu_is_open(self):
        self.start()
        self.installer.ask("menu")
        self.answers(1)
        time.sleep(0.5)
        self.assertEqual(self.installer.state()["answers"], [["menu opened", 0]])
        self.display.xdotool("mousemove", 500, 740, "click", 1)
        self.assertEqual(self.answers(2)[1], ("menu closed", 0))
        self.end()

    def test_work_behind_work_that_runs_a_loop_is_served(self):
        self.start()
        self.installer.ask("batch")
        self.window("A loop of its own, 100%@.")
        self.assertEqual(self.answers(2), [("second", 0), ("third", 0)])
        self.key("Return")
        self.assertEqual(self.answers(3)[-1], ("first", 0))
        self.end()

    def test_a_slice_of_the_event_loop_ends_by_time_or_by_work(self):
        self.start()
        self.display.wait_until_still()
        seen = self.installer.ask("slices", 40)
        self.assertGreaterEqual(seen["idle"], 190)
        self.assertLess(seen["looks"], 1000)
        self.assertLess(seen["woken"], 5000)
        self.assertEqual(seen["order"], "123")
        self.end()

    def test_a_leak_would_be_found(self):
        self.start()
        self.installer.ask("leak")
        self.assertEqual(self.installer.terminate(), LEAKED)


class Throwing(WindowCase):
    """No exception of C++'s gets into AppKit, which would go on half-way through its work, and none of Objective-C's
    into C++, which would not clean up: the one ends the installer with its reason logged, the other is reported
    and ends where it came from."""

    def ends(self, way):
        self.start(environment={"ASAN_OPTIONS": "detect_leaks=0"})
        self.installer.tell(f"throw {way}")
        self.assertEqual(self.installer.wait_for_end(), -signal.SIGABRT, self.installer.told())
        self.assertIn("on purpose", self.installer.printed())  # as the log prints it

    def test_work_for_the_main_thread(self):
        self.ends("work")

    def test_the_action_of_a_button(self):
        self.ends("action")

    def test_the_end_of_a_sheet(self):
        self.ends("end")

    def test_an_observer_of_the_end(self):
        self.ends("observer")

    def test_objective_c_within_the_action_of_a_button(self):
        self.ends("raise")

    def test_objective_c_on_a_thread_where_nobody_catches_it(self):
        self.start(environment={"ASAN_OPTIONS": "detect_leaks=0"})
        self.installer.tell("throw thread")
        self.assertEqual(self.installer.wait_for_end(), 1, self.installer.told())  # GNUstep's way to end for it
        self.assertIn("on purpose", self.installer.printed())

    def test_objective_c_within_the_loop_that_waits_for_an_answer(self):
        self.start(environment={"ASAN_OPTIONS": "detect_leaks=0"})
        self.installer.ask("throw event")
        self.assertEqual(self.answers(1), [("went on", 0)])
        self.assertIn("Exception in the event loop. NSInvalidArgumentException - on purpose.", self.installer.told())


class SmallScreen(WindowCase):
    screen = (480, 320)

    def test_long_names_on_a_small_screen_keep_every_control_in_the_window(self):
        name = "An Extraordinarily Long Name of a Plug-in " * 100
        self.start({**SETTINGS, "KZPluginName": name, "KZPluginVersion": "9" * 500, "KZPluginAuthor": name})
        places = self.installer.state()["installer"]["places"]
        view = places["view"]
        self.assertLessEqual(view["width"], 480)
        self.assertLessEqual(view["height"], 320)
        for control in ("name", "version", "author", "install", "gantry", "branding", "background"):
            place = places[control]
            self.assertGreaterEqual(place["x"], view["x"], control)
            self.assertGreaterEqual(place["y"], view["y"], control)
            self.assertLessEqual(place["x"] + place["width"], view["x"] + view["width"], control)
            self.assertLessEqual(place["y"] + place["height"], view["y"] + view["height"], control)
            self.assertGreater(place["width"], 20, control)
        self.end()

    def test_the_branding_line_takes_as_many_lines_as_it_needs(self):
        places = self.start()["places"]
        self.assertLess(places["branding"]["width"], 250)  # its text in one line is wider
        self.assertGreater(places["branding"]["height"], 1.8 * places["author"]["height"] * 11 / 13)
        self.assertGreaterEqual(places["branding"]["y"], places["view"]["y"])
        self.assertLessEqual(places["branding"]["y"] + places["branding"]["height"], places["author"]["y"])
        self.end()

    def test_the_agreement_fits(self):
        self.start({**SETTINGS, **AGREEMENT})
        self.sheet("Please read the licence agreement before you install.")
        self.keep_picture()
        self.key("Return")
        self.no_sheet()
        self.end()
