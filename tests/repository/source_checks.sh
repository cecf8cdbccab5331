# shellcheck shell=bash
# Checks of the sources. Each function prints what it finds wrong, and nothing if all is well.

# All files of the project, without what builds and tools leave.
ProjectFiles() {
    find . \( -path ./build -o -path ./.git -o -path ./.cache \) -prune -o -type f -print |
        sed 's|^\./||' | sort
}

SourceFiles() {
    local folder
    for folder in "$@"; do
        [[ ! -d "$folder" ]] || find "$folder" -type f \( -name '*.h' -o -name '*.cpp' \
            -o -name '*.in' -o -name '*.inc' -o -name '*.rc' \)
    done | sort
}

# Lines "file TAB included name" for the files that are named on the command line.
Includes() {
    [[ $# -eq 0 ]] || awk '
        match($0, /^[ \t]*#[ \t]*include[ \t]*[<"][^>"]+[>"]/) {
            name = substr($0, RSTART, RLENGTH)
            quoted = name ~ /"/
            sub(/^[^<"]*[<"]/, "", name)
            sub(/[>"]$/, "", name)
            print FILENAME "\t" (quoted ? name : "<" name ">")
        }' "$@"
}

# The same for everything that a file reaches through headers of src/: "file TAB reached name".
ReachedIncludes() {
    local files
    mapfile -t files < <(SourceFiles src)
    Includes "${files[@]}" | awk -F '\t' '
        { direct[$1] = direct[$1] "\n" $2; files[$1] = 1 }
        END { for (file in files) { split("", seen); Walk(file, file) } }
        function Walk(from, file,    names, count, i) {
            count = split(substr(direct[file], 2), names, "\n")
            for (i = 1; i <= count; i++) {
                if (names[i] in seen) continue
                seen[names[i]] = 1
                print from "\t" names[i]
                Walk(from, "src/" names[i])
            }
        }' | sort
}

# Shut <pattern of files> <pattern of included names> <what the door is for>
Shut() {
    ReachedIncludes | awk -F '\t' -v from="$1" -v to="$2" -v why="$3" '
        $1 ~ from && tolower($2) ~ to { print $1 " reaches " $2 ": " why }'
}

CheckDoorsOfTheEffect() {
    Shut '^src/effect/' '^parameters/' 'the effect gets plain values'
}

CheckDoorsOfTheCore() {
    Shut '^src/(effect|image|parameters|diagnostics)/|^src/frame/.*[.]h$' '^interface/' \
        'this room knows no dialog'
}

CheckDoorsOfTheInterface() {
    Shut '^src/interface/' '^effect/' 'the dialog renders through the frame only'
}

CheckDoorsOfTheHostApi() {
    Shut '^src/hostapi/' '^[^<]' 'the published interface includes nothing of ours' |
        grep -v ' reaches hostapi/'
}

# The host drives the module and is not linked with it: of src/ it sees the interface alone. Only the
# presets of the command line are read and written by the module's own code.
CheckDoorsOfTheHost() {
    local files
    mapfile -t files < <(SourceFiles host)
    Includes "${files[@]}" | awk -F '\t' '
        $2 ~ /^(platform|diagnostics|image|effect|parameters|frame|interface|resources)\// &&
        !($1 ~ /^host\/program\/presets\// &&
          $2 ~ /^(parameters\/|platform\/FileReplace[.]h$)/) {
            print $1 " includes " $2 ": the host sees hostapi/ alone"
        }'
}

# Windows' own headers are seen by two rooms only.
CheckWindowsHeaders() {
    local files
    mapfile -t files < <(SourceFiles src)
    Includes "${files[@]}" | awk -F '\t' '
        tolower($2) ~ /^<(windows|windowsx|winuser|wingdi|winreg|winbase|winver|commctrl|commdlg|shellapi|shlobj|objbase|process|io|direct)[.]h>$/ &&
        $1 !~ /^src\/platform\/win32\// && $1 !~ /^src\/interface\/[^\/]*Win32/ &&
        $1 !~ /^src\/resources\// {
            print $1 " includes " $2
        }'
}

# The module stands on the standard library and the platform alone.
CheckModuleDependencies() {
    local files
    mapfile -t files < <(SourceFiles src)
    Includes "${files[@]}" | awk -F '\t' '
        $2 ~ /^</ && $2 ~ /[.\/]/ && $2 !~ /^<[a-z]*intrin[.]h>$/ &&
        $1 !~ /^src\/(platform|resources)\// && $1 !~ /^src\/interface\/[^\/]*Win32/ {
            print $1 " includes " $2 ", which is no standard header"
        }'
}

# Files that one sitting is not enough for. Tables are long by nature.
CheckFileLengths() {
    local file lines
    SourceFiles src host | while IFS= read -r file; do
        case "$file" in
            *.rc) continue ;; # Resource tables.
        esac
        lines="$(wc -l <"$file")"
        [[ "$lines" -le 500 ]] || echo "$file has $lines lines; 500 is the limit"
    done
}

# A header that several sources include into namespaces of their own has no guard, and says so in
# its first lines.
CheckHeaderGuards() {
    local file
    SourceFiles src host tests | grep '[.]h$' | while IFS= read -r file; do
        grep -q '^#pragma once$' "$file" ||
            grep -qE '^// .*Included (inside|by|into)( |$)' <(head -n 5 "$file") ||
            echo "$file has neither #pragma once nor a word on how it is included"
    done
}

# Notes to self, chapter numbers of texts that are not in the tree, and places on somebody's
# machine. The brackets keep the patterns from finding themselves.
CheckForbiddenWords() {
    local pattern files
    pattern='[T]ODO|[F]IXME|\b[X]XX\b'
    pattern+='|\b[P]arts? [0-9]+\.[0-9]|\b[s]pec\b|\b[S]pec\b|[s]pecification|[S]pecification'
    pattern+='|\b[s]hared/|/[w]ork/|/[h]ome/[a-z]|\b[d]esign\.md|\b[b]rief\.md|[h]ost-interface\.md'
    pattern+='|\b[i]ssue [#0-9]|\b[s]ession [#0-9]'
    mapfile -t files < <(ProjectFiles)
    [[ ${#files[@]} -eq 0 ]] || grep -nIE "$pattern" -- "${files[@]}"
    printf '%s\n' "${files[@]}" | grep -E "$pattern"
    return 0
}

# Lines end as .gitattributes says and no text file lacks its last line end.
CheckLineEnds() {
    local file
    ProjectFiles | grep -E '[.](h|cpp|in|inc|rc|md|txt|cmake|json|sh)$|^dev$' |
        while IFS= read -r file; do
            ! grep -q $'\r' "$file" || echo "$file holds a carriage return"
            [[ ! -s "$file" || -z "$(tail -c 1 "$file")" ]] || echo "$file lacks its last line end"
        done
}
