#!/usr/bin/env bash
# A fresh template against both catalogues (every text, nothing fuzzy or
# untranslated, msgfmt --check clean); then the real program under the C
# locale only: the stored language beats the environment, "default" follows
# it, an unknown code is reported.
set -uo pipefail
root="$(cd "$(dirname "$0")/../.." && pwd)"
exe="$1"
tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT
status=0 && fail() { echo "FAIL: $*"; status=1; }

"$root/scripts/update-po.sh" "$tmp/Cadrelle.pot" || fail "extraction"
for lang in zh_CN ja en; do
  po="$root/po/$lang.po"
  msgcmp "$po" "$tmp/Cadrelle.pot" || fail "$lang: texts missing or untranslated (run scripts/update-po.sh)"
  [ -z "$(msgattrib --only-fuzzy --no-obsolete "$po")" ] || fail "$lang: fuzzy entries"
  [ -z "$(msgattrib --untranslated --no-obsolete "$po")" ] || fail "$lang: untranslated entries"
  msgfmt --check -o /dev/null "$po" || fail "$lang: msgfmt --check"
done

mkdir -p "$tmp/config/Cadrelle" && conf="$tmp/config/Cadrelle/Cadrelle.conf"
# Standard error of `cadrelle --cron-next ""` with setting $1 and variables $2...
speak() {
  if [ -n "$1" ]; then printf 'ui_language=%s\n' "$1" > "$conf"; else rm -f "$conf"; fi
  shift
  env -i PATH="$PATH" HOME="$tmp" XDG_CONFIG_HOME="$tmp/config" LANG=C LC_ALL=C "$@" \
    "$exe" --cron-next "" 2>&1 >/dev/null
}
while IFS='|' read -r setting variable expected; do
  got="$(speak "$setting" $variable)"
  [ "$got" = "$expected" ] || fail "ui_language=$setting $variable: '$got', expected '$expected'"
done <<'ROWS'
ja|LANGUAGE=zh_CN|cron 式が空です
|LANGUAGE=zh_CN.UTF-8|Cron 表达式不能为空
ROWS
got="$(speak xx LANGUAGE=ja)"
[[ "$got" == *"Uknown locale code 'xx' in registry."*"cron 式が空です" ]] || fail "unknown code: '$got'"exit $status
