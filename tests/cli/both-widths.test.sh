#!/bin/bash
# A 32-bit and a 64-bit client, each with the component of its own width, use one database file at the same time: no
# change of either is lost.
. "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"
cd "$ROOT"
work=$BUILD/demo/both-widths
mkdir -p "$work"
rm -f "$work"/*
for PRESET in x86 x64; do
  export PRESET
  tools/wine-prepare --built
done
database=$work/shared.db
cp "$BUILD/demo/factory.db" "$database"

sql() { tools/wine-exec x64 "$BUILD/x64/bin/tsqlsh.exe" --tsv "$database" <<<"SET NOCOUNT ON
$1" | tr -d '\r'; }
sql "CREATE TABLE Clients (FName varchar(9) NOT NULL PRIMARY KEY, FRounds int NOT NULL DEFAULT 0, FOthers int NULL)
CREATE TABLE Rounds (FCount int NOT NULL)
INSERT INTO Rounds (FCount) VALUES (0)"

client() {
  local status=0
  timeout 300 tools/wine-exec "$1" cscript //nologo tests/cli/both-widths/client.vbs "Z:$database" "$1" "$2" \
    >"$work/$1.log" 2>&1 </dev/null || status=$?
  tr -d '\r' <"$work/$1.log" | tail -n 1 | grep -qx PASS && ((status == 0)) || { cat "$work/$1.log"; return 1; }
}
client x64 1003 &
other=$!
status=0
client x86 1005 || status=1
wait "$other" || status=1
((status == 0)) || die "a client failed"

# The first client to end has seen rounds of the other: they did run at the same time.
actual=$(sql "SELECT (SELECT FCount FROM Rounds) AS rounds, (SELECT COUNT(*) FROM Clients WHERE FRounds = 40) AS complete,
  (SELECT CASE WHEN MIN(FOthers) > 0 THEN 'yes' ELSE 'no' END FROM Clients) AS together
SELECT FInterID, FOperatorID FROM ICBOM WHERE FInterID IN (1003, 1005) ORDER BY FInterID")
expected=$'rounds\tcomplete\ttogether\n80\t2\tyes\n\nFInterID\tFOperatorID\n1003\t1003\n1005\t1005'
[[ $actual == "$expected" ]] || die "the database says: $actual"
