// ALTER TABLE: what rows, keys, identities and constraints become, what is refused, and that a failing
// statement leaves the table as it was.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class AlterTableTest : public EngineTest {
 protected:
  AlterTableTest() {
    Must("CREATE TABLE t (id INT IDENTITY(5,1) PRIMARY KEY, a INT NULL, b VARCHAR(5) NULL)"
         " INSERT INTO t VALUES (1, 'x'), (2, 'y'), (NULL, NULL)");
  }

  // "number text" of each error of the batch.
  Lines Errors(std::string_view batch) {
    Lines lines;
    for (const Error& error : Run(batch).errors)
      lines.push_back(std::to_string(error.number) + " " + error.what());
    return lines;
  }
  std::string Database() { return Scalar("DB_NAME()"); }
  Lines All() { return Rows("SELECT * FROM t ORDER BY id"); }
};

const Lines kRows = {"5|1|x", "6|2|y", "7|NULL|NULL"};

// ---- ADD

TEST_F(AlterTableTest, ColumnsGetTheirDefaultsInRowsThatAreThere) {
  Must("ALTER TABLE t ADD c INT DEFAULT 7, d INT DEFAULT 8 WITH VALUES, e INT NOT NULL DEFAULT 9,"
       " f VARCHAR(3) NULL CONSTRAINT df_f DEFAULT 'n'");
  EXPECT_EQ(All(), Lines({"5|1|x|NULL|8|9|NULL", "6|2|y|NULL|8|9|NULL", "7|NULL|NULL|NULL|8|9|NULL"}));
  Must("INSERT INTO t (a) VALUES (4)");
  EXPECT_EQ(Rows("SELECT * FROM t WHERE a = 4"), Lines({"8|4|NULL|7|8|9|n"}));
}

TEST_F(AlterTableTest, ADefaultThatIsDroppedIsGoneForNewRows) {
  Must("ALTER TABLE t ADD d INT NULL CONSTRAINT df_d DEFAULT 8 WITH VALUES, e INT NOT NULL CONSTRAINT df_e "
       "DEFAULT 9");
  Must("ALTER TABLE t DROP CONSTRAINT df_d, df_e");
  Must("INSERT INTO t (e) VALUES (1)");
  EXPECT_EQ(Rows("SELECT d, e FROM t ORDER BY id"), Lines({"8|9", "8|9", "8|9", "NULL|1"}));
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) VALUES (1)"), 515);
}

TEST_F(AlterTableTest, EachRowGetsAValueOfItsOwn) {
  Must("ALTER TABLE t ADD g UNIQUEIDENTIFIER NOT NULL DEFAULT NEWID()");
  EXPECT_EQ(Rows("SELECT COUNT(DISTINCT g) FROM t"), Lines({"3"}));
}

TEST_F(AlterTableTest, AColumnThatMayNotBeNullNeedsValues) {
  EXPECT_EQ(ErrorText("ALTER TABLE t ADD c INT NULL, d INT NOT NULL"),
            "4901 1 ALTER TABLE only allows columns to be added that can contain nulls, or have a DEFAULT "
            "definition specified, or the column being added is an identity or timestamp column, or "
            "alternatively if none of the previous conditions are satisfied the table must be empty to allow "
            "addition of this column. Column 'd' cannot be added to non-empty table 't' because it does not "
            "satisfy these conditions.");
  EXPECT_EQ(
      ErrorText("ALTER TABLE t ADD c INT, A INT"),
      "2705 1 Column names in each table must be unique. Column name 'A' in table 't' is specified more "
      "than once.");
  EXPECT_EQ(All(), kRows);
}

TEST_F(AlterTableTest, AnIdentityNumbersTheRowsThatAreThere) {
  Must(
      "CREATE TABLE n (a INT) INSERT INTO n VALUES (30), (10), (20) ALTER TABLE n ADD id INT IDENTITY(100,1)");
  Must("INSERT INTO n VALUES (40)");
  EXPECT_EQ(Rows("SELECT a, id FROM n ORDER BY id"), Lines({"30|100", "10|101", "20|102", "40|103"}));
  EXPECT_EQ(ErrorOf("ALTER TABLE n ADD other INT IDENTITY"), 2744);
  Must("ALTER TABLE n ADD CONSTRAINT pk_n PRIMARY KEY (id)");
  EXPECT_EQ(Rows("SELECT SCOPE_IDENTITY()"), Lines({"NULL"}));
  Must("CREATE TABLE e (a INT) ALTER TABLE e ADD id BIGINT IDENTITY PRIMARY KEY, b INT NOT NULL UNIQUE");
  Must("INSERT INTO e (a, b) VALUES (1, 2)");
  EXPECT_EQ(Rows("SELECT id, a, b FROM e"), Lines({"1|1|2"}));
}

