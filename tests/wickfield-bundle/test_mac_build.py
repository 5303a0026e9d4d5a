"""The script that a Mac's build makes a bundle with, where wickfield-bundle is not built: it reads the same project
files, and what it makes of them is the same."""
import json
import os
import pathlib
import plistlib
import subprocess

from support import RESOURCES, BundleCase

SOURCES = pathlib.Path(__file__).resolve().parents[2]
SCRIPTS = SOURCES / "cmake/macos"


class MacBuildTest(BundleCase):
    def assemble(self, project, tree=""):
        self.file("Wickfield", b"#!/bin/sh\n", 0o755)
        bundle = self.work / "mac" / "Assembled.app"
        subprocess.run(["cmake", f"-DBUNDLE={bundle}", f"-DEXECUTABLE={self.work / 'Wickfield'}",
                        f"-DTEMPLATE={SCRIPTS / 'InstallerInfo.plist.in'}", f"-DPROJECT={project}", f"-DTREE={tree}",
                        "-P", SCRIPTS / "AssembleBundle.cmake"], check=True)
        return bundle

    def test_makes_the_same_of_a_project_as_wickfield_bundle(self):
        for name in ("docs/Agreement.rtf", "art/Back ground.png", "scripts/quit.sh", "scripts/register.scpt",
                     "tree/Library/Brook/a", "build/Brook.vst3/Contents/Info.plist", "Manual.pdf"):
            self.file(name, name.encode())
        project = self.file("wickfield.json", b"// With comments.\n" + json.dumps({
            "name": "Brook & <Delay>", "version": "1.3", "author": "Fenwick & Söhne", "identifier": "com.example.brook",
            "agreement": "docs/Agreement.rtf", "background": "art/Back ground.png", "branding": False,
            "preinstall": "scripts/quit.sh", "postinstall": "scripts/register.scpt", "tree": "tree",
            "items": [{"source": "build/Brook.vst3", "destination": "/Library/Audio/Plug-Ins/VST3/Brook.vst3"},
                      {"source": "Manual.pdf", "destination": "/Users/user/Documents/Brook Manual.pdf"}],
        }).encode())
        self.template()
        self.output("create", "--project", str(project), "--template", "Template.app", "--output", "out")
        ours = self.work / "out" / "Brook & <Delay> Installer.app" / RESOURCES
        theirs = self.assemble(project) / RESOURCES

        def files(folder):
            return {str(path.relative_to(folder)): path.read_bytes() for path in folder.rglob("*")
                    if path.is_file() and path.name != "InstallerSettings.plist"}
        self.assertEqual(files(theirs), files(ours))
        settings = [plistlib.loads((each / "InstallerSettings.plist").read_bytes()) for each in (theirs, ours)]
        self.assertEqual(settings[0], settings[1])

    def test_names_the_bundle_and_its_items_as_wickfield_bundle_does(self):
        self.file("built/1.3/Brook.vst3/Contents/Info.plist", b"info")
        (self.work / "Brook.vst3").symlink_to("built/1.3/Brook.vst3")
        project = self.file("wickfield.json", json.dumps({
            "name": "Brook & <Delay>", "author": "Fenwick & Sons Ltd.",
            "items": [{"source": "Brook.vst3", "destination": "/Library/Audio/Plug-Ins/VST3/"}]}).encode())
        self.template()
        run = self.run_program("create", "--project", str(project), "--template", "Template.app", "--output", "out")
        self.assertEqual(run.returncode, 0, run.stderr)
        bundles = [self.assemble(project), self.work / "out" / "Brook & <Delay> Installer.app"]
        items = [sorted(str(path.relative_to(bundle)) for path in (bundle / RESOURCES / "PluginStructure").rglob("*"))
                 for bundle in bundles]
        self.assertEqual(items[0], items[1])
        information = [plistlib.loads((bundle / "Contents/Info.plist").read_bytes()) for bundle in bundles]
        for key in ("CFBundleName", "CFBundleIdentifier", "CFBundleShortVersionString", "CFBundleVersion"):
            self.assertEqual(information[0][key], information[1][key], key)

    def test_takes_the_tree_that_the_build_makes(self):
        self.file("made/Library/x")
        project = self.file("wickfield.json", b'{"name": "Brook", "identifier": "com.example.brook"}')
        bundle = self.assemble(project, self.work / "made")
        self.assertEqual(os.listdir(bundle / RESOURCES / "PluginStructure/Library"), ["x"])
