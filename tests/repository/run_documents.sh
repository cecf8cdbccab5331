#!/usr/bin/env bash
# Runs the commands of the documents as a new user would: every fenced block that is marked `sh`, in
# the order of its document, in a folder that holds the files which the documents speak of. A block
# marked `sh exit=4` must end with that code, and one marked `sh needs=ffmpeg` is left out where the
# program is missing. Prints a line for each block and a sum.
#
# Usage: run_documents.sh [--native FOLDER] [DOCUMENT...]
set -uo pipefail
export LC_ALL=C.UTF-8

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd -P)"
native=$root/build/native
documents=()
while [[ $# -gt 0 ]]; do
    case "$1" in
        --native) native="$(cd "$2" && pwd -P)" && shift 2 ;;
        *) documents+=("$1") && shift ;;
    esac
done
cd "$root" || exit 2
[[ ${#documents[@]} -gt 0 ]] || mapfile -t documents < <(printf '%s\n' ./*.md docs/*.md)
export PATH="$native:$PATH"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
passed=0
failed=0
skipped=0

# Inputs that the documents take for granted: pictures, a mask, presets, modules.
maker="$(find "$native" -name make_sample_picture -type f -perm -u+x -print -quit)"
[[ -n "$maker" && -x "$native/radial-blur" ]] || {
    echo "$native holds no build with make_sample_picture"
    printf '0 passed, 1 failed\n'
    exit 1
}
mkdir -p "$work/files/photos" "$work/files/presets"
"$maker" "$work/large.png" street
# Small ones, so that all is done in seconds.
for name in in a b mask $(printf 'photos/p%02d ' {1..12}); do
    convert "$work/large.png" -resize '150x100!' "$work/files/$name.png"
done
convert "$work/large.png" -resize '150x100!' "$work/files/in.tif"
cp presets/*.cfg "$work/files/presets/"
cp "$native/radial_blur.so" "$work/files/"
[[ ! -f build/windows/radial_blur.8bf ]] || cp build/windows/radial_blur.8bf "$work/files/"
if command -v ffmpeg >/dev/null; then
    ffmpeg -v error -f lavfi -i sine=d=0.5 -f lavfi -i testsrc2=s=160x120:r=24:d=0.5 \
        -pix_fmt yuv420p -shortest "$work/files/film.mp4" </dev/null
fi

# Blocks <document>: writes each marked block to a file of its own and prints "file TAB words".
Blocks() {
    awk -v folder="$work" -v name="$(basename "$1")" '
        /^```sh( |$)/ {
            inside = 1
            file = folder "/" name "." NR
            printf "" >file
            sub(/^```sh */, "")
            print file "\t" $0
            next
        }
        /^```/ { if (inside) close(file); inside = 0; next }
        inside { print >>file }' "$1"
}

# Block <document> <file> <words>
Block() {
    local document="$1" file="$2" wanted=0 word code=0
    local place="$document:${file##*.}"
    for word in $3; do
        case "$word" in
            exit=*) wanted="${word#exit=}" ;;
            needs=*)
                if ! command -v "${word#needs=}" >/dev/null; then
                    skipped=$((skipped + 1))
                    printf 'skipped %s: there is no %s\n' "$place" "${word#needs=}"
                    return
                fi
                ;;
            *) code=unknown-word-$word ;;
        esac
    done
    [[ "$code" != 0 ]] || bash -euo pipefail "$file" >"$work/log" 2>&1 </dev/null || code=$?
    if [[ "$code" == "$wanted" ]]; then
        passed=$((passed + 1))
        printf 'ok      %s\n' "$place"
    else
        failed=$((failed + 1))
        printf 'FAILED  %s ended with %s and not with %s:\n' "$place" "$code" "$wanted"
        cat "$file" "$work/log"
    fi
}

for document in "${documents[@]}"; do
    blocks="$(Blocks "$document")"
    [[ -n "$blocks" ]] || continue
    rm -rf "$work/place"
    cp -r "$work/files" "$work/place"
    while IFS=$'\t' read -r file words; do
        cd "$work/place" || exit 2
        Block "${document#./}" "$file" "$words"
        cd "$root" || exit 2
    done <<<"$blocks"
done
[[ "$skipped" -eq 0 ]] || printf '%d skipped, counted neither way\n' "$skipped"
[[ "$passed" -gt 0 ]] || failed=$((failed + 1)) # No block at all is a mistake of this script.
printf '%d passed, %d failed\n' "$passed" "$failed"
[[ "$failed" -eq 0 ]]