TEST_F(AlterTableTest, ChecksLookAtTheRowsThatAreThere) {
  EXPECT_EQ(
      ErrorText("ALTER TABLE t ADD CONSTRAINT ck CHECK (a > 1)"),
      "547 1 The ALTER TABLE statement conflicted with the CHECK constraint \"ck\". The conflict occurred "
      "in database \"" +
          Database() + "\", table \"dbo.t\", column 'a'.");
  EXPECT_EQ(
      ErrorText("ALTER TABLE t ADD CONSTRAINT ck CHECK (a > LEN(b))"),
      "547 1 The ALTER TABLE statement conflicted with the CHECK constraint \"ck\". The conflict occurred "
      "in database \"" +
          Database() + "\", table \"dbo.t\".");
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) VALUES (0)"), 0);
  Must("ALTER TABLE t WITH NOCHECK ADD CONSTRAINT ck CHECK (a > 1)");
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) VALUES (1)"), 547);
  EXPECT_EQ(ErrorOf("UPDATE t SET a = 0 WHERE a = 2"), 547);
  Must("INSERT INTO t (a) VALUES (3), (NULL)");
  // A NULL is none that conflicts.
  Must("DELETE FROM t WHERE a < 2 ALTER TABLE t ADD CHECK (a > 1)");
  EXPECT_EQ(Errors("ALTER TABLE t ADD CONSTRAINT c2 CHECK (nothing > 1)"),
            Lines({"207 Invalid column name 'nothing'.",
                   "1750 Could not create constraint or index. See previous errors."}));
}

TEST_F(AlterTableTest, UniqueKeysNeedDifferentRows) {
  Must("INSERT INTO t VALUES (1, 'z')");
  EXPECT_EQ(
      Errors("ALTER TABLE t ADD CONSTRAINT uq UNIQUE (a) SELECT 1"),
      Lines({"1505 The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the "
             "object name 'dbo.t' and the index name 'uq'.",
             "1750 Could not create constraint or index. See previous errors."}));
  EXPECT_EQ(
      Rows("BEGIN TRY ALTER TABLE t ADD UNIQUE (a) END TRY BEGIN CATCH SELECT ERROR_NUMBER() END CATCH"),
      Lines({"1750"}));
  Must("DELETE FROM t WHERE b = 'z' ALTER TABLE t ADD CONSTRAINT uq UNIQUE (a)");
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) VALUES (2)"), 2627);
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) VALUES (NULL)"), 2627);
}

TEST_F(AlterTableTest, PrimaryKeys) {
  EXPECT_EQ(Errors("ALTER TABLE t ADD PRIMARY KEY (a)"),
            Lines({"1779 Table 't' already has a primary key defined on it.",
                   "1750 Could not create constraint or index. See previous errors."}));
  Must("CREATE TABLE p (a INT NOT NULL, b INT) INSERT INTO p VALUES (3, 1), (1, 1)");
  EXPECT_EQ(Errors("ALTER TABLE p ADD PRIMARY KEY (b)"),
            Lines({"8111 Cannot define PRIMARY KEY constraint on nullable column in table 'p'.",
                   "1750 Could not create constraint or index. See previous errors."}));
  EXPECT_EQ(ErrorOf("ALTER TABLE p ADD PRIMARY KEY (c)"), 1911);
  Must("ALTER TABLE p ADD CONSTRAINT pk_p PRIMARY KEY CLUSTERED (a ASC) WITH (FILLFACTOR = 90) ON [PRIMARY]");
  EXPECT_EQ(
      ErrorText("INSERT INTO p VALUES (1, 2)"),
      "2627 1 Violation of PRIMARY KEY constraint 'pk_p'. Cannot insert duplicate key in object 'dbo.p'.");
  Must("ALTER TABLE p DROP CONSTRAINT pk_p INSERT INTO p VALUES (1, 2)");
  // A primary key of the table's definition is dropped as well.
  Must("CREATE TABLE q (a INT CONSTRAINT pk_q PRIMARY KEY, b INT) INSERT INTO q VALUES (2, 1), (1, 2)"
       " ALTER TABLE q DROP pk_q INSERT INTO q VALUES (1, 3)");
  EXPECT_EQ(Rows("SELECT a, b FROM q ORDER BY a, b"), Lines({"1|2", "1|3", "2|1"}));
}

