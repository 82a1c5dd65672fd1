// Schemas: making, dropping and filling them, what a name means, what the system's views say of them, and
// what is left after a failure.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class SchemasTest : public EngineTest {
 protected:
  SchemasTest() { Must("CREATE SCHEMA sales"); }

  // "number text" of each error of the batch.
  Lines Errors(std::string_view batch) {
    Lines lines;
    for (const Error& error : Run(batch).errors)
      lines.push_back(std::to_string(error.number) + " " + error.what());
    return lines;
  }
};

// ---- CREATE, DROP, ALTER

TEST_F(SchemasTest, ASchemaIsThereOnce) {
  EXPECT_EQ(Errors("CREATE SCHEMA Sales"),
            Lines({"2714 There is already an object named 'Sales' in the database.",
                   "2759 CREATE SCHEMA failed due to previous errors."}));
  for (const char* name : {"dbo", "sys", "INFORMATION_SCHEMA", "guest", "db_owner"})
    EXPECT_EQ(ErrorOf(std::string("CREATE SCHEMA ") + name), 2714) << name;
  Must("CREATE SCHEMA [a b] AUTHORIZATION dbo");
  EXPECT_EQ(Scalar("SCHEMA_NAME(SCHEMA_ID('A B'))"), "a b");
}

TEST_F(SchemasTest, ItsStatementIsTheOnlyOneOfItsBatch) {
  EXPECT_EQ(ErrorText("SELECT 1 CREATE SCHEMA x"),
            "111 1 'CREATE SCHEMA' must be the first statement in a query batch.");
  EXPECT_EQ(ErrorText("IF 1 = 1 CREATE SCHEMA x"),
            "111 1 'CREATE SCHEMA' must be the first statement in a query batch.");
  EXPECT_EQ(ErrorText("CREATE SCHEMA x SELECT 1"), "156 1 Incorrect syntax near the keyword 'SELECT'.");
  EXPECT_EQ(ErrorOf("CREATE SCHEMA x CREATE TABLE t (a INT)"), 40510);
  Must(
      "IF SCHEMA_ID('x') IS NULL EXEC ('CREATE SCHEMA x') IF SCHEMA_ID('x') IS NULL EXEC ('CREATE SCHEMA x')");
  EXPECT_NE(Scalar("SCHEMA_ID('x')"), "NULL");
}

TEST_F(SchemasTest, AnOwnerMustBeThere) {
  EXPECT_EQ(
      ErrorText("CREATE SCHEMA x AUTHORIZATION nobody"),
      "15151 1 Cannot find the principal 'nobody', because it does not exist or you do not have permission.");
  EXPECT_EQ(ErrorOf("CREATE SCHEMA x AUTHORIZATION guest"), 40510);
  EXPECT_EQ(ErrorOf("CREATE SCHEMA AUTHORIZATION dbo"), 2714);
}

TEST_F(SchemasTest, OnlyAnEmptyOneIsDropped) {
  Must("CREATE TABLE sales.t (a INT)");
  EXPECT_EQ(ErrorText("DROP SCHEMA sales"),
            "3729 1 Cannot drop schema 'sales' because it is being referenced by object 't'.");
  Must("DROP TABLE sales.t");
  for (const char* kind : {"VIEW sales.x AS SELECT 1 AS a", "PROCEDURE sales.x AS SELECT 1",
                           "FUNCTION sales.x () RETURNS INT AS BEGIN RETURN 1 END"}) {
    Must(std::string("CREATE ") + kind);
    EXPECT_EQ(ErrorOf("DROP SCHEMA sales"), 3729) << kind;
    const std::string object = kind;
    Must("DROP " + object.substr(0, object.find(' ')) + " sales.x");
  }
  Must("DROP SCHEMA sales DROP SCHEMA IF EXISTS sales");
  EXPECT_EQ(Scalar("SCHEMA_ID('sales')"), "NULL");
  EXPECT_EQ(
      ErrorText("SELECT 1 DROP SCHEMA sales"),
      "15151 1 Cannot drop the schema 'sales', because it does not exist or you do not have permission.");
  EXPECT_EQ(ErrorText("DROP SCHEMA dbo"), "15150 1 Cannot drop the schema 'dbo'.");
  EXPECT_EQ(ErrorOf("DROP SCHEMA guest"), 15150);
}

