# Counting and reporting of one suite: its steps add to the counts, suite_end prints the line.

suite_begin() {
    suite=$1 passed=0 failed=0 skipped=0 first_failure= began=$SECONDS
    mkdir -p "$logs"
    take_cpu_seconds
    cpu_began=$cpu_seconds
}

# Sets cpu_seconds to the processor time, user and system, of all ended processes of this shell. The figures go
# through a file, because a subshell would count only its own processes.
take_cpu_seconds() {
    times >"$logs/times"
    cpu_seconds=$(tr ms '  ' <"$logs/times" |
        awk 'NR == 2 { printf "%d", $1 * 60 + $2 + $3 * 60 + $4 }')
}

# Keeps the text of the suite's first failure for suite_end.
note_failure() {
    failed=$((failed + $1))
    [ -n "$first_failure" ] || first_failure=$2
}

configure_and_build() {
    cmake --preset "$1" >"$logs/$1.build" 2>&1 && cmake --build --preset "$1" >>"$logs/$1.build" 2>&1
}

# Configures and builds a preset. A failure is the suite's only result. Waits for a build that began ahead. At its
# end it begins the build of next_preset, the preset of the next suite.
build_preset() {
    local preset=$1 log=$logs/$1.build status=0
    echo "$suite: building (log: ${log#"$root"/})"
    if [ "${ahead_preset:-}" = "$preset" ]; then
        ahead_preset=
        wait "$ahead_process" || status=1
    else
        configure_and_build "$preset" || status=1
    fi
    if [ $status = 0 ]; then
        build_ahead "$preset"
        return 0
    fi
    note_failure 1 "$(grep -m1 -A8 -E 'error:|^FAILED:' "$log" || tail -n 20 "$log")"
    return 1
}

# Only one build runs ahead: two would take turns on the same cores.
build_ahead() {
    [ -n "${next_preset:-}" ] && [ "$next_preset" != "$1" ] && [ -z "${ahead_preset:-}" ] || return 0
    configure_and_build "$next_preset" &
    ahead_process=$! ahead_preset=$next_preset
}

# Runs a googletest program and adds its results: run_gtest LOG SECONDS COMMAND...
run_gtest() {
    local log=$1 seconds=$2 status=0 broken
    shift 2
    timeout "$seconds" "$@" </dev/null >"$log" 2>&1 || status=$?
    passed=$((passed + $(grep -c '^\[       OK \]' "$log")))
    skipped=$((skipped + $(grep -c '^\[  SKIPPED \] .*(' "$log")))
    broken=$(grep -c '^\[  FAILED  \] .*(' "$log")
    # A program without its last line crashed or was stopped in the test that it began last.
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

# Runs a script-driven test: run_check NAME COMMAND... Exit status 77 means "skipped": a program that the test
# needs is missing, and its last line names it.
run_check() {
    local name=$1 log=$logs/$suite.$1 status=0
    shift
    "$@" </dev/null >"$log" 2>&1 || status=$?
    case $status in
        0) passed=$((passed + 1)) ;;
        77)
            skipped=$((skipped + 1))
            echo "$suite: $name is skipped: $(tail -n 1 "$log")"
            ;;
        *) note_failure 1 "$name: $(tail -n 40 "$log")" ;;
    esac
}

# Prints the suite's line, with its first failure above it; false when anything failed.
suite_end() {
    [ -z "$first_failure" ] ||
        printf -- '---- %s, first failure ----\n%s\n----\n' "$suite" "$first_failure"
    take_cpu_seconds
    echo "$suite: took $((SECONDS - began)) s, $((cpu_seconds - cpu_began)) s of the processor"
    local more=
    [ $skipped -eq 0 ] || more=", $skipped skipped"
    echo "$suite: $passed passed, $failed failed$more"
    [ $failed -eq 0 ] && [ $passed -gt 0 ]
}
