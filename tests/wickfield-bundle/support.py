"""wickfield-bundle in a folder of its own, with what it works on."""
import os
import pathlib
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent))
from command_case import LONGEST, CommandCase, is_root, without_colour  # noqa: E402,F401

WICKFIELD_BUNDLE = os.environ["WICKFIELD_BUNDLE"]
NOBODY = 65534
RESOURCES = "Contents/Resources"
TREE = "Contents/Resources/PluginStructure"


class BundleCase(CommandCase):
    program = WICKFIELD_BUNDLE

    def template(self, name="Template.app"):
        """What an installer is made of, with a program that does nothing."""
        self.file(f"{name}/Contents/Linux/Wickfield", b"#!/bin/sh\n", 0o755)
        return self.work / name

    def bundle(self, name="Small Installer.app"):
        """A complete installer with an empty tree, made by hand."""
        bundle = self.template(name)
        (bundle / TREE).mkdir(parents=True)
        self.file(f"{name}/{RESOURCES}/InstallerSettings.plist",
                  b'<plist version="1.0"><dict><key>KZPluginName</key><string>Small</string>'
                  b"<key>KZPluginVersion</key><string>1.0</string>"
                  b"<key>KZPluginAuthor</key><string>Nobody</string></dict></plist>\n")
        return bundle


def snapshot(folder):
    """Everything in a folder by path: kind, mode, owner, size, times but the last access, content or target of a
    link."""
    found = {}
    for path in [pathlib.Path(folder), *sorted(pathlib.Path(folder).rglob("*"))]:
        status = path.lstat()
        content = os.readlink(path) if path.is_symlink() else path.read_bytes() if path.is_file() else None
        found[str(path)] = (status.st_mode, status.st_uid, status.st_gid, status.st_size, status.st_mtime_ns,
                            status.st_ctime_ns, content)
    return found