TEST_F(SchemasTest, WithoutASchemaThereIsNoObject) {
  EXPECT_EQ(
      ErrorText("CREATE TABLE none.t (a INT)"),
      "2760 1 The specified schema name \"none\" either does not exist or you do not have permission to "
      "use it.");
  EXPECT_EQ(ErrorOf("CREATE VIEW none.v AS SELECT 1 AS a"), 2760);
  EXPECT_EQ(ErrorOf("CREATE PROCEDURE none.p AS SELECT 1"), 2760);
  EXPECT_EQ(ErrorOf("SELECT 1 AS a INTO none.t"), 2760);
  EXPECT_EQ(ErrorOf("CREATE TABLE sys.t (a INT)"), 2760);
  EXPECT_EQ(ErrorOf("CREATE TABLE INFORMATION_SCHEMA.t (a INT)"), 2760);
  EXPECT_EQ(ErrorOf("CREATE TABLE guest.t (a INT)"), 40510);
  EXPECT_EQ(ErrorText("SELECT * FROM none.t"), "208 1 Invalid object name 'none.t'.");
  EXPECT_EQ(ErrorText("EXEC none.p"), "2812 1 Could not find stored procedure 'none.p'.");
  EXPECT_EQ(
      ErrorText("DROP TABLE none.t"),
      "3701 1 Cannot drop the table 'none.t', because it does not exist or you do not have permission.");
}

// ---- the same name in two schemas

TEST_F(SchemasTest, TablesOfOneNameAreTwo) {
  Must("CREATE TABLE t (a INT) CREATE TABLE sales.t (a VARCHAR(5) NOT NULL, id INT IDENTITY(7,1))"
       " INSERT INTO t VALUES (1) INSERT INTO dbo.t VALUES (2) INSERT INTO sales.T (a) VALUES ('x')");
  EXPECT_EQ(Rows("SELECT a FROM t ORDER BY a"), Lines({"1", "2"}));
  EXPECT_EQ(Rows("SELECT * FROM Sales.t"), Lines({"x|7"}));
  EXPECT_EQ(Rows("SELECT sales.t.a, dbo.t.a FROM sales.t, dbo.t ORDER BY dbo.t.a"), Lines({"x|1", "x|2"}));
  EXPECT_EQ(ErrorOf("SELECT sales.t.a FROM dbo.t"), 4104);
  EXPECT_EQ(ErrorOf("CREATE TABLE sales.t (a INT)"), 2714);
  EXPECT_EQ(ErrorOf("CREATE VIEW sales.t AS SELECT 1 AS a"), 2714);
  Must("UPDATE sales.t SET a = 'y' WHERE sales.t.id = 7 DELETE FROM dbo.t WHERE a = 1 TRUNCATE TABLE dbo.t");
  EXPECT_EQ(Rows("SELECT a FROM sales.t"), Lines({"y"}));
  Must("DROP TABLE t");
  EXPECT_EQ(ErrorOf("SELECT * FROM t"), 208);
  EXPECT_EQ(Rows("SELECT a FROM sales.t"), Lines({"y"}));
  Must("DROP TABLE sales.t");
}

TEST_F(SchemasTest, AnUpdateFindsItsTargetByItsSchema) {
  Must("CREATE TABLE t (a INT) CREATE TABLE sales.t (a INT) INSERT INTO t VALUES (1)"
       " INSERT INTO sales.t VALUES (1)");
  Must("UPDATE sales.t SET a = 5 FROM dbo.t JOIN sales.t ON dbo.t.a = sales.t.a");
  EXPECT_EQ(Rows("SELECT a FROM t UNION ALL SELECT a FROM sales.t"), Lines({"1", "5"}));
  Must("UPDATE x SET a = 6 FROM sales.t x");
  Must("DELETE sales.t FROM sales.t JOIN dbo.t ON dbo.t.a = 1");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t"), Lines({"1"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM sales.t"), Lines({"0"}));
}

