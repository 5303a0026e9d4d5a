"""What the Tab key offers in bash, zsh and fish, against what the program says of itself."""
import os
import pathlib
import pty
import re
import select
import shutil
import signal
import subprocess
import time

from support import WICKFIELD_BUNDLE
from test_manual import COMMANDS, ROOT, OwnWords

FOLDER = ROOT / "tools" / "commandline"
COMPLETION = FOLDER / "completion.bash"


class Shell(OwnWords):
    def setUp(self):
        super().setUp()
        self.file("build/My.vst3/a")
        self.file("My Installer.app/a")
        self.file("wickfield.json")
        self.environment["PATH"] = f"{pathlib.Path(WICKFIELD_BUNDLE).parent}:{self.environment['PATH']}"

    def words_of(self, command):
        return sorted(["--help", *(re.search("--[a-z-]+", line).group() for line in self.options(command))])

    def typed_on_a_terminal(self, shell, prepare, keys, wanted):
        """What an interactive shell shows after these keys, up to what is wanted or for ten seconds. Its prompt is
        "ready> "."""
        child, terminal = pty.fork()
        if child == 0:
            os.chdir(self.work)
            os.execvpe(shell[0], shell, {**self.environment, "PS1": "ready> ", "INPUTRC": "/dev/null", "HISTFILE": "",
                                         "TERM": "dumb"})
        os.write(terminal, f"{prepare}; echo prepared-$((1 + 1))\n".encode())
        shown, deadline, sent = b"", time.monotonic() + 10, False
        while time.monotonic() < deadline and wanted not in shown:
            if select.select([terminal], [], [], 0.1)[0]:
                shown += os.read(terminal, 65536)
            if not sent and b"ready> " in shown.partition(b"prepared-2")[2]:
                os.write(terminal, keys)
                sent = True
        os.kill(child, signal.SIGKILL)
        os.close(terminal)
        os.waitpid(child, 0)
        return shown.partition(b"prepared-2")[2]


