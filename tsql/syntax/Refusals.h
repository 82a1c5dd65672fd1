// What the dialect of SQL Server 2008 to 2019 has and the engine lacks, in one place: constructs, in the
// table below, and names, in the lists of Refusals.cpp. All of it is refused by its name with error 40510,
// never as a syntax error. What the server does not know either gets the server's own error. docs/dialect.md
// lists the same, and a test holds the two together.
#pragma once

#include <span>
#include <string_view>

#include "tsql/tsql.h"

namespace tsql {

struct Refusal {
  std::string_view name;    // the subject of the message
  std::string_view example; // a batch that is refused with it
};

inline constexpr Refusal kRefusedConstructs[] = {
    // expressions
    {"A collation that ignores accents", "SELECT 'a' COLLATE Latin1_General_CI_AI"},
    {"AT TIME ZONE", "SELECT GETDATE() AT TIME ZONE 'UTC'"},
    {"NEXT VALUE FOR", "SELECT NEXT VALUE FOR s"},
    {"CHAR of a part of a character of the code page", "SELECT CHAR(200)"},
    {"HASHBYTES with MD2 or MD4", "SELECT HASHBYTES('MD4', 'a')"},
    {"IS_SRVROLEMEMBER of a login", "SELECT IS_SRVROLEMEMBER('sysadmin', 'sa')"},
    {"Membership of a role other than public, db_owner and sysadmin", "SELECT IS_MEMBER('db_datareader')"},
    {"A CONVERT style that is not an integer constant",
     "DECLARE @i INT SET @i = 120 SELECT CONVERT(VARCHAR(30), GETDATE(), @i)"},
    {"A CONVERT style of the Hijri calendar", "SELECT CONVERT(NVARCHAR(30), GETDATE(), 130)"},
    {"The date part TZOFFSET", "SELECT DATEPART(TZOFFSET, SYSDATETIME())"},
    {"SUM or AVG with DISTINCT of a decimal",
     "CREATE TABLE #d (d DECIMAL(9,2)) SELECT SUM(DISTINCT d) FROM #d"},
    {"An ODBC escape sequence other than of a date or time", "SELECT {fn NOW()}"},
    {"A method of a value", "DECLARE @x VARCHAR(10) SELECT @x.value('a', 'int')"},
    {"A static method of a type", "SELECT geography::Parse('POINT(1 2)')"},
    {"A function of the schema sys", "SELECT sys.fn_varbintohexstr(0x01)"},
    {"IDENTITYCOL", "SELECT IDENTITYCOL FROM t"},
    {"ROWGUIDCOL", "SELECT ROWGUIDCOL FROM t"},
    {"A name with a dollar sign, such as $IDENTITY", "SELECT $IDENTITY FROM t"},
    // queries
    {"A column of an outer query in TOP, OFFSET or FETCH", "SELECT (SELECT TOP (x.a) a FROM t) FROM t x"},
    {"IDENTITY() in a SELECT INTO of a UNION, EXCEPT or INTERSECT",
     "SELECT IDENTITY(INT, 1, 1) AS i, a INTO u FROM t UNION ALL SELECT 1, 1"},
    {"SELECT INTO a filegroup", "SELECT a INTO u ON [PRIMARY] FROM t"},
    {"GROUP BY ALL", "SELECT a FROM t GROUP BY ALL a"},
    {"An aggregate of a column of an outer query", "SELECT (SELECT SUM(x.a) FROM t) FROM t x"},
    {"The COMPUTE clause", "SELECT a FROM t COMPUTE SUM(a)"},
    {"FOR XML, JSON or BROWSE", "SELECT a FROM t FOR XML AUTO"},
    {"WITH XMLNAMESPACES or CHANGE_TRACKING_CONTEXT", "WITH XMLNAMESPACES ('u' AS n) SELECT 1"},
    {"A recursive reference within a derived table",
     "WITH n(c) AS (SELECT 1 UNION ALL SELECT c FROM (SELECT c FROM n) x) SELECT c FROM n"},
    {"A window function in a recursive member",
     "WITH n(c) AS (SELECT 1 UNION ALL SELECT c + ROW_NUMBER() OVER (ORDER BY c) FROM n) SELECT c FROM n"},
    {"A common table expression with several recursive members",
     "WITH n(c) AS (SELECT 1 UNION ALL SELECT c FROM n UNION ALL SELECT c FROM n) SELECT c FROM n"},
    // sources
    {"A name with the part of another database", "SELECT a FROM other.dbo.t"},
    {"A function in place of a table", "SELECT value FROM OPENJSON('[1]')"},
    {"A changing statement in FROM", "SELECT a FROM (DELETE FROM t OUTPUT deleted.a) x"},
    {"APPLY of more than 256 columns",
     "SELECT x.a FROM t x CROSS APPLY (SELECT x.a, *, *, *, *, *, *, *, *, *, *, *, *, *, *, * "
     "FROM sys.columns q, sys.columns r, sys.columns s) y"},
    {"APPLY beside a RIGHT or FULL JOIN",
     "SELECT x.a FROM t x RIGHT JOIN (t y CROSS APPLY (SELECT y.a AS b) z) ON x.a = y.a"},
    {"PIVOT and UNPIVOT of a join", "SELECT a FROM t JOIN t u ON t.a = u.a PIVOT (SUM(a) FOR b IN ([x])) p"},
    {"TABLESAMPLE", "SELECT a FROM t TABLESAMPLE (10 PERCENT)"},
    {"FOR SYSTEM_TIME", "SELECT a FROM t FOR SYSTEM_TIME ALL"},
    // changes
    {"A second OUTPUT clause", "DELETE FROM t OUTPUT deleted.a INTO t (a) OUTPUT deleted.a"},
    {"INSERT TOP PERCENT", "INSERT TOP (1) PERCENT INTO t (a) SELECT 1"},
    {"INSERT TOP with EXEC or DEFAULT VALUES", "INSERT TOP (1) INTO t (a) EXEC p"},
    {"MERGE TOP", "MERGE TOP (1) t USING t u ON t.a = u.a WHEN MATCHED THEN DELETE;"},
    {"MERGE into anything but a table",
     "WITH c AS (SELECT a FROM t) MERGE c USING t u ON c.a = u.a WHEN MATCHED THEN DELETE;"},
    {"A join as the source of a MERGE",
     "MERGE t z USING t u JOIN t v ON u.a = v.a ON z.a = u.a WHEN MATCHED THEN DELETE;"},
    {"INSERT DEFAULT VALUES of a MERGE",
     "MERGE t z USING t u ON z.a = u.a WHEN NOT MATCHED THEN INSERT DEFAULT VALUES;"},
    {"OUTPUT of a MERGE", "MERGE t z USING t u ON z.a = u.a WHEN MATCHED THEN DELETE OUTPUT $action;"},
    {"OUTPUT of an UPDATE of a table with computed columns",
     "CREATE TABLE #c (a INT, b AS a) UPDATE #c SET a = 1 OUTPUT inserted.b"},
    {"A common table expression with INSERT ... VALUES",
     "WITH x AS (SELECT 1 AS a) INSERT INTO t (a) VALUES ((SELECT a FROM x))"},
    {"A method in the SET of an UPDATE", "UPDATE t SET b.WRITE('x', 0, 1)"},
    {"Changing a view", "INSERT INTO v (a) EXEC ('SELECT 1')"},
    {"Changing a query of several tables or of another query",
     "UPDATE x SET a = 1 FROM (SELECT y.a FROM t y, t z) x"},
    {"OUTPUT of a change through a query or view",
     "WITH x AS (SELECT a FROM t) DELETE FROM x OUTPUT deleted.a"},
    // statements
    {"A parameter or result that is a cursor", "CREATE PROCEDURE x @c CURSOR VARYING OUTPUT AS SELECT 1"},
    {"WAITFOR of a statement", "WAITFOR (RECEIVE 1 FROM q)"},
    {"USE of a system database", "USE master"},
    {"SET LANGUAGE of another one than us_english", "SET LANGUAGE German"},
    {"SET DATEFORMAT of another one than mdy", "SET DATEFORMAT dmy"},
    {"SET TEXTSIZE that cuts texts", "SET TEXTSIZE 100"},
    {"SET QUERY_GOVERNOR_COST_LIMIT of another one than 0", "SET QUERY_GOVERNOR_COST_LIMIT 5"},
    {"The isolation level SNAPSHOT", "SET TRANSACTION ISOLATION LEVEL SNAPSHOT"},
    {"EXEC of a text AT a server or AS a user", "EXEC ('SELECT 1') AS USER = 'dbo'"},
    {"RAISERROR of a severity that ends the connection", "RAISERROR ('x', 20, 1) WITH LOG"},
    {"EXEC WITH RESULT SETS", "EXEC p WITH RESULT SETS NONE"},
    {"A procedure with a number", "EXEC p;2"},
    {"A permission on something other than an object or a schema", "GRANT CREATE TABLE TO public"},
    {"RAISERROR with the number of a message of the server", "RAISERROR (14088, 16, 1)"},
    // definitions
    {"An object in a schema that the server makes itself", "CREATE TABLE guest.t (a INT)"},
    {"CREATE SCHEMA with what is in it", "CREATE SCHEMA s CREATE TABLE t (a INT)"},
    {"An owner of a schema other than dbo", "CREATE SCHEMA s AUTHORIZATION guest"},
    {"ALTER SCHEMA TRANSFER of something other than an object", "ALTER SCHEMA dbo TRANSFER TYPE::s.x"},
    {"sp_rename of something other than an object, a column or an index",
     "EXEC sp_rename 'x', 'y', 'DATABASE'"},
    {"sp_rename of a constraint",
     "CREATE TABLE checked (a INT CONSTRAINT k CHECK (a > 0)) EXEC sp_rename 'k', 'l'"},
    {"sp_rename of a table or view with triggers",
     "CREATE TABLE fired (a INT) EXEC ('CREATE TRIGGER tr ON fired FOR INSERT AS SELECT 1') EXEC sp_rename 'fired', 'f'"},
    {"sp_helptext of a column", "EXEC sp_helptext 'v', 'a'"},
    {"A name that the storage has for itself", "CREATE TABLE sqlite_x (a INT)"},
    {"A column of char, varchar, binary or varbinary with ANSI_PADDING off",
     "SET ANSI_PADDING OFF CREATE TABLE x (a VARCHAR(5))"},
    {"A comparison with NULL in a CHECK constraint or computed column with ANSI_NULLS off",
     "SET ANSI_NULLS OFF CREATE TABLE x (a INT CHECK (a <> NULL))"},
    {"A table of computed columns alone", "CREATE TABLE x (a AS 1)"},
    {"A property of a column such as SPARSE or ROWGUIDCOL", "CREATE TABLE x (a INT SPARSE)"},
    {"An identity column of more than 18 digits", "CREATE TABLE x (a DECIMAL(38,0) IDENTITY(1,1))"},
    {"An index within CREATE TABLE", "CREATE TABLE x (a INT, INDEX ix (a))"},
    {"A period of SYSTEM_TIME", "CREATE TABLE x (a INT, PERIOD FOR SYSTEM_TIME (b, c))"},
    {"A file table or a graph table", "CREATE TABLE x (a INT) AS NODE"},
    {"A partitioned table or index", "CREATE TABLE x (a INT) ON ps (a)"},
    {"A table or index option", "CREATE UNIQUE INDEX ix ON t (a) WITH (IGNORE_DUP_KEY = ON)"},
    {"WHERE of an index", "CREATE INDEX ix ON t (a) WHERE a > 1"},
    {"A value of the session in a CHECK constraint or computed column",
     "CREATE TABLE x (a INT CHECK (a > @@ROWCOUNT))"},
    {"A FOREIGN KEY constraint of a temporary table", "CREATE TABLE #x (a INT REFERENCES t (a))"},
    {"Changing a column where a schema-bound module uses several tables with one of its name",
     "CREATE TABLE p1 (a INT) CREATE TABLE p2 (a INT) EXEC ('CREATE VIEW p3 WITH SCHEMABINDING AS SELECT x.a "
     "FROM dbo.p1 x, dbo.p2 y') ALTER TABLE p1 DROP COLUMN a"},
    {"ALTER COLUMN ADD or DROP of a property", "ALTER TABLE t ALTER COLUMN a ADD SPARSE"},
    {"A view WITH ENCRYPTION", "CREATE VIEW x WITH ENCRYPTION AS SELECT a FROM t"},
    {"A view WITH CHECK OPTION", "CREATE VIEW x AS SELECT a FROM t WITH CHECK OPTION"},
    {"A procedure WITH EXECUTE AS or NATIVE_COMPILATION",
     "CREATE PROCEDURE x WITH EXECUTE AS OWNER AS SELECT 1"},
    {"A procedure FOR REPLICATION", "CREATE PROCEDURE x FOR REPLICATION AS SELECT 1"},
    {"A procedure with an external name", "CREATE PROCEDURE x AS EXTERNAL NAME a.b.c"},
    {"A function WITH EXECUTE AS or INLINE",
     "CREATE FUNCTION x () RETURNS INT WITH EXECUTE AS OWNER AS BEGIN RETURN 1 END"},
    {"A function with an external name", "CREATE FUNCTION x () RETURNS INT AS EXTERNAL NAME a.b.c"},
    {"A function of a user in a CHECK constraint or computed column",
     "CREATE TABLE x (a INT CHECK (dbo.f(a) > 0))"},
    {"A trigger ON DATABASE or ALL SERVER", "CREATE TRIGGER x ON DATABASE FOR CREATE_TABLE AS SELECT 1"},
    {"A trigger WITH EXECUTE AS, NATIVE_COMPILATION or SCHEMABINDING",
     "CREATE TRIGGER x ON t WITH EXECUTE AS OWNER FOR INSERT AS SELECT 1"},
    {"TRIGGER_NESTLEVEL with an argument", "SELECT TRIGGER_NESTLEVEL(1)"},
    {"NULL, NOT NULL or READONLY of a parameter", "CREATE PROCEDURE x @a INT NOT NULL AS SELECT 1"},
    {"TRUNCATE TABLE WITH PARTITIONS", "TRUNCATE TABLE t WITH (PARTITIONS (1))"},
};

// The name of a construct in the table. One that is not there does not compile.
class RefusedConstruct {
 public:
  template <size_t size>
  consteval RefusedConstruct(const char (&name)[size]) // NOLINT(google-explicit-constructor)
      : name_(Find({name, size - 1})) {}
  std::string_view Name() const { return name_; }

