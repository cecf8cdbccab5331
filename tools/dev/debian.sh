# shellcheck shell=bash
# The Debian package of the command line and its module.

# The libraries that the programs need, as Debian names them, with their oldest fitting versions.
DebianDepends() {
    local work="$1"
    shift
    mkdir -p "$work/debian"
    printf 'Source: radial-blur\n\nPackage: radial-blur\nArchitecture: amd64\n' >"$work/debian/control"
    (cd "$work" && dpkg-shlibdeps -O "${@/#/-e}" 2>/dev/null) | sed -n 's/^shlibs:Depends=//p'
}

# The page of the manual, from the program's own help.
ManPage() {
    local program="$1" version="$2"
    printf '.TH RADIAL-BLUR 1 "%s" "radial-blur %s" "User Commands"\n' \
        "$(date -u -d "@$(ArchiveTime)" +%Y-%m-%d)" "$version"
    printf '.SH NAME\nradial-blur \\- smear pictures along the lines through a point\n'
    "$program" --help | awk '
        NR == 1 { next }
        /^Usage: / { print ".SH SYNOPSIS\n.nf"; sub(/^Usage: /, "       "); inUsage = 1 }
        inUsage && /^$/ { print ".fi\n.SH DESCRIPTION\n.nf"; inUsage = 0; next }
        /^[A-Z][A-Za-z ]+$/ { print ".fi\n.SH " toupper($0) "\n.nf"; next }
        { gsub(/\\/, "\\e"); gsub(/-/, "\\-"); sub(/^[.'"'"']/, "\\\\&&"); print }
        END { print ".fi" }'
}

# Debian <staged Linux archive> <folder for the package>
Debian() {
    local staged="$1" out="$2" version work root library doc
    local maintainer="Morvenhale <radial-blur@morvenhale.example>"
    version="$(ProjectVersion)"
    work="$(mktemp -d)"
    root="$work/root"
    library="$root/usr/lib/radial-blur"
    doc="$root/usr/share/doc/radial-blur"
    mkdir -p "$library" "$root/usr/bin" "$root/usr/share/man/man1" "$root/usr/share/radial-blur" \
        "$doc" "$root/DEBIAN"
    cp "$staged/radial-blur" "$staged/radial_blur.so" "$library/"
    # The program finds the module beside its own file, behind this link.
    ln -s ../lib/radial-blur/radial-blur "$root/usr/bin/radial-blur"
    cp -r "$staged/presets" "$root/usr/share/radial-blur/"
    cp -r "$staged/docs" "$staged/INSTALL.html" "$staged/CHANGELOG.html" "$doc/"
    ManPage "$library/radial-blur" "$version" | gzip -n9 \
        >"$root/usr/share/man/man1/radial-blur.1.gz"
    printf 'radial-blur (%s) stable; urgency=medium\n\n  * See CHANGELOG.html.\n\n -- %s  %s\n' \
        "$version" "$maintainer" "$(date -R -u -d "@$(ArchiveTime)")" | gzip -n9 >"$doc/changelog.gz"
    # The page tells mostly of editors, and the manual leads to it.
    mkdir -p "$root/usr/share/lintian/overrides"
    echo "radial-blur: package-contains-upstream-installation-documentation" \
        >"$root/usr/share/lintian/overrides/radial-blur"
    {
        printf 'Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n\n'
        printf 'Files: *\nCopyright: %s\nLicense: Expat\n' \
            "$(sed -n 's/^Copyright (c) //p' LICENSE)"
        sed -e '1,/^Copyright/d' -e '/./,$!d' -e 's/^$/./' -e 's/^/ /' LICENSE | sed '1{/^ [.]$/d}'
    } >"$doc/copyright"
    (cd "$root" && find usr -type f -print0 | sort -z | xargs -0 md5sum) >"$root/DEBIAN/md5sums"
    cat >"$root/DEBIAN/control" <<CONTROL
Package: radial-blur
Version: $version
Section: graphics
Priority: optional
Architecture: amd64
Depends: $(DebianDepends "$work" "$library/radial-blur" "$library/radial_blur.so")
Installed-Size: $(du -k --apparent-size -s "$root/usr" | cut -f1)
Maintainer: $maintainer
Description: radial blur filter for pictures
 Smears pictures along the lines through a point, in linear light, at a cost
 that does not depend on the length of the blur. Streaks are plain or run
 through the colours; there are 23 blend modes, a selection by lightness, and
 masks. Reads and writes PNG and TIFF files.
CONTROL
    Settle "$root"
    SOURCE_DATE_EPOCH="$(ArchiveTime)" dpkg-deb --root-owner-group --threads-max=1 -Zxz -z9 \
        --build "$root" "$out/radial-blur_${version}_amd64.deb" >/dev/null ||
        Die "the Debian package could not be made"
    rm -r "$work"
}
