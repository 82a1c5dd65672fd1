 select top 1 '成本对象表' as FTableName, FBomID as FBomInterID From cbCostObj Where FBomID = 1002
 union select top 1 '销售订单' as FTableName, FBomInterID From SEOrderEntry Where FBomInterID = 1002
