#include "bench/view/BrowserData.h"

#include <windows.h>

#include <fstream>

#include "com/Text.h"
#include "standin/ado/Connection.h"
#include "tsql/tsql.h"

namespace bench {
namespace {

class Writer {
 public:
  explicit Writer(const std::wstring& file)
      : database_(tsql::Database::Open(com::ToUtf8(file), tsql::OpenMode::Create)),
        session_(tsql::Session::Open(database_)) {}

  void Run(const std::wstring& batch) {
    struct Quiet : tsql::ResultSink {
      void BeginRows(std::span<const tsql::Column> /*columns*/) override {}
      void Row(std::span<const tsql::Value> /*values*/) override {}
      void EndRows(int64_t /*count*/) override {}
      void RowCount(int64_t /*count*/) override {}
      void Message(const tsql::Error& /*info*/) override {}
      void Failed(const tsql::Error& error) override { throw error; }
    } sink;
    session_->Execute(com::ToUtf8(batch), {}, sink);
  }

  // The batches of a script: its parts between lines that hold only GO.
  void RunScript(const char* path) {
    std::ifstream file(path, std::ios::binary);
    std::string batch;
    for (std::string line; std::getline(file, line);) {
      if (line == "GO") {
        Run(com::FromUtf8(batch));
        batch.clear();
      } else {
        batch += line + "\n";
      }
    }
    if (batch.find_first_not_of(" \r\n") != std::string::npos) Run(com::FromUtf8(batch));
  }

  // The numbers from 1 to count, in the table n, for the inserts that follow.
  void CountTo(int32_t count) {
    Run(L"IF OBJECT_ID('tempdb..#n') IS NOT NULL DROP TABLE #n");
    Run(L"CREATE TABLE #n (i int NOT NULL)");
    Run(L"INSERT INTO #n VALUES (1)");
    for (int32_t filled = 1; filled < count; filled *= 2)
      Run(L"INSERT INTO #n SELECT i + " + std::to_wstring(filled) + L" FROM #n WHERE i + " +
          std::to_wstring(filled) + L" <= " + std::to_wstring(count));
  }

