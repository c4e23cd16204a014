# The runs of scripts/stress. Each is a file of tests/scripts/stress. It is called as
# "NAME quick|full FOLDER" in the checkout's root: FOLDER is its own, QV_HOST_ROOT lies in it. Its
# output is the run's report, its exit status the outcome. A line "# build: PRESET TARGET..." in its
# head names what it runs; with the preset "windows" the command for Windows programs stands behind
# FOLDER. A line "# not in scripts/test" keeps it out of there.

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

# Builds and runs one; false when it fails.
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
