"""kzfile hash against hashlib and sha256sum."""
import hashlib
import os
import subprocess

import support


class Hash(support.KzfileCase):
    def test_each_algorithm_gives_its_digest(self):
        self.file("a", b"some bytes")
        for name in ("md5", "sha1", "sha256", "sha512"):
            digest = hashlib.new(name, b"some bytes").hexdigest()
            self.assertEqual(self.output("hash", "-a", name, "a"), f"{digest}  a\n")

    def test_sha256_is_the_usual_one(self):
        self.file("a", b"")
        self.assertEqual(self.output("hash", "a"), f"{hashlib.sha256().hexdigest()}  a\n")

    def test_algorithms_are_known_by_their_other_spellings(self):
        self.file("a")
        self.assertEqual(self.output("hash", "-a", "SHA-512", "a"), self.output("hash", "-a", "sha512", "a"))

    def test_an_unknown_algorithm_is_a_usage_error(self):
        self.file("a")
        self.assert_fails(self.run_program("hash", "-a", "crc32", "a"), 2, "crc32")

    def test_sha256sum_can_check_the_lines(self):
        names = ["a", "b c", "d\ne", "back\\slash", "carriage\rreturn", "ümläut", "-dash", "*star"]
        for name in names:
            self.file(name, name.encode())
        sums = self.run_program("hash", "--", *names).stdout
        check = subprocess.run(["sha256sum", "--check", "--strict"], cwd=self.work, input=sums, check=False,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertEqual(check.returncode, 0, check.stdout)
        self.assertEqual(check.stdout.count(b": OK"), len(names))

    def test_the_lines_are_those_of_sha256sum(self):
        names = [b"plain", b"line\nbreak", b"back\\slash", b"not utf-8 \xff\xfe", b"return\r"]
        for name in names:
            (self.work / os.fsdecode(name)).write_bytes(name)
        for options in ([], ["--zero"]):
            expected = subprocess.run(["sha256sum", *options, *names], cwd=self.work, check=True,
                                      stdout=subprocess.PIPE).stdout
            self.assertEqual(self.run_program("hash", *options, *names).stdout, expected)

    def test_a_large_file_gives_the_same_digest(self):
        path = support.make_large_file(self.work / "large", 20)
        digest = hashlib.sha1(path.read_bytes()).hexdigest()
        self.assertEqual(self.output("hash", "-a", "sha1", "large"), f"{digest}  large\n")

    def test_the_standard_input_is_a_dash(self):
        run = self.run_program("hash", "-", stdin=None, input=b"piped " * 100000)
        digest = hashlib.sha256(b"piped " * 100000).hexdigest()
        self.assertEqual((run.returncode, run.stdout.decode()), (0, f"{digest}  -\n"))

    def test_a_folder_as_standard_input_is_a_failure(self):
        folder = os.open(self.work, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        self.assert_fails(self.run_program("hash", "-", stdin=folder), 1, "Is a directory")

    def test_links_are_followed(self):
        self.file("a")
        (self.work / "link").symlink_to("a")
        self.assertEqual(self.output("hash", "link").split()[0], self.output("hash", "a").split()[0])

    def test_a_missing_file_fails_and_the_others_are_hashed(self):
        self.file("a")
        self.file("c")
        run = self.run_program("hash", "a", "missing", "c")
        self.assertEqual(run.returncode, 1)
        self.assertEqual([line.split()[1] for line in run.stdout.splitlines()], [b"a", b"c"])
        self.assertRegex(run.stderr, rb"\Akzfile: [^\n]*missing: No such file or directory\n\Z")

    def test_folders_pipes_and_devices_are_refused_at_once(self):
        (self.work / "folder").mkdir()
        os.mkfifo(self.work / "pipe")
        for name in ("folder", "pipe", "/dev/zero"):
            self.assert_fails(self.run_program("hash", name), 1, name)

    def test_a_file_that_may_not_be_read_is_said_to_be_so(self):
        if support.is_root():
            self.skipTest("the superuser may read everything")
        self.file("secret").chmod(0)
        self.assert_fails(self.run_program("hash", "secret"), 1, "secret: Permission denied")

    def test_nothing_is_made_in_the_home_folder(self):
        self.file("a")
        self.run_program("hash", "a", "missing")
        self.assertEqual(self.names_in(self.home), [])
