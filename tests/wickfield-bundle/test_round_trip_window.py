"""The round trip of random trees through the real installer and its window."""
import json
import os
import shutil
import subprocess
import sys
import unittest

import test_round_trip as rounds
from support import LONGEST, WICKFIELD_BUNDLE

sys.path.insert(0, os.environ.get("WICKFIELD_E2E_TESTS", ""))
try:
    from case import WindowCase
    from driver.waiting import wait_until
except ImportError:
    WindowCase = unittest.TestCase

WINDOW_ROUNDS = max(1, rounds.ROUNDS // 5)


class RandomTreesInAWindow(WindowCase):
    def setUp(self):
        if WindowCase is unittest.TestCase:
            self.skipTest("the installer's window is not built")
        super().setUp()
        self.environment = {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", "HOME": str(self.folder)}

    def output(self, *words):
        run = subprocess.run([WICKFIELD_BUNDLE, *words], cwd=self.folder, env=self.environment, capture_output=True,
                             timeout=LONGEST, check=False)
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        return run.stdout.decode()

    def test_they_arrive_as_they_were_where_show_says(self):
        for seed in range(rounds.SEED, rounds.SEED + WINDOW_ROUNDS):
            with self.subTest(f"WICKFIELD_SEED={seed} WICKFIELD_ROUNDS=1"):
                self.check_arrival(seed)

    def maker(self, seed, **traits):
        folder = self.folder / str(seed)
        folder.mkdir()
        home = type(self.home)(folder / "home", logging=False)
        return rounds.Maker(seed, folder, home.path, **traits), home

    def create(self, maker):
        folder = os.fsdecode(maker.folder)
        self.output("create", "--name", "Random", "--version", "1", "--author", "Nobody", "--output", folder,
                    *maker.words())
        return type(self.built)(folder + "/Random Installer.app")

    def show(self, bundle, home):
        return json.loads(self.output("show", "--json", "--home", str(home.path), str(bundle.path)))

    def check_arrival(self, seed):
        maker, home = self.maker(seed, read_only=False)
        bundle = self.create(maker)
        wanted = maker.wanted()
        maker.put_things_in_the_way(sorted(wanted))
        comparison = rounds.Comparison(self, maker, self.show(bundle, home), wanted)
        comparison.check_promise()
        self.assertEqual(comparison.plan["totals"]["administrator"], 0)
        before = rounds.everything(maker.home, maker.target)
        with self.launch(bundle, home) as installer:
            installer.wait_for_window("Random Installer")
            installer.press_button("Install")
            installer.wait_for_text("Installation complete", seconds=60)
        comparison.check_installed(before)
        comparison.check_bystanders(before)

    def test_the_question_for_a_read_only_file_comes_as_show_says(self):
        maker, home = self.maker(1)
        shutil.rmtree(maker.tree)
        maker.items = {}
        path = maker.tree + b"/Users/user/Documents/read-only.txt"
        os.makedirs(os.path.dirname(path))
        with open(path, "wb") as file:
            file.write(b"fixed\n")
        os.chmod(path, 0o444)
        bundle = self.create(maker)
        item, = self.show(bundle, home)["items"]
        self.assertEqual((item["destination"], item["state"], item["administrator"]),
                         (f"{home.path}/Documents/read-only.txt", "new", True))
        with self.launch(bundle, home) as installer:
            installer.wait_for_window("Random Installer")
            installer.press_button("Install")
            wait_until("the question for an administrator", installer.asks_for_password, seconds=60)
            wait_until("the outcome without one", lambda: self.has_come(installer, "Installation complete"), seconds=60)
        self.assertEqual((home.path / "Documents/read-only.txt").read_bytes(), b"fixed\n")


if __name__ == "__main__":
    unittest.main()
