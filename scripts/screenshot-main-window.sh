#!/usr/bin/env bash
# Makes docs/images/main-window.png: the real program with example jobs on a
# private X server with openbox. Usage:
#   scripts/screenshot-main-window.sh [BINARY] [OUTPUT.png] [DATA.xml]
# BINARY defaults to build/src/app/cadrelle; DATA to a handful of examples.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
binary=${1:-$root/build/src/app/cadrelle}
output=${2:-$root/docs/images/main-window.png}
data=${3:-}
if [ -z "${CADRELLE_IN_DESKTOP_SESSION:-}" ]; then
    exec "$root/tests/support/desktop_session.sh" "$0" "$binary" "$output" "$data"
fi
work=$(mktemp -d /tmp/cadrelle-shot-XXXXXX)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config
mkdir -p "$work/app/data" "$HOME"
if [ -n "$data" ]; then
    cp "$data" "$work/app/data/data1.xml"
else
    t() { # tid kind condition
        echo "<TRIGGER><ID>$1</ID><TYPE>$2</TYPE><CONDITION>$3</CONDITION><PREVFIRE>0 0 0 1 1 * 1999</PREVFIRE><NEXTFIRE>0 0 0 1 1 * 1999</NEXTFIRE><START>0 0 0 1 1 * 1999</START><END>59 59 23 31 12 * 2999</END></TRIGGER>"
    }
    j() { # jid kind description enabled tid info
        echo "<JOB><ID>$1</ID><TYPE>$2</TYPE><DESC>$3</DESC><ENABLE>$4</ENABLE><JINTERVAL>0</JINTERVAL><TID>$5</TID><JID></JID><INFO>$6</INFO></JOB>"
    }
    {
        echo '<?xml version="1.0" encoding="UTF-8"?>'
        echo '<SCHEDULER>'
        j 0 0 "Stand up and stretch" 1 0 'Time to stretch $ 0'
        j 1 1 "Open the team board" 1 1 'https://example.org/board'
        j 2 4 "Back up documents" 1 2 '/home/me/Documents $ /media/backup'
        j 3 10 "Ping the build box" 0 3 'ping $ 0 $ 0 $ 127.0.0.1 $ 9'
        j 4 7 "Screenshot every hour" 1 4 '/home/me/Pictures $ 0'
        j 5 16 "Lock at lunch" 1 5 ''
        j 6 21 "Shut down at night" 1 6 ''
        t 0 11 '0 0/45 9-17 * * ?'
        t 1 11 '0 30 8 ? * MON-FRI'
        t 2 7 '0 0 19 * * ?'
        t 3 2 '0 0/5 * * * ?'
        t 4 11 '0 0 * * * ?'
        t 5 11 '0 30 12 ? * MON-FRI'
        t 6 11 '0 0 23 * * ?'
        echo '</SCHEDULER>'
    } >"$work/app/data/data1.xml"
fi
"$binary" --app-dir "$work/app" >"$work/out.txt" 2>&1 &
pid=$!
win=$(xdotool search --sync --onlyvisible --pid "$pid" --name '^Cadrelle$' | head -1)
# The first tick of the trigger timer fills the next run times.
sleep 3.5
# With the window manager's frame: title bar and borders.
import -frame -window "$win" "$output"
kill -TERM "$pid"
wait "$pid" || true
grep -q 'Cadrelle End' "$work/app"/log_*.txt && echo "wrote $output"