class InBash(Shell):
    """By what it would offer for the last word, and by keys."""

    def offered(self, *words, program="wickfield-bundle"):
        script = (f'source "{COMPLETION}"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
                  '_wickfield_complete "$1" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        run = subprocess.run(["bash", "--norc", "-c", script, "bash", program, *words], cwd=self.work, timeout=60,
                             env=self.environment, check=False, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        return sorted(run.stdout.decode().split("\n")[:-1]) if run.stdout != b"\n" else []

    def test_the_first_word_is_a_command(self):
        self.assertEqual(self.offered(""), sorted(COMMANDS))
        self.assertEqual(self.offered("cr"), ["create"])

    def test_each_command_offers_its_options_and_no_others(self):
        for command in COMMANDS:
            self.assertEqual(self.offered(command, "--"), self.words_of(command))

    def test_options_that_begin_alike_are_narrowed_down(self):
        self.assertEqual(self.offered("create", "--pr"), ["--preinstall", "--project"])

    def test_values_that_are_known_are_offered(self):
        self.assertEqual(self.offered("show", "--format", ""), ["json", "text", "tree"])
        self.assertEqual(self.offered("show", "-f", "t"), ["text", "tree"])
        self.assertEqual(self.offered("create", "--host", "m"), ["macos"])

    def test_a_value_behind_an_equals_sign_is_offered_too(self):
        self.assertEqual(self.offered("show", "--format", "=", "tr"), ["tree"])
        self.assertEqual(self.offered("show", "--format", "="), ["json", "text", "tree"])

    def test_files_and_folders_are_offered_where_they_are_wanted(self):
        self.assertEqual(self.offered("create", "--project", "w"), ["wickfield.json"])
        self.assertEqual(self.offered("create", "--item", "build/M"), ["build/My.vst3"])
        self.assertEqual(self.offered("create", "--output", ""), ["My Installer.app", "build"])
        self.assertEqual(self.offered("check", ""), ["My Installer.app", "build"])

    def test_nothing_is_offered_for_a_text_or_for_a_command_that_there_is_not(self):
        self.assertEqual(self.offered("create", "--name", ""), [])
        self.assertEqual(self.offered("create", ""), [])
        self.assertEqual(self.offered("mend", ""), [])

    def assert_becomes(self, keys, wanted):
        prepare = f"bind 'set enable-bracketed-paste off'; source '{COMPLETION}'"
        self.assertIn(wanted, self.typed_on_a_terminal(["bash", "--noprofile", "--norc", "-i"], prepare, keys, wanted))

    def test_the_tab_key_completes_words_and_quotes_names(self):
        self.assert_becomes(b"wickfield-bundle che\t--str\tMy\t", b"wickfield-bundle check --strict My\\ Installer.app/")

    def test_the_tab_key_goes_on_from_a_name_that_is_quoted(self):
        self.assert_becomes(b"wickfield-bundle check My\\ In\t", b"My\\ Installer.app/")

    def test_nothing_is_complained_of_where_broken_pipes_are_not_signalled(self):
        signal.signal(signal.SIGPIPE, signal.SIG_IGN)  # which a shell inherits
        shown = self.typed_on_a_terminal(["bash", "--noprofile", "--norc", "-i"],
                                         f"bind 'set enable-bracketed-paste off'; source '{COMPLETION}'",
                                         b"wickfield-bundle create --project wick\t; echo do\\ne\n", b"\r\ndone")
        self.assertIn(b"\r\ndone", shown)
        self.assertNotIn(b"pipe", shown.lower())

    def test_the_destination_can_be_typed_right_behind_a_source(self):
        self.assert_becomes(b"wickfield-bundle create --item wick\t=/opt", b"--item wickfield.json=/opt")

    def test_a_name_is_offered_as_it_is(self):
        self.file("star/a")
        self.file("s*/b")
        self.assertEqual(self.offered("check", "s"), ["s*", "star"])
        self.assertEqual(self.offered("check", "s*"), ["s*"])

    def test_a_program_that_is_missing_offers_nothing(self):
        self.environment["PATH"] = "/usr/bin:/bin"
        self.assertEqual(self.offered("", program="wickfield-bundle-that-is-missing"), [])

    def test_bash_is_told_to_use_it(self):
        run = subprocess.run(["bash", "--norc", "-c", f'source "{COMPLETION}"; complete -p wickfield-bundle kzfile'],
                             check=True, timeout=60, stdout=subprocess.PIPE)
        self.assertEqual(run.stdout.decode().splitlines(), ["complete -F _wickfield_complete wickfield-bundle",
                                                            "complete -F _wickfield_complete kzfile"])

    def test_it_serves_kzfile_too(self):
        kzfile = os.environ.get("WICKFIELD_KZFILE")
        if not kzfile:
            self.skipTest("kzfile was not built")
        self.assertIn("hash", self.offered("", program=kzfile))
        self.assertEqual(self.offered("hash", "--a", program=kzfile), ["--algorithm"])
        self.assertEqual(self.offered("hash", "w", program=kzfile), ["wickfield.json"])


class InZsh(Shell):
    def assert_becomes(self, keys, wanted):
        if shutil.which("zsh") is None:
            self.skipTest("zsh is not on this machine")
        (self.folder / "functions").mkdir(exist_ok=True)
        shutil.copy(FOLDER / "completion.zsh", self.folder / "functions" / "_wickfield-bundle")
        prepare = (f"PS1='ready> '; unset zle_bracketed_paste; fpath=('{self.folder}/functions' $fpath); "
                   "autoload -Uz compinit; compinit -u -D")
        self.assertIn(wanted, self.typed_on_a_terminal(["zsh", "-f", "-i"], prepare, keys, wanted))

    def test_commands_options_and_names_are_completed_and_names_quoted(self):
        self.assert_becomes(b"wickfield-bundle che\t--str\tMy\t", b"My\\ Installer.app/")

    def test_each_command_is_offered_with_what_it_does(self):
        self.assert_becomes(b"wickfield-bundle \t", b"make an installer's bundle of a project")

    def test_values_that_are_known_are_completed(self):
        self.assert_becomes(b"wickfield-bundle show --format tr\t", b"--format tree ")
        self.assert_becomes(b"wickfield-bundle show --format=tr\t", b"--format=tree ")

    def test_it_serves_kzfile_too(self):
        kzfile = os.environ.get("WICKFIELD_KZFILE")
        if not kzfile:
            self.skipTest("kzfile was not built")
        self.environment["PATH"] = f"{pathlib.Path(kzfile).parent}:{self.environment['PATH']}"
        self.assert_becomes(b"kzfile hash --alg\t", b"kzfile hash --algorithm ")


class InFish(Shell):
    def offered(self, line):
        if shutil.which("fish") is None:
            self.skipTest("fish is not on this machine")
        run = subprocess.run(["fish", "--no-config", "-c", 'source $argv[1]; complete -C $argv[2]',
                              FOLDER / "completion.fish", line], cwd=self.work, env=self.environment, timeout=60,
                             check=False, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        return sorted(offer.split("\t")[0] for offer in run.stdout.decode().splitlines())

    def test_the_first_word_is_a_command(self):
        self.assertEqual(self.offered("wickfield-bundle "), sorted(COMMANDS))

    def test_each_command_offers_its_options_and_no_others(self):
        for command in COMMANDS:
            self.assertEqual(self.offered(f"wickfield-bundle {command} --"), self.words_of(command))

    def test_values_that_are_known_are_offered(self):
        self.assertEqual(self.offered("wickfield-bundle show -f "), ["json", "text", "tree"])
        self.assertEqual(self.offered("wickfield-bundle create --host m"), ["macos"])

    def test_files_and_folders_are_offered_where_they_are_wanted(self):
        self.assertEqual(self.offered("wickfield-bundle create --agreement w"), ["wickfield.json"])
        self.assertEqual(self.offered("wickfield-bundle check "), ["My Installer.app/", "build/"])
        self.assertEqual(self.offered("wickfield-bundle create --name "), [])

    def test_a_program_that_is_missing_says_nothing(self):
        self.environment["PATH"] = "/usr/bin:/bin"
        self.assertEqual(self.offered("kzfile -"), [])
