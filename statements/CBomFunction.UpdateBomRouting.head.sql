update icbom set froutingid=0 ,FOperatorID=16403 ,FEnterTime=Convert(Varchar(10),Getdate(),120) where finterid=1009
update icbomchild set FOperID=0 where finterid=1009