"""docs/makers.md: its commands run, and its tables say what the program says."""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import stand_ins
import tutorial
from support import WICKFIELD_BUNDLE, BundleCase
from test_installed import BUILD, TEMPLATE, install_maker

sys.path.insert(0, os.environ.get("WICKFIELD_E2E_TESTS", ""))
try:
    from case import WindowCase
except ImportError:
    WindowCase = unittest.TestCase

ROOT = tutorial.ROOT
SCHEMA = ROOT / "tools" / "wickfield-bundle" / "wickfield.schema.json"


class FollowingIt(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        if not TEMPLATE.is_dir():
            self.skipTest("the installer's template was not built")
        self.scratch = pathlib.Path(tempfile.mkdtemp(prefix="wickfield-tutorial."))
        self.addCleanup(shutil.rmtree, self.scratch, ignore_errors=True)
        self.home = tutorial.make_home()
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)

    def follow(self, wanted):
        install_maker(self.scratch / "prefix", self.scratch)
        tutorial.prepare(self.home, self.scratch / "prefix")
        code = tutorial.run(wanted, self.home)
        self.assertEqual(code, 0, "\n".join(f"{step.commands}{step.printed}" for step in wanted))

    def test_every_command_does_its_work_and_prints_what_is_shown(self):
        steps = tutorial.steps()
        self.assertGreater(len(steps), 10)
        self.follow(steps)
        for step in steps:
            self.assertEqual(step.printed, step.shown or "", step.commands)

    def test_it_shows_a_mistake_that_is_found_and_mended(self):
        checks = [step.shown for step in tutorial.steps() if "wickfield-bundle check" in step.commands]
        self.assertIn("1 error, ", checks[0])
        self.assertIn("exit status 1", checks[0])
        for shown in checks[1:]:
            self.assertIn(": 0 errors, ", shown)

    def test_every_block_of_commands_in_the_tutorial_is_among_those_that_are_run(self):
        fences = re.findall(r"^```(\w*)\n", tutorial.section("Tutorial"), re.MULTILINE)
        self.assertEqual(fences.count("sh"), len(tutorial.steps()))
        self.assertEqual(fences.count("text"), len([step for step in tutorial.steps() if step.shown is not None]))
        self.assertEqual(set(fences), {"sh", "text", ""})

    def test_the_tool_can_be_had_as_it_says(self):
        """In a checkout, with stand-ins for what takes long."""
        bin_folder = self.scratch / "bin"
        stand_ins.make(bin_folder, BUILD)
        (step,) = tutorial.steps("Getting the tool")
        step.commands = f'export PATH="{bin_folder}:$PATH"\n{step.commands}wickfield-bundle --version\n'
        self.scratch.chmod(0o755)
        tutorial.give_to_ordinary_user(self.home)
        code = tutorial.run([step], self.home, ROOT)
        self.assertEqual(code, 0, step.printed)
        self.assertRegex(step.printed, r"\Awickfield-bundle \d")
        self.assertEqual(sorted(os.listdir(self.home / ".local")), ["bin", "libexec", "share"])


