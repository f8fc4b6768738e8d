#!/usr/bin/env bash
# The window with 10,000 jobs and 10,000 triggers on a private X server with
# openbox: time from exec to the window mapped with its lists filled, resident
# memory, re-sorting the job list by a header click, and main-thread hold-ups
# while 300 triggers fire every second. Usage:
#   bench/scripts/window_startup.sh [BINARY] [SCREENSHOT.png]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
binary=${1:-$root/build/src/app/cadrelle}
shot=${2:-/tmp/cadrelle-10000.png}
if [ -z "${CADRELLE_IN_DESKTOP_SESSION:-}" ]; then
    exec "$root/tests/support/desktop_session.sh" "$0" "$binary" "$shot"
fi
work=$(mktemp -d /tmp/cadrelle-winbench-XXXXXX)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config
mkdir -p "$HOME" "$work/idle/data" "$work/fire/data"
python3 "$here/make_data_file.py" "$work/idle/data/data1.xml" 10000 "0 0 0 1 1 ?"

ms() { date +%s%3N; }
for run in 1 2 3; do
    rm -f "$work/idle"/log_*.txt "$work/idle/data/data2.xml"
    start=$(ms)
    "$binary" --app-dir "$work/idle" >/dev/null 2>&1 &
    pid=$!
    # xdotool's own --sync looks only every half second.
    until win=$(xdotool search --onlyvisible --pid "$pid" --name '^Cadrelle$' | head -1) && [ -n "$win" ]; do
        sleep 0.01
    done
    shown=$(ms)
    # CPU the program itself used until then (steadier than wall time on a
    # busy machine).
    cpu=$(awk -v hz="$(getconf CLK_TCK)" '{print ($14 + $15) * 1000 / hz}' "/proc/$pid/stat")
    echo "run $run: exec -> window shown with lists filled: $((shown - start)) ms wall, $cpu ms CPU"
    if [ "$run" = 3 ]; then
        sleep 4
        echo "resident memory after the checkers started: $(awk '/VmRSS/ {print $2/1024 " MB"}' /proc/$pid/status)"
        # Header clicks on "Description" (third column) and "Next Run Time":
        # the window logs each sort's duration.
        eval "$(xdotool getwindowgeometry --shell "$win")"
        for x in 420 420 790 790; do
            xdotool mousemove --window "$win" "$x" 157 click 1
            sleep 1
        done
        import -window root -crop "${WIDTH}x${HEIGHT}+${X}+${Y}" +repage "$shot"
        echo "screenshot: $shot"
    fi
    kill -TERM "$pid"
    wait "$pid" || true
    grep -h 'Job list sorted' "$work/idle"/log_*.txt | sed 's/^/  /' || true
done

python3 "$here/make_data_file.py" "$work/fire/data/data1.xml" 300 "* * * * * ?"
"$binary" --app-dir "$work/fire" >/dev/null 2>&1 &
pid=$!
xdotool search --sync --onlyvisible --pid "$pid" --name '^Cadrelle$' >/dev/null
sleep 30
kill -TERM "$pid"
wait "$pid" || true
echo "300 triggers firing every second for 30 s: jobs started $(grep -ch 'ThreadID_' "$work/fire"/log_*.txt | paste -sd+ | bc)," \
     "main-thread hold-ups over 2 s: $(grep -ch 'Main thread held up' "$work/fire"/log_*.txt | paste -sd+ | bc)"
grep -h 'Main thread held up' "$work/fire"/log_*.txt | sed 's/^/  /' || true
