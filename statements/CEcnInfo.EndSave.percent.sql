SET NOCOUNT ON 
IF EXISTS (SELECT 1 FROM ICEcn t1 INNER JOIN IcBom t2 ON t1.FBomInterID = t2.FInterId WHERE t1.FInterID = 6 AND t2.FBomType IN (2,4)) 
BEGIN 
     SELECT FSumFPercent_BOM + FSumFPercent_ECN FROM 
     (SELECT ISNULL(SUM(ISNULL(b1.FPercent,0)),0) AS FSumFPercent_BOM FROM ICEcn a1 INNER JOIN ICBomChild b1 ON a1.FBomInterID = b1.FInterId 
     WHERE a1.FInterID = 6 AND FEntryID NOT IN 
     (SELECT t3.FEntryId FROM ICECN t1 
     INNER JOIN ICBom t2 ON t1.FBomInterID = t2.FInterID 
     INNER JOIN ICBomChild t3 ON t2.FInterId = t3.FInterID 
     INNER JOIN ICEcnEntry t4 ON t3.FEntryID = t4.FChildID AND t1.FInterID = t4.FInterID 
     WHERE t1.FInterID = 6)) v1 
, 
     (SELECT ISNULL(SUM(ISNULL(t2.FPercent,0)),0) AS FSumFPercent_ECN FROM ICEcn t1 INNER JOIN ICEcnEntry t2 ON t1.FInterId = t2.FInterID 
     WHERE t1.FInterId = 6 AND t2.FChangeType <> 11023 ) v2 
End 
ELSE 
     SELECT -1 