#include "src/import/BOMImport.h"

#include "src/frame/Collections.h"
#include "src/frame/ado/Connection.h"
#include "src/import/Import.h"

namespace mbom {

bool BOMImport::UpdateBomGroup(const std::wstring& sDsn, com::Object& tDict) {
  return frame_.LetFailuresRise([&] {
    const Connection conn = BeginImport(frame_, sDsn);
    const Dictionary group(tDict);
    conn.Run(Sql() << L"DELETE FROM ICBomGroup WHERE FNumber='" << group[L"Number"] << L"'");
    const int32_t newId = NextIdentifier(conn, L"ICBomGroup");
    conn.Run(Sql() << L"INSERT INTO ICBomGroup(FInterID,FNumber,FName,FParentID) " << L"VALUES(" << newId
                   << L",'" << group[L"Number"] << L"'," << L"'" << group[L"Name"] << L"',"
                   << group[L"Parent"] << L")");
    StoreIdentifier(conn, L"ICBomGroup", newId);
    return false;
  });
}

bool BOMImport::UpdateBOM(const std::wstring& sDsn, com::Object& tDict) {
  return frame_.LetFailuresRise([&] {
    const Connection conn = BeginImport(frame_, sDsn);
    const Dictionary bom(tDict);
    conn.Run(Sql() << L"DELETE t1 FROM ICBOMChild t1,ICBOM t2 WHERE t2.FBOMNumber='" << bom[L"BOMNumber"]
                   << L"' AND t1.FInterID=t2.FInterID");
    conn.Run(Sql() << L"DELETE FROM ICBOM WHERE FBOMNumber='" << bom[L"BOMNumber"] << L"'");
    const int32_t newId = NextIdentifier(conn, L"ICBOM");
    Sql insert;
    insert << L"INSERT INTO ICBOM(FBrNo,FInterID,FBomNumber,FUseStatus,FVersion,FParentID,"
           << L"FItemID,FQty,FYield,FStatus,FRoutingID,FBomType,FCustItemID," << L"FNote) VALUES(''," << newId
           << L",'" << bom[L"BOMNumber"] << L"'," << bom[L"UseStatus"] << L",'" << bom[L"Version"] << L"',"
           << bom[L"Parent"] << L"," << bom[L"Item"] << L"," << bom[L"Qty"] << L"," << bom[L"Yield"] << L",0,"
           << bom[L"Routing"] << L"," << bom[L"BOMType"] << L",0," << L"'" << bom[L"Note"] << L"')";
    conn.Run(insert);

    // The statement is executed once, after the loop: with the last line, or the header again where there is
    // none.
    const Vector lines(bom[L"Entry"].AsObject());
    const int32_t last = lines.UBound();
    for (int32_t i = 1; i <= last; ++i) {
      const Dictionary line = lines.DictionaryAt(i);
      insert = Sql() << L"INSERT INTO ICBOMChild(FBrNo,FInterID,FEntryID,FItemID,FAuxQty,"
                     << L"FScrap,FOperID,FMachinePos,FNote,FMaterielType,FMarshalType,"
                     << L"FPercent,FOffSetDay,FBackFlush,FStockID,FSPID) VALUES(''," << newId << L"," << i
                     << L"," << line[L"EntryItem"] << L"," << line[L"Qty"] << L"," << line[L"Scrap"] << L","
                     << line[L"Oper"] << L"," << L"'" << line[L"MachinePos"] << L"','" << line[L"Note"]
                     << L"'," << line[L"MaterielType"] << L"," << line[L"MarshalType"] << L","
                     << line[L"Percent"] << L"," << line[L"OffSetDay"] << L"," << line[L"BackFlush"] << L","
                     << line[L"Stock"] << L"," << line[L"SP"] << L")\r\n";
    }
    conn.Run(insert);
    StoreIdentifier(conn, L"ICBOM", newId);
    return false;
  });
}

} // namespace mbom
