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
