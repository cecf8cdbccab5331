# shellcheck shell=bash
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
