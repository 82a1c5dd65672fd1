#!/bin/bash
# CharacterWidthTable.sh FILE: writes the ranges of characters that take no column of a terminal or two, in their order,
# as {first, last, columns}, from Unicode's data on the machine that builds (Debian's package unicode-data).
#
# Wide and full-width characters take two. None take accents, and characters that only direct others (categories Mn, Me and
# Cf, which the data has as remarks), but the soft hyphen, and the Hangul vowels and finals that join the letter before them.
set -euo pipefail
export LC_ALL=C

folder=/usr/share/unicode
for file in EastAsianWidth.txt HangulSyllableType.txt; do
  [[ -f $folder/$file ]] || { echo "$folder/$file is missing: install the package unicode-data" >&2; exit 1; }
done

{
  sed -n 's/^\([0-9A-F.]*\) *; *[VT] #.*/\1 0/p' "$folder/HangulSyllableType.txt"
  awk -F '[;#]' '/^[0-9A-F]/ {
    gsub(/ /, "", $1); gsub(/ /, "", $2); split($3, remark, " ")
    if (remark[1] ~ /^(Mn|Me|Cf)$/ && $1 != "00AD") print $1, 0
    else if ($2 == "W" || $2 == "F") print $1, 2
  }' "$folder/EastAsianWidth.txt"
} |
  awk '{
    split($1, ends, "[.][.]")
    printf "%6s %s %d\n", ends[1], ends[2] == "" ? ends[1] : ends[2], $2
  }' | sort |
  awk '
    { printf "{0x%s, 0x%s, %d},\n", $1, $2, $3; ++count[$3] }
    END { if (count[0] < 100 || count[2] < 50) { print "too few ranges in Unicode'\''s data" >"/dev/stderr"; exit 1 } }' >"$1.new"
mv "$1.new" "$1"
