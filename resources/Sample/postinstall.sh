#!/bin/bash
# Runs after the files are in place, with the installer bundle's path as its argument.
# It compares every installed plug-in with the one in the bundle, then leaves a receipt that names what is where.
set -u

bundle=$1
tree="$bundle/Contents/Resources/PluginStructure/Users/user"
receipts="$HOME/Library/Receipts"
receipt="$receipts/com.orrinaudio.larkspur-reverb.txt"

plugins=(
    "Library/Audio/Plug-Ins/VST3/Larkspur Reverb.vst3"
    "Library/Audio/Plug-Ins/Components/Larkspur Reverb.component"
    "Library/Audio/Plug-Ins/CLAP/Larkspur Reverb.clap"
)

for plugin in "${plugins[@]}"; do
    if ! diff -r "$tree/$plugin" "$HOME/$plugin" > /dev/null; then
        echo "$HOME/$plugin differs from the installer's copy." >&2
        exit 1
    fi
done

mkdir -p "$receipts" || exit 1
{
    echo "Larkspur Reverb 2.4.1, Orrin Audio"
    echo "Installed: $(date -u '+%Y-%m-%d %H:%M:%S +0000')"
    printf '%s\n' "${plugins[@]}"
} > "$receipt.new" && mv -f "$receipt.new" "$receipt"
