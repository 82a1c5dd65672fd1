SET NOCOUNT ON 

--SQL开始构建，包括临时表#IntiGroup的建立，该表保存符合过滤界面条件的BOM组信息 
SELECT DISTINCT t1.FInterID, t1.FBomNumber, t1.FBomType, t1.FTranType, 
--按照BOM的类型决定BOM前面的图标 
CASE WHEN t1.FBomType=0 THEN (CASE WHEN t1.FUseStatus=1072 THEN 13 ELSE 3 END) ELSE (CASE WHEN t1.FBomType=1 THEN 15 ELSE (CASE WHEN t1.FBomType=2 THEN 18 ELSE 17 END )END ) END AS FImgNormal, 
t4.FItemID, t4.FNumber AS FNumber, t4.FName, t4.FModel 
FROM IcBom t1 
INNER JOIN ICBomChild t2 ON t1.FInterID = t2.FInterID 
INNER JOIN IcBomGroup t3 ON t1.FParentID = t3.FinterID 
INNER JOIN t_ICItem t4 ON t1.FItemID = t4.FItemID  AND T4.FERPClsID IN (2,6,9)
INNER JOIN t_ICItem t7 ON t2.FItemID = t7.FItemID 
LEFT JOIN t_User t5 ON t1.FCheckerID = t5.FUserID 
LEFT JOIN t_User t6 ON t1.FCheckID = t6.FUserID 
WHERE 1 = 1 
 ORDER BY FBomNumber