TEST_F(AlterTableTest, DefaultsForColumns) {
  Must("ALTER TABLE t ADD CONSTRAINT df_a DEFAULT 4 FOR a, DEFAULT ('q') FOR b");
  Must("INSERT INTO t DEFAULT VALUES");
  EXPECT_EQ(Rows("SELECT a, b FROM t WHERE id = 8"), Lines({"4|q"}));
  const std::string follow = "1750 Could not create constraint or index. See previous errors.";
  EXPECT_EQ(Errors("ALTER TABLE t ADD DEFAULT 5 FOR a"),
            Lines({"1781 Column already has a DEFAULT bound to it.", follow}));
  EXPECT_EQ(Errors("ALTER TABLE t ADD DEFAULT 5 FOR c"),
            Lines({"1752 Column 'c' in table 't' is invalid for creating a default constraint.", follow}));
  EXPECT_EQ(Errors("ALTER TABLE t ADD DEFAULT 5 FOR id"),
            Lines({"1754 Defaults cannot be created on columns with an IDENTITY attribute. Table 't', column "
                   "'id'.",
                   follow}));
  EXPECT_EQ(ErrorOf("CREATE TABLE u (a INT CONSTRAINT df_a DEFAULT 1)"), 2714);
  Must("ALTER TABLE t DROP df_a INSERT INTO t DEFAULT VALUES");
  EXPECT_EQ(Rows("SELECT a, b FROM t WHERE id = 9"), Lines({"NULL|q"}));
  Must("CREATE TABLE u (a INT CONSTRAINT df_a DEFAULT 1)");
}

// ---- DROP

TEST_F(AlterTableTest, DroppedColumnsLeaveTheOthersWithTheirKeys) {
  Must("ALTER TABLE t ADD c INT NULL, d INT NOT NULL DEFAULT 3"
       " CREATE UNIQUE INDEX ux ON t (c, id) CREATE INDEX ix ON t (d DESC)"
       " ALTER TABLE t ADD CONSTRAINT ck CHECK (d > 0)");
  Must("ALTER TABLE t DROP COLUMN a, b");
  EXPECT_EQ(Rows("SELECT * FROM t ORDER BY id"), Lines({"5|NULL|3", "6|NULL|3", "7|NULL|3"}));
  Must("INSERT INTO t (c) VALUES (1)");
  EXPECT_EQ(Rows("SELECT * FROM t WHERE c = 1"), Lines({"8|1|3"}));
  EXPECT_EQ(ErrorOf("UPDATE t SET d = 0"), 547);
  EXPECT_EQ(
      ErrorText("SET IDENTITY_INSERT t ON INSERT INTO t (id, c) VALUES (8, 1) SET IDENTITY_INSERT t OFF")
          .substr(0, 5),
      "2627 ");
  EXPECT_EQ(Rows("SELECT name, colid FROM syscolumns WHERE id = OBJECT_ID('t') ORDER BY colid"),
            Lines({"id|1", "c|2", "d|3"}));
}

