#include "src/view/BomLists.h"

#include <objbase.h>

#include <array>

#include "com/ComError.h"
#include "com/Text.h"
#include "src/view/BomFilter.h"

namespace mbom {
namespace {

// The icon of a BOM: 13 for an ordinary one in use, 3 for another ordinary one, 15 and 18 for the types 1 and
// 2, 17 for the rest.
std::wstring BomIcon(const std::wstring& bom) {
  return L"CASE WHEN " + bom + L".FBomType=0 THEN (CASE WHEN " + bom +
         L".FUseStatus=1072 THEN 13 ELSE 3 END) ELSE (CASE WHEN " + bom +
         L".FBomType=1 THEN 15 ELSE (CASE WHEN " + bom + L".FBomType=2 THEN 18 ELSE 17 END )END ) END";
}

// ---- the branches of the tree lists

constexpr wchar_t kNoIds[] = L"0 AS FBomType,0 AS FItemID,0 AS FInterID,0 AS FCustID";
constexpr wchar_t kGroupId[] = L"0 AS FBomType,0 AS FItemID,FInterID,0 AS FCustID";
constexpr wchar_t kBomIds[] = L"a.FBomType,a.FItemID,a.FInterID,a.FCustID";

constexpr wchar_t kGroupIcons[] = L"1 AS FImgNormal,2 AS FImgClick,FNumber AS FTag,";
constexpr wchar_t kGroupNames[] = L"'' AS FAdditional,FNumber,FName,'' AS FBomNumber,";

std::wstring RootBranch(const Texts& text, const std::wstring& ids) {
  return L"SELECT 0 AS FType,'' AS FRelative,'ga' AS FKey,'" + text(L"BOM单") + L"' AS FText," +
         L"1 AS FImgNormal,2 AS FImgClick,'0' AS FTag," +
         L"'' AS FAdditional,'' AS FNumber,'' AS FName,'' AS FBomNumber," + ids;
}

std::wstring GroupBranch(const std::wstring& icons, const std::wstring& names, const std::wstring& ids) {
  return L"SELECT 1 AS FType,CASE FParentID WHEN 0 THEN 'ga' "
         L"ELSE 'gb'+CONVERT(VARCHAR,FParentID) END AS FRelative,'gb'+CONVERT(VARCHAR,"
         L"FInterID) AS FKey,FNumber+'('+FName+')' AS FText," +
         icons + names + ids + L" FROM ICBomGroup";
}

// Where a BOM hangs: under its group, or a customer BOM under its configuration BOM.
constexpr wchar_t kUnderTheGroup[] =
    L"CASE a.FParentID WHEN 0 THEN 'ga' ELSE 'gb'+CONVERT(VARCHAR,a.FParentID) END";
constexpr wchar_t kUnderGroupOrBom[] = L"CASE a.FParentID WHEN 0 THEN 'ga' ELSE (CASE "
                                       L"WHEN a.FBomType<>3 THEN 'gb'+CONVERT(VARCHAR,a.FParentID) "
                                       L"ELSE 'gc'+CONVERT(VARCHAR,a.FParentID) END) END";

std::wstring BomBranch(const std::wstring& relative, bool shortNumbers, const std::wstring& ids,
                       const std::wstring& from) {
  const std::wstring icon = BomIcon(L"a");
  return L"SELECT 1 AS FType," + relative + L" AS FRelative," +
         L"'gc'+CONVERT(VARCHAR,a.FInterID) AS FKey,a.FBOMNumber+'('+b.FName+')' AS FText," + icon +
         L" AS FImgNormal," + icon + L" AS FImgClick," +
         L"CONVERT(VARCHAR,a.FItemID) AS FTag,ISNULL(b.FModel,'') AS FAdditional," +
         (shortNumbers ? L"b.FShortNumber AS FNumber," : L"b.FNumber,") + L"b.FName,a.FBOMNumber," + ids +
         from;
}

Sql TreeList(const std::wstring& root, const std::wstring& groups, const std::wstring& boms,
             const std::wstring& sFilter, const std::wstring& sOrder) {
  Sql list;
  list << L"SELECT * FROM (" << root << L" UNION " << groups << L" UNION " << boms << L")t1";
  if (!sFilter.empty()) list << L" WHERE " << sFilter;
  if (!sOrder.empty()) list << L" ORDER BY " << sOrder;
  return list;
}

Sql SimplifyList(const std::wstring& table, const std::wstring& root, const std::wstring& groups,
                 const std::wstring& boms, const std::wstring& where, const std::wstring& sOrder) {
  Sql list;
  list << root << L" UNION " << L"SELECT t1.* FROM (" << L"SELECT * FROM (" << groups << L" UNION " << boms
       << L")x1" << where << L")t1,(SELECT DISTINCT * FROM " << table << L") t2"
       << L" WHERE (t1.FItemID<>0 AND t2.FLevel=1 AND t1.FInterID=t2.FInterID) OR (t1.FItemID=0 "
          L"AND t2.FLevel>1 AND t1.FInterID=t2.FInterID)";
  if (!sOrder.empty()) list << L" ORDER BY " << sOrder;
  return list;
}

bool IsEcnLookup(const std::wstring& lookType) {
  return com::EqualsNoCase(lookType, L"ECNLOOKUP");
}

} // namespace

Sql BomListStart(const std::wstring& subsystem, bool bLongNumber) {
  const wchar_t* const itemClasses =
      com::EqualsNoCase(subsystem, L"JH") ? L" AND T4.FERPClsID NOT IN (9)" : L" AND T4.FERPClsID IN (2,6,9)";
  Sql list;
  list << L"SET NOCOUNT ON \r\n\r\n"
          L"--SQL开始构建，包括临时表#IntiGroup的建立，该表保存符合过滤界面条件的BOM组信息 \r\n"
          L"SELECT DISTINCT t1.FInterID, t1.FBomNumber, t1.FBomType, t1.FTranType, \r\n"
          L"--按照BOM的类型决定BOM前面的图标 \r\n"
       << BomIcon(L"t1")
       << L" AS FImgNormal, \r\n"
          L"t4.FItemID, "
       << (bLongNumber ? L"t4.FNumber AS FNumber" : L"t4.FShortNumber AS FNumber")
       << L", t4.FName, t4.FModel \r\n"
          L"FROM IcBom t1 \r\n"
          L"INNER JOIN ICBomChild t2 ON t1.FInterID = t2.FInterID \r\n"
          L"INNER JOIN IcBomGroup t3 ON t1.FParentID = t3.FinterID \r\n"
          L"INNER JOIN t_ICItem t4 ON t1.FItemID = t4.FItemID "
       << itemClasses
       << L"\r\n"
          L"INNER JOIN t_ICItem t7 ON t2.FItemID = t7.FItemID \r\n"
          L"LEFT JOIN t_User t5 ON t1.FCheckerID = t5.FUserID \r\n"
          L"LEFT JOIN t_User t6 ON t1.FCheckID = t6.FUserID \r\n";
  return list;
}

std::wstring QuickFind(const Dictionary& find, bool bLongNumber) {
  Sql conditions;
  const auto contains = [&](const wchar_t* key, const std::wstring& column) {
    const std::wstring value = com::ToText(find[key]);
    if (!value.empty()) conditions << L" AND " << column << L" LIKE '%" << value << L"%'\r\n";
  };
  contains(L"BomNumber", L"t1.FBomNumber");
  // The long number's column has a blank of its own.
  contains(L"ItemNumber", bLongNumber ? std::wstring(kLongNumber) + L" " : kShortNumber);
  contains(L"ItemName", L"t4.FName");
  return conditions.text();
}

Sql BomTreeList(bool shortNumbers, const Texts& text, const std::wstring& sFilter,
                const std::wstring& sOrder) {
  return TreeList(RootBranch(text, kNoIds),
                  // The group's name stands where the number is elsewhere, and its number as the BOM's.
                  GroupBranch(kGroupIcons, L"'' AS FAdditional,FName,'' AS FBomNumber,FNumber,", kNoIds),
                  BomBranch(kUnderTheGroup, shortNumbers, kBomIds,
                            L" FROM ICBom a,t_ICItem b  WHERE a.FItemID=b.FItemID"),
                  sFilter, sOrder);
}

Sql CustBomTreeList(bool shortNumbers, const Texts& text, const std::wstring& sFilter,
                    const std::wstring& sOrder) {
  return TreeList(
      RootBranch(text, kNoIds),
      GroupBranch(L"1 AS FImgNormal,2 AS FImgClick,FNumber AS FTag,FNumber AS FTag,", kGroupNames, kNoIds),
      BomBranch(kUnderTheGroup, shortNumbers, kBomIds,
                L" FROM ICBom a,t_ICItem b  WHERE a.FItemID=b.FItemID AND a.FBomType IN (1,3)"),
      sFilter, sOrder);
}

std::wstring NewBomItemIdTable() {
  GUID id;
  com::Check(CoCreateGuid(&id));
  std::array<wchar_t, 40> text{};
  const int length = StringFromGUID2(id, text.data(), static_cast<int>(text.size()));
  std::wstring name = L"##BomItemID_";
  for (const wchar_t c : std::wstring_view(text.data(), static_cast<size_t>(length - 1)))
    if (std::wstring_view(L"{-}").find(c) == std::wstring_view::npos) name += c;
  return name;
}

Sql BuildBomItemIdBatch(const std::wstring& table, const std::wstring& filter, const std::wstring& lookType) {
  Sql batch;
  batch << L"SET NOCOUNT ON\r\n"
           L"DECLARE @Level INT\r\n"
           L"SELECT @Level=1\r\n"
           L"CREATE TABLE "
        << table << L"(FInterID INT NOT NULL,FItemID INT NOT NULL,"
        << L"FLevel INT NOT NULL,FParentID INT  NULL)\r\n" //
        << L"INSERT INTO " << table
        << L"(FParentID,FInterID,FItemID,FLevel)\r\n"
           L"SELECT t1.FParentID, t1.FInterID, t1.FItemID, @Level FROM ICBOM t1 "
           L"Left Join t_IcItem t2 On t1.FItemID = t2.FItemID ";
  if (!filter.empty()) batch << L" WHERE " << filter << L"\r\n";
  batch << (IsEcnLookup(lookType) ? L" and t1.FParentID is not  null"
                                  : L" and t2.FErpClsID <> 5 and t1.FParentID is not  null")
        << L" WHILE EXISTS(SELECT * FROM ICBOMGroup INNER JOIN " << table << L" ON ICBOMGroup.FInterID ="
        << table << L".FParentID WHERE " << table << L".FLevel=@Level AND " << table
        << L".FParentID<>0)\r\n"
           L"BEGIN\r\n" //
        << L"INSERT INTO " << table
        << L"(FParentID,FInterID,FItemID,FLevel)\r\n"
           L"SELECT ICBOMGroup.FParentID,ICBOMGroup.FInterID,0,@Level+1 FROM ICBOMGroup INNER JOIN "
        << table << L" ON ICBOMGroup.FInterID =" << table << L".FParentID WHERE " << table
        << L".FLevel=@Level AND " << table << L".FParentID<>0\r\n" //
        << L"SELECT @Level=@Level+1\r\n"
           L"End \r\n"
           L"SET NOCOUNT OFF";
  return batch;
}

Sql BomSimplifyList(const std::wstring& table, bool shortNumbers, const Texts& text,
                    const std::wstring& sFilter1, const std::wstring& sOrder) {
  return SimplifyList(table, RootBranch(text, kNoIds), GroupBranch(kGroupIcons, kGroupNames, kGroupId),
                      BomBranch(kUnderGroupOrBom, shortNumbers, kBomIds,
                                L" FROM ICBom a,t_ICItem b  WHERE a.FItemID=b.FItemID and a.Fstatus=1 "),
                      sFilter1.empty() ? L"" : L" WHERE " + sFilter1, sOrder);
}

Sql CustBomSimplifyList(const std::wstring& table, bool shortNumbers, const Texts& text,
                        const std::wstring& sFilter, const std::wstring& sFilter1,
                        const std::wstring& sOrder) {
  return SimplifyList(
      table, RootBranch(text, kNoIds), GroupBranch(kGroupIcons, kGroupNames, kGroupId),
      BomBranch(kUnderTheGroup, shortNumbers, kBomIds,
                L" FROM ICBom a,t_ICItem b  WHERE a.FItemID=b.FItemID AND a.FBomType IN (1,3)"),
      // Here sFilter decides whether sFilter1 takes part.
      sFilter.empty() ? L"" : L" WHERE " + sFilter1, sOrder);
}

Sql BomSimplifyListEx(const std::wstring& table, bool shortNumbers, const Texts& text,
                      const std::wstring& sFilter1, const std::wstring& sOrder,
                      const std::wstring& sLookType) {
  const std::wstring items =
      IsEcnLookup(sLookType)
          ? L" WHERE A.FSTATUS=1 AND a.FItemID=b.FItemID AND b.FErpClsID = c.FInterID "
          : L" WHERE A.FSTATUS=1 AND a.FItemID=b.FItemID AND b.FErpClsID = c.FInterID AND b.FErpClsId <> 5 ";
  return SimplifyList(
      table, RootBranch(text, std::wstring(kNoIds) + L", '' AS FModel, '' AS FErpClsName"),
      GroupBranch(kGroupIcons, kGroupNames, std::wstring(kGroupId) + L",  '' AS FModel, '' AS FErpClsName "),
      BomBranch(kUnderGroupOrBom, shortNumbers,
                std::wstring(kBomIds) + L", b.FModel, c.FName as FErpClsName ",
                L" FROM ICBom a,t_ICItem b, t_SubMessage c " + items),
      sFilter1.empty() ? L"" : L" WHERE " + sFilter1, sOrder);
}

} // namespace mbom
