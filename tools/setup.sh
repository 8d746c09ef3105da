#!/usr/bin/env bash
# Installs the missing Debian packages of a list: tools/setup.sh [LIST] (tools/packages.txt).
# Works as root and with sudo; takes a fraction of a second if nothing is missing.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)

missing=()
while read -r package; do
    case "$package" in ''|'#'*) continue ;; esac
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done <"${1:-$here/packages.txt}"
[ ${#missing[@]} -gt 0 ] || exit 0

if [ "$(id -u)" -eq 0 ]; then
    as_root=()
elif command -v sudo >/dev/null; then
    as_root=(sudo)
else
    echo "setup: these packages are missing, and installing them needs root or sudo: ${missing[*]}" >&2
    exit 1
fi
echo "setup: installing ${missing[*]}" >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
apt=(env DEBIAN_FRONTEND=noninteractive apt-get -y -q -o DPkg::Lock::Timeout=300)
if ! { "${as_root[@]}" "${apt[@]}" update &&
       "${as_root[@]}" "${apt[@]}" install --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    tail -n 30 "$log" >&2
    echo "setup: apt-get failed; the lines above say why" >&2
    exit 1
fi
