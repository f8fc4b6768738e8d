#!/usr/bin/env bash
# `cmake --install` gives what a desktop needs, valid; `cpack -G DEB` gives a
# package with its library dependencies, and the program run from the
# extracted package works, finds its catalogues and keeps its data in the
# user's folder (its bin/ is writable here, being root's).
set -uo pipefail
build="$1"
tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT
status=0 && fail() { echo "FAIL: $*"; status=1; }

DESTDIR="$tmp/stage" cmake --install "$build" --prefix /usr/local >/dev/null || fail "cmake --install"
prefix="$tmp/stage/usr/local"
for file in bin/cadrelle share/applications/cadrelle.desktop share/metainfo/com.vantrel.cadrelle.metainfo.xml \
  share/man/man1/cadrelle.1 share/locale/zh_CN/LC_MESSAGES/Cadrelle.mo share/locale/ja/LC_MESSAGES/Cadrelle.mo \
  share/icons/hicolor/scalable/apps/cadrelle.svg share/cadrelle/img/lock-key-64.png \
  share/icons/hicolor/{16x16,24x24,32x32,48x48,64x64,128x128,256x256}/apps/cadrelle.png; do
  [ -f "$prefix/$file" ] || fail "not installed: $file"
done
desktop-file-validate "$prefix/share/applications/cadrelle.desktop" || fail "desktop entry"
appstreamcli validate --no-net "$prefix/share/metainfo/com.vantrel.cadrelle.metainfo.xml" >/dev/null || fail "metainfo"
[ -z "$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$prefix/share/man/man1/cadrelle.1" 2>&1 >/dev/null)" ] ||
  fail "manual page warnings"

cpack -G DEB --config "$build/CPackConfig.cmake" -B "$tmp/deb" >/dev/null || fail "cpack"
deb="$(ls "$tmp"/deb/*.deb)"
depends="$(dpkg-deb -f "$deb" Depends)"
for lib in libc6 libwxgtk3.2 libexpat1; do [[ "$depends" == *"$lib"* ]] || fail "Depends lacks $lib: $depends"; done
dpkg-deb -x "$deb" "$tmp/root" || fail "dpkg-deb -x"
user=(env -i PATH="$PATH" HOME="$tmp/home" XDG_DATA_HOME="$tmp/home/data" XDG_CONFIG_HOME="$tmp/home/config"
  XDG_RUNTIME_DIR="$tmp/home/run" LANG=C LC_ALL=C)
run() { "${user[@]}" "$@"; }
mkdir -p "$tmp/home/run" "$tmp/empty" && exe="$tmp/root/usr/bin/cadrelle"
[[ "$(run "$exe" --version)" == "Cadrelle "* ]] || fail "--version"
[[ "$(run "$exe" --list --app-dir "$tmp/empty")" == "Jobs: 0"* ]] || fail "--list on an empty folder"
[ "$(run LANGUAGE=ja "$exe" --cron-next "" 2>&1)" = "cron 式が空です" ] || fail "Japanese catalogue not found"
# exec: the pid is the program's own, not a subshell's.
(exec "${user[@]}" "$exe" --headless >/dev/null 2>&1) &
pid=$!
# Running once its checkers have started (their log lines are flushed by the loop).
for _ in $(seq 100); do grep -qs CheckTriggerFireThreadEx "$tmp"/home/data/Cadrelle/log_*.txt && break; sleep 0.1; done
kill -TERM $pid && wait $pid
[ -f "$tmp/home/data/Cadrelle/data/data1.xml" ] || fail "no data under \$XDG_DATA_HOME/Cadrelle"
[ ! -e "$tmp/root/usr/bin/data" ] || fail "data written beside the installed program"
exit $status
