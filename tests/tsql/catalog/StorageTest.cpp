// What a database file looks like from outside, with SQLite alone: the numbers and texts here are those of
// docs/storage.md, and a file that was once written has them.
#include "tsql/catalog/Storage.h"

#include <sqlite3.h>

#include <map>

#include "tests/tsql/FileTest.h"
#include "tsql/functions/ComputeProgram.h"
#include "tsql/values/DateTime.h"

namespace tsql::test {
namespace {

class StorageTest : public FileTest {
 protected:
  // The rows of SQLite's answer, their columns joined by "|".
  Lines Ask(const std::string& sql) {
    sqlite3* file = nullptr;
    EXPECT_EQ(sqlite3_open(path_.c_str(), &file), SQLITE_OK);
    // Without it SQLite would refuse a CHECK that calls it.
    const auto range = [](sqlite3_context* context, int /*count*/, sqlite3_value** values) {
      sqlite3_result_value(context, values[0]);
    };
    sqlite3_create_function(file, "t_range", 2, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, range, nullptr,
                            nullptr);
    Lines rows;
    const auto add = [](void* list, int count, char** values, char** /*names*/) {
      std::string row;
      for (int i = 0; i < count; ++i) row += std::string(i > 0 ? "|" : "") + (values[i] ? values[i] : "NULL");
      static_cast<Lines*>(list)->push_back(row);
      return 0;
    };
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(file, sql.c_str(), add, &rows, &error), SQLITE_OK) << sql << ": " << error;
    sqlite3_free(error);
    sqlite3_close(file);
    return rows;
  }
  void Must(std::string_view batch) {
    const auto session = Session::Open(Database::Open(path_, OpenMode::Create));
    const Output output = RunOn(*session, batch);
    for (const Error& error : output.errors) ADD_FAILURE() << error.what();
  }
};

TEST_F(StorageTest, FilesAreMarkedWithTheirVersion) {
  Must("CREATE TABLE t (a INT)");
  EXPECT_EQ(Ask("PRAGMA application_id"), Lines({"1951617356"})); // "tSQL"
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
}

// Older engines read a file as long as there is nothing in it that they do not know.
TEST_F(StorageTest, AFunctionMakesTheFileOneOfTheSecondVersion) {
  Must("CREATE TABLE t (a INT) INSERT t VALUES (1)");
  Must("CREATE PROCEDURE p AS SELECT 1");
  Must("BEGIN TRAN EXEC ('CREATE FUNCTION f () RETURNS INT AS BEGIN RETURN 1 END') ROLLBACK");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
  Must("CREATE FUNCTION f () RETURNS INT AS BEGIN RETURN 1 END");
  Must("CREATE FUNCTION g () RETURNS TABLE AS RETURN SELECT 1 AS a");
  Must("CREATE FUNCTION h () RETURNS @r TABLE (a INT) AS BEGIN RETURN END");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"2"}));
  EXPECT_EQ(Ask("SELECT name, kind FROM \"~modules\" ORDER BY name"), Lines({"f|3", "g|4", "h|5", "p|2"}));
}

TEST_F(StorageTest, ATimeOrDateTime2MakesTheFileOneOfTheSecondVersion) {
  Must(
      "CREATE TABLE t (a DATE, b DATETIME, CHECK (YEAR(b) > 1900)) CREATE TABLE #t (a TIME, CHECK (a > '1:00'))");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
  Must("CREATE TABLE u (a TIME(3))");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"2"}));
  EXPECT_EQ(Ask("SELECT type FROM \"~columns\" WHERE table_name = 'u'"),
            Lines({std::to_string(23 + 3 * 65536)}));
  // 100 ns since midnight.
  Must("INSERT INTO u VALUES ('00:00:01.5')");
  EXPECT_EQ(Ask("SELECT a FROM u"), Lines({"15000000"}));
}

TEST_F(StorageTest, AConditionWithADateTime2MakesTheFileOneOfTheSecondVersion) {
  Must("CREATE TABLE t (a DATETIME, CHECK (a < CAST('2100-01-01' AS DATETIME2)))");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"2"}));
}

