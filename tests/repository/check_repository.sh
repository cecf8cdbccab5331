#!/usr/bin/env bash
# Checks of the repository itself: the doors between the rooms, the paths and links in the
# documents, file lengths, words that do not belong in the tree, and what the built modules export
# and import. Prints a line for each check, the findings of those that fail, and a sum.
#
# Usage: check_repository.sh [--root FOLDER] [--native FOLDER] [--windows FOLDER] [CHECK...]
# The folders of builds that are not there make the checks of the binaries fail, so name the checks
# that are wanted where nothing was built.
set -uo pipefail
export LC_ALL=C.UTF-8

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd -P)"
root="$here/../.."
native=build/native
windows=build/windows
checks=()
while [[ $# -gt 0 ]]; do
    case "$1" in
        --root) root="$2" && shift 2 ;;
        --native) native="$2" && shift 2 ;;
        --windows) windows="$2" && shift 2 ;;
        *) checks+=("$1") && shift ;;
    esac
done
cd "$root" || exit 2

# shellcheck source=tests/repository/source_checks.sh
source "$here/source_checks.sh"
# shellcheck source=tests/repository/document_checks.sh
source "$here/document_checks.sh"
# shellcheck source=tests/repository/binary_checks.sh
source "$here/binary_checks.sh"

if [[ ${#checks[@]} -eq 0 ]]; then
    mapfile -t checks < <(compgen -A function Check | sort)
fi

passed=0
failed=0
for check in "${checks[@]}"; do
    # A check prints its findings, and a broken one its errors; to say nothing is to pass.
    findings="$("$check" 2>&1)"
    if [[ -z "$findings" ]]; then
        passed=$((passed + 1))
        printf 'ok      %s\n' "$check"
    else
        failed=$((failed + 1))
        printf 'FAILED  %s\n%s\n' "$check" "$findings"
    fi
done
printf '%d passed, %d failed\n' "$passed" "$failed"
[[ "$failed" -eq 0 ]]
