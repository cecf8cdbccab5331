# shellcheck shell=bash
# The archives that people download. Two runs on one commit give the same bytes.

# The version that CMakeLists.txt states.
ProjectVersion() {
    sed -n 's/^project(radial_blur VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt
}

# The time that all files in an archive get: that of the last commit, if git knows one.
ArchiveTime() {
    echo "${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || echo 1577836800)}"
}

# Gives all files below a folder the same time, and rights that do not hang on the builder's.
Settle() {
    find "$1" -type d -exec chmod 755 {} +
    find "$1" -type f -perm /100 -exec chmod 755 {} +
    find "$1" -type f ! -perm /100 -exec chmod 644 {} +
    find "$1" -exec touch --no-dereference --date="@$(ArchiveTime)" {} +
}

# Stage <folder> <product...>: an archive's files, with their checksums.
Stage() {
    local folder="$1"
    shift
    mkdir -p "$folder/presets"
    cp "$@" "$folder/"
    cp LICENSE "$folder/LICENSE.txt"
    cp presets/*.cfg "$folder/presets/"
    Pages "$folder"
}

# Behind signing and stripping: the sums of what is packed.
Sum() {
    (cd "$1" && find . -type f ! -name SHA256SUMS -printf '%P\0' | sort -z | xargs -0 sha256sum) \
        >"$1.sums"
    mv "$1.sums" "$1/SHA256SUMS"
}

# With SIGN_CERTIFICATE, a file in PKCS #12, the Windows files are signed; see docs/release.md.
Sign() {
    local file options=(-pkcs12 "${SIGN_CERTIFICATE:-}" -h sha256 -n "Radial Blur")
    [[ -n "${SIGN_CERTIFICATE:-}" ]] || return 0
    [[ -z "${SIGN_PASSWORD_FILE:-}" ]] || options+=(-readpass "$SIGN_PASSWORD_FILE")
    [[ -z "${SIGN_TIME_SERVER:-}" ]] || options+=(-ts "$SIGN_TIME_SERVER")
    for file in "$@"; do
        osslsigncode sign "${options[@]}" -in "$file" -out "$file.signed" >/dev/null ||
            Die "osslsigncode could not sign $file"
        mv "$file.signed" "$file"
        Say "Signed $(basename "$file")"
    done
}

# Pack <folder>: the archives from what was built.
Pack() {
    local out="$1" version windows linux
    version="$(ProjectVersion)"
    windows="radial_blur-$version-win64"
    linux="radial_blur-$version-linux-x86_64"
    rm -rf "$out"
    Stage "$out/$windows" build/windows/radial_blur.8bf build/windows/radial-blur.exe
    Stage "$out/$linux" build/native/radial_blur.so build/native/radial-blur
    strip --strip-unneeded "$out/$linux/radial_blur.so" "$out/$linux/radial-blur"
    Sign "$out/$windows/radial_blur.8bf" "$out/$windows/radial-blur.exe"
    Sum "$out/$windows"
    Sum "$out/$linux"
    Settle "$out"
    (
        cd "$out" || exit
        find "$windows" -type f | sort | TZ=UTC zip -X -9 -q "$windows.zip" -@
    ) || Die "the ZIP archive could not be made"
    tar -C "$out" --sort=name --owner=0 --group=0 --numeric-owner -cf - "$linux" |
        gzip -n9 >"$out/$linux.tar.gz"
    Debian "$out/$linux" "$out"
    rm -r "${out:?}/$windows" "${out:?}/$linux"
}

RunPackage() {
    NeedPackages products windows package
    [[ -z "${SIGN_CERTIFICATE:-}" ]] || NeedPackages sign
    RunBuild
    RunWindows
    Build native-release make_sample_picture
    if [[ -z "${SIGN_CERTIFICATE:-}" ]]; then
        Say "Packing twice, comparing, and trying what is inside"
        CheckPackages
    fi
    Say "Packing in build/package"
    Pack build/package
    Say "Packed:"
    (cd build/package && ls -l -- * && sha256sum -- *)
}

# Packs twice, the second time with other rights and another clock zone, and tries what is inside.
CheckPackages() {
    local one=build/package-check/one two=build/package-check/two tree=build/package-check/tree
    local archive
    NeedPackages package
    rm -rf build/package-check
    mkdir -p "$tree"
    Pack "$one"
    (umask 077 && TZ=Pacific/Auckland Pack "$two")
    for archive in "$one"/*; do
        cmp "$archive" "$two/$(basename "$archive")" || Die "two packings of $archive differ"
    done
    tar -C "$tree" -xzf "$one"/*.tar.gz
    dpkg-deb -x "$one"/*.deb "$tree/deb"
    unzip -q "$one"/*.zip -d "$tree"
    for archive in "$tree"/radial_blur-*; do
        (cd "$archive" && sha256sum --quiet --check SHA256SUMS) || Die "sums in $archive are wrong"
    done
    TryProgram "$tree"/radial_blur-*-linux-x86_64/radial-blur
    TryProgram "$tree/deb/usr/bin/radial-blur"
    "$tree/deb/usr/bin/radial-blur" doctor "$tree"/radial_blur-*-win64/radial_blur.8bf >/dev/null ||
        Die "doctor finds a fault in the packed module"
    rm -r build/package-check
}

# The program of a package with its own module, without anything of the build.
TryProgram() {
    local work
    work="$(mktemp -d)"
    "$(BuiltProgram build/native make_sample_picture)" "$work/in.png"
    "$1" "$work/in.png" "$work/out.png" --strength 0.4 --quiet || Die "$1 does not run"
    [[ -s "$work/out.png" ]] || Die "$1 writes nothing"
    rm -r "$work"
}
