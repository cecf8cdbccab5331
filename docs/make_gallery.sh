#!/usr/bin/env bash
# Makes the page of the presets, docs/presets.md, and its pictures from the shipped preset file:
# docs/make_gallery.sh [folder of a native build]. Needs ImageMagick; the build folder holds
# radial-blur with its module and make_sample_picture.
set -euo pipefail
export LC_ALL=C.UTF-8
here=$(cd "$(dirname "$0")" && pwd -P)
build=$(cd "${1:-$here/../build/native}" && pwd -P)
file=$here/../presets/radial_blur.cfg
page=$here/presets.md
pictures=$here/images/presets
size=480x320
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The scene that a preset is shown on, and what it is for. The order of the page is the file's.
notes='
sun_rays|lake|Rays from a light behind trees; only what is bright sends them.
golden_haze|lake|The same light later in the day, warm and in everything that is not dark.
morning_mist|lake|Pale light that falls through from above and takes the colours along.
soft_zoom|flower|A sharp subject in surroundings that move a little. Set the centre on the subject.
dream_glow|flower|A soft light around everything, with the picture still sharp underneath.
light_burst|flower|The lights around the subject shoot outwards; the subject stays as it is.
light_leak|flower|Warm light that comes in from outside of the picture, as in an old camera.
prism_flare|flower|The light in the corner through a prism. Set the centre on the light.
speed|road|Surroundings in motion, and a sharp way ahead. Set the centre where the road leads.
drama|road|More depth and contrast, drawn toward the centre.
night_drive|street|Each light a trail, each trail only as bright as its light.
light_trails|street|Long glowing trails of the brightest lights.
chromatic_streaks|street|Trails that run through the colours.
rush|street|Everything flies past; little stays to be made out.
noir|street|Hard streaks of light out of the dark, without most of the colours.
tunnel|tunnel|Lamps become lines that lead into the depth.
hyperspace|tunnel|Coloured lines and a burst of light where they meet.
spotlights|stage|The light behind a figure reaches out around it.
colour_wash|stage|The colours flow outwards and the shapes stay sharp.
implosion|stage|All is drawn inwards, and the border sinks into the dark.
edge_glow|window|Edges light up, and faces of one colour step back.
cathedral_rays|window|Coloured glass throws its light into the room.
zoom_blast|lake|Streaks outwards from the light, and nothing else.
coloured_pencil|lake|What changes along the way is drawn with a pencil on white paper.
'

Die() {
    echo "make_gallery.sh: $*" >&2
    exit 1
}

maker=$(find "$build" -name make_sample_picture -type f -perm -u+x -print -quit)
[[ -n "$maker" && -x "$build/radial-blur" ]] || Die "$build holds no build; run './dev run' first"

# The picture of a scene in the size of the page's presets, made once.
Scene() {
    local scene=$work/$1.png
    if [[ ! -f "$scene" ]]; then
        "$maker" "$work/large.png" "$1"
        convert "$work/large.png" -resize "1200x800!" "$scene"
    fi
    echo "$scene"
}

# Small <picture> <JPEG file>
Small() {
    convert "$1" -resize "$size" -strip -sampling-factor 4:2:0 -quality 82 "$2"
}

# The options that make a preset, without those that say nothing new.
Options() {
    "$build/radial-blur" presets show "$file" "$1" |
        awk 'NR > 1 && !/[(]default[)]$/ {
            value = $2
            for (i = 3; i <= NF; i++) value = value "-" $i
            if (value == "on") printf " --%s", $1
            else if (value == "off") printf " --no-%s", $1
            else printf " --%s %s", $1, value }'
}

Head() {
    cat <<'TEXT'
# Presets

These looks ship in `presets/radial_blur.cfg`. In the dialog, choose that file under the presets; on the
command line, name the look:

```
radial-blur in.png out.png --preset presets/radial_blur.cfg:sun_rays
radial-blur in.png out.png --preset presets/radial_blur.cfg:sun_rays --origin 0.7,0.2
```

A look brings its centre along. Where your light or your subject is elsewhere, move it: in the preview with
the mouse, or with `--origin`, since options win over the preset. `radial-blur presets --help` tells how to
list, show, save and delete presets in files of your own.

The scenes are painted by `make_sample_picture`. This page and its pictures are made by
`docs/make_gallery.sh` from the preset file.

TEXT
}

mkdir -p "$pictures"
rm -f "$pictures"/*.jpg
Head >"$work/page.md"
shown=
while IFS= read -r preset; do
    note=$(grep "^$preset|" <<<"$notes") || Die "the preset '$preset' has no line in this script"
    IFS='|' read -r _ scene words <<<"$note"
    input=$(Scene "$scene")
    if [[ "$scene" != "$shown" ]]; then
        [[ -f "$pictures/scene-$scene.jpg" ]] || Small "$input" "$pictures/scene-$scene.jpg"
        printf '## On the %s\n\n![The %s as it is](images/presets/scene-%s.jpg)\n\n' \
            "$scene" "$scene" "$scene" >>"$work/page.md"
        shown=$scene
    fi
    "$build/radial-blur" "$input" "$work/out.png" --preset "$file:$preset" --quiet
    Small "$work/out.png" "$pictures/$preset.jpg"
    # shellcheck disable=SC2016 # The backticks are Markdown's.
    printf '### `%s`\n\n%s\n\n![%s](images/presets/%s.jpg)\n\n`%s`\n\n' \
        "$preset" "$words" "$preset" "$preset" "$(Options "$preset" | sed 's/^ //')" \
        >>"$work/page.md"
    echo "$pictures/$preset.jpg"
done < <("$build/radial-blur" presets list "$file")
sed -e '${/^$/d}' "$work/page.md" >"$page"
echo "$page"
