-- The stored procedures that the component calls.

-- The next identifier of a table: the highest one issued, in ICMaxNum, plus one. A table without a counter begins
-- with 1. The counter is written before it is read, in one transaction: two callers never get the same identifier.
CREATE PROCEDURE GetICMaxNum
  @TableName varchar(50),
  @FInterID  int OUTPUT
AS
SET NOCOUNT ON
BEGIN TRAN
UPDATE ICMaxNum SET FMaxNum = ISNULL(FMaxNum, 0) + 1 WHERE FTableName = @TableName
IF @@ROWCOUNT = 0
  INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES (@TableName, 1)
SELECT @FInterID = FMaxNum FROM ICMaxNum WHERE FTableName = @TableName
COMMIT TRAN
GO

-- The tree of the customer-BOM screen: the root, the items that have BOMs, their BOMs, and below a configuration BOM the
-- customer BOMs made from it. Rows as in the BOM browser: FType (0 root, 1 item, 2 BOM, 3 customer BOM), FRelative (the
-- parent's FKey), FKey, FText, FImgNormal, FImgClick, FTag (the item's number, the BOM's id), parents first.
--   @p_FItemIDFrom, @p_FItemIDTo  the range of the items; -1 leaves it open
--   @p_FErpClsID                  the class of the items; -1 for all classes
--   @p_Term                       a condition on BOMs and their items (FInterID, FBOMNumber, FVersion, FBomType,
--                                 FUseStatus, FStatus, FForbid, FCustID, FItemID, FNumber, FName, FModel, FErpClsID);
--                                 empty for none. A configuration BOM is also shown for a customer BOM that matches
--   @p_BomBill                    the root's caption
CREATE PROCEDURE sp_GetCustBOMTree
  @p_FItemIDFrom int,
  @p_FItemIDTo   int,
  @p_FErpClsID   int,
  @p_Term        varchar(1000),
  @p_BomBill     varchar(1000)
AS
SET NOCOUNT ON
DECLARE @Sql varchar(4000)
CREATE TABLE #Match (FInterID int NOT NULL)
SET @Sql = 'INSERT INTO #Match (FInterID) SELECT FInterID FROM (SELECT a.FInterID, a.FBOMNumber, a.FVersion, a.FBomType,'
  + ' a.FUseStatus, a.FStatus, a.FForbid, a.FCustID, a.FItemID, b.FNumber, b.FName, b.FModel, b.FErpClsID'
  + ' FROM ICBOM a INNER JOIN t_ICItem b ON a.FItemID = b.FItemID) t'
IF @p_Term <> '' SET @Sql = @Sql + ' WHERE ' + @p_Term
EXEC (@Sql)

CREATE TABLE #Bom (
  FInterID   int           NOT NULL,
  FBOMNumber varchar(300)  NOT NULL,
  FVersion   nvarchar(300) NULL,
  FItemID    int           NOT NULL,
  FNumber    varchar(80)   NOT NULL,
  FName      nvarchar(255) NOT NULL,
  FImage     int           NOT NULL
)
INSERT INTO #Bom (FInterID, FBOMNumber, FVersion, FItemID, FNumber, FName, FImage)
SELECT a.FInterID, a.FBOMNumber, a.FVersion, a.FItemID, b.FNumber, b.FName,
       CASE WHEN a.FBomType = 0 AND a.FUseStatus = 1072 THEN 13 WHEN a.FBomType = 0 THEN 3
            WHEN a.FBomType = 1 THEN 15 WHEN a.FBomType = 2 THEN 18 ELSE 17 END
FROM ICBOM a
INNER JOIN t_ICItem b ON a.FItemID = b.FItemID
WHERE a.FBomType <> 3
  AND (@p_FItemIDFrom = -1 OR a.FItemID >= @p_FItemIDFrom)
  AND (@p_FItemIDTo = -1 OR a.FItemID <= @p_FItemIDTo)
  AND (@p_FErpClsID = -1 OR b.FErpClsID = @p_FErpClsID)
  AND (a.FInterID IN (SELECT FInterID FROM #Match)
       OR EXISTS (SELECT 1 FROM ICBOM c INNER JOIN #Match d ON c.FInterID = d.FInterID
                  WHERE c.FBomType = 3 AND c.FParentID = a.FInterID))

SELECT 0 AS FType, '' AS FRelative, 'qa' AS FKey, @p_BomBill AS FText, 1 AS FImgNormal, 2 AS FImgClick, '' AS FTag
UNION ALL
SELECT DISTINCT 1, 'qa', 'ITEM ' + CAST(FItemID AS varchar(10)), FNumber + '(' + FName + ')', 1, 2, FNumber
FROM #Bom
UNION ALL
SELECT 2, 'ITEM ' + CAST(FItemID AS varchar(10)), 'BOM ' + CAST(FInterID AS varchar(10)),
       FBOMNumber + '(' + ISNULL(FVersion, '') + ')', FImage, FImage, CAST(FInterID AS varchar(10))
FROM #Bom
UNION ALL
SELECT 3, 'BOM ' + CAST(c.FParentID AS varchar(10)), 'BOM ' + CAST(c.FInterID AS varchar(10)),
       c.FBOMNumber + '(' + ISNULL(c.FVersion, '') + ')', 17, 17, CAST(c.FInterID AS varchar(10))
FROM ICBOM c
INNER JOIN #Match d ON c.FInterID = d.FInterID
INNER JOIN #Bom e ON c.FParentID = e.FInterID
WHERE c.FBomType = 3
ORDER BY FType, FText
GO
