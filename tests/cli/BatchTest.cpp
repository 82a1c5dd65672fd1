#include "cli/Batch.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>

#include "com/Text.h"
#include "tests/support/Client.h"

namespace bomcall {
namespace {

class BatchTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID) VALUES (1, 'B1', 500)\n"
                      L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID) VALUES (2, 'B2', 501)");
  }
  void TearDown() override { std::filesystem::remove(file_); }

  BatchCounts Run(const std::string& text, std::vector<std::wstring> options = {}) {
    std::ofstream(file_, std::ios::binary) << text;
    options.insert(options.end(), {L"--dsn", database_.Dsn(), L"--batch", file_.wstring()});
    lines_.clear();
    outcomes_.clear();
    progress_.clear();
    return RunBatch(catalog_, ParseCommandLine(options),
                    {[&](size_t line, const std::wstring& /*call*/, const Outcome& outcome) {
                       lines_.push_back(line);
                       outcomes_.push_back(outcome);
                     },
                     [&](size_t done, size_t all) {
                       progress_.push_back(std::to_string(done) + "/" + std::to_string(all));
                     }});
  }
  std::string Complaint(const std::string& text, const std::vector<std::wstring>& options = {}) {
    try {
      Run(text, options);
    } catch (const UsageError& error) {
      const std::string message = error.what();
      const size_t at = message.find(", line ");
      return at == std::string::npos ? message : message.substr(at + 2);
    }
    return "(none)";
  }
  std::wstring Statuses() const {
    return database_.Rows(L"SELECT FStatus FROM ICBOM ORDER BY FInterID")[0] +
           database_.Rows(L"SELECT FStatus FROM ICBOM ORDER BY FInterID")[1];
  }

  const mbom::test::TestDatabase database_;
  const ClassDescriptions catalog_ = ReadClassDescriptions();
  const std::filesystem::path file_ =
      std::filesystem::temp_directory_path() / (L"bomcall-batch-" + std::to_wstring(GetCurrentProcessId()));
  std::vector<size_t> lines_;
  std::vector<Outcome> outcomes_;
  std::vector<std::string> progress_;
};

constexpr char kAuditFirst[] =
    "{\"call\": \"BomUpdate.UpdateIcBomStatus\", \"arguments\": {\"lBomNumber\": \"B1\"}}\n";
constexpr char kAuditSecond[] =
    "{\"call\": \"BomUpdate.UpdateIcBomStatus\", \"arguments\": {\"lBomNumber\": \"B2\"}}\n";
constexpr char kRaises[] =
    "{\"call\": \"BomUpdate.UpdateIcBomStatus\", \"arguments\": {\"lBomNumber\": \"a'b\"}}\n";

TEST_F(BatchTest, IsOneUnitOfWork) {
  const BatchCounts counts = Run(std::string(kAuditFirst) + "\n" + kAuditSecond);
  EXPECT_EQ(counts.calls, 2u);
  EXPECT_EQ(counts.failed, 0u);
  EXPECT_TRUE(counts.kept);
  EXPECT_EQ(lines_, (std::vector<size_t>{1, 3}));
  EXPECT_EQ(progress_, (std::vector<std::string>{"1/2", "2/2"}));
  EXPECT_EQ(Statuses(), L"11");
}

TEST_F(BatchTest, KeepsNothingWhenACallRaises) {
  const BatchCounts counts = Run(std::string(kAuditFirst) + kRaises + kAuditSecond);
  EXPECT_EQ(counts.calls, 2u);
  EXPECT_EQ(counts.failed, 1u);
  EXPECT_EQ(counts.left, 1u);
  EXPECT_FALSE(counts.kept);
  EXPECT_EQ(Statuses(), L"00");
}

TEST_F(BatchTest, KeepsNothingWhenACallVotesToAbort) {
  // There is no BOM 9: an un-audit votes to abort and says so in its message.
  const BatchCounts counts = Run(
      std::string(kAuditFirst) +
      R"({"call": "CBomCheck.BomUndoCheck", "arguments": {"lInterID": 9, "sBillNo": "B9", "lEmpID": 1}})");
  EXPECT_EQ(counts.failed, 1u);
  EXPECT_FALSE(outcomes_.back().error.has_value());
  EXPECT_EQ(Statuses(), L"00");
}

