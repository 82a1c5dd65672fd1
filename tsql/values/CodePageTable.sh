#!/bin/bash
# CodePageTable.sh PAGE FILE: writes the characters of a double-byte code page as iconv knows them: for each first byte
# from 81 to FE the UTF-16 codes of all second bytes from 40 to FE, 0 where there is no character.
set -euo pipefail
export LC_ALL=C

# One pair of bytes a line; iconv leaves out what is no character, and the ends of the lines stay.
awk 'BEGIN { for (lead = 129; lead < 255; ++lead) for (trail = 64; trail < 255; ++trail) printf "%c%c\n", lead, trail }' |
  iconv -c -f "CP$1" -t UTF-16BE |
  od -An -v -t x1 -w2 |
  awk '
    $1 $2 == "000a" {
      # Without its first byte the second one may be a letter of ASCII.
      isCharacter = count == 1 && code > "007f"
      printf "%s%s", (isCharacter ? "0x" code : "0"), (++lines % 191 == 0 ? ",\n" : ",")
      count = 0
      next
    }
    { code = $1 $2; ++count }
    END { if (lines != 126 * 191) { print "only " lines " pairs of bytes" >"/dev/stderr"; exit 1 } }' >"$2.new"
mv "$2.new" "$2"