TEST_F(SchemasTest, ErrorsNameTheSchema) {
  Must("CREATE TABLE sales.t (a INT NOT NULL CONSTRAINT pk PRIMARY KEY, b INT CONSTRAINT ck CHECK (b > 0))"
       " CREATE UNIQUE INDEX ix ON sales.t (b) INSERT INTO sales.t VALUES (1, 1)");
  EXPECT_EQ(
      ErrorText("INSERT INTO sales.t VALUES (1, 2)"),
      "2627 1 Violation of PRIMARY KEY constraint 'pk'. Cannot insert duplicate key in object 'sales.t'.");
  EXPECT_EQ(ErrorText("INSERT INTO sales.t VALUES (2, 1)"),
            "2601 1 Cannot insert duplicate key row in object 'sales.t' with unique index 'ix'.");
  const std::string database = Scalar("DB_NAME()");
  EXPECT_EQ(
      ErrorText("INSERT INTO sales.t VALUES (2, 0)"),
      "547 1 The INSERT statement conflicted with the CHECK constraint \"ck\". The conflict occurred in "
      "database \"" +
          database + "\", table \"sales.t\", column 'b'.");
  EXPECT_EQ(ErrorText("INSERT INTO sales.t (b) VALUES (3)"),
            "515 1 Cannot insert the value NULL into column 'a', table '" + database +
                ".sales.t'; column does not allow nulls. INSERT fails.");
  Must("INSERT INTO sales.t VALUES (2, 2) ALTER TABLE sales.t ADD c INT NOT NULL DEFAULT 1");
  EXPECT_EQ(ErrorOf("CREATE UNIQUE INDEX iy ON sales.t (c)"), 1505);
  EXPECT_EQ(ErrorText("ALTER TABLE sales.u ADD c INT"),
            "4902 1 Cannot find the object \"sales.u\" because it does not exist or you do not have "
            "permissions.");
  Must("DROP INDEX ix ON sales.t");
  EXPECT_EQ(ErrorText("DROP INDEX sales.t.ix"),
            "3701 1 Cannot drop the index 'sales.t.ix', because it does not exist or you do not have "
            "permission.");
}

TEST_F(SchemasTest, ConstraintsAreOnesOfTheirSchema) {
  Must("CREATE TABLE t (a INT CONSTRAINT k PRIMARY KEY)"
       " CREATE TABLE sales.t (a INT CONSTRAINT k PRIMARY KEY, b INT CONSTRAINT f REFERENCES dbo.t (a))"
       " CREATE TABLE u (b INT CONSTRAINT f REFERENCES sales.t)");
  EXPECT_EQ(ErrorOf("CREATE TABLE sales.v (a INT CONSTRAINT k UNIQUE)"), 2714);
  Must("INSERT INTO t VALUES (1) INSERT INTO sales.t VALUES (9, 1) INSERT INTO u VALUES (9)");
  EXPECT_EQ(ErrorOf("INSERT INTO sales.t VALUES (8, 9)"), 547);
  EXPECT_EQ(ErrorOf("INSERT INTO u VALUES (1)"), 547);
  const std::string database = Scalar("DB_NAME()");
  EXPECT_EQ(
      ErrorText("DELETE FROM t"),
      "547 1 The DELETE statement conflicted with the REFERENCE constraint \"f\". The conflict occurred "
      "in database \"" +
          database + "\", table \"sales.t\", column 'b'.");
  EXPECT_EQ(
      ErrorText("DELETE FROM sales.t"),
      "547 1 The DELETE statement conflicted with the REFERENCE constraint \"f\". The conflict occurred "
      "in database \"" +
          database + "\", table \"dbo.u\", column 'b'.");
  EXPECT_EQ(ErrorOf("DROP TABLE sales.t"), 3726);
  EXPECT_EQ(ErrorOf("TRUNCATE TABLE sales.t"), 4712);
  Must("ALTER TABLE u DROP CONSTRAINT f");
  EXPECT_EQ(ErrorOf("INSERT INTO sales.t VALUES (8, 9)"), 547);
  Must("ALTER TABLE sales.t ADD c INT NOT NULL DEFAULT 4 ALTER TABLE sales.t DROP CONSTRAINT f");
  Must("INSERT INTO sales.t VALUES (8, 9, 1)");
}

