// Every statement that the component sends, as it sends it (statements/*.sql), on the schema and the
// factory's data: the rows that come back, the counts of what changes, or the error. The values follow from
// the data as factory.sql describes it. Each case runs in a transaction that is rolled back.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "tests/tsql/EngineFixture.h"
#include "tsql/Script.h"

namespace tsql::test {
namespace {

const std::string kRoot = TSQL_SOURCE_DIR;

std::string ReadText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.good()) << path;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

struct Case {
  std::vector<const char*> files; // run in this order; what is expected is the last one's
  const char* columns = "";       // of the result that `rows` shows, by name; all of them if empty
  Lines rows = {};                // of the only result; "#n" for a number of rows alone
  std::vector<int64_t> counts = {};
  int error = 0;
  const char* check = ""; // a query about the data afterwards, and its rows
  Lines after = {};
};

std::ostream& operator<<(std::ostream& out, const Case& value) {
  return out << value.files.back();
}

// Keeps the last result's columns apart, so that a case can name those it is about.
struct Table : Output {
  void BeginRows(std::span<const Column> rowColumns) override {
    Output::BeginRows(rowColumns);
    cells.clear();
  }
  void Row(std::span<const Value> values) override {
    Output::Row(values);
    cells.emplace_back();
    for (const Value& value : values) cells.back().push_back(ToText(value));
  }
  std::vector<Lines> cells;
};

Lines Pick(const Table& table, std::string_view names) {
  std::vector<size_t> picked;
  while (!names.empty()) {
    const std::string_view name = names.substr(0, names.find(','));
    names.remove_prefix(std::min(name.size() + 1, names.size()));
    const std::vector<Column>& columns = table.columns.back();
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const Column& column) { return column.name == name; });
    EXPECT_NE(found, columns.end()) << name;
    if (found != columns.end()) picked.push_back(static_cast<size_t>(found - columns.begin()));
  }
  Lines lines;
  for (const Lines& row : table.cells) {
    std::string line;
    for (size_t i = 0; i < picked.size(); ++i) line += (i > 0 ? "|" : "") + row[picked[i]];
    lines.push_back(line);
  }
  return lines;
}

class ComponentCorpusTest : public ::testing::TestWithParam<Case> {
 protected:
  static void SetUpTestSuite() {
    database_ = Database::Open(":memory:corpus", OpenMode::Create);
    const auto session = Session::Open(database_);
    for (const char* script : {"standin/database/schema.sql", "standin/database/factory.sql"}) {
      std::ifstream file(kRoot + "/" + script, std::ios::binary);
      ScriptReader reader(file);
      while (const std::optional<ScriptBatch> batch = reader.Next()) {
        Output output;
        ASSERT_TRUE(session->Execute(batch->text, {}, output)) << script << ": " << output.errors[0].what();
      }
    }
  }
  static void TearDownTestSuite() { database_.reset(); }

  ComponentCorpusTest() : session_(Session::Open(database_)) {
    session_->SetNow(DateTime{46143, 15 * 60 * 300}); // 2026-05-03 00:15
    session_->Begin();
  }
  ~ComponentCorpusTest() override {
    if (session_->TransactionCount() > 0) session_->Rollback();
  }

  Table Run(const std::string& batch) {
    Table table;
    session_->Execute(batch, {}, table);
    return table;
  }

  static std::shared_ptr<Database> database_;
  std::unique_ptr<Session> session_;
};

std::shared_ptr<Database> ComponentCorpusTest::database_;

TEST_P(ComponentCorpusTest, RunsAsSent) {
  const Case& expected = GetParam();
  Table table;
  for (const char* file : expected.files) table = Run(ReadText(kRoot + "/statements/" + file + ".sql"));
  if (expected.error != 0) {
    ASSERT_EQ(table.errors.size(), 1U);
    EXPECT_EQ(table.errors[0].number, expected.error) << table.errors[0].what();
    EXPECT_TRUE(table.results.empty());
    return;
  }
  for (const Error& error : table.errors)
    ADD_FAILURE() << error.number << ", line " << error.line << ": " << error.what();
  EXPECT_EQ(table.counts, expected.counts);
  const bool wantsRows = !expected.rows.empty() || expected.columns[0] != '\0';
  ASSERT_EQ(table.results.size(), wantsRows ? 1U : 0U);
  if (wantsRows && expected.columns[0] != '\0') {
    EXPECT_EQ(Pick(table, expected.columns), expected.rows);
  } else if (wantsRows) {
    EXPECT_EQ("#" + std::to_string(table.results[0].size()), expected.rows[0]);
  }
  if (expected.check[0] != '\0') {
    const Table after = Run(expected.check);
    ASSERT_EQ(after.results.size(), 1U);
    EXPECT_EQ(after.results[0], expected.after);
  }
}

std::string NameOf(const ::testing::TestParamInfo<Case>& info) {
  std::string name = info.param.files.back();
  for (char& character : name)
    if (character == '.') character = '_';
  return name + "_" + std::to_string(info.index);
}

Case Rows(const char* file, const char* columns, Lines rows) {
  return {.files = {file}, .columns = columns, .rows = std::move(rows)};
}
Case Fails(const char* file, int error) {
  return {.files = {file}, .error = error};
}
Case Changes(const char* file, std::vector<int64_t> counts, const char* check, Lines after) {
  return {.files = {file}, .counts = std::move(counts), .check = check, .after = std::move(after)};
}

