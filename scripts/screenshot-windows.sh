#!/usr/bin/env bash
# Makes docs/images/{main-window,job-dialog,trigger-dialog,settings-dialog}[-LANG].png:
# the real program in English, Chinese and Japanese on a private X server
# with openbox, each dialog opened the way a person opens it (keys).
# Usage: scripts/screenshot-windows.sh [BINARY] [OUTPUT-DIR]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
binary=${1:-$root/build/src/app/cadrelle}
outdir=${2:-$root/docs/images}
if [ -z "${CADRELLE_IN_DESKTOP_SESSION:-}" ]; then
    exec "$root/tests/support/desktop_session.sh" "$0" "$binary" "$outdir"
fi
# Waits (at most 10 s) for a visible window of `pid` other than those given.
window_of() { # pid known...
    local pid=$1; shift
    for _ in $(seq 1 100); do
        for w in $(xdotool search --onlyvisible --pid "$pid" 2>/dev/null); do
            case " $* " in *" $w "*) ;; *) echo "$w"; return ;; esac
        done
        sleep 0.1
    done
}
for lang in ${CADRELLE_SHOT_LANGS:-en zh_CN ja}; do
    suffix=$([ "$lang" = en ] && echo "" || echo "-$lang")
    work=$(mktemp -d /tmp/cadrelle-shots-XXXXXX)
    main="$outdir/main-window$suffix.png"
    LANGUAGE=$lang "$here/screenshot-main-window.sh" "$binary" "$main" >/dev/null
    export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config
    mkdir -p "$work/app/data" "$HOME"
    LANGUAGE=$lang "$binary" --app-dir "$work/app" >"$work/out.txt" 2>&1 &
    pid=$!
    win=$(xdotool search --sync --onlyvisible --pid "$pid" | head -1)
    xdotool windowactivate --sync "$win" 2>/dev/null || true
    xdotool key ctrl+n
    job=$(window_of "$pid" "$win")
    sleep 0.5
    import -frame -window "$job" "$outdir/job-dialog$suffix.png"
    # Its trigger dialog: the job dialog's "Add..." (Alt+A in every language).
    xdotool key alt+a
    trig=$(window_of "$pid" "$win" "$job")
    sleep 0.5
    import -frame -window "$trig" "$outdir/trigger-dialog$suffix.png"
    xdotool key Escape
    sleep 0.5
    xdotool key Escape
    sleep 0.5
    xdotool key alt+s
    set=$(window_of "$pid" "$win")
    sleep 0.5
    import -frame -window "$set" "$outdir/settings-dialog$suffix.png"
    xdotool key Escape
    sleep 0.5
    kill -TERM "$pid"; wait "$pid" || true
    rm -rf "$work"
done
echo "wrote $outdir"
