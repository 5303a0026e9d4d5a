"""The window that AppKit draws, run on GNUstep: what a user sees of it and what each key does."""
import os

from window_case import AGREEMENT, SETTINGS, WindowCase


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
