#!/bin/bash
# A program under tools/wine64 has no random addresses, so that its heap never lies where Wine needs a page of its own.
. "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"
wine_env
if ! setarch -R true 2>/dev/null; then
  echo "skipped: the kernel or its container does not permit addresses that are not random"
  exit 77
fi

# The program reads its input until that ends.
exec {input}> >(exec "$ROOT/tools/wine64" cmd >/dev/null 2>&1)
program=$!
for ((times = 0; times < 100; ++times)); do
  [[ $(readlink "/proc/$program/exe") == */wine64 ]] && break
  sleep 0.1
done
[[ $(readlink "/proc/$program/exe") == */wine64 ]] || die "the process is not Wine's loader: $(readlink "/proc/$program/exe")"
personality=$(cat "/proc/$program/personality")
(((16#$personality & 16#0040000) != 0)) || die "the addresses are random: personality $personality"
exec {input}>&-
