#include "src/domain/BomReferences.h"

#include "com/ValueText.h"
#include "src/frame/Join.h"

namespace mbom {

Sql BomUsedSql(int32_t interId, bool customerBom, const Texts& text) {
  Sql query;
  if (customerBom)
    query << L" Select Top 1 '" << text(L"客户BOM批次表")
          << L"' as FTableName, FCustBomId as FBomInterID From IcorderBatchTrace Where FCustBomId = "
          << interId << L"\r\n";
  else
    query << L" select top 1 '" << text(L"成本对象表")
          << L"' as FTableName, FBomID as FBomInterID From cbCostObj Where FBomID = " << interId << L"\r\n";
  query << L" union select top 1 '" << text(L"销售订单")
        << L"' as FTableName, FBomInterID From SEOrderEntry Where FBomInterID = " << interId;
  return query;
}

void AppendReferences(const Recordset& references, const Texts& text, std::wstring& list,
                      const wchar_t* bom) {
  for (; !references.Eof(); references.MoveNext())
    list += Join({text(bom), com::ToText(references[L"FTableName"]), text(L" 中已经被引用。"), L"\r\n"});
}

} // namespace mbom
