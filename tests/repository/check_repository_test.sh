#!/usr/bin/env bash
# Shows that each check of the repository can fail: makes a small tree that all checks pass, breaks
# one thing at a time, and expects the one check that looks at it to fail and to say where.
# shellcheck disable=SC2016 # Backticks in single quotes are Markdown's here.
set -uo pipefail
export LC_ALL=C.UTF-8

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd -P)"
work="$(mktemp -d)"
trap 'rm -r "$work"' EXIT
passed=0
failed=0

MakeTree() {
    rm -rf "$work/tree"
    mkdir -p "$work"/tree/{src/{effect,image,parameters,interface,hostapi,frame,platform/win32},docs}
    mkdir -p "$work"/tree/{host/program/presets,presets,docs/images/presets}
    cd "$work/tree" || exit 2
    printf 'project(radial_blur VERSION 1.0.0 LANGUAGES CXX)\n' >CMakeLists.txt
    printf '# Changes\n\n## [1.0.0]\n' >CHANGELOG.md
    printf '# Title\n\nSee [there](docs/page.md#a-b) and `src/effect/Stage.h`.\n' >README.md
    printf '# A b\n\nBack to [the door](../README.md). Run `./dev test`.\n' >docs/page.md
    printf 'case x in\n    test) ;;\nesac\n' >dev
    printf '#pragma once\n#include "image/Image.h"\n' >src/effect/Stage.h
    printf '#pragma once\n#include <vector>\n' >src/image/Image.h
    printf '#pragma once\n' >src/parameters/Values.h
    printf '#pragma once\n' >src/interface/Dialog.h
    printf '#include <windows.h>\n' >src/interface/DialogWin32.cpp
    printf '#include <windows.h>\n' >src/platform/win32/Clock.cpp
    printf '#pragma once\n#include "hostapi/Types.h"\n' >src/hostapi/Record.h
    printf '#pragma once\n' >src/hostapi/Types.h
    printf '#include "hostapi/Types.h"\n' >host/program/Run.cpp
    printf '#include "parameters/Values.h"\n' >host/program/presets/File.cpp
    printf 'FileOwner RadialBlur\n\nname rays\nStrength 1\n' >presets/radial_blur.cfg
    printf '# Presets\n\n### `rays`\n' >docs/presets.md
    printf 'x' >docs/images/presets/rays.jpg
    mkdir -p src/resources
    printf 'IDD_INTERFACE DIALOGEX 0, 0, 9, 9\nBEGIN\n    LTEXT "length", -1\nEND\n' \
        >src/resources/Dialogs.rc
    printf '# Manual\n\n### Length\n\n`--length`: 0 to 9;\ndefault 5\n\n' >docs/manual.md
    printf '![Lengths](images/presets/rays.jpg)\n\n### Table\n\n' >>docs/manual.md
    printf '| Length | length | `--length` | 0 to 9 | 5 |\n' >>docs/manual.md
}

# Expect <what> <check> <text that the findings must hold, or nothing if the check must pass>
Expect() {
    local findings
    findings="$("$here/check_repository.sh" --root "$work/tree" --native "$work/native" \
        --windows "$work/windows" "$2" 2>&1)"
    if [[ (-z "$3" && "$findings" == *"1 passed, 0 failed") ||
        (-n "$3" && "$findings" == *"$3"*"0 passed, 1 failed") ]]; then
        passed=$((passed + 1))
        printf 'ok      %s\n' "$1"
    else
        failed=$((failed + 1))
        printf 'FAILED  %s: %s said\n%s\n' "$1" "$2" "$findings"
    fi
}

# Breaks <what> <check> <text of the finding> <file> <line to append>
Breaks() {
    MakeTree
    Expect "$1, before it is broken" "$2" ""
    printf '%b' "$5" >>"$4"
    Expect "$1" "$2" "$3"
}

Breaks "a stage that includes a parameter" CheckDoorsOfTheEffect \
    "src/effect/Stage.h reaches parameters/Values.h" src/effect/Stage.h '#include "parameters/Values.h"\n'
Breaks "a stage that reaches a parameter through a header" CheckDoorsOfTheEffect \
    "src/effect/Stage.h reaches parameters/Values.h" src/image/Image.h '#include "parameters/Values.h"\n'
Breaks "a parameter that includes the dialog" CheckDoorsOfTheCore \
    "src/parameters/Values.h reaches interface/Dialog.h" src/parameters/Values.h \
    '#include "interface/Dialog.h"\n'
Breaks "a header of the frame that includes the dialog" CheckDoorsOfTheCore \
    "src/frame/Filter.h reaches interface/Dialog.h" src/frame/Filter.h '#include "interface/Dialog.h"\n'
Breaks "a dialog that includes a stage" CheckDoorsOfTheInterface \
    "src/interface/Dialog.h reaches effect/Stage.h" src/interface/Dialog.h '#include "effect/Stage.h"\n'
