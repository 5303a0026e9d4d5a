"""The commands of docs/makers.md, run one after another as somebody would who follows it.

tutorial.py PREFIX: writes into the document what they print today, and the table of findings, with the wickfield-bundle
that is installed there.
"""
import json
import os
import pathlib
import re
import secrets
import shutil
import subprocess
import sys
from dataclasses import dataclass

from support import NOBODY, is_root

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENT = ROOT / "docs" / "makers.md"
BLOCK = re.compile(r"^### (?P<title>[^\n]*)$|^```sh\n(?P<commands>.*?)^```\n(?:\n```text\n(?P<shown>.*?)^```$)?",
                   re.MULTILINE | re.DOTALL)
HOME = "/home/you"  # in the document


@dataclass
class Step:
    title: str
    commands: str
    shown: "str | None"  # what the document says that they print
    printed: "str | None" = None


def section(title):
    """The text below a heading of the second level."""
    found = re.search(rf"^## {re.escape(title)}\n(.*?)(?=^## |\Z)", DOCUMENT.read_text(), re.MULTILINE | re.DOTALL)
    return found.group(1)


def steps(title="Tutorial"):
    found, heading = [], ""
    for match in BLOCK.finditer(section(title)):
        if match["title"] is not None:
            heading = match["title"]
        else:
            found.append(Step(heading, match["commands"], match["shown"]))
    return found


def make_home():
    """An empty folder whose path is as long as that in the document, so that tables come out alike."""
    while True:
        folder = pathlib.Path("/tmp") / secrets.token_hex(4)[:len(HOME) - len("/tmp/")]
        try:
            folder.mkdir()
            return folder
        except FileExistsError:
            continue


def prepare(home, prefix):
    """What the document takes for granted: the tool in ~/.local, and a template from a Mac among the downloads."""
    shutil.copytree(prefix, home / ".local", symlinks=True)
    program = home / "Downloads" / "Wickfield.app" / "Contents" / "MacOS" / "Wickfield"
    program.parent.mkdir(parents=True)
    program.write_bytes(b"stands in for a program for macOS\n")
    program.chmod(0o755)
    give_to_ordinary_user(home)


def give_to_ordinary_user(folder):
    if is_root():
        for path in [folder, *folder.rglob("*")]:
            os.lchown(path, NOBODY, NOBODY)


def run(wanted, home, folder=None):
    """All in one shell of an ordinary user, which ends at a command that fails; each step gets what it printed. The exit
    code."""
    outputs = [home / f".step-{index}" for index in range(len(wanted))]
    script = "set -euo pipefail\n" + "".join(f"exec > '{output}' 2>&1\n{step.commands}"
                                             for step, output in zip(wanted, outputs))
    environment = {"HOME": str(home), "PATH": f"{home}/.local/bin:/usr/local/bin:/usr/bin:/bin", "LANG": "C.UTF-8"}
    ordinary = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if is_root() else {}
    code = subprocess.run(["bash", "--norc", "-c", script], cwd=folder or home, env=environment,
                          stdin=subprocess.DEVNULL, check=False, timeout=250, **ordinary).returncode
    for step, output in zip(wanted, outputs):
        if output.exists():
            printed = output.read_text().replace(os.fspath(home), HOME)
            step.printed = printed.replace(os.fspath(home).lstrip("/"), HOME.lstrip("/"))  # below a root of its own
            output.unlink()
    return code


def table_of_findings(program):
    rules = json.loads(subprocess.run([program, "check", "--rules", "--json"], check=True, timeout=60,
                                      stdout=subprocess.PIPE).stdout)

    def cell(text):
        return text.replace("<", "&lt;").replace("|", "\\|")

    rows = [f"| `{rule['rule']}` | {rule['severity']} | {cell(rule['meaning'])} | {cell(rule['remedy'])} |\n"
            for rule in rules]
    return "| rule | severity | what it means | what to do |\n|---|---|---|---|\n" + "".join(rows)


def rewrite(found, program):
    text = DOCUMENT.read_text()
    intro, _ = section("Findings").split("\n\n|", 1)
    text = text.replace(section("Findings"), f"{intro}\n\n{table_of_findings(program)}")
    for step in found:
        if step.shown is not None:
            before = f"```sh\n{step.commands}```\n\n```text\n"
            text = text.replace(f"{before}{step.shown}```", f"{before}{step.printed}```")
    DOCUMENT.write_text(text)


def main():
    home = make_home()
    try:
        prepare(home, sys.argv[1])
        found = steps()
        code = run(found, home)
        if code == 0:
            rewrite(found, home / ".local/bin/wickfield-bundle")
        else:
            print(*(f"{step.commands}{step.printed}" for step in found), sep="\n")
        return code
    finally:
        shutil.rmtree(home)


if __name__ == "__main__":
    sys.exit(main())
