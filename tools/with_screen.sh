#!/usr/bin/env bash
# Runs a command on a virtual X screen of 1440 by 900 pixels: tools/with_screen.sh COMMAND [arguments].
# Exits with the command's exit code; the X server is stopped then.
set -euo pipefail
work=$(mktemp -d)
server=
finish() {
    [ -z "$server" ] || kill "$server" 2>/dev/null || true
    rm -rf "$work"
}
trap finish EXIT
trap 'exit 143' TERM
trap 'exit 130' INT

# The server picks a free display and writes its number to descriptor 3.
Xvfb -displayfd 3 -screen 0 1440x900x24 -nolisten tcp 3>"$work/display" >"$work/log" 2>&1 &
server=$!
for _ in $(seq 300); do
    [ ! -s "$work/display" ] && kill -0 "$server" 2>/dev/null || break
    sleep 0.1
done
[ -s "$work/display" ] || { cat "$work/log" >&2; echo "with_screen: no X server came up" >&2; exit 1; }

code=0
DISPLAY=:$(cat "$work/display") "$@" || code=$?
exit "$code"
