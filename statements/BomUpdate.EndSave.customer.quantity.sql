 Update t1 set t1.FQty=cast(t1.FAuxQty as float) * (cast(isnull(t3.FCoefficient,1) as float) + cast(isnull(t3.FScale,0) as float))
 from ICCustBOMChild  t1,t_MeasureUnit t3
 Where t3.FItemID = t1.FUnitID and t1.FInterID=3001