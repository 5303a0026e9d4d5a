"""Random trees for installers: what a maker could have, and more. All by one generator, so that a seed tells all."""
import os

PLACEHOLDERS = [  # as the installer has them, the first that a path begins with counts; and where they lead in a home
    (b"/Users/user/Library/Preferences", b"Library/Preferences"),
    (b"/Users/user/Library/Application Support", b"Library/Application Support"),
    (b"/Users/user/Documents", b"Documents"),
    (b"/Users/user", b""),
]
PACKAGE_EXTENSIONS = [b".vst3", b".component", b".clap", b".app", b".VST3", b".bundle"]
MODES = [0o644, 0o644, 0o600, 0o755, 0o444, 0o640, 0o664]
FOLDER_MODES = [0o755, 0o755, 0o700, 0o750, 0o775]
ODD_NAMES = [
    "Café".encode(), b"Cafe\xcc\x81", "静か".encode(), "🎛️ knobs".encode(), b"-dash", b"--", b"100%@ %n", b"back\\slash",
    b"colon:name", b"quote\"'`$HOME", b" blank at both ends ", b"tab\there", b"line\nbreak", b"star*[a]?", b"a.b.c",
    b"trailing.", b"UPPER", b"upper", b"\xe2\x80\xaeright to left", b"#hash", b"a=b", b"name.vst3.txt", b"{brace}",
]


def destination_of(path, home):
    """Where the installer puts what has this path in the tree."""
    for prefix, folder in PLACEHOLDERS:
        if path.startswith(prefix):
            return b"/".join(part for part in (home, folder, path[len(prefix):].strip(b"/")) if part)
    return path


def is_package(name):
    """Whether a folder of that name is taken as one."""
    return any(name.lower().endswith(extension.lower()) and name != extension for extension in PACKAGE_EXTENSIONS)


class RandomTree:
    def __init__(self, generator, folder, odd_names=True, attributes=True, read_only=True):
        self.random = generator
        self.folder = folder  # that holds what the links may lead to
        self.odd_names = odd_names
        self.attributes = attributes
        self.modes = [mode for mode in MODES if read_only or mode & 0o200]

    # Names

    def name(self):
        kind = self.random.random()
        if self.odd_names and kind < 0.25:
            return self.random.choice(ODD_NAMES)
        if kind < 0.28:
            return bytes(self.random.choices(b"nmlk", k=self.random.choice([200, 250, 255])))
        return b"".join(self.random.choices([b"preset", b"Hall", b"a", b"b", b"x1", b" ", b"_", b"Plate"],
                                            k=self.random.randint(1, 4))).strip() or b"x"

    def file_name(self):
        if self.odd_names and self.random.random() < 0.02:
            return b"no UTF-8 \xff\xc3" + self.name()[:200]
        hidden = b"." if self.random.random() < 0.08 else b""
        return (hidden + self.name() + self.random.choice([b"", b"", b".txt", b".plist"]))[:255].rstrip() or b"f"

    def folder_name(self):
        name = self.name()
        hidden = b"." if self.random.random() < 0.08 else b""
        return hidden + (name + b"_" if is_package(name) else name)[:250]

    def package_name(self):
        hidden = b"." if self.random.random() < 0.08 else b""
        return hidden + self.name()[:200] + self.random.choice(PACKAGE_EXTENSIONS)

    # Things

    def set_attributes(self, path):
        if self.attributes and self.random.random() < 0.2:
            for number in range(self.random.randint(1, 3)):
                os.setxattr(path, f"user.test.{number}", self.random.randbytes(self.random.choice([0, 1, 30, 900])))

    def write_file(self, path):
        size = self.random.choice([0, 1, 20, 500, 4095, 4096, 65537])
        with open(path, "wb") as file:
            if self.random.random() < 0.03:  # a hole
                file.truncate(1 << 20)
                file.seek(0, os.SEEK_END)
            file.write(self.random.randbytes(size))
        self.set_attributes(path)
        os.chmod(path, self.random.choice(self.modes))
        seconds = self.random.randint(0, 1_700_000_000)
        os.utime(path, ns=(seconds * 10**9, seconds * 10**9 + self.random.randint(0, 10**9 - 1)))

    def write_package(self, path, depth=3):
        os.mkdir(path)
        for _ in range(self.random.randint(0, 4)):
            inner = os.path.join(path, self.file_name())
            if os.path.lexists(inner):
                continue
            kind = self.random.random()
            if kind < 0.15:
                target = self.random.choice([b"Contents/x", b"..", b"nowhere", b"./a/../b", self.folder + b"/standing"])
                os.symlink(target, inner)
            elif kind < 0.5 and depth > 0:
                self.write_package(inner, depth - 1)
            else:
                self.write_file(inner)
        self.set_attributes(path)
        os.chmod(path, self.random.choice(FOLDER_MODES))

    def fill(self, folder, depth=3):
        for _ in range(self.random.randint(0, 5)):
            kind = self.random.random()
            if kind < 0.45:
                make, name = self.write_file, self.file_name()
            elif kind < 0.6:
                make, name = self.write_package, self.package_name()
            elif kind < 0.65:  # one that leads to what stands on the disk, or to a folder on the way
                make, name = self.write_link, self.random.choice([self.file_name, self.folder_name, self.package_name])()
            elif depth > 0:
                make, name = lambda path: self.make_folder(path, depth - 1), self.folder_name()
            else:
                continue
            path = os.path.join(folder, name)
            if not os.path.lexists(path):
                make(path)

    def write_link(self, path):
        os.symlink(self.random.choice([self.folder + b"/standing", self.folder + b"/shared", b".", b".."]), path)

    def make_folder(self, path, depth):
        os.mkdir(path)
        self.fill(path, depth)
        os.chmod(path, self.random.choice(FOLDER_MODES))

    def fill_root(self, root, target):
        """A mirror of the disk: some of it for the folder `target`, some for the user's own folders."""
        for start in [target, b"/Users/user", b"/Users/user/Documents/Sub", b"/Users/user/Library/Preferences",
                      b"/Users/user/Library/Application Support/Maker", b"/Users/user/Library/PreferencesX",
                      b"/Users/username"]:
            if self.random.random() < 0.6:
                folder = root + start
                os.makedirs(folder, exist_ok=True)
                self.fill(folder)


def items_of(tree, here=b"", trail=()):
    """What an installation takes as one, by path in the tree, with its source: written down anew from the rules."""
    found = {}
    status = os.stat(tree + here)
    trail = (*trail, (status.st_dev, status.st_ino))
    for name in os.listdir(tree + here):
        path = here + b"/" + name
        source = tree + path
        if os.path.isdir(source) and not is_package(name):
            status = os.stat(source)
            if (status.st_dev, status.st_ino) not in trail:
                found.update(items_of(tree, path, trail))
                continue
        if not name.startswith(b"."):
            found[path] = source
    return found