TEST_F(AlterTableTest, WhatDependsOnAColumnKeepsIt) {
  Must(
      "ALTER TABLE t ADD CONSTRAINT ck CHECK (a > 0), CONSTRAINT df DEFAULT 1 FOR a, CONSTRAINT uq UNIQUE (a)"
      " CREATE INDEX ix ON t (b, a)");
  Must("CREATE TABLE child (x INT CONSTRAINT fk REFERENCES t (a), y INT DEFAULT 5)");
  EXPECT_EQ(Errors("ALTER TABLE t DROP COLUMN a SELECT 1"),
            Lines({"5074 The object 'ck' is dependent on column 'a'.",
                   "5074 The object 'uq' is dependent on column 'a'.",
                   "5074 The index 'ix' is dependent on column 'a'.",
                   "5074 The object 'df' is dependent on column 'a'.",
                   "5074 The object 'fk' is dependent on column 'a'.",
                   "4922 ALTER TABLE DROP COLUMN a failed because one or more objects access this column."}));
  EXPECT_EQ(Errors("ALTER TABLE child DROP COLUMN x").at(0),
            "5074 The object 'fk' is dependent on column 'x'.");
  // A default without a name has one that it can be dropped by.
  const std::string text = Errors("ALTER TABLE child DROP COLUMN y").at(0);
  const std::string begin = "5074 The object '";
  ASSERT_EQ(text.substr(0, begin.size() + 11), begin + "DF__child__");
  const std::string name = text.substr(begin.size(), text.find('\'', begin.size()) - begin.size());
  Must("ALTER TABLE child DROP CONSTRAINT [" + name + "], COLUMN y");
  Must("ALTER TABLE child DROP CONSTRAINT fk"
       " DROP INDEX t.ix ALTER TABLE t DROP COLUMN a, CONSTRAINT ck, df, uq");
  EXPECT_EQ(Rows("SELECT * FROM t ORDER BY id"), Lines({"5|x", "6|y", "7|NULL"}));
}

TEST_F(AlterTableTest, WhatIsNotThereCannotBeDropped) {
  const std::string follow = "3727 Could not drop constraint. See previous errors.";
  EXPECT_EQ(Errors("ALTER TABLE t DROP CONSTRAINT nothing"),
            Lines({"3728 'nothing' is not a constraint.", follow}));
  EXPECT_EQ(
      Errors("ALTER TABLE t DROP COLUMN nothing"),
      Lines({"4924 ALTER TABLE DROP COLUMN failed because column 'nothing' does not exist in table 't'."}));
  Must("ALTER TABLE t DROP CONSTRAINT IF EXISTS nothing, COLUMN IF EXISTS nothing");
  Must("CREATE TABLE one (a INT CONSTRAINT uq_one UNIQUE) CREATE INDEX ix ON t (a)");
  EXPECT_EQ(Errors("ALTER TABLE t DROP CONSTRAINT uq_one"),
            Lines({"3733 Constraint 'uq_one' does not belong to table 't'.", follow}));
  EXPECT_EQ(Errors("ALTER TABLE t DROP CONSTRAINT ix").at(0), "3728 'ix' is not a constraint.");
  EXPECT_EQ(
      Errors("ALTER TABLE one DROP uq_one, COLUMN a"),
      Lines({"4923 ALTER TABLE DROP COLUMN failed because 'a' is the only data column in table 'one'. A "
             "table must have at least one data column."}));
  // The statement has left nothing: the constraint is still there.
  EXPECT_EQ(ErrorOf("INSERT INTO one VALUES (1), (1)"), 2627);
  EXPECT_EQ(ErrorOf("ALTER TABLE missing DROP COLUMN a"), 4902);
  Must("CREATE VIEW v AS SELECT a FROM t");
  EXPECT_EQ(ErrorText("ALTER TABLE v ADD c INT"), "4909 1 Cannot alter 'v' because it is not a table.");
}

TEST_F(AlterTableTest, AKeyThatIsReferredToStays) {
  Must(
      "ALTER TABLE t ADD CONSTRAINT uq UNIQUE (a) CREATE TABLE child (x INT CONSTRAINT fk REFERENCES t (a))");
  EXPECT_EQ(
      Errors("ALTER TABLE t DROP CONSTRAINT uq"),
      Lines({"3725 The constraint 'uq' is being referenced by table 'child', foreign key constraint 'fk'.",
             "3727 Could not drop constraint. See previous errors."}));
  Must("DROP TABLE child ALTER TABLE t DROP CONSTRAINT uq INSERT INTO t (a) VALUES (1)");
}

TEST_F(AlterTableTest, AKeyGoesTogetherWithThoseThatReferToIt) {
  Must(
      "CREATE TABLE s (a INT NOT NULL CONSTRAINT pk_s PRIMARY KEY, b INT CONSTRAINT fk_s REFERENCES s, c INT)");
  EXPECT_EQ(Errors("ALTER TABLE s DROP COLUMN a"),
            Lines({"5074 The object 'pk_s' is dependent on column 'a'.",
                   "5074 The object 'fk_s' is dependent on column 'a'.",
                   "4922 ALTER TABLE DROP COLUMN a failed because one or more objects access this column."}));
  Must("ALTER TABLE s DROP CONSTRAINT fk_s, pk_s, COLUMN a");
  Must("INSERT INTO s VALUES (9, 9)");
  EXPECT_EQ(Rows("SELECT * FROM s"), Lines({"9|9"}));
}

