#include "src/ecn/EcnChecks.h"

namespace mbom {

Sql DuplicateLineSql(int32_t id) {
  return Sql() << L"--set nocount on\r\n"
                  L"select Top 1 t2.FEntryId as FChildID, t3.FEntryID as FEntryID, \r\n"
                  L"t2.FBeginDay as FEcnBeginDay, t2.FEndDay as FEcnEndDay, t3.FBeginDay as FBomBeginDay, "
                  L"t3.FEndDay as FBomEndDay \r\n"
                  L"from IcEcn t1 \r\n"
                  L"left join IcEcnEntry t2 on t1.FInterID = t2.FInterID \r\n"
                  L"left join ICBomChild t3 on t1.FBomInterID = t3.FInterID \r\n"
                  L"where t1.FInterId = "
               << id
               << L" and t2.FChangeType = 11021 and t2.Fitemid=t3.Fitemid and t2.FOperID = t3.FOperID "
                  L"and t2.FMachinePos = t3.FMachinePos \r\n"
                  L" and t2.FMaterielType = t3.FMaterielType and t2.FMarshalType = t3.FMarshalType "
                  L"and t2.FOffSetDay = t3.FOffSetDay ";
}

Sql RemainingLinesSql(int32_t id) {
  return Sql() << L"--检查变更后ECN表体是否物料全部被删除，物料全部被删除的操作不能被容许 \r\n"
                  L" select (select count(*) as FECNCount  from icecnentry t1 join icecn t2 "
                  L"on t2.FInterID = t1.FInterID\r\n"
                  L" Where  t1.fchangetype=11023 and ( select count(*) from icecnentry "
                  L"where FInterID = t2.FInterID and FChangeType=11021)=0 \r\n"
                  L" and t2.finterid="
               << id
               << L")-(select count(*) as fbomcount  from icbomchild t1  join icecn t2 "
                  L"on t1.finterid=t2.fbominterid   where t2.finterid="
               << id << L")";
}

Sql PercentSumSql(int32_t id) {
  return Sql()
         << L"SET NOCOUNT ON \r\n"
            L"IF EXISTS (SELECT 1 FROM ICEcn t1 INNER JOIN IcBom t2 ON t1.FBomInterID = t2.FInterId "
            L"WHERE t1.FInterID = "
         << id
         << L" AND t2.FBomType IN (2,4)) \r\n"
            L"BEGIN \r\n"
            L"     SELECT FSumFPercent_BOM + FSumFPercent_ECN FROM \r\n"
            L"     (SELECT ISNULL(SUM(ISNULL(b1.FPercent,0)),0) AS FSumFPercent_BOM FROM ICEcn a1 "
            L"INNER JOIN ICBomChild b1 ON a1.FBomInterID = b1.FInterId \r\n"
            L"     WHERE a1.FInterID = "
         << id
         << L" AND FEntryID NOT IN \r\n"
            L"     (SELECT t3.FEntryId FROM ICECN t1 \r\n"
            L"     INNER JOIN ICBom t2 ON t1.FBomInterID = t2.FInterID \r\n"
            L"     INNER JOIN ICBomChild t3 ON t2.FInterId = t3.FInterID \r\n"
            L"     INNER JOIN ICEcnEntry t4 ON t3.FEntryID = t4.FChildID AND t1.FInterID = t4.FInterID \r\n"
            L"     WHERE t1.FInterID = "
         << id
         << L")) v1 \r\n"
            L", \r\n"
            L"     (SELECT ISNULL(SUM(ISNULL(t2.FPercent,0)),0) AS FSumFPercent_ECN FROM ICEcn t1 "
            L"INNER JOIN ICEcnEntry t2 ON t1.FInterId = t2.FInterID \r\n"
            L"     WHERE t1.FInterId = "
         << id
         << L" AND t2.FChangeType <> 11023 ) v2 \r\n"
            L"End \r\n"
            L"ELSE \r\n"
            L"     SELECT -1 ";
}

Sql SnapshotSql(int32_t id) {
  return Sql()
         << L"UPDATE t2 \r\n"
            L"     SET FOldItemID = t3.FItemID, FOldQty = t3.FQty, FOldAuxQty = t3.FAuxQty, "
            L"FOldUnitID = t3.FUnitID, FOldScrap = t3.FScrap, \r\n"
            L"     FOldOperSN = t3.FOperSN, FOldOperID = t3.FOperID, FOldMachinePos = t3.FMachinePos, "
            L"FOldMaterielType = t3.FMaterielType, \r\n"
            L"     FOldMarshalType = t3.FMarshalType, FOldBeginDay = t3.FBeginday, "
            L"FOldEndDay = t3.FEndDay, FOldPercent = t3.FPercent, \r\n"
            L"     FOldOffSetDay = t3.FOffSetDay, FOldBackFlush = t3.FBackFlush, "
            L"FOldStockID = t3.FStockID, FOLdSPID = t3.FSPID, \r\n"
            L"     FOldSupply = t3.FSupply, FOldNote = t3.FNote \r\n"
            L"FROM ICEcn t1 \r\n"
            L"INNER JOIN ICEcnEntry t2 ON t1.FInterID = t2.FInterID \r\n"
            L"INNER JOIN ICBomChild t3 ON t1.FBomInterID = t3.FInterID AND t2.FChildID = t3.FEntryID \r\n"
            L"WHERE t1.FInterID = "
         << id;
}

} // namespace mbom
