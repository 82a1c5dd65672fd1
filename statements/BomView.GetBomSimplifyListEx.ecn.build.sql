SET NOCOUNT ON
DECLARE @Level INT
SELECT @Level=1
CREATE TABLE ##BomItemID(FInterID INT NOT NULL,FItemID INT NOT NULL,FLevel INT NOT NULL,FParentID INT  NULL)
INSERT INTO ##BomItemID(FParentID,FInterID,FItemID,FLevel)
SELECT t1.FParentID, t1.FInterID, t1.FItemID, @Level FROM ICBOM t1 Left Join t_IcItem t2 On t1.FItemID = t2.FItemID  WHERE t1.FStatus=1
 and t1.FParentID is not  null WHILE EXISTS(SELECT * FROM ICBOMGroup INNER JOIN ##BomItemID ON ICBOMGroup.FInterID =##BomItemID.FParentID WHERE ##BomItemID.FLevel=@Level AND ##BomItemID.FParentID<>0)
BEGIN
INSERT INTO ##BomItemID(FParentID,FInterID,FItemID,FLevel)
SELECT ICBOMGroup.FParentID,ICBOMGroup.FInterID,0,@Level+1 FROM ICBOMGroup INNER JOIN ##BomItemID ON ICBOMGroup.FInterID =##BomItemID.FParentID WHERE ##BomItemID.FLevel=@Level AND ##BomItemID.FParentID<>0
SELECT @Level=@Level+1
End 
SET NOCOUNT OFF