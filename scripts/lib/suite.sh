# Counting and reporting of one suite: its steps add to the counts, suite_end prints the line.

suite_begin() {
    suite=$1 passed=0 failed=0 skipped=0 first_failure= began=$SECONDS
    mkdir -p "$logs"
}

# Keeps the text of the suite's first failure for suite_end.
note_failure() {
    failed=$((failed + $1))
    [ -n "$first_failure" ] || first_failure=$2
}

# Configures and builds a preset; a failure is the suite's only result.
build_preset() {
    local preset=$1 log=$logs/$1.build
    echo "$suite: building (log: ${log#"$root"/})"
    if cmake --preset "$preset" >"$log" 2>&1 && cmake --build --preset "$preset" >>"$log" 2>&1; then
        return 0
    fi
    note_failure 1 "$(grep -m1 -A8 -E 'error:|^FAILED:' "$log" || tail -n 20 "$log")"
    return 1
}

# Runs a googletest program and adds its results: run_gtest LOG SECONDS COMMAND...
run_gtest() {
    local log=$1 seconds=$2 status=0 broken
    shift 2
    timeout "$seconds" "$@" </dev/null >"$log" 2>&1 || status=$?
    passed=$((passed + $(grep -c '^\[       OK \]' "$log")))
    skipped=$((skipped + $(grep -c '^\[  SKIPPED \] .*(' "$log")))
    broken=$(grep -c '^\[  FAILED  \] .*(' "$log")
    # A program that ended without its last line broke down inside the test that it started last.
    if ! grep -q '^\[==========\] .* ran\.' "$log" || { [ $status -ne 0 ] && [ "$broken" = 0 ]; }; then
        note_failure 1 "$(ended_early "$log" $status)"
    fi
    [ "$broken" = 0 ] || note_failure "$broken" "$(first_failed_test "$log")"
}

first_failed_test() {
    awk '/^\[ RUN      \]/ { text = "" }
         { text = text $0 "\n" }
         /^\[  FAILED  \].*\(/ { printf "%s", text; exit }' "$1" | head -n 60
}

ended_early() {
    echo "the test program ended with status $2 before its last line"
    awk '/^\[ RUN      \]/ { text = "" } { text = text $0 "\n" } END { printf "%s", text }' "$1" |
        head -n 60
}

# Runs a script-driven test: run_check NAME COMMAND...
run_check() {
    local name=$1 log=$logs/$suite.$1
    shift
    if "$@" </dev/null >"$log" 2>&1; then
        passed=$((passed + 1))
    else
        note_failure 1 "$name: $(tail -n 40 "$log")"
    fi
}

# Prints the suite's line, with its first failure above it; false when anything failed.
suite_end() {
    [ -z "$first_failure" ] ||
        printf -- '---- %s, first failure ----\n%s\n----\n' "$suite" "$first_failure"
    echo "$suite: took $((SECONDS - began)) s"
    local more=
    [ $skipped -eq 0 ] || more=", $skipped skipped"
    echo "$suite: $passed passed, $failed failed$more"
    [ $failed -eq 0 ] && [ $passed -gt 0 ]
}