TEST_F(SchemasTest, AKeyOfTheStorageIsNoName) {
  Must("CREATE TABLE sales.t (a INT)");
  EXPECT_EQ(ErrorOf("SELECT * FROM [~5~t]"), 208);
  EXPECT_EQ(ErrorOf("CREATE TABLE [~5~x] (a INT)"), 40510);
  EXPECT_EQ(ErrorOf("CREATE VIEW [~5~x] AS SELECT 1 AS a"), 40510);
  EXPECT_EQ(ErrorOf("CREATE TABLE x (a INT CONSTRAINT [~5~x] CHECK (a > 0))"), 40510);
  EXPECT_EQ(Scalar("OBJECT_ID('~5~t')"), "NULL");
}

TEST_F(SchemasTest, IdentityInsertIsOfOneOfTheTables) {
  Must("CREATE TABLE t (id INT IDENTITY) CREATE TABLE sales.t (id INT IDENTITY)"
       " SET IDENTITY_INSERT sales.t ON INSERT INTO sales.t (id) VALUES (5)");
  EXPECT_EQ(ErrorOf("INSERT INTO t (id) VALUES (5)"), 544);
  EXPECT_EQ(ErrorOf("SET IDENTITY_INSERT dbo.t ON"), 8107);
}

// ---- modules

TEST_F(SchemasTest, ModulesOfOneNameAreTwo) {
  Must("CREATE PROCEDURE p AS SELECT 'dbo'");
  Must("CREATE PROCEDURE sales.p AS SELECT 'sales'");
  Must("CREATE FUNCTION f (@i INT) RETURNS INT AS BEGIN RETURN @i END");
  Must("CREATE FUNCTION sales.f (@i INT) RETURNS INT AS BEGIN RETURN @i * 2 END");
  Must("CREATE FUNCTION sales.g (@i INT) RETURNS TABLE AS RETURN SELECT @i AS a");
  Must(
      "CREATE FUNCTION sales.h () RETURNS @t TABLE (a INT) AS BEGIN INSERT @t VALUES (sales.f(4)) RETURN END");
  Must("CREATE VIEW sales.v AS SELECT sales.f(1) AS a");
  EXPECT_EQ(Rows("EXEC p"), Lines({"dbo"}));
  EXPECT_EQ(Rows("EXEC sales.p"), Lines({"sales"}));
  EXPECT_EQ(Rows("SELECT dbo.f(3), sales.f(3), x.a, y.a, sales.v.a FROM sales.g(7) x, sales.h() y, sales.v"),
            Lines({"3|6|7|8|2"}));
  EXPECT_EQ(ErrorOf("SELECT sales.missing(1)"), 4121);
  EXPECT_EQ(ErrorOf("SELECT a FROM v"), 208);
  EXPECT_EQ(ErrorText("SELECT sales.f()"),
            "313 1 An insufficient number of arguments were supplied for the procedure or function sales.f.");
  Must("ALTER PROCEDURE sales.p AS SELECT 'changed'");
  EXPECT_EQ(Rows("EXEC sales.p"), Lines({"changed"}));
  EXPECT_EQ(Rows("EXEC dbo.p"), Lines({"dbo"}));
  EXPECT_EQ(ErrorText("ALTER PROCEDURE sales.q AS SELECT 1"), "208 1 Invalid object name 'sales.q'.");
  Must("DROP PROCEDURE p");
  EXPECT_EQ(Rows("EXEC sales.p"), Lines({"changed"}));
}

