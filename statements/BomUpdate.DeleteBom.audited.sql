 if not exists(select * from ICBOM Where FStatus = 1 and FCheckerID>0 and FInterID IN (1001,1002)) 
 Begin set nocount on
 DELETE FROM ICBom WHERE FInterID IN (1001,1002)
     set nocount off
     Select 1 as Succ
 End
 Else
     Select 0 as Succ