const Case kCases[] = {
    Changes("BomUpdate.BeginSave", {4}, "SELECT FInterID FROM ICBOM WHERE FItemID=101 AND FUseStatus=1072",
            {}),
    Rows("BomUpdate.EndSave.read", "FEcnInterId", {"NULL"}),
    Changes("BomUpdate.EndSave.stamp", {1}, "SELECT FOperatorID, FEnterTime FROM ICBOM WHERE FInterID=1005",
            {"16401|2026-05-03"}),
    Changes("BomUpdate.EndSave.customer.stamp", {1},
            "SELECT FEnterTime, FCheckID, FCheckDate, FUseStatus, FParentID FROM ICBOM WHERE FInterID=3001",
            {"2026-05-03|16401|46143:0|1073|2001"}),
    Changes("BomUpdate.EndSave.quantity", {4},
            "SELECT FQty FROM ICBOMChild WHERE FInterID=1005 ORDER BY FEntryID",
            {"1.0000000000", "36.0000000000", "1.0000000000", "101.0000000000", "7.0000000000"}),
    Changes(
        "BomUpdate.EndSave.customer.quantity", {6},
        "SELECT FQty FROM ICCustBOMChild WHERE FInterID=3001 ORDER BY FEntryID",
        {"1.0000000000", "1.0000000000", "1.0000000000", "0.1800000000", "1.0000000000", "36.0000000000"}),
    Changes("BomUpdate.EndSave.planning.validity", {2},
            "SELECT DISTINCT FBeginDay, FEndDay FROM ICBOMChild WHERE FInterID=2002", {"0:0|73049:0"}),
    Changes("BomUpdate.EndSave.validity", {},
            "SELECT DISTINCT CONVERT(varchar(10),FBeginDay,120), CONVERT(varchar(10),FEndDay,120) FROM "
            "ICBOMChild WHERE FInterID=1005",
            {"2026-01-01|2030-12-31"}),
    Changes("BomUpdate.UpdateIcBomStatus", {1}, "SELECT FStatus, FUseStatus FROM ICBOM WHERE FInterID=1003",
            {"1|1072"}),
    Fails("BomUpdate.UpdateIcBomStatus.quote", 102),
    {.files = {"BomUpdate.AddBomGroup.top"},
     .columns = "NewInterId",
     .rows = {"8"},
     .check = "SELECT FInterID, FParentID, FBootID, FNumber FROM ICBOMGroup g JOIN ICMaxNum m ON m.FMaxNum = "
              "g.FInterID AND m.FTableName = 'icbomgroup'",
     .after = {"8|0|8|04"}},
    {.files = {"BomUpdate.AddBomGroup.child"},
     .columns = "NewInterId",
     .rows = {"8"},
     .check = "SELECT FInterID, FParentID, FBootID, FNumber FROM ICBOMGroup g JOIN ICMaxNum m ON m.FMaxNum = "
              "g.FInterID AND m.FTableName = 'icbomgroup'",
     .after = {"8|3|1|01.02.02"}},
    Fails("BomUpdate.AddBomGroup.quote", 102),
    Changes("BomUpdate.UpdateBomGroup", {1},
            "SELECT FNumber, FName, FParentID FROM ICBOMGroup WHERE FInterID=2", {"01.03|城市车 City|1"}),
    Fails("BomUpdate.UpdateBomGroup.none", 156),
    {.files = {"BomUpdate.DeleteBom"},
     .columns = "Succ",
     .rows = {"1"},
     .check = "SELECT COUNT(*) FROM ICBOM WHERE FInterID=1001",
     .after = {"0"}},
    {.files = {"BomUpdate.DeleteBom.audited"},
     .columns = "Succ",
     .rows = {"0"},
     .check = "SELECT COUNT(*) FROM ICBOM WHERE FInterID IN (1001,1002)",
     .after = {"2"}},
    Fails("BomUpdate.DeleteBom.noFilter", 102),
    Changes("BomUpdate.DeleteBomGroup", {1}, "SELECT FInterID FROM ICBOMGroup WHERE FParentID=3", {}),
    Changes("BomUpdate.UpdateBOM", {1}, "SELECT FVersion, FNote FROM ICBOM WHERE FInterID=1002",
            {"2.1|改 Changed"}),
    Rows("BomUpdate.CheckBomUsed", "FTableName,FBomInterID", {"成本对象表|1002", "销售订单|1002"}),
    Changes("BomUpdate.SetVisibelBySysProfile", {12},
            "SELECT DISTINCT FVisible FROM ICTableFieldInfo WHERE FName='FBeginDay'", {"0"}),
    Rows("CBomCheck.BomCheck.read", "FInterID,FBillNo,FCheckID,FStatus", {"1005|BOM000005|16401|0"}),
    Changes("CBomCheck.BomCheck.audit", {1},
            "SELECT FStatus, FCheckerID, FAudDate, FBeenChecked FROM ICBOM WHERE FInterID=1005",
            {"1|16402|46143:0|1"}),
    Rows("CBomCheck.BomUndoCheck.read", "FInterID,FBillNo,FCheckID,FStatus,FCheckerID",
         {"1006|BOM000006|16401|1|16402"}),
    Changes("CBomCheck.BomUndoCheck.undo", {1},
            "SELECT FUseStatus, FStatus, FCheckerID, FAudDate, FBeenChecked FROM ICBOM WHERE FInterID=1006",
            {"1073|0|NULL|NULL|0"}),
    Rows("Shared.BomUsed", "FTableName,FBomInterID", {"成本对象表|1002", "销售订单|1002"}),
    Rows("Shared.CustomerBomUsed", "FTableName,FBomInterID", {"客户BOM批次表|3001", "销售订单|3001"}),
    Rows("CBomCheck.GetBomDelInfo.customer", "FInterID", {"3001"}),
    Rows("CBomCheck.GetBomDelInfo.children", "FInterID", {"3001", "3002", "3003"}),
    Rows("CBomCheck.GetBomModifyInfo.customer", "FInterID", {"3001"}),
    Rows("BomView.GetBomGroupList.all", "FRelative,FKey,FTag",
         {"qa|1|01", "qa|1|01", "qa|1|01", "BOMGROUP 1|3|01.02", "BOMGROUP 1|3|01.02", "BOMGROUP 1|2|01.01",
          "BOMGROUP 3|7|01.02.01", "qa|4|02", "BOMGROUP 4|5|02.01", "qa|6|03"}),
    Rows("BomView.GetBomGroupList.raw", "FBootID,FIndex,FInterID",
         {"1|2|1", "1|1|3", "1|0|2", "1|0|7", "4|1|4", "4|0|5", "6|0|6"}),
    Rows("BomView.GetBomGroupList.selected", "FKey", {"1", "1", "1", "3", "2", "2", "7"}),
    Rows("BomView.GetBomGroupList.filters", "FBootID,FIndex,FInterID,FParentID,FNumber",
         {"1|1|1|0|01", "1|0|2|1|01.01"}),
    Fails("BomView.GetBomGroupList.quote", 102),
    Rows("BomView.GetBomLstInfo", "FInterID,FBomNumber,FImgNormal",
         {"1001|BOM000001|3", "1002|BOM000002|13", "1003|BOM000003|13", "1004|BOM000004|13",
          "1005|BOM000005|13", "1006|BOM000006|3", "1007|BOM000007|13", "1008|BOM000008|13",
          "1009|BOM000009|3", "1010|BOM000010|3", "2002|PLN000001|18"}),
    Rows("BomView.GetBomLstInfo.JH", "FInterID,FNumber", {"1002|001", "1005|002", "1008|003"}),
    Rows("BomView.GetBomLstInfo.find", "FInterID,FNumber", {"1005|02.002", "1006|02.003", "1008|02.003"}),
    Rows("Shared.UseShortNumber", "FValue", {"0"}),
    Rows("BomView.GetBomList", "", {"#25"}),
    Rows("BomView.GetBomList.filter", "FKey,FRelative,FNumber",
         {"gc1010|gb2|001", "gc1009|gb2|001", "gc1008|gb5|003", "gc1007|gb4|004", "gc1006|gb5|003",
          "gc1005|gb5|002", "gc1004|gb4|001", "gc1003|gb3|002", "gc1002|gb2|001", "gc1001|gb2|001"}),
    Fails("BomView.GetCustBomList", 205),
    {.files = {"Shared.BuildBomItemID", "BomView.GetBomSimplifyList"}, .columns = "", .rows = {"#17"}},
    {.files = {"Shared.BuildBomItemID", "BomView.GetBomSimplifyList.filter"},
     .columns = "FKey,FRelative",
     .rows = {"ga|", "gb1|ga", "gb2|gb1", "gb3|gb1", "gb4|ga", "gb5|gb4", "gb6|ga", "gc1002|gb2",
              "gc1004|gb4", "gc1006|gb5", "gc1007|gb4", "gc1008|gb5", "gc2001|gb6", "gc2003|gb6",
              "gc2004|gb6", "gc3001|gc2001", "gc3002|gc2001"}},
    {.files = {"Shared.BuildBomItemID", "BomView.GetCustBomSimplifyList"}, .columns = "", .rows = {"#11"}},
    {.files = {"BomView.GetCustBomSimplifyList.filter.build", "BomView.GetCustBomSimplifyList.emptyWhere"},
     .error = 102},
    {.files = {"Shared.BuildBomItemID", "BomView.GetBomSimplifyListEx"}, .columns = "", .rows = {"#15"}},
    {.files = {"BomView.GetBomSimplifyListEx.ecn.build", "BomView.GetBomSimplifyListEx.ecn"},
     .columns = "FKey,FErpClsName",
     .rows = {"ga|", "gb1|", "gb2|", "gb4|", "gb5|", "gb6|", "gc1002|自制 Made", "gc1004|自制 Made",
              "gc1006|自制 Made", "gc1007|虚拟件 Phantom", "gc1008|自制 Made", "gc2001|配置类 Configured",
              "gc2003|特征类 Feature", "gc2004|特征类 Feature", "gc3001|配置类 Configured",
              "gc3002|自制 Made"}},
    {.files = {"Shared.BuildBomItemID", "Shared.DropBomItemID"}},
    {.files = {"Shared.BuildBomItemID", "BomView.GetBomSimplifyListEx.ecn.build"}, .error = 2714},
    Rows("BomView.ExistsEcnBill", "FEcnCount", {"2"}),
    Rows("BomView.GetBomTitle.chs", "FName,FCaption",
         {"FBOMNumber|BOM单编号", "FVersion|版本", "FNumber|物料代码", "FName|物料名称", "FModel|规格型号",
          "FUnitID|单位", "FAuxQty|数量", "FYield|成品率(%)", "FUseStatus|使用状态", "FStatus|审核状态"}),
    Rows("BomView.GetBomTitle.cht", "FName,FCaption",
         {"FBOMNumber|BOM單編號", "FNumber|物料代碼", "FName|物料名稱", "FModel|規格型號", "FUnitID|單位",
          "FAuxQty|數量", "FYield|成品率(%)", "FUseStatus|使用狀態", "FStatus|審核狀態"}),
    Rows("BomView.GetBomEntryTitle.en", "FName,FCtlName,FCaption",
         {"FEntryID|BOM Query|Line", "FNumber|BOM Query|Item Number", "FItemName|BOM Query|Item Name",
          "FUnitID|BOM Query|Unit", "FAuxQty|BOM Query|Quantity", "FScrap|BOM Query|Scrap (%)",
          "FStockID|BOM Query|Warehouse"}),
    Rows("BomView.GetCustBomTitle", "FName", {"FBOMNumber", "FNumber", "FName", "FUseStatus"}),
    Fails("BomView.GetCustBomEntryTitle", 102),
    Rows("Shared.UserDefinedTitles", "FFieldName,FOrder,FCaption,FHeadSecond",
         {"FHeadSelfZ0140|1040|图纸号|", "FHeadSelfZ0141|1041|责任部门|"}),
    Rows("BomView.GetBomEntryUserDefinedTitle.en", "FFieldName,FLdgNum,FOrder,FCaption",
         {"FEntrySelfZ0130|1|1030|Supplier Part Number"}),
    Rows("Shared.ComponentExtension", "FComponentExt", {}),
    Rows("BomView.GetBomLdgInfo", "", {"#17"}),
    Rows("BomView.GetBomLdgInfo.ext",
         "FBOMNumber,FStatus,FRoutingNo,FUseStatus,FGroupName,FErpClsName,FGMPExpectQty",
         {"BOM000001|未审核|RT001|未使用|城市车 City bikes|自制 Made|0.0000000000",
          "BOM000009|未审核|NULL|未使用|城市车 City bikes|自制 Made|0.0000000000",
          "BOM000010|未审核|NULL|未使用|城市车 City bikes|自制 Made|0.0000000000"}),
    Rows("BomView.GetBomEntryLdgInfo", "", {"#46"}),
    Rows(
        "BomView.GetBomEntryLdgInfo.period",
        "FEntryID,FAlterBackColor,FBackColor,FOperSN,FOperID,FForbitUse,FIsKeyItem,FSPID,FStockID,FGMPUnitID",
        {"1|0|253, 223, 223|20|装配 Assembly|否|是||零件仓 Parts|NULL",
         "2|0|253, 223, 223|20|装配 Assembly|否|否||零件仓 Parts|NULL",
         "3|0|253, 223, 223|20|装配 Assembly|否|否||零件仓 Parts|NULL",
         "4|1|253, 223, 223|20|装配 Assembly|是|否|A区01架 Rack A-01|零件仓 Parts|NULL"}),
    Rows("BomView.GetCustBomLdgInfo", "FInterID,FUseStatus,FUnitID",
         {"3001|使用|件", "3002|使用|件", "3003|未使用|件"}),
    Rows("BomView.GetCustBomEntryLdgInfo", "FEntryID,FunitID,FOperSN,FSPID,FErpClsName",
         {"1|件||*|自制 Made", "2|件||*|自制 Made", "3|件||*|自制 Made", "4|克||*|外购 Purchased",
          "5|件||*|外购 Purchased", "6|打||*|外购 Purchased"}),
    Rows("Shared.UserDefinedFields.head", "FFieldName", {"FHeadSelfZ0140", "FHeadSelfZ0141"}),
    Rows("Shared.UserDefinedFields.entry", "FFieldName", {"FEntrySelfZ0130"}),
    Rows("CBomFunction.GetBomCodeNum.rule", "FPreLetter,FSufLetter,FCurNo,FFormat", {"BOM||11|000000"}),
    Rows("CBomFunction.GetBomCodeNum.taken", "FInterID", {"1009"}),
    Changes("CBomFunction.GetBomCodeNum.raise", {1}, "SELECT FCurNo FROM ICBillNo WHERE FBillID=50", {"12"}),
    Rows("CBomFunction.UpdateBomNumber.taken.check", "FInterID", {"1002"}),
    Changes("CBomFunction.UpdateBomNumber", {1},
            "SELECT FEnterTime, FBOMNumber FROM ICBOM WHERE FInterID=1009", {"2026-05-03|BOM000099"}),
    Rows("CBomFunction.CopyBom.head", "FBrNo,FInterID,FVersion", {"0|1002|2.0"}),
    Rows("CBomFunction.CopyBom.headAll", "FInterID,FFee", {"1002|0.0000000000"}),
    Rows("CBomFunction.CopyBom.line", "FEntryID,FInterID", {"1|1002"}),
    Rows("CBomFunction.CopyBom.lineAll", "", {"#9"}),
    Changes(
        "CBomFunction.CopyBom", {1, 9},
        "SELECT b.FBOMNumber, b.FUseStatus, b.FParentID, b.FCheckID, b.FCheckDate, b.FStatus, b.FCheckerID, "
        "b.FAudDate, b.FRoutingID, COUNT(*), SUM(c.FEntryID), MAX(c.FBeginDay) FROM ICBOM b JOIN ICBOMChild "
        "c ON c.FInterID = b.FInterID WHERE b.FInterID=3004 GROUP BY b.FBOMNumber, b.FUseStatus, "
        "b.FParentID, b.FCheckID, b.FCheckDate, b.FStatus, b.FCheckerID, b.FAudDate, b.FRoutingID",
        {"BOM000012|1073|3|16403|46143:0|0|0|NULL|701|9|45|46052:0"}),
    Rows("CBomFunction.GetRoutingData", "finterid,FBomNumber,FItemID,FRoutingID,FBomType,FErrInfo",
         {"1009|BOM000009|101||0|工艺路线不存在", "1003|BOM000003|303||1|子项物料工序在父项无对应的工艺路线",
          "1004|BOM000004|401||1|子项物料工序在父项无对应的工艺路线",
          "1004|BOM000004|402||1|子项物料工序在父项无对应的工艺路线"}),
    Rows("CBomFunction.GetRoutingData.one", "finterid,FItemID,FBomType", {"1009|101|0"}),
    Changes("CBomFunction.UpdateBomRouting.head", {1, 1},
            "SELECT FRoutingID, FOperatorID, FOperID FROM ICBOM b, ICBOMChild c WHERE b.FInterID=c.FInterID "
            "AND b.FInterID=1009",
            {"0|16403|0"}),
    Changes("CBomFunction.UpdateBomRouting.line", {1, 1},
            "SELECT FItemID, FOperID FROM ICBOMChild WHERE FInterID=1004 ORDER BY FEntryID",
            {"401|0", "402|40003"}),
    Changes("CBomFunction.UpdateBomGroup", {1},
            "SELECT FParentID, FEnterTime, FOperatorID FROM ICBOM WHERE FInterID=1009",
            {"7|2026-05-03|16403"}),
    Changes("CBomFunction.UpdateBomGroupName", {1}, "SELECT FName FROM ICBOMGroup WHERE FInterID=7",
            {"样车 Prototype"}),
    Rows("BomInfo.GetBomInfo", "", {"#17"}),
    Rows("BomInfo.GetBomInfo.table", "FItemID", {"203", "202"}),
    Rows("BomInfo.GetBomEntryInfo", "FEntryID,FAuxQty,FStockID",
         {"1|1.0000000000|802", "2|1.0000000000|802", "3|1.0000000000|802", "4|1.0000000000|0",
          "5|1.0000000000|802", "6|1.0000000000|802", "7|2.5000000000|802", "8|1.0000000000|802",
          "9|180.0000000000|801"}),
    Rows("BomInfo.GetBomGroupInfo", "FInterID", {"1", "2", "3", "7", "4", "5", "6"}),
    Rows("BomInfo.GetItemForbitNumber", "FInterId,HSum,ESum", {"1001|0|1"}),
    Rows("BomInfo.GetBomInfoByItemNumber", "FUseStatus,FBomNumber,FUnitName,AuxName",
         {"未使用|BOM000001|件|NULL", "使用|BOM000002|件|NULL", "未使用|BOM000009|件|NULL",
          "未使用|BOM000010|件|NULL"}),
    Rows("BomInfo.GetBomInfoByBomNumber", "FUseStatus,FInterID,FItemNumber", {"使用|1002|01.001"}),
    Rows("BomInfo.GetBomInfoByItemNumber1", "FName,FModel,FUnitName", {"城市自行车 City bike|CB-28|件"}),
    Rows("BomInfo.SelectBomInfoByItemNumber", "FInterID,FUnitGroupID,FCoefficient", {"1002|1|1.0000000000"}),
    Rows("BomInfo.GetBomInfoLikeInfo", "FNumber,FHelpCode",
         {"01.002|SDZXC", "02.001|CJ", "02.002|QL", "02.003|HL", "02.004|CDXT"}),
    Rows("BomInfo.GetBomInfoByItemID", "FInterID", {"1008"}),
    Rows("BomInfo.GetBomList", "FUseStatus,FInterID", {"未使用|1001", "使用|1002", "未使用|1009"}),
    Rows("BomInfo.GetAllBomList", "FUseStatus,FInterID", {"未使用|1006", "使  用|1008"}),
    Rows("BomInfo.GetChildBomInfoByBomNo", "FNumber,FAuxQty,FUnitName,FCoefficient",
         {"03.005|1.0000000000|件|1.0000000000", "03.004|3.0000000000|打|12.0000000000",
          "03.006|1.0000000000|套|NULL", "03.008|2.0000000000|卷|50.0000000000",
          "03.009|1.0000000000|NULL|NULL"}),
    Rows("BomInfo.GetChildBomInfoByItemID", "FinterID,FNumber",
         {"1008|03.005", "1008|03.004", "1008|03.006"}),
    Changes("BOMImport.UpdateBomGroup.delete", {1}, "SELECT FInterID FROM ICBOMGroup WHERE FNumber='03'", {}),
    Rows("BOMImport.UpdateBomGroup.counter", "FMaxNum", {"7"}),
    Changes("BOMImport.UpdateBomGroup.insert", {1}, "SELECT FBrNo, FBootID FROM ICBOMGroup WHERE FInterID=8",
            {"0|NULL"}),
    Changes("BOMImport.UpdateBomGroup.raise", {1},
            "SELECT FMaxNum FROM ICMaxNum WHERE FTableName='ICBOMGroup'", {"8"}),
    Changes("BOMImport.UpdateBOM.deleteLines", {3}, "SELECT FEntryID FROM ICBOMChild WHERE FInterID=1006",
            {}),
    Changes("BOMImport.UpdateBOM.deleteBom", {1}, "SELECT FInterID FROM ICBOM WHERE FBOMNumber='BOM000006'",
            {}),
    Rows("Shared.BomCounter", "FMaxNum", {"3003"}),
    Changes("BOMImport.UpdateBOM.insertBom", {1},
            "SELECT FBrNo, FUseStatus, FYield, FTranType, FUnitID, FNote FROM ICBOM WHERE FInterID=3004",
            {"|1072|98.5000000000|50|0|导入 Imported"}),
    Changes("BOMImport.UpdateBOM.insertLine", {1},
            "SELECT FQty, FAuxQty, FScrap, FBeginDay FROM ICBOMChild WHERE FInterID=3004",
            {"0.0000000000|1.0000000000|2.5000000000|0:0"}),
    Changes("BOMImport.UpdateBOM.raise", {1}, "SELECT FMaxNum FROM ICMaxNum WHERE FTableName='ICBOM'",
            {"3004"}),
    Fails("BOMImport.UpdateBOM.insertLine.noQuantity", 102),
    Changes("PPorderImort.UpdatePPOrder.deleteLines", {2}, "SELECT FEntryID FROM PPOrderEntry", {}),
    Changes("PPorderImort.UpdatePPOrder.deleteOrder", {1}, "SELECT FInterID FROM PPOrder", {}),
    Rows("PPorderImort.UpdatePPOrder.counter", "FMaxNum", {"1"}),
    Changes("PPorderImort.UpdatePPOrder.insertOrder", {1},
            "SELECT FBillNo, FTranType, FCheckerID, CONVERT(varchar(10), FCheckDate, 120) FROM PPOrder WHERE "
            "FInterID=2",
            {"|87|2026-05-02|1944-11-28"}),
    Changes("PPorderImort.UpdatePPOrder.insertLine", {1},
            "SELECT FQty, CONVERT(varchar(10), FNeedDate, 120), FNote FROM PPOrderEntry WHERE FInterID=2",
            {"30.0000000000|2026-07-31|急 Urgent"}),
    Changes("PPorderImort.UpdatePPOrder.raise", {1},
            "SELECT FMaxNum FROM ICMaxNum WHERE FTableName='PPOrder'", {"2"}),
    Rows("CEcnInfo.EndSave.duplicate", "FChildID,FEntryID,FEcnBeginDay", {}),
    Rows("CEcnInfo.EndSave.deleted", "", {"#1"}),
    Rows("CEcnInfo.EndSave.percent", "", {"#1"}),
    Changes("CEcnInfo.EndSave.snapshot", {2},
            "SELECT FEntryID, FOldItemID, FOldQty, FOldUnitID, FOldEndDay, FOldNote FROM IcEcnEntry WHERE "
            "FInterID=6 ORDER BY FEntryID",
            {"1|NULL|NULL|NULL|NULL|NULL", "2|302|1.0000000000|101|73049:0|",
             "3|310|1.0000000000|101|46385:0|夏季促销 Summer offer"}),
    Rows("CEcnInfo.GetThenCheckCBomNumber", "FInterId", {"1008"}),
    Rows("CEcnInfo.GetCheckCBomNoChecked", "FInterId", {"1005"}),
    Rows("CEcnInfo.ReturnEcnStatus", "FStatus", {"2"}),
    Rows("CEcnInfo.ReturnEcnStatusByNumber", "FStatus", {"1"}),
    Rows("CEcnInfo.CheckBomUsed.later", "FBillNO", {}),
    Rows("CEcnInfo.CheckBomUsed.usage", "FTableName,FBomInterID", {"计划订单|1008", "重复生产任务单|1008"}),
    Rows("CEcnInfo.CheckEcnBom", "FRelateCount", {"1"}),
    Changes("CEcnInfo.StarUpEcn", {},
            "SELECT b.FBOMNumber, b.FStatus, b.FUseStatus, b.FEcnInterID, b.FCheckerID, b.FEnterTime, "
            "c.FEntryID, c.FItemID FROM ICBOM b, ICBOMChild c, IcEcn e, ICMaxNum m WHERE "
            "b.FInterID=c.FInterID AND b.FInterID=3004 AND e.FCBomInterID=3004 AND e.FStatus=2 AND "
            "e.FInterID=6 AND m.FMaxNum=3004 ORDER BY c.FEntryID",
            {"BOM000011|1|1072|6|16402|2026-05-03|1|309", "BOM000011|1|1072|6|16402|2026-05-03|2|201",
             "BOM000011|1|1072|6|16402|2026-05-03|3|202", "BOM000011|1|1072|6|16402|2026-05-03|4|203",
             "BOM000011|1|1072|6|16402|2026-05-03|5|204", "BOM000011|1|1072|6|16402|2026-05-03|6|301",
             "BOM000011|1|1072|6|16402|2026-05-03|7|505", "BOM000011|1|1072|6|16402|2026-05-03|8|308",
             "BOM000011|1|1072|6|16402|2026-05-03|9|402"}),
    {.files = {"CEcnInfo.StarUpEcn"},
     .check = "SELECT FInterID, FUseStatus FROM ICBOM WHERE FItemID=101 ORDER BY 1",
     .after = {"1001|1073", "1002|1073", "1009|1073", "1010|1073", "3004|1072"}},
    Changes("CEcnInfo.UnStarUpEcn", {1, 1},
            "SELECT e.FStatus, e.FCBomInterID, e.FStarUperID, e.FStarUpDate, (SELECT COUNT(*) FROM ICBOM "
            "WHERE FInterID=1008), (SELECT COUNT(*) FROM ICBOMChild WHERE FInterID=1008) FROM IcEcn e WHERE "
            "e.FInterID=5",
            {"1|0|0|NULL|0|3"}),
    Rows("CEcnInfo.GetEcnBomHead",
         "FInterID,FBomInterID,FBomNumber,FMItemID,FRoutingID,FMNumber,FFixLeadTime,FMErpClsID,FMErpClsName",
         {"1002|1002|BOM000002|101|701|01.001|2.0000000000|2|自制 Made"}),
    Rows("CEcnInfo.GetEcnBomEntry",
         "FChildId,FItemID,FChangeType,FChangeTypeName,FChangeTypeNumber,FUnitNumber,FOperSNName,"
         "FOperIDNumber,FBackFlushName,FUseState",
         {"1|201|11022|修改|ALT|PCS|20|ASM|否 No|使用 In use",
          "2|202|11022|修改|ALT|PCS|20|ASM|否 No|使用 In use",
          "3|203|11022|修改|ALT|PCS|20|ASM|否 No|使用 In use",
          "4|204|11022|修改|ALT|SET|20|ASM|否 No|使用 In use"}),
    Rows("clsMCustBOM.GetUsedCustBomNumber", "FBomNumber", {"KH0001"}),
    Rows("Shared.CustomerBomInDocuments", "FTableName,FBomInterID", {"客户BOM批次表|3001", "销售订单|3001"}),
    Rows("clsMCustBOM.CheckCustBOMIsAssisted.list", "", {"#5"}),
    Fails("clsMCustBOM.CheckCustBOMIsAssisted.listAsOne", 102),
    Rows("clsMCustBOM.UpdateAuditFlag.upper", "FInterID,FBomNumber,FStatus", {"3001|KH0001|1"}),
    Rows("clsMCustBOM.UpdateAuditFlag.now", "", {"#1"}),
    Changes("clsMCustBOM.UpdateAuditFlag.audit", {1},
            "SELECT FUseStatus, FStatus, FCheckerID, CONVERT(varchar(19), FAudDate, 120) FROM ICBOM WHERE "
            "FInterID=3003",
            {"1072|1|16402|2026-05-03 14:05:06"}),
    Changes("clsMCustBOM.UpdateAuditFlag.undo", {2},
            "SELECT FUseStatus, FStatus, FCheckerID, FAudDate FROM ICBOM WHERE FInterID=3001",
            {"1073|0|0|NULL"}),
    Changes("clsMCustBOM.UpdateDisableStatus", {1}, "SELECT FInterID FROM ICBOM WHERE FForbid=-1 ORDER BY 1",
            {"3001", "3003"}),
    Rows("clsMCustBOM.GetRightTopDataM", "", {"#17"}),
    Rows("clsMCustBOM.GetRightTopDataM.node", "FBOMNumber,FStatus,FUseStatus,FUnitID,FErpClsName,FRoutingNo",
         {"KH0002|已审核|使用|件|自制 Made|NULL", "KH0001|已审核|使用|件|配置类 Configured|NULL"}),
    Rows("clsMCustBOM.GetRightBottomDataM", "FEntryID,FNumber,FUnitID,FSPID,FBackFlush",
         {"1|02.001|件||否", "2|02.002|件||否", "3|02.003|件||否", "4|02.004|套||否",
          "5|03.001|件|A区01架 Rack A-01|否", "6|03.002|件|A区01架 Rack A-01|否",
          "7|03.008|米|B区01架 Rack B-01|否", "8|03.010|件|B区01架 Rack B-01|否", "9|04.002|克||否"}),
    Rows("clsMCustBOM.GetRightBottomDataM.customer", "FEntryID,FBomNumber,FStockID",
         {"1|KH0002|零件仓 Parts", "2|NULL|零件仓 Parts", "3|NULL|零件仓 Parts",
          "4|NULL|原料仓 Raw materials", "5|NULL|零件仓 Parts", "6|NULL|零件仓 Parts"}),
    Rows("clsMCustBOM.bGetBillNoInfo", "FPreLetter,FSufLetter,FCurNo,FFormat", {"KH||4|0000"}),
    Changes("clsMCustBOM.CopyPasteCustBom", {1, 6, 1},
            "SELECT b.FBOMNumber, b.FUseStatus, b.FStatus, b.FCheckerID, b.FAudDate, b.FEnterTime, "
            "b.FForbid, c.FEntryID, c.FCustBOMCode FROM ICBOM b, ICCustBOMChild c, ICMaxNum m WHERE "
            "b.FInterID=3004 AND b.FInterID=c.FInterID AND m.FMaxNum=3004 ORDER BY c.FEntryID",
            {"KH0004|1073|0|0|NULL|2026-05-03|0|1|3002", "KH0004|1073|0|0|NULL|2026-05-03|0|2|NULL",
             "KH0004|1073|0|0|NULL|2026-05-03|0|3|NULL", "KH0004|1073|0|0|NULL|2026-05-03|0|4|NULL",
             "KH0004|1073|0|0|NULL|2026-05-03|0|5|NULL", "KH0004|1073|0|0|NULL|2026-05-03|0|6|NULL"}),
    Changes("clsMCustBOM.SetCustBOM", {1},
            "SELECT FCustBOMCode FROM ICCustBOMChild WHERE FInterID=3001 AND FItemID=202", {"3003"}),
    Rows("clsMCustBOM.GetItemFNumber", "FNumber", {"02.001"}),
    Rows("clsMCustBOM.GetRuleByItem.all", "", {"#3"}),
    Rows("clsMCustBOM.GetRuleByItem.related", "FEntryFNumber,FEntryItemID,FNumber,FItemID,FRuleID",
         {"05.005|505|05.002|502|Rel", "03.009|309|05.002|502|Rel"}),
    Rows("clsMCustBOM.GetRuleByItem.group", "FEntryItemID,FItemID,FRuleID", {"310|503|Mut"}),
    Rows("clsMCustBOM.GetRuleByItem.noItems", "FEntryItemID", {"505", "309"}),
    Rows("clsMCustBOM.GetTeZhenSubItems", "FItemID", {"502", "503"}),
    Rows("clsMBOMRule.GetICItemParent", "fitemid,groupid,groupname", {"301|13|零件 Parts"})};

