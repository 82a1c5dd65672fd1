UPDATE t2 
     SET FOldItemID = t3.FItemID, FOldQty = t3.FQty, FOldAuxQty = t3.FAuxQty, FOldUnitID = t3.FUnitID, FOldScrap = t3.FScrap, 
     FOldOperSN = t3.FOperSN, FOldOperID = t3.FOperID, FOldMachinePos = t3.FMachinePos, FOldMaterielType = t3.FMaterielType, 
     FOldMarshalType = t3.FMarshalType, FOldBeginDay = t3.FBeginday, FOldEndDay = t3.FEndDay, FOldPercent = t3.FPercent, 
     FOldOffSetDay = t3.FOffSetDay, FOldBackFlush = t3.FBackFlush, FOldStockID = t3.FStockID, FOLdSPID = t3.FSPID, 
     FOldSupply = t3.FSupply, FOldNote = t3.FNote 
FROM ICEcn t1 
INNER JOIN ICEcnEntry t2 ON t1.FInterID = t2.FInterID 
INNER JOIN ICBomChild t3 ON t1.FBomInterID = t3.FInterID AND t2.FChildID = t3.FEntryID 
WHERE t1.FInterID = 6