# shellcheck shell=bash
# Running the tests. Each runner adds what passed and failed to the two totals.

totalPassed=0
totalFailed=0
lastCount=$SECONDS
testLogs=build/test-logs

# Count <passed> <failed> <name>, with the time that it took since the count before.
Count() {
    totalPassed=$((totalPassed + $1))
    totalFailed=$((totalFailed + $2))
    Say "$3: $1 passed, $2 failed ($((SECONDS - lastCount)) s)"
    lastCount=$SECONDS
}

# Step <name> <command...>: a check that passes or fails as a whole, such as a build.
Step() {
    local name="$1"
    shift
    # A subshell, so that a command which ends with Die ends this step only.
    if ("$@"); then
        Count 1 0 "$name"
    else
        Count 0 1 "$name"
    fi
}

# RunCtest <build folder> <name> [ctest arguments...]
RunCtest() {
    local folder="$1" name="$2" junit log="$testLogs/$2.log" limit=300
    shift 2
    [[ -z "${RADIAL_BLUR_LONG:-}" ]] || limit=7200
    mkdir -p "$testLogs"
    junit="$PWD/$testLogs/$name.xml"
    rm -f "$junit"
    Say "Running the tests in $folder ($name)"
    # Thousands of lines "Passed" say little; every hundredth is kept as a sign of life.
    ctest --test-dir "$folder" --parallel "$(Jobs)" --timeout "$limit" --output-on-failure \
        --no-tests=error --output-junit "$junit" "$@" 2>&1 | tee "$log" |
        awk '!/ Passed / && !/^ *Start +[0-9]+:/ || / Passed / && ++passed % 100 == 0 {
                 print; fflush() }' || true
    CountJunit "$junit" "$name"
}

# Adds up ctest's own report; a report that is missing is a failure.
CountJunit() {
    local head tests failures skipped disabled
    head="$(grep -m 1 -A 8 '<testsuite ' "$1" 2>/dev/null | tr '\n' ' ')" || true
    tests="$(Attribute tests "$head")"
    failures="$(Attribute failures "$head")"
    skipped="$(Attribute skipped "$head")"
    disabled="$(Attribute disabled "$head")"
    if [[ -z "$tests" || "$tests" -eq 0 ]]; then
        Say "ctest left no report in $1"
        Count 0 1 "$2"
        return
    fi
    skipped=$((${skipped:-0} + ${disabled:-0}))
    [[ "$skipped" -eq 0 ]] || Say "$2: $skipped skipped, counted neither way; see $testLogs/$2.log"
    Count $((tests - failures - skipped)) "$failures" "$2"
}

# The value of a whole-number attribute of an XML tag, or nothing.
Attribute() {
    sed -n "s/.*[[:space:]]$1=\"\([0-9]*\)\".*/\1/p" <<<"$2"
}

