# shellcheck shell=bash
# Configuring and building with the presets of CMakePresets.json.

# Where a preset builds, as CMakePresets.json has it.
BuildFolder() {
    case "$1" in
        native-release) echo build/native ;;
        asan-ubsan) echo build/asan ;;
        *) echo "build/$1" ;;
    esac
}

# Whether these targets need no test library. No target at all means everything.
OnlyProducts() {
    local target
    [[ $# -gt 0 ]] || return 1
    for target in "$@"; do
        [[ " radial_blur radial-blur make_sample_picture " == *" $target "* ]] || return 1
    done
}

# Configure <preset> [target...]: once, for the products alone or for everything; again after the
# presets changed or the checkout was moved, and when more is wanted than before.
Configure() {
    local preset="$1" folder cache parts=OFF fresh=()
    shift
    folder="$(BuildFolder "$preset")"
    cache="$folder/CMakeCache.txt"
    ! OnlyProducts "$@" || parts=ON
    if [[ -f "$cache" ]] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$cache"; then
        fresh=(--fresh)
    elif [[ -f "$folder/build.ninja" && "$folder/.configured" -nt CMakePresets.json ]] &&
        { [[ "$parts" == ON ]] || ! grep -qxF ON "$folder/.configured"; }; then
        return
    fi
    Say "Configuring $folder (preset $preset)"
    cmake --preset "$preset" "${fresh[@]}" "-DRADIAL_BLUR_PRODUCTS_ONLY=$parts" \
        >"$folder.configure.log" 2>&1 || {
        cat "$folder.configure.log" >&2
        Die "cmake could not configure the preset '$preset'; its messages stand above"
    }
    echo "$parts" >"$folder/.configured"
}

# Build <preset> [target...]: all targets unless some are named.
Build() {
    local preset="$1" folder
    shift
    folder="$(BuildFolder "$preset")"
    mkdir -p build
    Configure "$preset" "$@"
    Say "Building ${*:-everything} in $folder"
    cmake --build "$folder" --parallel "$(Jobs)" ${1:+--target "$@"} ||
        Die "the build in $folder failed; the compiler's messages stand above"
}

# The files that a build promises to leave.
RequireFiles() {
    local file
    for file in "$@"; do
        [[ -s "$file" ]] || Die "the build ended well but left no $file"
    done
}

RunBuild() {
    NeedPackages products
    Build native-release radial_blur radial-blur
    RequireFiles build/native/radial_blur.so build/native/radial-blur
    Say "Ready: build/native/radial-blur and build/native/radial_blur.so"
}

RunWindows() {
    NeedPackages products windows
    Build windows radial_blur radial-blur
    RequireFiles build/windows/radial_blur.8bf build/windows/radial-blur.exe
    Say "Ready: build/windows/radial_blur.8bf and build/windows/radial-blur.exe"
}
