#include "src/bom/BomInfo.h"

#include "src/frame/ado/ClientRecordset.h"
#include "src/frame/ado/Recordset.h"

namespace mbom {
namespace {

using com::Object;

constexpr wchar_t kUseStatusText[] =
    L"case a.FUseStatus when 1072 then '使用' else '未使用' end as FUseStatus";

// The columns and joins of the queries for BOMs.
constexpr wchar_t kBomColumns[] =
    L", b.FNumber as FItemNumber, a.FUnitID, a.FBomNumber, a.FInterID, a.FAuxQty, a.FFee, "
    L"a.FAuxPropID, b.FItemID, b.FName, b.FNumber, c.FModel, d.FName as FUnitName, "
    L"e.FName as AuxName, a.FNote from icBom a";
constexpr wchar_t kItem[] = L" inner join t_Item b on a.FItemID = b.FItemID and b.FItemClassID = 4  ";
constexpr wchar_t kMaterial[] = L" inner join t_ICItem c on b.FItemID = c.FItemID ";
constexpr wchar_t kUnit[] = L" left join t_MeasureUnit d on a.FUnitID = d.FMeasureUnitID ";
constexpr wchar_t kAuxItem[] = L" left join t_AuxItem e on a.FAuxPropID = e.FItemID ";

// The columns and joins of the queries for the lines of a BOM.
constexpr wchar_t kChildColumns[] =
    L"select e.FUnitID, e.FAuxPropID, a.FinterID, h.FUnitGroupID, h.FMeasureUnitID, "
    L"h.FCoefficient, e.FAuxQty, e.FScrap, f.FItemID, f.FNumber, f.FName, g.FModel, "
    L"h.FName as FUnitName, j.FName as AuxName, e.FNote from icBom a";
constexpr wchar_t kChildJoins[] = L" inner join t_ICItem c on b.FItemID = c.FItemID "
                                  L" left join t_MeasureUnit d on a.FUnitID = d.FMeasureUnitID "
                                  L" inner join icBomChild e on a.FInterID = e.FInterID "
                                  L" inner join t_Item f on e.FItemID = f.FItemID and f.FItemClassID = 4 "
                                  L" inner join t_ICItem g on f.FItemID = g.FItemID "
                                  L" left join t_MeasureUnit h on e.FUnitID = h.FMeasureUnitID "
                                  L" left join t_AuxItem j on e.FAuxPropID = j.FItemID ";

Sql SelectAll(const std::wstring& table, const std::wstring& sFilter, const std::wstring& sOrder) {
  Sql query;
  query << L"SELECT * FROM " << table;
  if (!sFilter.empty()) query << L" WHERE " << sFilter;
  if (!sOrder.empty()) query << L" ORDER BY " << sOrder;
  return query;
}

} // namespace

Object BomInfo::OpenDetached(const std::wstring& sDsn, const Sql& query) {
  return frame_.LetFailuresRise([&] {
    frame_.OpenDataContext(sDsn);
    return mbom::OpenDetached(frame_.GetConnection(), query).object();
  });
}

Object BomInfo::Select(const std::wstring& sDsn, const Sql& query) {
  return frame_.TrapFailures(Object(), [&] {
    frame_.OpenDataContext(sDsn);
    return frame_.GetConnection().Execute(query).object();
  });
}

Object BomInfo::GetBomInfo(const std::wstring& sDsn, const std::wstring& sFilter, const std::wstring& sOrder,
                           const std::wstring& sTableName) {
  return OpenDetached(sDsn, SelectAll(sTableName.empty() ? L"ICBOM" : sTableName, sFilter, sOrder));
}

Object BomInfo::GetBomEntryInfo(const std::wstring& sDsn, const std::wstring& sFilter,
                                const std::wstring& sOrder) {
  return OpenDetached(sDsn, SelectAll(L"ICBomChild", sFilter, sOrder));
}

Object BomInfo::GetBomGroupInfo(const std::wstring& sDsn, const std::wstring& sFilter,
                                const std::wstring& sOrder) {
  return OpenDetached(sDsn, SelectAll(L"ICBomGroup", sFilter, sOrder));
}

Object BomInfo::GetInfo(const std::wstring& sDsn, std::wstring& strSql) {
  return OpenDetached(sDsn, Sql() << strSql);
}

int32_t BomInfo::GetItemForbitNumber(const std::wstring& sDsn, int32_t BomInterId) {
  return frame_.LetFailuresRise([&] {
    frame_.OpenDataContext(sDsn);
    const Recordset sums = frame_.GetConnection().Execute(
        Sql() << L"select t2.FInterId, isnull(sum(t3.FDeleted),0) as HSum, isnull(sum(t4.Fdeleted) ,"
                 L"0) as ESum from IcBom t1 left join IcBomChild t2 on t1.FInterId = t2.FInterId "
                 L"left join t_IcItem t3 on t1.FItemId=t3.FItemID left join t_IcItem t4 "
                 L"on t2.FItemId=t4.FItemId where t1.FInterID = "
              << BomInterId << L"group by t2.FinterId");
    return com::Variant(sums[L"HSUm"].AsDouble() + sums[L"ESum"].AsDouble()).AsLong();
  });
}

Object BomInfo::GetBomInfoByItemNumber(const std::wstring& sDsn, const std::wstring& sItemNumber) {
  return Select(sDsn, Sql() << L"select " << kUseStatusText << kBomColumns << kItem
                            << L" inner join t_ICItem c on b.FItemID = c.FItemID and (b.FNumber = '"
                            << sItemNumber << L"' or b.FName = '" << sItemNumber << L"' or c.FHelpCode = '"
                            << sItemNumber << L"' )" << kUnit << kAuxItem);
}

Object BomInfo::GetBomInfoByBomNumber(const std::wstring& sDsn, const std::wstring& sBomNumber) {
  return Select(sDsn, Sql() << L"select " << kUseStatusText << kBomColumns << kItem << kMaterial << kUnit
                            << kAuxItem << L" Where a.FBomNumber =  '" << sBomNumber << L"'");
}

Object BomInfo::GetBomInfoByItemNumber1(const std::wstring& sDsn, const std::wstring& sItemNumber) {
  return Select(sDsn, Sql() << L"select t1.FName, x2.FModel, d.FName as FUnitName from t_Item t1"
                            << L" left join t_ICItem x2 ON t1.FItemID = x2.FItemID "
                            << L" left join t_MeasureUnit d on x2.FUnitID = d.FMeasureUnitID "
                            << L" Where t1.FItemClassID = 4 " << L" AND t1.FDetail=1 "
                            << L" AND (x2.FErpClsID IN (2,6,9)) " << L" AND (t1.FNumber = '" << sItemNumber
                            << L"' or t1.FName = '" << sItemNumber << L"' or x2.FHelpCode = '" << sItemNumber
                            << L"' ) " << L" AND t1.FDeleteD=0  ORDER BY t1.FNumber ");
}

Object BomInfo::SelectBomInfoByItemNumber(const std::wstring& sDsn, const std::wstring& sItemNumber) {
  return Select(sDsn,
                Sql() << L"select a.FUnitID, d.FUnitGroupID, d.FMeasureUnitID, d.FCoefficient, a.FInterID, "
                         L"a.FAuxQty, a.FFee, b.FItemID, b.FName, b.FNumber, c.FModel, d.FName as FUnitName, "
                         L"e.FName as AuxName, a.FNote from icBom a"
                      << kItem << L" inner join t_ICItem c on b.FItemID = c.FItemID and b.FItemID = "
                      << sItemNumber << kUnit << kAuxItem << L" Where a.FUseStatus = 1072 ");
}

Object BomInfo::GetBomInfoLikeInfo(const std::wstring& sDsn, const std::wstring& sValue) {
  return Select(sDsn, Sql() << L"select t1.FName, t1.FNumber, x2.FHelpCode from t_Item t1"
                            << L" LEFT JOIN t_ICItem x2 ON t1.FItemID = x2.FItemID "
                            << L" Where FItemClassID = 4 " << L" AND t1.FDetail=1 "
                            << L" AND (x2.FErpClsID IN (2,6,9)) " << L" AND (t1.FNumber like '%" << sValue
                            << L"%' or t1.FName like '%" << sValue << L"%' or x2.FHelpCode like '%" << sValue
                            << L"%' ) " << L" AND t1.FDeleteD=0  ORDER BY t1.FNumber ");
}

Object BomInfo::GetBomInfoByItemID(const std::wstring& sDsn, const std::wstring& sItemID) {
  return Select(
      sDsn,
      Sql() << L"select a.FUnitID, a.FInterID, a.FQty, a.FFee, b.FItemID, b.FName, b.FNumber, c.FModel, "
               L"d.FName as FUnitName from icBom a"
            << L" inner join t_Item b on a.FItemID = b.FItemID and b.FItemClassID = 4 "
               L"and b.FItemID = "
            << sItemID << kMaterial << kUnit << L" Where a.FUseStatus = 1072 ");
}

Object BomInfo::GetBomList(const std::wstring& sDsn, const std::wstring& sParentID) {
  return Select(sDsn, Sql() << L"select " << kUseStatusText
                            << L", a.FInterID, a.FBOMNumber, b.FNumber from IcBom a"
                            << L" inner join t_ICItem b on a.FItemID = b.FItemID  where a.FCancellation = 0 "
                               L"and a.FParentID = "
                            << sParentID);
}

Object BomInfo::GetAllBomList(const std::wstring& sDsn, const std::wstring& sFilter) {
  Sql query;
  query << L"select case a.FUseStatus when 1072 then '使  用' "
           L"else '未使用' end as FUseStatus, a.FInterID, a.FBOMNumber, b.FNumber, b.FName "
           L"from IcBom a"
        << L" inner join t_ICItem b on a.FItemID = b.FItemID  where a.FCancellation = 0  ";
  if (!sFilter.empty()) query << L" and FNumber = '" << sFilter << L"' ";
  return Select(sDsn, query);
}

Object BomInfo::GetChildBomInfoByBomNo(const std::wstring& sDsn, const std::wstring& sBomNo) {
  return Select(sDsn, Sql() << kChildColumns
                            << L" inner join t_Item b on a.FItemID = b.FItemID and b.FItemClassID = 4 "
                            << kChildJoins << L" Where a.FBomNumber = '" << sBomNo << L"'");
}

Object BomInfo::GetChildBomInfoByItemID(const std::wstring& sDsn, const std::wstring& sItemID) {
  return Select(sDsn, Sql() << kChildColumns
                            << L" inner join t_Item b on a.FItemID = b.FItemID and b.FItemClassID = 4 "
                               L"and b.FItemID = "
                            << sItemID << kChildJoins
                            << L" Where a.FUseStatus = 1072 order by e.finterid,e.fentryid");
}

} // namespace mbom