# Every test program that was built for Windows, under Wine: as many at a time as there are
# processors. The tests of the dialog mostly wait for windows, so they run in two parts.
RunWindowsTests() {
    local programs program part parts names=() name
    mapfile -t programs < <(find build/windows -type f \( -name '*_tests.exe' -o -name '*_test.exe' \) |
        sort -r)
    [[ ${#programs[@]} -gt 0 ]] || Count 0 1 "Windows tests, of which there are none,"
    mkdir -p "$testLogs"
    # What runs in the background does not hear Ctrl-C.
    # shellcheck disable=SC2046 # One number for each word.
    trap 'kill $(jobs -p) 2>/dev/null; exit 130' INT TERM
    for program in "${programs[@]}"; do
        name="$(basename "$program")"
        parts=1
        [[ "$name" != windows_tests.exe ]] || parts=2
        for ((part = 1; part <= parts; ++part)); do
            [[ "$parts" -eq 1 ]] || name="$(basename "$program")-$part"
            names+=("$name")
            while [[ "$(jobs -pr | wc -l)" -ge "$(Jobs)" ]]; do
                wait -n || true
            done
            Say "Running $name under Wine"
            GTEST_TOTAL_SHARDS="$parts" GTEST_SHARD_INDEX="$((part - 1))" \
                RunUnderWine "$program" "$name" &
        done
    done
    wait
    trap - INT TERM
    for name in "${names[@]}"; do
        CountGoogleTest "$testLogs/$name.log" "$(cat "$testLogs/$name.status")" "$name"
        rm -f "$testLogs/$name.status"
    done
}

# RunUnderWine <program> <name>: leaves what it said and its status in the logs.
RunUnderWine() {
    local program="$1" name="$2" status=0 limit=900 arguments=(--gtest_color=no)
    # The end-to-end tests take the module as their argument.
    [[ "$name" != host_endtoend_test.exe ]] || arguments+=(build/windows/radial_blur.8bf)
    [[ -z "${RADIAL_BLUR_LONG:-}" ]] || limit=7200
    timeout --kill-after=30 "$limit" tests/windows/run_under_wine.sh "$program" "${arguments[@]}" \
        </dev/null >"$testLogs/$name.log" 2>&1 || status=$?
    echo "$status" >"$testLogs/$name.status"
}

# Reads the closing lines of a GoogleTest program; an unclean end without a failed test counts as
# one failure, and so does a program that ran no test.
CountGoogleTest() {
    local log="$1" status="$2" name="$3" passed failed skipped
    passed="$(GoogleTestFigure PASSED "$log")"
    failed="$(GoogleTestFigure FAILED "$log")"
    if [[ "$failed" -eq 0 && ("$status" -ne 0 || "$passed" -eq 0) ]]; then
        failed=1
        Say "$name ended with status $status; the end of $log:"
        tail -n 30 "$log"
    elif [[ "$failed" -gt 0 ]]; then
        # What each failed test said, 40 lines at most.
        tr -d '\r' <"$log" | awk '
            /^\[ RUN / { text = ""; lines = 0 }
            ++lines <= 40 { text = text $0 "\n" }
            /^\[  FAILED  \].*ms\)$/ { printf "%s", text; if (lines > 40) print $0 }'
    fi
    skipped="$(GoogleTestFigure SKIPPED "$log")"
    [[ "$skipped" -eq 0 ]] || Say "$name: $skipped skipped, counted neither way; see $log"
    # What a test has to say about the two systems' results is worth a line here.
    tr -d '\r' <"$log" | grep -E '^[0-9]+ of [0-9]+ .* samples differ' | sed 's/^/    /' || true
    Count "$passed" "$failed" "$name"
}

GoogleTestFigure() {
    local figure
    figure="$(tr -d '\r' <"$2" | sed -n "s/^\[  $1 *\] \([0-9]*\) tests\{0,1\}[.,].*/\1/p" | tail -n 1)"
    echo "${figure:-0}"
}

# The checks of the repository itself, the test of these checks, and the documents' commands.
RunRepositoryChecks() {
    local script log counts
    mkdir -p "$testLogs"
    for script in check_repository check_repository_test run_documents; do
        script=tests/repository/$script.sh
        log="$testLogs/$(basename "$script" .sh).log"
        Say "Running $script"
        "$script" >"$log" 2>&1 || grep -A 20 '^FAILED' "$log" || true
        counts="$(tail -n 1 "$log")"
        if [[ "$counts" =~ ^([0-9]+)\ passed,\ ([0-9]+)\ failed$ ]]; then
            Count "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}" "$(basename "$script")"
        else
            tail -n 30 "$log"
            Count 0 1 "$(basename "$script")"
        fi
    done
}

CheckFormat() {
    CppFiles | xargs -0 -r clang-format --dry-run -Werror ||
        Die "some files are not in the project's format; './dev format' rewrites them"
}

RunTest() {
    case "${1:-}" in
        "") ;;
        --long) export RADIAL_BLUR_LONG=1 ;;
        *) Die "'test' knows the option --long only, but got '$1'" ;;
    esac
    [[ $# -le 1 ]] || Die "'test' takes one option at most"
    NeedPackages native windows wine format
    [[ -z "${RADIAL_BLUR_LONG:-}" ]] || NeedPackages package
    Step "format" CheckFormat
    Step "Linux build" Build native-release
    Step "Windows build" Build windows
    Say "$(stat -c '%n: %s bytes' build/native/radial_blur.so build/windows/radial_blur.8bf |
        paste -sd ',' | sed 's/,/, /g')"
    # The Linux run writes the bytes of its renders, and the Windows run compares its own with them.
    mkdir -p "$testLogs"
    RADIAL_BLUR_WRITE_RESULTS="$PWD/$testLogs/renders.bin" RunCtest build/native native
    RADIAL_BLUR_READ_RESULTS="$testLogs/renders.bin" RunWindowsTests
    rm -f "$testLogs/renders.bin"
    RunRepositoryChecks
    [[ -z "${RADIAL_BLUR_LONG:-}" ]] || Step "packages" CheckPackages
    Say "Logs are in $PWD/$testLogs"
    printf '%d passed, %d failed\n' "$totalPassed" "$totalFailed"
    [[ "$totalFailed" -eq 0 ]]
}

# RunSanitizer <preset> [pattern]: the native tests in an instrumented build.
RunSanitizer() {
    local preset="$1" pattern="${2:-}" folder
    [[ $# -le 2 ]] || Die "one pattern at most, but got '$3' as well"
    folder="$(BuildFolder "$preset")"
    NeedPackages native clang
    export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1:check_initialization_order=1:strict_init_order=1:allocator_may_return_null=1
    export UBSAN_OPTIONS=print_stacktrace=1
    export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
    Build "$preset"
    RunCtest "$folder" "$(basename "$folder")" ${pattern:+-R "$pattern"}
    printf '%d passed, %d failed\n' "$totalPassed" "$totalFailed"
    [[ "$totalFailed" -eq 0 ]]
}
