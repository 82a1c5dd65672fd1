// Permissions, statistics and checkpoints: what they name must be there, and that is all.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class AdministrationTest : public EngineTest {
 protected:
  AdministrationTest() {
    Must("CREATE TABLE t (a INT NOT NULL CONSTRAINT pk PRIMARY KEY, b INT NULL) CREATE INDEX ix ON t (b)");
    Must("CREATE SCHEMA s");
    Must("CREATE VIEW s.v AS SELECT a FROM t");
    Must("CREATE PROCEDURE p AS SELECT 1");
    Must("CREATE FUNCTION f () RETURNS INT AS BEGIN RETURN 1 END");
  }
};

TEST_F(AdministrationTest, PermissionsAreReadAndChangeNothing) {
  Must("GRANT SELECT, INSERT, UPDATE, DELETE ON t TO public");
  Must("GRANT SELECT (a, b), UPDATE (b) ON OBJECT::dbo.t TO somebody, [some role] WITH GRANT OPTION AS dbo");
  Must("GRANT EXEC ON p TO public GRANT EXECUTE ON dbo.f TO public; GRANT ALL PRIVILEGES ON s.v TO guest");
  Must("GRANT VIEW DEFINITION ON SCHEMA::s TO public GRANT SELECT ON t (a) TO public");
  Must("REVOKE GRANT OPTION FOR SELECT ON t FROM public CASCADE REVOKE ALL ON t TO public");
  // They do not bind the owner, who asks.
  Must("DENY SELECT, TAKE OWNERSHIP ON t TO public CASCADE INSERT INTO t VALUES (1, 2)");
  EXPECT_EQ(Rows("SELECT a, b FROM t"), Lines({"1|2"}));
  EXPECT_EQ(Rows("IF 1 = 0 GRANT SELECT ON missing TO public SELECT 'after'"), Lines({"after"}));
}

TEST_F(AdministrationTest, WhatAPermissionIsForMustBeThere) {
  EXPECT_EQ(
      ErrorText("GRANT SELECT ON missing TO public"),
      "15151 1 Cannot find the object 'missing', because it does not exist or you do not have permission.");
  EXPECT_EQ(ErrorOf("DENY EXECUTE ON s.p TO public"), 15151);
  EXPECT_EQ(
      ErrorText("REVOKE SELECT ON SCHEMA::missing FROM public"),
      "15151 1 Cannot find the schema 'missing', because it does not exist or you do not have permission.");
  EXPECT_EQ(ErrorText("GRANT SELECT (c) ON t TO public"), "207 1 Invalid column name 'c'.");
  EXPECT_EQ(ErrorOf("GRANT SELECT ON t"), 102);
  EXPECT_EQ(ErrorOf("GRANT SELECT ON t FROM public"), 156);
  for (const char* statement : {"GRANT CREATE TABLE TO public", "REVOKE CONNECT FROM guest",
                                "GRANT CONTROL ON DATABASE::x TO public", "GRANT ALTER ANY USER TO public"})
    EXPECT_EQ(ErrorText(statement),
              "40510 1 A permission on something other than an object or a schema is not supported.");
  EXPECT_EQ(ErrorOf("CREATE FUNCTION g () RETURNS INT AS BEGIN GRANT SELECT ON t TO public RETURN 1 END"),
            443);
}

TEST_F(AdministrationTest, StatisticsAndCheckpoints) {
  Must(
      "UPDATE STATISTICS t UPDATE STATISTICS dbo.t ix WITH FULLSCAN UPDATE STATISTICS t (pk, ix) WITH SAMPLE 10"
      " PERCENT, NORECOMPUTE UPDATE STATISTICS s.v UPDATE t SET b = 1 CHECKPOINT CHECKPOINT 10");
  EXPECT_EQ(ErrorText("UPDATE STATISTICS missing"), "2706 1 Table 'missing' does not exist.");
  EXPECT_EQ(ErrorText("UPDATE STATISTICS t other"),
            "2767 1 Could not locate statistics 'other' in the system catalogs.");
  EXPECT_EQ(ErrorOf("UPDATE STATISTICS t WITH SPEED"), 102);
}

} // namespace
} // namespace tsql::test
