"""What create makes of a random tree, and show says of it, is what the installer installs.

The seed is printed by a failure; WICKFIELD_SEED repeats it, WICKFIELD_ROUNDS tells how many trees are tried.
"""
import json
import os
import random
import subprocess
import unittest

from random_trees import RandomTree, destination_of, items_of
from support import LONGEST, WICKFIELD_BUNDLE, BundleCase
from trees import described, paths_below, write_times

RUNNER = os.environ.get("WICKFIELD_INSTALL_RUNNER", "")
SEED = int(os.environ.get("WICKFIELD_SEED", random.SystemRandom().randrange(1 << 32)))
ROUNDS = int(os.environ.get("WICKFIELD_ROUNDS", "15"))


def has_attributes(folder):
    try:
        os.setxattr(folder, "user.test", b"")
        os.removexattr(folder, "user.test")
        return True
    except OSError:
        return False


class Maker:
    """A random tree and random items in a folder of their own, and a customer's disk with things that stand there."""

    def __init__(self, seed, folder, home, **traits):
        self.random = random.Random(seed)
        self.folder = os.fsencode(folder)
        self.home = os.fsencode(home)
        self.target = self.folder + b"/target"
        self.tree = self.folder + b"/tree"
        os.mkdir(self.tree)
        with open(self.folder + b"/standing", "wb") as file:
            file.write(b"stands there\n")
        os.makedirs(self.folder + b"/shared/inner")
        for name in (b"one", b"inner/two", b".hidden"):
            with open(self.folder + b"/shared/" + name, "wb") as file:
                file.write(name)
        self.trees = RandomTree(self.random, self.folder, attributes=has_attributes(self.folder), **traits)
        self.trees.fill_root(self.tree, self.target)
        self.items = self.make_items()

    def make_items(self):
        """Sources for --item, by their destinations."""
        sources = self.folder + b"/sources"
        os.mkdir(sources)
        items = {}
        for number in range(self.random.randint(0, 4)):
            start = self.random.choice([self.target, b"/Users/user", b"/Users/user/Documents"])
            source = sources + b"/%d" % number
            folder = start + b"/item %d" % number
            make, name = self.random.choice([(self.trees.write_file, self.trees.file_name),
                                             (self.trees.write_package, self.trees.package_name),
                                             (lambda path: self.trees.make_folder(path, 2), self.trees.folder_name)])
            make(source)
            items[folder + b"/" + self.plainly_named(name)] = source
        return items

    @staticmethod
    def plainly_named(name):
        """A destination is refused whose name no project file could hold."""
        while True:
            made = name()
            if made.isascii() and made.decode().isprintable() and b"=" not in made and not made.startswith(b"."):
                return made

    def words(self):
        """Of the command line that makes the bundle."""
        words = [b"--tree", self.tree]
        for destination, source in self.items.items():
            words += [b"--item", source + b"=" + destination]
        return words

    def wanted(self):
        """The items' own sources by their destinations on the customer's disk, by the rules. For once the bundle is made:
        the sources move."""
        found = items_of(self.tree)
        for destination, source in self.items.items():
            holder = source + b".mirror" + os.path.dirname(destination)  # a tree with nothing else in it
            os.makedirs(holder)
            os.rename(source, os.path.join(holder, os.path.basename(destination)))
            found.update(items_of(source + b".mirror"))
        return {destination_of(path, self.home): source for path, source in found.items()}

    def put_things_in_the_way(self, destinations):
        """Files and folders that stand where some of the items go, and beside them."""
        for destination in destinations:
            if self.random.random() < 0.25 and not os.path.lexists(destination):
                try:
                    os.makedirs(os.path.dirname(destination), exist_ok=True)
                    if self.random.random() < 0.3:
                        os.mkdir(destination)
                        destination = os.path.join(destination, b"inside")
                    with open(destination, "wb") as file:
                        file.write(b"old\n")
                except (FileExistsError, NotADirectoryError):
                    pass  # another one stands in its way already
            if self.random.random() < 0.1 and os.path.isdir(os.path.dirname(destination)):
                with open(os.path.join(os.path.dirname(destination), b"bystander"), "ab") as file:
                    file.write(b"mine\n")


def bytes_of(item, key):
    if f"{key}Bytes" in item:
        return bytes.fromhex(item[f"{key}Bytes"])
    return os.fsencode(item[key]) if item[key] is not None else None


def is_or_lies_in(path, folders):
    """Whether the path, or one above it, is among the folders."""
    path = path.rstrip(b"/")
    while path:
        if path in folders:
            return True
        path = path.rpartition(b"/")[0]
    return False


def everything(*folders):
    return {os.path.join(folder, path).rstrip(b"/") for folder in folders if os.path.isdir(folder)
            for path in paths_below(folder)}


