 Update ICBOM Set FUseStatus = 1073, FStatus = 0, FCheckerID = null, FAudDate = null, FBeenChecked=0
 Where FInterID = 1006