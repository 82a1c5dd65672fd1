// Views and functions WITH SCHEMABINDING, and what they keep from being dropped and changed.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class SchemaBindingTest : public EngineTest {
 protected:
  SchemaBindingTest() { Must("CREATE TABLE t (a INT, b INT, c INT) INSERT INTO t VALUES (1, 2, 3)"); }
};

TEST_F(SchemaBindingTest, AView) {
  Must(
      "CREATE VIEW v WITH SCHEMABINDING, VIEW_METADATA AS SELECT a, b FROM dbo.t WHERE EXISTS (SELECT * FROM dbo.t)");
  EXPECT_EQ(Rows("SELECT * FROM v"), Lines({"1|2"}));
  EXPECT_EQ(Rows("SELECT OBJECTPROPERTY(OBJECT_ID('v'), 'IsSchemaBound')"), Lines({"1"}));
  EXPECT_EQ(ErrorText("DROP TABLE t"),
            "3729 1 Cannot DROP TABLE 't' because it is being referenced by object 'v'.");
  EXPECT_EQ(ErrorText("ALTER TABLE t DROP COLUMN b"), "5074 1 The object 'v' is dependent on column 'b'.");
  EXPECT_EQ(ErrorOf("ALTER TABLE t ALTER COLUMN a BIGINT"), 5074);
  EXPECT_EQ(ErrorOf("EXEC sp_rename 't.b', 'd'"), 15336);
  EXPECT_EQ(ErrorOf("EXEC sp_rename 't', 'u'"), 15336);
  Must("ALTER TABLE t DROP COLUMN c ALTER TABLE t ADD d INT TRUNCATE TABLE t");
  Must("DROP VIEW v DROP TABLE t");
}

TEST_F(SchemaBindingTest, AFunctionAndWhatItCalls) {
  Must("CREATE FUNCTION f (@a INT) RETURNS INT WITH SCHEMABINDING AS BEGIN "
       "RETURN (SELECT MAX(a) FROM dbo.t) + @a END");
  Must(
      "CREATE FUNCTION g () RETURNS @r TABLE (x INT) WITH SCHEMABINDING AS BEGIN INSERT @r SELECT dbo.f(1) RETURN END");
  Must("CREATE FUNCTION i () RETURNS TABLE WITH SCHEMABINDING AS RETURN SELECT x FROM dbo.g()");
  EXPECT_EQ(Rows("SELECT x FROM i()"), Lines({"2"}));
  EXPECT_EQ(ErrorText("DROP TABLE dbo.t"),
            "3729 1 Cannot DROP TABLE 'dbo.t' because it is being referenced by object 'f'.");
  EXPECT_EQ(ErrorText("DROP FUNCTION f"),
            "3729 1 Cannot DROP FUNCTION 'f' because it is being referenced by object 'g'.");
  EXPECT_EQ(ErrorText("ALTER FUNCTION g () RETURNS @r TABLE (x INT) AS BEGIN RETURN END"),
            "3729 1 Cannot ALTER 'g' because it is being referenced by object 'i'.");
  Must("ALTER FUNCTION i () RETURNS TABLE AS RETURN SELECT 1 AS x");
  Must("DROP FUNCTION g DROP FUNCTION f DROP TABLE t");
}

TEST_F(SchemaBindingTest, NamesHaveTwoPartsAndAreBoundThemselves) {
  EXPECT_EQ(
      ErrorText("CREATE VIEW v WITH SCHEMABINDING AS SELECT a FROM t"),
      "4512 1 Cannot schema bind view 'v' because name 't' is invalid for schema binding. Names must be in "
      "two-part format and an object cannot reference itself.");
  EXPECT_EQ(
      ErrorOf(
          "CREATE FUNCTION f () RETURNS INT WITH SCHEMABINDING AS BEGIN RETURN (SELECT MAX(a) FROM t) END"),
      4512);
  EXPECT_EQ(ErrorOf("CREATE FUNCTION f () RETURNS TABLE WITH SCHEMABINDING AS RETURN SELECT a FROM t"), 4512);
  EXPECT_EQ(ErrorText("CREATE VIEW v WITH SCHEMABINDING AS SELECT * FROM dbo.t"),
            "1054 1 Syntax '*' is not allowed in schema-bound objects.");
  EXPECT_EQ(ErrorOf("CREATE VIEW v WITH SCHEMABINDING AS SELECT COUNT(*) AS n FROM dbo.t"), 0);
  Must("CREATE VIEW loose AS SELECT a FROM t");
  EXPECT_EQ(ErrorText("CREATE VIEW w WITH SCHEMABINDING AS SELECT a FROM dbo.loose"),
            "4513 1 Cannot schema bind view 'w'. 'dbo.loose' is not schema bound.");
  Must("CREATE FUNCTION h () RETURNS INT AS BEGIN RETURN 1 END");
  EXPECT_EQ(ErrorOf("CREATE VIEW w WITH SCHEMABINDING AS SELECT dbo.h() AS a FROM dbo.t"), 4513);
  // A variable is no object, and what uses the bound ones need not be bound.
  Must("CREATE FUNCTION k () RETURNS INT WITH SCHEMABINDING AS BEGIN DECLARE @r TABLE (x INT) "
       "INSERT @r VALUES (1) RETURN (SELECT MAX(x) FROM @r) END");
  Must("CREATE VIEW x AS SELECT n FROM v WHERE n = dbo.k()");
  EXPECT_EQ(Rows("SELECT n FROM x"), Lines({"1"}));
  EXPECT_EQ(ErrorOf("CREATE VIEW w WITH SCHEMABINDING, OTHER AS SELECT 1 AS a"), 102);
}

TEST_F(SchemaBindingTest, AColumnOfTheSameNameInAnotherTable) {
  Must("CREATE TABLE u (a INT, e INT)");
  Must("CREATE VIEW v WITH SCHEMABINDING AS SELECT x.a, y.e FROM dbo.t x JOIN dbo.u y ON x.a = y.a");
  EXPECT_EQ(ErrorOf("ALTER TABLE t DROP COLUMN a"), 40510);
  EXPECT_EQ(ErrorOf("ALTER TABLE u DROP COLUMN e"), 5074);
  Must("ALTER TABLE t DROP COLUMN b");
}

} // namespace
} // namespace tsql::test
