# For the scripts beside this one: a throw-away machine made from the samples. Sets qv, programs,
# drive and QV_HOST_ROOT; the working folder is the checkout.
set -euo pipefail
programs=$(cd "$1" && pwd)
qv=$programs/qv
cd "$(dirname "${BASH_SOURCE[0]}")/../../.."
QV_HOST_ROOT=$(mktemp -d)
export QV_HOST_ROOT
trap 'rm -rf "$QV_HOST_ROOT"' EXIT
out=$QV_HOST_ROOT/out

# expect CODE TEXT COMMAND...: the exit code, and a text that must stand in the output ($out).
expect() {
    local code=$1 text=$2 got=0
    shift 2
    "$@" </dev/null >"$out" 2>&1 || got=$?
    if [ $got != "$code" ] || { [ -n "$text" ] && ! grep -qF -- "$text" "$out"; }; then
        printf 'exit code %s (wanted %s), wanted text: %s\ncommand: %s\n' $got "$code" "$text" "$*"
        tail -n 30 "$out"
        exit 1
    fi
}

# settings_tool COPIES BEFORE COMMAND...: what the example of that name does in every language.
settings_tool() {
    local copies=$1 before=$2
    shift 2
    expect 0 "dmCopies was $before" "$@" "Vantrel Fax" "$copies"
    grep -qx "Office Laser" "$out"
    expect 1 "[1801]" "$@" "No Such Printer" 2
    expect 1 "dmCopies cannot be" "$@" "Vantrel Fax" 99999
    expect 2 "usage" "$@"
}

drive=$QV_HOST_ROOT/drive_c
scripts/machine "$programs"
