# shellcheck shell=bash
# The documents for people who have no checkout: pages that any browser shows.

# The documents that go with the programs, without their ending. They link among each other only.
packagedDocuments=(INSTALL CHANGELOG docs/manual docs/presets docs/batch)

# Body <Markdown file>: as HTML. Headings get the names that links on code hosts have, and links to
# documents lead to their pages.
Body() {
    cmark-gfm --extension table "$1" |
        sed -E 's/href="([^":]*)[.]md(["#])/href="\1.html\2/g' |
        awk 'match($0, /^<h[1-6]>/) {
                name = tolower($0)
                gsub(/<[^>]*>|&[a-z]+;|[^a-z0-9 _<>\/-]/, "", name)
                gsub(/<[^>]*>|[<>\/]/, "", name)
                gsub(/ /, "-", name)
                sub(/^<h[1-6]/, "& id=\"" name "\"")
            }
            { print }'
}

# Targets <page>: what a page links to and shows, one to a line.
Targets() {
    grep -oE '(href|src)="[^"]+' "$1" | sed 's/^[a-z]*="//'
}

# Pages <folder>: all packaged documents with the pictures that they show.
Pages() {
    local folder="$1" document target
    mkdir -p "$folder/docs"
    for document in "${packagedDocuments[@]}"; do
        {
            sed -n '1,/^@BODY@$/p' tools/package/page.html | sed '$d' |
                sed "s|@TITLE@|$(sed -n 's/^# //p' "$document.md" | head -n 1)|"
            Body "$document.md"
            sed '1,/^@BODY@$/d' tools/package/page.html
        } >"$folder/$document.html"
        while IFS= read -r target; do
            [[ "$target" == images/* ]] || continue
            mkdir -p "$folder/docs/$(dirname "$target")"
            cp "docs/$target" "$folder/docs/$target"
        done < <(Targets "$folder/$document.html")
    done
    CheckPages "$folder"
}

# Every link and picture of the pages leads to something that is packed too.
CheckPages() {
    local folder="$1" document target
    for document in "${packagedDocuments[@]}"; do
        while IFS= read -r target; do
            [[ "$target" != *://* && "$target" != '#'* ]] || continue
            target="${target%%#*}"
            [[ -e "$folder/$(dirname "$document")/$target" ]] ||
                Die "$document.md leads to $target, which is not packed"
        done < <(Targets "$folder/$document.html")
    done
}
