#!/usr/bin/env bash
# Measures how much of corelib/, plugin/ and platform/ their tests run, by lines and by branches.
#
#   tools/coverage.sh             fails below 95 % of lines or 85 % of branches in any of the three folders
#   tools/coverage.sh --html      also writes build/coverage/html/index.html, source by source
#
# Branches that only an exception takes do not count, nor do the halves for Windows, which are not compiled.
set -euo pipefail
cd "$(dirname "$0")/.."
html=no
case "${1:-}" in
--html) html=yes ;;
-h | --help) sed -n '2,7s/^# \{0,1\}//p' "$0"; exit 0 ;;
esac
tools/setup.sh
tools/setup.sh tools/packages-coverage.txt
build=build/coverage
programs=(corelib_test corelib_posix_test math_test math_device_calls_test math_whole_stage_test win32_test
    win32_hook_test d3dx9_test plugin_test host_plugin_test plugin_in_host_test draw_seams_test
    plugin_overlay_test)
tools/build.sh coverage "${programs[@]}" script_console
find "$build" -name '*.gcda' -delete
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TESSORA_PREFERENCES=$work/preferences.mel
for program in "${programs[@]}"; do
    (cd "$work" && "$OLDPWD/$build/bin/$program" --gtest_brief=1 >"$work/log" 2>&1) ||
        { cat "$work/log" >&2; echo "coverage: $program failed" >&2; exit 1; }
done
python3 tools/run_scripts.py "$build/bin/script_console" tests/script/plugin >"$work/log" ||
    { cat "$work/log" >&2; exit 1; }

report() { gcovr --root . --exclude-throw-branches --filter "$1/" "${@:2}" "$build/$1"; }
[ "$html" = no ] || { mkdir -p "$build/html" && gcovr --root . --exclude-throw-branches --filter corelib/ \
    --filter plugin/ --filter platform/ --html-details "$build/html/index.html" "$build"; }
failed=0
printf '| folder | lines | branches |\n|---|---|---|\n'
for folder in corelib plugin platform; do
    report "$folder" --json-summary "$work/$folder.json" >/dev/null
    python3 - "$folder" "$work/$folder.json" <<'PY' || failed=1
import json, sys
figures = json.load(open(sys.argv[2]))
print(f"| {sys.argv[1]}/ | {figures['line_covered']} of {figures['line_total']} ({figures['line_percent']} %) | "
      f"{figures['branch_covered']} of {figures['branch_total']} ({figures['branch_percent']} %) |")
sys.exit(figures["line_percent"] < 95 or figures["branch_percent"] < 85)
PY
done
exit "$failed"
