#!/usr/bin/env python3
"""Reads a JUnit report of ctest: prints "PASSED FAILED SKIPPED", then the failed tests and why others were skipped."""
import re
import sys
import xml.etree.ElementTree as ElementTree
from collections import Counter


def skip_reason(case):
    output = case.findtext("system-out") or ""
    found = re.search(r"^SKIPPED: (.+)$", output, re.M) or re.search(r": Skipped\n(.+)$", output, re.M)
    return found.group(1).strip() if found else "no reason given"


def main():
    passed, failed, reasons = 0, [], Counter()
    for case in ElementTree.parse(sys.argv[1]).getroot().iter("testcase"):
        skipped = case.find("skipped")
        # What ctest could not even start is reported by it as skipped too, and is a failure here.
        if skipped is not None and skipped.get("message", "").startswith("SKIP_"):
            reasons[skip_reason(case)] += 1
        elif case.get("status") == "run":
            passed += 1
        else:
            failed.append(case.get("name"))
    print(passed, len(failed), sum(reasons.values()))
    for name in failed:
        print(f"  failed: {name}")
    for reason, count in reasons.most_common():
        print(f"  skipped: {count} x {reason}")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main()