TEST_F(BatchTest, KeepsNothingWhenAConditionHolds) {
  EXPECT_FALSE(Run(std::string(kAuditFirst) + kAuditSecond, {L"--fail-if", L"Result=False"}).kept);
  EXPECT_EQ(Statuses(), L"00");
}

TEST_F(BatchTest, GoesOnWhenAsked) {
  const BatchCounts counts = Run(std::string(kAuditFirst) + kRaises + kAuditSecond, {L"--keep-going"});
  EXPECT_EQ(counts.calls, 3u);
  EXPECT_EQ(counts.failed, 1u);
  EXPECT_TRUE(counts.kept);
  EXPECT_EQ(Statuses(), L"11");
}

// GetMaxNum works on the connection that the call before it on the same object has bound.
TEST_F(BatchTest, CallsOneObjectAClass) {
  const BatchCounts counts =
      Run(R"({"call": "CBomFunction.GetRoutingData", "arguments": {"LongNumber": true, "FInterID": 0}})"
          "\n"
          R"({"call": "CBomFunction.GetMaxNum", "arguments": {"strName": "ICBOM"}})"
          "\n"
          R"({"call": "CBomFunction.GetMaxNum", "arguments": {"strName": "ICBOM"}})");
  EXPECT_EQ(counts.failed, 0u);
  ASSERT_EQ(outcomes_.size(), 3u);
  EXPECT_EQ(outcomes_[2].result.AsLong(), outcomes_[1].result.AsLong() + 1);
}

TEST_F(BatchTest, HandsResultsOn) {
  const BatchCounts counts = Run(
      R"({"call": "BomInfo.GetInfo", "arguments": {"strSql": "SELECT FInterID, FBOMNumber FROM ICBOM"}, "as": "heads"})"
      "\n"
      R"({"call": "clsReadUserDefined.GetUserDefinedValue",)"
      R"( "arguments": {"pBillTranType": "50", "rs": {"$result": "heads"}}})");
  EXPECT_EQ(counts.failed, 0u);
  ASSERT_EQ(outcomes_.size(), 2u);
  EXPECT_EQ(outcomes_[1].result.AsObject().Get(L"UBound").AsLong(), 2);
}

TEST_F(BatchTest, NamesTheLineThatIsWrongBeforeAnythingIsCalled) {
  const std::string first = std::string(kAuditFirst) + "\n";
  EXPECT_EQ(Complaint(first + "{\"call\": 1e400}"), "line 3: column 14: the number 1e400 is too great");
  EXPECT_EQ(Complaint(first + "{\"call\": ").find("line 3: column 10: "), 0u);
  EXPECT_EQ(Complaint(first + "[]"), "line 3: a line is an object {…}");
  EXPECT_EQ(Complaint(first + "{\"call\": \"BomUpdate.None\"}"),
            "line 3: BomUpdate has no method None; --list BomUpdate shows them");
  EXPECT_EQ(Complaint(first + "{\"call\": \"BomUpdate.UpdateIcBomStatus\"}"),
            "line 3: the method needs argument 2, lBomNumber");
  EXPECT_EQ(Complaint(first + "{\"cal\": \"x\"}"),
            "line 3: there is no \"cal\"; a line has \"call\", \"arguments\" and \"as\"");
  EXPECT_EQ(Complaint(first + R"({"call": "clsReadUserDefined.GetUserDefinedValue",)"
                              R"( "arguments": {"pBillTranType": "50", "rs": {"$result": "none"}}})"),
            "line 3: no line before has a result called none");
  EXPECT_EQ(Statuses(), L"00");
}

TEST_F(BatchTest, NeedsAHostToBeOneUnitOfWork) {
  EXPECT_EQ(Complaint(kAuditFirst, {L"--no-host"}).find("without --keep-going a batch is one unit of work"),
            0u);
  EXPECT_EQ(Run(kAuditFirst, {L"--no-host", L"--keep-going"}).failed, 0u);
}

} // namespace
} // namespace bomcall
