#!/usr/bin/env bash
# Fails if a source differs from what clang-format 14 makes of it.
set -euo pipefail
cd "$(dirname "$0")/.."
tool=$(command -v clang-format-14 || command -v clang-format)
case $("$tool" --version) in
*" 14."*) ;;
*) echo "check_format: clang-format 14 is needed, found: $("$tool" --version)" >&2; exit 1 ;;
esac
git ls-files '*.h' '*.cpp' | xargs -r "$tool" --dry-run --Werror
