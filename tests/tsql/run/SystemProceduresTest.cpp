// Procedures of the server: sp_rename and sp_helptext.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class SystemProceduresTest : public EngineTest {
 protected:
  // What the batch says beside rows.
  std::string Said(std::string_view batch) {
    const Output output = Run(batch);
    for (const Error& error : output.errors) return std::to_string(error.number) + " " + error.what();
    return output.messages.empty() ? std::string() : output.messages[0];
  }
};

constexpr char kCaution[] =
    "Caution: Changing any part of an object name could break scripts and stored procedures.";

// ---- sp_rename

TEST_F(SystemProceduresTest, ATableGetsAnotherName) {
  Must(
      "CREATE TABLE p (a INT PRIMARY KEY) CREATE TABLE t (id INT IDENTITY PRIMARY KEY, a INT REFERENCES p, b INT NULL UNIQUE)"
      " CREATE TABLE child (id INT CONSTRAINT fk REFERENCES t) INSERT INTO p VALUES (1) INSERT INTO t VALUES (1, 2)"
      " INSERT INTO child VALUES (1)");
  EXPECT_EQ(Said("DECLARE @r INT EXEC @r = sp_rename 't', 'new name' SELECT 1 WHERE @r = 0"), kCaution);
  EXPECT_EQ(ErrorOf("SELECT * FROM t"), 208);
  EXPECT_EQ(Rows("SELECT * FROM [new name]"), Lines({"1|1|2"}));
  Must("INSERT INTO [new name] VALUES (1, 3)");
  EXPECT_EQ(Rows("SELECT MAX(id) FROM [new name]"), Lines({"2"}));
  EXPECT_EQ(ErrorOf("INSERT INTO [new name] VALUES (2, 4)"), 547);
  EXPECT_EQ(ErrorOf("INSERT INTO [new name] VALUES (1, 3)"), 2627);
  EXPECT_EQ(ErrorOf("DELETE FROM [new name] WHERE id = 1"), 547);
  Must("EXEC sp_rename @newname = 't', @objname = '[dbo].[new name]', @objtype = 'object'"
       " CREATE TABLE [new name] (x INT) DROP TABLE child DROP TABLE t");
}

TEST_F(SystemProceduresTest, ANameInASchemaStaysInIt) {
  Must("CREATE SCHEMA s");
  Must(
      "CREATE TABLE s.t (a INT) INSERT INTO s.t VALUES (4) EXEC sp_rename 's.t', 'u' EXEC sp_rename 's.u.a', 'b'");
  EXPECT_EQ(Rows("SELECT b FROM s.u"), Lines({"4"}));
  EXPECT_EQ(ErrorOf("SELECT * FROM dbo.u"), 208);
}

TEST_F(SystemProceduresTest, ModulesGetOtherNames) {
  Must("CREATE PROCEDURE p @a INT AS SELECT @a");
  Must("CREATE VIEW v AS SELECT 1 AS a");
  Must("CREATE FUNCTION f () RETURNS INT AS BEGIN RETURN 5 END");
  Must("CREATE TABLE t (a INT)");
  Must("CREATE TRIGGER first ON t FOR INSERT AS PRINT 'first'");
  Must("CREATE TRIGGER second ON t FOR INSERT AS PRINT 'second'");
  Must(
      "EXEC sp_rename 'p', 'q' EXEC sp_rename 'v', 'w' EXEC sp_rename 'f', 'g' EXEC sp_rename 'first', 'zero'");
  EXPECT_EQ(Rows("EXEC q 3"), Lines({"3"}));
  EXPECT_EQ(Rows("SELECT a, dbo.g() FROM w"), Lines({"1|5"}));
  EXPECT_EQ(ErrorOf("EXEC p 3"), 2812);
  EXPECT_EQ(ErrorText("EXEC q"),
            "201 1 Procedure or function 'q' expects parameter '@a', which was not supplied.");
  // Triggers keep their order.
  EXPECT_EQ(Run("INSERT INTO t VALUES (1)").messages, Lines({"first", "second"}));
  Must("DROP TRIGGER zero");
}

