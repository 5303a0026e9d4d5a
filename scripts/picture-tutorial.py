#!/usr/bin/env python3
"""Takes the pictures of docs/makers.md: picture-tutorial.py PREFIX PICTURES

Follows the tutorial with the wickfield-bundle that is installed in PREFIX, and opens what it makes on a display that nobody
sees, as an ordinary user would.
"""
import os
import shutil
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.dont_write_bytecode = True
sys.path[:0] = [str(ROOT / "tests" / "e2e"), str(ROOT / "tests" / "wickfield-bundle")]
os.environ.setdefault("WICKFIELD_BUNDLE", "wickfield-bundle")

import tutorial  # noqa: E402
from case import become_ordinary_user  # noqa: E402
from driver.bundle import Bundle  # noqa: E402
from driver.installer import Home, Installer  # noqa: E402
from driver.session import Session  # noqa: E402
from driver.waiting import wait_until  # noqa: E402

TITLE = "Pebble Installer"


def make_installers(prefix, homes):
    """The one that the reader has when the window comes up first, and the one with everything."""
    steps = tutorial.steps()
    early = next(number for number, step in enumerate(steps) if step.title.startswith("An agreement"))
    late = next(number for number, step in enumerate(steps) if step.title == "The archive")
    for home, wanted in zip(homes, (steps[:early], steps[:late])):
        tutorial.prepare(home, prefix)
        if tutorial.run(wanted, home) != 0:
            sys.exit(f"The tutorial's commands fail: {[step.printed for step in wanted]}")
        yield Bundle(home / "pebble" / f"{TITLE}.app")


class Photographer:
    def __init__(self, session, pictures):
        self.session, self.pictures = session, pictures

    def take(self, installer, name):
        display = self.session.display
        display.wait_until_still()
        display.screenshot(self.pictures / f"maker-{name}.png", display.geometry(installer.wait_for_window(TITLE)))

    def first(self, bundle, home):
        with Installer(bundle, home, self.session) as installer:
            installer.wait_for_window(TITLE)
            installer.wait_for_button("Install")
            self.take(installer, "first")

    def complete(self, bundle, home):
        with Installer(bundle, home, self.session) as installer:
            installer.wait_for_window(TITLE)
            installer.wait_for_button("Agree")
            self.take(installer, "agreement")
            installer.press("Return")
            wait_until("the agreement to go", lambda: installer.button("Agree") is None)
            self.take(installer, "ready")
            installer.press_button("Install")
            installer.wait_for_text("Installation complete", seconds=20)
            self.take(installer, "outcome")
            installer.press("Return")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    homes = [tutorial.make_home(), tutorial.make_home()]
    taken = homes[0] / "pictures"
    try:
        first, complete = make_installers(Path(sys.argv[1]), homes)
        child = os.fork()
        if child == 0:
            become_ordinary_user()
            taken.mkdir()
            with Session(homes[0] / "session") as session:
                photographer = Photographer(session, taken)
                photographer.first(first, Home(homes[0]))
                photographer.complete(complete, Home(homes[1]))
            os._exit(0)
        if os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) != 0:
            sys.exit("The pictures could not be taken.")
        for picture in sorted(taken.iterdir()):
            shutil.copy(picture, sys.argv[2])
            print(Path(sys.argv[2]) / picture.name)
    finally:
        for home in homes:
            shutil.rmtree(home, ignore_errors=True)


if __name__ == "__main__":
    main()
