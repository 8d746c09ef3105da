#!/usr/bin/env bash
# Prints how many tests of each kind that is built for every system two builds have and pass:
# tools/count_tests.sh BUILD BUILD. A build of .exe files runs through Wine.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)

passed() { # build, program: "passed of run"
    local program=$1/bin/$2 run=()
    [ ! -f "$program.exe" ] || { program=$program.exe; run=("$here/with_wine.sh"); }
    "${run[@]}" "$program" 2>/dev/null | tr -d '\r' |
        awk '/^\[==========\] .* ran\./ {n = $2} /^\[  PASSED  \]/ {p = $4} END {print p " of " n}'
}

scripts() { # build, suite
    local console=$1/bin/script_console
    [ ! -f "$console.exe" ] || console="$here/with_wine.sh $(realpath "$console.exe")"
    TESSORA_PREFERENCES=$(mktemp -u) python3 "$here/run_scripts.py" "$console" "$here/../tests/script/$2" |
        tail -n 1 | awk '{print $1 " of " $3}'
}

echo "| tests | $1 | $2 |"
echo "|---|---|---|"
for program in corelib_test atlas_pack_test atlas_emit_test atlas_create_test atlas_property_test measure_test; do
    echo "| $program | $(passed "$1" "$program") | $(passed "$2" "$program") |"
done
for suite in language scene plugin; do
    echo "| $suite scripts | $(scripts "$1" "$suite") | $(scripts "$2" "$suite") |"
done
