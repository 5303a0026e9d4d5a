#!/usr/bin/env python3
"""Shows the sample installer at work on a display that nobody sees: drive-demo.py BUNDLE HOME PICTURES [PROTECTED]

Rounds: a fresh installation, the same again over it, and one that is refused a folder. PROTECTED is another home, in which
a folder belongs to root; with it comes this account's password on standard input, and a round in which an administrator
allows what was refused. Every step is a real key press from outside the program; each state is left as a picture.
"""
import os
import shutil
import sys
import tempfile
import time
from collections import Counter
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests" / "e2e"))

from driver.bundle import Bundle  # noqa: E402
from driver.installer import Home, Installer  # noqa: E402
from driver.session import Session  # noqa: E402
from driver.waiting import wait_until  # noqa: E402

TITLE = "Larkspur Reverb Installer"
NOT_INSTALLED = (".local", ".Trash", ".cache", ".config", "Library/Logs")
PACKAGES = (".vst3", ".component", ".clap")


def say(text=""):
    print(text, flush=True)


def installed_items(folder):
    """Files, links and packages below a folder; a package is one item."""
    for path in sorted(folder.iterdir()):
        if path.is_symlink() or path.is_file() or path.suffix in PACKAGES:
            yield path
        else:
            yield from installed_items(path)


def say_what_is_installed(home, whole):
    items = [path.relative_to(home.path) for path in installed_items(home.path)]
    items = [path for path in items if not str(path).startswith(NOT_INSTALLED)]
    say(f"Installed in {home.path}: {len(items)} items")
    if not whole:
        return
    for folder, count in sorted(Counter(str(path.parent) for path in items).items()):
        example = next(path.name for path in items if str(path.parent) == folder)
        say(f"  {count:4}  {folder}/{example}" + (" ..." if count > 1 else ""))


def say_what_is_in_the_trash(home):
    names = home.trashed()
    say(f"In the Trash: {len(names)} items" + (", among them" if names else ""))
    for name in [name for name in names if "Larkspur" in name] + [name for name in names if "Larkspur" not in name][:3]:
        say(f"        {name}")


def say_what_was_logged(home, before):
    added = home.log()[len(before):].splitlines()
    say("Logged:" if added else "Logged: nothing, as there was no trouble to tell of")
    for line in added:
        say(f"        {line}")


class Round:
    """`answers`: what is typed into the password sheet, one for each time it asks; None cancels it."""

    def __init__(self, number, session, bundle, home, pictures, answers=()):
        self.number, self.session, self.bundle, self.home, self.pictures = number, session, bundle, home, pictures
        self.answers = answers
        self.shots = 0

    def picture(self, installer, name, still=True):
        self.shots += 1
        path = self.pictures / f"{self.number}-{self.shots}-{name}.png"
        window = installer.wait_for_window(TITLE)
        if still:
            self.session.display.wait_until_still()
        self.session.display.screenshot(path, self.session.display.geometry(window))
        say(f"    picture: {path.name}")

    def run(self, outcome):
        before = self.home.log()
        with Installer(self.bundle, self.home, self.session) as installer:
            installer.wait_for_window(TITLE)
            installer.wait_for_button("Agree")
            say("  The window is open and shows the agreement.")
            self.picture(installer, "agreement")
            say("  Key press: Return, which agrees")
            installer.press("Return")
            wait_until("the agreement to go", lambda: installer.button("Agree") is None)
            self.picture(installer, "ready")
            say("  Key presses: Tab to Install, then the space bar")
            installer.press_button("Install")
            self.picture(installer, "installing", still=False)
            for count, answer in enumerate(self.answers):
                self.answer_question(installer, count, answer)
            installer.wait_for_text(outcome, seconds=20)
            say(f'  The sheet says: "{outcome}"')
            self.picture(installer, "outcome")
            say("  Key press: Return, which dismisses the sheet")
            installer.press("Return")
            wait_until("the sheet to go", lambda: not installer.reads(outcome))
            self.picture(installer, "afterwards")
            self.session.display.close_window(installer.wait_for_window(TITLE))
            installer.wait_for_end()
        say_what_is_installed(self.home, whole=self.number == 1)
        say_what_is_in_the_trash(self.home)
        say_what_was_logged(self.home, before)


    def answer_question(self, installer, count, password):
        if count == 0:
            installer.wait_for_button("Allow")
            say("  The system refused a folder. A sheet asks for an administrator's password.")
        else:
            installer.wait_for_text("That password is not right. Try again.")
            say("  The sheet says that the password is not right.")
        time.sleep(1)  # the sheet has come down; behind it the spinner turns on, so the screen is never still
        self.picture(installer, "password" if count == 0 else "password-again", still=False)
        if password is None:
            say("  Key press: Escape, which cancels")
            installer.press("Escape")
            return
        say("  Keys: a password, then Return")
        self.session.display.type(password)
        installer.press("Return")


def password_can_be_asked_for():
    return any(os.access(path, os.X_OK) for path in ("/usr/bin/sudo", "/usr/bin/pkexec"))


def show(bundle, home, pictures, protected, password):
    with tempfile.TemporaryDirectory(prefix="wickfield-demo.") as folder, Session(folder) as session:
        say("\nRound 1: a fresh installation")
        Round(1, session, bundle, home, pictures).run("Installation complete")
        say("\nRound 2: the same again; what is replaced moves to the Trash")
        Round(2, session, bundle, home, pictures).run("Installation complete")
        say("\nRound 3: the folder of the plug-ins has become read-only")
        plugins = home.path / "Library/Audio/Plug-Ins/VST3"
        shutil.rmtree(plugins)
        plugins.mkdir(mode=0o555)
        answers = [None] if password_can_be_asked_for() else []
        try:
            Round(3, session, bundle, home, pictures, answers).run("Installation failed")
        finally:
            plugins.chmod(0o755)
        if protected is None:
            say("\nRound 4, in which an administrator allows the same: left out, as only a run as root can make an account "
                "whose password it knows")
            return
        say("\nRound 4: the folder of the plug-ins belongs to root, and an administrator allows it at the second try")
        Round(4, session, bundle, protected, pictures, ["not this one", password]).run("Installation complete")
        say_who_owns(protected.path / "Library/Audio/Plug-Ins/VST3")


def say_who_owns(folder):
    say(f"The folder still belongs to {folder.owner()}; in it now:")
    for path in sorted(folder.iterdir()):
        say(f"        {path.name}")


def main():
    if len(sys.argv) not in (4, 5):
        sys.exit(__doc__)
    if os.geteuid() == 0:
        sys.exit("The demo acts as an ordinary user.")
    pictures = Path(sys.argv[3])
    pictures.mkdir(parents=True, exist_ok=True)
    protected = Home(os.path.abspath(sys.argv[4])) if len(sys.argv) == 5 else None
    password = sys.stdin.readline().rstrip("\n") if protected else None
    try:
        show(Bundle(os.path.abspath(sys.argv[1])), Home(os.path.abspath(sys.argv[2])), pictures, protected, password)
    except KeyboardInterrupt:
        sys.exit(130)


if __name__ == "__main__":
    main()
