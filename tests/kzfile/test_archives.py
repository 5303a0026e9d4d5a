"""kzfile compress and decompress, against Python's zip files."""
import os
import shutil
import signal
import subprocess
import time
import zipfile

import support


class Archives(support.KzfileCase):
    def test_a_tree_comes_back_as_it_was(self):
        self.file("folder/a", b"A" * 5000)
        self.file("folder/deep/ü", b"")
        (self.work / "folder" / "link").symlink_to("a")
        (self.work / "folder" / "a").chmod(0o751)
        self.assertEqual(self.output("compress", "folder", "folder.zip"), "")
        self.assertEqual(self.output("decompress", "folder.zip", "again"), "")
        again = self.work / "again" / "folder"
        self.assertEqual((again / "a").read_bytes(), b"A" * 5000)
        self.assertEqual((again / "a").stat().st_mode & 0o777, 0o751)
        self.assertEqual(self.names_in(again), ["a", "deep", "link"])
        self.assertEqual(os.readlink(again / "link"), "a")

    def test_a_folders_contents_can_be_stored_without_it(self):
        self.file("folder/a")
        self.output("compress", "--contents", "folder", "folder.zip")
        self.assertEqual(zipfile.ZipFile(self.work / "folder.zip").namelist(), ["a"])

    def test_an_archive_of_another_program_is_unpacked(self):
        with zipfile.ZipFile(self.work / "other.zip", "w", zipfile.ZIP_DEFLATED) as archive:
            archive.writestr("deep/name", "text")
        self.output("decompress", "other.zip", "out")
        self.assertEqual((self.work / "out" / "deep" / "name").read_text(), "text")

    def test_names_that_begin_with_a_dash_are_names(self):
        self.file("-a")
        self.output("compress", "--", "-a", "-b.zip")
        self.output("decompress", "--", "-b.zip", "-c")
        self.assertEqual(self.names_in(self.work / "-c"), ["-a"])

    def test_what_is_there_is_not_replaced_unasked(self):
        self.file("a")
        self.file("a.zip", b"kept")
        self.file("out/kept")
        self.assert_fails(self.run_program("compress", "a", "a.zip"), 1, "a.zip: is there already")
        self.assert_fails(self.run_program("decompress", "a", "out"), 1, "out: is there already")
        self.assertEqual((self.work / "a.zip").read_bytes(), b"kept")
        self.assertEqual(self.names_in(self.work / "out"), ["kept"])

    def test_what_is_there_goes_to_the_trash_when_asked(self):
        if support.is_root():
            self.skipTest("the superuser's Trash is that of the person at the console")
        self.file("a")
        self.file("a.zip", b"old")
        self.output("compress", "--replace", "a", "a.zip")
        self.assertTrue(zipfile.is_zipfile(self.work / "a.zip"))
        self.assertEqual((self.home / ".local/share/Trash/files/a.zip").read_bytes(), b"old")

    def test_what_the_result_is_made_of_is_never_replaced(self):
        self.file("folder/a.zip")
        for words in (["compress", "-r", "folder", "folder"], ["compress", "-r", "folder/a.zip", "folder"],
                      ["decompress", "-r", "folder/a.zip", "folder"],
                      ["decompress", "-r", "folder/a.zip", "folder/../folder/a.zip"]):
            self.assert_fails(self.run_program(*words), 1, "is what the result is made of")
        self.assertEqual(self.names_in(self.work / "folder"), ["a.zip"])

    def test_the_systems_folders_are_never_replaced(self):
        self.file("a")
        self.output("compress", "a", "a.zip")
        self.assert_fails(self.run_program("decompress", "--replace", "a.zip", "/usr"), 1, "system's folders")

    def test_without_a_trash_nothing_is_replaced(self):
        self.file("a")
        self.file("a.zip", b"kept")
        self.home.chmod(0o500)
        self.addCleanup(self.home.chmod, 0o700)
        if not support.is_root():
            (self.work.parent).chmod(0o500)
            self.addCleanup(self.work.parent.chmod, 0o700)
        run = self.run_program("compress", "--replace", "a", "a.zip")
        if run.returncode == 0:
            self.skipTest("there is another Trash here, on this disk or of the person at the console")
        self.assertEqual((self.work / "a.zip").read_bytes(), b"kept")

    def test_a_damaged_archive_leaves_nothing(self):
        self.file("a", os.urandom(50000))
        self.output("compress", "a", "a.zip")
        whole = (self.work / "a.zip").read_bytes()
        self.file("cut.zip", whole[: len(whole) // 2])
        self.file("changed.zip", whole[:1000] + bytes([whole[1000] ^ 255]) + whole[1001:])
        self.file("no.zip", b"this is text")
        for name in ("cut.zip", "changed.zip", "no.zip"):
            run = self.run_program("decompress", name, "out")
            self.assertEqual((run.returncode, run.stdout), (1, b""))
            self.assertRegex(run.stderr.decode(), r"\Aditto: [^\n]+\nkzfile: out: was not made\n\Z")
        self.assertFalse((self.work / "out").exists())

    def test_nothing_is_written_outside_of_the_folder(self):
        with zipfile.ZipFile(self.work / "hostile.zip", "w") as archive:
            archive.writestr("../escaped", "text")
        self.assertEqual(self.run_program("decompress", "hostile.zip", "out").returncode, 1)
        self.assertEqual(self.names_in(self.work), ["hostile.zip"])

    def test_missing_things_are_named(self):
        self.file("a")
        self.assert_fails(self.run_program("compress", "missing", "a.zip"), 1, "missing: No such file")
        self.assert_fails(self.run_program("compress", "a", "nowhere/a.zip"), 1, "nowhere: there is no such folder")

    def test_an_installation_without_its_archiver_says_so(self):
        self.file("a")
        alone = shutil.copy(support.KZFILE, self.folder / "kzfile")
        run = subprocess.run([alone, "compress", "a", "a.zip"], cwd=self.work, env=self.environment, check=False,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if os.path.exists("/usr/bin/ditto"):
            self.skipTest("this machine has a ditto of its own")
        self.assert_fails(run, 1, "the archiver is not there")

    def test_ctrl_c_leaves_neither_an_archive_nor_the_archiver(self):
        (self.work / "folder").mkdir()
        for number in range(4):
            support.make_large_file(self.work / "folder" / str(number), 100)
        process = subprocess.Popen([support.KZFILE, "compress", "folder", "a.zip"], cwd=self.work,
                                   env=self.environment, stderr=subprocess.PIPE)
        while process.poll() is None and len(self.names_in(self.work)) == 1:
            time.sleep(0.001)
        process.send_signal(signal.SIGINT)
        _, errors = process.communicate(timeout=support.LONGEST)
        self.assertEqual((process.returncode, errors), (130, b""))
        self.assertEqual(self.names_in(self.work), ["folder"])
