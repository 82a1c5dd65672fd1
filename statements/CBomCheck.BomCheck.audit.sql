 Update ICBOM Set FStatus = 1, FCheckerID = 16402, FAudDate = Convert(Varchar(10),Getdate(),120), FBeenChecked = 1 
 Where FInterID = 1005