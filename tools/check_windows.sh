#!/usr/bin/env bash
# Builds for Windows and runs the result through Wine under a screen of its own.
#
#   tools/check_windows.sh           every test of the Windows build, then unwraps and adjacency of meshes
#                                    compared with this system's, then the .zip unpacked and used
#   tools/check_windows.sh --brief   the program, the core library's tests and one whole unwrap, compared
#
# Compared are a few primitives, or the meshes in the folder $TESSORA_MODELS.
set -euo pipefail
cd "$(dirname "$0")/.."
brief=no
[ "${1:-}" != --brief ] || brief=yes

step() { printf '== %s\n' "$*"; }

work=$(mktemp -d)
screen=
clean_up() {
    [ -z "$screen" ] || kill "$screen" 2>/dev/null || true
    rm -rf "$work"
}
trap clean_up EXIT

step "set-up (Windows)"
tools/setup.sh tools/packages-windows.txt

step "build (Windows)"
if [ "$brief" = yes ]; then
    tools/build.sh windows tessora corelib_test
    tools/build.sh release tessora
else
    tools/build.sh windows
    tools/build.sh release
fi

# The server tells the number of the screen that was free.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$work/display" >"$work/xvfb.log" 2>&1 &
screen=$!
for _ in $(seq 100); do
    [ ! -s "$work/display" ] || break
    sleep 0.1
done
[ -s "$work/display" ] || { cat "$work/xvfb.log" >&2; echo "check: no X server came up" >&2; exit 1; }
DISPLAY=:$(cat "$work/display")
export DISPLAY

step "tests (Windows)"
if [ "$brief" = yes ]; then
    tools/with_wine.sh build/windows/bin/corelib_test.exe | tail -n 3
else
    ctest --preset windows -L display
    tools/count_tests.sh build/release build/windows
fi

step "the same results on both systems"
meshes=()
if [ -n "${TESSORA_MODELS:-}" ]; then
    meshes=("$TESSORA_MODELS"/*.obj)
else
    kinds=(polySphere)
    [ "$brief" = yes ] || kinds=(polySphere polyCube polyTorus polyCylinder)
    for kind in "${kinds[@]}"; do
        (cd "$work" && "$OLDPWD/build/release/bin/tessora" -c "$kind; file -f -exportAll \"$kind.obj\";")
        meshes+=("$work/$kind.obj")
    done
fi
tools/compare_platforms.py build/release/bin/tessora build/windows/bin/tessora.exe "${meshes[@]}"
[ "$brief" = no ] || exit 0
tools/compare_adjacency.py build/release/bin/adjacency_dump build/windows/bin/adjacency_dump.exe "${meshes[@]}"

step "the package (Windows)"
(cd build/windows && cpack -B "$work/packages" >"$work/cpack.log") || { cat "$work/cpack.log" >&2; exit 1; }
mkdir "$work/unpacked"
(cd "$work/unpacked" && cmake -E tar xf "$work"/packages/*.zip)
cp "${meshes[0]}" "$work/mesh.obj"
(cd "$work" && "$OLDPWD/tools/with_wine.sh" "$work"/unpacked/*/tessora.exe unwrap mesh.obj -o out.obj --quiet)
grep -q '^vt ' "$work/out.obj"
echo "the unpacked program unwraps"
