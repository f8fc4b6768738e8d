#!/usr/bin/env bash
# The run history under sustained load: RATE runs a minute for SECONDS into a
# fresh history.db, then checks that every recorded run is in the database.
#   bench/scripts/history_sustained.sh [build dir] [RATE] [SECONDS]
set -euo pipefail
build="${1:-build}"
rate="${2:-10000}"
seconds="${3:-600}"
dir="$(mktemp -d)"
trap 'rm -rf "$dir"' EXIT
start=$(date +%s)
recorded=$(/usr/bin/time -f "%U s user, %S s system, %M KB peak" "$build/tests/history_write_loop" "$dir" "$rate" "$seconds")
stored=$(python3 -c "import sqlite3,sys; print(sqlite3.connect(sys.argv[1]).execute('select count(*) from runs').fetchone()[0])" "$dir/history.db")
echo "rate $rate/min for $seconds s ($(( $(date +%s) - start )) s wall): recorded $recorded, stored $stored"
[ "$recorded" = "$stored" ]
