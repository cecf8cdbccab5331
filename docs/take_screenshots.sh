#!/bin/sh
# Takes the manual's pictures of the two windows: docs/take_screenshots.sh [folder of the Windows
# build]. Needs Wine, Xvfb and ImageMagick; the build folder holds show_dialog.exe and the module.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "${1:-$here/../build/windows}" && pwd)
out=$here/images
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$out"

# shot name width height screen dpi
shot() {
    SCREENSHOT=$work/$1.png SCREENSHOT_AFTER=${AFTER:-8} SCREEN=$4 DPI=$5 \
        "$here/../tests/windows/run_under_wine.sh" "$build/show_dialog.exe" "$2" "$3" 11 >/dev/null
    convert "$work/$1.png" -strip "$out/$1.png"
    echo "$out/$1.png"
}

shot dialog 600 420 1280x800 96
shot dialog-144dpi 600 420 1600x1100 144
shot dialog-192dpi 600 420 2000x1400 192