TEST_F(StorageTest, NewerFilesAreRefused) {
  Must("CREATE TABLE t (a INT)");
  Ask("PRAGMA user_version = 9");
  for (const OpenMode mode : {OpenMode::Existing, OpenMode::Create}) {
    try {
      Database::Open(path_, mode);
      FAIL() << "opened";
    } catch (const Error& error) {
      EXPECT_EQ(error.number, 948);
      const std::string name = std::filesystem::path(path_).stem().string();
      EXPECT_EQ(error.what(),
                "The database '" + name +
                    "' cannot be opened because it is version 9. This server supports version 8 "
                    "and earlier. A downgrade path is not supported.");
    }
  }
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"9"}));
}

TEST_F(StorageTest, ACollationMakesTheFileOneOfTheSeventhVersion) {
  Must("CREATE TABLE t (a VARCHAR(5) COLLATE Chinese_PRC_CI_AS, b NCHAR(5) COLLATE database_default)"
       " CREATE TABLE #t (a VARCHAR(5) COLLATE Chinese_PRC_BIN) DROP TABLE #t");
  Must("BEGIN TRAN CREATE TABLE u (a VARCHAR(5) COLLATE Chinese_PRC_BIN) ROLLBACK");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
  EXPECT_EQ(Ask("SELECT COUNT(*) FROM sqlite_schema WHERE name = '~collations'"), Lines({"0"}));
  Must(
      "CREATE TABLE u (a INT, b VARCHAR(5) COLLATE Chinese_PRC_BIN, c VARCHAR(5) COLLATE Latin1_General_CI_AS,"
      " d VARCHAR(5) COLLATE Chinese_PRC_CS_AS UNIQUE)");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"7"}));
  EXPECT_EQ(Ask("SELECT * FROM \"~collations\" ORDER BY ordinal"),
            Lines({"u|1|Chinese_PRC_BIN", "u|2|Latin1_General_CI_AS", "u|3|Chinese_PRC_CS_AS"}));
  EXPECT_EQ(
      Ask("SELECT sql FROM sqlite_schema WHERE name = 'u'"),
      Lines({"CREATE TABLE \"u\"(\"a\" INTEGER, \"b\" TEXT COLLATE tsql_binary, \"c\" TEXT COLLATE tsql, "
             "\"d\" TEXT COLLATE tsql_cased)"}));
  // Another session finds the columns as they were made.
  Must(
      "INSERT u (b, d) VALUES ('a', 'a'), ('A', 'A') IF (SELECT COUNT(*) FROM u WHERE b = 'a' AND d = 'a') <> 1"
      " RAISERROR('told apart no longer', 16, 1)");
  Must("EXEC sp_rename 'u', 'v' ALTER TABLE v DROP COLUMN a");
  EXPECT_EQ(Ask("SELECT * FROM \"~collations\" ORDER BY ordinal"),
            Lines({"v|0|Chinese_PRC_BIN", "v|1|Latin1_General_CI_AS", "v|2|Chinese_PRC_CS_AS"}));
  Must("DROP TABLE v");
  EXPECT_EQ(Ask("SELECT COUNT(*) FROM \"~collations\""), Lines({"0"}));
}

TEST_F(StorageTest, ACollationInAConditionMakesTheFileOneOfTheSeventhVersion) {
  Must("CREATE TABLE t (a VARCHAR(5) CHECK (a COLLATE Chinese_PRC_CI_AS > 'a'))");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
  Must("CREATE TABLE u (a VARCHAR(5) CHECK (a COLLATE Chinese_PRC_BIN > 'a'))");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"7"}));
}

TEST_F(StorageTest, AModuleMadeWithAnOptionOffMakesTheFileOneOfTheEighthVersion) {
  Must("CREATE PROCEDURE p AS SELECT 1");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
  Must("SET ANSI_NULLS OFF EXEC ('CREATE VIEW v AS SELECT 1 AS a')");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"8"}));
  Must("SET QUOTED_IDENTIFIER OFF EXEC ('CREATE PROCEDURE q AS RAISERROR (\"text\", 0, 1)')");
  EXPECT_EQ(Ask("SELECT name, kind FROM \"~modules\" ORDER BY name"),
            Lines({"p|2", "q|" + std::to_string(2 + 64), "v|" + std::to_string(1 + 32)}));
  Must("EXEC q"); // another session reads it as it was made
}

