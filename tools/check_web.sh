#!/usr/bin/env bash
# Builds the npm package and the page, and tests them (docs/web.md): tools/check_web.sh
#
# Leaves the package in build/tessora-VERSION.tgz and the page in build/web/page/.
set -euo pipefail
cd "$(dirname "$0")/.."
step() { printf '== %s\n' "$*"; }

step "set-up"
tools/setup.sh
tools/setup.sh tools/packages-web.txt
command -v npm >/dev/null || tools/setup.sh tools/packages-npm.txt
(cd web && npm ci --ignore-scripts --no-audit --no-fund --loglevel=error)
step "build (wasm)"
tools/build.sh wasm
# The tests verify results with the native program.
tools/build.sh release tessora
step "build (package and page)"
(cd web && npm run --silent build && npm pack --silent --pack-destination ../build)
step "tests (web)"
cd web && npm test
