// FOREIGN KEY constraints: refused statements leave everything as it was, the order of rows within a
// statement does not matter, and the definitions are checked as the server does.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class ForeignKeysTest : public EngineTest {
 protected:
  ForeignKeysTest() {
    Must("CREATE TABLE unit (id INT NOT NULL PRIMARY KEY, code VARCHAR(5) NOT NULL UNIQUE)"
         " INSERT INTO unit VALUES (1, 'PCS'), (2, 'KG')"
         " CREATE TABLE item (id INT NOT NULL PRIMARY KEY, unit INT NULL CONSTRAINT FK_item_unit REFERENCES "
         "unit (id),"
         "   code VARCHAR(5) NULL, parent INT NULL,"
         "   CONSTRAINT FK_item_code FOREIGN KEY (code) REFERENCES unit (code),"
         "   CONSTRAINT FK_item_self FOREIGN KEY (parent) REFERENCES item ON DELETE NO ACTION)");
  }
  std::string Conflict(const std::string& verb, const std::string& kind, const std::string& key,
                       const std::string& table, const std::string& column) {
    return "547 1 The " + verb + " statement conflicted with the " + kind + " constraint \"" + key +
           "\". The conflict occurred in database \"" + Scalar("DB_NAME()") + "\", table \"dbo." + table +
           "\", column '" + column + "'.";
  }
};

TEST_F(ForeignKeysTest, ChildrenNeedParents) {
  Must("INSERT INTO item VALUES (10, 1, 'pcs ', NULL), (11, NULL, NULL, 10)");
  EXPECT_EQ(ErrorText("INSERT INTO item VALUES (12, 1, NULL, NULL), (13, 3, NULL, NULL)"),
            Conflict("INSERT", "FOREIGN KEY", "FK_item_unit", "unit", "id"));
  EXPECT_EQ(ErrorText("UPDATE item SET code = 'M' WHERE id = 10"),
            Conflict("UPDATE", "FOREIGN KEY", "FK_item_code", "unit", "code"));
  EXPECT_EQ(ErrorText("UPDATE item SET parent = 99"),
            Conflict("UPDATE", "FOREIGN KEY SAME TABLE", "FK_item_self", "item", "id"));
  EXPECT_EQ(Rows("SELECT id, unit, code, parent FROM item ORDER BY id"),
            Lines({"10|1|pcs |NULL", "11|NULL|NULL|10"}));
}

TEST_F(ForeignKeysTest, ParentsOfChildrenStay) {
  Must("INSERT INTO item VALUES (10, 1, 'PCS', NULL)");
  EXPECT_EQ(ErrorText("DELETE FROM unit"), Conflict("DELETE", "REFERENCE", "FK_item_unit", "item", "unit"));
  EXPECT_EQ(ErrorText("UPDATE unit SET code = 'X' WHERE id = 1"),
            Conflict("UPDATE", "REFERENCE", "FK_item_code", "item", "code"));
  EXPECT_EQ(Rows("SELECT id, code FROM unit ORDER BY id"), Lines({"1|PCS", "2|KG"}));
  Must("UPDATE unit SET code = 'pcs' WHERE id = 1 DELETE FROM unit WHERE id = 2");
  EXPECT_EQ(ErrorOf("DROP TABLE unit"), 3726);
  EXPECT_EQ(ErrorOf("TRUNCATE TABLE unit"), 4712);
  Must("DROP TABLE item DELETE FROM unit DROP TABLE unit");
}

TEST_F(ForeignKeysTest, AStatementIsCheckedAsAWhole) {
  // Children before their parents, and both at once gone.
  Must("INSERT INTO item (id, parent) VALUES (3, 2), (2, 1), (1, NULL)");
  EXPECT_EQ(ErrorText("DELETE FROM item WHERE id = 1"),
            Conflict("DELETE", "SAME TABLE REFERENCE", "FK_item_self", "item", "parent"));
  Must("UPDATE item SET parent = 3 WHERE id = 2 DELETE FROM item WHERE id IN (2, 3)");
  EXPECT_EQ(Rows("SELECT id FROM item"), Lines({"1"}));
}

TEST_F(ForeignKeysTest, AConflictEndsTheStatementOnly) {
  Must("INSERT INTO unit VALUES (5, 'M')");
  const Output output =
      Run("BEGIN TRAN INSERT INTO item (id, unit) VALUES (1, 5) INSERT INTO item (id, unit) VALUES "
          "(2, 6) INSERT INTO item (id, unit) VALUES (3, 5) COMMIT SELECT COUNT(*) FROM item");
  ASSERT_EQ(output.errors.size(), 1U);
  EXPECT_EQ(output.errors[0].number, 547);
  EXPECT_EQ(output.results.at(0), Lines({"2"}));
  EXPECT_EQ(
      Rows("BEGIN TRY DELETE FROM unit WHERE id = 5 END TRY BEGIN CATCH SELECT ERROR_NUMBER() END CATCH"),
      Lines({"547"}));
}

TEST_F(ForeignKeysTest, AddedLater) {
  Must("CREATE TABLE line (a INT NULL, b INT NULL) INSERT INTO line VALUES (1, 1), (9, NULL)");
  EXPECT_EQ(ErrorText("ALTER TABLE line ADD CONSTRAINT FK_line FOREIGN KEY (a) REFERENCES unit"),
            Conflict("ALTER TABLE", "FOREIGN KEY", "FK_line", "unit", "id"));
  Must("ALTER TABLE line WITH NOCHECK ADD CONSTRAINT FK_line FOREIGN KEY (a) REFERENCES unit");
  EXPECT_EQ(ErrorOf("INSERT INTO line VALUES (8, 1)"), 547);
  Must("DELETE FROM line WHERE a = 9 ALTER TABLE line ADD FOREIGN KEY (b) REFERENCES unit (id)");
  EXPECT_EQ(ErrorOf("UPDATE line SET b = 7"), 547);
}

TEST_F(ForeignKeysTest, Definitions) {
  EXPECT_EQ(ErrorOf("CREATE TABLE t (a INT REFERENCES missing)"), 1767);
  EXPECT_EQ(ErrorOf("CREATE TABLE t (a INT, FOREIGN KEY (b) REFERENCES unit)"), 1769);
  EXPECT_EQ(ErrorOf("CREATE TABLE t (a INT REFERENCES unit (b))"), 1770);
  EXPECT_EQ(ErrorOf("CREATE TABLE u (a INT) CREATE TABLE t (a INT REFERENCES u)"), 1773);
  EXPECT_EQ(ErrorOf("CREATE TABLE t (a INT REFERENCES item (unit))"), 1776);
  EXPECT_EQ(ErrorOf("CREATE TABLE t (a SMALLINT REFERENCES unit (id))"), 1778);
  EXPECT_EQ(ErrorText("CREATE TABLE #t (a INT REFERENCES unit)"),
            "40510 1 A FOREIGN KEY constraint of a temporary table is not supported.");
}

TEST_F(ForeignKeysTest, OtherSessionsAreBound) {
  const auto other = Session::Open(database_);
  EXPECT_EQ(RunOn(*other, "INSERT INTO item (id, unit) VALUES (1, 3)").errors.at(0).number, 547);
  EXPECT_TRUE(RunOn(*other, "INSERT INTO item (id, unit) VALUES (1, 2)").errors.empty());
}

} // namespace
} // namespace tsql::test
