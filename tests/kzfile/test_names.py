"""kzfile expand, unique and size."""
import os

import support


class Expand(support.KzfileCase):
    def lines(self, *words):
        return sorted(self.output("expand", *words).splitlines())

    def test_matches_are_listed_relative_to_where_one_is(self):
        for name in ("a.wav", "b.wav", "c.txt", ".hidden.wav", "folder/d.wav"):
            self.file(name)
        self.assertEqual(self.lines("*.wav"), [".hidden.wav", "a.wav", "b.wav"])
        self.assertEqual(self.lines("*/*.wav"), ["folder/d.wav"])
        self.assertEqual(self.lines("fol*/d.wav", "c*"), ["c.txt", "folder/d.wav"])

    def test_absolute_patterns_give_absolute_paths(self):
        self.file("a.wav")
        self.assertEqual(self.lines(f"{self.work}/*"), [f"{self.work}/a.wav"])

    def test_a_pattern_without_a_star_is_listed_itself(self):
        self.assertEqual(self.lines("missing", "/mis?sing"), ["/mis?sing", "missing"])

    def test_question_marks_and_backslashes_count_beside_a_star(self):
        for name in ("ab.x", "abc.x", "a*.x"):
            self.file(name)
        self.assertEqual(self.lines("a?.*"), ["a*.x", "ab.x"])
        self.assertEqual(self.lines("a\\*.*"), ["a*.x"])

    def test_no_match_is_a_failure_and_the_others_are_listed(self):
        self.file("a")
        run = self.run_program("expand", "x*", "a*")
        self.assertEqual((run.returncode, run.stdout, run.stderr), (1, b"a\n", b"kzfile: x*: nothing matches\n"))

    def test_names_of_any_kind_are_kept_apart_by_nuls(self):
        names = [b"line\nbreak", b"not utf-8 \xff", b"-dash"]
        for name in names:
            (self.work / os.fsdecode(name)).touch()
        listed = self.run_program("expand", "-z", "*").stdout
        self.assertEqual(sorted(listed.split(b"\0")), sorted([b"", *names]))


class Unique(support.KzfileCase):
    def test_a_free_name_is_printed_as_it_is(self):
        self.assertEqual(self.output("unique", "a.txt"), "a.txt\n")

    def test_a_taken_name_gets_the_first_free_number(self):
        for name in ("a.txt", "a 2.txt", "a 4.txt"):
            self.file(name)
        self.assertEqual(self.output("unique", "a.txt"), "a 3.txt\n")

    def test_the_folder_is_kept_as_it_was_given(self):
        self.file("folder/a")
        self.assertEqual(self.output("unique", "folder/a"), "folder/a 2\n")
        self.assertEqual(self.output("unique", "./folder/../folder/a"), "./folder/../folder/a 2\n")
        self.assertEqual(self.output("unique", f"{self.work}/folder/"), f"{self.work}/folder 2\n")

    def test_a_name_of_any_kind_is_ended_by_a_nul(self):
        (self.work / "line\nbreak").touch()
        self.assertEqual(self.output("unique", "--zero", "line\nbreak"), "line\nbreak 2\0")


class Size(support.KzfileCase):
    def test_a_file_and_a_folder_have_their_bytes(self):
        self.file("folder/a", b"x" * 1500)
        self.file("folder/deep/b", b"x" * 36)
        self.assertEqual(self.output("size", "folder", "folder/a"), "1536  folder\n1500  folder/a\n")

    def test_units_are_steps_of_1024(self):
        self.file("a", b"x" * 1536)
        self.assertEqual(self.output("size", "--units", "a"), "1.50 KB  a\n")

    def test_a_missing_item_fails_and_the_others_are_told(self):
        self.file("a")
        run = self.run_program("size", "missing", "a")
        self.assertEqual((run.returncode, run.stdout), (1, b"9  a\n"))
        self.assertIn(b"missing: No such file", run.stderr)
