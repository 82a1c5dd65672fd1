// A libFuzzer target: any text is parsed and run as a batch on a small in-memory database. Nothing may crash,
// leak or run for good; the engine may refuse what it likes, but never with SQLite's own complaint about a
// statement that the engine made (823), and afterwards the session works.
#include "tsql/tsql.h"

#include <cstdio>
#include <cstdlib>

namespace {

using namespace tsql; // NOLINT(google-build-using-namespace): a program of one file

constexpr const char* kSetup = R"(
CREATE TABLE ICBOM (FBrNo varchar(10) NOT NULL DEFAULT '0', FInterID int NOT NULL PRIMARY KEY,
  FBOMNumber varchar(300) NOT NULL DEFAULT '', FUseStatus int NOT NULL DEFAULT 1073, FParentID int NULL,
  FItemID int NOT NULL, FQty decimal(28,10) NOT NULL DEFAULT 1, FStatus int NOT NULL DEFAULT 0,
  FBomType int NOT NULL DEFAULT 0, FCustID int NULL, FCheckerID int NULL, FEnterTime datetime NULL, FNote nvarchar(100) NULL)
CREATE TABLE ICBOMChild (FInterID int NOT NULL, FEntryID int NOT NULL, FItemID int NOT NULL,
  FAuxQty decimal(28,10) NOT NULL DEFAULT 0, FQty decimal(18,4) NULL, FUnitID int NULL, FPercent float NULL,
  PRIMARY KEY (FInterID, FEntryID))
CREATE TABLE ICBOMGroup (FInterID int IDENTITY(10,1), FNumber varchar(200) NULL UNIQUE, FName nvarchar(200) NULL,
  FParentID int NOT NULL DEFAULT 0 CHECK (FParentID >= 0), FBootID int NULL)
CREATE TABLE t_ICItem (FItemID int NOT NULL PRIMARY KEY, FNumber varchar(80) NULL, FShortNumber char(10) NULL,
  FName nvarchar(255) NULL, FModel text NULL, FErpClsID smallint NULL, FPrice money NULL, FDeleted bit NULL)
CREATE TABLE ICMaxNum (FTableName varchar(80) NOT NULL, FMaxNum bigint NULL)
INSERT INTO ICBOM (FInterID, FBOMNumber, FParentID, FItemID, FStatus) VALUES (1, 'B1', 10, 1, 1), (2, 'b2 ', NULL, 2, 0)
INSERT INTO ICBOMChild VALUES (1, 1, 2, 1.5, 1.5, 1, 50), (1, 2, 1, 2, NULL, 2, NULL)
INSERT INTO ICBOMGroup (FNumber, FName, FParentID) VALUES ('01', N'成品', 0), ('01.01', N'车', 10)
INSERT INTO t_ICItem VALUES (1, '01.001', '001', N'自行车 Bike', 'x', 2, 12.5, 0), (2, NULL, NULL, NULL, NULL, NULL, NULL, 1)
INSERT INTO ICMaxNum VALUES ('ICBOM', 41), ('ICBOMGroup', NULL))";

[[noreturn]] void Complain(const char* what, const std::string& detail) {
  std::fprintf(stderr, "%s: %s\n", what, detail.c_str());
  std::abort();
}

struct Sink : ResultSink {
  void BeginRows(std::span<const Column> /*columns*/) override {}
  void Row(std::span<const Value> /*values*/) override { ++rows; }
  void EndRows(int64_t /*count*/) override {}
  void RowCount(int64_t /*count*/) override {}
  void Message(const Error& /*info*/) override {}
  void Failed(const Error& error) override {
    constexpr int kStorageError = 823;
    if (error.number == kStorageError) Complain("storage error", error.what());
    last = error.what();
  }
  int rows = 0;
  std::string last;
};

void Must(Session& session, std::string_view batch) {
  Sink sink;
  if (!session.Execute(batch, {}, sink)) Complain("refused", sink.last);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr int64_t kSteps = 1000;
  const auto database = Database::Open(":memory:fuzz", OpenMode::Create);
  {
    const auto session = Session::Open(database);
    Must(*session, kSetup);
    session->SetNow(DateTime{46143, 0});
    session->SetLockTimeout(0);
    session->SetWorkLimit(kSteps);
    std::vector<Parameter> parameters(2);
    parameters[0].type.id = TypeId::Int;
    parameters[0].value.kind = Value::Kind::Integer;
    parameters[0].value.integer = 1;
    parameters[1].name = "@text";
    parameters[1].type.id = TypeId::NVarChar;
    parameters[1].type.length = 30;
    parameters[1].output = true;
    parameters[1].value.kind = Value::Kind::Text;
    parameters[1].value.text = "IC";
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Sink sink;
    const bool succeeded = session->Execute(text, parameters, sink);
    if (succeeded != sink.last.empty()) Complain("result and report differ", sink.last);
    // The same again, from the compiled batch.
    session->Execute(text, parameters, sink);
    session->SetWorkLimit(std::nullopt);
    if (session->TransactionCount() > 0) session->Rollback();
    Sink after;
    if (!session->Execute("SET NOCOUNT OFF SELECT 1", {}, after) || after.rows != 1)
      Complain("the session", after.last);
  }
  // Nothing of it is left that would hinder the next session.
  Must(*Session::Open(database), "CREATE TABLE [~another] (a int) DROP TABLE [~another]");
  return 0;
}
