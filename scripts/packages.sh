#!/bin/bash
# Installs the Debian packages that are missing: scripts/packages.sh [build] [demo] [test] [bench] [fuzz]
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh
trap end_step EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

build=(cmake ninja-build g++ pkg-config qt6-base-dev libqt6opengl6-dev libexpat1-dev libssl-dev libsystemd-dev
    libpolkit-agent-1-dev zlib1g-dev libmount-dev nlohmann-json3-dev libutf8proc-dev)
demo=(sudo xvfb xdotool dbus-daemon at-spi2-core gir1.2-atspi-2.0 python3 python3-gi fonts-dejavu-core lsof)
test=(libgtest-dev libgmock-dev libplist-dev clang clang-format clang-tidy shellcheck util-linux sudo polkitd
    pkexec dbus zip unzip python3-yaml fish zsh gobjc libgnustep-gui-dev gnustep-back0.29-cairo
    libblocksruntime-dev libclang-rt-14-dev)
bench=(libspdlog-dev libarchive-tools)
fuzz=(clang libclang-rt-14-dev)

wanted=()
for group in "${@:-build}"; do
    case $group in
        build) wanted+=("${build[@]}") ;;
        demo) wanted+=("${demo[@]}") ;;
        test) wanted+=("${test[@]}") ;;
        bench) wanted+=("${bench[@]}") ;;
        fuzz) wanted+=("${fuzz[@]}") ;;
        *) fail "scripts/packages.sh: no such group: $group" ;;
    esac
done

if ! command -v dpkg-query > /dev/null; then
    say "This is not a Debian machine. If a step fails, look for these packages under the names they have here:"
    say "  ${wanted[*]}"
    exit 0
fi

missing=()
for package in "${wanted[@]}"; do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2> /dev/null || true)
    [[ $status == installed ]] || missing+=("$package")
done
(( ${#missing[@]} )) || exit 0

apt=(apt-get)
if (( EUID != 0 )); then
    command -v sudo > /dev/null || fail "These packages are missing, and there is no sudo to install them: ${missing[*]}"
    say "Installing packages needs administrator rights: ${missing[*]}"
    sudo -v || fail "Without administrator rights, install these packages first: ${missing[*]}"
    apt=(sudo --preserve-env=DEBIAN_FRONTEND apt-get)
fi
export DEBIAN_FRONTEND=noninteractive
run_step "Reading the package lists" build/logs/apt-update.log "${apt[@]}" update
run_step "Installing ${#missing[@]} packages" build/logs/apt-install.log \
    "${apt[@]}" install --yes --no-install-recommends "${missing[@]}"
