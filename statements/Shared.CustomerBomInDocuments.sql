 Select Top 1 '客户BOM批次表' as FTableName, FCustBomId as FBomInterID From IcorderBatchTrace Where FCustBomId = 3001
 union select top 1 '销售订单' as FTableName, FBomInterID From SEOrderEntry Where FBomInterID = 3001
 union select top 1 '生产任务单' as FTableName, FBomInterID From ICMO Where FBomInterID = 3001
 union select top 1 '计划订单' as FTableName, FApplicableBom As FBomInterID From t_SubsItem Where FApplicableBom = 3001
 union select top 1 '产品预测单' as FTableName, FBomInterID As FBomInterID From PPOrderEntry Where FBomInterID = 3001