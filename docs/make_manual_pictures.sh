#!/usr/bin/env bash
# Makes the manual's pictures but for those of the windows: docs/make_manual_pictures.sh [folder of a
# native build]. Needs ImageMagick and the fonts of fonts-dejavu-core; the build folder holds
# radial-blur with its module and make_sample_picture.
set -euo pipefail
export LC_ALL=C.UTF-8
here=$(cd "$(dirname "$0")" && pwd -P)
build=$(cd "${1:-$here/../build/native}" && pwd -P)
result=$here/images/manual
font=/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
pictures=$work/manual

Die() {
    echo "make_manual_pictures.sh: $*" >&2
    exit 1
}

maker=$(find "$build" -name make_sample_picture -type f -perm -u+x -print -quit)
[[ -n "$maker" && -x "$build/radial-blur" ]] || Die "$build holds no build; run './dev run' first"
[[ -f "$font" ]] || Die "there is no $font; install fonts-dejavu-core"

# The picture of a scene in the size that is blurred here, made once. Its light or its vanishing
# point is where the options of the same name put the centre.
declare -A centres=(["lake"]="0.3,0.25" ["street"]="0.5,0.45" ["stage"]="0.5,0.375"
    ["flower"]="0.425,0.44" ["road"]="0.5,0.47" ["window"]="0.5,0.4375" ["tunnel"]="0.5,0.5")
Scene() {
    local scene=$work/scene-$1.png
    if [[ ! -f "$scene" ]]; then
        "$maker" "$work/large.png" "$1"
        convert "$work/large.png" -resize '900x600!' "$scene"
    fi
    echo "$scene"
}

# Blur <scene> <picture> [option...]: with the scene's centre unless an option says another.
Blur() {
    local scene="$1" out="$2"
    shift 2
    "$build/radial-blur" "$(Scene "$scene")" "$out" --quiet --origin "${centres[$scene]}" "$@"
}

