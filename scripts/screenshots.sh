#!/usr/bin/env bash
# Screenshots of the main window and the dialogs in one language, on a private
# X server with a window manager, to look at the layout in each language:
#
#   [DATA=data1.xml] scripts/screenshots.sh LANGUAGE OUTPUT_DIR [CADRELLE]
#
# LANGUAGE is a ui_language code (en, zh_CN, ja); CADRELLE defaults to
# build/src/app/cadrelle. The program runs on a copy of the test data file
# with a private home, so nothing of the user's is touched.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
lang="$1"
out="$(mkdir -p "$2" && cd "$2" && pwd)"
exe="$(realpath "${3:-$root/build/src/app/cadrelle}")"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/app/data" "$work/home/.config/Cadrelle" "$work/run"
cp "${DATA:-$root/tests/data/golden_data1.xml}" "$work/app/data/data1.xml"
printf 'ui_language=%s\n' "$lang" > "$work/home/.config/Cadrelle/Cadrelle.conf"

export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share" \
  XDG_RUNTIME_DIR="$work/run" LANG=C LC_ALL=C EXE="$exe" OUT="$out" APP="$work/app" PREFIX="$lang"
xvfb-run -a -s "-screen 0 1280x860x24" dbus-run-session -- bash -euo pipefail -c '
  openbox >/dev/null 2>&1 &
  "$EXE" --app-dir "$APP" >/dev/null 2>&1 &
  program=$!
  shot() { sleep 1.5; import -window root "$OUT/$PREFIX-$1.png"; }
  # Opens a dialog with keys, shoots it and closes it with Escape.
  dialog() { local name=$1; shift; xdotool key --delay 300 "$@"; shot "$name"; xdotool key Escape; sleep 0.5; }
  main=$(xdotool search --sync --onlyvisible --name "Cadrelle" | head -1)
  xdotool windowactivate --sync "$main"
  shot main-window
  # View > Agenda (Ctrl+G) on, shot, off.
  xdotool key ctrl+g; shot agenda; xdotool key ctrl+g; sleep 0.5
  dialog new-job alt+n
  # Alt+S opens the Setting menu (its mnemonic), so the dialogs are taken from it.
  dialog settings alt+s Return
  dialog language alt+s Down Return
  dialog about F1
  xdotool key alt+n; sleep 1.5; xdotool key alt+a; shot trigger; xdotool key Escape; sleep 0.5; xdotool key Escape
  kill -TERM $program
  wait $program || true
'
ls "$out"/"$lang"-*.png
