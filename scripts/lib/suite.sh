# Counting and reporting of one suite: its steps add to the counts, suite_end prints the line. The folder $logs
# exists.

declare -A built=() # presets whose build has ended, with the status
builds_until=0      # seconds of the processor that they took

suite_begin() {
    suite=$1 passed=0 failed=0 skipped=0 first_failure= began=$SECONDS build_seconds=0
    take_cpu_seconds "$logs/times"
    cpu_began=$cpu_seconds
}

# take_cpu_seconds FILE: sets cpu_seconds to the processor time, user and system, of all ended processes of this
# shell. The figures go through the file, because a subshell would count only its own processes.
take_cpu_seconds() {
    times >"$1"
    cpu_seconds=$(tr ms '  ' <"$1" | awk 'NR == 2 { printf "%d", $1 * 60 + $2 + $3 * 60 + $4 }')
}

# Keeps the text of the suite's first failure for suite_end.
note_failure() {
    failed=$((failed + $1))
    [ -n "$first_failure" ] || first_failure=$2
}

# Begins the builds of the presets, one after the other, beside all that follows. They get the processor when
# nothing else wants it: a test does not wait for a compiler. The orphaned process counts its time itself.
builds_begin() {
    [ $# -eq 0 ] || exec {builds}< <(build_in_order "$@" &)
}

# Prints "PRESET STATUS SECONDS-OF-THE-PROCESSOR" for each preset.
build_in_order() {
    local preset status
    for preset in "$@"; do nice cmake --preset "$preset" >"$logs/$preset.build" 2>&1 & done
    wait
    for preset in "$@"; do
        status=0
        nice cmake --build --preset "$preset" >>"$logs/$preset.build" 2>&1 || status=1
        take_cpu_seconds "$logs/$preset.times"
        echo "$preset $status $cpu_seconds"
    done
}

# Waits for the build of a preset that builds_begin was given; a failure is the suite's only result.
build_preset() {
    local preset=$1 log=$logs/$1.build name status seconds
    echo "$suite: building (log: ${log#"$root"/})"
    while [ -z "${built[$preset]:-}" ]; do
        read -r -u "$builds" name status seconds || { note_failure 1 "nobody builds $preset"; return 1; }
        built[$name]=$status
        build_seconds=$((build_seconds + seconds - builds_until))
        builds_until=$seconds
    done
    [ "${built[$preset]}" != 0 ] || return 0
    note_failure 1 "$(grep -m1 -A8 -E 'error:|^FAILED:' "$log" || tail -n 20 "$log")"
    return 1
}

# Runs the functions beside each other, each in a process of its own. Their results count in the given order,
# and what they print stands in it.
side_by_side() {
    local function part results
    for function in "$@"; do
        part=$logs/$suite.part.$function
        rm -f "$part"
        (
            passed=0 failed=0 skipped=0 first_failure=
            "$function"
            printf '%s\n' "$passed" "$failed" "$skipped" "$first_failure" >"$part"
        ) >"$part.said" &
    done
    wait
    for function in "$@"; do
        part=$logs/$suite.part.$function
        cat "$part.said"
        [ -e "$part" ] || { note_failure 1 "'$function' ended early"; continue; }
        mapfile -t results <"$part"
        passed=$((passed + results[0])) skipped=$((skipped + results[2]))
        [ "${results[1]}" = 0 ] || note_failure "${results[1]}" "$(printf '%s\n' "${results[@]:3}")"
    done
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
    take_cpu_seconds "$logs/times"
    echo "$suite: took $((SECONDS - began)) s, $((build_seconds + cpu_seconds - cpu_began)) s of the processor"
    local more=
    [ $skipped -eq 0 ] || more=", $skipped skipped"
    echo "$suite: $passed passed, $failed failed$more"
    [ $failed -eq 0 ] && [ $passed -gt 0 ]
}
