#include "src/ecn/EcnQueries.h"

namespace mbom {

Sql BuildBomUsageSql(const std::wstring& bomNumber, const Texts& text) {
  return Sql()
         << L"Declare @InterId Int\r\n"
            L" select @InterId = FInterId from IcBom where FBomNumber = '"
         << bomNumber
         << L"'\r\n\r\n"
            L" select top 1 '"
         << text(L"计划订单")
         << L"' as FTableName, FBom as FBomInterID From IcMrpResult Where FBom = @InterID \r\n"
            L" union select top 1 '"
         << text(L"生产任务单")
         << L"' as FTableName, FBomInterID From ICMO Where FType in (1054,1055) "
            L"and FBomInterID = @InterID \r\n"
            L" union select top 1 '"
         << text(L"重复生产任务单")
         << L"' as FTableName, FBomInterID From ICMO Where FType = 1067 and FBomInterID = @InterId \r\n"
            L" union select top 1 '"
         << text(L"委外加工任务单")
         << L"' as FTableName, FBomInterID From ICMO Where FType = 11060 and FBomInterID = @InterId \r\n";
}

Sql HeadQuery(const std::wstring& bom, bool shortNumber) {
  const wchar_t* number = shortNumber ? L" v2.FShortNumber FMNumber " : L" v2.FNumber FMNumber ";
  return Sql() << L"SELECT  v1.FInterID FInterID, v1.FBomType, v1.FInterId FBomInterID, "
                  L"v1.FBomNumber FBomNumber, v1.FItemID FMItemID, "
               << L" v1.FRoutingID, " << number
               << L", v2.FName FMName,v2.FModel FMModel, v2.FFixLeadTime ,"
                  L"v2.FErpClsID FMErpClsID , v3.FName FMErpClsName "
               << L" FROM ICBom v1 inner join t_IcItem v2 on v1.FItemid=v2.FItemId"
               << L" left join t_SubMessage v3 on v2.FErpClsID=v3.FInterID  " << L" WHERE  v1.FInterID= "
               << bom;
}

Sql EntriesQuery(const std::wstring& bom, const std::wstring& filter, const Texts& text) {
  Sql query;
  query
      << L"SELECT  v1.FInterID FInterID, v1.FBomType, v1.FInterId FBomInterID, "
         L"v1.FBomNumber FBomNumber, v1.FItemID FMItemID, v1.FRoutingID, v2.FNumber FMNumber, "
         L"v2.FName FMName,v2.FModel FMModel,\r\n"
         L" ICBomChild.FEntryID FChildId, ICBomChild.FItemID FItemID, t2.FNumber, t2.FName, "
         L"t2.FModel, 11022 as FChangeType, '"
      << text(L"修改")
      << L"' as FChangeTypeName, 'ALT' as FChangeTypeNumber,  \r\n"
         L" ICBomChild.FBeginDay, ICBomChild.FEndDay, t2.FQtyDecimal, t2.FPriceDecimal, "
         L"t2.FUnitGroupID, ICBomChild.FQty, ICBomChild.FUnitID, t2.FTrack,\r\n"
         L" t7.FNumber as FUnitNumber, t7.FName as FUnitName, ICBomChild.FAuxQty, "
         L"ICBomChild.FMaterielType, t9.FID as FMaterielTypeNumber, \r\n"
         L" t9.FName as FMaterielTypeName, ICBomChild.FMarshalType, t10.FID as FMarshalTypeNumber, "
         L"t10.FName as FMarshalTypeName, \r\n"
         L" ICBomChild.FPercent, ICBomChild.FScrap, ICBomChild.FOperSN,"
         L"ICBomChild.FOperSN as FOperSNNumber,ICBomChild.FOperSN as FOperSNName, "
         L"ICBomChild.FOperID, t13.FID as FOperIDNumber, t13.FName as FOperIDName, \r\n"
         L" ICBomChild.FMachinePos, ICBomChild.FOffSetDay, ICBomChild.FBackFlush, "
         L"t16.FID as FBackFlushNumber, t16.FName as FBackFlushName, \r\n"
         L" t2.FIsKeyItem as FISKeyItem, t17.FName as FUseState, \r\n"
         L" t2.FDeleted as FForbitUse, ICBomChild.FStockID, t20.FNumber as FStockIDNumber, "
         L"t20.FName as FStockIDName, \r\n"
         L" ICBomChild.FSPID, t21.FNumber as FSPIDNumber, t21.FName as FSPIDName, "
         L"ICBomChild.FNote, t2.FErpClsID as FErpClsID \r\n"
         L"FROM ICBom v1 INNER JOIN ICBomChild ON v1.FInterID = ICBomChild.FInterID AND ICBomChild.FInterID= "
      << bom
      << L"\r\n"
         L" INNER JOIN t_ICItem t2 ON ICBomChild.FItemID = t2.FItemID \r\n"
         L" INNER JOIN t_IcItem v2 ON v1.FItemid = v2.FItemId \r\n"
         L" INNER JOIN t_MeasureUnit t7 ON ICBomChild.FUnitID = t7.FItemID \r\n"
         L" LEFT JOIN t_SubMessage t9 ON ICBomChild.FMaterielType = t9.FInterID \r\n"
         L" LEFT JOIN t_SubMessage t10 ON ICBomChild.FMarshalType = t10.FInterID \r\n"
         L" LEFT JOIN t_SubMessage t13 ON ICBomChild.FOperID = t13.FInterID \r\n"
         L" LEFT JOIN t_SubMessage t16 ON ICBomChild.FBackFlush = t16.FInterID \r\n"
         L" INNER JOIN t_SubMessage t17 ON t2.Fusestate = t17.FInterId \r\n"
         L" LEFT JOIN t_Stock t20 ON ICBomChild.FStockID = t20.FItemID \r\n"
         L" LEFT JOIN t_StockPlace t21 ON ICBomChild.FSPID = t21.FSPID \r\n";
  if (!filter.empty()) query << filter << L"\r\n";
  return query << L" ORDER BY ICBomChild.FEntryID ";
}

} // namespace mbom
