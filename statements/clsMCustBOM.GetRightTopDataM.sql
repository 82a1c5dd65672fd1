SELECT * FROM (
SELECT a.FInterID,a.FBOMNumber,a.FVersion,a.FNote,b.FName,
b.FNumber,
 (case a.FStatus when 0 then '未审核' else '已审核' end) as FStatus ,
a.FStatus as FStatusNum ,
CASE FUseStatus WHEN 1072 THEN '使用' ELSE '未使用' END AS FUseStatus,
FUseStatus as FUseStatusNum ,
a.FYield,a.FQty,a.FAuxQty,a.FParentID,b.FQtyDecimal,a.FBomType,a.FCustID,
a.FItemID,b.FModel,c.FName AS FUnitID,b.FCUUnitID ,v.FName AS FErpClsName,d.FBillNo as FRoutingNo,d.FRoutingName AS FRoutingName 
 FROM ICBOM a 
 INNER JOIN t_ICItem b ON a.FItemID=b.FItemID 
 LEFT OUTER JOIN t_routing d on a.FRoutingID = d.FInterID
 left outer join t_SubMessage v on b.FErpClsID=v.FInterID 
 INNER JOIN t_MeasureUnit c ON a.FUnitID=c.FItemID
 WHERE  1=1) t1