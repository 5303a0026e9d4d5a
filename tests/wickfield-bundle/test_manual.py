"""The manual page and the completion against what the program says of itself."""
import json
import os
import pathlib
import pty
import re
import select
import shutil
import signal
import subprocess
import time

from support import WICKFIELD_BUNDLE, BundleCase

ROOT = pathlib.Path(__file__).resolve().parents[2]
MANUAL = ROOT / "tools" / "wickfield-bundle" / "wickfield-bundle.1"
SCHEMA = ROOT / "tools" / "wickfield-bundle" / "wickfield.schema.json"
COMPLETION = ROOT / "tools" / "commandline" / "completion.bash"
COMMANDS = ("create", "check", "show")


class OwnWords(BundleCase):
    def options(self, command):
        """The options with their letters and values, as the command's help has them: "-f, --format text|tree|json"."""
        lines = re.findall(r"^ +((?:-[a-z], )?--[a-z-]+(?: \S+)?)  ", self.output(command, "--help"), re.MULTILINE)
        self.assertIn("-h, --help", lines)
        return [line for line in lines if line != "-h, --help"]

    def rules(self, severity):
        return [rule["rule"] for rule in json.loads(self.output("check", "--rules", "--json"))
                if rule["severity"] == severity]


class Manual(OwnWords):
    def formatted(self):
        """As man shows it, wide enough for no line to be broken."""
        if shutil.which("man") is None:
            self.skipTest("there is no man on this machine")
        run = subprocess.run(["man", "--warnings=w", "-E", "UTF-8", "-l", MANUAL], check=False, timeout=60,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                             env={**self.environment, "MANWIDTH": "9999"})
        if run.returncode != 0 and b"groff" in run.stderr:
            self.skipTest("groff is not on this machine")
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        return run.stdout.decode()

    def section(self, text, command):
        found = re.search(rf"^ +wickfield-bundle {command} \[OPTION\].*?(?=^ +wickfield-bundle |^[A-Z])",
                          text.split("\nCOMMANDS\n")[1], re.MULTILINE | re.DOTALL)
        self.assertIsNotNone(found, command)
        return found.group()

    def test_it_is_formatted_without_a_warning(self):
        self.assertIn("WICKFIELD-BUNDLE(1)", self.formatted())

    def test_it_has_the_options_of_each_command_and_no_others(self):
        text = self.formatted()
        for command in COMMANDS:
            described = re.findall(r"^ +((?:-[a-z], )?--[a-z-]+(?: \S+)?)$", self.section(text, command), re.MULTILINE)
            self.assertEqual(described, self.options(command), command)

    def test_it_lists_the_rules_by_their_severity(self):
        text = self.formatted().split("\nRULES\n")[1]
        for severity, title in (("error", "Errors"), ("warning", "Warnings"), ("note", "Notes")):
            listed = re.search(rf"^ +{title}\s+(.*)\.$", text, re.MULTILINE)
            self.assertIsNotNone(listed, title)
            self.assertEqual(listed.group(1).split(", "), self.rules(severity))

    def test_it_names_the_keys_of_a_project_file(self):
        described = re.search(r"Its keys are (.*?)  A key (\S+) is for editors", self.formatted())
        keys = re.findall(r"[$a-z]+", described.group(1).split(", which is")[0].replace(" and ", " "))
        self.assertEqual({*keys, described.group(2)}, set(json.loads(SCHEMA.read_text())["properties"]))


class Completion(OwnWords):
    """In bash, by what it would offer for the last word."""

    def setUp(self):
        super().setUp()
        self.file("build/My.vst3/a")
        self.file("My Installer.app/a")
        self.file("wickfield.json")
        self.environment["PATH"] = f"{pathlib.Path(WICKFIELD_BUNDLE).parent}:{self.environment['PATH']}"

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
            words = sorted(re.search("--[a-z-]+", line).group() for line in self.options(command))
            self.assertEqual(self.offered(command, "--"), sorted([*words, "--help"]))

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

    def typed_on_a_terminal(self, keys, wanted):
        """What an interactive bash shows after these keys, up to what is wanted or for ten seconds."""
        child, terminal = pty.fork()
        if child == 0:
            os.chdir(self.work)
            os.execve("/bin/bash", ["bash", "--noprofile", "--norc", "-i"],
                      {**self.environment, "PS1": "ready> ", "INPUTRC": "/dev/null", "HISTFILE": "", "TERM": "dumb"})
        os.write(terminal, f"bind 'set enable-bracketed-paste off'; source '{COMPLETION}'\n".encode())
        shown, deadline, sent = b"", time.monotonic() + 10, False
        while time.monotonic() < deadline and wanted not in shown:
            if select.select([terminal], [], [], 0.1)[0]:
                shown += os.read(terminal, 65536)
            if not sent and shown.count(b"ready> ") >= 2:
                os.write(terminal, keys)
                sent = True
        os.kill(child, signal.SIGKILL)
        os.close(terminal)
        os.waitpid(child, 0)
        return shown

    def test_the_tab_key_completes_words_and_quotes_names(self):
        wanted = b"wickfield-bundle check --strict My\\ Installer.app/"
        self.assertIn(wanted, self.typed_on_a_terminal(b"wickfield-bundle che\t--str\tMy\t", wanted))

    def test_the_tab_key_goes_on_from_a_name_that_is_quoted(self):
        wanted = b"My\\ Installer.app/"
        self.assertIn(wanted, self.typed_on_a_terminal(b"wickfield-bundle check My\\ In\t", wanted))

    def test_the_destination_can_be_typed_right_behind_a_source(self):
        wanted = b"--item wickfield.json=/opt"
        self.assertIn(wanted, self.typed_on_a_terminal(b"wickfield-bundle create --item wick\t=/opt", wanted))

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
