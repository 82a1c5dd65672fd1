#include "src/ecn/CEcnInfo.h"

#include "com/ComError.h"
#include "com/ValueText.h"
#include "src/ecn/StartUpBatch.h"
#include "src/frame/BomReferences.h"
#include "src/frame/Collections.h"
#include "src/frame/Convert.h"
#include "src/frame/Globals.h"
#include "src/frame/ShortNumber.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;

constexpr int16_t kSaveRefused = 99;
constexpr int32_t kUsed = 1;
constexpr int32_t kNotUsed = 0;
constexpr int32_t kFailed = -1;

// Whether a BOM may have an item in several lines that are alike but for their validity. Null is no.
bool IsEcnRightEnabled(const std::wstring& sDsn) {
  namespace names = outside::profile;
  const Variant value =
      CreateServerObject(names::kProgId).Call(names::kGetProfile, sDsn, L"IC", L"EnableEcnRight");
  return !value.IsNull() && value.AsBool();
}

// An added line and a line of the BOM that are alike, and when each is valid.
struct DuplicateLine {
  std::wstring ecnLine;
  std::wstring bomLine;
  Variant ecnBegin;
  Variant ecnEnd;
  Variant bomBegin;
  Variant bomEnd;
};

// Both days of a period belong to it.
bool DatesOverlap(const DuplicateLine& lines) {
  return lines.bomEnd.AsDouble() >= lines.ecnBegin.AsDouble() &&
         lines.bomBegin.AsDouble() <= lines.ecnEnd.AsDouble();
}

// The first pair of an added line and a line of the BOM that are alike.
Sql DuplicateLineSql(int32_t id) {
  return Sql() << L"--set nocount on" << kCrLf
               << L"select Top 1 t2.FEntryId as FChildID, t3.FEntryID as FEntryID, " << kCrLf
               << L"t2.FBeginDay as FEcnBeginDay, t2.FEndDay as FEcnEndDay, t3.FBeginDay as FBomBeginDay, "
                  L"t3.FEndDay as FBomEndDay "
               << kCrLf << L"from IcEcn t1 " << kCrLf
               << L"left join IcEcnEntry t2 on t1.FInterID = t2.FInterID " << kCrLf
               << L"left join ICBomChild t3 on t1.FBomInterID = t3.FInterID " << kCrLf
               << L"where t1.FInterId = " << id
               << L" and t2.FChangeType = 11021 and t2.Fitemid=t3.Fitemid and t2.FOperID = t3.FOperID and "
                  L"t2.FMachinePos = t3.FMachinePos "
               << kCrLf
               << L" and t2.FMaterielType = t3.FMaterielType and t2.FMarshalType = t3.FMarshalType and "
                  L"t2.FOffSetDay = t3.FOffSetDay ";
}

std::optional<DuplicateLine> FindDuplicateLine(const Connection& conn, int32_t id) {
  const Recordset pair = conn.Execute(DuplicateLineSql(id));
  if (pair.Eof()) return std::nullopt;
  return DuplicateLine{com::ToText(pair[L"FChildID"]), com::ToText(pair[L"FEntryID"]),
                       pair[L"FEcnBeginDay"],          pair[L"FEcnEndDay"],
                       pair[L"FBomBeginDay"],          pair[L"FBomEndDay"]};
}

// The number of deleted lines (0 where the notice adds one) less the number of the BOM's lines.
Sql RemainingLinesSql(int32_t id) {
  return Sql() << L"--检查变更后ECN表体是否物料全部被删除，物料全部被删除的操作不能被容许 " << kCrLf
               << L" select (select count(*) as FECNCount  from icecnentry t1 join icecn t2 on t2.FInterID = "
                  L"t1.FInterID"
               << kCrLf
               << L" Where  t1.fchangetype=11023 and ( select count(*) from icecnentry where FInterID = "
                  L"t2.FInterID and FChangeType=11021)=0 "
               << kCrLf << L" and t2.finterid=" << id
               << L")-(select count(*) as fbomcount  from icbomchild t1  join icecn t2 on "
                  L"t1.finterid=t2.fbominterid   where t2.finterid="
               << id << L")";
}

