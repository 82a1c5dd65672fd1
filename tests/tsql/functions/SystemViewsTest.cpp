// The system's views of the catalog: their rows, and the columns that the server has and the engine lacks.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class SystemViewsTest : public EngineTest {
 protected:
  SystemViewsTest() {
    Must("CREATE SCHEMA s");
    Must(
        "CREATE TABLE p (a INT NOT NULL, b INT NOT NULL, CONSTRAINT pk_p PRIMARY KEY (b, a))"
        " CREATE TABLE s.t (id INT CONSTRAINT uq UNIQUE, x INT CONSTRAINT df DEFAULT 1, y INT, z INT CONSTRAINT ck CHECK (z > 0),"
        " CONSTRAINT fk FOREIGN KEY (x, y) REFERENCES p (b, a))"
        " CREATE INDEX ix ON s.t (y DESC, z) CREATE UNIQUE INDEX ux ON p (a) CREATE TABLE heap (a INT)");
    Must("CREATE VIEW v AS SELECT a FROM p");
    Must("CREATE PROCEDURE s.routine AS SELECT 1");
    Must("CREATE FUNCTION f () RETURNS INT AS BEGIN RETURN 1 END");
  }
};

TEST_F(SystemViewsTest, ProceduresAndViews) {
  EXPECT_EQ(Rows("SELECT name, SCHEMA_NAME(schema_id), parent_object_id, type, type_desc FROM sys.procedures"
                 " WHERE object_id = OBJECT_ID('s.routine')"),
            Lines({"routine|s|0|P |SQL_STORED_PROCEDURE"}));
  EXPECT_EQ(
      Rows("SELECT name, schema_id, type, type_desc FROM sys.views WHERE object_id = OBJECT_ID('v', 'V')"),
      Lines({"v|1|V |VIEW"}));
}