Breaks "a host interface that includes an image" CheckDoorsOfTheHostApi \
    "src/hostapi/Record.h reaches image/Image.h" src/hostapi/Record.h '#include "image/Image.h"\n'
Breaks "a program that includes a parameter" CheckDoorsOfTheHost \
    "host/program/Run.cpp includes parameters/Values.h" host/program/Run.cpp \
    '#include "parameters/Values.h"\n'
Breaks "a program's presets that include a stage" CheckDoorsOfTheHost \
    "host/program/presets/File.cpp includes effect/Stage.h" host/program/presets/File.cpp \
    '#include "effect/Stage.h"\n'
Breaks "an image that includes Windows' header" CheckWindowsHeaders \
    "src/image/Image.h includes <windows.h>" src/image/Image.h '#include <windows.h>\n'
Breaks "a dialog's logic that includes Windows' header" CheckWindowsHeaders \
    "src/interface/Dialog.h includes <Windows.h>" src/interface/Dialog.h '  #  include <Windows.h>\n'
Breaks "a module that includes a foreign library" CheckModuleDependencies \
    "src/image/Image.h includes <png.h>" src/image/Image.h '#include <png.h>\n'
Breaks "a source of 501 lines" CheckFileLengths \
    "src/image/Long.cpp has 501 lines" src/image/Long.cpp "$(printf '\\n%.0s' {1..501})"
Breaks "a header without a guard" CheckHeaderGuards \
    "src/image/Bare.h has neither #pragma once" src/image/Bare.h 'int a;\n'
Breaks "a note to self" CheckForbiddenWords "src/image/Image.h:3:// TO""DO" src/image/Image.h \
    '// TO''DO later\n'
Breaks "a chapter of a text that is not here" CheckForbiddenWords "docs/page.md:4:" docs/page.md \
    'As Pa''rt 3.2 says.\n'
Breaks "a place on a machine" CheckForbiddenWords "docs/page.md:4:" docs/page.md 'In /wo''rk/main.\n'
Breaks "a file name that points outside" CheckForbiddenWords "src/sp""ec.txt" src/sp''ec.txt 'x\n'
Breaks "a carriage return" CheckLineEnds "README.md holds a carriage return" README.md 'a\r\n'
Breaks "a last line without an end" CheckLineEnds "README.md lacks its last line end" README.md 'a'
Breaks "a path that is not there" CheckPathsInDocuments \
    "docs/page.md names src/effect/Gone.h" docs/page.md 'See `src/effect/Gone.h`.\n'
Breaks "a folder of src/ that is not there" CheckPathsInDocuments \
    "docs/page.md names gone/" docs/page.md 'In `effect/`, not in `gone/`.\n'
Breaks "a header's bare name that is nowhere" CheckPathsInDocuments \
    "docs/page.md names Gone.h" docs/page.md '`Stage.h` and `Gone.h`\n'
Breaks "a path in a fenced block that is not there" CheckPathsInDocuments \
    "docs/page.md names ./gone" docs/page.md '```\n./gone all\n```\n'
Breaks "a link to nowhere" CheckLinksInDocuments \
    "README.md links to docs/gone.md" README.md '[gone](docs/gone.md)\n'
Breaks "a link to a heading that is not there" CheckLinksInDocuments \
    "README.md links to docs/page.md#gone" README.md '[gone](docs/page.md#gone)\n'
Breaks "a command that the script does not know" CheckCommandsInDocuments \
    "README.md shows './dev dance'" README.md 'Run `./dev dance`.\n'
Breaks "a preset that is on no page" CheckPresetGallery \
    "docs/presets.md lacks the preset zoom" presets/radial_blur.cfg '\nname zoom\n'
Breaks "a page with a preset that is not there" CheckPresetGallery \
    "presets/radial_blur.cfg lacks the preset zoom" docs/presets.md '\n### `zoom`\n'
Breaks "a picture of no preset" CheckPresetGallery \
    "has a picture too much: zoom" docs/images/presets/zoom.jpg 'x'
Breaks "a README that is too long" CheckReadmeLength \
    "README.md has 153 lines" README.md "$(printf '\\n%.0s' {1..150})"
# A program with one parameter.
List() {
    mkdir -p "$work/native"
    printf '#!/bin/sh\ncat <<END\nLength\n  option   --length, --long\n  range    %s\n' "$1" \
        >"$work/native/radial-blur"
    printf '  default  %s\nEND\n' "$2" >>"$work/native/radial-blur"
    chmod +x "$work/native/radial-blur"
}
List "0 to 9" 5
Breaks "a control that the manual does not name" CheckManualControls \
    "does not name the control 'width'" src/resources/Dialogs.rc \
    'IDD_INTERFACE X\n    AUTOCHECKBOX "width", 5\nEND\n'
MakeTree
Expect "a manual with the true ranges" CheckManualParameters ""
List "0 to 8" 5
Expect "a manual with another range" CheckManualParameters \
    "lacks '0 to 8; default 5' in the chapter Length"
