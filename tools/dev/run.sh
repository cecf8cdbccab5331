# shellcheck shell=bash
# The main job on the sample picture: the defaults and three of the shipped looks.

# What is rendered: a name, then the options of the command line.
sampleLooks=(
    "defaults"
    "sun_rays          --preset presets/radial_blur.cfg:sun_rays"
    "soft_zoom         --preset presets/radial_blur.cfg:soft_zoom --origin 0.3,0.25"
    "chromatic_streaks --preset presets/radial_blur.cfg:chromatic_streaks --origin 0.3,0.25 --intensity 1"
)

RunSample() {
    local look name options folder=build/run
    NeedPackages products
    Build native-release radial_blur radial-blur make_sample_picture
    RequireFiles build/native/radial_blur.so build/native/radial-blur
    mkdir -p "$folder"
    Say "Drawing the sample picture"
    "$(BuiltProgram build/native make_sample_picture)" "$folder/sample.png" ||
        Die "the sample picture could not be drawn"
    for look in "${sampleLooks[@]}"; do
        read -r name options <<<"$look"
        Say "Blurring it: $name ${options:+($options)}"
        # shellcheck disable=SC2086 # The options are words of the table above.
        build/native/radial-blur "$folder/sample.png" "$folder/$name.png" $options ||
            Die "the look '$name' could not be rendered"
        RequireFiles "$folder/$name.png"
    done
    Say "The results are in $PWD/$folder:"
    ls -l "$folder"/*.png
}

# A program that is no product has no promised place; the build knows only its name.
BuiltProgram() {
    local found
    found="$(find "$1" -name "$2" -type f -perm -u+x -print -quit)"
    [[ -n "$found" ]] || Die "the build in $1 made no program $2"
    printf '%s\n' "$found"
}
