#!/usr/bin/env bash
# CTest launcher: a private X server, a private session bus and openbox (left
# out with CADRELLE_NO_WM=1). Usage: desktop_session.sh PROGRAM [ARGS...]
# -noreset: without a window manager the server would otherwise reset, and
# refuse connections for a moment, each time its last client leaves.
set -uo pipefail
if [ -z "${CADRELLE_IN_DESKTOP_SESSION:-}" ]; then
  export CADRELLE_IN_DESKTOP_SESSION=1
  exec xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp -noreset" \
    dbus-run-session -- "$0" "$@"
fi
export GDK_BACKEND=x11 NO_AT_BRIDGE=1
wm=
if [ -z "${CADRELLE_NO_WM:-}" ]; then
  openbox --sm-disable >/dev/null 2>&1 &
  wm=$!
  # The window manager is ready once it owns the WM_S0 selection.
  for _ in $(seq 1 100); do
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break
    sleep 0.05
  done
fi
"$@"
rc=$?
[ -n "$wm" ] && { kill "$wm"; wait "$wm"; } 2>/dev/null
exit $rc
