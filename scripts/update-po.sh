#!/usr/bin/env bash
# Extracts every translatable text of the program into po/Cadrelle.pot and
# merges the template into the catalogues (po/zh_CN.po, po/ja.po), which
# keep their translations; new texts arrive empty, changed ones fuzzy.
#
#   scripts/update-po.sh            extract and merge
#   scripts/update-po.sh FILE.pot   only extract, into FILE.pot (the test's check)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
pot="${1:-$root/po/Cadrelle.pot}"
cd "$root"

# wx's markers, our thread-safe translation call, and the cron library's
# markers (its exception carries fixed English texts).
keywords=(
  --keyword=_ --keyword=wxPLURAL:1,2 --keyword=wxTRANSLATE --keyword=wxGETTEXT_IN_CONTEXT:1c,2
  --keyword=wxGetTranslation:1 --keyword=TranslateFromAnyThread
  --keyword=TranslateMessage --keyword=FormatMessage:1 --keyword=bad_cronexpr
)
find src -name '*.cpp' -o -name '*.h' | LC_ALL=C sort > "$pot.files"
xgettext --from-code=UTF-8 --language=C++ "${keywords[@]}" \
  --add-comments=TRANSLATORS: --add-location=file --sort-by-file \
  --package-name=Cadrelle --msgid-bugs-address="maintainers@cadrelle.invalid" \
  --files-from="$pot.files" --output="$pot"
rm -f "$pot.files"
# The header's charset is left as CHARSET by xgettext when every text is ASCII.
sed -i 's/charset=CHARSET/charset=UTF-8/' "$pot"

if [ $# -eq 0 ]; then
  for lang in zh_CN ja en; do
    msgmerge --quiet --update --backup=none --previous --add-location=file --sort-by-file \
      "po/$lang.po" "$pot"
  done
  # The English catalogue only corrects some words: a text it has no
  # correction for reads as written (a changed one too, rather than an old
  # correction of another text).
  msgattrib --clear-fuzzy --empty --sort-by-file -o po/en.po po/en.po
  msgen --sort-by-file -o po/en.po po/en.po
fi
