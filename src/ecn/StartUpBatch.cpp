#include "src/ecn/StartUpBatch.h"

namespace mbom {
namespace {

// The columns of the lines from the quantities on, as every insert of the batch lists them. What is not
// listed here or as a key (FOperSN, FBeginDay, FEndDay and others) does not go into the new BOM.
constexpr wchar_t kValues[] =
    L"FAuxQty, FQty, FScrap, FOperId, FMachinepos, FNote, FMaterielType, FMarshalType, "
    L"FPercent,\r\n   FOffSetDay, FBackFlush, FStockID, FSPID, FSupply, FUnitID";
constexpr wchar_t kKeys[] = L"FBrNO, FEntryId, FInterID, FItemID, ";

// The columns of a temporary table of lines, but for its line number.
constexpr wchar_t kColumnsBeforeEntryId[] = L"   FBrNo VarChar(10) NOT NULL, --组织机构代码(未用)\r\n";
constexpr wchar_t kColumnsAfterEntryId[] =
    L"   FInterID INT DEFAULT 0 NOT NULL, --BOM内码\r\n   FItemID INT NOT NULL, "
    L"--子项物料内码\r\n   FAuxQty Decimal(28,10) DEFAULT 0 NOT NULL, "
    L"--用量(常用单位)\r\n   FQty Decimal(28,10) DEFAULT 0 NOT NULL, "
    L"--用量(基本单位)\r\n   FScrap Decimal(28,10) NOT NULL, "
    L"--损耗率\r\n   FOperID INT DEFAULT 0 NOT NULL, "
    L"--工序\r\n   FMachinePos VARCHAR(1000) NULL, --默认工位\r\n   FNote VARCHAR(1000) NULL, "
    L"--备注\r\n   FMaterielType INT DEFAULT 371 NOT NULL, "
    L"--子项类型(371为普通件)\r\n   FMarshalType INT DEFAULT 385 NOT NULL, "
    L"--配置属性(385为通用)\r\n   FPercent Decimal(28,10) DEFAULT 100 NOT NULL, "
    L"--计划百分比\r\n   FOffSetDay Decimal(28,10) DEFAULT 0 NOT NULL, "
    L"--提前期偏置\r\n   FBackFlush INT DEFAULT 1059 NOT NULL, "
    L"--是否倒冲\r\n   FStockID INT DEFAULT 0 NULL, "
    L"--发料仓库\r\n   FSPID INT DEFAULT 0 NOT NULL, "
    L"--发料仓位\r\n   FSupply SMALLINT DEFAULT 0 NOT NULL, "
    L"--来源\r\n   FUnitID INT DEFAULT 0 NOT NULL --单位\r\n";

Sql CreateLineTable(const wchar_t* name, const wchar_t* entryId) {
  return Sql() << L"CREATE TABLE " << name << L" (\r\n"
               << kColumnsBeforeEntryId << L"   FEntryID " << entryId << L", --行号\r\n"
               << kColumnsAfterEntryId << L")\r\n";
}

} // namespace

Sql BuildEcnTempTablesSql() {
  return Sql() << L"--建立存放新BOM表体的临时表\r\n"
                  L"Set NoCount On \r\n"
               << CreateLineTable(L"#Temp", L"INT NOT NULL")
               << CreateLineTable(L"#ICBomChild", L"INT NOT NULL IDENTITY(1,1)") << L"\r\n";
}

Sql BuildStartUpSql(int32_t bom, int32_t ecn, int32_t user) {
  Sql batch;
  batch << L"--取变更前BOM的表体\r\n"
           L"insert into #Temp ("
        << kKeys << kValues
        << L")\r\n"
           L"select "
        << kKeys << kValues
        << L"\r\n"
           L"from icbomchild where finterid="
        << bom << L"\r\n\r\n";

  batch << L"--去掉变更单修改和删除的行\r\n"
           L"delete from #Temp where FEntryID in (\r\n"
           L"   select FChildID from IcEcnEntry where FInterId = "
        << ecn << L" and  FChangeType in (11022,11023))\r\n\r\n";

  // A line's FChildID becomes its line number: an altered line takes the place of the one it replaces, an
  // added one (0) comes first.
  batch << L"--加入变更单修改和新增的行\r\n"
           L"insert into #Temp ("
        << kKeys << kValues
        << L")\r\n"
           L"select t1.FBrNO, t1.FChildID, t2.FBomInterID, t1.FItemID, t1.FAuxQty, t1.FQty, "
           L"t1.FScrap, t1.FOperId, t1.FMachinepos, t1.FNote, t1.FMaterielType, t1.FMarshalType, "
           L"t1.FPercent,\r\n"
           L"   t1.FOffSetDay , t1.FBackFlush, t1.FStockID, t1.FSPID, t1.FSupply, t1.FUnitID \r\n"
           L"from IcEcn t2 Left Join IcEcnEntry t1 on t2.FInterID=t1.FInterID where t2.FInterid="
        << ecn << L" and t1.FChangeType <> 11023\r\n\r\n";

  batch << L"--按行号重新编号\r\n"
           L"insert into #ICBomChild (FBrNO, FItemID, "
        << kValues
        << L")\r\n"
           L"select FBrNO, FItemID, "
        << kValues
        << L"\r\n"
           L"from #Temp order by FEntryId\r\n"
           L"drop table #Temp \r\n\r\n";

  batch << L"--取新BOM的内码\r\n"
           L"DECLARE @InterID INT\r\n"
           L"SELECT @InterID = Max(FMaxNum) + 1 FROM IcMaxNum WHERE FTableName = 'ICBOM' \r\n"
           L"update #ICBomChild set FInterID = @InterID\r\n"
           L"UPDATE IcMaxNum Set FMaxNum = @InterId Where FTableName = 'IcBom' \r\n\r\n";

  batch << L"--同一物料的所有BOM置为未使用\r\n"
           L"update t1 set FUseStatus=1073 from icbom t1 left join icbom t2 "
           L"on t1.fitemid = t2.fitemid where t2.finterid="
        << bom << L"\r\n\r\n";

  batch << L"--生成新BOM的表头，已审核、使用\r\n"
           L"insert into IcBom (FBrNO, FInterID, FBOMNumber,FStatus, FUseStatus,FVersion,FParentID,"
           L"FItemID,FQty,FYield,FEnterTime,FTranType,FRoutingID,FBomType,\r\n"
           L"   FCustID,FCustItemID,FAccessories,FNote,FUnitID,FAUXQTY)\r\n"
           L"select FBrNO,@InterId,'',1,1072,FVersion,FParentID,FItemID,FQty,FYield,"
           L"Convert(Varchar(10),Getdate(),120),FTranType,FRoutingID,FBomType,\r\n"
           L"   FCustID , FCustItemID, FAccessories, FNote, FUnitID, FAUXQTY\r\n"
           L"From IcBom Where FInterID = "
        << bom << L"\r\n\r\n";

  batch << L"--变更单置为已启用\r\n"
           L"update t1 set FStatus = 2, FCBomInterID = @InterId, FStarUperID = "
        << user << L", FStarUpDate = Convert(Varchar(10),Getdate(),120) from IcEcn t1 where t1.FInterID="
        << ecn << L"\r\n\r\n";

  batch << L"--按变更单填新BOM的编号\r\n"
           L"update t1 set t1.FBomNumber=t2.FCBomNumber, t1.FEcnInterId = "
        << ecn
        << L" from ICBom t1, IcEcn t2 where t1.FInterID = t2.FCBomInterID and t1.FInterID=@InterID\r\n\r\n";

  batch << L"--填新BOM的审核信息\r\n"
           L"update t1 set FCheckID="
        << user << L", FCheckDate = Convert(Varchar(10),Getdate(),120), FOperatorID=" << user
        << L",FCheckerID=" << user
        << L", FAudDate=Convert(Varchar(10),Getdate(),120)\r\n"
           L"from IcBom t1 where FInterId = @InterID\r\n\r\n";

  batch << L"--写入新BOM的表体\r\n"
           L"insert into IcBomChild ("
        << kKeys << kValues
        << L")\r\n"
           L"select "
        << kKeys << kValues
        << L"\r\n"
           L"from #IcBomChild\r\n"
           L"drop table #ICBomChild\r\n";
  return batch;
}

} // namespace mbom