TEST_F(SystemViewsTest, Types) {
  EXPECT_EQ(Rows("SELECT name, user_type_id, max_length, [precision], scale FROM sys.types"
                 " WHERE name IN ('int', 'datetime', 'nvarchar', 'decimal') ORDER BY name"),
            Lines({"datetime|61|8|23|3", "decimal|106|17|38|38", "int|56|4|10|0", "nvarchar|231|8000|0|0"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM sys.types WHERE is_user_defined = 1 OR schema_id <> 4"), Lines({"0"}));
}

TEST_F(SystemViewsTest, ColumnsHaveTheTypesOfTheServer) {
  Must("CREATE TABLE typed (i INT IDENTITY, d DECIMAL(9,2), f FLOAT, n NVARCHAR(30), t TIME(0), u TIME(3),"
       " w DATETIME2(7), x DATETIME2(0), m MONEY, b VARBINARY(MAX), c AS i + 1)");
  EXPECT_EQ(
      Rows(
          "SELECT c.name, t.name, c.system_type_id, c.max_length, c.[precision], c.scale, c.collation_name,"
          " c.is_identity, c.is_computed FROM sys.columns c JOIN sys.types t ON t.user_type_id = c.user_type_id"
          " WHERE c.object_id = OBJECT_ID('typed') ORDER BY c.column_id"),
      Lines({"i|int|56|4|10|0|NULL|1|0", "d|decimal|106|5|9|2|NULL|0|0", "f|float|62|8|53|0|NULL|0|0",
             "n|nvarchar|231|60|0|0|Chinese_PRC_CI_AS|0|0", "t|time|41|3|8|0|NULL|0|0",
             "u|time|41|4|12|3|NULL|0|0", "w|datetime2|42|8|27|7|NULL|0|0", "x|datetime2|42|6|19|0|NULL|0|0",
             "m|money|60|8|19|4|NULL|0|0", "b|varbinary|165|-1|0|0|NULL|0|0", "c|int|56|4|10|0|NULL|0|1"}));
}

TEST_F(SystemViewsTest, ColumnsAsOldServersTellThem) {
  Must(
      "CREATE TABLE old (i INT NOT NULL, d DECIMAL(9,2), n NVARCHAR(30), v VARCHAR(MAX), t DATETIME, c AS i + 1)");
  EXPECT_EQ(
      Rows("SELECT c.name, t.name, c.length, c.colid, c.colorder, c.prec, c.scale, c.isnullable, c.iscomputed"
           " FROM syscolumns c JOIN systypes t ON t.xusertype = c.xusertype"
           " WHERE c.id = OBJECT_ID('old') ORDER BY c.colid"),
      Lines({"i|int|4|1|1|10|0|0|0", "d|decimal|5|2|2|9|2|1|0", "n|nvarchar|60|3|3|30|NULL|1|0",
             "v|varchar|-1|4|4|-1|NULL|1|0", "t|datetime|8|5|5|23|3|1|0", "c|int|4|6|6|10|0|1|1"}));
  EXPECT_EQ(
      Rows(
          "SELECT name, xtype, length, prec, scale FROM systypes WHERE name IN ('money', 'char', 'nvarchar') ORDER BY 1"),
      Lines({"char|175|8000|8000|NULL", "money|60|8|19|4", "nvarchar|231|8000|4000|NULL"}));
}

TEST_F(SystemViewsTest, SqlModules) {
  Must("SET ANSI_NULLS OFF");
  Must("CREATE PROCEDURE told AS SELECT 'it'");
  EXPECT_EQ(Rows("SELECT definition, uses_ansi_nulls, uses_quoted_identifier FROM sys.sql_modules"
                 " WHERE object_id = OBJECT_ID('told')"),
            Lines({"CREATE PROCEDURE told AS SELECT 'it'|0|1"}));
}

TEST_F(SystemViewsTest, Indexes) {
  EXPECT_EQ(
      Rows("SELECT OBJECT_NAME(object_id), name, index_id, is_unique, is_primary_key, is_unique_constraint"
           " FROM sys.indexes ORDER BY 1, index_id"),
      Lines({"heap|NULL|0|0|0|0", "p|pk_p|1|1|1|0", "p|ux|2|1|0|0", "t|NULL|0|0|0|0", "t|uq|2|1|0|1",
             "t|ix|3|0|0|0"}));
  EXPECT_EQ(
      Rows(
          "SELECT COL.name, ic.key_ordinal, ic.is_descending_key, ic.is_included_column FROM sys.index_columns ic"
          " JOIN sys.indexes i ON i.object_id = ic.object_id AND i.index_id = ic.index_id JOIN sys.columns COL"
          " ON COL.object_id = ic.object_id AND COL.column_id = ic.column_id WHERE i.name IN ('ix', 'pk_p')"
          " ORDER BY i.name, ic.index_column_id"),
      Lines({"y|1|1|0", "z|2|0|0", "b|1|0|0", "a|2|0|0"}));
  EXPECT_EQ(Rows("SELECT name FROM sysindexes WHERE id = OBJECT_ID('p') AND indid > 0 ORDER BY indid"),
            Lines({"pk_p", "ux"}));
}

TEST_F(SystemViewsTest, ForeignKeys) {
  EXPECT_EQ(
      Rows(
          "SELECT name, SCHEMA_NAME(schema_id), OBJECT_NAME(parent_object_id), OBJECT_NAME(referenced_object_id),"
          " type, is_disabled, delete_referential_action_desc FROM sys.foreign_keys WHERE object_id = OBJECT_ID('s.fk', 'F')"),
      Lines({"fk|s|t|p|F |0|NO_ACTION"}));
  EXPECT_EQ(
      Rows("SELECT constraint_column_id, parent_column_id, referenced_column_id FROM sys.foreign_key_columns"
           " WHERE constraint_object_id = OBJECT_ID('s.fk') ORDER BY 1"),
      Lines({"1|2|2", "2|3|1"}));
  Must("ALTER TABLE s.t NOCHECK CONSTRAINT ALL");
  EXPECT_EQ(
      Rows(
          "SELECT is_disabled FROM sys.foreign_keys UNION ALL SELECT is_disabled FROM sys.check_constraints"),
      Lines({"1", "1"}));
}

TEST_F(SystemViewsTest, OtherConstraints) {
  EXPECT_EQ(Rows("SELECT name, type, type_desc, unique_index_id FROM sys.key_constraints ORDER BY name"),
            Lines({"pk_p|PK|PRIMARY_KEY_CONSTRAINT|1", "uq|UQ|UNIQUE_CONSTRAINT|2"}));
  EXPECT_EQ(Rows("SELECT name, OBJECT_NAME(parent_object_id), parent_column_id FROM sys.default_constraints"),
            Lines({"df|t|2"}));
  EXPECT_EQ(
      Rows("SELECT name, type_desc FROM sys.check_constraints WHERE parent_object_id = OBJECT_ID('s.t')"),
      Lines({"ck|CHECK_CONSTRAINT"}));
  EXPECT_EQ(
      Rows(
          "SELECT OBJECT_NAME(OBJECT_ID('s.df', 'D')), OBJECT_NAME(OBJECT_ID('pk_p', 'PK')), OBJECT_ID('pk_p', 'UQ'),"
          " OBJECT_ID('fk'), OBJECT_SCHEMA_NAME(OBJECT_ID('s.ck'))"),
      Lines({"df|pk_p|NULL|NULL|s"}));
}

TEST_F(SystemViewsTest, ConstraintsOfTheInformationSchema) {
  EXPECT_EQ(
      Rows(
          "SELECT CONSTRAINT_SCHEMA, CONSTRAINT_NAME, TABLE_SCHEMA, TABLE_NAME, CONSTRAINT_TYPE, IS_DEFERRABLE"
          " FROM INFORMATION_SCHEMA.TABLE_CONSTRAINTS ORDER BY CONSTRAINT_NAME"),
      Lines({"s|ck|s|t|CHECK|NO", "s|fk|s|t|FOREIGN KEY|NO", "dbo|pk_p|dbo|p|PRIMARY KEY|NO",
             "s|uq|s|t|UNIQUE|NO"}));
  EXPECT_EQ(
      Rows("SELECT CONSTRAINT_NAME, COLUMN_NAME, ORDINAL_POSITION FROM INFORMATION_SCHEMA.KEY_COLUMN_USAGE"
           " WHERE CONSTRAINT_CATALOG = DB_NAME() ORDER BY CONSTRAINT_NAME, ORDINAL_POSITION"),
      Lines({"fk|x|1", "fk|y|2", "pk_p|b|1", "pk_p|a|2", "uq|id|1"}));
}

TEST_F(SystemViewsTest, TextsOfModules) {
  EXPECT_EQ(
      Rows(
          "SELECT ROUTINE_SCHEMA, ROUTINE_NAME, ROUTINE_TYPE, ROUTINE_DEFINITION FROM INFORMATION_SCHEMA.ROUTINES"
          " ORDER BY ROUTINE_NAME"),
      Lines({"dbo|f|FUNCTION|CREATE FUNCTION f () RETURNS INT AS BEGIN RETURN 1 END",
             "s|routine|PROCEDURE|CREATE PROCEDURE s.routine AS SELECT 1"}));
  EXPECT_EQ(
      Rows("SELECT TABLE_NAME, VIEW_DEFINITION, CHECK_OPTION, IS_UPDATABLE FROM INFORMATION_SCHEMA.VIEWS"),
      Lines({"v|CREATE VIEW v AS SELECT a FROM p|NONE|NO"}));
  const std::string word(3000, 'x');
  Must("CREATE VIEW longer AS SELECT '" + word + "' AS a, '" + word + "' AS b");
  EXPECT_EQ(Rows("SELECT VIEW_DEFINITION FROM INFORMATION_SCHEMA.VIEWS WHERE TABLE_NAME = 'longer'"),
            Lines({"NULL"}));
  EXPECT_EQ(
      Rows(
          "SELECT colid, number, LEN(text), LEFT(text, 11) FROM syscomments WHERE id = OBJECT_ID('longer') ORDER BY colid"),
      Lines({"1|0|4000|CREATE VIEW", "2|0|2045|" + std::string(11, 'x')}));
  EXPECT_EQ(Rows("SELECT number FROM syscomments WHERE id = OBJECT_ID('s.routine')"), Lines({"1"}));
}

TEST_F(SystemViewsTest, ColumnsThatTheServerHasAreRefusedByTheirNames) {
  EXPECT_EQ(ErrorText("SELECT create_date FROM sys.objects"),
            "40510 1 The column sys.objects.create_date is not supported.");
  EXPECT_EQ(ErrorText("SELECT i.type_desc FROM sys.indexes i"),
            "40510 1 The column sys.indexes.type_desc is not supported.");
  EXPECT_EQ(ErrorText("SELECT name FROM sysobjects WHERE crdate > '2020-01-01'"),
            "40510 1 The column sysobjects.crdate is not supported.");
  EXPECT_EQ(ErrorOf("SELECT nothing FROM sys.indexes"), 207);
  EXPECT_EQ(ErrorOf("SELECT h.create_date FROM heap h, sys.objects"), 207);
}

} // namespace
} // namespace tsql::test
