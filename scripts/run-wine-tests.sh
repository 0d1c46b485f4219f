#!/usr/bin/env bash
# Runs the Windows x86-64 unit tests under Wine. A persistent wineserver makes
# each test process start in a fraction of a second instead of seconds.
set -euo pipefail
build_dir=$1
export WINEDEBUG=-all
export WINEPREFIX="${WINEPREFIX:-$HOME/.cache/zantor-wine}"
export WINEDLLOVERRIDES="mscoree,mshtml="   # no Mono/Gecko installer prompts

if [[ ! -f "$WINEPREFIX/system.reg" ]]; then
  echo "creating Wine prefix $WINEPREFIX"
  wineboot --init >/dev/null 2>&1 || true
  wineserver -w   # wineboot leaves its server running for a while
fi
# A persistent server; -p fails harmlessly when one is already running.
wineserver -p 2>/dev/null || true
# Start Wine's own services (services.exe, rpcss, ...) now, detached from
# CTest: started by a test, they would inherit its output pipe and CTest
# would wait for them until the timeout.
wine cmd /c exit </dev/null >/dev/null 2>&1 || true
trap 'wineserver -k 2>/dev/null || true' EXIT
ctest --test-dir "$build_dir" --output-on-failure -j 2 --no-tests=error --timeout 120
