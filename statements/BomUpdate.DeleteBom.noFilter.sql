 if not exists(select * from ICBOM Where FStatus = 1 and FCheckerID>0 and ) 
 Begin set nocount on
 DELETE FROM ICBom
     set nocount off
     Select 1 as Succ
 End
 Else
     Select 0 as Succ
