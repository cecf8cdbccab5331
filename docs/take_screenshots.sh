#!/bin/sh
# Takes the manual's picture of the two windows: docs/take_screenshots.sh [folder of the Windows
# build [folder of a native build]]. Needs Wine, Xvfb and ImageMagick; the Windows build holds
# show_dialog.exe and the module, the native one make_sample_picture.
#   DPI=144 OUT=big.png  another resolution of the screen, in a file elsewhere
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "${1:-$here/../build/windows}" && pwd)
native=$(cd "${2:-$here/../build/native}" && pwd)
out=${OUT:-$here/images/dialog.png}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

maker=$(find "$native" -name make_sample_picture -type f -perm -u+x -print -quit)
"$maker" "$work/large.png" lake
convert "$work/large.png" -resize '720x480!' "$work/lake.png"
cp "$here/../presets/radial_blur.cfg" "$work/"

SCREENSHOT=$work/screen.png SCREENSHOT_AFTER=${AFTER:-10} SCREEN=2400x1600 DPI=${DPI:-96} \
    "$here/../tests/windows/run_under_wine.sh" "$build/show_dialog.exe" \
    "$work/lake.png" 13 "$work/radial_blur.cfg" >/dev/null
# The windows alone: what is black around and between them is the empty screen.
convert "$work/screen.png" -alpha set -fill none -floodfill +2399+1599 black \
    -trim +repage -strip "$out"
echo "$out"
