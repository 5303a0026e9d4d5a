#!/usr/bin/python3
"""Digests of a large cached file by kzfile hash, against openssl dgst.

usage: kzfile_bench.py KZFILE [--folder DIR] [--megabytes N] [--rounds N]

The two run in turns, whole processes from start to end, after both have read the file once. The file lies in a new
folder in DIR (default: the temporary folder) that goes at the end. Prints medians and their ratios, and fails when the
two do not agree about a digest.
"""

import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

GOAL = 0.9
ALGORITHMS = ("md5", "sha1", "sha256", "sha512")


def make_file(path, megabytes):
    block = bytearray(os.urandom(1 << 20))
    with open(path, "wb") as file:
        for number in range(megabytes):
            block[:8] = number.to_bytes(8, "little")
            file.write(block)


def run(command):
    """Seconds, and the digest that was printed."""
    began = time.perf_counter()
    printed = subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout
    return time.perf_counter() - began, printed.split()[0].decode()


def compare(kzfile, path, algorithm, rounds):
    commands = {"openssl dgst": ["openssl", "dgst", f"-{algorithm}", "-r", path],
                "kzfile hash": [kzfile, "hash", "-a", algorithm, path]}
    digests = {run(command)[1] for command in commands.values()}
    if len(digests) != 1:
        sys.exit(f"the two do not agree about {algorithm}: {digests}")
    times = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            times[name].append(run(command)[0])
    medians = {name: statistics.median(series) for name, series in times.items()}
    for name, series in times.items():
        print(f"  {algorithm}, {name:14} {medians[name]:8.3f} s  ({min(series):.3f} to {max(series):.3f}, "
              f"{rounds} rounds)")
    ratio = medians["kzfile hash"] / medians["openssl dgst"]
    print(f"{algorithm}: kzfile hash against openssl dgst {ratio:.2f}  (goal: at most {GOAL:.2f}, "
          f"{'met' if ratio <= GOAL else 'MISSED'})")


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("kzfile")
    parser.add_argument("--folder")
    parser.add_argument("--megabytes", type=int, default=2048)
    parser.add_argument("--rounds", type=int, default=5)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=options.folder) as folder:
        path = pathlib.Path(folder) / "file"
        make_file(path, options.megabytes)
        for algorithm in ALGORITHMS:
            compare(options.kzfile, path, algorithm, options.rounds)


if __name__ == "__main__":
    main()
