#!/usr/bin/env bash
# Configures and builds a preset: tools/build.sh [release|debug|asan|windows] [target...]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
shift || true

quietly() { # runs a command; shows its output only if it fails
    local log
    log=$(mktemp)
    if ! "$@" >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        echo "build: failed: $*" >&2
        exit 1
    fi
    rm -f "$log"
}

[ -f "build/$preset/build.ninja" ] || quietly cmake --preset "$preset"
# One job per processor: with sanitizers, a source that includes Eigen takes about 1.5 GB to compile.
jobs=$(nproc)
if [ -t 2 ]; then
    cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"} >&2
else
    quietly cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"}
fi
