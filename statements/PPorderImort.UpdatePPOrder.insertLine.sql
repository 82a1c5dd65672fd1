INSERT INTO PPOrderEntry(FBrNo,FInterID,FEntryID,FItemID,FUnitID,FQty,FNeedDate,FNote,FAuxQty,FCommitQty,FAuxCommitQty) VALUES('',2,2,102,101,30,'2026-07-31','急 Urgent',30,0,0)
