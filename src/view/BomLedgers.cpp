#include "src/view/BomLedgers.h"

#include "com/Text.h"
#include "src/frame/Join.h"
#include "src/frame/globals/Descriptor.h"

namespace mbom {
namespace {

// ---- titles

// One of three texts, by the language.
const wchar_t* In(TitleLanguage language, const wchar_t* simplified, const wchar_t* traditional,
                  const wchar_t* english) {
  switch (language) {
  case TitleLanguage::Traditional: return traditional;
  case TitleLanguage::English: return english;
  default: return simplified;
  }
}

Sql FixedTitles(TitleLanguage language, const wchar_t* source, const std::wstring& sFilter) {
  Sql titles;
  titles << L"SELECT FNum,FCtlID,"
         << In(language, L"FCtlName", L"FCtlName_Cht as FCtlName", L"FCtlName_En as FCtlName")
         << L",FLdgNum,FOrder,"
         << In(language, L"FCaption", L"FCaption_Cht as FCaption", L"FCaption_En as FCaption")
         << L",FHeadSecond,FName,FAlign,FVisible,FDecCtl,FNeedHeadSecond " << source;
  if (!sFilter.empty()) titles << L" AND " << sFilter;
  return titles << L" ORDER BY FOrder";
}

// The fields that the customer added to a template's table, with its columns for their positions and
// captions.
struct TemplateFields {
  const wchar_t* table;
  const wchar_t* ledger;
  const wchar_t* position;
  const wchar_t* caption;
};

Sql UserDefinedTitles(TitleLanguage language, const TemplateFields& fields, const std::wstring& sFilter) {
  Sql titles;
  titles << L"SELECT 0 as FNum,'BOM' as FCtlID," << In(language, L"'BOM查询'", L"'BOM查詢'", L"'BOM Query'")
         << L" as FCtlName," << fields.ledger << L" as FLdgNum,FFieldName," << fields.position
         << L"+1000 as FOrder," << fields.caption << In(language, L"", L"_CHT", L"_EN")
         << L" as FCaption,'' as FHeadSecond,FFieldName as FName,0 as FAlign,1 as FVisible,"
            L"0 as FDecCtl,0 as FNeedHeadSecond "
         << L" FROM " << fields.table << L" WHERE FID='Z01' AND FDefaultCtl=0 ";
  if (!sFilter.empty()) titles << L" AND " << sFilter;
  return titles << L" ORDER BY " << fields.position;
}

// ---- ledgers

const wchar_t* NumberColumn(bool shortNumbers) {
  return shortNumbers ? L"b.FShortNumber AS FNumber," : L"b.FNumber,";
}

void AppendFilter(Sql& ledger, const std::wstring& sFilter, const std::wstring& sOrder) {
  if (!sFilter.empty()) ledger << L" WHERE " << sFilter;
  if (!sOrder.empty()) ledger << L" ORDER BY " << sOrder;
}

std::wstring UseStatusColumn(const Texts& text) {
  return Join({L"CASE FUseStatus WHEN 1072 THEN '", text(L"使用"), L"' ELSE '", text(L"未使用"),
               L"' END AS FUseStatus,"});
}

// A column that reads "no" for one value of a field and "yes" for any other.
std::wstring YesNoColumn(const Texts& text, const wchar_t* field, const wchar_t* no, const wchar_t* name) {
  return Join({L"CASE ", field, L" WHEN ", no, L" THEN '", text(L"否"), L"' ELSE '", text(L"是"),
               L"' END AS ", name, L","});
}

std::wstring LineFlagColumns(const Texts& text) {
  std::wstring columns = YesNoColumn(text, L"a.FBackFlush", L"1059", L"FBackFlush");
  columns += YesNoColumn(text, L"b.FIsKeyItem", L"0", L"FIsKeyItem");
  columns += YesNoColumn(text, L"h.FDeleted", L"0", L"FForbitUse");
  return columns;
}

// Whether a line is drawn in the alternate colour, and which one that is.
Sql ColourColumns(const Dictionary& period) {
  Sql columns;
  if (!period.object()) return columns << L"0 AS FAlterBackColor, '255,255,255' AS FBackColor, ";
  const com::Variant begin = period[L"BItemTime"];
  const com::Variant end = period[L"EItemTime"];
  return columns << L"\r\n"
                    L" CASE a1.FBomType WHEN 0 THEN " //
                 << L"(CASE WHEN (a.FBeginDay BETWEEN '" << begin << L"' AND  '" << end << L"') THEN 0 "
                 << L" WHEN (a.FEndDay BETWEEN '" << begin << L"' AND  '" << end << L"' ) THEN 0 "
                 << L" WHEN ('" << begin << L"' >= a.FBeginDay AND '" << end
                 << L"' <= a.FEndDay) THEN 0 ELSE 1 END) " //
                 << L"\r\n"
                    L" ELSE 0 END \r\n"
                 << L" AS FAlterBackColor, '253, 223, 223' AS FBackColor, ";
}

// The base data of a line `a`, each join on its own line.
constexpr wchar_t kLineJoins[] =
    L"\r\ninner join t_ICItem b on a.FItemID = b.FItemID\r\nleft join (SELECT FItemID,FName "
    L"FROM t_Stock UNION SELECT 0 AS FItemID,'' AS FName) c "
    L"on ISNULL(a.FStockID,0) = c.FItemID\r\nleft join t_MeasureUnit d "
    L"on b.FUnitID = d.FItemID\r\nleft join t_SubMessage e "
    L"on a.FMaterielType = e.FInterID\r\nleft join t_SubMessage f "
    L"on a.FMarshalType= f.FInterID \r\nleft join t_SubMessage g "
    L"on b.FUseState = g.FInterID\r\nleft join t_Item h "
    L"on b.FItemID = h.FItemID\r\nleft join t_StockPlace i "
    L"on a.FSPID = i.FSPID\r\nleft join t_SubMessage j on a.FOperID = j.FInterID "
    L"and j.FTypeID = 61\r\nleft join t_MeasureUnit w on a.FunitID=w.FitemID ";
constexpr wchar_t kExtensionJoin[] = L"\r\nleft join t_MeasureUnit w1 on a.FGMPUnitID=w1.FitemID ";

} // namespace

TitleLanguage TitleLanguageOf(const std::wstring& sDsn) {
  const std::wstring language = GetDsnValue(sDsn, L"Language");
  if (com::EqualsNoCase(language, L"CHT")) return TitleLanguage::Traditional;
  if (com::EqualsNoCase(language, L"EN")) return TitleLanguage::English;
  return TitleLanguage::Simplified;
}

Sql BomTitles(TitleLanguage language, const std::wstring& sFilter) {
  return FixedTitles(language, L" FROM ICTableFieldInfo WHERE FCtlID='BOM' AND FLdgNum=0 AND Fvisible = 1",
                     sFilter);
}

Sql BomEntryTitles(TitleLanguage language, const std::wstring& sFilter) {
  return FixedTitles(language,
                     L" FROM ICTableFieldInfo WHERE FCtlID='BOM' AND FLdgNum=1 AND Fvisible = 1  "
                     L"And FName not in('FBeginDay','FEndDay') ",
                     sFilter);
}

Sql CustBomTitles(TitleLanguage language, const std::wstring& sFilter) {
  return FixedTitles(
      language, L" FROM ICTableFieldInfo WHERE FCtlID='CustBOM' AND FLdgNum=0 AND Fvisible = 1", sFilter);
}

Sql CustBomEntryTitles(TitleLanguage language, const std::wstring& sFilter) {
  return FixedTitles(language, L" FROM ICTableFieldInfo WHERE FCtlID='CustBOM' AND FLdgNum=1 Fvisible = 1",
                     sFilter);
}

Sql BomUserDefinedTitles(TitleLanguage language, const std::wstring& sFilter) {
  return UserDefinedTitles(language, {L"ICTemplate", L"0", L"FCtlIndex", L"FCaption"}, sFilter);
}

Sql BomEntryUserDefinedTitles(TitleLanguage language, const std::wstring& sFilter) {
  return UserDefinedTitles(language, {L"ICTemplateEntry", L"1", L"FCtlOrder", L"FHeadCaption"}, sFilter);
}

Sql BomLedger(const LedgerStyle& style, const Texts& text, const std::wstring& sFilter,
              const std::wstring& sOrder) {
  Sql ledger;
  ledger << L"SELECT * FROM ( " << L"SELECT a.FInterID,a.FBOMNumber,a.FVersion,a.FNote,b.FName,b.FErpClsID,"
         << NumberColumn(style.shortNumbers)
         << Join({L" (case a.FStatus when 0 then '", text(L"未审核"), L"' else '", text(L"已审核"),
                  L"' end) as FStatus ,"})
         << L" d.FBillNO AS FRoutingNo, d.FRoutingName as FRoutingName, " << L"a.FStatus as FStatusNum ,"
         << UseStatusColumn(text) << L"FUseStatus as FUseStatusNum ,"
         << L"a.FYield,a.FQty,a.FAuxQty,a.FFee,a.FParentID,b.FQtyDecimal,a.FBomType,a.FCustID, "
         << L"a.FItemID,b.FModel,e.FName AS FErpClsName,c.FName AS FUnitID,b.FCUUnitID, "
         << L"t1.FInterID AS FGroupID, t1.FNumber AS FGroupNumber, t1.FName AS FGroupName ";
  if (style.extensionColumns) ledger << L",FGMPExpectQty ";
  ledger << L"FROM ICBOM a INNER JOIN t_ICItem b ON a.FItemID = b.FItemID "
         << L"INNER JOIN t_MeasureUnit c ON a.FUnitID=c.FItemID "
         << L"LEFT JOIN t_Routing d ON a.FRoutingID = d.FInterID "
         << L"INNER JOIN t_submessage e ON  b.FErpClsID = e.FInterID "
         << L"LEFT JOIN ICBomGroup t1 ON a.FParentID = t1.FInterID " << L") t1 ";
  AppendFilter(ledger, sFilter, sOrder);
  return ledger;
}

Sql BomEntryLedger(const LedgerStyle& style, const Texts& text, const Dictionary& period,
                   const std::wstring& sFilter, const std::wstring& sOrder) {
  Sql ledger;
  ledger << L"SELECT a.FEntryID,a.FInterID,b.FItemID," << NumberColumn(style.shortNumbers)
         << L"b.FName AS FItemName,b.FModel,d.FName AS FBaseUnitID,w.FName as FUnitID,"
         << L"e.FName AS FMaterielType,f.FName AS FMarshalType,a.FAuxQty,a.FQty,a.FScrap,"
         << L"a.FBeginDay,a.FEndDay,"
         << L"a.FPercent,(case a.FOperSN when 0 then '' "
            L"else cast(a.FOperSN as varchar(255)) end) FOperSN,j.FName AS FOperID,a.FMachinePos,"
            L"a.FOffSetDay,a.FBeginDay, a.FEndday, "
         << ColourColumns(period).text() << LineFlagColumns(text)
         << L"g.FName AS FUseState,case i.FSPID when 0 then '' else i.FName end AS FSPID,"
         << L"c.FName AS FStockID,a.FNote,b.FQtyDecimal, v.FName AS FErpClsName ";
  if (style.extensionColumns) ledger << L",w1.FName as FGMPUnitID,a.FGMPAuxQty ";
  ledger << L"\r\n"
            L" FROM IcBom a1 INNER JOIN ICBOMChild a ON a1.FinterId = a.FinterID "
         << kLineJoins;
  if (style.extensionColumns) ledger << kExtensionJoin;
  ledger << L"\r\n"
            L"left join t_SubMessage v on b.FErpClsID=v.FInterID ";
  AppendFilter(ledger, sFilter, sOrder);
  return ledger;
}

Sql CustBomLedger(bool shortNumbers, const Texts& text, const std::wstring& sFilter,
                  const std::wstring& sOrder) {
  Sql ledger;
  ledger << L"SELECT * FROM (" << L"SELECT a.FInterID,a.FBOMNumber,b.FItemID,b.FName,"
         << NumberColumn(shortNumbers) << UseStatusColumn(text)
         << L"a.FYield,a.FQty,a.FParentID,b.FQtyDecimal,a.FBomType,a.FCustID,"
         << L"b.FModel,c.FName AS FUnitID" << L" FROM ICBOM a,t_ICItem b,t_MeasureUnit c"
         << L" WHERE a.FItemID=b.FItemID AND b.FUnitID=c.FItemID) t1";
  AppendFilter(ledger, sFilter, sOrder);
  return ledger;
}

Sql CustBomEntryLedger(bool shortNumbers, const Texts& text, const std::wstring& sFilter,
                       const std::wstring& sOrder) {
  Sql ledger;
  ledger << L"SELECT * FROM (" << L"SELECT a.FEntryID,a.FInterID,b.FItemID," << NumberColumn(shortNumbers)
         << L"b.FName AS FItemName,b.FModel,d.FName AS FBaseUnitID,w.Fname as FunitID, "
         << L"e.FName AS FMaterielType,f.FName AS FMarshalType,a.FAuxQty,a.FQty,a.FScrap,"
         << L"a.FPercent,(case a.FOperSN when 0 then '' "
            L"else cast(a.FOperSN as varchar(255)) end) FOperSN,j.FName AS FOperID,a.FMachinePos,"
            L"a.FOffSetDay,"
         << LineFlagColumns(text) << L"g.FName AS FUseState,i.FName AS FSPID,"
         << L"c.FName AS FStockID,a.FNote,b.FQtyDecimal,v.FName AS FErpClsName " << L" FROM ICCustBOMChild a"
         << kLineJoins
         << L"\r\n"
            L"left join t_SubMessage v on b.FErpClsID=v.FInterID) t1";
  AppendFilter(ledger, sFilter, sOrder);
  return ledger;
}

} // namespace mbom
