--set nocount on
select Top 1 t2.FEntryId as FChildID, t3.FEntryID as FEntryID, 
t2.FBeginDay as FEcnBeginDay, t2.FEndDay as FEcnEndDay, t3.FBeginDay as FBomBeginDay, t3.FEndDay as FBomEndDay 
from IcEcn t1 
left join IcEcnEntry t2 on t1.FInterID = t2.FInterID 
left join ICBomChild t3 on t1.FBomInterID = t3.FInterID 
where t1.FInterId = 6 and t2.FChangeType = 11021 and t2.Fitemid=t3.Fitemid and t2.FOperID = t3.FOperID and t2.FMachinePos = t3.FMachinePos 
 and t2.FMaterielType = t3.FMaterielType and t2.FMarshalType = t3.FMarshalType and t2.FOffSetDay = t3.FOffSetDay 