TEST_F(StorageTest, AReferentialActionMakesTheFileOneOfTheSixthVersion) {
  Must("CREATE TABLE p (id INT PRIMARY KEY)"
       " CREATE TABLE t (a INT CONSTRAINT plain REFERENCES p ON DELETE NO ACTION ON UPDATE NO ACTION)");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
  Must("BEGIN TRAN CREATE TABLE u (a INT REFERENCES p ON DELETE CASCADE) ROLLBACK");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
  Must("CREATE TABLE u (a INT CONSTRAINT d REFERENCES p ON DELETE CASCADE)");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"6"}));
  Must("CREATE TABLE v (a INT CONSTRAINT b REFERENCES p ON DELETE SET DEFAULT ON UPDATE SET NULL)"
       " CREATE TABLE w (a INT CONSTRAINT o REFERENCES p ON UPDATE CASCADE)"
       " ALTER TABLE w NOCHECK CONSTRAINT o");
  EXPECT_EQ(Ask("SELECT name, kind FROM \"~keys\" WHERE check_text <> '' ORDER BY name"),
            Lines({"b|357", "d|37", "o|149", "plain|5"}));
}

TEST_F(StorageTest, ATriggerMakesTheFileOneOfTheFourthVersion) {
  Must("CREATE TABLE t (a INT)");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
  for (const char* name : {"y", "x"})
    Must("CREATE TRIGGER " + std::string(name) + " ON t FOR INSERT AS PRINT 'x'");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"4"}));
  Must("DISABLE TRIGGER y ON t");
  EXPECT_EQ(Ask("SELECT name, kind, text FROM \"~modules\" ORDER BY rowid"),
            Lines({"y|22|CREATE TRIGGER y ON t FOR INSERT AS PRINT 'x'",
                   "x|6|CREATE TRIGGER x ON t FOR INSERT AS PRINT 'x'"}));
}

TEST_F(StorageTest, ASchemaMakesTheFileOneOfTheFifthVersion) {
  Must("CREATE TABLE t (a INT)");
  Must("DROP SCHEMA IF EXISTS missing");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
  EXPECT_EQ(Ask("SELECT COUNT(*) FROM sqlite_schema WHERE name = '~schemas'"), Lines({"0"}));
  Must("CREATE SCHEMA sales");
  Must("CREATE SCHEMA [a b]");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"5"}));
  EXPECT_EQ(Ask("SELECT * FROM \"~schemas\" ORDER BY id"), Lines({"5|sales", "6|a b"}));
  Must("CREATE TABLE sales.t (a INT CONSTRAINT pk PRIMARY KEY, b VARCHAR(3) CONSTRAINT uq UNIQUE)"
       " CREATE TABLE [a b].u (a INT CONSTRAINT fk REFERENCES sales.t)");
  Must("CREATE VIEW sales.v AS SELECT a FROM t");
  EXPECT_EQ(Ask("SELECT name FROM \"~tables\" ORDER BY name"), Lines({"t", "~5~t", "~6~u"}));
  EXPECT_EQ(Ask("SELECT table_name, name FROM \"~columns\" WHERE table_name <> 't' ORDER BY 1, 2"),
            Lines({"~5~t|a", "~5~t|b", "~6~u|a"}));
  EXPECT_EQ(Ask("SELECT table_name, name, check_text FROM \"~keys\" ORDER BY table_name, name"),
            Lines({"~5~t|pk|", "~5~t|uq|", "~6~u|fk|~5~t\na"}));
  EXPECT_EQ(Ask("SELECT name, text FROM \"~modules\""),
            Lines({"~5~v|CREATE VIEW sales.v AS SELECT a FROM t"}));
  EXPECT_EQ(Ask("SELECT name FROM sqlite_schema WHERE name LIKE '%uq%' OR type = 'trigger' ORDER BY name"),
            Lines({"~5~t.uq", "~5~t.uq~", "~~6~fk~d", "~~6~fk~i", "~~6~fk~p", "~~6~fk~u"}));
  const auto session = Session::Open(Database::Open(path_, OpenMode::Existing));
  EXPECT_EQ(RunOn(*session, "INSERT INTO sales.t VALUES (1, 'x') SELECT a FROM sales.v").results,
            std::vector<Lines>({{"1"}}));
}

