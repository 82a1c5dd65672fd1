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
expect "--check" "$(status_of bomcall --check)" 0
expect "--version" "$(bomcall --version </dev/null)" "bomcall $(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)"
expect "--list" "$(bomcall --list </dev/null | grep -c '^[A-Za-z]')" 11

message=$(bomcall --lang chs --json BomUpdate.EndSave 'SaveVect=[{"FInterID": 1008}]' </dev/null |
  sed -n 's/.*"ReturnMsg": "\(.*\)".*/\1/p')
expect "UTF-8 out" "$message" "该BOM单为工程变更生成或已通过工程变更，不能审核和反审核!"

result=$(echo '[{"FInterID": 1008, "名称": "后轮"}]' | bomcall --json BomUpdate.EndSave SaveVect=@- |
  sed -n 's/.*"名称": "\(.*\)".*/\1/p')
expect "UTF-8 in" "$result" "后轮"
expect "UTF-8 in an argument" "$(bomcall --json BomUpdate.EndSave 'SaveVect=[{"FInterID":1008}]' 'ReturnMsg=后轮' \
  --dsn 'nothing' </dev/null | sed -n 's/.*"ReturnMsg": "\(.*\)".*/\1/p')" "后轮"

printf '\xff\xfe[\0]\0' >"$database.json"
printf '[{"\xc2\xd6": 1}]' >"$database.gbk"
trap 'rm -f "$database" "$database-wal" "$database-shm" "$database.json" "$database.gbk"' EXIT
expect "a UTF-16 file" "$(status_of bomcall BomUpdate.EndSave "SaveVect=@$database.json")" 0
expect "a GBK file" "$(status_of bomcall BomUpdate.EndSave "SaveVect=@$database.gbk")" 2
expect "a GBK file that is said to be one" "$(status_of bomcall --encoding gbk BomUpdate.EndSave "SaveVect=@$database.gbk")" 0
expect "a condition that holds" "$(status_of bomcall BomUpdate.EndSave SaveVect=[] --fail-if Result=False)" 3
expect "rows as CSV" "$(bomcall --csv BomInfo.GetInfo 'strSql=SELECT FName FROM t_MeasureUnit WHERE FItemID < 103' </dev/null | tr -d '\r')" $'FName\n件\n打'
expect "no colour in a pipe" "$(bomcall BomInfo.GetInfo 'strSql=SELECT 1 AS n' </dev/null | head -n 2 | tail -n 1)" "n"

printf '%s\n' '{"call": "CBomFunction.GetRoutingData", "arguments": {"LongNumber": true, "FInterID": 0}}' \
  '{"call": "CBomFunction.GetMaxNum", "arguments": {"strName": "ICBOM"}, "as": "id"}' >"$database.json"
expect "a batch" "$(bomcall --json --batch "$database.json" 2>/dev/null </dev/null | tail -n 1)" \
  '{"line":2,"call":"CBomFunction.GetMaxNum","result":3004,"arguments":{}}'
expect "its summary" "$(bomcall --batch "$database.json" 2>&1 >/dev/null </dev/null)" "bomcall: 2 calls made, 0 failed, 0 left out"
echo '{"call": "BomUpdate.UpdateIcBomStatus", "arguments": {"lBomNumber": "a'"'"'b"}}' >>"$database.json"
expect "a batch that fails" "$(status_of bomcall --batch "$database.json")" 1
expect "what it kept" "$(bomcall --batch "$database.json" 2>&1 >/dev/null </dev/null)" \
  "bomcall: 3 calls made, 1 failed, 0 left out; nothing was kept"
expect "a condition in a batch" "$(status_of bomcall --batch "$database.json" --fail-if Result=3006)" 3
expect "a check with findings" "$(status_of bomcall bom check)" 3
expect "a report" "$(bomcall --csv bom where-used 03.001 --top --columns bom </dev/null | tr -d '\r')" $'bom\nPLN000001'
# Its own lines, those of the customer BOM that its first line is built from, and an ordinary BOM's.
expect "a customer's tree" "$(bomcall --csv bom tree KH0001 --depth 2 --columns level,item,bom </dev/null | tr -d '\r' | head -n 7)" \
  $'level,item,bom\n0,01.003,KH0001\n1,02.001,KH0002\n2,04.001,\n2,05.002,\n1,02.002,BOM000005\n2,03.005,'
expect "help on reports" "$(bomcall bom tree --help </dev/null | head -n 1 | cut -c 1-19)" "bomcall bom reports"

# On a terminal: what the tests of the console cannot see without one, and the code page that it had before.
on_terminal() { script -qec "$(printf '%q ' "$@")" /dev/null </dev/null; }
on_terminal tools/wine-exec "$PRESET" "$BUILD/$PRESET/bin/bomcall_tests.exe" '--gtest_filter=Console.*' \
  "--gtest_output=xml:Z:$database.json" >/dev/null
expect "the console's tests" "$(grep -c 'status="run" result="completed"' "$database.json")" 3
program=${BUILD#"$ROOT/"}/$PRESET/bin/bomcall.exe
expect "the code page after an error" "$(on_terminal tools/wine-exec "$PRESET" cmd /c \
  "chcp 437 & ${program//\//\\} NoSuch.Method & chcp" | grep -c '437')" 2

# Ctrl+C amid a batch that is one unit of work: nothing of it is kept.
for ((i = 0; i < 1000; ++i)); do
  echo '{"call": "BOMImport.UpdateBomGroup", "arguments": {"tDict": {"Number": "I'$i'", "Name": "n", "Parent": 0}}}'
done >"$database.json"
mkfifo "$database.keys"
trap 'rm -f "$database" "$database-wal" "$database-shm" "$database."{json,gbk,keys,out}' EXIT
exec {keys}<>"$database.keys"
command=$(printf '%q ' tools/wine-exec "$PRESET" "$BUILD/$PRESET/bin/bomcall.exe" --json --batch "$database.json")
script -qec "$command >$(printf %q "$database.out")" /dev/null <&"$keys" >/dev/null &
terminal=$!
for ((i = 0; i < 600; ++i)); do
  if grep -qs '"line":20,' "$database.out"; then break; fi
  sleep 0.1
done
printf '\x03' >&"$keys"
wait "$terminal" || true
exec {keys}>&-
expect "calls made before Ctrl+C" "$(grep -c '"line":20,' "$database.out")" 1
expect "calls made after Ctrl+C" "$(grep -c '"line":1000,' "$database.out" || true)" 0
expect "groups after Ctrl+C" "$(bomcall --csv BomInfo.GetInfo "strSql=SELECT COUNT(*) AS n FROM ICBOMGroup WHERE FNumber LIKE 'I%'" </dev/null |
  tr -d '\r')" $'n\n0'

# Completion: what bash offers after a line that ends with the word to complete.
. cli/completion/bomcall.bash
offered() {
  COMP_WORDS=(bomcall "$@")
  COMP_CWORD=$#
  _bomcall
  printf '%s ' "${COMPREPLY[@]}"
}
expect "methods" "$(offered BomUpdate.Upd)" "BomUpdate.UpdateIcBomStatus BomUpdate.UpdateBomGroup BomUpdate.UpdateBOM "
expect "parameters" "$(offered --lang en BomUpdate.UpdateIcBomStatus l)" "lBomNumber= "
expect "options" "$(offered --ver)" "--version --vertical "
expect "languages" "$(offered --lang c)" "chs cht "
expect "classes" "$(offered --list BomU)" "BomUpdate "
expect "files of an argument" "$(offered BomUpdate.EndSave SaveVect =@ demo/import/b)" "demo/import/bom.json "
