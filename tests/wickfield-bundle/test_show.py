"""wickfield-bundle show from outside."""
import json
import os
import pwd
import subprocess
import unittest

from support import NOBODY, TREE, WICKFIELD_BUNDLE, BundleCase, is_root, snapshot, without_colour


class Showing(BundleCase):
    def setUp(self):
        super().setUp()
        self.installer = self.bundle()
        self.place = self.folder / "target"

    def in_tree(self, path, contents=b"1"):
        """A file of the tree, by where it is to be installed."""
        return self.file(f"{self.installer.name}/{TREE}{path}", contents)

    def show(self, *words, **options):
        return self.output("show", self.installer.name, "--home", str(self.home), *words, **options)

    def plan(self, *words, **options):
        return json.loads(self.show("--json", *words, **options))

    def states(self, *words):
        return {item["destination"]: item["state"] for item in self.plan(*words)["items"]}

    def test_every_item_is_named_with_its_place_and_state(self):
        self.in_tree(f"{self.place}/new")
        self.in_tree(f"{self.place}/old")
        self.in_tree("/Users/user/Library/Preferences/x.plist")
        self.place.mkdir()
        (self.place / "old").write_text("stands there")
        self.assertEqual(self.states(), {f"{self.place}/new": "new", f"{self.place}/old": "replaced",
                                         f"{self.home}/Library/Preferences/x.plist": "new"})

    def test_nothing_on_the_disk_changes(self):
        self.in_tree(f"{self.place}/old")
        self.in_tree("/Users/user/Documents/P.vst3/Contents/x")
        self.in_tree("/Users/user/.Trash/x")
        self.file(f"{self.installer.name}/Contents/Resources/preinstall.sh", b"touch '%s/ran'\n" % bytes(self.folder))
        self.place.mkdir()
        (self.place / "old").write_text("stands there")
        (self.home / "Library/Logs/Corvane").mkdir(parents=True)
        (self.home / "Library/Logs/Corvane/wickfield-bundle.1.log").touch()  # a log that could be written
        before = snapshot(self.folder)
        for form in ("text", "tree", "json"):
            self.show("--format", form)
        self.assertEqual(snapshot(self.folder), before)

    def test_it_works_where_nothing_can_be_written(self):
        if not is_root():
            self.skipTest("only the superuser can make a file system read-only")
        self.in_tree(f"{self.place}/one")
        script = 'mount --bind "$1" "$1" && mount -o remount,bind,ro "$1" && shift && exec "$@"'
        run = subprocess.run(["unshare", "-m", "sh", "-c", script, "-", str(self.folder), WICKFIELD_BUNDLE, "show",
                              "--json", "--home", str(self.home), self.installer.name],
                             cwd=self.work, env=self.environment, capture_output=True, timeout=60, check=False)
        if b"mount" in run.stderr or b"unshare" in run.stderr:
            self.skipTest(f"no mounts here: {run.stderr.decode()}")
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        item, = json.loads(run.stdout)["items"]
        self.assertEqual(item["state"], "refused")
        self.assertIn("can only be read", item["reason"])

    def test_the_folders_that_are_made_are_named(self):
        self.in_tree(f"{self.place}/a/one")
        self.assertEqual([folder["path"] for folder in self.plan()["folders"]], [str(self.place), f"{self.place}/a"])

    def test_the_desktops_own_choice_of_folders_counts_in_that_home(self):
        self.in_tree("/Users/user/Documents/manual.txt")
        (self.home / ".config").mkdir()
        (self.home / ".config/user-dirs.dirs").write_text('XDG_DOCUMENTS_DIR="$HOME/Dokumente"\n')
        self.assertEqual(self.states(), {f"{self.home}/Dokumente/manual.txt": "new"})

    def test_a_home_folder_may_be_named_from_here_and_need_not_be_there(self):
        self.in_tree("/Users/user/x")
        plan = json.loads(self.output("show", "-j", "--home", "a/../new", self.installer.name))
        self.assertEqual(plan["home"], f"{self.work}/new")
        self.assertEqual(plan["items"][0]["destination"], f"{self.work}/new/x")
        self.assertEqual(plan["folders"], [{"path": f"{self.work}/new"}])

    def test_ones_own_home_counts_when_none_is_named(self):
        if is_root():
            self.skipTest("the superuser installs for whoever sits at the machine")
        self.in_tree("/Users/user/x")
        plan = json.loads(self.output("show", "-j", self.installer.name))
        self.assertEqual(plan["items"][0]["destination"], f"{self.home}/x")

    def test_the_superuser_can_look_with_another_users_rights(self):
        if not is_root():
            self.skipTest("only the superuser can")
        self.in_tree(f"{self.place}/one")
        self.place.mkdir(mode=0o755)
        for path in (self.folder, self.work):
            path.chmod(0o755)
        name = pwd.getpwuid(NOBODY).pw_name
        item, = self.plan("--user", name)["items"]
        self.assertEqual((item["state"], item["administrator"]), ("new", True))
        item, = self.plan()["items"]
        self.assertEqual((item["state"], item["administrator"]), ("new", False))

    def test_nobody_else_can(self):
        if is_root():
            self.skipTest("the superuser can")
        self.assert_fails(self.run_program("show", self.installer.name, "--user", "root"), 2, "superuser")

    def test_a_user_who_is_not_there_is_named(self):
        self.assert_fails(self.run_program("show", self.installer.name, "--user", "no such user"), 2, "no such user")

    def test_what_is_no_installer_makes_no_sense(self):
        self.file("file", b"")
        (self.work / "Empty.app/Contents").mkdir(parents=True)
        for name in ("nothing.app", "file", ".", "Empty.app"):
            with self.subTest(name):
                self.assert_fails(self.run_program("show", name), 2, name)

    def test_a_command_line_that_makes_no_sense_is_refused(self):
        for words in ([], ["a", "b"], [self.installer.name, "--format", "xml"], [self.installer.name, "--home", ""],
                      [self.installer.name, "--homes", "x"]):
            with self.subTest(words):
                self.assert_fails(self.run_program("show", *words), 2, "show:")

    def test_strictly_a_refusal_is_a_failure(self):
        self.in_tree(f"{self.place}/a/one")
        self.show("--strict")
        self.place.write_text("no folder")
        shown = self.show("--strict", code=1)
        self.assertIn("refused", shown)
        self.assertEqual(json.loads(self.show("-s", "-j", code=1))["totals"]["refused"], 1)

    def test_strictly_somebody_has_to_be_there_and_the_scripts_have_to_run(self):
        self.in_tree(f"{self.place}/one")
        script = self.file(f"{self.installer.name}/Contents/Resources/preinstall.swift", b"print(1)\n")
        self.show("--strict", code=1)
        script.unlink()
        self.show("--strict")
        if is_root():
            self.in_tree("/Users/user/x")
            shown = self.output("show", "--strict", self.installer.name, code=1)
            self.assertIn("--home", shown)

    def test_the_tree_is_drawn_in_ascii_where_the_locale_knows_no_more(self):
        self.in_tree(f"{self.place}/one")
        self.assertIn("└── ", self.show("-f", "tree"))
        self.environment["LANG"] = "C"
        self.assertIn("`-- ", self.show("-f", "tree"))

    def test_on_a_terminal_a_refusal_stands_out(self):
        self.in_tree(f"{self.place}/a/one")
        self.place.write_text("no folder")
        code, shown = self.run_on_terminal("show", self.installer.name, "--home", str(self.home), columns=60)
        self.assertEqual(code, 0)
        self.assertIn("\x1b[1;31mrefused\x1b[0m", shown)
        reasons = [line for line in without_colour(shown).splitlines() if line.startswith("            ")]
        self.assertTrue(reasons)
        code, shown = self.run_on_terminal("show", self.installer.name, "--home", str(self.home),
                                           environment={"NO_COLOR": "1"})
        self.assertNotIn("\x1b", shown)

    def test_hostile_names_do_nothing_to_a_terminal(self):
        self.in_tree(f"{self.place}/evil\x1b]0;owned\x07\x1b[2J\r\nnew line")
        for form in ("text", "tree"):
            _, shown = self.run_on_terminal("show", self.installer.name, "-f", form, "--home", str(self.home),
                                            environment={"NO_COLOR": "1"})
            self.assertNotIn("\x1b", shown)
            self.assertNotIn("\x07", shown)
            self.assertIn(r"evil\x1B]0;owned\x07\x1B[2J\r\nnew line", shown)

    def test_a_name_of_any_bytes_has_its_bytes_in_the_json(self):
        folder = os.fsencode(self.installer / TREE) + b"/opt"
        os.makedirs(folder)
        with open(folder + b"/\xff\xfe", "wb"):
            pass
        item, = self.plan()["items"]
        self.assertEqual(bytes.fromhex(item["destinationBytes"]), b"/opt/\xff\xfe")
        self.assertTrue(bytes.fromhex(item["sourceBytes"]).endswith(b"/opt/\xff\xfe"))

    def test_pipes_and_devices_in_the_tree_are_never_opened(self):
        self.in_tree(f"{self.place}/one")
        os.mkfifo(self.installer / f"{TREE}{self.place}/pipe")
        (self.installer / f"{TREE}{self.place}/P.vst3").mkdir()
        os.mkfifo(self.installer / f"{TREE}{self.place}/P.vst3/pipe")
        kinds = {os.path.basename(item["destination"]): item["kind"] for item in self.plan()["items"]}
        self.assertEqual(kinds, {"one": "file", "pipe": "special", "P.vst3": "package"})

    def test_a_very_deep_package_is_counted(self):
        package = self.installer / f"{TREE}/opt/P.vst3"
        package.mkdir(parents=True)
        here = os.open(package, os.O_RDONLY)
        depth = 3000
        for _ in range(depth):
            os.mkdir("d", dir_fd=here)
            below = os.open("d", os.O_RDONLY, dir_fd=here)
            os.close(here)
            here = below
        os.close(here)
        self.addCleanup(subprocess.run, ["rm", "-rf", str(package)], check=False)
        item, = self.plan()["items"]
        self.assertEqual((item["state"], item["kind"]), ("new", "package"))

    def test_a_very_deep_tree_ends_well(self):
        here = os.open(self.installer / TREE, os.O_RDONLY)
        for _ in range(10000):
            os.mkdir("d", dir_fd=here)
            below = os.open("d", os.O_RDONLY, dir_fd=here)
            os.close(here)
            here = below
        os.close(os.open("one", os.O_CREAT | os.O_WRONLY, dir_fd=here))
        os.close(here)
        self.addCleanup(subprocess.run, ["rm", "-rf", str(self.installer)], check=False)
        item, = self.plan()["items"]
        self.assertEqual(item["state"], "refused")
        self.assertIn("cannot be looked at", item["reason"])

    def test_settings_of_a_gigabyte_are_not_read_whole(self):
        with open(self.installer / "Contents/Resources/InstallerSettings.plist", "wb") as file:
            file.truncate(1 << 30)
        self.assertEqual(self.plan()["name"], "(null)")

    def test_output_that_cannot_be_written_is_a_failure(self):
        self.in_tree(f"{self.place}/one")
        with open("/dev/full", "wb") as full:
            run = self.run_program("show", self.installer.name, stdout=full)
        self.assertEqual(run.returncode, 1)


if __name__ == "__main__":
    unittest.main()
