"""wickfield-bundle check: reports, exit codes, and bundles that mean no good."""
import json
import os
import resource
import shutil
import signal
import stat
import subprocess
import time

from support import BundleCase, NOBODY, TREE, is_root, without_colour
import support


class CheckCase(BundleCase):
    def setUp(self):
        super().setUp()
        self.name = "Small Installer.app"
        self.made = self.bundle(self.name)
        self.file(f"{self.name}/Contents/MacOS/Wickfield", b"#!/bin/sh\n", 0o755)
        self.file(f"{self.name}/Contents/Info.plist",
                  b'<plist version="1.0"><dict><key>CFBundleExecutable</key><string>Wickfield</string>'
                  b"<key>CFBundleIdentifier</key><string>com.example.small</string>"
                  b"<key>CFBundlePackageType</key><string>APPL</string></dict></plist>\n")
        self.in_tree("Library/Small/presets")

    def in_tree(self, path, contents=b"contents\n", mode=0o644):
        return self.file(f"{self.name}/{TREE}/{path}", contents, mode)

    def report(self, *words, code=None):
        """Of --json; the exit code is looked at when one is given."""
        run = self.run_program("check", "--json", self.name, *words)
        self.assertEqual(run.stderr, b"")
        if code is not None:
            self.assertEqual(run.returncode, code, run.stdout)
        return json.loads(run.stdout)

    def found(self, rule):
        """The places, from the tree, at which the rule found something."""
        return [finding["place"].removeprefix(TREE + "/") for finding in self.report()["findings"]
                if finding["rule"] == rule]


class Codes(CheckCase):
    def test_is_zero_for_a_bundle_without_errors(self):
        run = self.run_program("check", self.name)
        self.assertEqual((run.returncode, run.stderr), (0, b""), run.stdout)
        self.assertIn(b"Small Installer.app: 0 errors, ", run.stdout)

    def test_is_one_for_an_error(self):
        self.in_tree("readme.txt")
        run = self.run_program("check", self.name)
        self.assertEqual((run.returncode, run.stderr), (1, b""))
        self.assertIn(b"error tree-top-item\n  " + TREE.encode() + b"/readme.txt\n", run.stdout)

    def test_counts_warnings_as_errors_when_that_is_wanted(self):
        self.in_tree("Library/Small/secret", mode=0o600)
        self.assertEqual(self.run_program("check", self.name).returncode, 0)
        self.assertEqual(self.run_program("check", "--strict", self.name).returncode, 1)

    def test_is_two_for_what_is_no_bundle(self):
        self.assert_fails(self.run_program("check", "missing.app"), 2, "missing.app", "nothing of this name")
        self.assert_fails(self.run_program("check", "."), 2, ".app")
        self.file("file.app")
        self.assert_fails(self.run_program("check", "file.app"), 2, "not a folder")

    def test_is_two_for_a_command_line_without_sense(self):
        self.assert_fails(self.run_program("check"), 2, "no bundle is named")
        self.assert_fails(self.run_program("check", self.name, "another.app"), 2, "another.app")
        self.assert_fails(self.run_program("check", "--rules", self.name), 2, self.name)
        self.assert_fails(self.run_program("check", "--verbose", self.name), 2, "--verbose")

    def test_says_in_json_too_that_there_is_no_bundle(self):
        run = self.run_program("check", "--json", "missing.app")
        self.assertEqual((run.returncode, run.stderr), (2, b""))
        self.assertEqual([finding["rule"] for finding in json.loads(run.stdout)["findings"]], ["not-a-bundle"])

    def test_takes_a_bundle_by_any_of_its_paths(self):
        self.in_tree("readme.txt")
        for name, folder in ((f"{self.name}/", self.work), (f"../desk/{self.name}", self.work),
                             (str(self.made), "/"), (".", self.made), ("..", self.made / "Contents")):
            run = self.run_program("check", "--json", name, cwd=folder)
            self.assertEqual(run.returncode, 1, (name, run.stderr))
            rules = {finding["rule"] for finding in json.loads(run.stdout)["findings"]}
            self.assertIn("tree-top-item", rules, name)
            self.assertNotIn("settings-missing", rules, name)

    def test_goes_by_links_in_a_path_as_the_system_does(self):
        self.in_tree("readme.txt")
        (self.folder / "deep" / "down").mkdir(parents=True)
        (self.work / "aside").symlink_to("../deep/down")
        (self.folder / "deep" / "here").symlink_to(self.work)
        run = self.run_program("check", f"aside/../here/{self.name}")
        self.assertEqual((run.returncode, run.stderr), (1, b""))

    def test_ends_well_in_a_working_folder_that_is_gone(self):
        gone = self.folder / "gone"
        gone.mkdir()
        script = 'cd "$1" && rmdir "$1" && exec "$2" "$3" Gone.app'
        for command in ("check", "show"):
            gone.mkdir(exist_ok=True)
            run = subprocess.run(["sh", "-c", script, "sh", str(gone), support.WICKFIELD_BUNDLE, command], check=False,
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment, timeout=60)
            self.assert_fails(run, 2, "Gone.app", "nothing of this name")

    def test_has_its_output_lost_as_a_failure(self):
        with open("/dev/full", "wb") as full:
            run = self.run_program("check", self.name, stdout=full)
        self.assertEqual(run.returncode, 1)
        self.assertIn(b"standard output", run.stderr)


