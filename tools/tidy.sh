#!/usr/bin/env bash
# Runs clang-tidy over the product's sources with the checks of .clang-tidy.
set -euo pipefail
cd "$(dirname "$0")/.."
command -v clang-tidy >/dev/null || tools/setup.sh tools/packages-tidy.txt
tools/build.sh release
git ls-files '*.cpp' | grep -Ev '^(tests|bench|fuzz)/' |
    xargs -r -P "$(nproc)" -n 4 clang-tidy -p build/release --quiet
