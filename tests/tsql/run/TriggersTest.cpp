// Triggers: when they fire, what they see, and what their errors and rollbacks end.
#include "tests/tsql/FileTest.h"

namespace tsql::test {
namespace {

class TriggersTest : public EngineTest {
 protected:
  TriggersTest() {
    Must("CREATE TABLE t (id INT NOT NULL PRIMARY KEY, name VARCHAR(10) NULL, qty INT NULL)");
    Must("CREATE TABLE log (n INT IDENTITY(100,1), what VARCHAR(40) NULL, id INT NULL)");
    Must("INSERT INTO t VALUES (1, 'one', 10), (2, 'two', 20), (3, 'three', 30)");
  }
  Lines Log() { return Rows("SELECT what, id FROM log ORDER BY n"); }
  Lines Table() { return Rows("SELECT id, name, qty FROM t ORDER BY id"); }
  static std::vector<int> NumbersOf(const Output& output) {
    std::vector<int> numbers;
    for (const Error& error : output.errors) numbers.push_back(error.number);
    return numbers;
  }
};

TEST_F(TriggersTest, SeesTheRowsBeforeAndAfter) {
  Must("CREATE TRIGGER tr ON t AFTER INSERT, UPDATE, DELETE AS"
       " INSERT INTO log (what, id) SELECT 'new ' + name, id FROM inserted ORDER BY id"
       " INSERT INTO log (what, id) SELECT 'old ' + name, id FROM deleted ORDER BY id");
  Must("INSERT INTO t VALUES (4, 'four', 40), (5, 'five', 50)");
  EXPECT_EQ(Log(), Lines({"new four|4", "new five|5"}));
  Must("DELETE FROM log UPDATE t SET name = UPPER(name) WHERE id > 3");
  EXPECT_EQ(Log(), Lines({"new FOUR|4", "new FIVE|5", "old four|4", "old five|5"}));
  Must("DELETE FROM log DELETE FROM t WHERE id = 5");
  EXPECT_EQ(Log(), Lines({"old FIVE|5"}));
  // Keys that move from row to row.
  Must("DELETE FROM log DELETE FROM t WHERE id > 2 UPDATE t SET id = id + 1");
  EXPECT_EQ(Log(), Lines({"old three|3", "old FOUR|4", "new one|2", "new two|3", "old one|1", "old two|2"}));
  EXPECT_EQ(Table(), Lines({"2|one|10", "3|two|20"}));
}

TEST_F(TriggersTest, FiresOnceAStatementAndForNoRowsToo) {
  Must("CREATE TRIGGER tr ON t FOR INSERT, UPDATE, DELETE AS INSERT INTO log (id) VALUES (@@ROWCOUNT)");
  Must("UPDATE t SET qty = 1 UPDATE t SET qty = 1 WHERE id = 99 DELETE FROM t WHERE id = 99"
       " INSERT INTO t SELECT 10, 'x', 1 WHERE 1 = 0");
  EXPECT_EQ(Rows("SELECT id FROM log ORDER BY n"), Lines({"3", "0", "0", "0"}));
  // To its caller the statement's count is its own.
  const Output output = Run("UPDATE t SET qty = 2 WHERE id < 3 SELECT @@ROWCOUNT");
  EXPECT_EQ(output.results, std::vector<Lines>({{"2"}}));
  EXPECT_EQ(output.counts, std::vector<int64_t>({1, 2}));
}

TEST_F(TriggersTest, SeveralFireInTheOrderInWhichTheyWereMade) {
  for (const char* name : {"zz", "mm", "aa"})
    Must("CREATE TRIGGER " + std::string(name) + " ON t FOR UPDATE AS INSERT INTO log (what) VALUES ('" +
         name + "')");
  Must("UPDATE t SET qty = 1");
  EXPECT_EQ(Rows("SELECT what FROM log ORDER BY n"), Lines({"zz", "mm", "aa"}));
  // What is altered keeps its place.
  Must("ALTER TRIGGER zz ON t FOR UPDATE, DELETE AS INSERT INTO log (what) VALUES ('ZZ')");
  Must("TRUNCATE TABLE log UPDATE t SET qty = 1");
  EXPECT_EQ(Rows("SELECT what FROM log ORDER BY n"), Lines({"ZZ", "mm", "aa"}));
  Must("TRUNCATE TABLE log DELETE FROM t WHERE id = 1");
  EXPECT_EQ(Rows("SELECT what FROM log"), Lines({"ZZ"}));
}

TEST_F(TriggersTest, ComparesTextsOfTheRowsAsTheTableDoes) {
  Must(
      "CREATE TRIGGER tr ON t FOR INSERT AS"
      " IF EXISTS (SELECT * FROM inserted WHERE name = 'ABC ') INSERT INTO log (what) VALUES ('found')"
      " INSERT INTO log (what, id) SELECT name, COUNT(*) FROM inserted GROUP BY name"
      " INSERT INTO log (what, id) SELECT 'both', i.id FROM inserted i JOIN t ON t.name = i.name AND t.id < 10");
  Must("INSERT INTO t VALUES (10, 'abc', 1), (11, 'Abc', 1), (12, 'TWO', 1)");
  EXPECT_EQ(Rows("SELECT UPPER(what), id FROM log ORDER BY n"),
            Lines({"FOUND|NULL", "ABC|2", "TWO|1", "BOTH|12"}));
}

TEST_F(TriggersTest, ChangesItsOwnTableThroughInserted) {
  Must("CREATE TRIGGER tr ON t AFTER INSERT, UPDATE AS"
       " UPDATE t SET qty = i.qty * 2 FROM t JOIN inserted i ON i.id = t.id"
       " DELETE t FROM t, deleted d WHERE d.id = t.id AND d.qty < 0");
  Must("INSERT INTO t VALUES (4, 'x', 7)");
  EXPECT_EQ(Rows("SELECT qty FROM t WHERE id = 4"), Lines({"14"}));
  Must("UPDATE t SET qty = 3 WHERE id IN (1, 2)");
  EXPECT_EQ(Table(), Lines({"1|one|6", "2|two|6", "3|three|30", "4|x|14"}));
}

TEST_F(TriggersTest, UpdateSaysWhichColumnsTheStatementGivesValues) {
  Must("CREATE TRIGGER tr ON t FOR INSERT, UPDATE, DELETE AS"
       " IF UPDATE(name) INSERT INTO log (what) VALUES ('name')"
       " IF NOT UPDATE(name) AND (UPDATE(qty) OR UPDATE(id)) INSERT INTO log (what) VALUES ('other')"
       " INSERT INTO log (what) SELECT CASE WHEN UPDATE([qty]) THEN 'qty' ELSE 'no qty' END");
  Must("UPDATE t SET name = name WHERE 1 = 0");
  EXPECT_EQ(Rows("SELECT what FROM log ORDER BY n"), Lines({"name", "no qty"}));
  Must("TRUNCATE TABLE log UPDATE t SET qty = 1");
  EXPECT_EQ(Rows("SELECT what FROM log ORDER BY n"), Lines({"other", "qty"}));
  Must("TRUNCATE TABLE log INSERT INTO t (id) VALUES (9)"); // all columns, given or not
  EXPECT_EQ(Rows("SELECT what FROM log ORDER BY n"), Lines({"name", "qty"}));
  Must("TRUNCATE TABLE log DELETE FROM t");
  EXPECT_EQ(Rows("SELECT what FROM log ORDER BY n"), Lines({"no qty"}));
  EXPECT_EQ(ErrorOf("CREATE TRIGGER x ON t FOR UPDATE AS IF UPDATE(nothing) PRINT 'x'"), 207);
  EXPECT_EQ(ErrorText("IF UPDATE(id) PRINT 'x'"),
            "140 1 Can only use IF UPDATE within a CREATE TRIGGER statement.");
  EXPECT_EQ(ErrorText("CREATE TRIGGER x ON t FOR UPDATE AS IF COLUMNS_UPDATED() > 0 PRINT 'x'"),
            "40510 1 The function COLUMNS_UPDATED is not supported.");
}

TEST_F(TriggersTest, AnErrorUndoesTheStatementAndEndsTheBatch) {
  Must("CREATE TRIGGER tr ON t FOR UPDATE AS INSERT INTO log (what) VALUES ('done') SELECT 1 / 0"
       " INSERT INTO log (what) VALUES ('never')");
  const Output output = Run("BEGIN TRAN INSERT INTO log (what) VALUES ('before') UPDATE t SET qty = 0"
                            " PRINT 'not reached'");
  EXPECT_EQ(NumbersOf(output), std::vector<int>({8134}));
  EXPECT_TRUE(output.messages.empty());
  EXPECT_EQ(session_->TransactionCount(), 0);
  EXPECT_EQ(Log(), Lines());
  EXPECT_EQ(Rows("SELECT SUM(qty) FROM t"), Lines({"60"}));
  // The same without a transaction of the caller, and from a procedure.
  Must("CREATE PROCEDURE p AS UPDATE t SET qty = 0 PRINT 'not here'");
  const Output called = Run("EXEC p PRINT 'nor here'");
  EXPECT_EQ(NumbersOf(called), std::vector<int>({8134}));
  EXPECT_TRUE(called.messages.empty());
  EXPECT_EQ(Rows("SELECT SUM(qty), (SELECT COUNT(*) FROM log) FROM t"), Lines({"60|0"}));
}

TEST_F(TriggersTest, AnErrorIsCaughtByTheCaller) {
  Must("CREATE TRIGGER tr ON t FOR UPDATE AS INSERT INTO log (what) VALUES ('done') SELECT 1 / 0");
  const Output output =
      Run("BEGIN TRY UPDATE t SET qty = 0 END TRY BEGIN CATCH SELECT ERROR_NUMBER(), ERROR_PROCEDURE(),"
          " @@TRANCOUNT, XACT_STATE() END CATCH SELECT SUM(qty), (SELECT COUNT(*) FROM log) FROM t");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.results, std::vector<Lines>({{"8134|tr|0|0"}, {"60|0"}}));
  // The transaction of the caller can only be rolled back.
  EXPECT_EQ(
      Rows(
          "BEGIN TRAN BEGIN TRY UPDATE t SET qty = 0 END TRY BEGIN CATCH SELECT XACT_STATE() ROLLBACK END CATCH"),
      Lines({"-1"}));
}

TEST_F(TriggersTest, WithoutXactAbortAnErrorEndsItsStatementAlone) {
  Must("CREATE TRIGGER tr ON t FOR UPDATE AS SET XACT_ABORT OFF SELECT 1 / 0"
       " INSERT INTO log (what) VALUES ('after')");
  const Output output = Run("UPDATE t SET qty = 0 WHERE id = 1 PRINT 'reached'");
  EXPECT_EQ(NumbersOf(output), std::vector<int>({8134}));
  EXPECT_EQ(output.messages, Lines({"reached"}));
  EXPECT_EQ(Rows("SELECT what FROM log"), Lines({"after"}));
  EXPECT_EQ(Rows("SELECT qty FROM t WHERE id = 1"), Lines({"0"}));
}

TEST_F(TriggersTest, RaiserrorUndoesNothingByItself) {
  Must(
      "CREATE TRIGGER tr ON t FOR UPDATE AS RAISERROR('careful', 16, 1) INSERT INTO log (what) VALUES ('after')");
  const Output output = Run("UPDATE t SET qty = 0 PRINT 'reached'");
  EXPECT_EQ(NumbersOf(output), std::vector<int>({50000}));
  EXPECT_EQ(output.messages, Lines({"reached"}));
  EXPECT_EQ(Rows("SELECT SUM(qty), (SELECT COUNT(*) FROM log) FROM t"), Lines({"0|1"}));
}

TEST_F(TriggersTest, RollbackEndsTheBatch) {
  Must("CREATE TRIGGER tr ON t FOR UPDATE AS IF EXISTS (SELECT * FROM inserted WHERE qty < 0)"
       " BEGIN RAISERROR('no', 16, 1) ROLLBACK TRANSACTION INSERT INTO log (what) VALUES ('stays') END");
  const Output output = Run("BEGIN TRAN INSERT INTO log (what) VALUES ('gone') UPDATE t SET qty = -1"
                            " PRINT 'not reached'");
  EXPECT_EQ(NumbersOf(output), std::vector<int>({50000, 3609}));
  EXPECT_STREQ(output.errors[1].what(), "The transaction ended in the trigger. The batch has been aborted.");
  EXPECT_TRUE(output.messages.empty());
  EXPECT_EQ(session_->TransactionCount(), 0);
  EXPECT_EQ(Rows("SELECT what FROM log"), Lines({"stays"}));
  EXPECT_EQ(Rows("SELECT SUM(qty) FROM t"), Lines({"60"}));
  EXPECT_EQ(NumbersOf(Run("UPDATE t SET qty = -1 PRINT 'x'")), std::vector<int>({50000, 3609}));
  EXPECT_EQ(Rows("SELECT SUM(qty) FROM t"), Lines({"60"}));
  Must("UPDATE t SET qty = 1");
  // A caller catches it; a procedure's caller ends too.
  EXPECT_EQ(
      Rows(
          "BEGIN TRY UPDATE t SET qty = -1 END TRY BEGIN CATCH SELECT ERROR_NUMBER(), @@TRANCOUNT END CATCH"),
      Lines({"50000|0"}));
  Must("CREATE PROCEDURE p AS UPDATE t SET qty = -1 PRINT 'not here'");
  EXPECT_TRUE(Run("EXEC p PRINT 'nor here'").messages.empty());
  EXPECT_EQ(Rows("SELECT SUM(qty) FROM t"), Lines({"3"}));
}

TEST_F(TriggersTest, SavepointsWithinAndBefore) {
  Must("CREATE TRIGGER tr ON t FOR UPDATE AS SAVE TRAN inner_one INSERT INTO log (what) VALUES ('undone')"
       " ROLLBACK TRAN inner_one INSERT INTO log (what) VALUES ('kept')");
  Must("UPDATE t SET qty = 0 WHERE id = 1");
  EXPECT_EQ(Rows("SELECT what FROM log"), Lines({"kept"}));
  EXPECT_EQ(Rows("SELECT qty FROM t WHERE id = 1"), Lines({"0"}));
  Must("ALTER TRIGGER tr ON t FOR UPDATE AS ROLLBACK TRAN outer_one INSERT INTO log (what) VALUES ('more')");
  Must("BEGIN TRAN SAVE TRAN outer_one UPDATE t SET qty = 5 COMMIT");
  EXPECT_EQ(Rows("SELECT what FROM log ORDER BY n"), Lines({"kept", "more"}));
  EXPECT_EQ(Rows("SELECT SUM(qty) FROM t"), Lines({"50"}));
}

TEST_F(TriggersTest, ATransactionThatCommitsOrIsDoomedWithinEndsTheBatch) {
  Must("CREATE TRIGGER tr ON t FOR UPDATE AS SELECT @@TRANCOUNT COMMIT");
  const Output committed = Run("UPDATE t SET qty = 0 PRINT 'not reached'");
  EXPECT_EQ(committed.results, std::vector<Lines>({{"1"}}));
  EXPECT_EQ(NumbersOf(committed), std::vector<int>({3609}));
  EXPECT_EQ(Rows("SELECT SUM(qty) FROM t"), Lines({"0"}));
  Must(
      "ALTER TRIGGER tr ON t FOR UPDATE AS BEGIN TRY SELECT 1 / 0 END TRY BEGIN CATCH SELECT XACT_STATE() END CATCH");
  const Output doomed = Run("BEGIN TRAN UPDATE t SET qty = 7 PRINT 'not reached'");
  EXPECT_EQ(NumbersOf(doomed), std::vector<int>({3616}));
  EXPECT_TRUE(doomed.messages.empty());
  EXPECT_EQ(session_->TransactionCount(), 0);
  EXPECT_EQ(Rows("SELECT SUM(qty) FROM t"), Lines({"0"}));
}

TEST_F(TriggersTest, NestingAndRecursion) {
  Must("CREATE TABLE u (n INT)");
  Must("CREATE TRIGGER t_to_u ON t FOR UPDATE AS INSERT INTO log (what, id) VALUES ('t', TRIGGER_NESTLEVEL())"
       " UPDATE t SET qty = qty + 1 IF (SELECT COUNT(*) FROM u) < 3 INSERT INTO u VALUES (1)");
  Must("CREATE TRIGGER u_to_t ON u FOR INSERT AS INSERT INTO log (what, id) VALUES ('u', TRIGGER_NESTLEVEL())"
       " UPDATE t SET name = 'x'");
  // Its own statement does not fire a trigger again, that of another one does.
  Must("UPDATE t SET qty = 0");
  EXPECT_EQ(Log(), Lines({"t|1", "u|2", "t|3", "u|4", "t|5", "u|6", "t|7"}));
  EXPECT_EQ(Rows("SELECT TRIGGER_NESTLEVEL()"), Lines({"0"}));
  // Without an end it comes to the limit, and nothing is left of it.
  Must("TRUNCATE TABLE u TRUNCATE TABLE log");
  Must("ALTER TRIGGER t_to_u ON t FOR UPDATE AS INSERT INTO u VALUES (1)");
  const Output output = Run("UPDATE t SET qty = 99 PRINT 'not reached'");
  EXPECT_EQ(NumbersOf(output), std::vector<int>({217}));
  EXPECT_TRUE(output.messages.empty());
  EXPECT_EQ(Rows("SELECT COUNT(*), (SELECT COUNT(*) FROM u), MAX(qty) FROM log, t"), Lines({"0|0|NULL"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t WHERE qty = 99"), Lines({"0"}));
}

TEST_F(TriggersTest, IdentitiesAndOptionsOfTheCaller) {
  Must("CREATE TABLE i (n INT IDENTITY(1,1), v INT)");
  Must("CREATE TRIGGER tr ON i FOR INSERT AS SET NOCOUNT ON SELECT SCOPE_IDENTITY(), @@IDENTITY, @@NESTLEVEL"
       " INSERT INTO log (id) SELECT n FROM inserted");
  const Output output = Run("INSERT INTO i VALUES (7) SELECT SCOPE_IDENTITY(), @@IDENTITY, @@ROWCOUNT");
  EXPECT_EQ(output.results, std::vector<Lines>({{"NULL|1|1"}, {"1|100|1"}}));
  EXPECT_EQ(output.counts, std::vector<int64_t>({1})); // the one of the INSERT itself
  EXPECT_EQ(Rows("SELECT id FROM log"), Lines({"1"}));
}

TEST_F(TriggersTest, OutputOfATableWithTriggers) {
  Must("CREATE TRIGGER tr ON t FOR UPDATE AS INSERT INTO log (id) SELECT COUNT(*) FROM inserted");
  EXPECT_EQ(
      ErrorText("UPDATE t SET qty = 1 OUTPUT inserted.id"),
      "334 1 The target table 't' of the DML statement cannot have any enabled triggers if the statement "
      "contains an OUTPUT clause without INTO clause.");
  EXPECT_EQ(Rows("DELETE FROM t OUTPUT deleted.id WHERE id = 3"), Lines({"3"})); // no trigger of that event
  EXPECT_EQ(
      Rows("DECLARE @o TABLE (id INT, was INT) UPDATE t SET qty = 1 OUTPUT deleted.id, deleted.qty INTO @o"
           " SELECT * FROM @o ORDER BY id"),
      Lines({"1|10", "2|20"}));
  EXPECT_EQ(Rows("SELECT id FROM log"), Lines({"2"}));
  EXPECT_EQ(ErrorText("INSERT INTO log (id) OUTPUT inserted.id, 'x', 1 INTO t VALUES (1)"),
            "331 1 The target table 't' of the OUTPUT INTO clause cannot have any enabled triggers.");
  // A statement in the trigger with an OUTPUT of its own still sees the trigger's rows.
  Must("CREATE TABLE copy (a INT) ALTER TABLE log ADD c INT NULL");
  Must("ALTER TRIGGER tr ON t FOR UPDATE AS INSERT INTO log (id, c) OUTPUT inserted.id * 10 INTO copy"
       " SELECT id, (SELECT COUNT(*) FROM inserted) FROM deleted");
  Must("TRUNCATE TABLE log UPDATE t SET qty = 2");
  EXPECT_EQ(Rows("SELECT id, c FROM log ORDER BY id"), Lines({"1|2", "2|2"}));
  EXPECT_EQ(Rows("SELECT a FROM copy ORDER BY a"), Lines({"10", "20"}));
}

TEST_F(TriggersTest, ConstraintsComeFirst) {
  Must("CREATE TABLE child (t_id INT NOT NULL REFERENCES t (id)) INSERT INTO child VALUES (1)");
  Must("CREATE TRIGGER tr ON t FOR DELETE, INSERT AS INSERT INTO log (what) VALUES ('fired')");
  EXPECT_EQ(ErrorOf("DELETE FROM t"), 547);
  EXPECT_EQ(ErrorOf("INSERT INTO t (id) VALUES (8), (2)"), 2627);
  EXPECT_EQ(Log(), Lines());
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t"), Lines({"3"}));
}

TEST_F(TriggersTest, ComputedColumns) {
  Must("CREATE TABLE c (a INT NOT NULL PRIMARY KEY, b INT, s AS a + b, p AS a * b PERSISTED)");
  Must(
      "CREATE TRIGGER tr ON c FOR INSERT, UPDATE AS INSERT INTO log (what, id) SELECT 'new', s * 1000 + p FROM inserted"
      " INSERT INTO log (what, id) SELECT 'old', s * 1000 + p FROM deleted");
  Must("INSERT INTO c (a, b) VALUES (1, 2)");
  EXPECT_EQ(Log(), Lines({"new|3002"}));
  Must("TRUNCATE TABLE log UPDATE c SET a = 5, b = 6");
  EXPECT_EQ(Log(), Lines({"new|11030", "old|3002"}));
}

TEST_F(TriggersTest, InsertOfAProceduresRows) {
  Must(
      "CREATE TRIGGER tr ON t FOR INSERT AS INSERT INTO log (what, id) SELECT name, @@ROWCOUNT FROM inserted");
  Must("INSERT INTO t EXEC ('SELECT 7, ''a'', 1 UNION ALL SELECT 8, ''b'', 2 SELECT 9, ''c'', 3')");
  EXPECT_EQ(Log(), Lines({"a|3", "b|3", "c|3"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t"), Lines({"6"}));
}

TEST_F(TriggersTest, CursorsInAndAroundTriggers) {
  Must(
      "CREATE TRIGGER tr ON t FOR UPDATE AS DECLARE @id INT DECLARE c CURSOR LOCAL FOR SELECT id FROM inserted"
      " OPEN c FETCH c INTO @id WHILE @@FETCH_STATUS = 0 BEGIN INSERT INTO log (id) VALUES (@id) FETCH c INTO @id END");
  Must("DECLARE k CURSOR LOCAL FOR SELECT id FROM t WHERE id = 2 OPEN k FETCH k"
       " UPDATE t SET qty = 0 WHERE CURRENT OF k UPDATE t SET qty = 1 WHERE id = 3");
  EXPECT_EQ(Rows("SELECT id FROM log ORDER BY n"), Lines({"2", "3"}));
}

TEST_F(TriggersTest, InsertedAndDeletedAreOfTheTriggerAlone) {
  EXPECT_EQ(ErrorOf("SELECT * FROM inserted"), 208);
  Must("CREATE PROCEDURE p AS SELECT * FROM inserted");
  Must("CREATE TRIGGER tr ON t FOR UPDATE AS EXEC p");
  EXPECT_EQ(ErrorOf("UPDATE t SET qty = 1"), 208);
  Must("ALTER TRIGGER tr ON t FOR UPDATE AS EXEC ('SELECT * FROM deleted')");
  EXPECT_EQ(ErrorOf("UPDATE t SET qty = 1"), 208);
  for (const char* change : {"DELETE FROM inserted", "UPDATE deleted SET qty = 1",
                             "INSERT INTO inserted (id) VALUES (1)", "UPDATE i SET qty = 1 FROM inserted i"})
    EXPECT_EQ(ErrorText(std::string("CREATE TRIGGER x ON t FOR UPDATE AS ") + change),
              "286 1 The logical tables INSERTED and DELETED cannot be updated.");
  Must("CREATE TABLE lob (id INT, doc TEXT)");
  EXPECT_EQ(ErrorText("CREATE TRIGGER x ON lob FOR UPDATE AS SELECT * FROM inserted"),
            "311 1 Cannot use text, ntext, or image columns in the 'inserted' and 'deleted' tables.");
  Must("CREATE TRIGGER x ON lob FOR UPDATE AS SELECT id FROM inserted");
}

TEST_F(TriggersTest, InsteadOfTheChange) {
  Must("CREATE TABLE i (n INT IDENTITY(5,1), a INT NOT NULL DEFAULT 7, b VARCHAR(5) NULL)");
  Must(
      "CREATE TRIGGER instead_i ON i INSTEAD OF INSERT AS INSERT INTO log (what, id) SELECT b, n * 100 + a FROM inserted"
      " SELECT COUNT(*), @@ROWCOUNT FROM deleted");
  const Output output =
      Run("INSERT INTO i (b) VALUES ('x'), ('y') SELECT @@ROWCOUNT, SCOPE_IDENTITY()"
          " INSERT INTO i SELECT 3, UPPER(name) FROM t WHERE id = 1 INSERT INTO i DEFAULT VALUES");
  EXPECT_EQ(output.results, std::vector<Lines>({{"0|2"}, {"2|NULL"}, {"0|1"}, {"0|1"}}));
  EXPECT_EQ(Log(), Lines({"x|7", "y|7", "ONE|3", "NULL|7"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM i"), Lines({"0"}));
  Must(
      "CREATE TRIGGER instead_t ON t INSTEAD OF UPDATE, DELETE AS IF UPDATE(qty) INSERT INTO log (what) VALUES ('qty')"
      " INSERT INTO log (what, id) SELECT d.name, i.qty FROM deleted d LEFT JOIN inserted i ON i.id = d.id ORDER BY d.id");
  Must("TRUNCATE TABLE log UPDATE t SET qty = qty + 1 WHERE id < 3");
  EXPECT_EQ(Log(), Lines({"qty|NULL", "one|11", "two|21"}));
  Must("TRUNCATE TABLE log DELETE FROM t WHERE id = 3");
  EXPECT_EQ(Log(), Lines({"three|NULL"}));
  EXPECT_EQ(Table(), Lines({"1|one|10", "2|two|20", "3|three|30"}));
}

TEST_F(TriggersTest, InsteadOfWithItsOwnChangeAndTriggersAfterThat) {
  Must("CREATE TRIGGER instead_t ON t INSTEAD OF INSERT AS"
       " INSERT INTO t (id, name, qty) SELECT id, UPPER(name), ISNULL(qty, 0) FROM inserted WHERE id > 0");
  Must(
      "CREATE TRIGGER after_t ON t AFTER INSERT AS INSERT INTO log (what, id) SELECT name, id FROM inserted");
  Must("INSERT INTO t VALUES (8, 'x', NULL), (-1, 'y', 1)");
  EXPECT_EQ(Log(), Lines({"X|8"}));
  EXPECT_EQ(Rows("SELECT name, qty FROM t WHERE id NOT IN (1, 2, 3)"), Lines({"X|0"}));
  Must("TRUNCATE TABLE log INSERT INTO t EXEC ('SELECT 9, ''z'', 1 SELECT -2, ''n'', 1')");
  EXPECT_EQ(Log(), Lines({"Z|9"}));
  EXPECT_EQ(ErrorOf("INSERT INTO t VALUES (1, 'again', 1)"), 2627); // by the trigger's own statement
  Must("DISABLE TRIGGER instead_t ON t INSERT INTO t VALUES (-5, 'n', 1)");
  EXPECT_EQ(Rows("SELECT name FROM t WHERE id = -5"), Lines({"n"}));
}

TEST_F(TriggersTest, InsteadOfComesBeforeConstraintsAndOnceATable) {
  Must("CREATE TABLE child (t_id INT NOT NULL REFERENCES t (id)) INSERT INTO child VALUES (1)");
  Must("CREATE TRIGGER a ON t INSTEAD OF DELETE AS INSERT INTO log (id) SELECT id FROM deleted");
  Must("DELETE FROM t WHERE id = 1");
  EXPECT_EQ(Rows("SELECT id FROM log"), Lines({"1"}));
  EXPECT_EQ(
      ErrorText("CREATE TRIGGER b ON t INSTEAD OF UPDATE, DELETE AS SELECT 1"),
      "2111 1 Cannot create trigger 'b' on table 't' because an INSTEAD OF DELETE trigger already exists on "
      "this object.");
  Must("CREATE TRIGGER b ON t INSTEAD OF UPDATE AS SELECT 1");
  Must("ALTER TRIGGER b ON t INSTEAD OF UPDATE, INSERT AS SELECT 2");
  EXPECT_EQ(ErrorOf("ALTER TRIGGER b ON t INSTEAD OF DELETE AS SELECT 2"), 2111);
  // Long types are seen by those alone.
  Must("CREATE TABLE lob (id INT, doc TEXT)");
  Must("CREATE TRIGGER l ON lob INSTEAD OF INSERT AS SELECT CAST(doc AS VARCHAR(10)) FROM inserted");
  EXPECT_EQ(Rows("INSERT INTO lob VALUES (1, 'long')"), Lines({"long"}));
}

TEST_F(TriggersTest, InsteadOfAChangeOfAView) {
  Must(
      "CREATE TABLE more (id INT NOT NULL PRIMARY KEY, note NVARCHAR(20) NULL) INSERT INTO more VALUES (1, 'n1')");
  Must("CREATE VIEW v (number, [the name], note, twice) AS SELECT t.id, t.name, m.note, t.qty * 2 FROM t"
       " LEFT JOIN more m ON m.id = t.id");
  EXPECT_EQ(
      ErrorText("DELETE FROM v"),
      "4405 1 View or function 'v' is not updatable because the modification affects multiple base tables.");
  Must("CREATE TRIGGER v_insert ON v INSTEAD OF INSERT AS"
       " INSERT INTO t (id, name, qty) SELECT number, [the name], twice / 2 FROM inserted"
       " INSERT INTO more SELECT number, note FROM inserted WHERE note IS NOT NULL");
  Must(
      "CREATE TRIGGER v_change ON v INSTEAD OF UPDATE, DELETE AS INSERT INTO log (what, id) SELECT 'old ' + [the name],"
      " number FROM deleted ORDER BY number INSERT INTO log (what, id) SELECT 'new ' + note, twice FROM inserted"
      " ORDER BY number DELETE t FROM t JOIN deleted d ON d.number = t.id WHERE NOT UPDATE(note)");
  const Output output =
      Run("INSERT INTO v (number, note, twice) VALUES ('7', 'seven', 14), (8, NULL, 16) SELECT @@ROWCOUNT");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.results, std::vector<Lines>({{"2"}}));
  EXPECT_EQ(Rows("SELECT * FROM v WHERE number > 3 ORDER BY number"),
            Lines({"7|NULL|seven|14", "8|NULL|NULL|16"}));
  Must("UPDATE v SET note = UPPER([the name]) + '!', twice = twice + 1 WHERE number < 3");
  EXPECT_EQ(Log(), Lines({"old one|1", "old two|2", "new ONE!|21", "new TWO!|41"}));
  Must("TRUNCATE TABLE log DELETE TOP (1) FROM v WHERE number = 3");
  EXPECT_EQ(Log(), Lines({"old three|3"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t WHERE id = 3"), Lines({"0"}));
  EXPECT_EQ(ErrorOf("UPDATE v SET none = 1"), 207);
  EXPECT_EQ(
      ErrorText("CREATE TRIGGER x ON v INSTEAD OF DELETE AS SELECT 1"),
      "2111 1 Cannot create trigger 'x' on view 'v' because an INSTEAD OF DELETE trigger already exists on "
      "this object.");
  EXPECT_EQ(ErrorOf("UPDATE v SET note = 'x' OUTPUT inserted.note"), 334);
  // Its own change of the view is none that it stands for.
  Must("CREATE VIEW w AS SELECT id FROM t");
  Must("CREATE TRIGGER w_delete ON w INSTEAD OF DELETE AS SELECT 1");
  Must("ALTER TRIGGER w_delete ON w INSTEAD OF DELETE AS DELETE FROM w");
  EXPECT_EQ(ErrorText("DELETE FROM w"), "40510 1 Changing a view is not supported.");
  Must("DISABLE TRIGGER v_change ON v");
  EXPECT_EQ(ErrorOf("UPDATE v SET note = 'x'"), 40510);
  Must("ENABLE TRIGGER ALL ON v ALTER TABLE t ADD extra INT NULL");
  Must(
      "ALTER VIEW v AS SELECT id AS number, name AS [the name], CAST(extra AS VARCHAR(9)) AS note, qty AS twice FROM t");
  Must("TRUNCATE TABLE log UPDATE v SET note = 'z' WHERE number = 1");
  EXPECT_EQ(Log(), Lines({"old one|1", "new z|10"}));
  Must("DROP VIEW v");
  EXPECT_EQ(Rows("SELECT OBJECT_ID('v_change'), OBJECT_ID('v_insert')"), Lines({"NULL|NULL"}));
}

TEST_F(TriggersTest, TruncateFiresNone) {
  Must("CREATE TRIGGER tr ON t FOR DELETE AS INSERT INTO log (what) VALUES ('deleted')");
  Must("TRUNCATE TABLE t");
  EXPECT_EQ(Log(), Lines());
}

TEST_F(TriggersTest, SwitchedOffAndOn) {
  Must("CREATE TRIGGER a ON t FOR UPDATE AS INSERT INTO log (what) VALUES ('a')");
  Must("CREATE TRIGGER b ON t FOR UPDATE AS INSERT INTO log (what) VALUES ('b')");
  const auto fired = [&] {
    Must("TRUNCATE TABLE log UPDATE t SET qty = 1");
    return Rows("SELECT what FROM log ORDER BY n");
  };
  Must("DISABLE TRIGGER a ON t");
  EXPECT_EQ(fired(), Lines({"b"}));
  Must("ALTER TABLE t DISABLE TRIGGER ALL");
  EXPECT_EQ(fired(), Lines());
  EXPECT_EQ(Rows("UPDATE t SET qty = 5 OUTPUT inserted.id WHERE id = 1"), Lines({"1"}));
  Must("ALTER TABLE t ENABLE TRIGGER b, a");
  EXPECT_EQ(fired(), Lines({"a", "b"}));
  Must("BEGIN TRAN; DISABLE TRIGGER ALL ON t ROLLBACK");
  EXPECT_EQ(fired(), Lines({"a", "b"}));
  Must("DISABLE TRIGGER a, dbo.b ON dbo.t; ENABLE TRIGGER ALL ON t");
  EXPECT_EQ(fired(), Lines({"a", "b"}));
  EXPECT_EQ(ErrorText("DISABLE TRIGGER c ON t"),
            "1088 1 Cannot find the object \"c\" because it does not exist or you do not have permissions.");
  EXPECT_EQ(ErrorText("ALTER TABLE t DISABLE TRIGGER c"),
            "4920 1 ALTER TABLE failed because trigger 'c' on table 't' does not exist.");
  EXPECT_EQ(ErrorOf("ALTER TABLE none DISABLE TRIGGER c"), 4902);
  EXPECT_EQ(ErrorOf("ENABLE TRIGGER a ON none"), 1088);
}

TEST_F(TriggersTest, Definitions) {
  EXPECT_EQ(ErrorText("CREATE TRIGGER x ON missing FOR INSERT AS SELECT 1"),
            "8197 1 The object 'missing' does not exist or is invalid for this operation.");
  Must("CREATE VIEW v AS SELECT id FROM t");
  EXPECT_EQ(ErrorOf("CREATE TRIGGER x ON v FOR INSERT AS SELECT 1"), 8197);
  EXPECT_EQ(ErrorOf("CREATE TABLE #x (a INT) EXEC ('CREATE TRIGGER x ON #x FOR INSERT AS SELECT 1')"), 8197);
  EXPECT_EQ(ErrorOf("CREATE TRIGGER t ON t FOR INSERT AS SELECT 1"), 2714);
  EXPECT_EQ(
      ErrorText("CREATE TRIGGER x ON t FOR INSERT, INSERT AS SELECT 1"),
      "1034 1 Syntax error: Duplicate specification of the action \"INSERT\" in the trigger declaration.");
  EXPECT_EQ(ErrorOf("SELECT 1 CREATE TRIGGER x ON t FOR INSERT AS SELECT 1"), 156);
  EXPECT_EQ(ErrorOf("CREATE TRIGGER x ON t FOR INSERT AS RETURN 1"), 178);
  EXPECT_EQ(ErrorOf("CREATE TRIGGER x ON t FOR INSERT AS SELECT none FROM inserted"), 207);
  EXPECT_EQ(ErrorOf("ALTER TRIGGER x ON t FOR INSERT AS SELECT 1"), 208);
  EXPECT_EQ(ErrorText("DROP TRIGGER x"),
            "3701 1 Cannot drop the trigger 'x', because it does not exist or you do not have permission.");
  Must("DROP TRIGGER IF EXISTS x");
  Must("CREATE TRIGGER x ON t WITH ENCRYPTION FOR INSERT AS SELECT 1");
  EXPECT_EQ(ErrorOf("CREATE TRIGGER x ON log FOR INSERT AS SELECT 1"), 2714);
  EXPECT_EQ(ErrorText("ALTER TRIGGER x ON log FOR INSERT AS SELECT 1"),
            "2110 1 Cannot alter trigger 'x' on 'log' because this trigger does not belong to this object.");
  EXPECT_EQ(Rows("SELECT name, xtype FROM sysobjects WHERE id = OBJECT_ID('dbo.x', 'TR')"), Lines({"x|TR"}));
  Must("DISABLE TRIGGER x ON t");
  EXPECT_EQ(Rows("SELECT type, type_desc FROM sys.objects WHERE name = 'x'"), Lines({"TR|SQL_TRIGGER"}));
  EXPECT_EQ(Rows("SELECT OBJECT_ID('x', 'P'), OBJECT_NAME(OBJECT_ID('x'))"), Lines({"NULL|x"}));
  Must("DROP TRIGGER x");
  EXPECT_EQ(Rows("SELECT OBJECT_ID('x')"), Lines({"NULL"}));
}

TEST_F(TriggersTest, TheSystemKnowsThem) {
  Must("CREATE VIEW v AS SELECT id FROM t");
  Must("CREATE TRIGGER a ON dbo.[t] FOR UPDATE AS SELECT 1");
  Must("CREATE TRIGGER b ON v INSTEAD OF DELETE AS SELECT 1");
  Must("DISABLE TRIGGER a ON t");
  EXPECT_EQ(
      Rows("SELECT name, CASE parent_id WHEN OBJECT_ID('t') THEN 't' WHEN OBJECT_ID('v') THEN 'v' END, type,"
           " type_desc, is_disabled, is_instead_of_trigger"
           " FROM sys.triggers ORDER BY name"),
      Lines({"a|t|TR|SQL_TRIGGER|1|0", "b|v|TR|SQL_TRIGGER|0|1"}));
  EXPECT_EQ(Rows("SELECT name FROM sys.triggers WHERE object_id = OBJECT_ID('b')"
                 " AND parent_id = OBJECT_ID('v')"),
            Lines({"b"}));
}

TEST_F(TriggersTest, EndWithTheirTable) {
  Must("CREATE TABLE g (a INT)");
  Must("CREATE TRIGGER x ON g FOR INSERT AS INSERT INTO log (what) VALUES ('x')");
  Must("BEGIN TRAN DROP TABLE g ROLLBACK INSERT INTO g VALUES (1)");
  EXPECT_EQ(Rows("SELECT what FROM log"), Lines({"x"}));
  Must("DROP TABLE g CREATE TABLE g (a INT) INSERT INTO g VALUES (1)");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM log"), Lines({"1"}));
  EXPECT_EQ(Rows("SELECT OBJECT_ID('x')"), Lines({"NULL"}));
}

TEST_F(TriggersTest, FollowAnAlteredTable) {
  Must("CREATE TRIGGER tr ON t FOR INSERT AS SELECT * FROM inserted");
  EXPECT_EQ(Rows("INSERT INTO t VALUES (4, 'x', 1)"), Lines({"4|x|1"}));
  Must("ALTER TABLE t ADD more INT NOT NULL DEFAULT 9");
  EXPECT_EQ(Rows("INSERT INTO t (id) VALUES (5)"), Lines({"5|NULL|NULL|9"}));
  Must("ALTER TABLE t DROP COLUMN name");
  EXPECT_EQ(Rows("INSERT INTO t (id) VALUES (6)"), Lines({"6|NULL|9"}));
}

class TriggersInFileTest : public FileTest {};

TEST_F(TriggersInFileTest, AreThereAgainAndSeenByOthers) {
  {
    const auto session = Session::Open(Database::Open(path_, OpenMode::Create));
    const auto other = Session::Open(Database::Open(path_, OpenMode::Existing));
    for (const char* batch :
         {"CREATE TABLE t (a INT) CREATE TABLE log (n INT IDENTITY, a INT)",
          "CREATE TRIGGER b ON t FOR INSERT AS INSERT INTO log (a) SELECT a + 1 FROM inserted",
          "CREATE TRIGGER a ON t FOR INSERT AS INSERT INTO log (a) SELECT a + 2 FROM inserted"})
      EXPECT_TRUE(RunOn(*session, batch).errors.empty());
    EXPECT_TRUE(RunOn(*other, "INSERT INTO t VALUES (10)").errors.empty());
    EXPECT_TRUE(RunOn(*session, "DISABLE TRIGGER a ON t").errors.empty());
    EXPECT_TRUE(RunOn(*other, "INSERT INTO t VALUES (20)").errors.empty());
  }
  const auto session = Session::Open(Database::Open(path_, OpenMode::Existing));
  EXPECT_TRUE(RunOn(*session, "INSERT INTO t VALUES (30) ENABLE TRIGGER a ON t INSERT INTO t VALUES (40)")
                  .errors.empty());
  EXPECT_EQ(RunOn(*session, "SELECT a FROM log ORDER BY n").results,
            std::vector<Lines>({{"11", "12", "21", "31", "41", "42"}}));
}

// SQLite takes all columns of such a join together.
TEST_F(TriggersTest, AnUpdateFromAJoinWithTheRows) {
  Must("CREATE TABLE parts (id INT NOT NULL PRIMARY KEY, q INT) INSERT INTO parts VALUES (1, 1), (2, 2)"
       " CREATE TABLE lines (id INT, q INT) INSERT INTO lines VALUES (1, 10), (2, 20)");
  Must(
      "CREATE TRIGGER on_lines ON lines FOR UPDATE AS"
      " UPDATE parts SET q = x.q FROM parts JOIN inserted i ON i.id = parts.id JOIN lines x ON x.id = i.id"
      " UPDATE p SET q = p.q + d.q FROM parts p LEFT JOIN (inserted i JOIN deleted d ON d.id = i.id) ON i.id = p.id"
      " WHERE i.id = 2");
  Must("UPDATE lines SET q = q + 1");
  EXPECT_EQ(Rows("SELECT id, q FROM parts ORDER BY id"), Lines({"1|11", "2|41"}));
}

} // namespace
} // namespace tsql::test