class OpeningIt(WindowCase):
    """The installer that the tutorial ends with, in its window."""

    def setUp(self):
        if WindowCase is unittest.TestCase:
            self.skipTest("the installer's window is not built")
        super().setUp()
        self.reader = tutorial.make_home()
        self.addCleanup(shutil.rmtree, self.reader, ignore_errors=True)
        install_maker(self.folder / "prefix", self.folder)
        tutorial.prepare(self.reader, self.folder / "prefix")

    def make_installer(self):
        steps = tutorial.steps()
        last = next(number for number, step in enumerate(steps) if step.title == "The archive")
        self.assertEqual(tutorial.run(steps[:last], self.reader), 0)
        return type(self.built)(self.reader / "pebble" / "Pebble Installer.app")

    def show(self, bundle, home):
        run = subprocess.run([WICKFIELD_BUNDLE, "show", "--json", "--home", str(home.path), str(bundle.path)],
                             check=True, timeout=60, stdout=subprocess.PIPE)
        return json.loads(run.stdout)

    def test_it_asks_for_agreement_and_does_what_show_and_the_script_say(self):
        bundle = self.make_installer()
        customer = type(self.home)(self.reader / "customer", logging=False)
        cache = customer.path / "Library" / "Caches" / "Pebble"
        cache.mkdir(parents=True)
        items = {item["destination"]: item["state"] for item in self.show(bundle, customer)["items"]}
        self.assertEqual(sorted(items.values()), ["new", "new", "new", "replaced"])
        installer = self.launch(bundle, customer)
        installer.wait_for_window("Pebble Installer")
        installer.press_button("Agree")
        installer.press_button("Install")
        installer.wait_for_text("Installation complete", seconds=60)
        for destination in items:
            self.assertTrue(os.path.lexists(destination), destination)
        self.assertEqual((customer.path / "Documents/Pebble/Presets/Calm.preset").read_text(), "size = 3\n")
        self.assertEqual(customer.trashed(), ["Calm.preset"])
        self.assertFalse(cache.exists())


class LookingThingsUp(BundleCase):
    maxDiff = None

    def rows(self, title):
        """The first cells of the section's table, without their quotes."""
        lines = [line for line in tutorial.section(title).splitlines() if line.startswith("| ")]
        return [line.split("|")[1].strip().strip("`") for line in lines[1:]]

    def test_the_findings_are_those_of_the_program(self):
        self.assertEqual("|" + tutorial.section("Findings").split("\n\n|", 1)[1],
                         tutorial.table_of_findings(WICKFIELD_BUNDLE))

    def test_the_keys_of_a_project_file_are_those_of_the_schema(self):
        self.assertEqual(set(self.rows("The project file")), set(json.loads(SCHEMA.read_text())["properties"]))

    def test_the_options_beside_the_keys_are_those_of_create(self):
        words = self.output("create", "--help")
        for option in re.findall(r"`(--[a-z-]+)", tutorial.section("The project file")):
            self.assertRegex(words, rf"(?m)^ +(-[a-z], )?{option}[ \n]")

    def test_each_placeholder_is_put_where_it_says(self):
        for placeholder in self.rows("Destinations and placeholders")[:-1]:
            self.file("a")
            destination = placeholder.replace("…", "x")
            self.output("create", "--name", "Small", "--version", "1", "--author", "Nobody", "--force", "--template",
                        str(self.template()), "--item", f"a={destination}")
            plan = json.loads(self.output("show", "--json", "--home", str(self.home), "Small Installer.app"))
            self.assertEqual([item["destination"] for item in plan["items"]],
                             [destination.replace("/Users/user", str(self.home))])

    def test_the_members_of_the_output_for_programs_are_named(self):
        described = tutorial.section("Output for programs")
        self.file("a")
        self.output("create", "--name", "Small", "--version", "1", "--author", "Nobody", "--template",
                    str(self.template()), "--item", "a=/opt/small/a")
        plan = json.loads(self.output("show", "--json", "Small Installer.app"))
        report = json.loads(self.run_program("check", "--json", "Small Installer.app").stdout)
        for name in [*plan, *plan["items"][0], *plan["folders"][0], *plan["totals"], *report, *report["findings"][0]]:
            self.assertIn(f"`{name}`", described)

    def test_what_it_links_to_is_there(self):
        text = tutorial.DOCUMENT.read_text()
        headings = {re.sub(r"[^a-z0-9 -]", "", title.lower()).replace(" ", "-")
                    for title in re.findall(r"^#+ (.*)$", text, re.MULTILINE)}
        for target in re.findall(r"\]\(([^)]+)\)", text):
            path, _, anchor = target.partition("#")
            if path:
                self.assertTrue((tutorial.DOCUMENT.parent / path).exists(), target)
            else:
                self.assertIn(anchor, headings)
