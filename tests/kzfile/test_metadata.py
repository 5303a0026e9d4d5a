"""kzfile metadata: what is shown, what is set, and what Linux has of it afterwards."""
import os
import unittest

import support

LABELS = ["none", "gray", "green", "purple", "blue", "yellow", "red", "orange"]


class Metadata(support.KzfileCase):
    def setUp(self):
        super().setUp()
        self.path = self.file("a", b"x" * 2048)

    def needs_attributes(self):
        try:
            os.setxattr(self.path, "user.probe", b"")
            os.removexattr(self.path, "user.probe")
        except OSError as error:
            raise unittest.SkipTest(f"no extended attributes here: {error}") from None

    def shown(self, name="a"):
        return dict(line.split(":", 1) for line in self.output("metadata", name).splitlines())

    def test_what_is_known_is_shown(self):
        os.utime(self.path, ns=(10**18, 10**18))
        shown = {key: value.strip() for key, value in self.shown().items()}
        self.assertEqual(shown["kind"], "file")
        self.assertEqual(shown["size"], "2048 bytes (2.00 KB)")
        self.assertEqual(shown["modified"], "2001-09-09 01:46:40 +0000")
        self.assertEqual((shown["locked"], shown["label"]), ("no", "none"))
        self.assertNotIn("comment", shown)

    def test_kinds_are_told_apart(self):
        (self.work / "folder").mkdir()
        (self.work / "Reverb.vst3").mkdir()
        (self.work / "link").symlink_to("a")
        (self.work / "dangling").symlink_to("nowhere")
        for name, kind in (("folder", "folder"), ("Reverb.vst3", "package"), ("link", "link"),
                           ("dangling", "link that leads nowhere")):
            self.assertEqual(self.shown(name)["kind"].strip(), kind)

    def test_several_items_are_told_apart_by_their_names(self):
        self.file("b")
        text = self.output("metadata", "a", "b")
        self.assertTrue(text.startswith("a\nkind:"))
        self.assertIn("\n\nb\nkind:", text)

    def test_each_label_is_set_by_name_and_by_number(self):
        self.needs_attributes()
        for number, name in enumerate(LABELS):
            for text in (name, str(number)):
                self.assertEqual(self.output("metadata", "--label", text, "a"), "")
                self.assertEqual(self.shown()["label"].strip(), name)

    def test_an_unknown_label_is_a_usage_error(self):
        for text in ("pink", "8", "-1", ""):
            self.assert_fails(self.run_program("metadata", "--label", text, "a"), 2, "label")

    def test_a_label_has_its_colour_on_a_terminal(self):
        self.needs_attributes()
        self.output("metadata", "-l", "red", "a")
        _, shown = self.run_on_terminal("metadata", "a")
        red, green, blue = (int(part) for part in shown.split("\x1b[48;2;")[1].split("m")[0].split(";"))
        self.assertEqual(red, 255)
        self.assertLess(max(green, blue), 140)

    def test_a_comment_is_where_the_desktop_looks_for_it(self):
        self.needs_attributes()
        self.output("metadata", "--comment", "größer", "a")
        self.assertEqual(os.getxattr(self.path, "user.xdg.comment"), "größer".encode())
        self.assertEqual(self.shown()["comment"].strip(), "größer")

    def test_a_comment_can_be_emptied(self):
        self.needs_attributes()
        self.output("metadata", "--comment", "text", "a")
        self.output("metadata", "--comment", "", "a")
        self.assertNotIn("comment", self.shown())

    def test_a_comment_that_could_not_be_read_again_is_refused(self):
        self.assert_fails(self.run_program("metadata", "--comment", "x" * 256, "a"), 2, "255")

    def test_an_attribute_that_is_set_can_be_got(self):
        self.needs_attributes()
        self.output("metadata", "--set", "key=one=two", "a")
        self.assertEqual(os.getxattr(self.path, "user.key"), b"one=two")
        self.assertEqual(self.output("metadata", "--get", "key", "a"), "one=two\n")

    def test_an_attribute_that_is_not_there_is_a_failure(self):
        self.assert_fails(self.run_program("metadata", "--get", "key", "a"), 1, "key")

    def test_an_attribute_without_a_name_or_text_is_a_usage_error(self):
        for text in ("key", "=text"):
            self.assert_fails(self.run_program("metadata", "--set", text, "a"), 2, "KEY=TEXT")

    def test_dates_are_understood_in_all_their_forms(self):
        for text, seconds in (("2001-09-09T01:46:40Z", 10**9), ("2001-09-09 01:46:40", 10**9),
                              ("2001-09-09 03:46:40 +0200", 10**9), ("2001-09-08T20:16:40-05:30", 10**9),
                              ("2001-09-09 01:46", 10**9 - 40), ("2001-09-09", 10**9 - 6400), ("@1000000000", 10**9),
                              ("1960-02-29", -310521600), ("@-1", -1)):
            self.output("metadata", "--modified", text, "a")
            self.assertEqual(self.path.stat().st_mtime, seconds, text)

    def test_dates_are_those_of_the_time_zone(self):
        self.environment["TZ"] = "Europe/Berlin" if os.path.exists("/usr/share/zoneinfo/Europe/Berlin") else "CET-1CEST"
        self.output("metadata", "--modified", "2026-01-01 12:00", "a")
        self.assertEqual(self.path.stat().st_mtime, 1767265200)
        self.assertEqual(self.shown()["modified"].strip(), "2026-01-01 12:00:00 +0100")

    def test_no_dates_are_usage_errors(self):
        for text in ("", "tomorrow", "2026-02-30", "2026-13-01", "2026-01-01 24:00", "2026-01-01T12", "26-01-01",
                     "2026-01-01 12:00:00 MEZ", "2026-01-01 12:00 +1", "@", "@1x", "@99999999999999999999",
                     "2026-01-01 12:00:00 +99:00", "20260101", "0000-00-00", "9999-01-01", "2026-01-01Z "):
            self.assert_fails(self.run_program("metadata", "--modified", text, "a"), 2, "date")

    def test_touching_makes_the_dates_new(self):
        os.utime(self.path, (1, 1))
        self.output("metadata", "--touch", "a")
        shown = self.shown()
        self.assertGreater(self.path.stat().st_mtime, 10**9)
        self.assertNotIn("1970", shown["created"])

    def test_progress_is_marked_and_taken_away(self):
        self.needs_attributes()
        self.output("metadata", "--progress", "0.25", "a")
        self.assertEqual(self.output("metadata", "-g", "com.apple.progress.fractionCompleted", "a"), "0.250\n")
        self.assertIn("1984-01-24", self.shown()["created"])
        self.output("metadata", "--progress", "none", "a")
        self.assertEqual(self.run_program("metadata", "-g", "com.apple.progress.fractionCompleted", "a").returncode, 1)
        self.assertNotIn("1984", self.shown()["created"])

    def test_progress_beyond_the_whole_is_a_usage_error(self):
        for text in ("1.01", "-0.1", "nan", "half", ""):
            self.assert_fails(self.run_program("metadata", f"--progress={text}", "a"), 2, "progress")

    def test_a_lock_is_set_and_cleared_or_the_failure_is_told(self):
        run = self.run_program("metadata", "--lock", "a")
        if run.returncode != 0:
            self.assert_fails(run, 1, "a: the lock could not be set")
            self.assertEqual(self.shown()["locked"].strip(), "no")
            self.skipTest("nothing can be locked here")
        self.assertEqual(self.shown()["locked"].strip(), "yes")
        self.assertRaises(OSError, self.path.write_bytes, b"")
        self.output("metadata", "--unlock", "a")
        self.path.write_bytes(b"changed")

    def test_several_changes_are_made_at_once(self):
        self.needs_attributes()
        self.output("metadata", "-l", "blue", "-c", "text", "-m", "@5", "a")
        shown = self.shown()
        self.assertEqual((shown["label"].strip(), shown["comment"].strip()), ("blue", "text"))
        self.assertEqual(self.path.stat().st_mtime, 5)

    def test_what_may_not_be_changed_is_a_failure(self):
        if support.is_root():
            self.skipTest("the superuser may change everything")
        for options in (["-m", "@5"], ["-l", "red"], ["-c", "text"], ["-s", "a=b"]):
            self.assert_fails(self.run_program("metadata", *options, "/usr/bin/env"), 1, "/usr/bin/env")

    def test_a_missing_item_fails_and_the_others_are_shown(self):
        run = self.run_program("metadata", "missing", "a")
        self.assertEqual(run.returncode, 1)
        self.assertIn(b"kind:", run.stdout)
        self.assertEqual(run.stderr, b"kzfile: missing: No such file or directory\n")