// Such a name was allowed before there were schemas.
TEST_F(StorageTest, ATableWhoseNameLooksLikeAKeyKeepsItsName) {
  Must("CREATE TABLE t (a INT)");
  Ask("UPDATE \"~tables\" SET name = '~5~t'; UPDATE \"~columns\" SET table_name = '~5~t';"
      "ALTER TABLE t RENAME TO \"~5~t\"");
  const auto session = Session::Open(Database::Open(path_, OpenMode::Existing));
  EXPECT_TRUE(RunOn(*session, "INSERT INTO [~5~t] VALUES (3)").errors.empty());
  EXPECT_TRUE(RunOn(*session, "CREATE SCHEMA sales").errors.empty());
  EXPECT_EQ(Ask("SELECT id FROM \"~schemas\""), Lines({"6"}));
  EXPECT_EQ(RunOn(*session, "SELECT a FROM dbo.[~5~t]").results, std::vector<Lines>({{"3"}}));
}

TEST_F(StorageTest, ATriggersDamagedTextIsNoticed) {
  Must("CREATE TABLE t (a INT)");
  Must("CREATE TRIGGER x ON t FOR INSERT AS PRINT 'x'");
  for (const char* text : {"SELECT 1", "CREATE TRIGGER x ON", ""}) {
    Ask("UPDATE \"~modules\" SET text = '" + std::string(text) + "'; PRAGMA schema_version = 1000");
    const auto session = Session::Open(Database::Open(path_, OpenMode::Existing));
    Output output;
    session->Execute("SELECT a FROM t", {}, output);
    ASSERT_EQ(output.errors.size(), 1U) << text;
    EXPECT_EQ(output.errors[0].number, 823) << text;
  }
}

TEST_F(StorageTest, NamedDefaultsMakeTheFileOneOfTheThirdVersion) {
  Must("CREATE TABLE t (a INT DEFAULT 1, b INT, CONSTRAINT ck CHECK (b > 0))");
  Must("ALTER TABLE t ADD DEFAULT 2 FOR b");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
  Must("ALTER TABLE t ADD c INT CONSTRAINT df DEFAULT 3");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"3"}));
  EXPECT_EQ(Ask("SELECT * FROM \"~keys\" ORDER BY kind"), Lines({"t|ck|4||(b > 0)", "t|df|6|2|"}));
  EXPECT_EQ(Ask("SELECT name, default_text FROM \"~columns\" ORDER BY ordinal"),
            Lines({"a|1", "b|2", "c|3"}));
}

TEST_F(StorageTest, ConstraintsThatAreSwitchedOffMakeItOneToo) {
  Must("CREATE TABLE t (a INT PRIMARY KEY, b INT, CONSTRAINT ck CHECK (b > 0), CONSTRAINT fk FOREIGN KEY (b) "
       "REFERENCES t)");
  Must("ALTER TABLE t NOCHECK CONSTRAINT ALL INSERT INTO t VALUES (1, -1)");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"3"}));
  EXPECT_EQ(Ask("SELECT name, kind FROM \"~keys\" WHERE kind > 0 ORDER BY kind"), Lines({"ck|20", "fk|21"}));
  EXPECT_EQ(Ask("SELECT COUNT(*) FROM sqlite_schema WHERE type = 'trigger'"), Lines({"0"}));
  Must("INSERT INTO t VALUES (2, -2)");
}

TEST_F(StorageTest, ComputedColumns) {
  Must("CREATE TABLE t (a INT, b AS a * 2, c AS (a + 1) PERSISTED)");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"3"}));
  EXPECT_EQ(Ask("SELECT name, type, nullable, identity, default_text FROM \"~columns\" ORDER BY ordinal"),
            Lines({"a|2|1|0|", "b|2|1|2|a * 2", "c|2|1|3|(a + 1)"}));
}

