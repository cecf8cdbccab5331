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

# Configures a preset once; again after the presets changed or the checkout was moved.
Configure() {
    local preset="$1" folder fresh=()
    folder="$(BuildFolder "$preset")"
    local cache="$folder/CMakeCache.txt"
    if [[ -f "$cache" ]] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$cache"; then
        fresh=(--fresh)
    elif [[ -f "$folder/build.ninja" && "$folder/.configured" -nt CMakePresets.json ]]; then
        return
    fi
    Say "Configuring $folder (preset $preset)"
    cmake --preset "$preset" "${fresh[@]}" >"$folder.configure.log" 2>&1 || {
        cat "$folder.configure.log" >&2
        Die "cmake could not configure the preset '$preset'; its messages stand above"
    }
    touch "$folder/.configured"
}

# Build <preset> [target...]: all targets unless some are named.
Build() {
    local preset="$1" folder
    shift
    folder="$(BuildFolder "$preset")"
    mkdir -p build
    Configure "$preset"
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
    NeedPackages native
    Build native-release radial_blur radial-blur
    RequireFiles build/native/radial_blur.so build/native/radial-blur
    Say "Ready: build/native/radial-blur and build/native/radial_blur.so"
}

RunWindows() {
    NeedPackages native windows
    Build windows radial_blur radial-blur
    RequireFiles build/windows/radial_blur.8bf build/windows/radial-blur.exe
    Say "Ready: build/windows/radial_blur.8bf and build/windows/radial-blur.exe"
}
