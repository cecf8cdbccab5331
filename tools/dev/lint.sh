# shellcheck shell=bash
# The project's format, and the analysers.

RunFormat() {
    NeedPackages format
    CppFiles | xargs -0 -r clang-format -i
    Say "All C++ files are in the project's format"
}

# All sources of the Linux build, or only those that are named.
RunLint() {
    local files=() file failed=0
    NeedPackages native clang lint
    for file in "$@"; do
        [[ -f "$file" ]] || Die "'lint' takes files of this checkout, and there is no '$file'"
    done
    Configure native-clang
    if [[ $# -gt 0 ]]; then
        files=("$@")
    else
        mapfile -t files < <(sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' \
            build/native-clang/compile_commands.json | grep "^$PWD/\(src\|host\|tests\|benchmarks\)/")
        Say "Checking the shell scripts"
        ShellFiles | xargs -0 shellcheck || failed=1
    fi
    Say "Running clang-tidy over ${#files[@]} files"
    printf '%s\0' "${files[@]}" |
        xargs -0 -n 1 -P "$(Jobs)" clang-tidy -p build/native-clang --quiet || failed=1
    [[ "$failed" -eq 0 ]] || Die "the analysers have remarks; they stand above"
    Say "No remarks"
}