 private:
  static consteval std::string_view Find(std::string_view name) {
    for (const Refusal& refusal : kRefusedConstructs)
      if (refusal.name == name) return refusal.name;
    throw "not in the table of what is refused"; // NOLINT: it ends the compilation
  }

  std::string_view name_;
};

[[noreturn]] void Refuse(RefusedConstruct what, int line = 0);

// Names of the server that mean nothing here, by what they are names of.
enum class RefusedKind : uint8_t {
  Statement, // the words it begins with
  Create,    // the object, in words
  Alter,
  Drop,
  AlterTable, // the word behind the table's name
  Function,
  Type,
  Global, // @@name
  Option, // of SET, with the value if only that is refused
  TableHint,
  Procedure,
  SystemView,   // with its schema if it has one
  SystemColumn, // behind its view's name
};

// In capitals, but for the names of procedures and system views; sorted.
std::span<const std::string_view> RefusedNames(RefusedKind kind);

// Whether the name is in the list, in any case.
bool IsRefused(RefusedKind kind, std::string_view name);
[[noreturn]] void RefuseName(RefusedKind kind, std::string_view name, int line = 0);
// Refuses the name if it is in the list.
void RefuseIfListed(RefusedKind kind, std::string_view name, int line = 0);

} // namespace tsql