TEST_F(AlterTableTest, AnIdentityColumnCanGo) {
  Must(
      "CREATE TABLE n (id INT IDENTITY(3,1), a INT) INSERT INTO n VALUES (1), (2) ALTER TABLE n DROP COLUMN id");
  Must("INSERT INTO n VALUES (3)");
  EXPECT_EQ(Rows("SELECT * FROM n ORDER BY a"), Lines({"1", "2", "3"}));
  Must("ALTER TABLE n ADD id INT IDENTITY(7,1)");
  EXPECT_EQ(Rows("SELECT a, id FROM n ORDER BY a"), Lines({"1|7", "2|8", "3|9"}));
}

// ---- ALTER COLUMN

TEST_F(AlterTableTest, TypesChangeWithTheirValues) {
  Must("ALTER TABLE t ALTER COLUMN a DECIMAL(9,2) NULL ALTER TABLE t ALTER COLUMN b NVARCHAR(30)");
  EXPECT_EQ(All(), Lines({"5|1.00|x", "6|2.00|y", "7|NULL|NULL"}));
  Must("ALTER TABLE t ALTER COLUMN a VARCHAR(20)");
  EXPECT_EQ(All(), Lines({"5|1.00|x", "6|2.00|y", "7|NULL|NULL"}));
  Must("INSERT INTO t (a) VALUES ('text')");
  EXPECT_EQ(ErrorText("ALTER TABLE t ALTER COLUMN a FLOAT"),
            "8114 1 Error converting data type varchar to float.");
  EXPECT_EQ(ErrorText("ALTER TABLE t ALTER COLUMN a INT"),
            "245 1 Conversion failed when converting the varchar value '1.00' to data type int.");
  EXPECT_EQ(ErrorOf("ALTER TABLE t ALTER COLUMN a VARCHAR(3)"), 8152);
  EXPECT_EQ(Rows("SELECT a FROM t WHERE id = 8"), Lines({"text"}));
  EXPECT_EQ(
      Rows("SELECT DATA_TYPE, CHARACTER_MAXIMUM_LENGTH FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = "
           "'t' ORDER BY ORDINAL_POSITION"),
      Lines({"int|NULL", "varchar|20", "nvarchar|30"}));
}

TEST_F(AlterTableTest, NullabilityChanges) {
  EXPECT_EQ(ErrorText("ALTER TABLE t ALTER COLUMN a INT NOT NULL"),
            "515 1 Cannot insert the value NULL into column 'a', table '" + Database() +
                ".dbo.t'; column does not allow nulls. UPDATE fails.");
  EXPECT_EQ(All(), kRows);
  Must("UPDATE t SET a = 0 WHERE a IS NULL ALTER TABLE t ALTER COLUMN a INT NOT NULL");
  EXPECT_EQ(ErrorOf("INSERT INTO t (b) VALUES ('n')"), 515);
  Must("ALTER TABLE t ALTER COLUMN a INT INSERT INTO t (b) VALUES ('n')");
}

TEST_F(AlterTableTest, AnIdentityKeepsItsNumbers) {
  Must("CREATE TABLE n (id SMALLINT IDENTITY(5,1), a INT) INSERT INTO n VALUES (1), (2), (3)"
       " DELETE FROM n WHERE id = 7 ALTER TABLE n ALTER COLUMN id BIGINT ALTER TABLE n DROP COLUMN a"
       " ALTER TABLE n ADD b INT INSERT INTO n VALUES (4)");
  EXPECT_EQ(Rows("SELECT id FROM n ORDER BY id"), Lines({"5", "6", "8"}));
  EXPECT_EQ(ErrorOf("ALTER TABLE n ALTER COLUMN id VARCHAR(9)"), 2749);
  EXPECT_EQ(ErrorOf("ALTER TABLE n ALTER COLUMN id INT NULL"), 8147);
}