List "0 to 9" 6
Expect "a manual with another default" CheckManualParameters \
    "has no row of Length with --length, 0 to 9, 6"
printf '#!/bin/sh\n' >"$work/native/radial-blur"
Expect "a program that lists nothing" CheckManualParameters "lists no parameters"
rm -r "$work/native"
Expect "small pictures" CheckPictureSizes ""
truncate -s 6000000 docs/images/large.png
Expect "pictures that are too large" CheckPictureSizes "docs/images holds 6000001 bytes"
MakeTree
Expect "a change log with this version" CheckVersions ""
printf 'project(radial_blur VERSION 1.0.1 LANGUAGES CXX)\n' >CMakeLists.txt
Expect "a change log without this version" CheckVersions "no chapter for 1.0.1"

# The binaries: small ones, built here by the compilers that build the module.
mkdir -p "$work/native" "$work/windows"
cd "$work" || exit 2
Expect "no module" CheckLinuxExports "is not there"
Expect "no Windows module" CheckWindowsExports "is not there"
printf 'extern "C" __attribute__((visibility("default"))) void ENTRYPOINT() {}\n' >one.cpp
printf 'extern "C" __attribute__((visibility("default"))) void Another() {}\n' >two.cpp
g++ -shared -fPIC -fvisibility=hidden one.cpp -o native/radial_blur.so
Expect "a module with one export" CheckLinuxExports ""
Expect "a module without foreign libraries" CheckLinuxLibraries ""
g++ -shared -fPIC -fvisibility=hidden one.cpp two.cpp -Wl,--no-as-needed -lpng \
    -o native/radial_blur.so
Expect "a module with two exports" CheckLinuxExports "Another"
Expect "a module with all protections" CheckLinuxHardening ""
g++ -shared -fPIC one.cpp -z execstack -o native/radial_blur.so
Expect "a module with code on its stack" CheckLinuxHardening "its stack would hold code"
g++ -shared -fPIC one.cpp -z norelro -o native/radial_blur.so
Expect "a module whose tables stay open" CheckLinuxHardening "leaves the loader's tables open"
g++ -shared -fPIC -fvisibility=hidden one.cpp two.cpp -Wl,--no-as-needed -lpng \
    -o native/radial_blur.so
Expect "a module with a foreign library" CheckLinuxLibraries "needs libpng"

windowsCompiler=x86_64-w64-mingw32-g++-posix
printf 'int main() {}\n' >main.cpp
"$windowsCompiler" main.cpp -o windows/radial-blur.exe -static -Wl,--no-insert-timestamp
sed 's/visibility("default")/dllexport/' one.cpp >oneWindows.cpp
sed 's/visibility("default")/dllexport/' two.cpp >twoWindows.cpp
"$windowsCompiler" -shared -static oneWindows.cpp -o windows/radial_blur.8bf
Expect "a Windows module with one export" CheckWindowsExports ""
Expect "Windows files with Windows' libraries only" CheckWindowsImports ""
Expect "Windows files with all protections" CheckWindowsHardening ""
Expect "modules of a usual size" CheckModuleSizes ""
truncate -s 9000000 windows/radial_blur.8bf
Expect "a module that has grown" CheckModuleSizes "more than 8 MiB"
"$windowsCompiler" -shared -static oneWindows.cpp twoWindows.cpp -lws2_32 \
    -Wl,--disable-nxcompat -o windows/radial_blur.8bf
Expect "a Windows module with two exports" CheckWindowsExports "Another"
Expect "a Windows module without protection of data" CheckWindowsHardening "lacks NX_COMPAT"
printf 'extern "C" int __stdcall timeGetTime();\nint main() { return timeGetTime(); }\n' >main.cpp
"$windowsCompiler" main.cpp -o windows/radial-blur.exe -lwinmm
Expect "a Windows program with a foreign library" CheckWindowsImports \
    "radial-blur.exe imports winmm.dll"

"$windowsCompiler" main.cpp -o windows/radial-blur.exe -lwinmm -Wl,--disable-reloc-section \
    -Wl,--disable-dynamicbase
Expect "a Windows program that is not relocatable" CheckWindowsHardening \
    "has no table of relocations"

# A link that keeps the time of day, beside one that does not.
RelinkWith() {
    cat >windows/build.ninja <<NINJA
rule link
  command = $windowsCompiler -shared -static \$in -o \$out $1
build radial_blur.8bf: link ../oneWindows.cpp
NINJA
    rm -f windows/radial_blur.8bf
    ninja -C windows >ninja.log || cat ninja.log
}
RelinkWith "-Wl,--no-insert-timestamp -Wl,--disable-auto-image-base"
Expect "a module that is linked the same twice" CheckWindowsRelink ""
RelinkWith "-Wl,--insert-timestamp -Wl,--disable-auto-image-base"
sleep 1.1
Expect "a module that keeps the time of its link" CheckWindowsRelink "two links of the module differ"

printf '%d passed, %d failed\n' "$passed" "$failed"
[[ "$failed" -eq 0 ]]
