"""The command for a CMake build that makes a bundle, in a project of its own."""
import json
import os
import pathlib
import subprocess

from support import TREE, WICKFIELD_BUNDLE, BundleCase

MODULES = pathlib.Path(__file__).resolve().parents[2] / "cmake"


class CMakeTest(BundleCase):
    def setUp(self):
        super().setUp()
        self.build = self.work / "build"
        self.template("build/tools/wickfield-bundle/share/wickfield/templates/linux/Wickfield.app")
        self.file("build/tools/wickfield-bundle/template.stamp", b"")
        self.file("CMakeLists.txt", f"""
            cmake_minimum_required(VERSION 3.25)
            project(Brook LANGUAGES NONE)
            set(WICKFIELD_HOST linux)
            include("{MODULES}/InstallerBundle.cmake")
            add_executable(wickfield-bundle IMPORTED)
            set_target_properties(wickfield-bundle PROPERTIES IMPORTED_LOCATION "{WICKFIELD_BUNDLE}")
            add_custom_target(installer-template)
            wickfield_installer_bundle(installer PROJECT installer/wickfield.json)
            """.encode())
        agreement = self.file("elsewhere/Agreement.txt")
        self.file("presets/Calm.preset")
        self.file("build/Brook.clap", mode=0o755)
        self.file("installer/wickfield.json", b"// With comments.\n" + json.dumps({
            "name": "Brook", "version": "1.3", "author": "Fenwick", "agreement": str(agreement),
            "items": [{"source": "../presets", "destination": "/Users/user/Documents/Brook"},
                      {"source": "../build/Brook.clap", "destination": "/Users/user/.clap/"}]}).encode())
        self.run_cmake("-S", str(self.work), "-B", str(self.build), "-G", "Ninja")

    def run_cmake(self, *words):
        run = subprocess.run(["cmake", *words], env=self.environment, capture_output=True, check=False, timeout=60)
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        return run.stdout.decode()

    def presets(self):
        self.run_cmake("--build", str(self.build))
        return sorted(os.listdir(self.build / "Brook Installer.app" / TREE / "Users/user/Documents/Brook"))

    def test_makes_a_bundle_of_what_the_project_names_by_any_path(self):
        self.assertEqual(self.presets(), ["Calm.preset"])
        self.assertTrue((self.build / "Brook Installer.app" / TREE / "Users/user/.clap/Brook.clap").exists())

    def test_makes_it_anew_when_an_item_gains_a_file_or_changes(self):
        self.presets()
        self.file("presets/Wild.preset")
        self.assertEqual(self.presets(), ["Calm.preset", "Wild.preset"])
        self.assertNotIn("Making", self.run_cmake("--build", str(self.build)))
        self.file("presets/Wild.preset", b"changed")
        self.assertIn("Making", self.run_cmake("--build", str(self.build)))