TEST_F(SchemasTest, AModuleLooksInItsOwnSchemaFirst) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (1) CREATE TABLE o (a INT) INSERT INTO o VALUES (3)");
  Must("CREATE PROCEDURE sales.q AS SELECT 'q of sales'");
  Must("CREATE PROCEDURE dbo.q AS SELECT 'q of dbo'");
  Must("CREATE PROCEDURE sales.p AS SELECT t.a, o.a FROM t, o EXEC q EXEC ('SELECT a FROM t')");
  Must("CREATE VIEW sales.v AS SELECT a FROM t");
  const auto results = [this] {
    Lines lines;
    for (const auto& result : Run("EXEC sales.p SELECT a FROM sales.v").results) lines.push_back(result[0]);
    return lines;
  };
  EXPECT_EQ(results(), Lines({"1|3", "q of sales", "1", "1"}));
  // A table of the own schema hides the other one from then on, from text that is executed it does not.
  Must("CREATE TABLE sales.t (a INT) INSERT INTO sales.t VALUES (2)");
  EXPECT_EQ(results(), Lines({"2|3", "q of sales", "1", "2"}));
  Must("DROP PROCEDURE sales.q");
  EXPECT_EQ(results(), Lines({"2|3", "q of dbo", "1", "2"}));
  Must("DROP TABLE sales.t");
  EXPECT_EQ(results(), Lines({"1|3", "q of dbo", "1", "1"}));
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"1"}));
}

TEST_F(SchemasTest, WhatAModuleMakesIsOfDbo) {
  Must("CREATE PROCEDURE sales.p AS CREATE TABLE made (a INT) INSERT INTO made VALUES (1)"
       " SELECT 2 AS a INTO copied");
  Must("EXEC sales.p");
  EXPECT_EQ(Rows("SELECT a FROM dbo.made UNION ALL SELECT a FROM dbo.copied"), Lines({"1", "2"}));
}

TEST_F(SchemasTest, ATriggerIsOfTheSchemaOfItsTable) {
  Must("CREATE TABLE t (a INT) CREATE TABLE sales.t (a INT) CREATE TABLE sales.log (a INT)");
  Must("CREATE TRIGGER on_t ON sales.t FOR INSERT AS INSERT INTO log SELECT a FROM inserted");
  Must("INSERT INTO t VALUES (1) INSERT INTO sales.t VALUES (2)");
  EXPECT_EQ(Rows("SELECT a FROM sales.log"), Lines({"2"}));
  EXPECT_EQ(Rows("SELECT OBJECT_SCHEMA_NAME(object_id), OBJECT_SCHEMA_NAME(parent_id) FROM sys.triggers"),
            Lines({"sales|sales"}));
  EXPECT_EQ(ErrorText("CREATE TRIGGER dbo.other ON sales.t FOR INSERT AS SELECT 1"),
            "2103 1 Cannot create trigger 'dbo.other' because its schema is different from the schema of the "
            "target table or view.");
  EXPECT_EQ(ErrorOf("CREATE TRIGGER on_t ON sales.t FOR DELETE AS SELECT 1"), 2714);
  Must("CREATE TRIGGER on_t ON t FOR DELETE AS SELECT 1");
  Must("DISABLE TRIGGER on_t ON sales.t INSERT INTO sales.t VALUES (3) ENABLE TRIGGER sales.on_t ON sales.t");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM sales.log"), Lines({"1"}));
  EXPECT_EQ(ErrorOf("ALTER TRIGGER sales.on_t ON dbo.t FOR INSERT AS SELECT 1"), 2103);
  Must("DROP TRIGGER on_t DROP TRIGGER sales.on_t");
  EXPECT_EQ(ErrorText("DROP TRIGGER sales.on_t"),
            "3701 1 Cannot drop the trigger 'sales.on_t', because it does not exist or you do not have "
            "permission.");
}

TEST_F(SchemasTest, ATriggerStandsForTheChangeOfAView) {
  Must("CREATE TABLE sales.t (a INT)");
  Must("CREATE VIEW sales.v AS SELECT a FROM t");
  Must("CREATE TRIGGER sales.on_v ON sales.v INSTEAD OF INSERT AS INSERT INTO t SELECT a * 10 FROM inserted");
  Must("INSERT INTO sales.v VALUES (2)");
  EXPECT_EQ(Rows("SELECT a FROM sales.t"), Lines({"20"}));
  Must("DROP VIEW sales.v");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM sys.triggers"), Lines({"0"}));
}

