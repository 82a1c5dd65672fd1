SELECT  v1.FInterID FInterID, v1.FBomType, v1.FInterId FBomInterID, v1.FBomNumber FBomNumber, v1.FItemID FMItemID, v1.FRoutingID, v2.FNumber FMNumber, v2.FName FMName,v2.FModel FMModel,
 ICBomChild.FEntryID FChildId, ICBomChild.FItemID FItemID, t2.FNumber, t2.FName, t2.FModel, 11022 as FChangeType, '修改' as FChangeTypeName, 'ALT' as FChangeTypeNumber,  
 ICBomChild.FBeginDay, ICBomChild.FEndDay, t2.FQtyDecimal, t2.FPriceDecimal, t2.FUnitGroupID, ICBomChild.FQty, ICBomChild.FUnitID, t2.FTrack,
 t7.FNumber as FUnitNumber, t7.FName as FUnitName, ICBomChild.FAuxQty, ICBomChild.FMaterielType, t9.FID as FMaterielTypeNumber, 
 t9.FName as FMaterielTypeName, ICBomChild.FMarshalType, t10.FID as FMarshalTypeNumber, t10.FName as FMarshalTypeName, 
 ICBomChild.FPercent, ICBomChild.FScrap, ICBomChild.FOperSN,ICBomChild.FOperSN as FOperSNNumber,ICBomChild.FOperSN as FOperSNName, ICBomChild.FOperID, t13.FID as FOperIDNumber, t13.FName as FOperIDName, 
 ICBomChild.FMachinePos, ICBomChild.FOffSetDay, ICBomChild.FBackFlush, t16.FID as FBackFlushNumber, t16.FName as FBackFlushName, 
 t2.FIsKeyItem as FISKeyItem, t17.FName as FUseState, 
 t2.FDeleted as FForbitUse, ICBomChild.FStockID, t20.FNumber as FStockIDNumber, t20.FName as FStockIDName, 
 ICBomChild.FSPID, t21.FNumber as FSPIDNumber, t21.FName as FSPIDName, ICBomChild.FNote, t2.FErpClsID as FErpClsID 
FROM ICBom v1 INNER JOIN ICBomChild ON v1.FInterID = ICBomChild.FInterID AND ICBomChild.FInterID= 1002
 INNER JOIN t_ICItem t2 ON ICBomChild.FItemID = t2.FItemID 
 INNER JOIN t_IcItem v2 ON v1.FItemid = v2.FItemId 
 INNER JOIN t_MeasureUnit t7 ON ICBomChild.FUnitID = t7.FItemID 
 LEFT JOIN t_SubMessage t9 ON ICBomChild.FMaterielType = t9.FInterID 
 LEFT JOIN t_SubMessage t10 ON ICBomChild.FMarshalType = t10.FInterID 
 LEFT JOIN t_SubMessage t13 ON ICBomChild.FOperID = t13.FInterID 
 LEFT JOIN t_SubMessage t16 ON ICBomChild.FBackFlush = t16.FInterID 
 INNER JOIN t_SubMessage t17 ON t2.Fusestate = t17.FInterId 
 LEFT JOIN t_Stock t20 ON ICBomChild.FStockID = t20.FItemID 
 LEFT JOIN t_StockPlace t21 ON ICBomChild.FSPID = t21.FSPID 
 ORDER BY ICBomChild.FEntryID 