class Texts(CheckCase):
    def test_have_no_colour_in_a_pipe(self):
        self.in_tree("readme.txt")
        self.assertNotIn(b"\x1b", self.run_program("check", self.name).stdout)

    def test_have_colour_on_a_terminal_that_has_it(self):
        self.in_tree("readme.txt")
        code, shown = self.run_on_terminal("check", self.name)
        self.assertEqual(code, 1)
        self.assertIn("\x1b[1;31merror\x1b[0m tree-top-item", shown)
        self.assertNotIn("\x1b", self.run_on_terminal("check", self.name, environment={"NO_COLOR": "1"})[1])
        self.assertNotIn("\x1b", self.run_on_terminal("check", self.name, environment={"TERM": "dumb"})[1])

    def test_fit_the_terminal(self):
        self.in_tree("readme.txt")
        shown = without_colour(self.run_on_terminal("check", self.name, columns=60)[1])
        reasons = [line.rstrip("\r") for line in shown.split("\n") if line.startswith("    ")]
        self.assertGreater(len(reasons), 2)
        self.assertLessEqual(max(len(line) for line in reasons), 60)

    def test_leave_no_name_that_could_act_on_the_terminal(self):
        self.in_tree("Library/Small/\x1b]0;title\x07\x1b[2J\n\u202e")
        _, shown = self.run_on_terminal("check", self.name)
        self.assertIn("\\x1B]0;title\\x07\\x1B[2J\\n\\u202E", without_colour(shown))
        self.assertNotRegex(without_colour(shown), r"[\x00-\x09\x0b\x0c\x0e-\x1f\x7f\u202e]")

    def test_name_ten_of_many_and_count_the_others(self):
        for number in range(25):
            self.in_tree(f"file {number:02}")
        text = self.run_program("check", self.name).stdout.decode()
        self.assertEqual(text.count(TREE + "/file "), 10)
        self.assertIn("and 15 more, which --json lists", text)
        self.assertEqual(len(self.found("tree-top-item")), 25)


class Jsons(CheckCase):
    def test_are_as_documented(self):
        self.in_tree("readme.txt")
        report = self.report(code=1)
        self.assertEqual(list(report), ["format", "bundle", "errors", "warnings", "notes", "findings"])
        self.assertEqual((report["format"], report["bundle"]), (1, self.name))
        for finding in report["findings"]:
            self.assertEqual(list(finding), ["severity", "rule", "place", "reason", "remedy"])
            self.assertTrue(all(isinstance(text, str) for text in finding.values()))
        for severity in ("error", "warning", "note"):
            self.assertEqual(report[severity + "s"],
                             sum(finding["severity"] == severity for finding in report["findings"]))

    def test_are_valid_for_names_of_any_bytes(self):
        os.mkdir(os.fsencode(self.made) + b"/" + TREE.encode() + b"/Library/\xff\xc3\n\x1b\"\\")
        run = self.run_program("check", "--json", self.name)
        self.assertRegex(run.stdout, rb"\A[\n -~]*\Z")
        self.assertIn("Library/\ufffd\ufffd\n\x1b\"\\", self.found("name-not-utf8"))

    def test_are_the_same_on_a_terminal(self):
        run = self.run_program("check", "--json", self.name)
        _, shown = self.run_on_terminal("check", "--json", self.name)
        self.assertEqual(shown.replace("\r\n", "\n"), run.stdout.decode())

    def test_have_all_of_a_hundred_thousand_findings(self):
        folder = self.made / TREE / "Library/Small"
        for number in range(1000):
            (folder / f"{number} ").touch()
        self.assertEqual(self.report()["warnings"], 1000)