// The planned percentages of the lines after the change, or -1 where they do not matter.
Sql PercentSumSql(int32_t id) {
  return Sql()
         << L"SET NOCOUNT ON " << kCrLf
         << L"IF EXISTS (SELECT 1 FROM ICEcn t1 INNER JOIN IcBom t2 ON t1.FBomInterID = t2.FInterId WHERE "
            L"t1.FInterID = "
         << id << L" AND t2.FBomType IN (2,4)) " << kCrLf << L"BEGIN " << kCrLf
         << L"     SELECT FSumFPercent_BOM + FSumFPercent_ECN FROM " << kCrLf
         << L"     (SELECT ISNULL(SUM(ISNULL(b1.FPercent,0)),0) AS FSumFPercent_BOM FROM ICEcn a1 INNER JOIN "
            L"ICBomChild b1 ON a1.FBomInterID = b1.FInterId "
         << kCrLf << L"     WHERE a1.FInterID = " << id << L" AND FEntryID NOT IN " << kCrLf
         << L"     (SELECT t3.FEntryId FROM ICECN t1 " << kCrLf
         << L"     INNER JOIN ICBom t2 ON t1.FBomInterID = t2.FInterID " << kCrLf
         << L"     INNER JOIN ICBomChild t3 ON t2.FInterId = t3.FInterID " << kCrLf
         << L"     INNER JOIN ICEcnEntry t4 ON t3.FEntryID = t4.FChildID AND t1.FInterID = t4.FInterID "
         << kCrLf << L"     WHERE t1.FInterID = " << id << L")) v1 " << kCrLf << L", " << kCrLf
         << L"     (SELECT ISNULL(SUM(ISNULL(t2.FPercent,0)),0) AS FSumFPercent_ECN FROM ICEcn t1 INNER JOIN "
            L"ICEcnEntry t2 ON t1.FInterId = t2.FInterID "
         << kCrLf << L"     WHERE t1.FInterId = " << id << L" AND t2.FChangeType <> 11023 ) v2 " << kCrLf
         << L"End " << kCrLf << L"ELSE " << kCrLf << L"     SELECT -1 ";
}

// Keeps the values of the BOM's lines in the lines of the notice that refer to them.
Sql SnapshotSql(int32_t id) {
  return Sql()
         << L"UPDATE t2 " << kCrLf
         << L"     SET FOldItemID = t3.FItemID, FOldQty = t3.FQty, FOldAuxQty = t3.FAuxQty, FOldUnitID = "
            L"t3.FUnitID, FOldScrap = t3.FScrap, "
         << kCrLf
         << L"     FOldOperSN = t3.FOperSN, FOldOperID = t3.FOperID, FOldMachinePos = t3.FMachinePos, "
            L"FOldMaterielType = t3.FMaterielType, "
         << kCrLf
         << L"     FOldMarshalType = t3.FMarshalType, FOldBeginDay = t3.FBeginday, FOldEndDay = t3.FEndDay, "
            L"FOldPercent = t3.FPercent, "
         << kCrLf
         << L"     FOldOffSetDay = t3.FOffSetDay, FOldBackFlush = t3.FBackFlush, FOldStockID = t3.FStockID, "
            L"FOLdSPID = t3.FSPID, "
         << kCrLf << L"     FOldSupply = t3.FSupply, FOldNote = t3.FNote " << kCrLf << L"FROM ICEcn t1 "
         << kCrLf << L"INNER JOIN ICEcnEntry t2 ON t1.FInterID = t2.FInterID " << kCrLf
         << L"INNER JOIN ICBomChild t3 ON t1.FBomInterID = t3.FInterID AND t2.FChildID = t3.FEntryID "
         << kCrLf << L"WHERE t1.FInterID = " << id;
}

// The kinds of documents that use the BOM with the number `bomNumber`, one row for each.
Sql BuildBomUsageSql(const std::wstring& bomNumber, const Texts& text) {
  return Sql() << L"Declare @InterId Int" << kCrLf
               << L" select @InterId = FInterId from IcBom where FBomNumber = '" << bomNumber << L"'" << kCrLf
               << kCrLf << L" select top 1 '" << text(L"计划订单")
               << L"' as FTableName, FBom as FBomInterID From IcMrpResult Where FBom = @InterID " << kCrLf
               << L" union select top 1 '" << text(L"生产任务单")
               << L"' as FTableName, FBomInterID From ICMO Where FType in (1054,1055) and FBomInterID = "
                  L"@InterID "
               << kCrLf << L" union select top 1 '" << text(L"重复生产任务单")
               << L"' as FTableName, FBomInterID From ICMO Where FType = 1067 and FBomInterID = @InterId "
               << kCrLf << L" union select top 1 '" << text(L"委外加工任务单")
               << L"' as FTableName, FBomInterID From ICMO Where FType = 11060 and FBomInterID = @InterId "
               << kCrLf;
}