TEST_F(AlterTableTest, ColumnsThatAreUsedKeepTheirTypes) {
  EXPECT_EQ(
      Errors("ALTER TABLE t ALTER COLUMN nothing INT"),
      Lines({"4924 ALTER TABLE ALTER COLUMN failed because column 'nothing' does not exist in table 't'."}));
  const Lines key = Errors("ALTER TABLE t ALTER COLUMN id BIGINT");
  ASSERT_EQ(key.size(), 2U);
  EXPECT_EQ(key[0].substr(0, 23), "5074 The object 'PK__t_");
  EXPECT_EQ(key[1],
            "4922 ALTER TABLE ALTER COLUMN id failed because one or more objects access this column.");
  Must(
      "CREATE INDEX ix ON t (b) ALTER TABLE t ADD CONSTRAINT ck CHECK (b <> 'z'), CONSTRAINT df DEFAULT 'd' FOR b");
  const std::string last =
      "4922 ALTER TABLE ALTER COLUMN b failed because one or more objects access this column.";
  EXPECT_EQ(Errors("ALTER TABLE t ALTER COLUMN b NVARCHAR(5)"),
            Lines({"5074 The index 'ix' is dependent on column 'b'.",
                   "5074 The object 'ck' is dependent on column 'b'.",
                   "5074 The object 'df' is dependent on column 'b'.", last}));
  EXPECT_EQ(Errors("ALTER TABLE t ALTER COLUMN b VARCHAR(4)"),
            Lines({"5074 The index 'ix' is dependent on column 'b'.", last}));
  // A longer one of the same type does not disturb them.
  Must(
      "ALTER TABLE t ALTER COLUMN b VARCHAR(9) INSERT INTO t (a) VALUES (8) UPDATE t SET b = 'longer' WHERE a = 8");
  EXPECT_EQ(ErrorOf("UPDATE t SET b = 'Z'"), 547);
  EXPECT_EQ(ErrorText("ALTER TABLE t ALTER COLUMN b TEXT"),
            "4927 1 Cannot alter column 'b' to be data type text.");
  Must("CREATE TABLE l (a TEXT NULL) INSERT INTO l VALUES ('long')");
  EXPECT_EQ(ErrorText("ALTER TABLE l ALTER COLUMN a VARCHAR(10)"),
            "4928 1 Cannot alter column 'a' because it is 'text'.");
  Must("ALTER TABLE l ALTER COLUMN a VARCHAR(MAX)");
  EXPECT_EQ(Rows("SELECT a FROM l"), Lines({"long"}));
}

// ---- CHECK and NOCHECK CONSTRAINT

TEST_F(AlterTableTest, ConstraintsAreSwitchedOffAndOn) {
  Must("ALTER TABLE t ADD CONSTRAINT ck CHECK (a < 5), CONSTRAINT uq UNIQUE (a)"
       " CREATE TABLE child (x INT CONSTRAINT fk REFERENCES t (a), CONSTRAINT cx CHECK (x < 9))");
  Must("ALTER TABLE child NOCHECK CONSTRAINT ALL INSERT INTO child VALUES (77)");
  Must("ALTER TABLE t NOCHECK CONSTRAINT ck INSERT INTO t (a) VALUES (50)");
  Must("ALTER TABLE t CHECK CONSTRAINT ck");
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) VALUES (51)"), 547);
  EXPECT_EQ(ErrorOf("ALTER TABLE t WITH CHECK CHECK CONSTRAINT ck"), 547);
  EXPECT_EQ(ErrorOf("ALTER TABLE child WITH CHECK CHECK CONSTRAINT fk"), 547);
  Must("INSERT INTO child VALUES (78)"); // the failing statement has left it off
  Must("ALTER TABLE child CHECK CONSTRAINT fk, cx");
  EXPECT_EQ(
      ErrorText("INSERT INTO child VALUES (6)"),
      "547 1 The INSERT statement conflicted with the FOREIGN KEY constraint \"fk\". The conflict occurred in "
      "database \"" +
          Database() + "\", table \"dbo.t\", column 'a'.");
  EXPECT_EQ(ErrorOf("DELETE FROM child INSERT INTO child VALUES (1) DELETE FROM t WHERE a = 1"), 547);
  const std::string follow = "4916 Could not enable or disable the constraint. See previous errors.";
  EXPECT_EQ(Errors("ALTER TABLE t NOCHECK CONSTRAINT nothing"),
            Lines({"4917 Constraint 'nothing' does not exist.", follow}));
  EXPECT_EQ(
      Errors("ALTER TABLE t NOCHECK CONSTRAINT uq"),
      Lines({"11415 Object 'uq' cannot be disabled or enabled. This action applies only to foreign key and "
             "check constraints.",
             follow}));
}