TEST_F(SchemasTest, TemporaryTablesHaveNone) {
  Must("CREATE TABLE sales.#t (a INT) INSERT INTO #t VALUES (1) INSERT INTO none.#t VALUES (2)");
  EXPECT_EQ(Rows("SELECT a FROM dbo.#t ORDER BY a"), Lines({"1", "2"}));
  EXPECT_EQ(ErrorOf("CREATE TABLE dbo.#t (a INT)"), 2714);
  Must("CREATE TABLE sales.##of_schema (a INT) INSERT INTO ##of_schema VALUES (3)");
  EXPECT_EQ(Rows("SELECT a FROM dbo.##of_schema"), Lines({"3"}));
  Must("DROP TABLE sales.##of_schema");
}

// ---- ALTER SCHEMA

TEST_F(SchemasTest, ATableIsTransferredWithAllThatIsItsOwn) {
  Must("CREATE TABLE p (a INT PRIMARY KEY)"
       " CREATE TABLE t (id INT IDENTITY(3,1) CONSTRAINT pk PRIMARY KEY, a INT CONSTRAINT fk REFERENCES p,"
       " b INT NULL CONSTRAINT uq UNIQUE, c AS a + b, CONSTRAINT ck CHECK (b < 100))"
       " CREATE INDEX ix ON t (a) CREATE TABLE child (id INT CONSTRAINT fc REFERENCES t)");
  Must("CREATE TRIGGER on_t ON t FOR INSERT AS PRINT 'fired'");
  Must("INSERT INTO p VALUES (1) INSERT INTO t (a, b) VALUES (1, 5) INSERT INTO child VALUES (3)");
  Must("ALTER SCHEMA sales TRANSFER t");
  EXPECT_EQ(ErrorOf("SELECT * FROM t"), 208);
  EXPECT_EQ(Rows("SELECT * FROM sales.t"), Lines({"3|1|5|6"}));
  EXPECT_EQ(Run("INSERT INTO sales.t (a, b) VALUES (1, 6)").messages, Lines({"fired"}));
  EXPECT_EQ(Rows("SELECT MAX(id) FROM sales.t"), Lines({"4"}));
  EXPECT_EQ(ErrorOf("INSERT INTO sales.t (a, b) VALUES (2, 7)"), 547);
  EXPECT_EQ(ErrorOf("INSERT INTO sales.t (a, b) VALUES (1, 6)"), 2627);
  EXPECT_EQ(ErrorOf("INSERT INTO sales.t (a, b) VALUES (1, 100)"), 547);
  EXPECT_EQ(ErrorOf("DELETE FROM sales.t"), 547);
  EXPECT_EQ(ErrorOf("DELETE FROM p"), 547);
  Must("DROP INDEX ix ON sales.t ALTER SCHEMA dbo TRANSFER OBJECT::sales.t DROP SCHEMA sales");
  EXPECT_EQ(Rows("SELECT id FROM t ORDER BY id"), Lines({"3", "4"}));
  EXPECT_EQ(Run("INSERT INTO t (a, b) VALUES (1, 7)").messages, Lines({"fired"}));
  EXPECT_EQ(ErrorOf("DELETE FROM t"), 547);
  Must("DROP TRIGGER on_t");
}

TEST_F(SchemasTest, ATransferredModuleLooksInItsNewSchema) {
  Must(
      "CREATE TABLE t (a INT) INSERT INTO t VALUES (1) CREATE TABLE sales.t (a INT) INSERT INTO sales.t VALUES (2)");
  Must("CREATE PROCEDURE p AS SELECT a FROM t");
  Must("CREATE VIEW v AS SELECT a FROM t");
  Must("CREATE FUNCTION f () RETURNS INT AS BEGIN RETURN (SELECT a FROM t) END");
  EXPECT_EQ(Rows("EXEC p"), Lines({"1"}));
  Must("ALTER SCHEMA sales TRANSFER p ALTER SCHEMA sales TRANSFER dbo.v ALTER SCHEMA sales TRANSFER f");
  EXPECT_EQ(Rows("EXEC sales.p"), Lines({"2"}));
  EXPECT_EQ(Rows("SELECT a, sales.f() FROM sales.v"), Lines({"2|2"}));
  EXPECT_EQ(ErrorOf("EXEC p"), 2812);
  Must("ALTER SCHEMA dbo TRANSFER sales.p");
  EXPECT_EQ(Rows("EXEC p"), Lines({"1"}));
}

