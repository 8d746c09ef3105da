#!/usr/bin/env bash
# Cross-compiles for Windows, runs the result through Wine on a virtual screen, and compares it with the
# Linux build.
#
#   tools/check_windows.sh           runs every test of the Windows build, compares the results of the tests
#                                    that both builds have, then compares unwraps and adjacency of meshes
#   tools/check_windows.sh --brief   compares the core library's tests and one whole unwrap
#
# The meshes are a few primitives, or those in the folder $TESSORA_MODELS if that is set.
set -euo pipefail
cd "$(dirname "$0")/.."
brief=no
[ "${1:-}" != --brief ] || brief=yes

# Every step prints how long it took, so that a slow one is noticed.
current=
end_step() { [ -z "$current" ] || printf -- '-- %s: %d s\n' "$current" $((SECONDS - began)); }
step() {
    end_step
    current=$*
    began=$SECONDS
    printf '== %s\n' "$*"
}

if [ -z "${CHECK_WINDOWS_SCREEN:-}" ]; then
    step "set-up (Windows)"
    tools/setup.sh
    tools/setup.sh tools/packages-windows.txt
    end_step
    CHECK_WINDOWS_SCREEN=own exec tools/with_screen.sh tools/check_windows.sh "$@"
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

step "build (Windows)"
if [ "$brief" = yes ]; then
    tools/build.sh windows tessora corelib_test
    shared=(corelib_test)
else
    tools/build.sh windows
    mapfile -t shared < <(tools/compare_tests.py --list build/windows)
    shared+=(adjacency_dump)
fi
# The Linux build makes only the programs that are compared with the Windows build.
step "build (release)"
tools/build.sh release tessora "${shared[@]}"

# An earlier run's Wine server may still use a screen that no longer exists.
WINEPREFIX=${WINEPREFIX:-$PWD/build/wineprefix}
export WINEPREFIX
wineserver -k || true # fails if no server is running

if [ "$brief" = no ]; then
    step "tests that only the Windows build has"
    ctest --preset windows -L 'display|slow'
    step "the plug-in's exports on this system"
    ctest --preset release -R '^plugin_exports_three_symbols$'
fi
step "tests that both systems share"
if [ "$brief" = yes ]; then
    tools/compare_tests.py build/release build/windows corelib_test
else
    tools/compare_tests.py build/release build/windows
fi

step "the same results on both systems"
meshes=()
if [ -n "${TESSORA_MODELS:-}" ]; then
    meshes=("$TESSORA_MODELS"/*.obj)
else
    kinds=(polySphere)
    [ "$brief" = yes ] || kinds=(polySphere polyCube polyTorus polyCylinder)
    for kind in "${kinds[@]}"; do
        (cd "$work" && "$OLDPWD/build/release/bin/tessora" -c "$kind; file -f -exportAll \"$kind.obj\";" >/dev/null)
        meshes+=("$work/$kind.obj")
    done
fi
tools/compare_platforms.py build/release/bin/tessora build/windows/bin/tessora.exe "${meshes[@]}"
[ "$brief" = yes ] ||
    tools/compare_adjacency.py build/release/bin/adjacency_dump build/windows/bin/adjacency_dump.exe "${meshes[@]}"
end_step
echo "== all steps after set-up: $SECONDS s"
