#include "src/import/PPorderImort.h"

#include "src/frame/Collections.h"
#include "src/frame/ado/Connection.h"
#include "src/import/Import.h"

namespace mbom {

bool PPorderImort::UpdatePPOrder(const std::wstring& sDsn, com::Object& tDict) {
  return frame_.LetFailuresRise([&] {
    const Connection conn = BeginImport(frame_, sDsn);
    const Dictionary order(tDict);
    conn.Run(Sql() << L"DELETE t1 FROM PPOrderEntry t1,PPOrder t2 WHERE t2.FBillNo='" << order[L"BillNo"]
                   << L"' AND t1.FInterID=t2.FInterID");
    conn.Run(Sql() << L"DELETE FROM PPOrder WHERE FBillNo='" << order[L"BillNo"] << L"'");
    const int32_t newId = NextIdentifier(conn, L"PPOrder");
    Sql insert;
    insert << L"INSERT INTO PPOrder(FBrNo,FInterID,FTranType,FDate,FBillerID,"
           << L"FCheckerID,FCheckDate) VALUES(''," << newId << L",87," << L"'" << order[L"Date"] << L"',"
           << order[L"Biller"] << L"," << L"'" << order[L"CheckDate"] << L"'," << order[L"Checker"] << L")";
    conn.Run(insert);

    // The statement is executed once, after the loop: with the last line, or the header again where there is
    // none.
    const Vector lines(order[L"Entry"].AsObject());
    const int32_t last = lines.UBound();
    for (int32_t i = 1; i <= last; ++i) {
      const Dictionary line = lines.DictionaryAt(i);
      insert = Sql() << L"INSERT INTO PPOrderEntry(FBrNo,FInterID,FEntryID,FItemID,FUnitID,"
                     << L"FQty,FNeedDate,FNote,FAuxQty,FCommitQty,FAuxCommitQty) VALUES(''," << newId << L","
                     << i << L"," << line[L"EntryItem"] << L"," << line[L"Unit"] << L"," << line[L"Qty"]
                     << L"," << L"'" << line[L"NeedDate"] << L"'," << L"'" << line[L"Note"] << L"',"
                     << line[L"AuxQty"] << L"," << line[L"CommitQty"] << L"," << line[L"AuxCommitQty"]
                     << L")\r\n";
    }
    conn.Run(insert);
    StoreIdentifier(conn, L"PPOrder", newId);
    return false;
  });
}

} // namespace mbom
