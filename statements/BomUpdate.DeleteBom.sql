 if not exists(select * from ICBOM Where FStatus = 1 and FCheckerID>0 and FInterID=1001) 
 Begin set nocount on
 DELETE FROM ICBom WHERE FInterID=1001
     set nocount off
     Select 1 as Succ
 End
 Else
     Select 0 as Succ
