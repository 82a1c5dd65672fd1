UPDATE IcTableFieldInfo SET FVisible = '0' 
WHERE FCtlID IN ('BOM', 'OneGradeBOMQuery', 'MutiGradeBOMQuery', 'OneGradeBOMQueryRev', 'MutiGradeBOMQueryRev', 'BomTreeQuery') 
AND FLdgNum = 1 AND FName IN ('FBeginDay', 'FEndDay') 