TEST_F(SystemProceduresTest, AColumnGetsAnotherName) {
  Must("CREATE TABLE t (id INT PRIMARY KEY, a INT NULL UNIQUE, b INT DEFAULT 7, own INT REFERENCES t (id))"
       " CREATE INDEX ix ON t (b, a) CREATE TABLE child (r INT REFERENCES t (a))"
       " INSERT INTO t (id, a) VALUES (1, 10) INSERT INTO child VALUES (10)");
  EXPECT_EQ(Said("EXEC sp_rename 't.a', 'new a', 'COLUMN'"), kCaution);
  Must(
      "EXEC sp_rename 'dbo.t.id', 'key' EXEC sp_rename 't.b', 'B', 'column' EXEC sp_rename 't.own', 'parent'");
  EXPECT_EQ(Rows("SELECT [key], [new a], B, parent FROM t"), Lines({"1|10|7|NULL"}));
  EXPECT_EQ(ErrorOf("SELECT a FROM t"), 207);
  EXPECT_EQ(ErrorOf("INSERT INTO t ([key], [new a]) VALUES (2, 10)"), 2627);
  EXPECT_EQ(ErrorOf("INSERT INTO child VALUES (11)"), 547);
  EXPECT_EQ(ErrorOf("DELETE FROM t"), 547);
  EXPECT_EQ(ErrorOf("INSERT INTO t ([key], parent) VALUES (2, 9)"), 547);
  Must("INSERT INTO t ([key], [new a], parent) VALUES (2, NULL, 1)");
  EXPECT_EQ(ErrorOf("INSERT INTO t ([key]) VALUES (3)"), 2627); // a second null
  Must("DROP INDEX ix ON t");
}

TEST_F(SystemProceduresTest, WhatOthersNameKeepsItsName) {
  Must("CREATE TABLE t (a INT CHECK (a > 0), b INT, c AS b + 1, d INT)");
  EXPECT_EQ(Said("EXEC sp_rename 't.a', 'x', 'COLUMN'"),
            "15336 Object 't.a' cannot be renamed because the object participates in enforced dependencies.");
  EXPECT_EQ(Said("EXEC sp_rename 't.b', 'x', 'COLUMN'").substr(0, 5), "15336");
  EXPECT_EQ(ErrorOf("EXEC sp_rename 't.c', 'x', 'COLUMN'"), 4928);
  Must("EXEC sp_rename 't.d', 'x', 'COLUMN'");
}

TEST_F(SystemProceduresTest, AnIndexGetsAnotherName) {
  Must(
      "CREATE TABLE t (a INT NOT NULL CONSTRAINT pk PRIMARY KEY, b INT NULL CONSTRAINT uq UNIQUE, c INT)"
      " CREATE INDEX ix ON t (c) CREATE TABLE u (a INT CONSTRAINT other UNIQUE) INSERT INTO t VALUES (1, 1, 1)");
  Must(
      "EXEC sp_rename 't.ix', 'iy', 'INDEX' EXEC sp_rename 'dbo.t.uq', 'ur', 'INDEX' EXEC sp_rename 't.pk', 'key'");
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (2, 1, 1)"),
            "2627 1 Violation of UNIQUE KEY constraint 'ur'. Cannot insert duplicate key in object 'dbo.t'.");
  EXPECT_EQ(
      ErrorText("INSERT INTO t VALUES (1, 2, 1)"),
      "2627 1 Violation of PRIMARY KEY constraint 'key'. Cannot insert duplicate key in object 'dbo.t'.");
  EXPECT_EQ(ErrorOf("EXEC sp_rename 't.iy', 'ur', 'INDEX'"), 15335);
  EXPECT_EQ(ErrorOf("EXEC sp_rename 't.ur', 'other', 'INDEX'"), 15335);
  Must("DROP INDEX iy ON t ALTER TABLE t DROP CONSTRAINT ur");
}

TEST_F(SystemProceduresTest, WhatCannotBeRenamedIsToldAndStays) {
  Must("CREATE TABLE t (a INT, b INT CONSTRAINT k DEFAULT 1) CREATE TABLE u (a INT) CREATE TABLE #t (a INT)");
  const std::string database = Scalar("DB_NAME()");
  EXPECT_EQ(Said("EXEC sp_rename 'none', 'x'"),
            "15225 No item by the name of 'none' could be found in the current database '" + database +
                "', given that @itemtype was input as '(null)'.");
  EXPECT_EQ(Said("EXEC sp_rename 'none', 'x', 'OBJECT'").substr(0, 5), "15225");
  EXPECT_EQ(Said("EXEC sp_rename 't.none', 'x', 'COLUMN'"),
            "15248 Either the parameter @objname is ambiguous or the claimed @objtype (COLUMN) is wrong.");
  EXPECT_EQ(ErrorOf("EXEC sp_rename 't.none', 'x', 'INDEX'"), 15248);
  EXPECT_EQ(ErrorOf("EXEC sp_rename '#t.a', 'x', 'COLUMN'"), 15248);
  EXPECT_EQ(Said("EXEC sp_rename 't', 'x', 'TABLE'"),
            "15249 Error: Explicit @objtype 'TABLE' is unrecognized.");
  EXPECT_EQ(ErrorOf("EXEC sp_rename 't', 'x', 'DATABASE'"), 40510);
  EXPECT_EQ(Said("EXEC sp_rename '[t', 'x'"), "15253 Syntax error parsing SQL identifier '[t'.");
  EXPECT_EQ(ErrorOf("EXEC sp_rename NULL, 'x'"), 15253);
  EXPECT_EQ(ErrorOf("EXEC sp_rename 't', NULL"), 15223);
  EXPECT_EQ(ErrorOf("EXEC sp_rename 't'"), 201);
  EXPECT_EQ(
      Said("EXEC sp_rename 't', 'U'"),
      "15335 Error: The new name 'U' is already in use as a object name and would cause a duplicate that is "
      "not permitted.");
  EXPECT_EQ(ErrorOf("EXEC sp_rename 't.a', 'b', 'COLUMN'"), 15335);
  EXPECT_EQ(ErrorOf("EXEC sp_rename 'k', 'l'"), 40510);
  EXPECT_EQ(ErrorOf("EXEC sp_rename 't', '~5~t'"), 40510);
  // The procedure goes on and returns 1.
  EXPECT_EQ(Run("DECLARE @r INT EXEC @r = sp_rename 'none', 'x' SELECT @r").results.at(0), Lines({"1"}));
  EXPECT_EQ(
      Run("BEGIN TRY EXEC sp_rename 'none', 'x' END TRY BEGIN CATCH SELECT ERROR_NUMBER(), ERROR_PROCEDURE() END CATCH")
          .results.at(0),
      Lines({"15225|sp_rename"}));
  EXPECT_EQ(Rows("SELECT name FROM sys.tables ORDER BY name"), Lines({"t", "u"}));
}

