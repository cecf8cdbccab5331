# shellcheck shell=bash
# Benchmarks and fuzz targets: what runs as long as somebody wants it to.

RunBench() {
    [[ -f benchmarks/CMakeLists.txt ]] || Die "there are no benchmarks in this checkout"
    if [[ "${1:-}" == dialog ]]; then
        shift
        BenchDialog "$@"
        return
    fi
    NeedPackages native
    if [[ "${1:-}" == --peers ]]; then
        shift
        BenchPeers "$@"
        return
    fi
    if [[ "${1:-}" == --sets ]]; then
        shift
        Build native-release instruction_set_benchmarks
        build/native/instruction_set_benchmarks "$@"
        return
    fi
    Build native-release radial_blur benchmarks
    Say "Running the benchmarks"
    build/native/radial_blur_benchmarks "$@"
}

# The module beside what a user could pick instead, on the same pictures.
BenchPeers() {
    NeedPackages peers
    # The target exists where OpenCV was there when the build was configured.
    Build native-release radial_blur
    Build native-release peer_benchmarks
    Say "Running the module and its peers in turn"
    build/native/peer_benchmarks --folder build/peers "$@"
}

# How fast the dialog of the Windows module answers while it renders a large preview.
BenchDialog() {
    NeedPackages windows wine
    Build windows radial_blur dialog_latency
    Say "Opening the dialog on a large picture under Wine"
    tests/windows/run_under_wine.sh build/windows/dialog_latency.exe "$@"
}

# What makes a target quick: inputs of a length at which they still say something, few freed blocks
# kept, and for whole records, of which there are many kinds, no difference in how often a line ran.
FuzzOptions() {
    case "$1" in
        records_fuzzer) echo -max_len=160 -use_counters=0 ;;
        modules_fuzzer) echo -max_len=300 ;;
        presets_fuzzer | pictures_fuzzer) echo -max_len=500 ;;
        *) echo -max_len=400 ;;
    esac
}

# Each fuzz target runs for so many seconds on a corpus that stays in the build folder, as does the
# count of all its executions.
RunFuzz() {
    local seconds="${1:-60}" target name log count total failed=0
    [[ $# -le 1 ]] || Die "'fuzz' takes a number of seconds only, but got '$2' as well"
    [[ "$seconds" =~ ^[1-9][0-9]*$ ]] || Die "'fuzz' takes a number of seconds, but got '$seconds'"
    [[ -f tests/fuzz/CMakeLists.txt ]] || Die "there are no fuzz targets in this checkout"
    NeedPackages native clang
    Build fuzz
    export ASAN_OPTIONS="${ASAN_OPTIONS:-quarantine_size_mb=8:malloc_context_size=8:max_malloc_fill_size=16}"
    export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1}"
    while IFS= read -r target; do
        name="$(basename "$target")"
        log="build/fuzz/$name.log"
        mkdir -p "build/fuzz/corpus/$name" "build/fuzz/findings"
        Say "Fuzzing $name for $seconds seconds"
        # shellcheck disable=SC2046 # One option for each word.
        if ! "$target" -max_total_time="$seconds" -print_final_stats=1 -reload=0 -entropic=0 \
            $(FuzzOptions "$name") -artifact_prefix="build/fuzz/findings/$name-" \
            "build/fuzz/corpus/$name" >"$log" 2>&1; then
            failed=1
            tail -n 60 "$log"
        fi
        count="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
        echo "${count:-0}" >>"build/fuzz/$name.executions"
        total="$(awk '{ sum += $1 } END { printf "%d", sum }' "build/fuzz/$name.executions")"
        Say "$name: ${count:-0} executions, $total in all"
    done < <(find build/fuzz -name '*_fuzzer' -type f -perm -u+x | sort)
    [[ "$failed" -eq 0 ]] || Die "a fuzz target found something; it is kept in build/fuzz/findings"
    Say "No finding"
}