class Comparison:
    """Of one installation with what was promised. `case` is the test; the promise is show's."""

    def __init__(self, case, maker, plan, wanted):
        self.case = case
        self.maker = maker
        self.plan = plan
        self.destinations = {bytes_of(item, "destination"): item for item in plan["items"]}
        self.wanted = wanted

    def check_promise(self):
        case = self.case
        case.assertEqual(len(self.destinations), len(self.plan["items"]), "two items share a place")
        case.assertEqual(sorted(self.destinations), sorted(self.wanted))
        case.assertEqual({item["state"] for item in self.plan["items"]} - {"new", "replaced"}, set())
        for destination, item in self.destinations.items():
            stands = os.path.exists(destination)
            case.assertEqual(item["state"], "replaced" if stands else "new", destination)

    def check_installed(self, before):
        case = self.case
        trash = {self.maker.home + b"/.Trash", self.maker.home + b"/.local"}
        for destination, source in self.wanted.items():
            case.assertEqual(described(destination), described(source), destination)
            if os.path.isdir(source) and not os.path.islink(source):
                case.assertEqual(write_times(destination), write_times(source), destination)
        made = {path for path in everything(self.maker.home, self.maker.target) - before
                if not is_or_lies_in(path, trash) and not is_or_lies_in(path, self.destinations)}
        folders = {bytes_of(folder, "path") for folder in self.plan["folders"]}
        case.assertLessEqual(made, folders | {self.maker.target})
        replaced = [path for path, item in self.destinations.items() if item["state"] == "replaced"]
        files = self.maker.home + b"/.local/share/Trash/files"
        in_trash = os.listdir(files) if os.path.isdir(files) else []
        case.assertEqual(len(in_trash), len(replaced))

    def check_bystanders(self, before):
        gone = before - everything(self.maker.home, self.maker.target)
        replaced = {path for path, item in self.destinations.items() if item["state"] == "replaced"}
        self.case.assertEqual({path for path in gone if not is_or_lies_in(path, replaced)}, set())


class RandomTrees(BundleCase):
    """By the installer's code without its window."""

    def setUp(self):
        super().setUp()
        if not os.access(RUNNER, os.X_OK):
            self.skipTest("the program that installs without a window is not built")
        self.made_template = self.template()

    def each(self, check, rounds=ROUNDS):
        for seed in range(SEED, SEED + max(1, rounds)):
            with self.subTest(f"WICKFIELD_SEED={seed} WICKFIELD_ROUNDS=1"):
                folder = self.folder / str(seed)
                home = folder / "home"
                home.mkdir(parents=True)
                check(Maker(seed, folder, home))

    def create(self, maker):
        folder = os.fsdecode(maker.folder)
        made = self.run_program("create", "--name", "Random", "--version", "1", "--author", "Nobody",
                             "--template", str(self.made_template), "--output", folder, *maker.words())
        self.assertEqual((made.returncode, made.stderr), (0, b""))
        return folder + "/Random Installer.app"

    def show(self, bundle, maker):
        return json.loads(self.output("show", "--json", "--home", os.fsdecode(maker.home), bundle))

    def install(self, bundle, maker):
        home = os.fsdecode(maker.home)
        return subprocess.run([RUNNER, bundle, home], cwd=self.work, env={**self.environment, "HOME": home},
                              capture_output=True, timeout=LONGEST, check=False)

    def test_they_arrive_as_they_were_where_show_says(self):
        self.each(self.check_arrival)

    def check_arrival(self, maker):
        bundle = self.create(maker)
        wanted = maker.wanted()
        maker.put_things_in_the_way(sorted(wanted))
        comparison = Comparison(self, maker, self.show(bundle, maker), wanted)
        comparison.check_promise()
        before = everything(maker.home, maker.target)
        run = self.install(bundle, maker)
        self.assertEqual(run.returncode, 0, run.stderr.decode(errors="replace"))
        comparison.check_installed(before)
        comparison.check_bystanders(before)

    def test_installed_again_everything_is_replaced(self):
        self.each(self.check_second_arrival, ROUNDS // 5)

    def check_second_arrival(self, maker):
        bundle = self.create(maker)
        wanted = maker.wanted()
        self.assertEqual(self.install(bundle, maker).returncode, 0)
        before = everything(maker.home, maker.target)
        comparison = Comparison(self, maker, self.show(bundle, maker), wanted)
        comparison.check_promise()
        self.assertEqual(comparison.plan["totals"]["replaced"], len(wanted))
        self.assertEqual(comparison.plan["folders"], [])
        self.assertEqual(self.install(bundle, maker).returncode, 0)
        comparison.check_installed(before)

    def test_what_show_says_will_be_refused_ends_the_installation(self):
        self.each(self.check_refusal, ROUNDS // 3)

    def check_refusal(self, maker):
        bundle = self.create(maker)
        wanted = maker.wanted()
        obstacle = maker.random.choice([maker.home + b"/Documents", maker.home + b"/Library", maker.target])
        with open(obstacle, "wb") as file:
            file.write(b"no folder\n")
        items = self.show(bundle, maker)["items"]
        refused = {bytes_of(item, "destination") for item in items if item["state"] == "refused"}
        self.assertEqual(refused, {path for path in wanted if path.startswith(obstacle + b"/")})
        self.assertEqual(self.install(bundle, maker).returncode, 1 if refused else 0)
        with open(obstacle, "rb") as file:
            self.assertEqual(file.read(), b"no folder\n")
        made = {path for path in everything(maker.home, maker.target) if not os.path.isdir(path)} - {obstacle}
        self.assertEqual({path for path in made if not is_or_lies_in(path, wanted)}, set())

    def test_a_link_that_show_says_leads_nowhere_ends_the_installation(self):
        self.each(self.check_dangling_link, 1)

    def check_dangling_link(self, maker):
        os.makedirs(maker.tree + maker.target, exist_ok=True)
        os.symlink("nowhere", maker.tree + maker.target + b"/dangling")
        bundle = self.create(maker)
        states = {bytes_of(item, "destination"): item["state"] for item in self.show(bundle, maker)["items"]}
        self.assertEqual(states[maker.target + b"/dangling"], "refused")
        self.assertEqual(self.install(bundle, maker).returncode, 1)


if __name__ == "__main__":
    unittest.main()