INSTANTIATE_TEST_SUITE_P(Statements, ComponentCorpusTest, ::testing::ValuesIn(kCases), NameOf);

// Results without a column name.
TEST_F(ComponentCorpusTest, SingleValues) {
  const auto value = [this](const char* file) {
    const Table table = Run(ReadText(kRoot + "/statements/" + file + ".sql"));
    return table.results.size() == 1 && table.results[0].size() == 1 ? table.results[0][0]
                                                                     : std::string("none");
  };
  EXPECT_EQ(value("CEcnInfo.EndSave.deleted"),
            "-9"); // nine lines; nothing counts as deleted beside an added line
  EXPECT_EQ(value("CEcnInfo.EndSave.percent"), "-1");
  EXPECT_EQ(value("clsMCustBOM.UpdateAuditFlag.now"), "46143:270000");
}

// The files that no case is about differ from one that a case is about by an identifier or a fragment. They
// run without an error.
TEST_F(ComponentCorpusTest, TheOtherFilesRun) {
  // What has parameters, and what holds the name of a stored procedure.
  std::set<std::string> apart = {"Shared.SystemProfile", "Shared.GetICMaxNum",
                                 "clsMCustBOM.GetTreeViewDataM"};
  for (const Case& one : kCases) apart.insert(one.files.begin(), one.files.end());
  const std::map<std::string, std::string> before = {
      {"BomView.GetCustBomSimplifyList.filter", "BomView.GetCustBomSimplifyList.filter.build"}};
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kRoot + "/statements")) {
    const std::string name = entry.path().stem().string();
    if (entry.path().extension() != ".sql" || apart.contains(name)) continue;
    ++count;
    if (const auto first = before.find(name); first != before.end())
      Run(ReadText(kRoot + "/statements/" + first->second + ".sql"));
    for (const Error& error : Run(ReadText(entry.path().string())).errors)
      ADD_FAILURE() << name << ": " << error.number << ", line " << error.line << ": " << error.what();
    session_->Rollback();
    session_->Begin();
  }
  EXPECT_GT(count, 0);
}

TEST_F(ComponentCorpusTest, SystemProfile) {
  const auto read = [this](std::string_view category, std::string_view key) {
    std::vector<Parameter> parameters(2);
    for (Parameter& parameter : parameters) {
      parameter.type.id = TypeId::NVarChar;
      parameter.type.length = 30;
      parameter.value.kind = Value::Kind::Text;
    }
    parameters[0].value.text = category;
    parameters[1].value.text = key;
    Output output;
    EXPECT_TRUE(
        session_->Execute(ReadText(kRoot + "/statements/Shared.SystemProfile.sql"), parameters, output));
    return output.results.at(0);
  };
  EXPECT_EQ(read("IC", "SameUserApprovalAndUnApproval"), Lines({"1"}));
  EXPECT_EQ(read("General", "singleman"), Lines({"0"}));
  EXPECT_EQ(read("IC", "SingleMan"), Lines());
}

} // namespace
} // namespace tsql::test
