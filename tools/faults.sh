#!/usr/bin/env bash
# Fails every call of the plug-in that can fail, one at a time (tests/faults/sweep.cpp), against a
# strict host, and prints a table for docs/reliability.md.
#
#   tools/faults.sh                    the first, second and last call of every distinct stack
#   tools/faults.sh --brief            the first call of every distinct stack
#   tools/faults.sh --scenario NAME    one scenario; --verbose lists the calls that were survived
set -euo pipefail
cd "$(dirname "$0")/.."
case "${1:-}" in
-h | --help) sed -n '2,/^set /s/^# \{0,1\}//p' "$0"; exit 0 ;;
esac
tools/build.sh release fault_sweep
TESSORA_HOST_STRICT=1 build/release/bin/fault_sweep "$@"
