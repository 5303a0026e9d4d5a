#!/usr/bin/env python3
"""Runs one test of the window on GNUstep: run.py PROGRAM CLASS.TEST

Exits with 0 when it passed, 1 when it failed and 77 when it was skipped, with the reason on standard output.
"""
import os
import sys
import unittest
from pathlib import Path

SKIPPED = 77
HERE = Path(__file__).resolve().parent


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.dont_write_bytecode = True
    sys.path[:0] = [str(HERE), str(HERE.parents[1] / "e2e")]
    os.environ["WICKFIELD_GNUSTEP_PROGRAM"] = os.path.abspath(sys.argv[1])
    suite = unittest.defaultTestLoader.loadTestsFromName("test_window." + sys.argv[2])
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=2).run(suite)
    if not result.wasSuccessful() or result.testsRun == 0:
        return 1
    for _, reason in result.skipped:
        print("SKIPPED:", reason)
    return SKIPPED if result.skipped else 0


if __name__ == "__main__":
    sys.exit(main())
