# shellcheck shell=bash
# What every command uses: messages, and the lists of files the checks look at.

Say() {
    printf '==> %s\n' "$*"
}

Die() {
    printf 'dev: %s\n' "$*" >&2
    exit 1
}

# The number of build and test jobs: one for each processor this process may use.
Jobs() {
    nproc
}

# The C++ files of the project, NUL between names; folders that are not there yet are skipped.
CppFiles() {
    local folder
    for folder in src host tests benchmarks tools; do
        [[ ! -d "$folder" ]] ||
            find "$folder" -type f \( -name '*.cpp' -o -name '*.h' \) -print0
    done | sort -z
}

# The shell scripts of the project, NUL between names.
ShellFiles() {
    {
        printf '%s\0' dev .ci/run
        find . \( -path ./build -o -path ./.git \) -prune -o -type f -name '*.sh' -print0
    } | sort -z
}
