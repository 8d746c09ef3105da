#!/usr/bin/env bash
# Installs Debian's Blender and runs the add-on's tests in it, without a screen: tools/check_blender.sh [-- TEST...]
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh
tools/setup.sh tools/packages-blender.txt
tools/build.sh release tessora tessora_python blender_addon
exec python3 tests/blender/run.py build/release build/release/tessora_uv-*.zip blender "$@"