class Reports(CheckCase):
    """The findings for programs in a file, those for people printed all the same."""

    def written(self, name="findings.json"):
        return (self.work / name).read_bytes()

    def test_hold_what_json_prints(self):
        self.in_tree("readme.txt")
        for words in (("--report", "findings.json"), ("--report=findings.json",), ("-rfindings.json", "--json")):
            run = self.run_program("check", *words, self.name)
            self.assertEqual((run.returncode, run.stderr), (1, b""))
            self.assertEqual(self.written(), self.run_program("check", "--json", self.name).stdout)
            (self.work / "findings.json").unlink()

    def test_change_nothing_of_what_is_printed(self):
        self.in_tree("readme.txt")
        for words in ((), ("--json",)):
            self.assertEqual(self.run_program("check", "--report", "findings.json", self.name, *words).stdout,
                             self.run_program("check", self.name, *words).stdout)

    def test_keep_the_exit_codes(self):
        self.assertEqual(self.run_program("check", "--report", "a", self.name).returncode, 0)
        self.in_tree("Library/Small/secret", mode=0o600)
        self.assertEqual(self.run_program("check", "--report", "b", "--strict", self.name).returncode, 1)
        self.assertEqual(json.loads(self.written("b"))["errors"], 0)

    def test_say_that_there_is_no_bundle(self):
        self.assert_fails(self.run_program("check", "--report", "findings.json", "missing.app"), 2, "nothing of this name")
        self.assertEqual([finding["rule"] for finding in json.loads(self.written())["findings"]], ["not-a-bundle"])

    def test_take_the_place_of_an_older_one_and_leave_nothing_else(self):
        self.file("findings.json", b"old\n", 0o600)
        self.run_program("check", "--report", "findings.json", self.name)
        self.assertEqual(json.loads(self.written())["format"], 1)
        self.assertEqual(stat.S_IMODE((self.work / "findings.json").stat().st_mode), 0o600)
        self.assertEqual(sorted(os.listdir(self.work)), sorted([self.name, "findings.json"]))

    def test_that_cannot_be_written_are_a_failure_after_all_is_printed(self):
        os.mkfifo(self.work / "pipe")
        printed = self.run_program("check", self.name).stdout
        for file in ("nowhere/findings.json", ".", "pipe", "/dev/null", f"{'long' * 100}.json"):
            run = self.run_program("check", "--report", file, self.name)
            self.assertEqual((run.returncode, run.stdout), (1, printed), file)
            self.assertRegex(run.stderr.decode(), r"\Awickfield-bundle: [^\n]*the report cannot be written: [^\n]+\n\Z")
            self.assertIn(file, run.stderr.decode())
        self.assertEqual(self.run_program("check", "--report", ".", "missing.app").returncode, 2)

    def test_need_a_name_and_a_check(self):
        self.assert_fails(self.run_program("check", "--report=", self.name), 2, "--report needs a path")
        self.assert_fails(self.run_program("check", "--rules", "--report", "a"), 2, "--report")
        self.assertFalse((self.work / "a").exists())


class Rules(CheckCase):
    def listed(self):
        return json.loads(self.output("check", "--rules", "--json"))

    def test_are_listed_with_what_they_mean(self):
        rules = self.listed()
        self.assertGreater(len(rules), 50)
        self.assertEqual([rule["rule"] for rule in rules], sorted(rule["rule"] for rule in rules))
        text = self.output("check", "--rules")
        for rule in rules:
            self.assertIn(f"{rule['severity']} {rule['rule']}\n    {rule['meaning']}\n", text)

    def test_are_the_ones_that_find_something(self):
        self.in_tree("readme.txt")
        self.in_tree("Users/User/a")
        self.in_tree("Library/Thumbs.db")
        listed = {rule["rule"]: rule["severity"] for rule in self.listed()}
        for finding in self.report()["findings"]:
            self.assertEqual(finding["severity"], listed[finding["rule"]])