TEST_F(StorageTest, IdentityColumnsThatAreNotTheRowid) {
  Must("CREATE TABLE t (id INT IDENTITY(3,1), a INT) INSERT INTO t VALUES (1)");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
  Must("CREATE TABLE u (id INT IDENTITY(3,-2), a INT) INSERT INTO u VALUES (1), (2)");
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"6"}));
  EXPECT_EQ(Ask("SELECT name, seed, rowid_column FROM \"~tables\" ORDER BY name"),
            Lines({"t|3|0", "u|3|-1"}));
  EXPECT_EQ(Ask("SELECT table_name, identity, default_text FROM \"~columns\" WHERE identity > 0 ORDER BY 1"),
            Lines({"t|1|", "u|4|-2"}));
  EXPECT_EQ(Ask("SELECT * FROM \"~identities\""), Lines({"u|1"}));
  // A number that is given may be there twice.
  Must("SET IDENTITY_INSERT t ON INSERT INTO t (id, a) VALUES (3, 2), (9, 3)");
  EXPECT_EQ(Ask("SELECT rowid_column FROM \"~tables\" WHERE name = 't'"), Lines({"-1"}));
  EXPECT_EQ(Ask("SELECT name, last FROM \"~identities\" ORDER BY name"), Lines({"t|9", "u|1"}));
  Must("DROP TABLE t TRUNCATE TABLE u");
  EXPECT_EQ(Ask("SELECT * FROM \"~identities\""), Lines({}));
  EXPECT_EQ(OpenError(path_, OpenMode::Existing), 0);
}

TEST_F(StorageTest, FilesWithoutVersionAreReadAndMarked) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (7)");
  Ask("PRAGMA user_version = 0");
  const auto session = Session::Open(Database::Open(path_, OpenMode::Existing));
  EXPECT_EQ(RunOn(*session, "SELECT a FROM t").results, std::vector<Lines>({{"7"}}));
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
}

TEST_F(StorageTest, FilesWithoutVersionOpenWhileAnotherSessionWrites) {
  Must("CREATE TABLE t (a INT)");
  Ask("PRAGMA user_version = 0");
  const Connection writer(path_, SQLITE_OPEN_READWRITE);
  writer.Run("BEGIN IMMEDIATE");
  EXPECT_EQ(OpenError(path_, OpenMode::Existing), 0);
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"0"}));
  writer.Run("COMMIT");
  EXPECT_EQ(OpenError(path_, OpenMode::Existing), 0);
  EXPECT_EQ(Ask("PRAGMA user_version"), Lines({"1"}));
}

TEST_F(StorageTest, TablesAndColumns) {
  Must("CREATE TABLE Part (id INT IDENTITY(5,1), name NVARCHAR(30) NULL DEFAULT 'x', price DECIMAL(9,2))");
  EXPECT_EQ(Ask("SELECT * FROM \"~tables\""), Lines({"Part|5|0"}));
  // The type: its number, precision * 2^8, scale * 2^16, length * 2^24.
  const std::string nvarchar = std::to_string(14 + 30 * 16777216);
  const std::string decimal = std::to_string(5 + 9 * 256 + 2 * 65536);
  EXPECT_EQ(Ask("SELECT * FROM \"~columns\" ORDER BY ordinal"),
            Lines({"Part|0|id|2|0|1|", "Part|1|name|" + nvarchar + "|1|0|'x'",
                   "Part|2|price|" + decimal + "|1|0|"}));
}

