--建立存放新BOM表体的临时表
Set NoCount On 
CREATE TABLE #Temp (
   FBrNo VarChar(10) NOT NULL, --组织机构代码(未用)
   FEntryID INT NOT NULL, --行号
   FInterID INT DEFAULT 0 NOT NULL, --BOM内码
   FItemID INT NOT NULL, --子项物料内码
   FAuxQty Decimal(28,10) DEFAULT 0 NOT NULL, --用量(常用单位)
   FQty Decimal(28,10) DEFAULT 0 NOT NULL, --用量(基本单位)
   FScrap Decimal(28,10) NOT NULL, --损耗率
   FOperID INT DEFAULT 0 NOT NULL, --工序
   FMachinePos VARCHAR(1000) NULL, --默认工位
   FNote VARCHAR(1000) NULL, --备注
   FMaterielType INT DEFAULT 371 NOT NULL, --子项类型(371为普通件)
   FMarshalType INT DEFAULT 385 NOT NULL, --配置属性(385为通用)
   FPercent Decimal(28,10) DEFAULT 100 NOT NULL, --计划百分比
   FOffSetDay Decimal(28,10) DEFAULT 0 NOT NULL, --提前期偏置
   FBackFlush INT DEFAULT 1059 NOT NULL, --是否倒冲
   FStockID INT DEFAULT 0 NULL, --发料仓库
   FSPID INT DEFAULT 0 NOT NULL, --发料仓位
   FSupply SMALLINT DEFAULT 0 NOT NULL, --来源
   FUnitID INT DEFAULT 0 NOT NULL --单位
)
CREATE TABLE #ICBomChild (
   FBrNo VarChar(10) NOT NULL, --组织机构代码(未用)
   FEntryID INT NOT NULL IDENTITY(1,1), --行号
   FInterID INT DEFAULT 0 NOT NULL, --BOM内码
   FItemID INT NOT NULL, --子项物料内码
   FAuxQty Decimal(28,10) DEFAULT 0 NOT NULL, --用量(常用单位)
   FQty Decimal(28,10) DEFAULT 0 NOT NULL, --用量(基本单位)
   FScrap Decimal(28,10) NOT NULL, --损耗率
   FOperID INT DEFAULT 0 NOT NULL, --工序
   FMachinePos VARCHAR(1000) NULL, --默认工位
   FNote VARCHAR(1000) NULL, --备注
   FMaterielType INT DEFAULT 371 NOT NULL, --子项类型(371为普通件)
   FMarshalType INT DEFAULT 385 NOT NULL, --配置属性(385为通用)
   FPercent Decimal(28,10) DEFAULT 100 NOT NULL, --计划百分比
   FOffSetDay Decimal(28,10) DEFAULT 0 NOT NULL, --提前期偏置
   FBackFlush INT DEFAULT 1059 NOT NULL, --是否倒冲
   FStockID INT DEFAULT 0 NULL, --发料仓库
   FSPID INT DEFAULT 0 NOT NULL, --发料仓位
   FSupply SMALLINT DEFAULT 0 NOT NULL, --来源
   FUnitID INT DEFAULT 0 NOT NULL --单位
)

--取变更前BOM的表体
insert into #Temp (FBrNO, FEntryId, FInterID, FItemID, FAuxQty, FQty, FScrap, FOperId, FMachinepos, FNote, FMaterielType, FMarshalType, FPercent,
   FOffSetDay, FBackFlush, FStockID, FSPID, FSupply, FUnitID)
select FBrNO, FEntryId, FInterID, FItemID, FAuxQty, FQty, FScrap, FOperId, FMachinepos, FNote, FMaterielType, FMarshalType, FPercent,
   FOffSetDay, FBackFlush, FStockID, FSPID, FSupply, FUnitID
from icbomchild where finterid=1002

--去掉变更单修改和删除的行
delete from #Temp where FEntryID in (
   select FChildID from IcEcnEntry where FInterId = 6 and  FChangeType in (11022,11023))

