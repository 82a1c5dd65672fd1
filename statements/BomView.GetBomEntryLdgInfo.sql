SELECT a.FEntryID,a.FInterID,b.FItemID,b.FNumber,b.FName AS FItemName,b.FModel,d.FName AS FBaseUnitID,w.FName as FUnitID,e.FName AS FMaterielType,f.FName AS FMarshalType,a.FAuxQty,a.FQty,a.FScrap,a.FBeginDay,a.FEndDay,a.FPercent,(case a.FOperSN when 0 then '' else cast(a.FOperSN as varchar(255)) end) FOperSN,j.FName AS FOperID,a.FMachinePos,a.FOffSetDay,a.FBeginDay, a.FEndday, 0 AS FAlterBackColor, '255,255,255' AS FBackColor, CASE a.FBackFlush WHEN 1059 THEN '否' ELSE '是' END AS FBackFlush,CASE b.FIsKeyItem WHEN 0 THEN '否' ELSE '是' END AS FIsKeyItem,CASE h.FDeleted WHEN 0 THEN '否' ELSE '是' END AS FForbitUse,g.FName AS FUseState,case i.FSPID when 0 then '' else i.FName end AS FSPID,c.FName AS FStockID,a.FNote,b.FQtyDecimal, v.FName AS FErpClsName 
 FROM IcBom a1 INNER JOIN ICBOMChild a ON a1.FinterId = a.FinterID 
inner join t_ICItem b on a.FItemID = b.FItemID
left join (SELECT FItemID,FName FROM t_Stock UNION SELECT 0 AS FItemID,'' AS FName) c on ISNULL(a.FStockID,0) = c.FItemID
left join t_MeasureUnit d on b.FUnitID = d.FItemID
left join t_SubMessage e on a.FMaterielType = e.FInterID
left join t_SubMessage f on a.FMarshalType= f.FInterID 
left join t_SubMessage g on b.FUseState = g.FInterID
left join t_Item h on b.FItemID = h.FItemID
left join t_StockPlace i on a.FSPID = i.FSPID
left join t_SubMessage j on a.FOperID = j.FInterID and j.FTypeID = 61
left join t_MeasureUnit w on a.FunitID=w.FitemID 
left join t_SubMessage v on b.FErpClsID=v.FInterID 