#!/bin/sh
# Makes the icon and the cursor of the module from their vector sources. Needs rsvg-convert
# (librsvg2-bin) and convert (imagemagick). The results are kept beside the sources' folder, so
# that a build needs neither.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
out=$(dirname "$here")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for size in 16 24 32 48 256; do
    rsvg-convert -w "$size" -h "$size" "$here/filter.svg" -o "$work/filter-$size.png"
done
convert "$work/filter-16.png" "$work/filter-24.png" "$work/filter-32.png" "$work/filter-48.png" \
    "$work/filter-256.png" "$out/filter.ico"

rsvg-convert -w 32 -h 32 "$here/pick.svg" -o "$work/pick.png"
convert "$work/pick.png" "$work/pick.ico"
# A cursor is an icon of type 2 that names its hot spot where an icon counts planes and bits.
cp "$work/pick.ico" "$out/pick.cur"
printf '\002' | dd of="$out/pick.cur" bs=1 seek=2 conv=notrunc 2>/dev/null
printf '\002\000\035\000' | dd of="$out/pick.cur" bs=1 seek=10 conv=notrunc 2>/dev/null
