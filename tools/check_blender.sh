#!/usr/bin/env bash
# Installs Debian's Blender and runs the add-on's tests in it, without a screen and in a window:
# tools/check_blender.sh
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh
tools/setup.sh tools/packages-blender.txt
tools/setup.sh tools/packages-window.txt # a screen without a screen
tools/build.sh release tessora tessora_python blender_addon
python3 tests/blender/run.py build/release build/release/tessora_uv-*.zip
exec tools/with_screen.sh python3 tests/blender/run.py build/release build/release/tessora_uv-*.zip blender --window
