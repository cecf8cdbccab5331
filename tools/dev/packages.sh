# shellcheck shell=bash
# The Debian packages that each kind of work needs, and their installation.

# The packages of one kind of work, one to a line.
PackageGroup() {
    case "$1" in
        # To build the module and the program for Linux.
        products)
            printf '%s\n' g++ cmake ninja-build ccache libcli11-dev libpng-dev libtiff-dev \
                zlib1g-dev
            ;;
        # The same, and its tests and benchmarks.
        native)
            PackageGroup products
            printf '%s\n' pkg-config googletest libgtest-dev libgmock-dev libbenchmark-dev locales
            ;;
        # To build for Windows.
        windows) printf '%s\n' g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 ;;
        # To run what was built for Windows on a screen of its own, and take pictures of it.
        wine) printf '%s\n' wine64 xvfb xauth x11-utils imagemagick procps ;;
        # To make the archives that people download, and to look into them.
        package) printf '%s\n' zip unzip cmark-gfm dpkg-dev xz-utils ;;
        # To sign the Windows files.
        sign) printf '%s\n' osslsigncode ;;
        # To check and set the format.
        format) printf '%s\n' clang-format ;;
        # The second compiler with its sanitizers and fuzzer.
        clang) printf '%s\n' clang libclang-rt-14-dev llvm valgrind ;;
        # Other tools' radial blurs, to compare with.
        peers) printf '%s\n' gimp gmic libopencv-dev ;;
        # The analysers.
        lint) printf '%s\n' clang-tidy shellcheck ;;
        *) Die "there is no package group '$1'" ;;
    esac
}

# Installs those packages of the named groups that are missing. Asks the package database only, so
# it is quick and needs no network when all are there.
NeedPackages() {
    local group name wanted=() installed missing=()
    for group in "$@"; do
        mapfile -t -O "${#wanted[@]}" wanted < <(PackageGroup "$group")
    done
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        Die "this needs Debian's apt-get; elsewhere use CMakePresets.json with ${wanted[*]}"
    fi
    # Lines like "g++ installed"; the database complains about names that it has never seen.
    # shellcheck disable=SC2016 # These are dpkg-query's variables, not the shell's.
    installed="$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null ||
        true)"
    for name in "${wanted[@]}"; do
        grep -qxF "$name installed" <<<"$installed" || missing+=("$name")
    done
    [[ ${#missing[@]} -eq 0 ]] || InstallPackages "${missing[@]}"
}

InstallPackages() {
    local asRoot=()
    if [[ "$(id -u)" -ne 0 ]]; then
        command -v sudo >/dev/null ||
            Die "packages are missing and there is neither root nor sudo to install them: $*"
        asRoot=(sudo)
        [[ -t 0 ]] || asRoot+=(-n) # Without a terminal a password prompt would hang.
    fi
    asRoot+=(env DEBIAN_FRONTEND=noninteractive apt-get -q -y
        -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300)
    Say "Installing Debian packages: $*"
    "${asRoot[@]}" update || Die "apt-get update failed, so the packages cannot be installed: $*"
    "${asRoot[@]}" install --no-install-recommends "$@" ||
        Die "apt-get could not install these packages: $*"
}

RunSetup() {
    NeedPackages native windows wine package format clang lint
    Say "All packages are installed"
}
