update icbom set FOperatorID=16403, FEnterTime=Convert(Varchar(10),Getdate(),120) where finterid=1004
update icbomchild set FOperID=0 where finterid=1004 And FItemID =401