TEST_F(StorageTest, TypeNumbers) {
  const std::vector<std::pair<const char*, int>> types = {{"TINYINT", 0},
                                                          {"SMALLINT", 1},
                                                          {"INT", 2},
                                                          {"BIGINT", 3},
                                                          {"BIT", 4},
                                                          {"DECIMAL(9,2)", 5},
                                                          {"MONEY", 6},
                                                          {"SMALLMONEY", 7},
                                                          {"FLOAT", 8},
                                                          {"REAL", 9},
                                                          {"CHAR(2)", 10},
                                                          {"VARCHAR(2)", 11},
                                                          {"TEXT", 12},
                                                          {"NCHAR(2)", 13},
                                                          {"NVARCHAR(2)", 14},
                                                          {"NTEXT", 15},
                                                          {"DATETIME", 16},
                                                          {"SMALLDATETIME", 17},
                                                          {"DATE", 18},
                                                          {"BINARY(2)", 19},
                                                          {"VARBINARY(2)", 20},
                                                          {"IMAGE", 21},
                                                          {"UNIQUEIDENTIFIER", 22},
                                                          {"TIME(3)", 23},
                                                          {"DATETIME2(3)", 24}};
  std::string columns;
  Lines expected;
  for (const auto& [name, number] : types) {
    columns += (columns.empty() ? "c" : ", c") + std::to_string(number) + " " + name;
    expected.push_back("c" + std::to_string(number) + "|" + std::to_string(number));
  }
  Must("CREATE TABLE t (" + columns + ")");
  EXPECT_EQ(Ask("SELECT name, type & 255 FROM \"~columns\" ORDER BY ordinal"), expected);
}

TEST_F(StorageTest, KeysAndTheirIndexes) {
  Must("CREATE TABLE p (a INT NOT NULL CONSTRAINT pk_p PRIMARY KEY, b INT NULL CONSTRAINT uq_p UNIQUE, "
       "CONSTRAINT ck_p CHECK (b > 0))");
  Must("CREATE UNIQUE INDEX ux_p ON p (b, a) CREATE INDEX ix_p ON p (b DESC, a)");
  Must("CREATE TABLE c (x INT NULL, CONSTRAINT fk_c FOREIGN KEY (x) REFERENCES p (a))");
  EXPECT_EQ(Ask("SELECT * FROM \"~keys\" WHERE table_name = 'p' ORDER BY kind"),
            Lines({"p|pk_p|0|0|", "p|uq_p|1|1|", "p|ux_p|2|1 0|", "p|ix_p|3|1d 0|", "p|ck_p|4||(b > 0)"}));
  EXPECT_EQ(Ask("SELECT * FROM \"~keys\" WHERE table_name = 'c'"), Lines({"c|fk_c|5|0|p\na"}));
  EXPECT_EQ(Ask("SELECT name FROM sqlite_schema WHERE type = 'index' AND sql IS NOT NULL ORDER BY name"),
            Lines({"p.ix_p", "p.uq_p", "p.uq_p~", "p.ux_p", "p.ux_p~"}));
  EXPECT_EQ(Ask("SELECT name, tbl_name FROM sqlite_schema WHERE type = 'trigger' ORDER BY name"),
            Lines({"~fk_c~d|p", "~fk_c~i|c", "~fk_c~p|p", "~fk_c~u|c"}));
}

TEST_F(StorageTest, ViewsAndProcedures) {
  Must("CREATE VIEW v AS SELECT 1 AS a");
  Must("CREATE PROCEDURE p AS SELECT 2");
  EXPECT_EQ(Ask("SELECT * FROM \"~modules\" ORDER BY kind"),
            Lines({"v|1|CREATE VIEW v AS SELECT 1 AS a", "p|2|CREATE PROCEDURE p AS SELECT 2"}));
}