TEST_F(SystemProceduresTest, ARollbackTakesARenameBack) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (1)");
  Must("BEGIN TRAN EXEC sp_rename 't.a', 'b', 'COLUMN' EXEC sp_rename 't', 'u' ROLLBACK");
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"1"}));
}

TEST_F(SystemProceduresTest, OtherSessionsSeeTheNewName) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (1)");
  const auto other = Session::Open(database_);
  EXPECT_EQ(RunOn(*other, "SELECT a FROM t").results, (std::vector<Lines>{{"1"}}));
  Must("EXEC sp_rename 't.a', 'b', 'COLUMN' EXEC sp_rename 't', 'u'");
  EXPECT_EQ(RunOn(*other, "SELECT b FROM u").results, (std::vector<Lines>{{"1"}}));
  EXPECT_EQ(RunOn(*other, "SELECT a FROM t").errors.at(0).number, 208);
}

// ---- sp_helptext

TEST_F(SystemProceduresTest, HelpTextGivesTheLinesOfAModule) {
  Must("CREATE PROCEDURE p AS\r\nSELECT 1\nSELECT N'\xe5\xad\x97'");
  EXPECT_EQ(Rows("EXEC sp_helptext 'p'"),
            Lines({"CREATE PROCEDURE p AS\r\n", "SELECT 1\n", "SELECT N'\xe5\xad\x97'"}));
  Must(
      "CREATE TABLE #lines (n INT IDENTITY, line NVARCHAR(255)) INSERT INTO #lines (line) EXEC sp_helptext 'dbo.p'");
  EXPECT_EQ(Rows("SELECT line FROM #lines WHERE n = 2"), Lines({"SELECT 1\n"}));
  Must("CREATE VIEW v AS SELECT '" + std::string(300, 'x') + "' AS a");
  EXPECT_EQ(Rows("EXEC sys.sp_helptext @objname = '[v]'"),
            Lines({"CREATE VIEW v AS SELECT '" + std::string(230, 'x'), std::string(70, 'x') + "' AS a"}));
  const Output output = Run("EXEC sp_helptext 'v'");
  EXPECT_EQ(output.columns.at(0).at(0).name, "Text");
  EXPECT_EQ(output.columns.at(0).at(0).type, (Type{TypeId::NVarChar, 255}));
}

TEST_F(SystemProceduresTest, HelpTextNeedsAModule) {
  Must("CREATE TABLE t (a INT)");
  EXPECT_EQ(Said("EXEC sp_helptext 't'"), "15197 There is no text for object 't'.");
  EXPECT_EQ(Said("EXEC sp_helptext 'none'"), "15009 The object 'none' does not exist in database '" +
                                                 Scalar("DB_NAME()") + "' or is invalid for this operation.");
  EXPECT_EQ(ErrorOf("EXEC sp_helptext 't', 'a'"), 40510);
}

TEST_F(SystemProceduresTest, AProcedureOfTheServerIsCalledDirectlyToo) {
  Must("CREATE TABLE t (a INT)");
  std::vector<Parameter> parameters(2);
  const char* const kValues[] = {"t", "u"};
  for (size_t i = 0; i < parameters.size(); ++i) {
    parameters[i].type = {TypeId::NVarChar, 30};
    parameters[i].value.kind = Value::Kind::Text;
    parameters[i].value.text = kValues[i];
  }
  Output output;
  EXPECT_EQ(session_->Call("sp_rename", parameters, output), 0);
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM u"), Lines({"0"}));
}

} // namespace
} // namespace tsql::test
