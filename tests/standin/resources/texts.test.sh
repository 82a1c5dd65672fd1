#!/bin/bash
# The texts: both files are sound and complete, and keep the markers %1, %2, %3 of their templates.
. "$(dirname "${BASH_SOURCE[0]}")/../../../tools/lib.sh"
cd "$ROOT/standin/resources"

for file in zh_Hant.po en.po; do
  counts=$(LC_ALL=C msgfmt --check --statistics -o /dev/null "$file" 2>&1) || true
  [[ $counts =~ ^[0-9]+\ translated\ messages\.$ ]] || die "$file: $counts"
  awk -F '"' -v file="$file" '
    function markers(text,  found) { found = ""; for (i = 1; i <= 3; ++i) if (index(text, "%" i)) found = found i; return found }
    $1 == "msgid " { key = $2 }
    $1 == "msgid " && key != "" && (key ~ /^ / || key ~ / $/) { print file ": blanks around \"" key "\""; bad = 1 }
    $1 == "msgstr " && markers(key) != markers($2) { print file ": other markers in \"" $2 "\""; bad = 1 }
    END { exit bad }' "$file"
done

keys() { grep '^msgid ' "$1" | sort; }
diff <(keys zh_Hant.po) <(keys en.po) || die "the files have different keys"
if LC_ALL=C grep -n '^msgstr .*[^ -~]' en.po; then die "en.po: not ASCII"; fi
