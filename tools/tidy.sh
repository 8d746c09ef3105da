#!/usr/bin/env bash
# Checks the product's sources: functions that nothing calls, then clang-tidy with the checks of .clang-tidy.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh tools/packages-tidy.txt
tools/build.sh release
tests/tools/check_unused_test.py
tools/check_unused.py build/release
git ls-files '*.cpp' | grep -Ev '^(tests|bench|fuzz)/' |
    xargs -r -P "$(nproc)" -n 4 clang-tidy -p build/release --quiet