Sql EntrySql(const std::wstring& bom, const std::wstring& filter, const Texts& text) {
  Sql query;
  query
      << L"SELECT  v1.FInterID FInterID, v1.FBomType, v1.FInterId FBomInterID, v1.FBomNumber FBomNumber, "
         L"v1.FItemID FMItemID, v1.FRoutingID, v2.FNumber FMNumber, v2.FName FMName,v2.FModel FMModel,"
      << kCrLf
      << L" ICBomChild.FEntryID FChildId, ICBomChild.FItemID FItemID, t2.FNumber, t2.FName, t2.FModel, "
         L"11022 as FChangeType, '"
      << text(L"修改") << L"' as FChangeTypeName, 'ALT' as FChangeTypeNumber,  " << kCrLf
      << L" ICBomChild.FBeginDay, ICBomChild.FEndDay, t2.FQtyDecimal, t2.FPriceDecimal, t2.FUnitGroupID, "
         L"ICBomChild.FQty, ICBomChild.FUnitID, t2.FTrack,"
      << kCrLf
      << L" t7.FNumber as FUnitNumber, t7.FName as FUnitName, ICBomChild.FAuxQty, ICBomChild.FMaterielType, "
         L"t9.FID as FMaterielTypeNumber, "
      << kCrLf
      << L" t9.FName as FMaterielTypeName, ICBomChild.FMarshalType, t10.FID as FMarshalTypeNumber, t10.FName "
         L"as FMarshalTypeName, "
      << kCrLf
      << L" ICBomChild.FPercent, ICBomChild.FScrap, ICBomChild.FOperSN,ICBomChild.FOperSN as "
         L"FOperSNNumber,ICBomChild.FOperSN as FOperSNName, ICBomChild.FOperID, t13.FID as FOperIDNumber, "
         L"t13.FName as FOperIDName, "
      << kCrLf
      << L" ICBomChild.FMachinePos, ICBomChild.FOffSetDay, ICBomChild.FBackFlush, t16.FID as "
         L"FBackFlushNumber, t16.FName as FBackFlushName, "
      << kCrLf << L" t2.FIsKeyItem as FISKeyItem, t17.FName as FUseState, " << kCrLf
      << L" t2.FDeleted as FForbitUse, ICBomChild.FStockID, t20.FNumber as FStockIDNumber, t20.FName as "
         L"FStockIDName, "
      << kCrLf
      << L" ICBomChild.FSPID, t21.FNumber as FSPIDNumber, t21.FName as FSPIDName, ICBomChild.FNote, "
         L"t2.FErpClsID as FErpClsID "
      << kCrLf
      << L"FROM ICBom v1 INNER JOIN ICBomChild ON v1.FInterID = ICBomChild.FInterID AND "
         L"ICBomChild.FInterID= "
      << bom << kCrLf << L" INNER JOIN t_ICItem t2 ON ICBomChild.FItemID = t2.FItemID " << kCrLf
      << L" INNER JOIN t_IcItem v2 ON v1.FItemid = v2.FItemId " << kCrLf
      << L" INNER JOIN t_MeasureUnit t7 ON ICBomChild.FUnitID = t7.FItemID " << kCrLf
      << L" LEFT JOIN t_SubMessage t9 ON ICBomChild.FMaterielType = t9.FInterID " << kCrLf
      << L" LEFT JOIN t_SubMessage t10 ON ICBomChild.FMarshalType = t10.FInterID " << kCrLf
      << L" LEFT JOIN t_SubMessage t13 ON ICBomChild.FOperID = t13.FInterID " << kCrLf
      << L" LEFT JOIN t_SubMessage t16 ON ICBomChild.FBackFlush = t16.FInterID " << kCrLf
      << L" INNER JOIN t_SubMessage t17 ON t2.Fusestate = t17.FInterId " << kCrLf
      << L" LEFT JOIN t_Stock t20 ON ICBomChild.FStockID = t20.FItemID " << kCrLf
      << L" LEFT JOIN t_StockPlace t21 ON ICBomChild.FSPID = t21.FSPID " << kCrLf;
  if (!filter.empty()) query << filter << kCrLf;
  return query << L" ORDER BY ICBomChild.FEntryID ";
}

} // namespace

bool CEcnInfo::BeginSave(const std::wstring& /*sDsn*/, Object& /*SaveVect*/, std::wstring& /*ReturnMsg*/) {
  return frame_.LetFailuresRise([] { return true; });
}

