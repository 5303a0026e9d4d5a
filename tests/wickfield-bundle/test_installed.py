"""wickfield-bundle as it is installed, with what it makes installers of."""
import json
import os
import pathlib
import shutil
import subprocess

from support import BundleCase

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["WICKFIELD_BUILD"])
TEMPLATE = BUILD / "tools/wickfield-bundle/share/wickfield/templates/linux/Wickfield.app"


def install_maker(prefix, scratch):
    """The component alone, from the folder that the tests were built in."""
    script = BUILD / "cmake_install.cmake"
    if not os.access(BUILD, os.W_OK):  # the script notes in there what it has installed
        script = scratch / "cmake_install.cmake"
        text = (BUILD / "cmake_install.cmake").read_text()
        script.write_text(text.replace(f'file(WRITE "{BUILD}/', f'file(WRITE "{scratch}/'))
    subprocess.run(["cmake", f"-DCMAKE_INSTALL_PREFIX={prefix}", "-DCMAKE_INSTALL_COMPONENT=maker", "-P", script],
                   check=True, timeout=100, stdout=subprocess.DEVNULL)


class Installed(BundleCase):
    """Installed into a folder that is moved afterwards, as whoever packs it would do."""

    def setUp(self):
        super().setUp()
        if not TEMPLATE.is_dir():
            self.skipTest("the installer's template was not built")
        first = self.folder / "first prefix"
        install_maker(first, self.folder)
        self.prefix = self.folder / "moved"
        first.rename(self.prefix)
        self.program = self.prefix / "bin" / "wickfield-bundle"

    def run_installed(self, *words, code=0, program=None):
        run = subprocess.run([program or self.program, *words], cwd=self.work, env=self.environment, check=False,
                             timeout=100, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertEqual((run.returncode, run.stderr), (code, b""), run.stdout.decode(errors="replace"))
        return run.stdout.decode()

    def make_small_installer(self, *words, **options):
        self.file("presets/Calm.preset")
        return self.run_installed("create", "--name", "Small", "--version", "1", "--author", "Nobody", "--item",
                                  "presets=/Users/user/Documents/Small/", *words, **options)

    def test_it_creates_checks_and_shows_from_where_it_was_moved_to(self):
        self.assertEqual(self.make_small_installer(), "./Small Installer.app\n")
        report = json.loads(self.run_installed("check", "--json", "Small Installer.app"))
        self.assertEqual(report["errors"], 0)
        plan = json.loads(self.run_installed("show", "--json", "--home", self.home, "Small Installer.app"))
        self.assertEqual([item["destination"] for item in plan["items"]],
                         [f"{self.home}/Documents/Small/presets/Calm.preset"])

    def test_it_is_found_through_a_link_with_its_templates(self):
        (self.work / "link").symlink_to(self.program)
        self.assertEqual(self.make_small_installer(program=self.work / "link"), "./Small Installer.app\n")

    def test_an_installer_that_it_made_needs_nothing_of_it(self):
        self.make_small_installer()
        made = self.work / "Small Installer.app" / "Contents" / "Linux" / "Wickfield"
        self.prefix.rename(self.folder / "gone")
        libraries = subprocess.run(["ldd", made], check=True, timeout=60, stdout=subprocess.PIPE).stdout.decode()
        self.assertNotIn("not found", libraries)
        self.assertNotIn(str(BUILD), libraries)

    def test_the_check_reads_agreements_with_the_helper_beside_it(self):
        self.file("Agreement.html", b"<p>Agree to this.</p>\n")
        self.make_small_installer("--agreement", "Agreement.html")

        def not_checked():
            report = json.loads(self.run_installed("check", "--json", "Small Installer.app"))
            return [finding["place"] for finding in report["findings"] if finding["rule"] == "not-checked"]
        self.assertEqual(not_checked(), [])
        (self.prefix / "libexec/wickfield/wickfield-media").unlink()
        self.assertEqual(not_checked(), ["Contents/Resources/Agreement.html"])

    def test_the_tool_itself_needs_no_window(self):
        libraries = subprocess.run(["ldd", self.program], check=True, timeout=60, stdout=subprocess.PIPE).stdout
        self.assertNotIn(b"libQt", libraries)

    def test_manual_schema_example_and_completion_lie_where_they_are_looked_for(self):
        for installed, source in (("share/man/man1/wickfield-bundle.1", "tools/wickfield-bundle/wickfield-bundle.1"),
                                  ("share/wickfield/wickfield.schema.json", "tools/wickfield-bundle/wickfield.schema.json"),
                                  ("share/wickfield/example/wickfield.json",
                                   "tools/wickfield-bundle/example/wickfield.json"),
                                  ("share/bash-completion/completions/wickfield-bundle",
                                   "tools/commandline/completion.bash"),
                                  ("share/zsh/site-functions/_wickfield-bundle", "tools/commandline/completion.zsh"),
                                  ("share/fish/vendor_completions.d/wickfield-bundle.fish",
                                   "tools/commandline/completion.fish")):
            self.assertEqual((self.prefix / installed).read_bytes(), (ROOT / source).read_bytes(), installed)

    def test_man_finds_the_manual_by_the_path_of_the_program(self):
        if shutil.which("manpath") is None:
            self.skipTest("there is no man on this machine")
        run = subprocess.run(["manpath", "-q"], check=True, timeout=60, stdout=subprocess.PIPE,
                             env={"PATH": f"{self.prefix}/bin:/usr/bin:/bin", "HOME": str(self.home)})
        self.assertIn(f"{self.prefix}/share/man", run.stdout.decode().strip().split(":"))

    def test_the_example_finds_its_schema(self):
        example = self.prefix / "share/wickfield/example"
        self.assertTrue((example / "../wickfield.schema.json").is_file())
        self.assertIn('"$schema": "../wickfield.schema.json"', (example / "wickfield.json").read_text())

    def test_nothing_else_is_installed_with_it(self):
        names = {path.relative_to(self.prefix).parts[0] for path in self.prefix.iterdir()}
        self.assertEqual(names, {"bin", "libexec", "share"})
        self.assertEqual([path.name for path in (self.prefix / "bin").iterdir()], ["wickfield-bundle"])
