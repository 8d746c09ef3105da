#!/usr/bin/env bash
# Runs a Windows program: tools/with_wine.sh PROGRAM.exe [arguments]. The registry and the drives live
# in build/wineprefix (or $WINEPREFIX), which is created if missing. With DISPLAY unset Direct3D is
# absent and message boxes return at once.
#
# Wine's background processes outlive the program by seconds and keep its output open. Capture output in a
# file: a reader of a pipe would wait for them.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$here/build/wineprefix}
export WINEDEBUG=${WINEDEBUG:--all}
# A crash ends the program with an exit code instead of a dialog; Wine does not offer to download anything.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-winedbg.exe=d;mscoree=;mshtml=;winemenubuilder.exe=d}
# Without Direct3D's command-stream threads: Wine 8.0 stops such a thread twice if it is still ending when
# the program exits, which sometimes crashes (SIGSEGV at exit, about once in some hundred programs on a busy
# machine).
export WINE_D3D_CONFIG=${WINE_D3D_CONFIG:-csmt=0x0}

make_prefix() {
    mkdir -p "$WINEPREFIX"
    exec 9>"$WINEPREFIX/.making"
    flock 9
    [ ! -f "$WINEPREFIX/.made" ] || return 0
    # Created without a display, so that the prefix serves programs with and without one.
    (
        unset DISPLAY
        wine wineboot -i
        # Let message boxes close at once if there is no window manager.
        wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /t REG_SZ /d N /f
        wineserver -w
    ) >"$WINEPREFIX/.log" 2>&1 9>&- || { cat "$WINEPREFIX/.log" >&2; exit 1; }
    touch "$WINEPREFIX/.made"
}

[ -f "$WINEPREFIX/.made" ] || (make_prefix)
[ -n "${DISPLAY:-}" ] || unset DISPLAY
exec wine "$@"
