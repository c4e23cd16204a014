# The runs of scripts/stress. Each run is a file of tests/scripts/stress. It is called as
# "NAME quick|full FOLDER" in the checkout's root. FOLDER belongs to the run; QV_HOST_ROOT lies in it. The output
# is the report of the run, the exit status its result. A line "# build: PRESET TARGET..." at the top of the file
# names the targets that it runs. With the preset "windows", the command for Windows programs follows FOLDER. A
# file with the line "# not in scripts/test" is left out there.

stress_names() {
    (cd tests/scripts/stress && echo *)
}

stress_quick_names() {
    (cd tests/scripts/stress && grep -L '^# not in scripts/test' *)
}

stress_build() {
    local preset purpose targets log
    mkdir -p build/logs
    while read -r preset targets; do
        log=build/logs/stress.$preset.build
        purpose=native
        [ "$preset" != windows ] || purpose=windows
        require_packages $purpose || { echo "packages are missing"; return 1; }
        # shellcheck disable=SC2086
        if ! cmake --preset "$preset" >"$log" 2>&1 ||
            ! cmake --build --preset "$preset" --target $targets >>"$log" 2>&1; then
            grep -m1 -A8 -E 'error:|^FAILED:' "$log" || tail -n 20 "$log"
            return 1
        fi
    done < <(sed -n 's/^# build: //p' "tests/scripts/stress/$1")
}

# Builds and runs one run; false when it fails.
stress_run() {
    local name=$1 size=$2 folder status=0 began=$SECONDS command=()
    stress_build "$name" || { echo "$name: does not build"; return 1; }
    if grep -q '^# build: windows' "tests/scripts/stress/$name"; then
        [ -n "${wine_folder:-}" ] || wine_start || { echo "$name: Wine does not start"; return 1; }
        command=("${wine[@]}")
    fi
    folder=$(mktemp -d "${TMPDIR:-/tmp}/qv-stress.XXXXXX") || return
    mkdir "$folder/root"
    QV_HOST_ROOT=$folder/root "tests/scripts/stress/$name" "$size" "$folder" "${command[@]}" \
        </dev/null || status=1
    if [ $status = 0 ]; then
        rm -rf "$folder"
        echo "$name: passed ($size, $((SECONDS - began)) s)"
    else
        echo "$name: FAILED ($size); its files are in $folder"
    fi
    return $status
}
