"""The command line itself: help, words that make no sense, streams that are closed or full."""
import os
import pathlib
import re
import subprocess
import unittest

import support

COMMANDS = ["hash", "copy", "trash", "expand", "unique", "compress", "decompress", "metadata", "size", "wait"]
MANUAL = pathlib.Path(__file__).resolve().parents[2] / "tools" / "kzfile" / "kzfile.1"


class CommandLine(support.KzfileCase):
    def test_help_lists_every_command(self):
        text = self.output("--help")
        for command in COMMANDS:
            self.assertRegex(text, rf"(?m)^  {command} +\w")

    def test_each_command_explains_itself_and_does_nothing(self):
        for command in COMMANDS:
            self.assertRegex(self.output(command, "--help"), rf"\Ausage: kzfile {command} ")
        self.assertEqual(self.names_in(self.work), [])

    def test_help_fits_an_ordinary_terminal(self):
        for command in COMMANDS:
            for line in self.output(command, "--help").splitlines():
                self.assertLessEqual(len(line), 100, line)

    def test_the_manual_names_every_option(self):
        manual = MANUAL.read_text().replace("\\-", "-")
        for command in COMMANDS:
            for option in re.findall(r"--[a-z]+", self.output(command, "--help").split("options:")[1]):
                if option != "--help":
                    self.assertIn(option, manual)

    def test_the_manual_has_no_mistakes_in_its_markup(self):
        try:
            run = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", MANUAL], stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE, check=False, env={**self.environment, "MANWIDTH": "100"})
        except FileNotFoundError:
            raise unittest.SkipTest("there is no man on this machine") from None
        if run.returncode != 0 and b"groff" in run.stderr:
            raise unittest.SkipTest("this man cannot format: " + run.stderr.decode())
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        self.assertIn(b"kzfile", run.stdout)

    def test_the_version_is_printed(self):
        self.assertRegex(self.output("--version"), r"\Akzfile \d+\.\d+\.\d+\n\Z")

    def test_no_command_is_a_usage_error(self):
        self.assert_fails(self.run_program(), 2, "no command")

    def test_an_unknown_command_is_a_usage_error(self):
        self.assert_fails(self.run_program("hsah"), 2, "hsah")

    def test_an_unknown_option_is_a_usage_error_of_every_command(self):
        for command in COMMANDS:
            self.assert_fails(self.run_program(command, "--frobnicate", "a", "b"), 2, "--frobnicate")
            self.assert_fails(self.run_program(command, "-Q", "a", "b"), 2, "-Q")

    def test_no_name_is_a_usage_error_of_every_command(self):
        for command in COMMANDS:
            self.assert_fails(self.run_program(command), 2, command)

    def test_an_empty_name_is_a_usage_error_of_every_command(self):
        for command in COMMANDS:
            self.assert_fails(self.run_program(command, "", ""), 2)
        self.assertEqual(self.names_in(self.folder), ["desk", "home"])

    def test_a_name_too_many_is_a_usage_error(self):
        self.assert_fails(self.run_program("unique", "a", "b"), 2, "b")

    def test_an_option_without_its_value_is_a_usage_error(self):
        self.assert_fails(self.run_program("hash", "--algorithm"), 2, "--algorithm")

    def test_a_value_for_an_option_that_takes_none_is_a_usage_error(self):
        self.assert_fails(self.run_program("hash", "--zero=1", "a"), 2, "--zero")

    def test_options_may_follow_the_names(self):
        self.file("a")
        self.assertEqual(self.output("hash", "a", "-a", "md5"), self.output("hash", "--algorithm=md5", "a"))

    def test_after_two_dashes_everything_is_a_name(self):
        self.file("--zero")
        self.assertIn("--zero\n", self.output("hash", "--", "--zero"))

    def test_letters_can_be_joined(self):
        self.file("a")
        self.assertEqual(self.output("hash", "-zamd5", "a"), self.output("hash", "-z", "-a", "md5", "a"))

    def test_a_name_that_may_not_be_looked_at_is_not_called_missing(self):
        if support.is_root():
            self.skipTest("the superuser may look at everything")
        closed = self.file("closed/a").parent
        closed.chmod(0)
        self.addCleanup(closed.chmod, 0o700)
        for words in (["hash", "closed/a"], ["copy", "closed/a", "b"], ["trash", "closed/a"], ["size", "closed/a"],
                      ["metadata", "closed/a"], ["compress", "closed/a", "a.zip"]):
            self.assert_fails(self.run_program(*words), 1, "closed/a: Permission denied")

    def test_a_full_disk_behind_the_output_is_a_failure(self):
        self.file("a")
        with open("/dev/full", "wb") as full:
            for words in (["hash", "a"], ["size", "a"], ["metadata", "a"], ["unique", "b"], ["--help"]):
                run = self.run_program(*words, stdout=full)
                self.assertEqual(run.returncode, 1)
                self.assertRegex(run.stderr.decode(), r"\Akzfile: standard output: No space left on device\n\Z")

    def test_output_that_was_closed_is_a_failure(self):
        self.file("a")
        run = subprocess.run(["sh", "-c", f'exec "{support.KZFILE}" hash a >&-'], cwd=self.work, check=False,
                             env=self.environment, stderr=subprocess.PIPE)
        self.assertEqual(run.returncode, 1)
        self.assertIn(b"standard output", run.stderr)

    def test_a_command_that_prints_nothing_does_without_its_streams(self):
        self.file("a")
        run = subprocess.run(["sh", "-c", f'exec "{support.KZFILE}" copy a b <&- >&- 2>&-'], cwd=self.work, check=False,
                             env=self.environment)
        self.assertEqual(run.returncode, 0)
        self.assertEqual((self.work / "b").read_bytes(), b"contents\n")

    def test_a_reader_that_goes_away_is_told_of_by_the_status_alone(self):
        for number in range(2000):
            self.file(f"{number:0200}", b"")
        read, write = os.pipe()
        process = subprocess.Popen([support.KZFILE, "expand", "*"], cwd=self.work, env=self.environment, stdout=write,
                                   stderr=subprocess.PIPE)
        os.close(write)
        os.close(read)
        _, errors = process.communicate(timeout=support.LONGEST)
        self.assertEqual((process.returncode, errors), (1, b""))

    def test_nothing_is_coloured_in_a_pipe(self):
        self.file("a")
        self.output("metadata", "--label", "red", "a")
        self.assertNotIn("\x1b", self.output("--help") + self.output("metadata", "a"))
        self.assertNotIn(b"\x1b", self.run_program("hash", "missing").stderr)

    def test_a_terminal_gets_what_a_pipe_gets(self):
        self.file("folder/a.txt")
        self.output("compress", "folder", "folder.zip")
        for words in (["hash", "folder/a.txt"], ["expand", "fol*/*.txt"], ["unique", "folder"], ["size", "folder"],
                      ["wait", "-t", "1", "folder"], ["wait", "--free", "folder/a.txt"],
                      ["metadata", "-m", "@5", "folder"]):
            self.assertEqual(self.run_on_terminal(*words), (0, self.output(*words).replace("\n", "\r\n")))

    def test_archives_are_made_without_a_word_on_a_terminal(self):
        self.file("folder/a")
        self.assertEqual(self.run_on_terminal("compress", "folder", "a.zip"), (0, ""))
        self.assertEqual(self.run_on_terminal("decompress", "a.zip", "again"), (0, ""))
        self.assertEqual(self.names_in(self.work / "again" / "folder"), ["a"])

    def test_errors_are_coloured_on_a_terminal(self):
        code, shown = self.run_on_terminal("hash", "missing")
        self.assertEqual(code, 1)
        self.assertIn("\x1b[31mkzfile:", shown)

    def test_no_color_and_dumb_terminals_are_respected(self):
        for environment in ({"NO_COLOR": "1"}, {"TERM": "dumb"}, {"TERM": ""}):
            _, shown = self.run_on_terminal("hash", "missing", environment=environment)
            self.assertNotIn("\x1b", shown)
            self.assertIn("kzfile: ", shown)

    def test_a_name_cannot_act_on_the_terminal(self):
        name = "a\x1b]0;title\x07b"
        self.file(name)
        for words in (["hash", name], ["expand", "*"], ["size", name], ["metadata", name, name], ["trash", name + "c"]):
            _, shown = self.run_on_terminal(*words)
            self.assertNotIn("\x1b]", shown)
            self.assertNotIn("\x07", shown)
            self.assertIn("title", shown)
