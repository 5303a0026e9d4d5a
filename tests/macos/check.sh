#!/bin/bash
# Checks one source of the macOS adapter on Linux, as far as that goes.
#
# usage: check.sh objc FILE...      type check against GNUstep's headers and the static analyzer; warnings are errors
#        check.sh calls FILE...     type check of C++ that calls the Mac's C libraries, against tests/macos/headers
#        check.sh contract FILE...  the same for the contract tests of a Mac's services
#        check.sh cross ARCH        every portable source compiled for macOS on arm64 or x86_64, with zig
#
# The exit status is 77 when the machine has not what a check needs; the last line says what.
set -euo pipefail
cd "$(dirname "$0")/../.."

skip() {
    echo "Skipped: $*"
    exit 77
}

headers=tests/macos/headers
flags=(-std=c++20 -I. -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wundef -Werror
    -Wno-deprecated-declarations)
linux_flags=(-isystem "$headers/darwin" -include Darwin.h -idirafter "$headers/frameworks")

# GCC's own headers of the Objective-C runtime are used without its other headers, which are not clang's.
objc_flags=(-fobjc-runtime=gcc -fblocks -fexceptions -fobjc-exceptions -fconstant-string-class=NSConstantString
    -D_NATIVE_OBJC_EXCEPTIONS -DGNUSTEP -DGNUSTEP_BASE_LIBRARY=1 -DGNU_GUI_LIBRARY=1
    -isystem /usr/include/GNUstep -isystem "$headers/gnustep" -Wselector -Wundeclared-selector)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
add_runtime_headers() {
    local header
    header=$(find /usr/lib/gcc -path '*/include/objc/objc.h' 2> /dev/null | sort | tail -n 1)
    [[ -n $header ]] || skip "there are no headers of the Objective-C runtime (gobjc)"
    mkdir "$scratch/runtime"
    ln -s "$(dirname "$header")" "$scratch/runtime/objc"
    objc_flags+=(-isystem "$scratch/runtime")
}

check_objc() {
    command -v clang++ > /dev/null || skip "there is no clang"
    [[ -e /usr/include/GNUstep/AppKit/AppKit.h ]] || skip "there are no headers of GNUstep (libgnustep-gui-dev)"
    add_runtime_headers
    objc_flags+=(-include tests/macos/gnustep/AppKitAdditions.h -include "$headers/gnustep/FoundationAdditions.h")
    local file failed=0
    for file in "$@"; do
        # The analyzer is silent about what the compiler warns of.
        clang++ -fsyntax-only "${flags[@]}" "${linux_flags[@]}" "${objc_flags[@]}" "$file" || failed=1
        clang++ --analyze "${flags[@]}" "${linux_flags[@]}" "${objc_flags[@]}" -Xclang -analyzer-werror \
            -Xclang -analyzer-checker=core,cplusplus,osx.cocoa,osx.API -o /dev/null "$file" || failed=1
    done
    return "$failed"
}

check_calls() {
    command -v clang++ > /dev/null || skip "there is no clang"
    clang++ -fsyntax-only "${flags[@]}" "${linux_flags[@]}" "$@"
}

check_contract() {
    command -v clang++ > /dev/null || skip "there is no clang"
    [[ -e /usr/include/gtest/gtest.h ]] || skip "there are no headers of GoogleTest (libgtest-dev)"
    clang++ -fsyntax-only "${flags[@]}" "${linux_flags[@]}" -Itests/contract/hosts/macos "$@"
}

check_cross() {
    local arch=$1 zig=${ZIG:-zig}
    zig=$(command -v "$zig") || skip "there is no zig, which compiles for macOS; ZIG can name one"
    [[ $arch == arm64 ]] && arch=aarch64
    local frameworks=$PWD/$headers/frameworks darwin=$PWD/$headers/darwin
    {
        find "$PWD"/{app,lib,platform/ports,platform/posix} -name '*.cpp' ! -path '*/app/main.cpp'
        find "$PWD/platform/macos" -name '*.cpp'
    } > "$scratch/sources"
    flags+=("-I$PWD")
    cd "$scratch"  # the objects fall here
    xargs -d '\n' -P "$(nproc)" -n 1 "$zig" c++ -target "$arch-macos.11.0" "${flags[@]}" -idirafter "$frameworks" \
        -idirafter "$darwin" -c < sources
}

case ${1:-} in
    objc) shift; check_objc "$@" ;;
    calls) shift; check_calls "$@" ;;
    contract) shift; check_contract "$@" ;;
    cross) check_cross "${2:?arm64 or x86_64}" ;;
    *) sed -n '2,/^# The exit/s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
esac