TEST_F(SchemasTest, WhatCannotBeTransferredStays) {
  Must(
      "CREATE TABLE t (a INT CONSTRAINT k UNIQUE) CREATE TABLE sales.t (a INT) CREATE TABLE u (a INT CONSTRAINT c UNIQUE)"
      " CREATE TABLE sales.x (a INT CONSTRAINT c UNIQUE)");
  Must("CREATE TRIGGER tr ON t FOR INSERT AS SELECT 1");
  EXPECT_EQ(ErrorText("ALTER SCHEMA sales TRANSFER t"), "15530 1 The object with name \"t\" already exists.");
  EXPECT_EQ(ErrorOf("ALTER SCHEMA sales TRANSFER u"), 15530);
  EXPECT_EQ(ErrorText("ALTER SCHEMA sales TRANSFER dbo.tr"),
            "15347 1 Cannot transfer an object that is owned by a parent object.");
  EXPECT_EQ(
      ErrorText("ALTER SCHEMA none TRANSFER t"),
      "15151 1 Cannot alter the schema 'none', because it does not exist or you do not have permission.");
  EXPECT_EQ(
      ErrorText("ALTER SCHEMA sales TRANSFER missing"),
      "15151 1 Cannot find the object 'missing', because it does not exist or you do not have permission.");
  EXPECT_EQ(ErrorOf("CREATE TABLE #t (a INT) ALTER SCHEMA sales TRANSFER #t"), 15151);
  EXPECT_EQ(ErrorOf("ALTER SCHEMA sales TRANSFER TYPE::x"), 40510);
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t UNION ALL SELECT COUNT(*) FROM u"), Lines({"0", "0"}));
}

// ---- what asks for names

TEST_F(SchemasTest, FunctionsKnowSchemas) {
  Must("CREATE TABLE t (a INT) CREATE TABLE sales.t (b VARCHAR(7))");
  EXPECT_EQ(Scalar("OBJECT_NAME(OBJECT_ID('sales.t'))"), "t");
  EXPECT_EQ(Scalar("OBJECT_SCHEMA_NAME(OBJECT_ID('[Sales].[t]', 'U'))"), "sales");
  EXPECT_EQ(Scalar("OBJECT_SCHEMA_NAME(OBJECT_ID('t'))"), "dbo");
  EXPECT_EQ(
      Scalar("IIF(OBJECT_ID('t') = OBJECT_ID('dbo.t') AND OBJECT_ID('t') <> OBJECT_ID('sales.t'), 1, 0)"),
      "1");
  EXPECT_EQ(Scalar("OBJECT_ID('none.t')"), "NULL");
  EXPECT_EQ(Scalar("OBJECT_ID('sales.t', 'V')"), "NULL");
  EXPECT_EQ(Scalar("OBJECT_SCHEMA_NAME(1)"), "NULL");
  EXPECT_EQ(Scalar("COL_LENGTH('sales.t', 'b')"), "7");
  EXPECT_EQ(Scalar("COL_LENGTH('t', 'b')"), "NULL");
  EXPECT_EQ(Rows("SELECT SCHEMA_ID(), SCHEMA_NAME(), SCHEMA_ID('SALES'), SCHEMA_NAME(5), SCHEMA_ID('sys'),"
                 " SCHEMA_NAME(3), SCHEMA_ID('none'), SCHEMA_NAME(NULL)"),
            Lines({"1|dbo|5|sales|4|INFORMATION_SCHEMA|NULL|NULL"}));
  EXPECT_EQ(Rows("SELECT SCHEMA_NAME(schema_id), name FROM sys.tables ORDER BY schema_id"),
            Lines({"dbo|t", "sales|t"}));
  EXPECT_EQ(ErrorOf("SELECT SCHEMA_NAME(1, 2)"), 189);
}

