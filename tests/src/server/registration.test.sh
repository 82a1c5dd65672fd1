#!/bin/bash
# Copies of the DLL in several folders and both widths, registered and removed one after another by regsvr32: what is
# registered works, whatever else is removed, and nothing is left in the end.
. "$(dirname "${BASH_SOURCE[0]}")/../../../tools/lib.sh"
cd "$ROOT"
bin=$BUILD
PRESET=registration # a Wine prefix of its own: the other tests want theirs registered
tools/wine-prefix
wine_env
work=$BUILD/demo/registration
rm -rf "$work"
create=$work/create.vbs
mkdir -p "$work"
cat >"$create" <<'SCRIPT'
WScript.Echo "TransMode " & CreateObject("QorvaneMBomBill.BomView").TransMode
SCRIPT

# copy PRESET FOLDER: a copy of the component; says its path.
copy() {
  mkdir -p "$work/$2"
  cp "$bin/$1/bin/QorvaneMBomBill.dll" "$work/$2/"
  echo "Z:$work/$2/QorvaneMBomBill.dll"
}
# in_width PRESET PROGRAM ARG…: a program of Wine's own, in that width.
in_width() {
  local folder=system32
  if [[ $1 == x86 ]]; then folder=syswow64; fi
  "$(loader "$1")" "C:\\windows\\$folder\\$2.exe" "${@:3}" </dev/null 2>/dev/null
}
register() { in_width "$1" regsvr32 /s "$2" || die "regsvr32 $2"; }
remove() { in_width "$1" regsvr32 /s /u "$2" || die "regsvr32 /u $2"; }
works() { in_width "$1" cscript //nologo "Z:$create" | tr -d '\r' | grep -qx 'TransMode 3'; }
must_work() { works "$1" || die "line ${BASH_LINENO[0]}: the component of $1 does not work"; }
must_not() { ! works "$1" || die "line ${BASH_LINENO[0]}: the component of $1 still works"; }

for preset in x64 x86; do
  register $preset "Z:$bin/$preset/bin/ErpStandIn.dll"
done
old64=$(copy x64 'an old copy of 64')
new64=$(copy x64 '物料 清单')
long=$(printf 'k%.0s' {1..100})
only86=$(copy x86 "$long/$(printf 'm%.0s' $(seq $((200 - ${#work} - 105))))")
must_not x64
must_not x86

# An older copy goes, the newer one stays.
register x64 "$old64"
must_work x64
register x64 "$new64"
remove x64 "$old64"
must_work x64
# The other width comes and goes.
must_not x86
register x86 "$only86"
must_work x86
must_work x64
remove x86 "$only86"
must_not x86
must_work x64
register x86 "$only86"
remove x64 "$new64"
must_not x64
must_work x86
# The type library is still known, for that width alone.
library() { in_width x64 reg query "HKLM\\Software\\Classes\\TypeLib" /s | tr -d '\r' | grep -a "$1"; }
library "$long" >/dev/null || die "the type library of x86 is not registered"
! library '物料' >/dev/null || die "the type library of x64 is still registered"
remove x86 "$only86"
must_not x86
# Removing what is not registered is no failure, and changes nothing.
remove x64 "$old64"

# All that is left of it in the registry is nothing. The server writes it when it ends.
wineserver -k
wineserver -w
! grep -a -i 'QorvaneMBomBill' "$WINEPREFIX/system.reg" "$WINEPREFIX/user.reg" || die "something is left"
