// The limits of identity columns, and IDENTITY_INSERT.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class IdentityTest : public EngineTest {};

TEST_F(IdentityTest, TheTypeLimitsTheNumbers) {
  Must("CREATE TABLE t (id TINYINT IDENTITY(254,1), a INT)");
  Must("INSERT INTO t VALUES (1)");
  // The statement that runs out of numbers inserts none of its rows.
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (2), (3)"),
            "8115 1 Arithmetic overflow error converting IDENTITY to data type tinyint.");
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"254|1"}));
  Must("CREATE TABLE s (id SMALLINT IDENTITY(32767,1), a INT) INSERT INTO s VALUES (1)");
  EXPECT_EQ(ErrorOf("INSERT INTO s VALUES (2)"), 8115);
  Must("CREATE TABLE i (id INT IDENTITY(2147483647,1), a INT) INSERT INTO i VALUES (1)");
  EXPECT_EQ(ErrorOf("INSERT INTO i VALUES (2)"), 8115);
  Must("CREATE TABLE d (id DECIMAL(2,0) IDENTITY(99,1), a INT) INSERT INTO d VALUES (1)");
  EXPECT_EQ(ErrorOf("INSERT INTO d SELECT 2"), 8115);
  EXPECT_EQ(Rows("SELECT id FROM s UNION ALL SELECT id FROM i UNION ALL SELECT id FROM d"),
            Lines({"32767", "2147483647", "99"}));
}

TEST_F(IdentityTest, TheLimitHoldsWithinATransactionThatStaysOpen) {
  Must("CREATE TABLE t (id TINYINT IDENTITY(255,1), a INT)");
  const Output output =
      Run("BEGIN TRAN INSERT INTO t VALUES (1) INSERT INTO t VALUES (2) SELECT @@TRANCOUNT COMMIT");
  EXPECT_EQ(output.errors.at(0).number, 8115);
  EXPECT_EQ(output.results, std::vector<Lines>({{"1"}}));
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"255|1"}));
}

TEST_F(IdentityTest, ASeedOutsideTheTypeIsRefused) {
  EXPECT_EQ(ErrorOf("CREATE TABLE t (id TINYINT IDENTITY(256,1))"), 2752);
  EXPECT_EQ(ErrorOf("CREATE TABLE t (id SMALLINT IDENTITY(32768,1))"), 2752);
}

TEST_F(IdentityTest, BehindTheLargestNumberIs8115) {
  Must("CREATE TABLE t (id BIGINT IDENTITY(9223372036854775807,1), a INT) INSERT INTO t VALUES (1)");
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (2)"),
            "8115 1 Arithmetic overflow error converting IDENTITY to data type bigint.");
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"1"}));
}

TEST_F(IdentityTest, ADuplicateWithoutAKeyIsRefusedByName) {
  Must("CREATE TABLE t (id INT IDENTITY(1,1), a INT) INSERT INTO t VALUES (1)");
  EXPECT_EQ(ErrorText("SET IDENTITY_INSERT t ON INSERT INTO t (id, a) VALUES (1, 2)"),
            "40510 1 A value that is there twice in an identity column without a key is not supported.");
  Must("CREATE TABLE k (id INT IDENTITY(1,1) CONSTRAINT pk_k PRIMARY KEY, a INT) INSERT INTO k VALUES (1)");
  EXPECT_EQ(
      ErrorText("SET IDENTITY_INSERT t OFF SET IDENTITY_INSERT k ON INSERT INTO k (id, a) VALUES (1, 2)"),
      "2627 1 Violation of PRIMARY KEY constraint 'pk_k'. Cannot insert duplicate key in object 'dbo.k'.");
}

TEST_F(IdentityTest, IdentityInsertIsOnForOneTable) {
  Must("CREATE TABLE t (id INT IDENTITY(1,1), a INT) CREATE TABLE u (id INT IDENTITY(1,1), a INT) "
       "CREATE TABLE w (a INT)");
  Must("SET IDENTITY_INSERT t ON");
  EXPECT_EQ(
      ErrorText("SET IDENTITY_INSERT u ON"),
      "8107 1 IDENTITY_INSERT is already ON for table 't'. Cannot perform SET operation for table 'u'.");
  Must("SET IDENTITY_INSERT u OFF INSERT INTO t (id, a) VALUES (5, 1)");
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) VALUES (1)"), 545);
  Must("SET IDENTITY_INSERT t OFF SET IDENTITY_INSERT u ON SET IDENTITY_INSERT u OFF");
  EXPECT_EQ(ErrorOf("SET IDENTITY_INSERT w ON"), 8106);
  EXPECT_EQ(ErrorOf("SET IDENTITY_INSERT missing ON"), 1088);
  EXPECT_EQ(Rows("SELECT id FROM t"), Lines({"5"}));
}

} // namespace
} // namespace tsql::test
