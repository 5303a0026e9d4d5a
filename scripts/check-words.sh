#!/bin/bash
# Fails on marks of unfinished work and on references that a reader of this repository cannot follow.
set -euo pipefail
cd "$(dirname "$0")/.."

status=0
# check WHAT PATTERN: prints each line that matches, in every text file of the repository.
check() {
    local found
    found=$(grep -rnIP --exclude-dir=.git --exclude-dir='build*' --exclude=check-words.sh -- "$2" . || true)
    if [[ -n $found ]]; then
        printf '%s:\n%s\n' "$1" "$found"
        status=1
    fi
}

check "A mark of unfinished work" '\b(TODO|FIXME|XXX|HACK)\b'
check "A switched-off test" '\b(TEST(_[FP])?\([A-Za-z]+, *DISABLED_|DISABLED_TEST)'
check "A namespace opened to all" '^\s*using namespace (?!std::(\w+::)*\w*literals)'
check "A reference to a document that is not here" '\b(Part|part|section|chapter) \d+\.\d+\b'
check "A reference to an issue" '(?i)\b(issue|ticket) #?\d+\b'
check "The path of this folder on this machine" "\\Q$PWD/\\E"
exit "$status"
