#!/bin/bash
# The reference is up to date, has a page for each class, and says of each method what the pages are for.
. "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"
cd "$ROOT"
tools/reference --check
methods=$(grep -c '\[id(' src/server/QorvaneMBomBill.idl)
[[ $(cat docs/reference/*.md | grep -c '^## [A-Za-z0-9]*$') == "$methods" ]] || die "not every method has its section"
grep -q '^Function UpdateIcBomStatus(ByVal sDsn As String, ByVal lBomNumber As String) As Boolean$' \
  docs/reference/BomUpdate.md || die "no signature"
grep -q "^UPDATE ICBom SET FStatus=1, FUseStatus=1072 WHERE FBomNumber ='BOM000003'" docs/reference/BomUpdate.md ||
  die "no statement"
for text in 出现意外错误。 出現意外錯誤。 'An unexpected error occurred.'; do
  grep -qF "$text" docs/reference/CBomCheck.md || die "no message $text"
done
