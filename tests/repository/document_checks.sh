# shellcheck shell=bash
# shellcheck disable=SC2016,SC2154 # Backticks are Markdown's; native is set by the reading script.
# shellcheck disable=SC2143 # grep -q would end the pipe early, and pipefail takes that for a failure.
# Checks of the Markdown documents. Each function prints what it finds wrong, and nothing if all
# is well.

Documents() {
    ProjectFiles | grep '[.]md$'
}

# Lines "document TAB word": every word that stands in backticks or in a fenced block.
QuotedWords() {
    local documents
    mapfile -t documents < <(Documents)
    [[ ${#documents[@]} -eq 0 ]] || awk '
        FNR == 1 { fenced = 0 }
        /^[ \t]*```/ { fenced = !fenced; next }
        {
            text = $0
            if (!fenced) {
                count = split($0, pieces, "`")
                text = ""
                for (i = 2; i <= count; i += 2) text = text " " pieces[i]
            }
            count = split(text, words, /[ \t]+/)
            for (i = 1; i <= count; i++) if (words[i] != "") print FILENAME "\t" words[i]
        }' "${documents[@]}"
}

# A word is a path when it starts in a folder of the tree, starts with "./", or is a file name with
# an ending that only files of the tree have. What a build makes is none.
LooksLikePath() {
    local word="$1"
    [[ "$word" =~ ^[A-Za-z0-9_.*/-]+$ ]] || return 1
    case "$word" in
        build/* | ./build/* | /* | -* | . | .. | ./) return 1 ;;
        *.deb | *.zip | *.tar.gz) return 1 ;; # What packing makes.
        ./*) return 0 ;;
        windows.h) return 1 ;; # The platform's own.
        *.md | *.cmake | *.h | *.cpp | *.sh | *.rc | CMakeLists.txt | CMakePresets.json) return 0 ;;
        src/* | host/* | tests/* | benchmarks/* | docs/* | presets/* | tools/* | cmake/* | .ci/*)
            return 0
            ;;
        */) return 0 ;;
    esac
    return 1
}

