// The tables that fuzzed batches find.
#pragma once

namespace tsql::test {

inline constexpr const char* kFuzzSchema = R"(
CREATE TABLE ICBOM (FBrNo varchar(10) COLLATE Chinese_PRC_CS_AS NOT NULL DEFAULT '0', FInterID int NOT NULL PRIMARY KEY,
  FBOMNumber varchar(300) NOT NULL DEFAULT '', FUseStatus int NOT NULL DEFAULT 1073, FParentID int NULL,
  FItemID int NOT NULL, FQty decimal(28,10) NOT NULL DEFAULT 1, FStatus int NOT NULL DEFAULT 0,
  FBomType int NOT NULL DEFAULT 0, FCustID int NULL, FCheckerID int NULL, FEnterTime datetime NULL, FNote nvarchar(100) NULL)
CREATE TABLE ICBOMChild (FInterID int NOT NULL, FEntryID int NOT NULL, FItemID int NOT NULL,
  FAuxQty decimal(28,10) NOT NULL DEFAULT 0, FQty decimal(18,4) NULL, FUnitID int NULL, FPercent float NULL,
  PRIMARY KEY (FInterID, FEntryID))
CREATE TABLE ICBOMGroup (FInterID int IDENTITY(10,1), FNumber varchar(200) NULL UNIQUE, FName nvarchar(200) NULL,
  FParentID int NOT NULL DEFAULT 0 CHECK (FParentID >= 0), FBootID int NULL)
CREATE TABLE t_ICItem (FItemID int NOT NULL PRIMARY KEY, FNumber varchar(80) NULL, FShortNumber char(10) NULL,
  FName nvarchar(255) NULL, FModel text NULL, FErpClsID smallint NULL, FPrice money NULL, FDeleted bit NULL)
CREATE TABLE ICMaxNum (FTableName varchar(80) NOT NULL, FMaxNum bigint NULL)
INSERT INTO ICBOM (FInterID, FBOMNumber, FParentID, FItemID, FStatus) VALUES (1, 'B1', 10, 1, 1), (2, 'b2 ', NULL, 2, 0)
INSERT INTO ICBOMChild VALUES (1, 1, 2, 1.5, 1.5, 1, 50), (1, 2, 1, 2, NULL, 2, NULL)
INSERT INTO ICBOMGroup (FNumber, FName, FParentID) VALUES ('01', N'成品', 0), ('01.01', N'车', 10)
INSERT INTO t_ICItem VALUES (1, '01.001', '001', N'自行车 Bike', 'x', 2, 12.5, 0), (2, NULL, NULL, NULL, NULL, NULL, NULL, 1)
INSERT INTO ICMaxNum VALUES ('ICBOM', 41), ('ICBOMGroup', NULL)
EXEC ('CREATE FUNCTION f (@i INT) RETURNS INT AS BEGIN DECLARE @r INT SELECT @r = MAX(FItemID) FROM ICBOM WHERE FInterID = @i
  IF @r IS NULL RETURN 1 / @i RETURN @r END')
EXEC ('CREATE FUNCTION g (@i INT) RETURNS TABLE AS RETURN SELECT FInterID AS a, FNote AS b FROM ICBOM WHERE FItemID > @i')
EXEC ('CREATE FUNCTION h (@i INT) RETURNS @t TABLE (a INT, b VARCHAR(20)) AS BEGIN
  INSERT @t SELECT dbo.f(FInterID), FBOMNumber FROM ICBOM WHERE FInterID < @i RETURN END')
EXEC ('CREATE TRIGGER tr ON ICBOM FOR INSERT, UPDATE, DELETE AS UPDATE ICBOMChild SET FQty = i.FQty FROM ICBOMChild c
  JOIN inserted i ON i.FInterID = c.FInterID IF EXISTS (SELECT * FROM deleted WHERE FItemID > 100) ROLLBACK')
EXEC ('CREATE TRIGGER on_child ON ICBOMChild FOR DELETE, UPDATE AS IF UPDATE(FQty) DELETE FROM ICMaxNum
  INSERT INTO ICMaxNum SELECT ''x'', COUNT(*) FROM deleted')
EXEC ('CREATE VIEW plain AS SELECT FInterID AS a, FItemID AS b, FNote, FQty + 1 AS more FROM ICBOM')
EXEC ('CREATE SCHEMA s')
CREATE TABLE s.ICBOM (c int NULL)
INSERT INTO s.ICBOM VALUES (1), (2)
EXEC ('CREATE FUNCTION s.g (@i INT) RETURNS INT AS BEGIN RETURN (SELECT COUNT(*) FROM ICBOM WHERE c < @i) END')
EXEC ('CREATE VIEW s.v AS SELECT b.c, x.FNote FROM ICBOM b JOIN dbo.ICBOM x ON x.FInterID = b.c')
EXEC ('CREATE PROCEDURE s.p AS SELECT c, FName FROM ICBOM LEFT JOIN t_ICItem ON FItemID = c'))";

} // namespace tsql::test
