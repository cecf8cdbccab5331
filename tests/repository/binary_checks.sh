# shellcheck shell=bash
# shellcheck disable=SC2154 # native and windows are set by the script that reads this file.
# Checks of the built modules and programs. Each function prints what it finds wrong, and nothing
# if all is well.

objdump=x86_64-w64-mingw32-objdump

# Windows' own libraries. Anything else beside the module would keep a host from loading it.
allowedImports='^(kernel32|user32|gdi32|advapi32|comctl32|comdlg32|shell32|ole32|oleaut32|version|shlwapi|windowscodecs|msvcrt)[.]dll$'

# Present <file>: says that a file is missing, and then fails.
Present() {
    [[ -s "$1" ]] || {
        echo "$1 is not there: build it first"
        return 1
    }
}

CheckLinuxExports() {
    local exports
    Present "$native/radial_blur.so" || return 0
    exports="$(nm -D --defined-only "$native/radial_blur.so" | awk '{ print $NF }')"
    [[ "$exports" == ENTRYPOINT ]] ||
        printf 'radial_blur.so exports these and should export ENTRYPOINT alone:\n%s\n' "$exports"
}

# The system's libraries only: no foreign library comes with the module.
CheckLinuxLibraries() {
    Present "$native/radial_blur.so" || return 0
    objdump -p "$native/radial_blur.so" | awk '$1 == "NEEDED" { print $2 }' |
        grep -vE '^(libstdc\+\+|libgcc_s|libc|libm|libpthread|ld-linux-x86-64)[.]so[.0-9]*$' |
        sed 's/^/radial_blur.so needs /'
}

# No segment is written and run, the stack holds no code, and what the loader has filled in is
# closed for writing.
CheckLinuxHardening() {
    local segments
    Present "$native/radial_blur.so" || return 0
    segments="$(readelf -lW "$native/radial_blur.so")"
    awk '$1 == "LOAD" && / RWE / { print "radial_blur.so: a segment is written and run" }
         $1 == "GNU_STACK" { stack = 1 }
         $1 == "GNU_STACK" && / RWE / { print "radial_blur.so: its stack would hold code" }
         $1 == "GNU_RELRO" { closed = 1 }
         END { if (!stack) print "radial_blur.so does not say that its stack holds no code"
               if (!closed) print "radial_blur.so leaves the loader'"'"'s tables open" }' <<<"$segments"
    ! readelf -dW "$native/radial_blur.so" | grep -q TEXTREL ||
        echo "radial_blur.so has relocations in its code"
}

# Far more than the modules take, so that whatever gets in by accident is noticed.
CheckModuleSizes() {
    local file size
    for file in "$native/radial_blur.so" "$windows/radial_blur.8bf"; do
        Present "$file" || continue
        size="$(stat -c %s "$file")"
        [[ "$size" -le 8388608 ]] || echo "$file has $size bytes, which is more than 8 MiB"
    done
}

# The names in a PE file's export table.
WindowsExports() {
    "$objdump" -p "$1" | tr -d '\r' | awk '
        /^\[Ordinal\/Name Pointer\] Table/ { inside = 1; next }
        inside && /^[ \t]*\[ *[0-9]+\]/ { print $NF; next }
        inside && NF == 0 { inside = 0 }'
}

CheckWindowsExports() {
    local exports
    Present "$windows/radial_blur.8bf" || return 0
    exports="$(WindowsExports "$windows/radial_blur.8bf")"
    [[ "$exports" == ENTRYPOINT ]] ||
        printf 'radial_blur.8bf exports these and should export ENTRYPOINT alone:\n%s\n' "$exports"
}

CheckWindowsImports() {
    local file
    for file in "$windows/radial_blur.8bf" "$windows/radial-blur.exe"; do
        Present "$file" || continue
        "$objdump" -p "$file" | tr -d '\r' | awk '/DLL Name:/ { print tolower($3) }' |
            grep -vE "$allowedImports" | sed "s|^|$(basename "$file") imports |"
    done
}

# 64-bit, relocatable everywhere, no execution of data, no section that is both written and run.
CheckWindowsHardening() {
    local file header flag
    for file in "$windows/radial_blur.8bf" "$windows/radial-blur.exe"; do
        Present "$file" || continue
        header="$("$objdump" -p "$file" | tr -d '\r')"
        grep -q 'file format pei-x86-64' <<<"$header" || echo "$file is no 64-bit file"
        for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
            grep -q "^[[:space:]]*$flag" <<<"$header" || echo "$file lacks $flag"
        done
        "$objdump" -h "$file" | tr -d '\r' | awk -v file="$file" '
            $1 ~ /^[0-9]+$/ { name = $2; next }
            /CODE/ && !/READONLY/ { print file ": section " name " is written and run" }'
        # Without it the system cannot place the file elsewhere, whatever the flags say.
        "$objdump" -h "$file" | grep -q '[[:space:]][.]reloc[[:space:]]' ||
            echo "$file has no table of relocations"
    done
}

# The module linked a second time, into another folder, is the same file to the byte.
CheckWindowsRelink() {
    local command again
    Present "$windows/radial_blur.8bf" || return 0
    again="$(mktemp -d)"
    command="$(ninja -C "$windows" -t commands radial_blur.8bf | tail -n 1)"
    command="${command// -o radial_blur.8bf / -o $again/radial_blur.8bf }"
    if [[ "$command" != *"$again"* ]]; then
        echo "the command that links the module was not found"
    elif ! (cd "$windows" && bash -c "$command" >/dev/null); then
        echo "the module could not be linked again"
    elif ! cmp "$windows/radial_blur.8bf" "$again/radial_blur.8bf"; then
        echo "two links of the module differ"
    fi
    rm -r "$again"
}

# The long form of it: everything is built again from the sources, in another folder and without the
# compiler's cache, and both modules are the same files to the byte.
CheckTwoBuilds() {
    local folder preset module
    [[ -n "${RADIAL_BLUR_LONG:-}" ]] || return 0
    Present "$windows/radial_blur.8bf" && Present "$native/radial_blur.so" || return 0
    folder="$(mktemp -d)"
    for preset in windows native-release; do
        cmake --preset "$preset" -B "$folder/$preset" -DRADIAL_BLUR_TESTS=OFF \
            -DRADIAL_BLUR_BENCHMARKS=OFF >/dev/null
        CCACHE_DISABLE=1 cmake --build "$folder/$preset" --target radial_blur >"$folder/log" ||
            tail -n 20 "$folder/log"
    done
    for module in "$windows/radial_blur.8bf" "$native/radial_blur.so"; do
        preset=windows
        [[ "$module" != *.so ]] || preset=native-release
        cmp "$module" "$folder/$preset/$(basename "$module")" ||
            echo "two builds of $(basename "$module") differ"
    done
    rm -r "$folder"
}
