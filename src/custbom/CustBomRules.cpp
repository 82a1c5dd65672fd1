#include "src/custbom/CustBomRules.h"

#include "com/Text.h"
#include "src/frame/Convert.h"

namespace mbom {

Sql RuleQuery(const std::wstring& itemIds, const std::wstring& groupId, const std::wstring& kind) {
  const bool relations = com::EqualsNoCase(kind, L"REL");
  Sql query;
  query << L"SELECT t_ICItem_1.FNumber AS FEntryFNumber, dbo.t_BOMRuleEntry.FEntryItemID, "
        << L" t_ICItem_1.FName AS FEntryFName, dbo.t_ICItem.FNumber, dbo.t_BOMRule.FItemID, "
        << L" dbo.t_ICItem.FName , dbo.t_BOMRuleEntry.FRuleID " << L" FROM dbo.t_BOMRule INNER JOIN "
        << L" dbo.t_BOMRuleEntry ON " << L" dbo.t_BOMRule.FInterID = dbo.t_BOMRuleEntry.FInterID INNER JOIN "
        << L" dbo.t_ICItem ON dbo.t_BOMRule.FItemID = dbo.t_ICItem.FItemID INNER JOIN "
        << L" dbo.t_ICItem t_ICItem_1 ON dbo.t_BOMRuleEntry.FEntryItemID = t_ICItem_1.FItemID ";
  if (!itemIds.empty()) {
    query << L" WHERE ((t_BOMRule.FItemID IN (" << itemIds << L")";
    if (relations)
      query << L") AND dbo.t_BOMRuleEntry.FEntryItemID " << L" NOT IN (" << itemIds << L") ";
    else
      query << L") ";
    if (!groupId.empty())
      query << L" AND (t_BOMRuleEntry.FGroupItemID=0 OR t_BOMRuleEntry.FGroupItemID=" << groupId << L"))";
    else
      query << L")";
  }
  if (relations)
    query << L" AND t_BomRuleEntry.FRuleID='Rel'";
  else if (com::EqualsNoCase(kind, L"MUT"))
    query << L" AND t_BomRuleEntry.FRuleID='Mut'";
  return query;
}

Sql FeatureOptionsQuery(const std::wstring& featureItemId) {
  return Sql() << L"SELECT a.FItemID FROM ICBOMChild a,ICBOM b WHERE "
               << L"a.FInterID=b.FInterID AND b.FUseStatus=1072" << L" AND b.FItemID="
               << com::Variant(LeadingNumber(featureItemId));
}

} // namespace mbom
