#include "src/custbom/CustBomPanels.h"

#include "com/Text.h"
#include "src/frame/Convert.h"
#include "src/frame/Sql.h"

namespace mbom {
namespace {

// A column that says no where `column` has the value, and yes where it has any other.
Sql YesNo(const wchar_t* column, const wchar_t* no, const wchar_t* alias, const Texts& text) {
  return Sql() << L"CASE " << column << L" WHEN " << no << L" THEN '" << text(L"否") << L"' ELSE '"
               << text(L"是") << L"' END AS " << alias << L",";
}

const wchar_t* NumberColumn(bool shortNumber) {
  return shortNumber ? L"b.FShortNumber AS FNumber," : L"b.FNumber,";
}

// The two conditions joined by AND; an empty one is left out.
std::wstring SearchTerm(const std::wstring& filter, const std::wstring& filter1) {
  const std::wstring_view kAnd = L" AND ";
  std::wstring term = Trim(filter) + std::wstring(kAnd) + Trim(filter1);
  if (term.starts_with(kAnd)) term.erase(0, kAnd.size());
  if (term.ends_with(kAnd)) term.resize(term.size() - kAnd.size());
  return term;
}

} // namespace

std::wstring HeaderQuery(bool shortNumber, const Texts& text, const std::wstring& interId,
                         const std::wstring& bomType, const std::wstring& filter, const std::wstring& order) {
  Sql query;
  query << L"SELECT * FROM (\r\n"
           L"SELECT a.FInterID,a.FBOMNumber,a.FVersion,a.FNote,b.FName,\r\n"
        << NumberColumn(shortNumber)
        << L"\r\n"
           L" (case a.FStatus when 0 then '"
        << text(L"未审核") << L"' else '" << text(L"已审核")
        << L"' end) as FStatus ,\r\n"
           L"a.FStatus as FStatusNum ,\r\n"
           L"CASE FUseStatus WHEN 1072 THEN '"
        << text(L"使用") << L"' ELSE '" << text(L"未使用")
        << L"' END AS FUseStatus,\r\n"
           L"FUseStatus as FUseStatusNum ,\r\n"
           L"a.FYield,a.FQty,a.FAuxQty,a.FParentID,b.FQtyDecimal,a.FBomType,a.FCustID,\r\n"
           L"a.FItemID,b.FModel,c.FName AS FUnitID,b.FCUUnitID ,v.FName AS FErpClsName,"
           L"d.FBillNo as FRoutingNo,d.FRoutingName AS FRoutingName \r\n"
           L" FROM ICBOM a \r\n"
           L" INNER JOIN t_ICItem b ON a.FItemID=b.FItemID \r\n"
           L" LEFT OUTER JOIN t_routing d on a.FRoutingID = d.FInterID\r\n"
           L" left outer join t_SubMessage v on b.FErpClsID=v.FInterID \r\n"
           L" INNER JOIN t_MeasureUnit c ON a.FUnitID=c.FItemID\r\n"
           L" WHERE  1=1) t1";
  if (!filter.empty()) {
    const bool list = bomType == L"-1" || bomType == L"-99";
    query << L" WHERE " << (list ? L" FInterID IN (" + interId + L")" : L" FInterID =" + interId);
  }
  if (!order.empty()) query << L" ORDER BY " << order;
  return query.text();
}

std::wstring LineQuery(bool shortNumber, const Texts& text, const std::wstring& bomType,
                       const std::wstring& filter, const std::wstring& order) {
  const bool customer = bomType == L"3";
  Sql query;
  query << L"SELECT * FROM (\r\n"
           L"SELECT a.FEntryID,a.FInterID,b.FItemID,\r\n"
        << NumberColumn(shortNumber) << L"\r\n"
        << (customer ? L"b.FName AS FItemName,b.FModel,d.FName AS FBaseUnitID,w.Fname as FunitID, "
                     : L"b.FName AS FItemName,b.FModel,d.FName AS FBaseUnitID,w.FName as FUnitID,")
        << L"\r\n"
           L"e.FName AS FMaterielType,f.FName AS FMarshalType,a.FAuxQty,a.FQty,a.FScrap,\r\n"
           L"a.FBeginDay,a.FEndDay,\r\n"
           L"a.FPercent,(case a.FOperSN when 0 then '' "
           L"else cast(a.FOperSN as varchar(255)) end) FOperSN,j.FName AS FOperID,a.FMachinePos,"
           L"a.FOffSetDay,\r\n"
        << YesNo(L"a.FBackFlush", L"1059", L"FBackFlush", text) << L"\r\n"
        << YesNo(L"b.FIsKeyItem", L"0", L"FIsKeyItem", text) << L"\r\n"
        << YesNo(L"h.FDeleted", L"0", L"FForbitUse", text) << L"\r\n"
        << (customer ? L"g.FName AS FUseState,i.FName AS FSPID,"
                     : L"g.FName AS FUseState,case i.FSPID when 0 then '' else i.FName end AS FSPID,")
        << L"\r\n"
        << (customer ? L"c.FName AS FStockID,a.FNote,b.FQtyDecimal ,v.FName AS FErpClsName, u.FBomNumber "
                     : L"c.FName AS FStockID,a.FNote,b.FQtyDecimal ,v.FName AS FErpClsName")
        << L"\r\n"
        << (customer ? L" FROM ICCustBOMChild a" : L" FROM ICBOMChild a")
        << L"\r\n"
           L"inner join t_ICItem b on a.FItemID = b.FItemID\r\n"
           L"left join (SELECT FItemID,FName FROM t_Stock UNION SELECT 0 AS FItemID,'' AS FName) c "
           L"on ISNULL(a.FStockID,0) = c.FItemID\r\n"
           L"left join t_MeasureUnit d on b.FUnitID = d.FItemID\r\n"
           L"left join t_SubMessage e on a.FMaterielType = e.FInterID\r\n"
           L"left join t_SubMessage f on a.FMarshalType= f.FInterID \r\n"
           L"left join t_SubMessage g on b.FUseState = g.FInterID\r\n"
           L"left join t_Item h on b.FItemID = h.FItemID\r\n"
           L"left join t_StockPlace i on a.FSPID = i.FSPID\r\n"
           L"left join t_SubMessage j on a.FOperID = j.FInterID and j.FTypeID = 61\r\n"
           L"left join t_MeasureUnit w on a.FunitID=w.FitemID\r\n"
           L"left outer join t_SubMessage v on b.FErpClsID=v.FInterID";
  if (customer)
    query << L" \r\n"
             L"left outer join ICBOM u on u.FInterID=a.FCustBomCode";
  query << L") t1";
  if (!filter.empty()) query << L" WHERE " << filter;
  if (!order.empty()) query << L" ORDER BY " << order;
  return query.text();
}

StoredProcedure TreeCommand(const std::wstring& filter, const std::wstring& filter1,
                            const std::wstring& lookType, const Texts& text) {
  constexpr int32_t kTextSize = 1000;
  constexpr int32_t kAll = -1;
  constexpr int32_t kConfiguredItems = 5;
  const bool forChangeNotice = com::EqualsNoCase(lookType, L"ECNLOOKUP");
  StoredProcedure tree(L"sp_GetCustBOMTree");
  tree.AppendReturnValue(L"RETURN_VALUE");
  tree.AppendInput(L"@p_FItemIDFrom", kAll);
  tree.AppendInput(L"@p_FItemIDTo", kAll);
  tree.AppendInput(L"@p_FErpClsID", forChangeNotice ? kAll : kConfiguredItems);
  tree.AppendInput(L"@p_Term", SearchTerm(filter, filter1), kTextSize);
  tree.AppendInput(L"@p_BomBill", text(L"BOM单"), kTextSize);
  return tree;
}

} // namespace mbom
