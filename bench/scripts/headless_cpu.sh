#!/usr/bin/env bash
# Whole-program figures of the headless scheduler:
#  1. CPU (% of one core, averaged over the given seconds) and resident
#     memory with 10,000 and 100,000 enabled recurring triggers that do not
#     fire during the measurement (IDLE_COUNTS chooses the sizes);
#  2. when the runs of a few hundred firings start (each within 20 ms after
#     its trigger's moment, never before) while 100,000 triggers rest.
# Usage: bench/scripts/headless_cpu.sh [path/to/cadrelle] [seconds]
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
bin="${1:-$here/../../build/src/app/cadrelle}"
seconds="${2:-30}"
work="$(mktemp -d /tmp/cadrelle-bench-XXXXXX)"
trap 'rm -rf "$work"' EXIT
clk=$(getconf CLK_TCK)

run_headless() {  # $1 = app folder; leaves the pid in $pid
  mkdir -p "$work/home"
  HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share" \
    "$bin" --headless --app-dir "$1" > "$1/output.txt" 2>&1 &
  pid=$!
}

cpu_ticks() { awk '{print $14 + $15}' "/proc/$1/stat"; }

# 1. At rest: New Year's midnight never comes during the run. The sizes
#    come from IDLE_COUNTS (default 10000 and 100000).
for count in ${IDLE_COUNTS:-10000 100000}; do
  rm -rf "$work/idle"; mkdir -p "$work/idle/data"
  python3 "$here/make_data_file.py" "$work/idle/data/data1.xml" "$count" "0 0 0 1 1 ?"
  run_headless "$work/idle"
  # Start-up, load and the first checker passes; a million triggers take longer.
  sleep $(( count >= 1000000 ? 40 : 8 ))
  t0=$(cpu_ticks "$pid"); s0=$(date +%s.%N)
  sleep "$seconds"
  t1=$(cpu_ticks "$pid"); s1=$(date +%s.%N)
  rss_kb=$(awk '/VmRSS/ {print $2}' "/proc/$pid/status")
  threads=$(ls "/proc/$pid/task" | wc -l)
  kill -TERM "$pid"; wait "$pid" || true
  cpu=$(python3 -c "print(f'{100.0 * ($t1 - $t0) / $clk / ($s1 - $s0):.3f}')")
  echo "at rest, $count recurring triggers: CPU ${cpu}% of one core over ${seconds} s; RSS $((rss_kb / 1024)) MB; threads ${threads}"
done

# 2. Firing error: FIRE_COUNT (default 100) triggers every second for about
#    4 seconds while REST_COUNT (default 100000) others rest.
mkdir -p "$work/fire/data"
python3 "$here/make_data_file.py" "$work/fire/data/data1.xml" "${FIRE_COUNT:-100}" "* * * * * ?" \
  "${REST_COUNT:-100000}" "0 0 0 1 1 ?"
run_headless "$work/fire"
sleep 6.5
kill -TERM "$pid"; wait "$pid" || true
python3 - "$work/fire" <<'PY'
import glob, re, sys
# "HH:MM:SS: ms ->> [JID_n, ...": the job started ms after its whole second
# (the trigger's moment); a start before it shows as a negative number.
errors = []
lines = []
for path in glob.glob(sys.argv[1] + "/log_*.txt"):
    lines += open(path, encoding="utf-8", errors="replace").readlines()
for line in lines:
    m = re.match(r"\d\d-\d\d (\d\d):(\d\d):(\d\d): (\d+) ->> \[JID_", line)
    if m:
        ms = int(m.group(4))
        errors.append(ms if ms < 500 else ms - 1000)
if not errors:
    print("run start: no runs seen"); sys.exit(1)
inside = sum(1 for e in errors if 0 <= e <= 20)
errors.sort()
print(f"run start over {len(errors)} runs (ms after the trigger's moment; negative = early): "
      f"min {errors[0]}, median {errors[len(errors)//2]}, max {errors[-1]}; "
      f"{inside}/{len(errors)} inside [T, T+20 ms]")
PY
