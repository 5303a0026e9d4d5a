"""The manual page against what the program says of itself."""
import json
import pathlib
import re
import shutil
import subprocess

from support import BundleCase

ROOT = pathlib.Path(__file__).resolve().parents[2]
MANUAL = ROOT / "tools" / "wickfield-bundle" / "wickfield-bundle.1"
SCHEMA = ROOT / "tools" / "wickfield-bundle" / "wickfield.schema.json"
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
