"""kzfile trash, with a home folder and so a Trash of the test's own."""
import os

import support


class Trash(support.KzfileCase):
    def setUp(self):
        super().setUp()
        self.data = self.home / ".local" / "share"
        self.trashed = self.data / "Trash" / "files"

    def needs_trash(self):
        if support.is_root():
            self.skipTest("the superuser's Trash is that of the person at the console")

    def test_items_lie_in_the_trash_afterwards(self):
        self.needs_trash()
        self.file("a", b"kept")
        self.file("folder/b")
        self.assertEqual(self.output("trash", "a", "folder/"), "")
        self.assertEqual(self.names_in(self.work), [])
        self.assertEqual((self.trashed / "a").read_bytes(), b"kept")
        self.assertEqual(self.names_in(self.trashed), ["a", "folder"])
        self.assertIn("Path=", (self.data / "Trash" / "info" / "a.trashinfo").read_text())

    def test_names_of_any_kind_are_trashed(self):
        self.needs_trash()
        names = [b"line\nbreak", b"\xff\xfe", b"-r", b" "]
        for name in names:
            (self.work / os.fsdecode(name)).write_bytes(name)
        run = self.run_program("trash", "--", *names)
        self.assertEqual((run.returncode, run.stderr, self.names_in(self.work)), (0, b"", []))

    def test_a_link_goes_and_what_it_leads_to_stays(self):
        self.needs_trash()
        self.file("folder/a")
        (self.work / "link").symlink_to("folder")
        self.output("trash", "link")
        self.assertEqual(self.names_in(self.work), ["folder"])
        self.assertEqual(self.names_in(self.work / "folder"), ["a"])

    def test_of_two_items_of_one_name_both_are_kept(self):
        self.needs_trash()
        self.file("a", b"first")
        self.output("trash", "a")
        self.file("a", b"second")
        self.output("trash", "a")
        self.assertEqual(sorted(path.read_bytes() for path in self.trashed.iterdir()), [b"first", b"second"])

    def test_a_missing_item_fails_and_the_others_go(self):
        self.needs_trash()
        self.file("a")
        self.assert_fails(self.run_program("trash", "missing", "a"), 1, "missing: No such file")
        self.assertEqual(self.names_in(self.work), [])

    def test_an_item_that_may_not_be_moved_stays_and_is_named(self):
        self.needs_trash()
        closed = self.file("closed/a").parent
        closed.chmod(0o500)
        self.addCleanup(closed.chmod, 0o700)
        self.assert_fails(self.run_program("trash", "closed/a"), 1, "a")
        self.assertTrue((closed / "a").exists())

    def test_a_link_that_leads_nowhere_stays_and_is_named(self):
        (self.work / "link").symlink_to("nowhere")
        self.assert_fails(self.run_program("trash", "link"), 1, "leads nowhere")
        self.assertTrue((self.work / "link").is_symlink())

    def test_the_systems_folders_are_refused(self):
        for name in ("/", "/usr", "/usr/bin/env", "/usr/../usr/", "/Library"):
            if os.path.exists(name):
                self.assert_fails(self.run_program("trash", name), 1, name)

    def test_the_home_folder_is_refused_by_any_name(self):
        self.needs_trash()
        (self.work / "link").symlink_to(self.folder)
        for name in (self.home, "link/home", "../home/", "../desk/../home"):
            self.assert_fails(self.run_program("trash", name), 1, "system's folders")
        self.assertTrue(self.home.is_dir())

    def test_dots_are_refused(self):
        for name in (".", "..", "./", "../desk/."):
            self.assert_fails(self.run_program("trash", name), 1, "by its name only")
        self.assertTrue(self.work.is_dir())