TEST_F(SchemasTest, SystemViewsKnowSchemas) {
  Must("CREATE TABLE sales.t (a INT, b CHAR(3))");
  Must("CREATE VIEW sales.v AS SELECT a FROM t");
  Must("CREATE TABLE d (a INT)");
  EXPECT_EQ(
      Rows("SELECT name, schema_id, principal_id FROM sys.schemas WHERE schema_id < 100 ORDER BY schema_id"),
      Lines({"dbo|1|1", "guest|2|2", "INFORMATION_SCHEMA|3|3", "sys|4|4", "sales|5|1"}));
  EXPECT_EQ(Rows("SELECT SCHEMA_OWNER FROM INFORMATION_SCHEMA.SCHEMATA WHERE SCHEMA_NAME = 'sales'"),
            Lines({"dbo"}));
  EXPECT_EQ(Rows("SELECT name, uid, xtype FROM sysobjects ORDER BY name"),
            Lines({"d|1|U ", "t|5|U ", "v|5|V "}));
  EXPECT_EQ(Rows("SELECT name, schema_id FROM sys.objects WHERE object_id = OBJECT_ID('sales.t')"),
            Lines({"t|5"}));
  EXPECT_EQ(
      Rows("SELECT TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE FROM INFORMATION_SCHEMA.TABLES ORDER BY TABLE_NAME"),
      Lines({"dbo|d|BASE TABLE", "sales|t|BASE TABLE", "sales|v|VIEW"}));
  EXPECT_EQ(Rows("SELECT TABLE_SCHEMA, TABLE_NAME, COLUMN_NAME FROM INFORMATION_SCHEMA.COLUMNS"
                 " WHERE TABLE_SCHEMA = 'sales' ORDER BY ORDINAL_POSITION"),
            Lines({"sales|t|a", "sales|t|b"}));
  EXPECT_EQ(
      Rows(
          "SELECT name, max_length FROM sys.columns WHERE object_id = OBJECT_ID('sales.t') ORDER BY column_id"),
      Lines({"a|4", "b|3"}));
}

// ---- sessions and transactions

TEST_F(SchemasTest, ARollbackUndoesThem) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (1)");
  Must("BEGIN TRAN EXEC ('CREATE SCHEMA x') EXEC ('CREATE TABLE x.t (a INT)') ALTER SCHEMA sales TRANSFER t"
       " ROLLBACK");
  EXPECT_EQ(Scalar("SCHEMA_ID('x')"), "NULL");
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"1"}));
  EXPECT_EQ(ErrorOf("SELECT * FROM sales.t"), 208);
  Must("BEGIN TRAN DROP SCHEMA sales ROLLBACK CREATE TABLE sales.t (a INT)");
}

TEST_F(SchemasTest, OtherSessionsSeeThem) {
  const auto other = Session::Open(database_);
  Must("CREATE TABLE sales.t (a INT) INSERT INTO sales.t VALUES (4)");
  EXPECT_EQ(RunOn(*other, "SELECT a FROM sales.t").results, (std::vector<Lines>{{"4"}}));
  Must("ALTER SCHEMA dbo TRANSFER sales.t DROP SCHEMA sales");
  EXPECT_EQ(RunOn(*other, "SELECT a FROM dbo.t").results, (std::vector<Lines>{{"4"}}));
  EXPECT_EQ(RunOn(*other, "SELECT a FROM sales.t").errors.at(0).number, 208);
  EXPECT_EQ(RunOn(*other, "CREATE TABLE sales.t (a INT)").errors.at(0).number, 2760);
}

TEST_F(SchemasTest, AProcedureIsCalledByItsWholeName) {
  Must("CREATE PROCEDURE sales.p AS RETURN 6");
  Output output;
  EXPECT_EQ(session_->Call("sales.p", {}, output), 6);
}

} // namespace
} // namespace tsql::test
