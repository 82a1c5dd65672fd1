 Set NoCount on
 Declare @NewInterId int
 if exists(SELECT FMaxNum FROM ICMaxNum WHERE FTableName='ICBOMGroup') 
     SELECT @NewInterId= FMaxNum+1 FROM ICMaxNum WHERE FTableName='ICBOMGroup'
 else 
     Select @NewInterId=1
 Declare @ParentId int
 Declare @BootId int
 Select @ParentId=0
 if @ParentId=0 
     Select @BootId=@NewInterId
 else
     SELECT @BootId=FBootID FROM IcBomGroup WHERE FInterID = @ParentId
 INSERT INTO ICBomGroup (FInterID,FNumber,FName,FParentID,FBootID) 
 VALUES (@NewInterId,'05','it's',@ParentId,@BootId)
 UPDATE ICMaxNum SET FMaxNum=@NewInterId WHERE FTableName='ICBOMGroup'
 Set NoCount Off
 Select @NewInterId as NewInterId 