--加入变更单修改和新增的行
insert into #Temp (FBrNO, FEntryId, FInterID, FItemID, FAuxQty, FQty, FScrap, FOperId, FMachinepos, FNote, FMaterielType, FMarshalType, FPercent,
   FOffSetDay, FBackFlush, FStockID, FSPID, FSupply, FUnitID)
select t1.FBrNO, t1.FChildID, t2.FBomInterID, t1.FItemID, t1.FAuxQty, t1.FQty, t1.FScrap, t1.FOperId, t1.FMachinepos, t1.FNote, t1.FMaterielType, t1.FMarshalType, t1.FPercent,
   t1.FOffSetDay , t1.FBackFlush, t1.FStockID, t1.FSPID, t1.FSupply, t1.FUnitID 
from IcEcn t2 Left Join IcEcnEntry t1 on t2.FInterID=t1.FInterID where t2.FInterid=6 and t1.FChangeType <> 11023

--按行号重新编号
insert into #ICBomChild (FBrNO, FItemID, FAuxQty, FQty, FScrap, FOperId, FMachinepos, FNote, FMaterielType, FMarshalType, FPercent,
   FOffSetDay, FBackFlush, FStockID, FSPID, FSupply, FUnitID)
select FBrNO, FItemID, FAuxQty, FQty, FScrap, FOperId, FMachinepos, FNote, FMaterielType, FMarshalType, FPercent,
   FOffSetDay, FBackFlush, FStockID, FSPID, FSupply, FUnitID
from #Temp order by FEntryId
drop table #Temp 

--取新BOM的内码
DECLARE @InterID INT
SELECT @InterID = Max(FMaxNum) + 1 FROM IcMaxNum WHERE FTableName = 'ICBOM' 
update #ICBomChild set FInterID = @InterID
UPDATE IcMaxNum Set FMaxNum = @InterId Where FTableName = 'IcBom' 

--同一物料的所有BOM置为未使用
update t1 set FUseStatus=1073 from icbom t1 left join icbom t2 on t1.fitemid = t2.fitemid where t2.finterid=1002

--生成新BOM的表头，已审核、使用
insert into IcBom (FBrNO, FInterID, FBOMNumber,FStatus, FUseStatus,FVersion,FParentID,FItemID,FQty,FYield,FEnterTime,FTranType,FRoutingID,FBomType,
   FCustID,FCustItemID,FAccessories,FNote,FUnitID,FAUXQTY)
select FBrNO,@InterId,'',1,1072,FVersion,FParentID,FItemID,FQty,FYield,Convert(Varchar(10),Getdate(),120),FTranType,FRoutingID,FBomType,
   FCustID , FCustItemID, FAccessories, FNote, FUnitID, FAUXQTY
From IcBom Where FInterID = 1002

--变更单置为已启用
update t1 set FStatus = 2, FCBomInterID = @InterId, FStarUperID = 16402, FStarUpDate = Convert(Varchar(10),Getdate(),120) from IcEcn t1 where t1.FInterID=6

--按变更单填新BOM的编号
update t1 set t1.FBomNumber=t2.FCBomNumber, t1.FEcnInterId = 6 from ICBom t1, IcEcn t2 where t1.FInterID = t2.FCBomInterID and t1.FInterID=@InterID

--填新BOM的审核信息
update t1 set FCheckID=16402, FCheckDate = Convert(Varchar(10),Getdate(),120), FOperatorID=16402,FCheckerID=16402, FAudDate=Convert(Varchar(10),Getdate(),120)
from IcBom t1 where FInterId = @InterID

--写入新BOM的表体
insert into IcBomChild (FBrNO, FEntryId, FInterID, FItemID, FAuxQty, FQty, FScrap, FOperId, FMachinepos, FNote, FMaterielType, FMarshalType, FPercent,
   FOffSetDay, FBackFlush, FStockID, FSPID, FSupply, FUnitID)
select FBrNO, FEntryId, FInterID, FItemID, FAuxQty, FQty, FScrap, FOperId, FMachinepos, FNote, FMaterielType, FMarshalType, FPercent,
   FOffSetDay, FBackFlush, FStockID, FSPID, FSupply, FUnitID
from #IcBomChild
drop table #ICBomChild
