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
  for _ in $(seq 1 100); do
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break
    sleep 0.05
  done
  # Even then, a window mapped while openbox is still starting can be left
  # unmanaged for good: it is ready once it manages a probe window (a new
  # probe each try, since a lost one stays lost).
  for _ in $(seq 1 10); do
    xmessage -timeout 30 cadrelle-wm-probe >/dev/null 2>&1 &
    probe=$!
    managed=
    for _ in $(seq 1 40); do
      xprop -root _NET_CLIENT_LIST 2>/dev/null | grep -q '0x' && { managed=1; break; }
      sleep 0.05
    done
    kill "$probe" 2>/dev/null
    wait "$probe" 2>/dev/null
    [ -n "$managed" ] && break
  done
fi
"$@"
rc=$?
[ -n "$wm" ] && { kill "$wm"; wait "$wm"; } 2>/dev/null
exit $rc