// The SQL of a CHECK constraint lies in the file and calls the engine's functions with these numbers.
TEST_F(StorageTest, NumbersWithinChecks) {
  const std::map<ArithmeticOp, int> operations = {{ArithmeticOp::Add, 0},      {ArithmeticOp::Subtract, 1},
                                                  {ArithmeticOp::Multiply, 2}, {ArithmeticOp::Divide, 3},
                                                  {ArithmeticOp::Modulo, 4},   {ArithmeticOp::BitAnd, 5},
                                                  {ArithmeticOp::BitOr, 6},    {ArithmeticOp::BitXor, 7}};
  for (const auto& [operation, number] : operations) EXPECT_EQ(static_cast<int>(operation), number);
  const std::map<DatePart, int> parts = {
      {DatePart::Year, 0},   {DatePart::Quarter, 1}, {DatePart::Month, 2},       {DatePart::DayOfYear, 3},
      {DatePart::Day, 4},    {DatePart::Week, 5},    {DatePart::Weekday, 6},     {DatePart::Hour, 7},
      {DatePart::Minute, 8}, {DatePart::Second, 9},  {DatePart::Millisecond, 10}};
  for (const auto& [part, number] : parts) EXPECT_EQ(static_cast<int>(part), number);
  EXPECT_EQ(kComputeOperand, -1);
  EXPECT_EQ(kComputeCast, -2);

  Must("CREATE TABLE t (a DECIMAL(20,4), d DATETIME, CONSTRAINT ck CHECK (a * a > 1), "
       "CONSTRAINT cd CHECK (DATEPART(month, d) > 2))");
  const std::string type = std::to_string(5 + 20 * 256 + 4 * 65536);
  const std::string product = std::to_string(5 + 38 * 256 + 6 * 65536);
  const std::string program = "-1 " + type + " -1 " + type + " 2 " + type + " " + type + " " + product;
  EXPECT_EQ(Ask("SELECT instr(sql, 't_compute(''" + program +
                "'', ') > 0, instr(sql, 't_datepart(2, ') > 0 "
                "FROM sqlite_schema WHERE name = 't'"),
            Lines({"1|1"}));
}

// A file as version 1 wrote it, made by hand, works.
TEST_F(StorageTest, FilesOfVersionOneWork) {
  Ask("PRAGMA journal_mode = WAL; PRAGMA application_id = 1951617356; PRAGMA user_version = 1;"
      "CREATE TABLE \"~tables\"(name TEXT PRIMARY KEY, seed INTEGER, rowid_column INTEGER);"
      "CREATE TABLE \"~columns\"(table_name TEXT, ordinal INTEGER, name TEXT, type INTEGER, nullable "
      "INTEGER, "
      "identity INTEGER, default_text TEXT, PRIMARY KEY(table_name, ordinal));"
      "CREATE TABLE \"~keys\"(table_name TEXT, name TEXT, kind INTEGER, columns TEXT, check_text TEXT);"
      "CREATE TABLE \"~modules\"(name TEXT PRIMARY KEY, kind INTEGER, text TEXT);"
      "CREATE TABLE t(\"id\" INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL, \"n\" INTEGER, "
      "CONSTRAINT \"ck\" CHECK ((t_range(\"n\" * 2, 2) < 100)));"
      "CREATE UNIQUE INDEX \"t.uq~\" ON t(ifnull(\"n\", x''));"
      "CREATE INDEX \"t.uq\" ON t(\"n\");"
      "INSERT INTO \"~tables\" VALUES ('t', 1, 0);"
      "INSERT INTO \"~columns\" VALUES ('t', 0, 'id', 2, 0, 1, ''), ('t', 1, 'n', 2, 1, 0, '40 + 2');"
      "INSERT INTO \"~keys\" VALUES ('t', 'pk', 0, '0', ''), ('t', 'uq', 1, '1', ''), ('t', 'ck', 4, '', '(n "
      "* 2 < "
      "100)');"
      "INSERT INTO \"~modules\" VALUES ('v', 1, 'CREATE VIEW v AS SELECT n FROM t'), "
      "('p', 2, 'CREATE PROCEDURE p AS SELECT n FROM v')");
  const auto session = Session::Open(Database::Open(path_, OpenMode::Existing));
  EXPECT_TRUE(RunOn(*session, "INSERT INTO t DEFAULT VALUES").errors.empty());
  EXPECT_EQ(RunOn(*session, "EXEC p").results, std::vector<Lines>({{"42"}}));
  EXPECT_EQ(RunOn(*session, "INSERT INTO t (n) VALUES (42)").errors.at(0).number, 2627);
  EXPECT_EQ(RunOn(*session, "INSERT INTO t (n) VALUES (50)").errors.at(0).number, 547);
  EXPECT_EQ(RunOn(*session, "INSERT INTO t (n) VALUES (2000000000)").errors.at(0).number, 8115);
}

} // namespace
} // namespace tsql::test
