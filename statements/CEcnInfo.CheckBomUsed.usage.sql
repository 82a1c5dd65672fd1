Declare @InterId Int
 select @InterId = FInterId from IcBom where FBomNumber = 'BOM000008'

 select top 1 '计划订单' as FTableName, FBom as FBomInterID From IcMrpResult Where FBom = @InterID 
 union select top 1 '生产任务单' as FTableName, FBomInterID From ICMO Where FType in (1054,1055) and FBomInterID = @InterID 
 union select top 1 '重复生产任务单' as FTableName, FBomInterID From ICMO Where FType = 1067 and FBomInterID = @InterId 
 union select top 1 '委外加工任务单' as FTableName, FBomInterID From ICMO Where FType = 11060 and FBomInterID = @InterId 
