#!/usr/bin/python3
"""wickfield-bundle create against cp -a, and check against find, over the same tree of many files.

usage: bundle_bench.py WICKFIELD_BUNDLE [--folder DIR] [--files N] [--rounds N]

The two run in turns, whole processes from start to end, over a tree that has been read before; what they made is
removed between the runs and not timed. The tree lies in a new folder in DIR (default: the temporary folder) that goes at
the end. Prints medians and their ratio, of the time that passes and of the processor's. A machine that is busy with
something else spoils the first; the second tells then what it would be.
"""

import argparse
import os
import pathlib
import random
import resource
import shutil
import statistics
import subprocess
import tempfile
import time

CREATE_GOAL = 1.15
CHECK_GOAL = 2.0


def make_many_files(folder, count):
    """As the other benchmarks' many files: mostly 4 KiB, some 64 KiB, few 2 MiB, twenty in a folder."""
    contents = random.Random(1)
    for number in range(count):
        kind = number % 100
        size = 2 << 20 if kind == 99 else 64 << 10 if kind >= 90 else 4 << 10
        path = folder / f"folder {number // 20}" / f"file {number}.bin"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(contents.randbytes(size))


def make_template(folder):
    program = folder / "Template.app/Contents/Linux/Wickfield"
    program.parent.mkdir(parents=True)
    program.write_text("#!/bin/sh\n")
    program.chmod(0o755)
    return folder / "Template.app"


def run(command):
    """Seconds that passed, and seconds of processor."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    began = time.perf_counter()
    subprocess.run(command, stdout=subprocess.DEVNULL, check=True)
    passed = time.perf_counter() - began
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return passed, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def compare(name, commands, goal, rounds, between):
    """`commands` has the tool's own first and what it is measured against second, each under its name."""
    times = {each: [] for each in commands}
    for _ in range(rounds):
        for each, command in commands.items():
            times[each].append(run(command))
            between()
    ours, theirs = ([statistics.median(series) for series in zip(*times[each])] for each in commands)
    for each, (passed, worked) in zip(commands, (ours, theirs)):
        print(f"  {each:24} {passed:8.3f} s, {worked:8.3f} s of processor  (medians of {rounds} rounds)")
    ratio = ours[0] / theirs[0]
    print(f"{name}: {ratio:.2f} of the time, {ours[1] / theirs[1]:.2f} of the processor's  (goal: at most {goal:.2f}, "
          f"{'met' if ratio <= goal else 'MISSED'})")


def compare_create(tool, folder, rounds):
    template = make_template(folder)
    made, copy = folder / "made", folder / "copy"

    def remove():
        for path in (made, copy):
            shutil.rmtree(path, ignore_errors=True)
        os.sync()

    commands = {
        "wickfield-bundle create": [tool, "create", "--name", "Many", "--version", "1", "--author", "Nobody",
                                    "--template", template, "--tree", folder / "tree", "--output", made],
        "cp -a": ["cp", "-a", folder / "tree", copy],
    }
    remove()
    compare("create against cp -a", commands, CREATE_GOAL, rounds, remove)


def compare_check(tool, folder, rounds):
    """Of a bundle with the tree in it, against what prints as much as the check has to look at."""
    subprocess.run([tool, "create", "--name", "Many", "--version", "1", "--author", "Nobody", "--template",
                    folder / "Template.app", "--tree", folder / "tree", "--output", folder / "checked"],
                   stdout=subprocess.DEVNULL, check=True)
    bundle, = (folder / "checked").glob("*.app")
    commands = {"wickfield-bundle check": [tool, "check", bundle],
                "find": ["find", bundle, "-printf", "%p %s %m %l\\n"]}
    for command in commands.values():
        run(command)
    compare("check against find", commands, CHECK_GOAL, rounds, lambda: None)


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("tool")
    parser.add_argument("--folder")
    parser.add_argument("--files", type=int, default=10000)
    parser.add_argument("--rounds", type=int, default=5)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=options.folder) as name:
        folder = pathlib.Path(name)
        make_many_files(folder / "tree/Library/Many", options.files)
        compare_create(options.tool, folder, options.rounds)
        compare_check(options.tool, folder, 4 * options.rounds)


if __name__ == "__main__":
    main()
