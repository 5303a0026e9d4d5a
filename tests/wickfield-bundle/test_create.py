"""wickfield-bundle create, from outside: what stands on the disk after every way in which a run can go or end."""
import hashlib
import json
import os
import plistlib
import random
import shutil
import signal
import stat
import subprocess
import threading
import time
import unittest
import zipfile

from support import NOBODY, RESOURCES, TREE, WICKFIELD_BUNDLE, BundleCase, is_root

BUNDLE = "Brook Installer.app"
ARCHIVE = "Brook Installer.zip"
NAMES = ("--name", "Brook", "--version", "1.3", "--author", "Fenwick")


def contents(folder):
    """Everything in a folder by its path there: kind, mode, time, content or target of a link. A list in the order of
    the names, so that it does not depend on that of the folder."""
    found = {}
    for path in [folder, *sorted(folder.rglob("*"))]:
        status = path.lstat()
        what = os.readlink(path) if path.is_symlink() else path.read_bytes() if path.is_file() else None
        found[str(path.relative_to(folder))] = (status.st_mode, status.st_mtime_ns, what)
    return found


class CreateCase(BundleCase):
    def setUp(self):
        super().setUp()
        self.template()
        self.out = self.work / "out"
        self.bundle_path = self.out / BUNDLE

    def words(self, *more):
        return ("create", *NAMES, "--template", "Template.app", "--output", "out", *more)

    def create(self, *more, **options):
        run = self.run_program(*self.words(*more), **options)
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        return run

    def in_output(self):
        return sorted(path.name for path in self.out.iterdir()) if self.out.exists() else []

    def write_endlessly(self, path):
        """From before this returns until the test ends."""
        program = ("import sys\nwith open(sys.argv[1], 'r+b', 0) as file:\n    while True:\n"
                   "        file.seek(0)\n        file.write(b'more' * 100000)\n        print(flush=True)\n")
        writer = subprocess.Popen(["/usr/bin/python3", "-c", program, str(path)], stdout=subprocess.PIPE)
        self.addCleanup(writer.stdout.close)
        self.addCleanup(writer.wait)
        self.addCleanup(writer.kill)
        writer.stdout.readline()
        threading.Thread(target=writer.stdout.read, daemon=True).start()

    def many_files(self, count=1500, size=20000):
        for number in range(count):
            self.file(f"many/folder {number // 20}/file {number}", os.urandom(16) * (size // 16))
        return "many=/Library/Brook/many"


class CreateTest(CreateCase):
    def test_prints_where_the_bundle_is(self):
        self.file("x")
        run = self.create("--item", "x=/Library/x", "--archive")
        self.assertEqual(run.stdout.decode(), f"out/{BUNDLE}\nout/{ARCHIVE}\n")

    def test_writes_into_the_working_folder_when_told_nothing_else(self):
        self.file("x")
        run = self.run_program("create", *NAMES, "--template", "Template.app", "--item", "x=/Library/x")
        self.assertEqual((run.returncode, run.stdout), (0, f"./{BUNDLE}\n".encode()))
        self.assertTrue((self.work / BUNDLE / TREE / "Library/x").is_file())

    def test_makes_all_that_the_project_file_in_the_working_folder_says(self):
        for name in ("docs/Agreement.rtf", "art/Background.png", "scripts/quit.sh", "scripts/register.sh",
                     "tree/Library/Brook/a", "build/Brook.vst3/Contents/Info.plist"):
            self.file(name, name.encode())
        self.file("wickfield.json", json.dumps({
            "name": "Brook", "version": "1.3", "author": "Fenwick & Söhne", "identifier": "com.example.brook",
            "agreement": "docs/Agreement.rtf", "background": "art/Background.png", "branding": False,
            "preinstall": "scripts/quit.sh", "postinstall": "scripts/register.sh", "tree": "tree",
            "items": [{"source": "build/Brook.vst3", "destination": "/Library/Audio/Plug-Ins/VST3/"}]}).encode())
        run = self.run_program("create", "--template", "Template.app", "--output", "out")
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        resources = self.bundle_path / RESOURCES
        self.assertEqual(plistlib.loads((resources / "InstallerSettings.plist").read_bytes()),
                         {"KZPluginName": "Brook", "KZPluginVersion": "1.3", "KZPluginAuthor": "Fenwick & Söhne",
                          "KZEULAPath": "Agreement.rtf", "KZBgImagePath": "Background.png", "removeBranding": True})
        information = plistlib.loads((self.bundle_path / "Contents/Info.plist").read_bytes())
        self.assertEqual(information["CFBundleIdentifier"], "com.example.brook")
        self.assertEqual((resources / "preinstall.sh").read_text(), "scripts/quit.sh")
        self.assertEqual((resources / "postinstall.sh").read_text(), "scripts/register.sh")
        self.assertEqual((self.bundle_path / TREE / "Library/Brook/a").read_text(), "tree/Library/Brook/a")
        self.assertTrue((self.bundle_path / TREE / "Library/Audio/Plug-Ins/VST3/Brook.vst3/Contents").is_dir())

    def test_finds_the_template_that_was_built_with_it(self):
        self.file("x")
        run = self.run_program("create", *NAMES, "--item", "x=/Library/x")
        self.assertEqual(run.returncode, 0, run.stderr)
        program = self.work / BUNDLE / "Contents/Linux/Wickfield"
        self.assertTrue(os.access(program, os.X_OK))
        self.assertTrue(os.access(program.parent / "tools/ditto", os.X_OK))

    def test_takes_names_of_any_kind(self):
        names = ["with blank", "ünïcode", "Cafe\u0301", "-dash", "new\nline", "quote'\"", "back\\slash", "=equals=",
                 "\x1b[31mred", b"not utf-8 \xff\xfe".decode(errors="surrogateescape")]
        for name in names:
            self.file(f"odd/{name}", name.encode(errors="surrogateescape"))
        self.create("--item", "odd=/Library/odd")
        found = self.bundle_path / TREE / "Library/odd"
        self.assertEqual(sorted(os.listdir(found)), sorted(names))

    def test_is_quiet_about_hostile_names_on_a_terminal(self):
        os.mkfifo(self.work / "evil\x1b[31m")
        code, shown = self.run_on_terminal(*self.words("--item", "evil\x1b[31m=/Library/x"))
        self.assertEqual(code, 1)
        self.assertNotIn("evil\x1b[31m", shown)


class ExitCodeTest(CreateCase):
    def test_is_2_for_a_command_line_that_makes_no_sense(self):
        self.file("x")
        for words in (("--item", "x"), ("--item", "x=relative"), ("--colour", "red"), ("more",), ("--output", "")):
            self.assert_fails(self.run_program(*self.words(*words)), 2)
        self.assert_fails(self.run_program(*self.words("--item", "x=/Library/x", "--host", "amiga")), 2, "amiga")
        self.assertEqual(self.in_output(), [])

    def test_is_2_for_a_project_that_makes_no_sense(self):
        self.file("x")
        self.assert_fails(self.run_program("create", "--template", "Template.app", "--item", "x=/Library/x"), 2, "no name")
        self.assert_fails(self.run_program(*self.words("--item", "x=/Library/../x")), 2, "..")
        self.assert_fails(self.run_program(*self.words()), 2, "nothing to install")
        self.file("bad.json", b'{\n"name": 1}')
        self.assert_fails(self.run_program("create", "--project", "bad.json"), 2, "bad.json:2: “name” has to be a text")

    def test_is_2_with_a_line_for_each_problem_of_a_project_file(self):
        self.file("bad.json", b'{"name": 1,\n "tree": [],\n "itmes": []}')
        run = self.run_program("create", "--project", "bad.json")
        self.assertEqual(run.returncode, 2)
        self.assertEqual([line.split(": ")[1] for line in run.stderr.decode().splitlines()],
                         ["bad.json:3", "bad.json:1", "bad.json:2"])

    def test_is_1_for_what_lies_on_the_disk(self):
        self.assert_fails(self.run_program(*self.words("--item", "none=/Library/x")), 1, "none")
        os.mkfifo(self.work / "pipe")
        self.assert_fails(self.run_program(*self.words("--item", "pipe=/Library/x")), 1, "pipe")
        self.assertEqual(self.in_output(), [])

    def test_is_2_for_a_wrong_source_date(self):
        self.file("x")
        environment = {**self.environment, "SOURCE_DATE_EPOCH": "soon"}
        self.assert_fails(self.run_program(*self.words("--item", "x=/Library/x"), env=environment), 2, "SOURCE_DATE_EPOCH")


class SourceTest(CreateCase):
    def test_pipes_sockets_and_devices_are_never_opened(self):
        (self.work / "folder/deep").mkdir(parents=True)
        os.mkfifo(self.work / "folder/deep/pipe")
        began = time.monotonic()
        self.assert_fails(self.run_program(*self.words("--item", "folder=/Library/x")), 1, "folder/deep/pipe")
        self.assertLess(time.monotonic() - began, 20)
        self.assertEqual(self.in_output(), [])

    def test_an_agreement_that_is_a_pipe_is_refused(self):
        self.file("x")
        os.mkfifo(self.work / "Agreement.rtf")
        self.assert_fails(self.run_program(*self.words("--item", "x=/Library/x", "--agreement", "Agreement.rtf")), 1,
                          "Agreement.rtf")

    def test_links_that_loop_or_dangle_inside_a_source_are_kept(self):
        (self.work / "folder").mkdir()
        (self.work / "folder/loop").symlink_to("loop")
        (self.work / "folder/up").symlink_to("..")
        (self.work / "folder/dangling").symlink_to("/nowhere")
        self.create("--item", "folder=/Library/folder")
        made = self.bundle_path / TREE / "Library/folder"
        self.assertEqual({path.name: os.readlink(path) for path in made.iterdir()},
                         {"loop": "loop", "up": "..", "dangling": "/nowhere"})

    @unittest.skipUnless(is_root(), "another user's folder needs the superuser")
    def test_a_working_folder_that_is_closed_to_the_user_is_a_failure(self):
        self.folder.chmod(0o755)
        self.file("x")
        closed = self.folder / "closed"
        closed.mkdir(0o700)
        run = subprocess.run([WICKFIELD_BUNDLE, "create", *NAMES, "--template", str(self.work / "Template.app"),
                              "--item", f"{self.work / 'x'}=/Library/x", "--output", "out"], cwd=closed,
                             env=self.environment, user=NOBODY, group=NOBODY, extra_groups=[], capture_output=True,
                             check=False, timeout=60)
        if b"ermission denied" in run.stderr and b"exec" in run.stderr:
            self.skipTest("another user cannot run the program")
        self.assert_fails(run, 1, "ermission denied")

    @unittest.skipUnless(is_root(), "another user's files need the superuser")
    def test_a_file_that_cannot_be_read_leaves_nothing(self):
        self.folder.chmod(0o755)
        self.file("folder/secret", b"x", 0o000)
        shutil.chown(self.work, 65534)
        for path in (self.work, self.work / "folder"):
            os.chown(path, 65534, 65534)
        run = subprocess.run([WICKFIELD_BUNDLE, *self.words("--item", "folder=/Library/folder")], cwd=self.work,
                             env=self.environment, user=65534, group=65534, extra_groups=[], capture_output=True,
                             check=False, timeout=60)
        if b"ermission denied" in run.stderr and b"exec" in run.stderr:
            self.skipTest("another user cannot run the program")
        self.assert_fails(run, 1, "folder/secret")
        self.assertEqual(self.in_output(), [])

    def test_a_file_that_is_written_to_meanwhile_is_a_failure(self):
        self.many_files(count=400)
        grown = self.file("many/zz/growing", b"x" * 1000)
        self.write_endlessly(grown)
        run = self.run_program(*self.words("--item", "many=/Library/many"))
        self.assert_fails(run, 1, "growing” changed while it was being copied")
        self.assertEqual(self.in_output(), [])

    def test_a_tree_of_10000_folders_within_each_other_is_made_and_packed(self):
        (self.work / "deep").mkdir()
        folder = os.open(self.work / "deep", os.O_RDONLY)
        for _ in range(10000):
            os.mkdir("d", dir_fd=folder)
            below = os.open("d", os.O_RDONLY, dir_fd=folder)
            os.close(folder)
            folder = below
        os.close(folder)
        self.addCleanup(subprocess.run, ["rm", "-rf", str(self.work)], check=False)
        self.create("--item", "deep=/Library/deep")
        self.assertEqual(self.in_output(), [BUNDLE])
        run = self.run_program(*self.words("--item", "deep=/Library/deep", "--archive", "--force"))
        self.assertIn(run.returncode, (0, 1), run.stderr)
        self.assertEqual(self.in_output(), [BUNDLE, ARCHIVE] if run.returncode == 0 else [BUNDLE])


class ReproducibleTest(CreateCase):
    def setUp(self):
        super().setUp()
        self.file("tree/Library/Brook/run", b"#!/bin/sh\n", 0o755)
        (self.work / "tree/Library/Brook/link").symlink_to("run")
        for number in range(40):
            self.file(f"presets/preset {number} ü", bytes([number]) * 5000)
        for path in sorted(self.work.rglob("*")):
            os.utime(path, ns=(0, 1_600_000_000_123_456_789 + hash(path.name) % 7), follow_symlinks=False)

    def made(self, folder, **options):
        run = self.run_program("create", *NAMES, "--template", str(self.work / "Template.app"), "--tree",
                            str(self.work / "tree"), "--item", f"{folder}=/Users/user/Documents/Presets", "--archive",
                            "--output", str(self.out), "--force", **options)
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        return contents(self.bundle_path), hashlib.sha256((self.out / ARCHIVE).read_bytes()).hexdigest()

    def test_the_same_sources_give_the_same_bundle_and_archive(self):
        self.assertEqual(self.made(self.work / "presets"), self.made(self.work / "presets"))

    def test_neither_umask_nor_time_zone_nor_language_nor_working_folder_shows(self):
        first = self.made(self.work / "presets")
        environment = {**self.environment, "TZ": "Pacific/Kiritimati", "LANG": "tr_TR.UTF-8", "LC_ALL": "C"}
        self.assertEqual(first, self.made(self.work / "presets", umask=0o077, cwd="/", env=environment))

    def test_the_order_of_the_folders_entries_does_not_show(self):
        first = self.made(self.work / "presets")
        (self.work / "again").mkdir()
        names = sorted(os.listdir(self.work / "presets"))
        random.Random(7).shuffle(names)
        for name in names:
            shutil.copy2(self.work / "presets" / name, self.work / "again" / name)
        shutil.copystat(self.work / "presets", self.work / "again")
        self.assertEqual(first, self.made(self.work / "again"))

    def test_the_source_date_makes_sources_of_different_times_alike(self):
        environment = {**self.environment, "SOURCE_DATE_EPOCH": "1500000000"}
        first = self.made(self.work / "presets", env=environment)
        for path in sorted(self.work.rglob("*")):
            os.utime(path, (1_700_000_000, 1_700_000_000), follow_symlinks=False)
        self.assertEqual(first, self.made(self.work / "presets", env=environment))
        self.assertLessEqual(max(time for _, time, _ in first[0].values()), 1_500_000_000 * 10**9)


class ArchiveTest(CreateCase):
    def test_unpacks_to_the_bundle_that_lies_beside_it(self):
        self.file("x/run", b"#!/bin/sh\n", 0o755)
        (self.work / "x/link").symlink_to("run")
        self.create("--item", "x=/Library/Brook", "--archive")
        unpacked = self.work / "unpacked"
        subprocess.run(["unzip", "-q", self.out / ARCHIVE, "-d", unpacked], check=True)
        self.assertEqual(os.listdir(unpacked), [BUNDLE])

        def without_fractions(folder):
            return {path: (mode, 0 if stat.S_ISLNK(mode) else time // 10**9, what)
                    for path, (mode, time, what) in contents(folder).items()}
        self.assertEqual(without_fractions(unpacked / BUNDLE), without_fractions(self.bundle_path))

    def test_lists_its_entries_in_the_order_of_their_names(self):
        for name in ("b", "a/2", "a/1", "ü"):
            self.file(f"x/{name}")
        self.create("--item", "x=/Library/Brook", "--archive")
        with zipfile.ZipFile(self.out / ARCHIVE) as archive:
            names = [name.split("/Brook/", 1)[1] for name in archive.namelist() if "/Library/Brook/" in name]
        self.assertEqual(names, ["", "a/", "a/1", "a/2", "b", "ü"])


class ExistingBundleTest(CreateCase):
    def setUp(self):
        super().setUp()
        self.file("x", b"first")
        self.create("--item", "x=/Library/x")

    def test_stays_without_force(self):
        before = contents(self.bundle_path)
        self.assert_fails(self.run_program(*self.words("--item", "x=/Library/y")), 1, "is there already", "--force")
        self.assertEqual(contents(self.bundle_path), before)
        self.assertEqual(self.in_output(), [BUNDLE])

    def test_is_replaced_with_force(self):
        self.create("--item", "x=/Library/y", "--force")
        self.assertEqual(os.listdir(self.bundle_path / TREE / "Library"), ["y"])
        self.assertEqual(self.in_output(), [BUNDLE])

    def test_stays_when_a_run_with_force_fails(self):
        before = contents(self.bundle_path)
        self.write_endlessly(self.file("z/changing"))
        self.assert_fails(self.run_program(*self.words("--item", "z=/Library/z", "--force")), 1, "changed while")
        self.assertEqual(contents(self.bundle_path), before)
        self.assertEqual(self.in_output(), [BUNDLE])


class EndedTest(CreateCase):
    """A run that is ended at a random moment."""

    def start(self, item, *more):
        return subprocess.Popen([WICKFIELD_BUNDLE, *self.words("--item", item, "--archive", *more)], cwd=self.work,
                                env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def end(self, run, number, delay):
        time.sleep(delay)
        run.send_signal(number)
        run.communicate(timeout=60)
        return run.returncode

    def check_whole(self, expected):
        """Under the final names there is nothing or all of it."""
        if self.bundle_path.exists():
            self.assertEqual(contents(self.bundle_path), expected)
        if (self.out / ARCHIVE).exists():
            self.assertTrue(self.bundle_path.exists())
            self.assertIsNone(zipfile.ZipFile(self.out / ARCHIVE).testzip())

    def run_whole(self, item):
        began = time.monotonic()
        self.create("--item", item, "--archive")
        took = time.monotonic() - began
        expected = contents(self.bundle_path)
        shutil.rmtree(self.out)
        return took, expected

    def test_killed_leaves_nothing_under_the_final_names(self):
        item = self.many_files()
        took, expected = self.run_whole(item)
        for _ in range(12):
            run = self.start(item)
            self.end(run, signal.SIGKILL, random.uniform(0, took))
            self.check_whole(expected)
            left = [name for name in self.in_output() if name not in (BUNDLE, ARCHIVE)]
            self.assertTrue(all(name.startswith(".wickfield-") for name in left), left)
            shutil.rmtree(self.out, ignore_errors=True)

    def test_interrupted_leaves_nothing_at_all(self):
        item = self.many_files()
        took, expected = self.run_whole(item)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP) * 3:
            code = self.end(self.start(item), number, random.uniform(0.02, took))
            self.check_whole(expected)
            self.assertIn(code, (0, 128 + number))
            self.assertEqual(self.in_output(), [BUNDLE, ARCHIVE] if code == 0 else [])
            shutil.rmtree(self.out, ignore_errors=True)

    def test_interrupted_with_force_leaves_the_old_bundle_or_the_new(self):
        item = self.many_files()
        took, new = self.run_whole(item)
        self.file("x")
        for _ in range(6):
            self.create("--item", "x=/Library/x", "--archive", "--force")
            old = contents(self.bundle_path)
            self.end(self.start(item, "--force"), signal.SIGINT, random.uniform(0.02, took))
            self.assertIn(contents(self.bundle_path), (old, new))
            self.assertEqual(self.in_output(), [BUNDLE, ARCHIVE])


@unittest.skipUnless(is_root(), "a file system of its own needs the superuser")
class FullDiskTest(CreateCase):
    def setUp(self):
        super().setUp()
        self.out.mkdir()
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=2m", "tmpfs", self.out], check=False,
                                 capture_output=True)
        if mounted.returncode != 0:
            self.skipTest("nothing can be mounted here")
        self.addCleanup(subprocess.run, ["umount", self.out], check=False)

    def test_leaves_nothing_and_says_so(self):
        self.file("x/large", b"x" * 4_000_000)
        self.assert_fails(self.run_program(*self.words("--item", "x=/Library/x")), 1, "No space left on device")
        self.assertEqual(self.in_output(), [])

    def test_leaves_nothing_when_there_is_room_for_the_bundle_but_not_for_the_archive(self):
        self.file("x/large", os.urandom(1_400_000))
        self.assert_fails(self.run_program(*self.words("--item", "x=/Library/x", "--archive")), 1,
                          "No space left on device")
        self.assertEqual(self.in_output(), [])

    def test_leaves_the_old_bundle_when_there_is_no_room_for_the_new(self):
        self.file("x", b"x" * 600_000)
        self.create("--item", "x=/Library/x")
        before = contents(self.bundle_path)
        self.file("y", b"y" * 1_900_000)
        self.assert_fails(self.run_program(*self.words("--item", "y=/Library/x", "--force")), 1)
        self.assertEqual(contents(self.bundle_path), before)


if __name__ == "__main__":
    unittest.main()
