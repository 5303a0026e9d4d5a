"""kzfile copy: real files, a full disk, Ctrl-C, and the progress bar on a terminal."""
import os
import re
import signal
import subprocess
import time
import unittest

import support


class Copy(support.KzfileCase):
    def test_every_destination_gets_the_contents_the_mode_and_the_date(self):
        source = self.file("a", os.urandom(100000))
        source.chmod(0o640)
        os.utime(source, ns=(10**18, 10**18))
        self.assertEqual(self.output("copy", "a", "b", "c", "d"), "")
        for name in ("b", "c", "d"):
            copy = self.work / name
            self.assertEqual(copy.read_bytes(), source.read_bytes())
            self.assertEqual((copy.stat().st_mode & 0o777, copy.stat().st_mtime_ns), (0o640, 10**18))

    def test_copies_are_verified_with_each_algorithm(self):
        source = self.file("a", os.urandom(300000))
        for name in ("md5", "sha1", "sha256", "SHA-512"):
            self.output("copy", "--verify", name, "a", f"copy by {name}")
            self.assertEqual((self.work / f"copy by {name}").read_bytes(), source.read_bytes())

    def test_an_empty_file_is_copied(self):
        self.file("a", b"")
        self.output("copy", "-V", "md5", "a", "b")
        self.assertEqual((self.work / "b").read_bytes(), b"")

    def test_a_folder_as_destination_is_copied_into(self):
        self.file("a")
        (self.work / "folder").mkdir()
        self.output("copy", "a", "folder", "folder/b")
        self.assertEqual(self.names_in(self.work / "folder"), ["a", "b"])

    def test_names_of_any_kind_are_copied(self):
        for name in (b"line\nbreak", b"\xff\xfe", "ü".encode(), b"-f", b" "):
            (self.work / os.fsdecode(name)).write_bytes(name)
            run = self.run_program("copy", "--", name, name + b" copy")
            self.assertEqual((run.returncode, run.stderr), (0, b""))
            self.assertEqual((self.work / os.fsdecode(name + b" copy")).read_bytes(), name)

    def test_extended_attributes_come_along(self):
        source = self.file("a")
        try:
            os.setxattr(source, "user.kept", b"text")
        except OSError as error:
            raise unittest.SkipTest(f"no extended attributes here: {error}") from None
        self.output("copy", "a", "b")
        self.assertEqual(os.getxattr(self.work / "b", "user.kept"), b"text")

    def test_what_is_there_is_not_overwritten_unasked(self):
        self.file("a", b"new")
        self.file("b", b"old")
        self.assert_fails(self.run_program("copy", "a", "c", "b"), 1, "b: is there already")
        self.assertEqual((self.work / "b").read_bytes(), b"old")
        self.assertFalse((self.work / "c").exists())

    def test_what_is_there_is_overwritten_when_asked(self):
        self.file("a", b"new")
        self.file("b", b"longer than that")
        self.output("copy", "--overwrite", "a", "b")
        self.assertEqual((self.work / "b").read_bytes(), b"new")

    def test_a_destination_that_is_the_source_is_refused_whatever_its_name(self):
        source = self.file("a", b"kept")
        (self.work / "link").symlink_to("a")
        os.link(source, self.work / "hard")
        for name in ("a", "./a", "link", "hard", "."):
            self.assert_fails(self.run_program("copy", "-f", "a", name), 1, "the source itself")
        self.assertEqual(source.read_bytes(), b"kept")

    def test_a_destination_that_is_named_twice_is_refused(self):
        self.file("a")
        self.assert_fails(self.run_program("copy", "a", "b", "./b"), 1)
        self.assertEqual(self.names_in(self.work), ["a"])

    def test_two_names_of_one_file_that_is_there_are_refused(self):
        self.file("a")
        os.link(self.file("b"), self.work / "c")
        self.assert_fails(self.run_program("copy", "-f", "a", "b", "c"), 1)

    def test_missing_things_are_named(self):
        self.file("a")
        self.assert_fails(self.run_program("copy", "missing", "b"), 1, "missing: No such file")
        self.assert_fails(self.run_program("copy", "a", "nowhere/b"), 1, "nowhere: there is no such folder")
        self.assert_fails(self.run_program("copy", "a", "nowhere/"), 1, "nowhere/: there is no such folder")

    def test_folders_and_pipes_are_not_copied(self):
        (self.work / "folder").mkdir()
        os.mkfifo(self.work / "pipe")
        self.assert_fails(self.run_program("copy", "folder", "b"), 1, "folder: is a folder")
        self.assert_fails(self.run_program("copy", "pipe", "b"), 1, "pipe")
        self.assertEqual(self.names_in(self.work), ["folder", "pipe"])

    def test_one_name_alone_is_a_usage_error(self):
        self.assert_fails(self.run_program("copy", "a"), 2)

    def test_an_unknown_algorithm_is_a_usage_error_before_anything_is_copied(self):
        self.file("a")
        self.assert_fails(self.run_program("copy", "--verify", "crc", "a", "b"), 2, "crc")
        self.assertEqual(self.names_in(self.work), ["a"])

    def test_a_folder_that_may_not_be_written_to_leaves_no_copy_anywhere(self):
        if support.is_root():
            self.skipTest("the superuser may write everywhere")
        self.file("a")
        (self.work / "closed").mkdir(0o500)
        self.assert_fails(self.run_program("copy", "a", "b", "closed/b"), 1, "closed/b: Permission denied")
        self.assertEqual(self.names_in(self.work), ["a", "closed"])

    def test_a_full_disk_is_named_and_leaves_no_copy_anywhere(self):
        if not support.is_root():
            self.skipTest("only the superuser can mount a small disk")
        support.make_large_file(self.work / "a", 8)
        small = self.work / "small"
        small.mkdir()
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=4m", "tmpfs", small], check=False,
                                 stderr=subprocess.PIPE)
        if mounted.returncode != 0:
            self.skipTest("no disk can be mounted here: " + mounted.stderr.decode().strip())
        self.addCleanup(subprocess.run, ["umount", "-l", small], check=True)
        self.assert_fails(self.run_program("copy", "a", "b", "small/b"), 1, "small/b: No space left on device")
        self.assertEqual((self.names_in(self.work), self.names_in(small)), (["a", "small"], []))

    def interrupt(self, number, *words):
        """Sends the signal once the copy has begun; the exit code and what is said."""
        process = subprocess.Popen([support.KZFILE, "copy", *words], cwd=self.work, env=self.environment,
                                   stderr=subprocess.PIPE)
        while process.poll() is None and not any(self.work.glob("copy*")):
            time.sleep(0.001)
        process.send_signal(number)
        _, errors = process.communicate(timeout=support.LONGEST)
        return process.returncode, errors

    def test_ctrl_c_leaves_no_part_of_a_copy(self):
        support.make_large_file(self.work / "a", 200)
        self.assertEqual(self.interrupt(signal.SIGINT, "--verify", "sha512", "a", "copy 1", "copy 2"), (130, b""))
        self.assertEqual(self.names_in(self.work), ["a"])

    def test_a_request_to_terminate_leaves_no_part_of_a_copy(self):
        support.make_large_file(self.work / "a", 200)
        self.assertEqual(self.interrupt(signal.SIGTERM, "--verify", "sha512", "a", "copy"), (143, b""))
        self.assertEqual(self.names_in(self.work), ["a"])

    def test_a_second_ctrl_c_leaves_no_part_either(self):
        support.make_large_file(self.work / "a", 200)
        process = subprocess.Popen([support.KZFILE, "copy", "-V", "sha512", "a", "copy"], cwd=self.work,
                                   env=self.environment, stderr=subprocess.PIPE)
        while process.poll() is None and not (self.work / "copy").exists():
            time.sleep(0.001)
        while process.poll() is None:
            process.send_signal(signal.SIGINT)
            time.sleep(0.0005)
        process.communicate()
        self.assertEqual((process.returncode, self.names_in(self.work)), (130, ["a"]))

    def test_a_hang_up_that_is_ignored_stays_ignored(self):
        support.make_large_file(self.work / "a", 100)
        process = subprocess.Popen(["nohup", support.KZFILE, "copy", "-V", "sha512", "a", "copy"], cwd=self.work,
                                   env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        while process.poll() is None and not (self.work / "copy").exists():
            time.sleep(0.001)
        process.send_signal(signal.SIGHUP)
        self.assertEqual(process.wait(support.LONGEST), 0)
        self.assertEqual((self.work / "copy").stat().st_size, 100 << 20)


class ProgressBar(support.KzfileCase):
    def test_it_is_drawn_on_a_terminal_and_left_full(self):
        support.make_large_file(self.work / "a", 100)
        code, shown = self.run_on_terminal("copy", "--verify", "sha1", "a", "b")
        self.assertEqual(code, 0)
        lines = support.without_colour(shown).replace("\x1b[K", "").split("\r")
        self.assertRegex(lines[1], r"\Aa  \[\.{10,}\]   0%  0 B of 100\.00 MB")
        self.assertTrue(any(re.search(r"\[#+\.+\] +[1-9]\d?%  \d+\.\d\d MB of 100\.00 MB", line) for line in lines))
        self.assertRegex(lines[-2], r"\[#+\] 100%  100\.00 MB, .*/s, verified\Z")
        self.assertEqual(lines[-1], "\n")

    def test_it_counts_the_bytes_that_a_link_leads_to(self):
        self.file("a", b"x" * 2048)
        (self.work / "link").symlink_to("a")
        self.assertIn("2.00 KB", self.run_on_terminal("copy", "link", "b")[1])

    def test_it_never_wraps_a_line(self):
        support.make_large_file(self.work / ("n" * 120), 30)
        for columns in (20, 60, 80, 200):
            _, shown = self.run_on_terminal("copy", "-f", "n" * 120, "b", columns=columns)
            for line in shown.replace("\x1b[K", "").split("\r"):
                self.assertLess(len(line.rstrip("\n")), columns)

    def test_there_is_none_in_a_pipe(self):
        support.make_large_file(self.work / "a", 50)
        run = self.run_program("copy", "-V", "md5", "a", "b")
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, b"", b""))

    def test_there_is_none_when_it_is_not_wanted(self):
        support.make_large_file(self.work / "a", 50)
        self.assertEqual(self.run_on_terminal("copy", "--quiet", "a", "b"), (0, ""))

    def test_there_is_none_on_a_terminal_that_cannot_move_its_cursor(self):
        self.file("a")
        self.assertEqual(self.run_on_terminal("copy", "a", "b", environment={"TERM": "dumb"}), (0, ""))

    def test_it_has_no_colour(self):
        self.file("a")
        _, shown = self.run_on_terminal("copy", "a", "b", environment={"NO_COLOR": "1"})
        self.assertIn("100%", shown)
        self.assertNotRegex(shown, r"\x1b\[[0-9;]*m")

    def test_ctrl_c_takes_it_away_and_the_copies_too(self):
        support.make_large_file(self.work / "a", 200)
        code, shown = self.run_on_terminal("copy", "-V", "sha512", "a", "b", "c", typed=b"\x03", typed_after=b"MB/s")
        self.assertEqual(code, 130)
        self.assertTrue(shown.endswith("\r\x1b[K"))
        self.assertEqual(self.names_in(self.work), ["a"])

    def test_a_failure_takes_it_away_and_says_why(self):
        self.file("a")
        os.mkfifo(self.work / "pipe")
        code, shown = self.run_on_terminal("copy", "-f", "a", "pipe")
        self.assertEqual(code, 1)
        self.assertRegex(support.without_colour(shown), r"\r\x1b\[Kkzfile: [^\n]*pipe: ")
