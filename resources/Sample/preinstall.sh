#!/bin/bash
# Runs before anything is copied, with the installer bundle's path as its argument.
# Any status but zero stops the installation.
set -u

bundle=$1
tree="$bundle/Contents/Resources/PluginStructure"

if [[ ! -d "${HOME:-}" || ! -w "$HOME" ]]; then
    echo "The home folder cannot be written to: ${HOME:-not set}" >&2
    exit 1
fi

# Twice the size of the tree: what is replaced moves to the Trash and takes its room until the Trash is emptied.
needed=$(du -sk "$tree" | cut -f1)
free=$(df -Pk "$HOME" | awk 'NR == 2 { print $4 }')
if (( free < 2 * needed )); then
    echo "Larkspur Reverb needs $(( 2 * needed )) KiB in $HOME, and only $free KiB are free." >&2
    exit 1
fi
exit 0
