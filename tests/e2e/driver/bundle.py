"""Copies of the built sample bundle, changed as a plug-in maker might."""
import plistlib
import shutil
from pathlib import Path


class Bundle:
    def __init__(self, path):
        self.path = Path(path)
        self.resources = self.path / "Contents" / "Resources"
        self.tree = self.resources / "PluginStructure"
        self.executable = next((self.path / "Contents" / "Linux").iterdir())

    def copy(self, path, with_tree=True):
        """A copy at `path`; without the tree, an empty one takes its place."""
        skip = None if with_tree else shutil.ignore_patterns("PluginStructure")
        shutil.copytree(self.path, path, symlinks=True, ignore=skip)
        copied = Bundle(path)
        copied.tree.mkdir(exist_ok=True)
        return copied

    def change_settings(self, **values):
        """Sets keys of the settings; a value of None takes the key away."""
        path = self.resources / "InstallerSettings.plist"
        settings = plistlib.loads(path.read_bytes())
        for key, value in values.items():
            settings.pop(key, None)
            if value is not None:
                settings[key] = value
        path.write_bytes(plistlib.dumps(settings))

    def set_script(self, name, text):
        """Writes preinstall.sh or postinstall.sh; None takes it away."""
        path = self.resources / name
        path.unlink(missing_ok=True)
        if text is not None:
            path.write_text(text)
            path.chmod(0o755)

    def add(self, path, content=b"content\n"):
        """Adds a file to the tree."""
        target = self.tree / path
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(content)
        return target
