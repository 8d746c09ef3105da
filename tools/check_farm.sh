#!/usr/bin/env bash
# Runs a batch on a real scheduler: one-node Slurm on loopback, as root: tools/check_farm.sh
set -euo pipefail
cd "$(dirname "$0")/.."
[ "$(id -u)" -eq 0 ] || { echo "check: Slurm's daemons need root" >&2; exit 1; }
printf '== set-up\n'
tools/setup.sh
tools/setup.sh tools/packages-farm.txt
printf '== build (release)\n'
tools/build.sh release tessora
printf '== farm\n'
exec python3 -B tests/render_farm/farm_test.py build/release/bin/tessora packaging/slurm
