#!/usr/bin/env bash
# Configures and builds a preset: tools/build.sh [release|debug|asan|windows] [target...]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
shift || true

quietly() { # runs a command; shows its output only when it fails
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
# Sanitizer builds of the linear algebra headers need about 1.5 GB a compile job.
jobs=$(nproc)
if [ -t 2 ]; then
    cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"} >&2
else
    quietly cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"}
fi
