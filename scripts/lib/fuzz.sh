# Building, running and replaying the fuzz targets.

fuzz_binaries=${QV_FUZZ_BINARIES:-build/fuzz/fuzz}

fuzz_targets() {
    local source
    for source in fuzz/*.cpp; do basename "$source" .cpp; done
}

fuzz_build() {
    local log=build/logs/fuzz.build
    mkdir -p build/logs
    [ -n "${QV_FUZZ_BINARIES:-}" ] && return 0
    cmake --preset fuzz >"$log" 2>&1 && cmake --build --preset fuzz >>"$log" 2>&1 && return 0
    grep -m1 -A8 -E 'error|FAILED' "$log" || tail -n 20 "$log"
    return 1
}

# Makes a folder for the host roots of the targets, in memory (/dev/shm) where that exists.
fuzz_begin() {
    local parent=/dev/shm
    [ -w "$parent" ] || parent=${TMPDIR:-/tmp}
    fuzz_roots=$(mktemp -d "$parent/qv_fuzz.XXXXXX")
}

fuzz_end() {
    rm -rf "$fuzz_roots"
}

# Runs a target with arguments of libFuzzer: fuzz_program TARGET ARGUMENT... The time-out is long, because it is
# wall time: on a busy machine a short one would stop a target that only waits.
fuzz_program() {
    local target=$1
    shift
    env -u ASAN_OPTIONS -u UBSAN_OPTIONS "TMPDIR=$fuzz_roots" \
        "$fuzz_binaries/$target" -timeout=60 -rss_limit_mb=2048 "$@"
}

# Runs a target for a while and prints its line; false when it found something.
fuzz_run() {
    local target=$1 seconds=$2 status=0
    local corpus=build/fuzz/corpus/$target findings=build/fuzz/findings log=build/logs/fuzz.$1
    local options=(-max_len=16384)
    mkdir -p "$corpus" "$findings" build/logs
    [ -f "fuzz/$target.dict" ] && options+=("-dict=fuzz/$target.dict")
    fuzz_program "$target" "${options[@]}" -max_total_time="$seconds" -print_final_stats=1 \
        -artifact_prefix="$findings/$target-" "$corpus" "fuzz/seeds/$target" >"$log" 2>&1 || status=$?
    printf '%-17s %10s executions in %4s s, %5s edges, corpus of %5s, %s\n' "$target" \
        "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")" "$seconds" \
        "$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 | cut -c 6-)" \
        "$(grep -o 'corp: [0-9]*' "$log" | tail -n 1 | cut -c 7-)" \
        "$(if [ $status -eq 0 ]; then echo 'no finding'; else echo "FINDING (log: $log)"; fi)"
    [ $status -eq 0 ] && return 0
    sed -n "s#.*Test unit written to \(.*\)#  $fuzz_binaries/$target \1#p" "$log"
    return 1
}

# Runs a target once on each of its seeds; the inputs of earlier findings are seeds too:
# fuzz_replay FOLDER-OF-THE-PROGRAMS TARGET
fuzz_replay() {
    local options=()
    [ "$1" != "$fuzz_binaries" ] || options=(-timeout=60 -rss_limit_mb=2048)
    env -u ASAN_OPTIONS -u UBSAN_OPTIONS "TMPDIR=$fuzz_roots" \
        timeout 300 "$1/$2" "${options[@]}" fuzz/seeds/"$2"/*
}
