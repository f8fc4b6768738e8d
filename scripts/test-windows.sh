#!/usr/bin/env bash
# The Windows build of the core: builds the mingw-w64 libraries (cached, see
# scripts/build-windows-deps.sh), cross-builds the core, cron and log tests
# and runs them under Wine with a Wine prefix of their own in the build
# folder. Exits non-zero when a build or a test fails. docs/WINDOWS.md.
#
#   CADRELLE_WIN_BUILD   build folder (default build-win in the clone)
#   CADRELLE_WIN_CACHE   the libraries' cache (default /var/cache/cadrelle-win)
set -euo pipefail
cd "$(dirname "$0")/.."
ROOT=$PWD
BUILD=${CADRELLE_WIN_BUILD:-$ROOT/build-win}
started=$(date +%s)

PREFIX=$(scripts/build-windows-deps.sh | tail -n 1)
deps_done=$(date +%s)

nice -n 15 cmake -S . -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-w64-x86_64.cmake" -DCADRELLE_WIN_PREFIX="$PREFIX" >/dev/null
nice -n 15 cmake --build "$BUILD" --target core_tests log_tests cron_tests data_save_loop
build_done=$(date +%s)

WINE=$(command -v wine64 || echo /usr/lib/wine/wine64)
WINESERVER=$(command -v wineserver || echo /usr/lib/wine/wineserver)
export WINEPREFIX="$BUILD/wineprefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
# The prefix is ours alone: stop its server however this script ends.
trap '"$WINESERVER" -k 2>/dev/null || true' EXIT
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  echo "== creating the Wine prefix $WINEPREFIX"
  "$WINE" wineboot --init >/dev/null 2>&1
  "$WINESERVER" -w
fi

failed=()
# name, zone, program, arguments...: the program started with Wine's zone
# set from TZ (CADRELLE_TEST_ZONE tells the tests which zone the run is in).
run() {
  local name=$1 zone=$2 exe=$3
  shift 3
  local log="$BUILD/test-$name.log"
  echo "== $name (TZ=$zone)"
  local status=0
  TZ=$zone CADRELLE_TEST_ZONE=$zone "$WINE" "$exe" --gtest_brief=1 "$@" >"$log" 2>&1 || status=$?
  # Failures with their messages, then gtest's summary.
  grep -E '^\[  FAILED  \]|Failure$|^\[==========\]|^\[  PASSED  \]|^\[  SKIPPED \]' "$log" | sed 's/^/   /' || true
  if [ "$status" -ne 0 ] || ! grep -q '^\[  PASSED  \]' "$log"; then
    grep -q '^\[==========\]' "$log" || tail -n 3 "$log" | sed 's/^/   (no summary) /'
    echo "   exit status $status; full output: $log"
    failed+=("$name")
  fi
}

run core_tests Europe/Berlin "$BUILD/tests/core_tests.exe"
run log_tests Europe/Berlin "$BUILD/tests/log_tests.exe"
# A Windows program cannot switch its zone by name while it runs: the cron
# tests run once per zone they check (tests/cron/cron_test_util.h).
for zone in UTC Asia/Kolkata Europe/Berlin America/St_Johns; do
  run "cron_tests-${zone//\//_}" "$zone" "$BUILD/tests/cron/cron_tests.exe"
done

echo "== libraries $((deps_done - started)) s, build $((build_done - deps_done)) s, tests $(( $(date +%s) - build_done )) s"
if [ ${#failed[@]} -gt 0 ]; then
  echo "== FAILED under Wine: ${failed[*]}"
  exit 1
fi
echo "== all Windows tests passed under Wine"
