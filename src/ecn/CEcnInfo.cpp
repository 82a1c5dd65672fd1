#include "src/ecn/CEcnInfo.h"

#include "com/ComError.h"
#include "com/ValueText.h"
#include "src/domain/BomReferences.h"
#include "src/domain/ShortNumber.h"
#include "src/ecn/EcnChecks.h"
#include "src/ecn/EcnQueries.h"
#include "src/ecn/StartUpBatch.h"
#include "src/frame/Collections.h"
#include "src/frame/Convert.h"
#include "src/frame/Join.h"
#include "src/frame/ado/ClientRecordset.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/ado/Recordset.h"
#include "src/frame/globals/ServerObject.h"
#include "src/frame/globals/Texts.h"

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

std::optional<DuplicateLine> FindDuplicateLine(const Connection& conn, int32_t id) {
  const Recordset pair = conn.Execute(DuplicateLineSql(id));
  if (pair.Eof()) return std::nullopt;
  return DuplicateLine{com::ToText(pair[L"FChildID"]), com::ToText(pair[L"FEntryID"]),
                       pair[L"FEcnBeginDay"],          pair[L"FEcnEndDay"],
                       pair[L"FBomBeginDay"],          pair[L"FBomEndDay"]};
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
          {text(L"单据体第[%1]行与原BOM中第[%2]行物料的代码,工序,工位,子项类型,"
                L"提前期偏置，配置属性相同时，有效期不能重叠，请检查。",
                {duplicate->ecnLine, duplicate->bomLine}),
           L"\r\n",
           text(L"单据体第[%1]行物料有效期为 [%2] 至 [%3]",
                {duplicate->ecnLine, com::ToText(duplicate->ecnBegin), com::ToText(duplicate->ecnEnd)}),
           L"\r\n",
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
    { // The recordset is let go before the next statement.
      const Recordset later = conn.Execute(
          Sql() << L"SELECT t2.FBillNO FROM IcEcn t1 INNER JOIN IcEcn t2 ON t1.FCBomInterID = t2.FBomInterID "
                   L"WHERE t1.FInterID = "
                << EcnInterId);
      strInfo.clear();
      if (!later) {
        strInfo = text(L"检查BOM是否被引用时出现错误，请检查参数是否正确。");
        return frame_.Refuse(kFailed);
      }
      if (!later.Eof()) {
        std::wstring numbers;
        for (; !later.Eof(); later.MoveNext())
          numbers += Join({L"[ ", com::ToText(later[L"FBillNO"]), L" ]", L"\r\n"});
        strInfo = Join(
            {text(L"该张工程变更单生成的BOM已经被变更单:"), L"\r\n", numbers, text(L"引用，不能反启用。")});
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
  return RunBatch(
      sDsn, Sql() << L"delete from IcBom where FInterId in (select FCBomInterId from IcEcn where FInterId = "
                  << EcnInterId
                  << L")\r\n\r\n"
                     L"update t1 set FStatus = 1, FCBomInterID = 0, FStarUperID = '', "
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
    return OpenDetached(conn, HeadQuery(lBomInterID, IsUseShortNumber(conn))).object();
  });
}

Object CEcnInfo::GetEcnBomEntry(const std::wstring& sDsn, const std::wstring& lBomInterID,
                                const std::wstring& FilterEntryID) {
  const Texts text(sDsn);
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    return OpenDetached(conn, EntriesQuery(lBomInterID, FilterEntryID, text)).object();
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
