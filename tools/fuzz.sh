#!/usr/bin/env bash
# Builds the fuzz targets and runs each for a minute from its corpus in fuzz/corpus/.
#
#   tools/fuzz.sh [TARGET...]            obj, scene, script, options, gltf, ply, stl, import, engine, pack,
#                                        c_interface, false_edges, mesh, measure
#   tools/fuzz.sh --brief [TARGET...]    10 seconds each, with the same random numbers each time: a check of
#                                        what is known; the longer runs look for what is not
#   tools/fuzz.sh --seconds N [TARGET...]
#
# Prints a table of executions. Inputs that a run adds stay in build/fuzz/corpus/TARGET, from which the next
# run goes on. A finding is kept as build/fuzz/findings/TARGET-*; repeat it with
# build/fuzz/bin/TARGET_fuzz FILE. What the target said of it is printed below its row. Exit code 1 if there is
# one.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=60
seed=0 # libFuzzer: a new one each time
targets=()
while [ $# -gt 0 ]; do
    case "$1" in
    --brief) seconds=10 seed=1 ;;
    --seconds) seconds=$2; shift ;;
    -h | --help) sed -n '2,13s/^# \{0,1\}//p' "$0"; exit 0 ;;
    *) targets+=("$1") ;;
    esac
    shift
done
[ ${#targets[@]} -gt 0 ] || targets=(obj scene script options gltf ply stl import engine pack c_interface false_edges mesh measure)

tools/setup.sh
tools/setup.sh tools/packages-fuzz.txt
tools/build.sh fuzz "${targets[@]/%/_fuzz}"
build=$PWD/build/fuzz
mkdir -p "$build/findings"
export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1

# Runs one target in a folder of its own; prints its row of the table.
run() {
    local name=$1 log=$build/findings/$1.log work code=0
    local options=(-seed="$seed" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=4096 -print_final_stats=1
        -artifact_prefix="$build/findings/$name-")
    [ ! -f "fuzz/dictionaries/$name.dict" ] || options+=(-dict="$PWD/fuzz/dictionaries/$name.dict")
    work=$(mktemp -d)
    mkdir -p "$build/corpus/$name"
    local corpus=$PWD/fuzz/corpus/$name
    (cd "$work" && exec "$build/bin/${name}_fuzz" "${options[@]}" "$build/corpus/$name" "$corpus") \
        >"$log" 2>&1 || code=$?
    rm -rf "$work"
    local executions
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    if [ "$code" -eq 0 ]; then
        echo "| $name | ${executions:-?} | none |"
    else
        echo "| $name | ${executions:-?} | see build/fuzz/findings/$name.log |"
        grep -a -A30 -m1 'violated property\|ERROR: \|runtime error' "$log" || tail -n 30 "$log"
    fi
    return "$code"
}

printf '| target | executions in %d s | findings |\n|---|---|---|\n' "$seconds"
failed=0
running=()
for name in "${targets[@]}"; do
    if [ ${#running[@]} -ge "$(nproc)" ]; then
        wait "${running[0]}" || failed=1
        running=("${running[@]:1}")
    fi
    run "$name" &
    running+=($!)
done
for job in "${running[@]}"; do
    wait "$job" || failed=1
done
exit "$failed"