// ---- the table as a whole

TEST_F(AlterTableTest, ForeignKeysHoldOnBothSides) {
  Must("CREATE TABLE p (id INT NOT NULL PRIMARY KEY, a INT, b INT)"
       " CREATE TABLE c (id INT NOT NULL PRIMARY KEY, p INT CONSTRAINT fk REFERENCES p, a INT)"
       " INSERT INTO p VALUES (1, 1, 1), (2, 2, 2) INSERT INTO c VALUES (1, 1, 1)");
  Must("ALTER TABLE p DROP COLUMN a ALTER TABLE c DROP COLUMN a ALTER TABLE p ALTER COLUMN b BIGINT");
  EXPECT_EQ(ErrorOf("INSERT INTO c VALUES (2, 3)"), 547);
  EXPECT_EQ(ErrorOf("DELETE FROM p WHERE id = 1"), 547);
  EXPECT_EQ(ErrorOf("UPDATE p SET id = 3 WHERE id = 1"), 547);
  Must("UPDATE c SET p = 2 DELETE FROM p WHERE id = 1");
  EXPECT_EQ(Errors("ALTER TABLE c ADD CONSTRAINT f2 FOREIGN KEY (id) REFERENCES nothing (id)"),
            Lines({"1767 Foreign key 'f2' references invalid table 'nothing'.",
                   "1750 Could not create constraint or index. See previous errors."}));
}

TEST_F(AlterTableTest, ATransactionUndoesItWhole) {
  Must("BEGIN TRAN ALTER TABLE t DROP COLUMN a ALTER TABLE t ADD CONSTRAINT ck CHECK (b <> 'q'), c INT"
       " INSERT INTO t (b) VALUES ('n') ROLLBACK");
  EXPECT_EQ(All(), kRows);
  Must("INSERT INTO t (b) VALUES ('q')");
  EXPECT_EQ(Rows("SELECT id FROM t WHERE b = 'q'"), Lines({"9"})) << "8 was given";
  Must("BEGIN TRAN SAVE TRAN s ALTER TABLE t DROP COLUMN b ROLLBACK TRAN s COMMIT");
  EXPECT_EQ(Rows("SELECT b FROM t WHERE id = 9"), Lines({"q"}));
}

TEST_F(AlterTableTest, OtherSessionsSeeIt) {
  const auto other = Session::Open(database_);
  EXPECT_EQ(RunOn(*other, "SELECT * FROM t WHERE id = 5").results, std::vector<Lines>({{"5|1|x"}}));
  Must("ALTER TABLE t DROP COLUMN a ALTER TABLE t ADD CONSTRAINT df DEFAULT 'd' FOR b");
  EXPECT_EQ(RunOn(*other, "SELECT * FROM t WHERE id = 5").results, std::vector<Lines>({{"5|x"}}));
  EXPECT_TRUE(RunOn(*other, "INSERT INTO t DEFAULT VALUES").errors.empty());
  EXPECT_EQ(Rows("SELECT b FROM t WHERE id = 8"), Lines({"d"}));
}

TEST_F(AlterTableTest, TemporaryTablesAndProceduresFollow) {
  Must("CREATE TABLE #x (a INT, b INT) INSERT INTO #x VALUES (1, 2) ALTER TABLE #x DROP COLUMN a"
       " ALTER TABLE #x ADD CHECK (b > 0), n INT IDENTITY");
  EXPECT_EQ(Rows("SELECT * FROM #x"), Lines({"2|1"}));
  EXPECT_EQ(ErrorOf("INSERT INTO #x VALUES (0)"), 547);
  Must("CREATE TABLE ##g (a INT, b INT) INSERT INTO ##g VALUES (1, 2) ALTER TABLE ##g DROP COLUMN a");
  EXPECT_EQ(Rows("SELECT * FROM ##g"), Lines({"2"}));
  Must("CREATE PROCEDURE p AS SELECT * FROM t WHERE id = 5");
  EXPECT_EQ(Rows("EXEC p"), Lines({"5|1|x"}));
  Must("ALTER TABLE t DROP COLUMN a");
  EXPECT_EQ(Rows("EXEC p"), Lines({"5|x"}));
}

} // namespace
} // namespace tsql::test
