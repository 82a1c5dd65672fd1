SET NOCOUNT ON 

--SQL开始构建，包括临时表#IntiGroup的建立，该表保存符合过滤界面条件的BOM组信息 
CREATE TABLE #InitGroup  ( 
FInterID       INT         NOT NULL,             -- 组别内码 
FParentID      INT         NOT NULL,             -- 上级组内码 
FName          VARCHAR(250)    NULL,             -- 组别名称 
FNumber        VARCHAR(250)    NULL,             -- 组别编码 
FBootID        INT             NULL,             -- 组别的根内码 
) 

INSERT INTO #InitGroup (FInterID, FParentID, FName, FNumber, FBootID) 
SELECT DISTINCT t3.FInterID, t3.FParentID, t3.FName, t3.FNumber, t3.FBootID 
FROM IcBom t1 
INNER JOIN ICBomChild t2 ON t1.FInterID = t2.FInterID 
INNER JOIN IcBomGroup t3 ON t1.FParentID = t3.FinterID 
INNER JOIN t_IcItem t4 ON t1.FItemID = t4.FItemID 
INNER JOIN t_IcItem t7 ON t2.FItemID = t7.FItemID 
LEFT JOIN t_User t5 ON t1.FCheckerID = t5.FUserID 
LEFT JOIN t_User t6 ON t1.FCheckID = t6.FUserID 
WHERE 1 = 1  AND t1.FNote LIKE '%it's%'

 AND t3.FInterID IN (2)

--如果过滤界面存在组信息,那么该组不考虑过滤界面下面的信息，将被自动选出 
INSERT INTO #InitGroup (FInterID, FParentID, FName, FNumber, FBootID) 
SELECT FInterID, FParentID, FName, FNumber, FBootID FROM IcBomGroup 
 WHERE FInterID IN (2)


--#GroupData表将保存最后的结果 
CREATE TABLE #GroupData 
(        FBootID         INT             NULL, 
         FIndex          INT             NOT NULL, 
         FInterID        INT             NOT NULL, 
         FParentID       INT             NOT NULL, 
         FName           VARCHAR(200)    NOT NULL, 
         FNumber         VARCHAR(200)    NOT NULL  
) 

--#temp表保存某个组向上回溯根结点的轨迹，回溯过程中的所有组都将在该表中出现，每次回溯完成，该表被清空 
CREATE TABLE #temp 
(        FIndex          INT             NOT NULL, 
         FInterID        INT             NOT NULL, 
         FParentID       INT             NOT NULL, 
         FName           VARCHAR(200)    NOT NULL, 
         FNumber         VARCHAR(200)    NOT NULL  
) 

DECLARE @FInterID INT 
DECLARE @FParentID INT 
DECLARE @Index INT 

--循环开始，只选择初始条件中有上级的BOM数据进行筛选，同时排除它已经进入#GroupData的条件 
WHILE EXISTS(SELECT 1 FROM #InitGroup WHERE FParentID > 0) 
BEGIN 
         SELECT TOP 1 @FInterID = FInterID, @FParentID = FParentID FROM #InitGroup WHERE FParentID > 0 

         --选择一个需要滚动查询的组进行向上查找 
         INSERT INTO #temp (FIndex, FInterID, FParentID, FName, FNumber) 
         SELECT 0, FInterID, FParentID, FName, FNumber 
         FROM #InitGroup
         WHERE FInterID = @FInterId AND FParentID = @FParentID AND FParentID > 0 

         SET @Index = 0 
         --回溯开始，结束条件是回溯到根结点 
         WHILE EXISTS(SELECT MIN(FParentID) FROM #temp HAVING MIN(FParentID) <> 0) AND EXISTS(SELECT 1 FROM #temp WHERE FIndex = @Index AND FInterID NOT IN (SELECT FInterID FROM #temp WHERE FIndex < @Index)) 
         BEGIN 

                 --把当前#temp表中组的上级组插入结果表中 
                 INSERT INTO #temp(FIndex, FInterID, FParentID, FName, FNumber) 
                 SELECT @Index +1, t2.FInterID, t2.FParentID, t2.FName, t2.FNumber 
                 FROM #temp t1 INNER JOIN IcBomGroup t2 ON t1.FParentID = t2.FInterID 
                 WHERE t1.FIndex = @Index 

                 SET @Index = @Index + 1 

         End 

         --将刚才#temp的数据，也就是刚才得到的组轨迹插入结果表中 
         INSERT INTO #GroupData(FIndex, FInterID, FParentID, FName, FNumber) 
         SELECT FIndex, FInterID, FParentID, FName, FNumber 
         FROM #temp 

         --清空临时表，为下一个组的轨迹做准备 
         DELETE FROM #temp 

         --将初始化表中的组进行筛选，凡是已经加入结果表的组将不再被遍历，应该删除 
         DELETE t1 FROM #InitGroup t1 INNER JOIN #GroupData t2 ON t1.FInterID = t2.FInterID 
         End 

--将所属根结点加入 
INSERT INTO #GroupData(FIndex, FInterID, FParentID, FName, FNumber) 
SELECT 0, FInterID, FParentID, FName, FNumber 
FROM #InitGroup 

--更新FBOOTID 
UPDATE t1 SET t1.FBootID = t2.FBootID 
FROM #GroupData t1 INNER JOIN ICBomGroup t2 ON t1.FInterID = t2.FInterID 

--更正结点在结果中的最大顺序码，因为同一结点(比如根结点)，可能查询到的顺序号不同，最大的顺序号是正确的 
UPDATE t1 SET t1.FIndex = t2.FMaxIndex 
FROM #GroupData t1 
INNER JOIN (SELECT MAX(FIndex) FMaxIndex, FInterID FROM #GroupData GROUP BY FInterID) t2 ON t1.FInterID = t2.FInterID 

--返回结果 
SELECT DISTINCT * FROM #GroupData ORDER BY FBootId, FIndex DESC 

DROP TABLE #InitGroup 
DROP TABLE #GroupData 
DROP TABLE #temp 

