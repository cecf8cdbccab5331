# shellcheck shell=bash
# The archives that people download. Two runs on one commit give the same bytes.

# The version that CMakeLists.txt states.
ProjectVersion() {
    sed -n 's/^project(radial_blur VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt
}

# The time that all files in an archive get: that of the last commit, if git knows one.
ArchiveTime() {
    git log -1 --format=%ct 2>/dev/null || echo 1577836800
}

# Stage <folder> <product...>: an archive's files, with their checksums.
Stage() {
    local folder="$1" text
    shift
    rm -rf "$folder"
    mkdir -p "$folder"
    cp "$@" "$folder/"
    for text in README.md CHANGELOG.md LICENSE INSTALL.md; do
        [[ ! -f "$text" ]] || cp "$text" "$folder/"
    done
    if compgen -G 'presets/*.cfg' >/dev/null; then
        mkdir "$folder/presets"
        cp presets/*.cfg "$folder/presets/"
    fi
    find "$folder" -type f -printf '%P\0' | sort -z >"$folder.files"
    (cd "$folder" && xargs -0 sha256sum <"../$(basename "$folder").files" >SHA256SUMS)
    rm "$folder.files"
    find "$folder" -exec touch --no-dereference --date="@$(ArchiveTime)" {} +
}

RunPackage() {
    local version out=build/package windows linux
    RunBuild
    RunWindows
    version="$(ProjectVersion)"
    windows="radial_blur-$version-win64"
    linux="radial_blur-$version-linux-x86_64"
    rm -rf "$out"
    Say "Packing in $out"
    Stage "$out/$windows" build/windows/radial_blur.8bf build/windows/radial-blur.exe
    Stage "$out/$linux" build/native/radial_blur.so build/native/radial-blur
    (
        cd "$out" || exit
        mapfile -t files < <(find "$windows" -type f | sort)
        cmake -E tar cf "$windows.zip" --format=zip -- "${files[@]}"
    )
    tar -C "$out" --sort=name --owner=0 --group=0 --numeric-owner -cf - "$linux" |
        gzip -n9 >"$out/$linux.tar.gz"
    rm -r "${out:?}/$windows" "${out:?}/$linux"
    Say "Packed:"
    ls -l "$out"
}