# Sheet <name> <tiles> <label and picture...>: small pictures with words below. A thin frame shows
# where a picture that is white ends.
Sheet() {
    local name="$1" tiles="$2" words=()
    shift 2
    while [[ $# -gt 0 ]]; do
        words+=(-label "$1" "$2")
        shift 2
    done
    montage -font "$font" -pointsize 15 -background white -bordercolor '#b0b0b0' -border 1 \
        "${words[@]}" -tile "$tiles" -geometry "${cell:-360x240}+4+4" "$work/sheet.png"
    convert "$work/sheet.png" -strip -sampling-factor 4:2:0 -quality 80 "$pictures/$name.jpg"
    echo "$result/$name.jpg"
}

# Three <name> <scene> <values, with blanks between> [option...]: one picture for each value of the
# parameter whose option is the name.
Three() {
    local name="$1" scene="$2" values="$3" value sheet=()
    shift 3
    for value in $values; do
        Blur "$scene" "$work/$name$value.png" "$@" "--$name" "$value"
        sheet+=("$name $value" "$work/$name$value.png")
    done
    Sheet "$name" 3x "${sheet[@]}"
}

# The same with the selection above the result.
ThreeSelections() {
    local name="$1" scene="$2" values="$3" value sheet=() results=()
    shift 3
    for value in $values; do
        Blur "$scene" "$work/s$value.png" "$@" "--$name" "$value" --show selection-only
        Blur "$scene" "$work/r$value.png" "$@" "--$name" "$value" --strength 0.6 --intensity 1.5 \
            --blend screen
        sheet+=("$name $value, selection only" "$work/s$value.png")
        results+=("$name $value, result" "$work/r$value.png")
    done
    Sheet "$name" 3x "${sheet[@]}" "${results[@]}"
}

Switch() {
    local name="$1" scene="$2"
    shift 2
    Blur "$scene" "$work/off.png" "$@" "--no-$name"
    Blur "$scene" "$work/on.png" "$@" "--$name"
    cell=480x320 Sheet "$name" 2x "$name off" "$work/off.png" "$name on" "$work/on.png"
}

# Dots, the lines through the centre, and what becomes of the dots.
Principle() {
    local dots=() lines=() angle radius
    for angle in 0 40 75 110 150 195 230 265 305 335; do
        for radius in 60 120 180; do
            dots+=(-draw "circle $(awk -v a="$angle" -v r="$radius" 'BEGIN {
                a = (a + r / 6) * 3.14159265 / 180
                x = 300 + r * 1.35 * cos(a); y = 200 + r * sin(a)
                printf "%.1f,%.1f %.1f,%.1f", x, y, x + 5, y }')")
        done
    done
    for angle in $(seq 0 15 345); do
        lines+=(-draw "line 300,200 $(awk -v a="$angle" 'BEGIN {
            a = a * 3.14159265 / 180
            printf "%.1f,%.1f", 300 + 500 * cos(a), 200 + 500 * sin(a) }')")
    done
    convert -size 600x400 xc:black -fill '#ffd27f' "${dots[@]}" "$work/dots.png"
    "$build/radial-blur" "$work/dots.png" "$work/streaks.png" --quiet --strength 0.25 --intensity 2.5
    convert "$work/dots.png" -stroke '#3f5a73' -strokewidth 1 "${lines[@]}" -stroke none \
        -fill '#ffd27f' "${dots[@]}" -fill none -stroke '#ff5040' -strokewidth 3 \
        -draw 'circle 300,200 300,212' "$work/lines.png"
    convert "$work/streaks.png" -fill none -stroke '#ff5040' -strokewidth 3 \
        -draw 'circle 300,200 300,212' "$work/result.png"
    cell=540x360 Sheet principle 2x "the picture, its centre, and lines through it" \
        "$work/lines.png" "each point smeared along its line" "$work/result.png"
}

Blends() {
    local mode name input sheet=("the picture" "$(Scene window)")
    local names=("normal" "max weight" "screen" "overlay" "addition" "subtraction" "multiply"
        "divide" "difference" "exclusion" "lighten" "darken" "maximum" "minimum" "hue" "saturation"
        "color" "luminosity" "alpha add" "alpha sub" "alpha mult" "alpha replace" "(none) replace")
    # The modes of transparency need some: the picture fades to the left there.
    convert "$(Scene window)" \( -size 600x900 gradient:white-gray15 -rotate 90 \) \
        -alpha off -compose CopyOpacity -composite "PNG32:$work/faded.png"
    convert -size 16x16 xc:white -fill '#c8c8cc' -draw 'rectangle 0,0 7,7' \
        -draw 'rectangle 8,8 15,15' "$work/tile.png"
    for mode in $(seq 1 23); do
        name=${names[mode - 1]}
        input=$(Scene window)
        [[ "$name" != alpha* ]] || input=$work/faded.png
        "$build/radial-blur" "$input" "$work/blend.png" --quiet --origin "${centres[window]}" \
            --strength 0.5 --intensity 1.2 --blend "$mode"
        convert -size 900x600 "tile:$work/tile.png" "$work/blend.png" -composite \
            "PNG24:$work/blend$mode.png"
        sheet+=("$mode $name" "$work/blend$mode.png")
    done
    cell=270x180 Sheet blend 4x "${sheet[@]}"
}

Masks() {
    # The left half, with a soft edge.
    convert -size 600x900 gradient:white-black -rotate 90 -sigmoidal-contrast 12x50% -flop \
        -alpha off "$work/mask.png"
    Blur street "$work/plain.png" --strength 0.5 --intensity 2
    Blur street "$work/masked.png" --strength 0.5 --intensity 2 --mask "$work/mask.png"
    Blur street "$work/screened.png" --strength 0.5 --intensity 2 --mask "$work/mask.png" \
        --blend screen
    cell=480x320 Sheet mask 2x "no mask" "$work/plain.png" "a mask" "$work/mask.png" \
        "with the mask, blend normal" "$work/masked.png" \
        "with the mask, blend screen" "$work/screened.png"
    Blur street "$work/used.png" --strength 0.5 --intensity 2 --mask "$work/mask.png" \
        --use-size-selection
    Blur street "$work/seen.png" --mask "$work/mask.png" --use-size-selection --show size-selection
    Sheet use-size-selection 3x "use-size-selection off" "$work/masked.png" \
        "use-size-selection on" "$work/used.png" "on, show size selection" "$work/seen.png"
    Blur lake "$work/show1.png" --low 150 --strength 0.6 --blend screen
    Blur lake "$work/show2.png" --low 150 --show 2
    Blur lake "$work/show3.png" --low 150 --show 3
    Blur lake "$work/show4.png" --mask "$work/mask.png" --use-size-selection --show 4
    cell=480x320 Sheet show 2x "show normal" "$work/show1.png" \
        "show selected image" "$work/show2.png" "show selection only" "$work/show3.png" \
        "show size selection" "$work/show4.png"
}

Modes() {
    Blur street "$work/mode1.png" --strength 0.4
    Blur street "$work/mode2.png" --strength 0.4 --mode abberative
    Blur street "$work/mode3.png" --strength 0.4 --mode abberative --invert-gradient
    Sheet mode 3x "mode normal" "$work/mode1.png" "mode abberative" "$work/mode2.png" \
        "abberative, invert-gradient" "$work/mode3.png"
    cell=480x320 Sheet invert-gradient 2x "invert-gradient off" "$work/mode2.png" \
        "invert-gradient on" "$work/mode3.png"
}

Recipes() {
    Blur lake "$work/a.png" --low 170 --soften 0.5 --show selected-image
    Blur lake "$work/b.png" --low 170 --soften 0.5 --strength 0.9 --intensity 1.6
    Blur lake "$work/c.png" --low 170 --soften 0.5 --strength 0.9 --intensity 1.6 --blend screen
    cell=480x320 Sheet recipe-rays 2x "the picture" "$(Scene lake)" "2: what sends rays" "$work/a.png" \
        "3: the rays alone" "$work/b.png" "4: over the picture" "$work/c.png"
    Blur road "$work/d.png" --strength 0.22
    Blur road "$work/e.png" --strength 0.22 --holdout 0.12
    Sheet recipe-speed 3x "the picture" "$(Scene road)" "2: blurred" "$work/d.png" \
        "3: with a sharp way ahead" "$work/e.png"
    Blur street "$work/f.png" --strength 0.4 --mode abberative
    Blur street "$work/g.png" --strength 0.4 --mode abberative --low 120 --soften 0.5 \
        --intensity 2.5 --blend screen
    Sheet recipe-streaks 3x "the picture" "$(Scene street)" "2: through the colours" "$work/f.png" \
        "3: lights only, over the picture" "$work/g.png"
}

FrontDoor() {
    Blur lake "$work/after.png" --low 170 --soften 0.5 --strength 0.9 --intensity 1.6 --blend screen
    cell=540x360 Sheet before-after 2x "before" "$(Scene lake)" "after" "$work/after.png"
}

mkdir -p "$pictures"
FrontDoor
Principle
Three origin road "0.2,0.3 0.5,0.47 1.2,0.5" --strength 0.3
Three intensity flower "0.5 1 2" --strength 0.3
Three strength street "0.05 0.25 1"
Three start stage "-0.5 0 0.5" --strength 0.4 --intensity 1.3
Three holdout flower "0 0.25 0.5" --strength 0.4
Modes
Switch gamma-correction street --strength 1
Three contrast flower "0 0.15 0.4" --strength 0.15
Three gamma flower "0.5 1 2" --strength 0.15
Three hue flower "-0.3 0 0.3" --strength 0.15
Three saturation flower "-1 0 1" --strength 0.15
Three lightness flower "-0.3 0 0.3" --strength 0.15
ThreeSelections low lake "0 100 180"
ThreeSelections high lake "255 150 60"
ThreeSelections soften lake "0 1 3" --low 60
ThreeSelections climax lake "-1 0 1" --soften 1.5
Masks
Blends
Recipes

# All or nothing: a page never lacks pictures because this script was stopped.
rm -rf "$result"
cp -r "$pictures" "$result"