bool CEcnInfo::EndSave(const std::wstring& sDsn, Object& SaveVect, std::wstring& ReturnMsg) {
  const Texts text(sDsn);
  return frame_.TrapFailures(false, [&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    const Dictionary head = Vector(SaveVect).DictionaryAt(1);
    const int32_t id = head[L"FInterID"].AsLong();
    if (const std::optional<std::wstring> refusal = Refusal(sDsn, conn, id, text)) {
      ReturnMsg = *refusal;
      head.Put(L"SaveRetCode", kSaveRefused);
      return frame_.Refuse(false);
    }
    conn.Run(SnapshotSql(id));
    return true;
  });
}

std::optional<std::wstring> CEcnInfo::Refusal(const std::wstring& sDsn, const Connection& conn, int32_t id,
                                              const Texts& text) {
  if (const std::optional<DuplicateLine> duplicate = FindDuplicateLine(conn, id)) {
    if (!IsEcnRightEnabled(sDsn))
      return Join({text(L"单据体第[ "), duplicate->ecnLine, text(L" ] 行与原BOM中第[ "), duplicate->bomLine,
                   text(L" ] 物料相同，且工序,工位,子项类型,提前期偏置，配置属性相同,不能保存!")});
    if (DatesOverlap(*duplicate))
      return Join(
          {text(L"单据体第[%1]行与原BOM中第[%2]行物料的代码,工序,工位,子项类型,提前期偏置，"
                L"配置属性相同时，有效期不能重叠，请检查。",
                {duplicate->ecnLine, duplicate->bomLine}),
           kCrLf,
           text(L"单据体第[%1]行物料有效期为 [%2] 至 [%3]",
                {duplicate->ecnLine, com::ToText(duplicate->ecnBegin), com::ToText(duplicate->ecnEnd)}),
           kCrLf,
           text(L"原BOM第[%1]行物料有效期为 [%2] 至 [%3]",
                {duplicate->bomLine, com::ToText(duplicate->bomBegin), com::ToText(duplicate->bomEnd)})});
  }

  if (Equals(conn.Execute(RemainingLinesSql(id))[0], 0)) return text(L"不能删除BOM表体的所有物料!");

  constexpr int32_t kNoRule = -1;
  constexpr int32_t kWhole = 100;
  const Variant percent = conn.Execute(PercentSumSql(id))[0];
  if (!Equals(percent, kNoRule) && !Equals(percent, kWhole))
    return Join({text(L"规划类、特征类物料的BOM子项计划百分比之和必须等于100%"), text(L", 当前值为:"),
                 com::ToText(percent)});
  return std::nullopt;
}

int32_t CEcnInfo::CheckECN(const std::wstring& sDsn, int32_t /*lEcnInterID*/) {
  constexpr int32_t kNoObjection = 0;
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection();
    return kNoObjection;
  });
}

bool CEcnInfo::GetThenCheckCBomNumber(const std::wstring& sDsn, const std::wstring& BomNumber) {
  return frame_.AbortOnFailure([&] {
    const Recordset bom =
        Execute(sDsn, Sql() << L"select FInterId from IcBom where FBomNumber = '" << BomNumber << L"'");
    return !bom.Eof();
  });
}

bool CEcnInfo::GetCheckCBomNoChecked(const std::wstring& sDsn, int32_t BomInterId) {
  return frame_.AbortOnFailure([&] {
    const Recordset bom =
        Execute(sDsn, Sql() << L"select FInterId from IcBom where FStatus=0 AND FInterId = " << BomInterId);
    return bom && !bom.Bof() && !bom.Eof();
  });
}

int32_t CEcnInfo::ReturnEcnStatus(const std::wstring& sDsn, int32_t EcnInterId) {
  return Status(sDsn, Sql() << L"select FStatus from IcEcn where FInterId = " << EcnInterId);
}

int32_t CEcnInfo::ReturnEcnStatusByNumber(const std::wstring& sDsn, const std::wstring& EcnNumber) {
  return Status(sDsn, Sql() << L"select FStatus from IcEcn where FBillNo = '" << EcnNumber << L"'");
}

int32_t CEcnInfo::Status(const std::wstring& sDsn, const Sql& query) {
  constexpr int32_t kNone = -1;
  return frame_.AbortOnFailure([&] {
    // Without a row there is no field to read: that is the caller's error.
    const Variant status = Execute(sDsn, query)[L"FStatus"];
    return status.IsNull() ? kNone : status.AsLong();
  });
}

