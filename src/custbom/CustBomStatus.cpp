#include "src/custbom/CustBomStatus.h"

#include <oaidl.h>

namespace mbom {

Sql UsageQuery(const std::wstring& condition, const Texts& text) {
  return Sql() << L" Select Top 1 '" << text(L"客户BOM批次表")
               << L"' as FTableName, FCustBomId as FBomInterID From IcorderBatchTrace Where FCustBomId"
               << condition << L"\r\n"
               << L" union select top 1 '" << text(L"销售订单")
               << L"' as FTableName, FBomInterID From SEOrderEntry Where FBomInterID" << condition << L"\r\n"
               << L" union select top 1 '" << text(L"生产任务单")
               << L"' as FTableName, FBomInterID From ICMO Where FBomInterID" << condition << L"\r\n"
               << L" union select top 1 '" << text(L"计划订单")
               << L"' as FTableName, FApplicableBom As FBomInterID From t_SubsItem Where FApplicableBom"
               << condition << L"\r\n"
               << L" union select top 1 '" << text(L"产品预测单")
               << L"' as FTableName, FBomInterID As FBomInterID From PPOrderEntry Where FBomInterID"
               << condition;
}

Sql UpperNumbersQuery(const std::wstring& ids) {
  return Sql() << L"SELECT ICBOM.FBomNumber FROM ICBOM INNER JOIN ICCustBomChild "
                  L"ON ICBOM.FInterID=ICCustBomChild.FInterID WHERE ICCustBomChild.FCustBomCode IN ("
               << ids << L")";
}

Sql UpperLevelQuery(const std::wstring& ids) {
  return Sql() << L"SELECT ICBOM.FInterID,ICBOM.FBomNumber,ISNULL(ICBOM.FStatus,0) FStatus "
                  L"FROM ICBOM,ICCUSTBOMCHILD WHERE ICBOM.FInterID=ICCUSTBOMCHILD.FInterID "
                  L"AND ICCUSTBOMCHILD.FCustBomCode IN ("
               << ids << L") ";
}

Sql AuditUpdate(const std::wstring& ids, int32_t user, const std::wstring& now) {
  return Sql() << L"UPDATE ICBOM SET FUseStatus=" << 1072 << L",FStatus=" << 1 << L",FCheckerID='" << user
               << L"',FAudDate='" << now << L"' WHERE FInterID IN (" << ids << L")";
}

Sql UndoAuditUpdate(const std::wstring& ids) {
  return Sql() << L"UPDATE ICBOM SET FUseStatus=" << 1073 << L",FStatus=" << 0
               << L",FCheckerID=0,FAudDate=NULL WHERE FInterID IN (" << ids << L")";
}

Sql DisableUpdate(const std::wstring& ids, bool disable) {
  const int32_t forbid = disable ? VARIANT_TRUE : VARIANT_FALSE;
  return Sql() << L"UPDATE ICBOM SET FForbid=" << forbid << L" WHERE FInterID IN (" << ids << L")";
}

} // namespace mbom