class Hostile(CheckCase):
    def test_never_waits_for_a_pipe_or_a_socket(self):
        tree = self.made / TREE / "Library"
        os.mkfifo(tree / "pipe")
        os.mkfifo(self.made / "Contents/Resources/preinstall.sh")
        (self.made / "Contents/Info.plist").unlink()
        os.mkfifo(self.made / "Contents/Info.plist")
        os.mknod(tree / "socket", stat.S_IFSOCK | 0o644)
        report = self.report(code=1)
        places = {finding["place"] for finding in report["findings"] if finding["rule"] == "special-file"}
        self.assertEqual(places, {f"{TREE}/Library/pipe", f"{TREE}/Library/socket", "Contents/Info.plist",
                                  "Contents/Resources/preinstall.sh"})

    def test_reads_no_file_of_a_terabyte(self):
        for place in ("Contents/Info.plist", "Contents/Resources/InstallerSettings.plist",
                      "Contents/Resources/preinstall.sh", f"{TREE}/Library/Reverb.vst3/Contents/Info.plist",
                      f"{TREE}/Library/Reverb.vst3/Contents/MacOS/Reverb"):
            path = self.file(f"{self.name}/{place}", b"", 0o755)
            try:
                os.truncate(path, 1 << 40)
            except OSError:
                self.skipTest("the file system holds no file of this size")
        began = time.monotonic()
        self.report(code=1)
        self.assertLess(time.monotonic() - began, 20)

    def test_ends_where_links_lead_round_and_round(self):
        library = self.made / TREE / "Library"
        for number in range(20):
            (library / str(number)).mkdir()
            if number > 0:
                (library / str(number - 1) / "left").symlink_to(f"../{number}")
                (library / str(number - 1) / "right").symlink_to(f"../{number}")
        (library / "self").symlink_to("self")
        (library / "top").symlink_to("../..")
        (library / "disk").symlink_to("/")
        began = time.monotonic()
        rules = {finding["rule"] for finding in self.report(code=1)["findings"]}
        self.assertLess(time.monotonic() - began, 30)
        self.assertLessEqual({"tree-endless", "link-loop", "link-folder-outside"}, rules)

    def test_goes_ten_thousand_folders_deep(self):
        present = os.open(self.made / TREE, os.O_RDONLY)
        for _ in range(10000):
            os.mkdir("f", dir_fd=present)
            following = os.open("f", os.O_RDONLY, dir_fd=present)
            os.close(present)
            present = following
        os.close(present)
        try:
            rules = {finding["rule"] for finding in self.report(code=1)["findings"]}
        finally:
            subprocess.run(["rm", "-rf", str(self.made / TREE / "f")], check=False)
        self.assertLessEqual({"too-deep", "path-too-long"}, rules)

    def test_needs_no_thread_but_its_own(self):
        for number in range(60):
            self.file(f"{self.name}/{TREE}/Library/Pebble/{number}/.DS_Store", b"x")
        for path in (self.folder, self.work):
            path.chmod(0o755)
        options = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if is_root() else {}
        whole = self.run_program("check", "--json", self.name, **options)
        alone = self.run_program("check", "--json", self.name, **options,
                                 preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NPROC, (1, 1)))
        self.assertEqual(alone.stderr, b"")
        skipped = [each["place"] for each in json.loads(whole.stdout)["findings"] if each["rule"] == "clutter-skipped"]
        self.assertEqual(len(skipped), 60)
        self.assertEqual(skipped, [each["place"] for each in json.loads(alone.stdout)["findings"]
                                   if each["rule"] == "clutter-skipped"])

    def test_names_what_it_may_not_read(self):
        secret = self.made / TREE / "Library/secret"
        secret.mkdir(0o700)
        (secret / "a").touch()
        if is_root():
            self.folder.chmod(0o755)
            run = self.run_program("check", "--json", self.name, user=NOBODY, group=NOBODY, extra_groups=[])
        else:
            secret.chmod(0)
            self.addCleanup(secret.chmod, 0o700)
            run = self.run_program("check", "--json", self.name)
        self.assertEqual((run.returncode, run.stderr), (1, b""))
        self.assertEqual([finding["place"] for finding in json.loads(run.stdout)["findings"]
                          if finding["rule"] == "unreadable"], [f"{TREE}/Library/secret"])

    def test_bears_a_bundle_that_changes_meanwhile(self):
        for number in range(300):
            self.in_tree(f"Library/{number}/a")
        process = subprocess.Popen([support.WICKFIELD_BUNDLE, "check", "--json", self.name], cwd=self.work,
                                   env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        shutil.rmtree(self.made / TREE / "Library")
        out, errors = process.communicate(timeout=support.LONGEST)
        self.assertEqual(errors, b"")
        self.assertIn(process.returncode, (0, 1))
        json.loads(out)

    def test_ends_at_once_when_it_is_interrupted(self):
        for number in range(3000):
            (self.made / TREE / "Library" / f"{number}").touch()
        process = subprocess.Popen([support.WICKFIELD_BUNDLE, "check", self.name], cwd=self.work, env=self.environment,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        process.send_signal(signal.SIGSTOP)
        process.send_signal(signal.SIGINT)
        process.send_signal(signal.SIGCONT)
        self.assertIn(process.wait(timeout=support.LONGEST), (0, 130, -signal.SIGINT))

    def test_takes_names_that_begin_with_a_dash(self):
        shutil.move(self.made, self.work / "-j.app")
        run = self.run_program("check", "--", "-j.app")
        self.assertEqual((run.returncode, run.stderr), (0, b""), run.stdout)
