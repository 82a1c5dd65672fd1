// Referential actions of foreign keys: what becomes of the rows that refer to a changed one, which triggers
// see it, and which keys cannot have them.
#include "tests/tsql/FileTest.h"

namespace tsql::test {
namespace {

class CascadesTest : public EngineTest {
 protected:
  CascadesTest() {
    Must("CREATE TABLE unit (id INT NOT NULL PRIMARY KEY, code VARCHAR(10) NOT NULL UNIQUE)"
         " INSERT INTO unit VALUES (0, 'none'), (1, 'PCS'), (2, 'KG'), (3, 'M')"
         " CREATE TABLE log (n INT IDENTITY(1,1), what VARCHAR(60) NULL, number INT NULL)");
  }
  // A table of items that refer to units.
  void MakeItems(const std::string& actions, const std::string& column = "unit INT NULL") {
    Must("CREATE TABLE item (id INT NOT NULL PRIMARY KEY, " + column +
         " CONSTRAINT fk REFERENCES unit (id) " + actions +
         ", name VARCHAR(10) NULL)"
         " INSERT INTO item VALUES (10, 1, 'a'), (11, 2, 'b'), (12, 1, 'c')");
  }
  Lines Items() { return Rows("SELECT id, unit, name FROM item ORDER BY id"); }
  Lines Log() { return Rows("SELECT what, number FROM log ORDER BY n"); }
  std::string Conflict(const std::string& verb, const std::string& kind, const std::string& key,
                       const std::string& table, const std::string& column) {
    return "547 1 The " + verb + " statement conflicted with the " + kind + " constraint \"" + key +
           "\". The conflict occurred in database \"" + Scalar("DB_NAME()") + "\", table \"dbo." + table +
           "\", column '" + column + "'.";
  }
};

TEST_F(CascadesTest, DeletesWhatRefers) {
  MakeItems("ON DELETE CASCADE");
  const Output output = Run("DELETE FROM unit WHERE id IN (1, 3) SELECT @@ROWCOUNT");
  EXPECT_EQ(output.counts, std::vector<int64_t>({2})); // the statement's own rows alone
  EXPECT_EQ(output.results, std::vector<Lines>({{"2"}}));
  EXPECT_EQ(Items(), Lines({"11|2|b"}));
  // The other event has no action.
  EXPECT_EQ(ErrorText("UPDATE unit SET id = 9 WHERE id = 2"),
            Conflict("UPDATE", "REFERENCE", "fk", "item", "unit"));
  EXPECT_EQ(ErrorOf("INSERT INTO item VALUES (13, 8, 'd')"), 547);
}

TEST_F(CascadesTest, GivesTheNewKeyToWhatRefers) {
  MakeItems("ON UPDATE CASCADE");
  Must("UPDATE unit SET id = id + 1"); // keys that move from row to row
  EXPECT_EQ(Items(), Lines({"10|2|a", "11|3|b", "12|2|c"}));
  Must("UPDATE unit SET id = 5 - id WHERE id IN (2, 3)"); // and swap
  EXPECT_EQ(Items(), Lines({"10|3|a", "11|2|b", "12|3|c"}));
  EXPECT_EQ(ErrorText("DELETE FROM unit WHERE id = 3"),
            Conflict("DELETE", "REFERENCE", "fk", "item", "unit"));
  EXPECT_EQ(Items(), Lines({"10|3|a", "11|2|b", "12|3|c"}));
}

TEST_F(CascadesTest, SetsNull) {
  MakeItems("ON DELETE SET NULL ON UPDATE SET NULL");
  Must("DELETE FROM unit WHERE id = 1 UPDATE unit SET id = 22 WHERE id = 2");
  EXPECT_EQ(Items(), Lines({"10|NULL|a", "11|NULL|b", "12|NULL|c"}));
  Must("UPDATE item SET unit = 3");
  Must("UPDATE unit SET id = id, code = code + 'x'"); // no key is another one
  EXPECT_EQ(Items(), Lines({"10|3|a", "11|3|b", "12|3|c"}));
}

TEST_F(CascadesTest, SetsTheDefault) {
  MakeItems("ON DELETE SET DEFAULT ON UPDATE SET DEFAULT", "unit INT NOT NULL DEFAULT 0");
  Must("DELETE FROM unit WHERE id = 1 UPDATE unit SET id = 22 WHERE id = 2");
  EXPECT_EQ(Items(), Lines({"10|0|a", "11|0|b", "12|0|c"}));
  Must("UPDATE item SET unit = 3 DELETE FROM unit WHERE id = 0");
  // The default must be there.
  EXPECT_EQ(ErrorText("DELETE FROM unit WHERE id = 3"),
            Conflict("DELETE", "FOREIGN KEY", "fk", "unit", "id"));
  EXPECT_EQ(Items(), Lines({"10|3|a", "11|3|b", "12|3|c"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM unit WHERE id = 3"), Lines({"1"}));
  // A column without a default gets null, and a default may be a function's.
  Must("CREATE FUNCTION usual () RETURNS INT AS BEGIN RETURN 3 END");
  Must("DELETE FROM item INSERT INTO unit VALUES (5, 'T')"
       " CREATE TABLE part (a INT NULL REFERENCES unit ON DELETE SET DEFAULT,"
       "   b INT NULL) INSERT INTO part VALUES (5, 1) DELETE FROM unit WHERE id = 5");
  EXPECT_EQ(Rows("SELECT a, b FROM part"), Lines({"NULL|1"}));
  Must("DROP TABLE part CREATE TABLE part (a INT DEFAULT dbo.usual() REFERENCES unit ON DELETE SET DEFAULT)"
       " INSERT INTO unit VALUES (6, 'S') INSERT INTO part VALUES (6) DELETE FROM unit WHERE id = 6");
  EXPECT_EQ(Rows("SELECT a FROM part"), Lines({"3"}));
}

TEST_F(CascadesTest, GoesOnToWhatRefersToThose) {
  Must("CREATE TABLE a (id INT PRIMARY KEY) CREATE TABLE b (id INT PRIMARY KEY, a INT UNIQUE REFERENCES a"
       " ON DELETE CASCADE ON UPDATE CASCADE) CREATE TABLE c (id INT PRIMARY KEY, a INT REFERENCES b (a)"
       " ON DELETE SET NULL ON UPDATE CASCADE, b INT CONSTRAINT fk_c REFERENCES b (id))"
       " INSERT INTO a VALUES (1), (2), (3) INSERT INTO b VALUES (11, 1), (12, 2)"
       " INSERT INTO c VALUES (21, 1, NULL), (22, 2, 12), (23, 1, NULL)");
  Must("UPDATE a SET id = id * 10");
  EXPECT_EQ(Rows("SELECT id, a FROM b ORDER BY id"), Lines({"11|10", "12|20"}));
  EXPECT_EQ(Rows("SELECT id, a FROM c ORDER BY id"), Lines({"21|10", "22|20", "23|10"}));
  // A key without an action ends it all.
  EXPECT_EQ(ErrorText("DELETE FROM a"), Conflict("DELETE", "REFERENCE", "fk_c", "c", "b"));
  EXPECT_EQ(Rows("SELECT (SELECT COUNT(*) FROM a), (SELECT COUNT(*) FROM b), COUNT(a) FROM c"),
            Lines({"3|2|3"}));
  Must("DELETE FROM a WHERE id = 10");
  EXPECT_EQ(Rows("SELECT id, a FROM c ORDER BY id"), Lines({"21|NULL", "22|20", "23|NULL"}));
}

TEST_F(CascadesTest, KeysOfSeveralColumnsAndTextsUnderTheCollation) {
  Must(
      "CREATE TABLE p (a VARCHAR(10) NOT NULL, b INT NOT NULL, PRIMARY KEY (a, b))"
      " CREATE TABLE k (id INT PRIMARY KEY, b INT, a VARCHAR(10), CONSTRAINT fk_k FOREIGN KEY (a, b)"
      " REFERENCES p (a, b) ON UPDATE CASCADE ON DELETE CASCADE)"
      " INSERT INTO p VALUES ('x', 1), ('x', 2) INSERT INTO k VALUES (1, 1, 'X '), (2, 2, 'x'), (3, NULL, 'x')");
  Must("UPDATE p SET a = 'y' WHERE b = 1");
  EXPECT_EQ(Rows("SELECT id, a, b FROM k ORDER BY id"), Lines({"1|y|1", "2|x|2", "3|x|NULL"}));
  Must("DELETE FROM p");
  EXPECT_EQ(Rows("SELECT id FROM k"), Lines({"3"})); // what is partly null refers to nothing
}

TEST_F(CascadesTest, AKeyTooLongForWhatRefersUndoesAll) {
  Must(
      "CREATE TABLE p (a VARCHAR(10) NOT NULL PRIMARY KEY) CREATE TABLE k (a VARCHAR(3) REFERENCES p ON UPDATE"
      " CASCADE) INSERT INTO p VALUES ('abc') INSERT INTO k VALUES ('abc')");
  EXPECT_EQ(ErrorOf("UPDATE p SET a = 'abcd'"), 8152);
  EXPECT_EQ(Rows("SELECT p.a, k.a FROM p, k"), Lines({"abc|abc"}));
}

TEST_F(CascadesTest, ConstraintsOfWhatIsChangedHold) {
  MakeItems("ON DELETE SET NULL");
  Must("ALTER TABLE item ADD CONSTRAINT ck CHECK (unit IS NOT NULL OR name <> 'c')");
  EXPECT_EQ(ErrorOf("DELETE FROM unit WHERE id = 1"), 547);
  EXPECT_EQ(Items(), Lines({"10|1|a", "11|2|b", "12|1|c"}));
  Must(
      "ALTER TABLE item DROP CONSTRAINT ck ALTER TABLE item ADD UNIQUE (unit, name) UPDATE item SET name = 'a'"
      " WHERE id = 11");
  EXPECT_EQ(ErrorOf("DELETE FROM unit WHERE id IN (1, 2)"), 2627);
  EXPECT_EQ(Items(), Lines({"10|1|a", "11|2|a", "12|1|c"}));
}

TEST_F(CascadesTest, ARollbackUndoesAll) {
  MakeItems("ON DELETE CASCADE ON UPDATE CASCADE");
  Must("BEGIN TRAN UPDATE unit SET id = 7 WHERE id = 1 DELETE FROM unit WHERE id IN (2, 7)"
       " IF EXISTS (SELECT * FROM item) RAISERROR ('left', 16, 1) ROLLBACK");
  EXPECT_EQ(Items(), Lines({"10|1|a", "11|2|b", "12|1|c"}));
}

TEST_F(CascadesTest, OtherStatementsThatChange) {
  MakeItems("ON DELETE CASCADE ON UPDATE CASCADE");
  Must("CREATE TABLE gone (id INT)");
  // OUTPUT, as a result and into a table, has the statement's own rows.
  EXPECT_EQ(Rows("UPDATE unit SET id = 5 OUTPUT deleted.id, inserted.id WHERE id = 2"), Lines({"2|5"}));
  Must("DELETE TOP (1) FROM unit OUTPUT deleted.id INTO gone WHERE id = 5");
  EXPECT_EQ(Rows("SELECT id FROM gone"), Lines({"5"}));
  EXPECT_EQ(Items(), Lines({"10|1|a", "12|1|c"}));
  Must("DECLARE @i INT DECLARE c CURSOR LOCAL FOR SELECT id FROM unit WHERE id = 1 OPEN c FETCH c INTO @i"
       " UPDATE unit SET id = 8 WHERE CURRENT OF c IF @@ROWCOUNT <> 1 RAISERROR ('count', 16, 1)");
  EXPECT_EQ(Items(), Lines({"10|8|a", "12|8|c"}));
  Must("SET ROWCOUNT 1 DELETE FROM unit WHERE id = 8 SET ROWCOUNT 0"); // a limit of the statement's own rows
  EXPECT_EQ(Items(), Lines());
}

TEST_F(CascadesTest, TriggersOfWhatIsChangedFireFirst) {
  MakeItems("ON DELETE CASCADE ON UPDATE CASCADE");
  Must("CREATE TABLE note (item INT REFERENCES item ON DELETE CASCADE, text VARCHAR(5))"
       " INSERT INTO note VALUES (10, 'x'), (10, 'y'), (11, 'z')");
  Must("CREATE TRIGGER on_unit ON unit AFTER DELETE, UPDATE AS"
       " INSERT INTO log SELECT 'unit', @@ROWCOUNT");
  Must("CREATE TRIGGER on_item ON item AFTER DELETE, UPDATE AS"
       " INSERT INTO log SELECT 'item ' + CASE WHEN UPDATE(unit) THEN 'unit' ELSE '' END, @@ROWCOUNT"
       " INSERT INTO log SELECT 'old', id + unit FROM deleted ORDER BY id"
       " INSERT INTO log SELECT 'new', id + unit FROM inserted ORDER BY id");
  Must("CREATE TRIGGER on_note ON note AFTER DELETE AS INSERT INTO log SELECT 'note', COUNT(*) FROM deleted");
  Must("UPDATE unit SET id = 100 WHERE id = 1");
  EXPECT_EQ(Log(), Lines({"item unit|2", "old|11", "old|13", "new|110", "new|112", "unit|1"}));
  Must("TRUNCATE TABLE log DELETE FROM unit WHERE id = 100");
  EXPECT_EQ(Log(), Lines({"note|2", "item |2", "old|110", "old|112", "unit|1"}));
  // Where nothing refers, the statement's own triggers alone.
  Must("TRUNCATE TABLE log DELETE FROM unit WHERE id = 3");
  EXPECT_EQ(Log(), Lines({"unit|1"}));
  // A trigger that rolls back takes all of it.
  Must("ALTER TRIGGER on_note ON note AFTER DELETE AS ROLLBACK");
  EXPECT_EQ(ErrorOf("DELETE FROM unit"), 3609);
  EXPECT_EQ(Items(), Lines({"11|2|b"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM unit"), Lines({"2"}));
}

TEST_F(CascadesTest, InsteadOfTriggersAndActionsExcludeEachOther) {
  MakeItems("ON DELETE CASCADE");
  EXPECT_EQ(
      ErrorText("CREATE TRIGGER tr ON item INSTEAD OF DELETE AS PRINT 'x'"),
      "2113 1 Cannot CREATE INSTEAD OF DELETE or INSTEAD OF UPDATE TRIGGER 'tr' on table 'item'. This is "
      "because the table has a FOREIGN KEY with cascading DELETE or UPDATE.");
  Must("CREATE TRIGGER tr ON item INSTEAD OF UPDATE AS PRINT 'x'"); // the other event
  Must("CREATE TABLE part (unit INT)");
  Must("CREATE TRIGGER tp ON part INSTEAD OF UPDATE, DELETE AS PRINT 'x'");
  EXPECT_EQ(
      ErrorText("ALTER TABLE part ADD CONSTRAINT fp FOREIGN KEY (unit) REFERENCES unit ON UPDATE SET NULL"),
      "1787 1 Cannot define foreign key constraint 'fp' with cascaded DELETE or UPDATE on table 'part' "
      "because the table has an INSTEAD OF DELETE or UPDATE TRIGGER defined on it.");
  Must("ALTER TABLE part ADD CONSTRAINT fp FOREIGN KEY (unit) REFERENCES unit");
  // In place of a statement on the other side runs what makes the change itself.
  Must(
      "CREATE TRIGGER tu ON unit INSTEAD OF DELETE AS DELETE FROM unit WHERE id IN (SELECT id FROM deleted)");
  Must("DELETE FROM unit WHERE id = 1");
  EXPECT_EQ(Items(), Lines({"11|2|b"}));
}

TEST_F(CascadesTest, KeysThatMeetATableTwiceAreRefused) {
  const std::string rest =
      "' may cause cycles or multiple cascade paths. Specify ON DELETE NO ACTION or ON UPDATE "
      "NO ACTION, or modify other FOREIGN KEY constraints.";
  const auto refused = [&](const std::string& key, const std::string& table) {
    return "1785 1 Introducing FOREIGN KEY constraint '" + key + "' on table '" + table + rest;
  };
  EXPECT_EQ(
      ErrorText("CREATE TABLE t (id INT PRIMARY KEY, up INT CONSTRAINT k REFERENCES t ON DELETE SET NULL)"),
      refused("k", "t"));
  EXPECT_EQ(
      ErrorText("CREATE TABLE t (a INT REFERENCES unit ON DELETE CASCADE, b INT CONSTRAINT k REFERENCES unit"
                " ON DELETE SET NULL)"),
      refused("k", "t"));
  MakeItems("ON DELETE CASCADE");
  EXPECT_EQ(
      ErrorText("CREATE TABLE t (a INT REFERENCES item ON DELETE CASCADE, b INT CONSTRAINT k REFERENCES unit"
                " ON DELETE CASCADE)"),
      refused("k", "t"));
  Must("CREATE TABLE t (id INT PRIMARY KEY, a INT REFERENCES item ON DELETE CASCADE, b INT REFERENCES unit)");
  EXPECT_EQ(
      Run("ALTER TABLE unit ADD top_t INT, CONSTRAINT k FOREIGN KEY (top_t) REFERENCES t ON DELETE CASCADE")
          .errors.at(0)
          .number,
      1785);
  // The two events are two ways.
  Must("CREATE TABLE u (a INT REFERENCES item ON DELETE CASCADE, b INT REFERENCES unit ON UPDATE CASCADE)");
}

TEST_F(CascadesTest, Definitions) {
  EXPECT_EQ(
      ErrorText("CREATE TABLE t (a INT NOT NULL CONSTRAINT k REFERENCES unit ON DELETE SET NULL)"),
      "1761 1 Cannot create the foreign key \"k\" with the SET NULL referential action, because one or more "
      "referencing columns are not nullable.");
  EXPECT_EQ(
      ErrorText("CREATE TABLE t (a INT NOT NULL CONSTRAINT k REFERENCES unit ON UPDATE SET DEFAULT)"),
      "1762 1 Cannot create the foreign key \"k\" with the SET DEFAULT referential action, because one or "
      "more referencing not-nullable columns lack a default constraint.");
  EXPECT_EQ(
      ErrorOf("CREATE TABLE t (b INT, a AS b PERSISTED CONSTRAINT k REFERENCES unit ON DELETE SET NULL)"),
      1765);
  EXPECT_EQ(
      ErrorOf("CREATE TABLE t (b INT, a AS b PERSISTED CONSTRAINT k REFERENCES unit ON UPDATE CASCADE)"),
      1715);
  EXPECT_EQ(ErrorOf("CREATE TABLE t (a INT IDENTITY REFERENCES unit ON UPDATE CASCADE)"), 1788);
  EXPECT_EQ(ErrorOf("CREATE TABLE t (a INT REFERENCES unit ON DELETE CASCADE ON DELETE CASCADE)"), 156);
  EXPECT_EQ(ErrorOf("CREATE TABLE t (a INT REFERENCES unit ON DELETE SET 1)"), 102);
  Must("CREATE TABLE t (a INT NOT NULL IDENTITY REFERENCES unit ON DELETE CASCADE)");
  MakeItems("ON UPDATE SET NULL ON DELETE SET DEFAULT NOT FOR REPLICATION");
  EXPECT_EQ(
      Rows("SELECT delete_referential_action, delete_referential_action_desc, update_referential_action,"
           " update_referential_action_desc FROM sys.foreign_keys WHERE name = 'fk'"),
      Lines({"3|SET_DEFAULT|2|SET_NULL"}));
}

TEST_F(CascadesTest, WhatIsSwitchedOffDoesNothing) {
  MakeItems("ON DELETE CASCADE");
  Must("ALTER TABLE item NOCHECK CONSTRAINT fk DELETE FROM unit WHERE id = 1");
  EXPECT_EQ(Items(), Lines({"10|1|a", "11|2|b", "12|1|c"}));
  Must("DELETE FROM item WHERE unit = 1 ALTER TABLE item CHECK CONSTRAINT fk DELETE FROM unit");
  EXPECT_EQ(Items(), Lines());
}

TEST_F(CascadesTest, FollowsRenamesAndAlterations) {
  MakeItems("ON DELETE CASCADE ON UPDATE CASCADE");
  Must("EXEC sp_rename 'unit.id', 'number', 'COLUMN' EXEC sp_rename 'item.unit', 'u', 'COLUMN'"
       " EXEC sp_rename 'unit', 'measure' ALTER TABLE item ADD more INT NOT NULL DEFAULT 1"
       " ALTER TABLE measure ALTER COLUMN code VARCHAR(20) NOT NULL");
  Must("UPDATE measure SET number = 9 WHERE number = 1 DELETE FROM measure WHERE number = 2");
  EXPECT_EQ(Rows("SELECT id, u, more FROM item ORDER BY id"), Lines({"10|9|1", "12|9|1"}));
}

class CascadesFileTest : public FileTest {};

TEST_F(CascadesFileTest, OtherSessionsAndLaterOnesHaveThem) {
  {
    const auto database = Database::Open(path_, OpenMode::Create);
    const auto first = Session::Open(database);
    const auto second = Session::Open(database);
    EXPECT_TRUE(RunOn(*first,
                      "CREATE TABLE p (id INT PRIMARY KEY) CREATE TABLE k (a INT REFERENCES p ON UPDATE"
                      " CASCADE ON DELETE SET NULL) INSERT INTO p VALUES (1) INSERT INTO k VALUES (1)")
                    .errors.empty());
    EXPECT_TRUE(RunOn(*second, "UPDATE p SET id = 2").errors.empty());
  }
  const auto later = Session::Open(Database::Open(path_, OpenMode::Existing));
  EXPECT_EQ(RunOn(*later, "SELECT a FROM k DELETE FROM p SELECT a FROM k").results,
            std::vector<Lines>({{"2"}, {"NULL"}}));
}

} // namespace
} // namespace tsql::test
