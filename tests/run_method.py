#!/usr/bin/env python3
"""Runs one test method: run_method.py FOLDER MODULE.CLASS.TEST

Exits with 0 when it passed, 1 when it failed and 77 when it was skipped, with the reason on standard output.
"""
import os
import sys
import unittest

SKIPPED = 77


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.dont_write_bytecode = True
    sys.path.insert(0, os.path.abspath(sys.argv[1]))
    suite = unittest.defaultTestLoader.loadTestsFromName(sys.argv[2])
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=2).run(suite)
    if not result.wasSuccessful() or result.testsRun == 0:
        return 1
    for _, reason in result.skipped:
        print("SKIPPED:", reason)
    return SKIPPED if result.skipped else 0


if __name__ == "__main__":
    sys.exit(main())
