#!/bin/bash
# The installed component writes its log when the environment asks for one, and none otherwise.
. "$(dirname "${BASH_SOURCE[0]}")/../../../tools/lib.sh"
cd "$ROOT"
tools/wine-prepare --built
log=$(mktemp -u -p "$BUILD" diagnostic-XXXXXX.log)
trap 'rm -f "$log" "$log.1"' EXIT
call() {
  tools/wine-exec "$PRESET" "$BUILD/$PRESET/bin/bomcall.exe" BomUpdate.UpdateIcBomStatus lBomNumber=none \
    --dsn "Provider=Embedded;Data Source=:memory:;Password=secret" </dev/null >/dev/null 2>&1 || true
}
call
[[ ! -e $log ]]
QORVANEMBOMBILL_LOG="Z:${log//\//\\}" call
grep -q '"class":"BomUpdate","method":"UpdateIcBomStatus","event":"begin"' "$log"
grep -q '"event":"set-up","text":".*Password=\*\*\*' "$log"
tail -n 1 "$log" | grep -q '"event":"end"'
! grep -q secret "$log"
