#!/usr/bin/env bash
# Runs a Windows program: tools/with_wine.sh PROGRAM.exe [arguments]. The registry and the drives live
# in build/wineprefix (or $WINEPREFIX), which is made when it is missing. With DISPLAY unset Direct3D is
# absent and message boxes return at once.
#
# Processes of Wine's own outlive the program by seconds and hold its output open: whoever captures output
# does so through a file, not through a pipe whose end it would wait for.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$here/build/wineprefix}
export WINEDEBUG=${WINEDEBUG:--all}
# A crash ends the program with an exit code instead of a dialog; no offers to download anything.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-winedbg.exe=d;mscoree=;mshtml=;winemenubuilder.exe=d}
# No thread of its own for each Direct3D device: one that is still ending when the program ends is told to
# end once more, and Wine 8.0 sometimes dies of that (SIGSEGV after everything is done, once in some
# hundred programs on a busy machine).
export WINE_D3D_CONFIG=${WINE_D3D_CONFIG:-csmt=0x0}

make_prefix() {
    mkdir -p "$WINEPREFIX"
    exec 9>"$WINEPREFIX/.making"
    flock 9
    [ ! -f "$WINEPREFIX/.made" ] || return 0
    # Without a display: the prefix serves programs with one and without one alike.
    (
        unset DISPLAY
        wine wineboot -i
        # Message boxes close at once where no window manager answers.
        wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /t REG_SZ /d N /f
        wineserver -w
    ) >"$WINEPREFIX/.log" 2>&1 9>&- || { cat "$WINEPREFIX/.log" >&2; exit 1; }
    touch "$WINEPREFIX/.made"
}

[ -f "$WINEPREFIX/.made" ] || (make_prefix)
[ -n "${DISPLAY:-}" ] || unset DISPLAY
exec wine "$@"
