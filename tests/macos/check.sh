#!/bin/bash
# Checks one source of the macOS adapter on Linux, as far as that goes.
#
# usage: check.sh objc FILE...      type check against GNUstep's headers and the static analyzer; warnings are errors
#        check.sh calls FILE...     type check of C++ that calls the Mac's C libraries, against tests/macos/headers
#        check.sh contract FILE...  the same for the contract tests of a Mac's services
#        check.sh tidy              clang-tidy over the adapter's sources
#        check.sh cross ARCH        for macOS on arm64 or x86_64, with zig: the portable rooms compiled and linked to a
#                                   program, the adapter's C++ sources compiled
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
prepare_objc() {
    local header
    command -v clang++ > /dev/null || skip "there is no clang"
    [[ -e /usr/include/GNUstep/AppKit/AppKit.h ]] || skip "there are no headers of GNUstep (libgnustep-gui-dev)"
    header=$(find /usr/lib/gcc -path '*/include/objc/objc.h' 2> /dev/null | sort | tail -n 1)
    [[ -n $header ]] || skip "there are no headers of the Objective-C runtime (gobjc)"
    mkdir "$scratch/runtime"
    ln -s "$(dirname "$header")" "$scratch/runtime/objc"
    objc_flags+=(-isystem "$scratch/runtime" -include tests/macos/gnustep/AppKitAdditions.h
        -include "$headers/gnustep/FoundationAdditions.h")
}

check_objc() {
    prepare_objc
    local file said failed=0
    for file in "$@"; do
        # One reading serves the compiler's warnings and the analyzer, which takes -Werror away from them.
        said=$(clang++ -fsyntax-only "${flags[@]}" "${linux_flags[@]}" "${objc_flags[@]}" \
            -Xclang -analyze -Xclang -analyzer-output=text -Xclang -analyzer-opt-analyze-nested-blocks \
            -Xclang -analyzer-checker=core,cplusplus,osx.cocoa,osx.API "$file" 2>&1) || failed=1
        if [[ -n $said ]]; then
            printf '%s\n' "$said"
            failed=1
        fi
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

check_tidy() {
    command -v clang-tidy > /dev/null || skip "there is no clang-tidy"
    prepare_objc
    local failed=0
    find platform/macos -name '*.cpp' -print0 |
        xargs -0 -P "$(nproc)" -I{} clang-tidy --quiet {} -- "${flags[@]}" "${linux_flags[@]}" || failed=1
    find platform/macos -name '*.mm' -print0 |
        xargs -0 -P "$(nproc)" -I{} clang-tidy --quiet {} -- "${flags[@]}" "${linux_flags[@]}" "${objc_flags[@]}" || failed=1
    return "$failed"
}

# Finds zig, and gives its cache a folder that can be written.
find_zig() {
    local own=$PWD/build/zig/zig
    [[ -x $own ]] || own=zig
    zig=$(command -v "${ZIG:-$own}") || skip "there is no zig, which compiles for macOS (scripts/zig.sh brings it)"
    [[ -z ${ZIG_GLOBAL_CACHE_DIR:-} ]] || return 0
    export ZIG_GLOBAL_CACHE_DIR=$PWD/build/zig/cache
    mkdir -p "$ZIG_GLOBAL_CACHE_DIR" 2> /dev/null && [[ -w $ZIG_GLOBAL_CACHE_DIR ]] || ZIG_GLOBAL_CACHE_DIR=$scratch/cache
}

# What libc++ marks as missing from macOS 11 is missing here, too, although zig brings the newest.
cross_flags=(-g0 -fno-sanitize=all -Wunguarded-availability -U_LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS
    -idirafter "$headers/frameworks" -idirafter "$headers/darwin")

# compile_for_macos FOLDER: the sources that standard input names, into objects in that folder.
compile_for_macos() {
    local source
    while read -r source; do
        printf '%s\n-o\n%s\n' "$source" "$1/${source//\//-}.o"
    done | xargs -d '\n' -n 3 "$zig" c++ -target "$target" "${flags[@]}" "${cross_flags[@]}" -c
}

check_cross() {
    local zig target processor header
    case $1 in
        arm64) target=aarch64-macos.11.0 processor=0100000c ;;
        x86_64) target=x86_64-macos.11.0 processor=01000007 ;;
        *) echo "No such processor: $1" >&2; exit 2 ;;
    esac
    find_zig
    mkdir "$scratch"/{portable,adapter}

    # The portable rooms make a program; in place of AppKit's part of it stands one function.
    {
        find app lib platform/ports platform/posix -name '*.cpp'
        echo tests/macos/link/ApplicationMain.cpp
    } | compile_for_macos "$scratch/portable"
    "$zig" c++ -target "$target" "$scratch"/portable/*.o -o "$scratch/program"
    header=$(od -An -N8 -tx4 "$scratch/program" | tr -d ' ')
    [[ $header == "feedfacf$processor" ]] || { echo "Linked for another processor: $header" >&2; exit 1; }

    # The adapter's sources need the frameworks to be linked.
    find platform/macos -name '*.cpp' | compile_for_macos "$scratch/adapter"
}

case ${1:-} in
    objc) shift; check_objc "$@" ;;
    calls) shift; check_calls "$@" ;;
    contract) shift; check_contract "$@" ;;
    tidy) check_tidy ;;
    cross) check_cross "${2:?arm64 or x86_64}" ;;
    *) sed -n '2,/^# The exit/s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
esac