int32_t CEcnInfo::CheckBomUsed(const std::wstring& sDsn, int32_t EcnInterId, const std::wstring& BomNumber,
                               std::wstring& strInfo) {
  const Texts text(sDsn);
  const auto failed = [&](const std::exception& failure) {
    if (const auto* comError = dynamic_cast<const com::ComError*>(&failure))
      strInfo += comError->description();
    return kFailed;
  };
  return frame_.NeverRaise(failed, [&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    {
      const Recordset later =
          conn.Execute(Sql() << L"SELECT t2.FBillNO FROM IcEcn t1 INNER JOIN IcEcn t2 ON t1.FCBomInterID = "
                                L"t2.FBomInterID WHERE t1.FInterID = "
                             << EcnInterId);
      strInfo.clear();
      if (!later) {
        strInfo = text(L"检查BOM是否被引用时出现错误，请检查参数是否正确。");
        return frame_.Refuse(kFailed);
      }
      if (!later.Eof()) {
        std::wstring numbers;
        for (; !later.Eof(); later.MoveNext())
          numbers += Join({L"[ ", com::ToText(later[L"FBillNO"]), L" ]", kCrLf});
        strInfo = Join(
            {text(L"该张工程变更单生成的BOM已经被变更单:"), kCrLf, numbers, text(L"引用，不能反启用。")});
        return frame_.Refuse(kFailed);
      }
    }
    const ClientRecordset uses(conn);
    uses.Open(BuildBomUsageSql(BomNumber, text));
    if (!uses.IsOpen()) return frame_.Refuse(kFailed);
    if (uses.RecordCount() < 1) return kNotUsed;
    AppendReferences(uses, text, strInfo, L"该BOM在 ");
    return kUsed;
  });
}

int32_t CEcnInfo::CheckEcnBom(const std::wstring& sDsn, int32_t FBomInterID) {
  return frame_.AbortOnFailure([&] {
    return Execute(sDsn, Sql() << L"select count(*) as FRelateCount from icecn where FBomInterId = "
                               << FBomInterID << L" or FCbomInterId = " << FBomInterID)[L"FRelateCount"]
        .AsLong();
  });
}

bool CEcnInfo::StarUpEcn(const std::wstring& sDsn, int32_t BomInterId, int32_t EcnInterId, int32_t UserID) {
  return RunBatch(sDsn, BuildEcnTempTablesSql() << BuildStartUpSql(BomInterId, EcnInterId, UserID));
}

bool CEcnInfo::UnStarUpEcn(const std::wstring& sDsn, int32_t EcnInterId) {
  return RunBatch(sDsn, Sql() << L"delete from IcBom where FInterId in (select FCBomInterId from IcEcn where "
                                 L"FInterId = "
                              << EcnInterId << L")" << kCrLf << kCrLf
                              << L"update t1 set FStatus = 1, FCBomInterID = 0, FStarUperID = '', "
                                 L"FStarUpDate = NULL from IcEcn t1 where FInterId = "
                              << EcnInterId);
}

bool CEcnInfo::RunBatch(const std::wstring& sDsn, const Sql& batch) {
  return frame_.TrapFailures(false, [&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection().Run(batch);
    return true;
  });
}

Object CEcnInfo::GetEcnBomHead(const std::wstring& sDsn, const std::wstring& lBomInterID) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    const wchar_t* number = IsUseShortNumber(conn) ? L" v2.FShortNumber FMNumber " : L" v2.FNumber FMNumber ";
    return OpenDetached(conn, Sql() << L"SELECT  v1.FInterID FInterID, v1.FBomType, v1.FInterId FBomInterID, "
                                       L"v1.FBomNumber FBomNumber, v1.FItemID FMItemID, "
                                    << L" v1.FRoutingID, " << number
                                    << L", v2.FName FMName,v2.FModel FMModel, v2.FFixLeadTime ,v2.FErpClsID "
                                       L"FMErpClsID , v3.FName FMErpClsName "
                                    << L" FROM ICBom v1 inner join t_IcItem v2 on v1.FItemid=v2.FItemId"
                                    << L" left join t_SubMessage v3 on v2.FErpClsID=v3.FInterID  "
                                    << L" WHERE  v1.FInterID= " << lBomInterID)
        .object();
  });
}

Object CEcnInfo::GetEcnBomEntry(const std::wstring& sDsn, const std::wstring& lBomInterID,
                                const std::wstring& FilterEntryID) {
  const Texts text(sDsn);
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    return OpenDetached(conn, EntrySql(lBomInterID, FilterEntryID, text)).object();
  });
}

Object CEcnInfo::AnalyseBomNumber(const std::wstring& sDsn, const std::wstring& SQL) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    return OpenDetached(frame_.GetConnection(), Sql() << SQL).object();
  });
}

Recordset CEcnInfo::Execute(const std::wstring& sDsn, const Sql& statement) {
  frame_.OpenDataContext(sDsn);
  return frame_.GetConnection().Execute(statement);
}

} // namespace mbom
