#!/bin/bash
# tsqlsh as a user runs it: scripts and standard input, both forms of output, streams and exit statuses.
. "$(dirname "${BASH_SOURCE[0]}")/../../../tools/lib.sh"
cd "$ROOT"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The native one that belongs to the build.
program=$BUILD/${PRESET/x64/native}/bin/tsqlsh
tsqlsh() { "$program" "$@"; }
dbsetup() { "${program%/*}/dbsetup" "$@"; }

# expect WHAT ACTUAL EXPECTED
expect() {
  if [[ $2 != "$3" ]]; then
    printf 'FAIL %s\n  actual:\n%s\n  expected:\n%s\n' "$1" "$2" "$3"
    exit 1
  fi
}
# run [OPTION...] <<<SCRIPT: output, then what went to standard error, then the exit status.
run() {
  local status=0
  tsqlsh "$@" "$work/a.db" >"$work/out" 2>"$work/err" || status=$?
  cat "$work/out"
  sed 's/^/err: /' "$work/err"
  echo "status $status"
}

expect "a table" "$(run <<'SQL'
CREATE TABLE t (id INT NOT NULL CONSTRAINT PK_t PRIMARY KEY, name NVARCHAR(20) NULL, qty DECIMAL(9,2) NULL)
INSERT INTO t VALUES (1, N'车架 Frame', 1.5), (20, NULL, NULL)
go
SELECT id, name, qty, 'x' FROM t ORDER BY id
PRINT 'done'
SQL
)" '(2 rows affected)
id name       qty  (No column name)
-- ---------- ---- ----------------
 1 车架 Frame 1.50 x
20 NULL       NULL x

(2 rows affected)
done
status 0'

expect "tab-separated, NOCOUNT" "$(run --tsv <<'SQL'
SET NOCOUNT ON
SELECT id, name AS [a b] FROM t ORDER BY id SELECT CHAR(9) + CHAR(10) + '\' AS c, GETDATE() - GETDATE() AS d, 0x0AFF AS e
SQL
)" $'id\ta b\n1\t车架 Frame\n20\tNULL\n\nc\td\te\n\\t\\n\\\\\t1900-01-01 00:00:00.000\t0x0AFF\n\nstatus 0'

expect "errors, and on with the next batch" "$(run --tsv <<'SQL'
SELECT 1 AS a

SELECT 1 / 0
  Go
SELECT FROM t
GO
RAISERROR('by hand', 16, 3)
INSERT INTO t (id) VALUES (1)
GO 2
SELECT COUNT(*) AS n FROM t /*
GO
*/ WHERE name <> '
GO
'
SQL
)" "a
1

(1 rows affected)
n
1

(1 rows affected)
err: Msg 8134, Level 16, State 1, Line 3
err: Divide by zero error encountered.
err: Msg 156, Level 15, State 1, Line 1
err: Incorrect syntax near the keyword 'FROM'.
err: Msg 50000, Level 16, State 3, Line 1
err: by hand
err: Msg 2627, Level 14, State 1, Line 2
err: Violation of PRIMARY KEY constraint 'PK_t'. Cannot insert duplicate key in object 'dbo.t'.
err: Msg 50000, Level 16, State 3, Line 1
err: by hand
err: Msg 2627, Level 14, State 1, Line 2
err: Violation of PRIMARY KEY constraint 'PK_t'. Cannot insert duplicate key in object 'dbo.t'.
status 1"

printf '\xEF\xBB\xBFSELECT 1 AS one\r\nGO\r\n' >"$work/one.sql"
printf "SELECT N'二' AS two" >"$work/two.sql"
expect "files, CR LF, a byte order mark" "$(tsqlsh --tsv :memory:x "$work/one.sql" "$work/two.sql")" 'one
1

(1 rows affected)
two
二

(1 rows affected)'

status=0
tsqlsh :memory:x "$work/missing.sql" "$work/one.sql" >"$work/out" 2>"$work/err" || status=$?
expect "a missing file" "$status $(cat "$work/err")" "1 tsqlsh: $work/missing.sql cannot be read"
expect "after a missing file" "$(head -n 1 "$work/out")" one

status=0
tsqlsh --nothing :memory:x >/dev/null 2>"$work/err" || status=$?
expect "a wrong option" "$status $(head -n 1 "$work/err")" "2 usage: tsqlsh [--tsv] [--time] DATABASE [FILE...]"
echo text >"$work/no.db"
status=0
tsqlsh "$work/no.db" </dev/null 2>"$work/err" || status=$?
expect "no database" "$status $(cat "$work/err")" \
  "1 tsqlsh: Cannot open database \"$work/no.db\" requested by the login. The login failed."
for shell in tsqlsh dbsetup; do
  status=0
  $shell "$work/nowhere/x.db" "$work/one.sql" >"$work/out" 2>"$work/err" || status=$?
  expect "$shell without the folder" "$status $(cat "$work/out" "$work/err")" \
    "1 $shell: the folder of $work/nowhere/x.db is not there"
done
tsqlsh --time :memory:x "$work/one.sql" >/dev/null 2>"$work/err"
expect "--time" "$(sed 's/[0-9]*\.[0-9]*/N/' "$work/err")" "Time: N ms"