# True when a path, or a pattern of paths, leads to something: from the root, from src/, from the
# document's own folder, or, for a bare file name, anywhere in the tree.
LeadsSomewhere() {
    local document="$1" path="${2#./}" base
    for base in . src "$(dirname "$document")"; do
        # shellcheck disable=SC2086 # The pattern is meant to expand.
        compgen -G "$base/${path%/}" >/dev/null && return 0
    done
    [[ "$path" != */* ]] && [[ -n "$(ProjectFiles | grep -E "(^|/)${path//./[.]}$")" ]]
}

CheckPathsInDocuments() {
    local document word
    QuotedWords | sort -u | while IFS=$'\t' read -r document word; do
        word="${word%[,;:]}"
        LooksLikePath "$word" || continue
        LeadsSomewhere "$document" "$word" || echo "$document names $word, which is not there"
    done
}

# Relative links lead to a file, and their fragment to a heading of that file.
CheckLinksInDocuments() {
    local document target file fragment
    Documents | while IFS= read -r document; do
        grep -oE '\]\([^)]+\)' "$document" | sed -e 's/^](//' -e 's/)$//' -e 's/ ".*"$//' |
            while IFS= read -r target; do
                case "$target" in
                    http://* | https://* | mailto:*) continue ;;
                esac
                file="${target%%#*}"
                fragment="${target#"$file"}"
                if [[ -z "$file" ]]; then
                    file="$document"
                else
                    file="$(dirname "$document")/$file"
                fi
                if [[ ! -e "$file" ]]; then
                    echo "$document links to $target, which is not there"
                elif [[ -n "$fragment" && -z "$(Anchors "$file" | grep -xF "$fragment")" ]]; then
                    echo "$document links to $target, which has no such heading"
                fi
            done
    done
}

# The fragments that code hosts make of a document's headings.
Anchors() {
    sed -n 's/^##* *//p' "$1" | tr '[:upper:]' '[:lower:]' |
        sed -e 's/[^a-z0-9 _-]//g' -e 's/ /-/g' -e 's/^/#/'
}

# Every command of the script that a document shows is one that the script knows.
CheckCommandsInDocuments() {
    local documents document command
    mapfile -t documents < <(Documents)
    [[ ${#documents[@]} -eq 0 ]] || grep -oHE '\./dev [a-z]+' -- "${documents[@]}" | sort -u |
        while IFS=: read -r document command; do
            grep -qE "^ *${command#./dev }( \||\))" dev ||
                echo "$document shows '$command', which the script does not know"
        done
}

CheckReadmeLength() {
    local lines
    lines="$(wc -l <README.md)"
    [[ "$lines" -lt 150 ]] || echo "README.md has $lines lines; a front door has fewer than 150"
}

# The version stands in the build, in the change log, and in the Windows resources.
CheckVersions() {
    local version
    version="$(sed -n 's/^project(radial_blur VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)"
    [[ -n "$version" ]] || echo "CMakeLists.txt states no version"
    grep -qF "## [$version]" CHANGELOG.md || echo "CHANGELOG.md has no chapter for $version"
}

# The page of the presets and the shipped file name the same looks in the same order, and there is a
# picture of each and none besides.
CheckPresetGallery() {
    local file=presets/radial_blur.cfg page=docs/presets.md pictures=docs/images/presets
    diff <(sed -n 's/^name //p' "$file") <(sed -n 's/^### `\(.*\)`$/\1/p' "$page") |
        sed -n "s|^< |$page lacks the preset |p; s|^> |$file lacks the preset |p"
    diff <(sed -n 's/^name //p' "$file" | sort) \
        <(find "$pictures" -name '*.jpg' ! -name 'scene-*' -printf '%f\n' | sed 's/[.]jpg$//' | sort) |
        sed -n "s|^< |$pictures lacks a picture of |p; s|^> |$pictures has a picture too much: |p"
    [[ -s "$file" && -s "$page" ]] || echo "there is no $file or no $page"
}

# Lines "parameter TAB option TAB range TAB default", from the program's own table.
ParameterLines() {
    "$native/radial-blur" --list-parameters | tr -d '\r' | awk '
        /^[^ ]/ { name = $1 }
        $1 == "option" { option = $2; sub(/,$/, "", option) }
        $1 == "range" { range = $0; sub(/^ *range +/, "", range) }
        $1 == "default" {
            value = $0
            sub(/^ *default +/, "", value)
            print name "\t" option "\t" range "\t" value
        }'
}

# The manual's chapter of that name as one line, without its backticks.
ManualChapter() {
    awk -v name="$1" '/^#/ { inside = ($0 == "### " name); next } inside' docs/manual.md |
        tr -d '`' | tr '\n' ' '
}

# Each parameter has a chapter with its option, its true range and default, and a picture, and a row
# in the table at the end with the same. The list of blend modes is too long for the table.
CheckManualParameters() {
    local name option range value chapter row count=0
    Present "$native/radial-blur" || return 0
    while IFS=$'\t' read -r name option range value; do
        count=$((count + 1))
        chapter="$(ManualChapter "$name")"
        [[ "$chapter" == *"$option"* ]] || echo "docs/manual.md lacks $option in the chapter $name"
        [[ "$chapter" == *"$range; default $value "* ]] ||
            echo "docs/manual.md lacks '$range; default $value' in the chapter $name"
        [[ "$chapter" == *"](images/"* ]] || echo "docs/manual.md shows no picture of $name"
        [[ "$name" != BlendMode ]] || range="[the 23 modes](#blendmode)"
        row="$(grep -F "| $name | " docs/manual.md)"
        [[ "$row" == *"| \`$option\` | $range | $value |" ]] ||
            echo "docs/manual.md has no row of $name with $option, $range, $value"
    done < <(ParameterLines)
    [[ "$count" -gt 0 ]] || echo "the program lists no parameters"
}

# Each text of the dialog stands in the manual.
CheckManualControls() {
    local text
    awk '/^IDD_INTERFACE /, /^END/' src/resources/Dialogs.rc |
        sed -nE 's/^ *(LTEXT|GROUPBOX|PUSHBUTTON|DEFPUSHBUTTON|AUTOCHECKBOX) "([^"]+)".*/\2/p' |
        sort -u | while IFS= read -r text; do
        grep -qF -- "$text" docs/manual.md || echo "docs/manual.md does not name the control '$text'"
    done
}

# The documents' pictures stay small enough for a clone and an archive.
CheckPictureSizes() {
    local bytes
    bytes="$(find docs/images -type f -printf '%s\n' | awk '{ sum += $1 } END { print sum + 0 }')"
    [[ "$bytes" -lt 6000000 ]] || echo "docs/images holds $bytes bytes; 6000000 is the limit"
}