 private:
  std::shared_ptr<tsql::Database> database_;
  std::unique_ptr<tsql::Session> session_;
};

constexpr int32_t kItems = 1000;

void BaseData(Writer& writer, int32_t groups) {
  writer.Run(
      L"INSERT INTO t_MeasureUnit (FMeasureUnitID, FItemID, FUnitGroupID, FNumber, FName) VALUES (1, 1, 1, "
      L"'PCS', N'件')");
  writer.Run(
      L"INSERT INTO t_SubMessage (FInterID, FTypeID, FID, FName) VALUES (2, 210, 'ZZ', N'自制'), (341, 36, "
      L"'SY', N'使用'), (371, 40, 'PT', N'普通件'), (385, 42, 'TY', N'通用'), (40004, 61, 'ASM', N'装配')");
  writer.Run(L"INSERT INTO t_Stock (FItemID, FNumber, FName) VALUES (801, '01', N'原料仓')");
  writer.Run(L"INSERT INTO t_StockPlace (FSPID, FNumber, FName) VALUES (0, '*', '*')");
  writer.CountTo(kItems);
  writer.Run(
      L"INSERT INTO t_ICItem (FItemID, FNumber, FShortNumber, FName, FModel, FErpClsID, FUnitID, FCUUnitID) "
      L"SELECT i, '02.' + CONVERT(VARCHAR, i), CONVERT(VARCHAR, i), N'零件 Part ' + CONVERT(VARCHAR, i), "
      L"'M-' + CONVERT(VARCHAR, i), 2, 1, 1 FROM #n");
  writer.Run(
      L"INSERT INTO t_Item (FItemID, FItemClassID, FNumber, FName) SELECT FItemID, 4, FNumber, FName FROM "
      L"t_ICItem");
  // Ten by ten: a root and its nine children.
  writer.CountTo(groups);
  writer.Run(L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) SELECT i, 'G' + "
             L"CONVERT(VARCHAR, i), N'组 Group ' + CONVERT(VARCHAR, i), CASE WHEN i % 10 = 1 THEN 0 ELSE i - "
             L"(i - 1) "
             L"% 10 END, i - (i - 1) % 10 FROM #n");
}

void Boms(Writer& writer, const Size& size) {
  writer.CountTo(size.boms);
  writer.Run(
      L"INSERT INTO ICBOM (FInterID, FBOMNumber, FUseStatus, FVersion, FParentID, FItemID, FUnitID, FStatus, "
      L"FNote) SELECT i, 'BOM' + CONVERT(VARCHAR, 1000000 + i), 1072, '1.0', 1 + i % " +
      std::to_wstring(size.groups) + L", 1 + i % 1000, 1, 1, N'备注 Note ' + CONVERT(VARCHAR, i) FROM #n");
  writer.CountTo(size.linesPerBom);
  // Millions of lines in one transaction would all lie in the log before they go into the file.
  constexpr int32_t kBomsAtOnce = 10000;
  for (int32_t begin = 0; begin < size.boms; begin += kBomsAtOnce) {
    writer.Run(
        L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FQty, FOperSN, FOperID, "
        L"FStockID, FNote) SELECT a.FInterID, n.i, 1 + (a.FInterID + n.i) % 1000, 1, n.i, n.i, 10, 40004, 801, "
        L"N'行 Line' FROM ICBOM a, #n n WHERE a.FInterID > " +
        std::to_wstring(begin) + L" AND a.FInterID <= " + std::to_wstring(begin + kBomsAtOnce));
    writer.Run(L"COMMIT TRAN BEGIN TRAN");
  }
}

void LineFields(Writer& writer, int32_t fields) {
  writer.Run(L"INSERT INTO ICTransactionType (FID, FName, FTemplateID) VALUES (50, 'BOM', 'Z01')");
  for (int32_t i = 1; i <= fields; ++i) {
    const std::wstring field = L"FEntrySelfZ01" + std::to_wstring(30 + i);
    // Every other one is looked up.
    writer.Run(
        L"INSERT INTO ICTemplateEntry (FID, FCtlOrder, FFieldName, FLookUpCls, FDefaultCtl) VALUES ('Z01', " +
        std::to_wstring(30 + i) + L", '" + field + L"', " + (i % 2 == 0 ? L"8" : L"-1") + L", 0)");
    writer.Run(
        L"INSERT INTO ICUserDefinedValue (FTranType, FInterID, FEntryID, FFieldName, FID, FName) SELECT 50, "
        L"FInterID, FEntryID, '" +
        field + L"', CONVERT(VARCHAR, FEntryID), N'名称 ' + CONVERT(VARCHAR, FEntryID) FROM ICBOMChild");
  }
}

} // namespace

void Build(const std::wstring& file, const Size& size) {
  for (const wchar_t* suffix : {L"", L"-wal", L"-shm"}) DeleteFileW((file + suffix).c_str());
  Writer writer(file);
  writer.RunScript(SOURCE_DIR "/standin/database/schema.sql");
  writer.RunScript(SOURCE_DIR "/standin/database/procedures.sql");
  writer.Run(L"BEGIN TRAN");
  BaseData(writer, size.groups);
  if (size.boms > 0) Boms(writer, size);
  if (size.largeBom > 0) {
    const std::wstring id = std::to_wstring(size.boms + 1);
    writer.CountTo(size.largeBom);
    writer.Run(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID, FUnitID, FParentID) VALUES (" + id +
               L", 'LARGE', 1, 1, 1)");
    writer.Run(L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FStockID) SELECT " + id +
               L", i, 1 + i % 1000, 1, 801 FROM #n");
  }
  LineFields(writer, size.lineFields);
  writer.Run(L"COMMIT TRAN");
}

} // namespace bench
