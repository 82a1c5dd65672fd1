#!/bin/bash
# bomcall as a user runs it: exit statuses, streams, UTF-8 in and out.
. "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"
cd "$ROOT"
tools/wine-prepare --built
database=$BUILD/demo/bomcall-test-$PRESET.db
cp "$BUILD/demo/factory.db" "$database"
trap 'rm -f "$database" "$database-wal" "$database-shm"' EXIT
export BOMCALL_DSN="Provider=Embedded;Data Source=$database;User ID=16401;Now=2026-03-31 09:15:00"
bomcall() { tools/wine-exec "$PRESET" "$BUILD/$PRESET/bin/bomcall.exe" "$@"; }

# expect WHAT ACTUAL EXPECTED
expect() {
  if [[ $2 != "$3" ]]; then
    printf 'FAIL %s\n  actual:   %s\n  expected: %s\n' "$1" "$2" "$3"
    exit 1
  fi
}
status_of() {
  local status=0
  "$@" >/dev/null 2>&1 </dev/null || status=$?
  echo "$status"
}

expect "a call" "$(status_of bomcall BomUpdate.UpdateIcBomStatus lBomNumber=none)" 0
expect "a COM error" "$(status_of bomcall BomUpdate.UpdateIcBomStatus "lBomNumber=a'b")" 1
expect "a wrong command line" "$(status_of bomcall BomUpdate)" 2
expect "an unknown method" "$(status_of bomcall BomUpdate.Nothing)" 2
expect "the hint" "$(bomcall BomUpdate 2>&1 >/dev/null </dev/null | tail -n 1)" "bomcall --help tells how it is used."
expect "--list" "$(bomcall --list </dev/null | grep -c '^[A-Za-z]')" 11

message=$(bomcall --lang chs --json BomUpdate.EndSave 'SaveVect=[{"FInterID": 1008}]' </dev/null |
  sed -n 's/.*"ReturnMsg": "\(.*\)".*/\1/p')
expect "UTF-8 out" "$message" "该BOM单为工程变更生成或已通过工程变更，不能审核和反审核!"

result=$(echo '[{"FInterID": 1008, "名称": "后轮"}]' | bomcall --json BomUpdate.EndSave SaveVect=@- |
  sed -n 's/.*"名称": "\(.*\)".*/\1/p')
expect "UTF-8 in" "$result" "后轮"
expect "UTF-8 in an argument" "$(bomcall --json BomUpdate.EndSave 'SaveVect=[{"FInterID":1008}]' 'ReturnMsg=后轮' \
  --dsn 'nothing' </dev/null | sed -n 's/.*"ReturnMsg": "\(.*\)".*/\1/p')" "后轮"
