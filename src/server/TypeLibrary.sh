#!/bin/bash
# TypeLibrary.sh OUTPUT WIDL ARGUMENT…: runs widl and makes the library say the same whenever that is. widl notes the time
# in it twice, as text and as a number.
set -euo pipefail
output=$1
shift
"$@" -o "$output.new"
perl -0777 -pi -e '
  s/(Created by WIDL version \S+ at ).{24}(\n.{0,3}?\x13\0).{4}/$1Thu Jan  1 00:00:00 1970$2\0\0\0\0/s
    or die "no time was found in the type library\n"' "$output.new"
mv "$output.new" "$output"
