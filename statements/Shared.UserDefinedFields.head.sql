SELECT t1.FFieldName FROM ICTemplate t1 INNER JOIN ICTransactionType t2 ON 
t1.FID=t2.FTemplateID WHERE t2.FID=50 AND t1.FDefaultCtl=0 