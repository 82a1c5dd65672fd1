#include "cli/Call.h"

#include <gtest/gtest.h>

#include "com/Text.h"
#include "tests/support/Client.h"

namespace bomcall {
namespace {

class CallTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(
        L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID, FEcnInterID) VALUES (1, 'B1', 500, 5)");
  }
  Outcome Call(std::vector<std::wstring> arguments) const {
    arguments.insert(arguments.end(), {L"--dsn", database_.Dsn()});
    return MakeCall(catalog_, ParseCommandLine(arguments));
  }
  std::string Complaint(const std::vector<std::wstring>& arguments) const {
    try {
      Call(arguments);
    } catch (const UsageError& error) {
      return error.what();
    }
    return "(none)";
  }

  const mbom::test::TestDatabase database_;
  const ClassDescriptions catalog_ = ReadClassDescriptions();
};

TEST_F(CallTest, ShowsTheResultAndTheChangedArguments) {
  const Outcome outcome = Call({L"bomupdate.ENDSAVE", L"SaveVect=[{\"FInterID\":1}]", L"--lang", L"chs"});
  EXPECT_EQ(ShowAsText(outcome), L"Result: False\n"
                                 L"SaveVect:\n"
                                 L"FInterID  SaveRetCode\n"
                                 L"--------  -----------\n"
                                 L"1         99\n"
                                 L"ReturnMsg: 该BOM单为工程变更生成或已通过工程变更，不能审核和反审核!\n");
}

TEST_F(CallTest, ShowsTheSameAsJson) {
  const Outcome outcome =
      Call({L"BomUpdate.EndSave", L"savevect=[{\"FInterID\":1}]", L"ReturnMsg=x", L"--lang", L"chs"});
  EXPECT_EQ(ShowAsJson(outcome), LR"({
  "result": false,
  "arguments": {
    "SaveVect": [
      {
        "FInterID": 1,
        "SaveRetCode": 99
      }
    ],
    "ReturnMsg": "该BOM单为工程变更生成或已通过工程变更，不能审核和反审核!"
  }
}
)");
}

TEST_F(CallTest, TakesAnOptionalArgumentThatComesBack) {
  const Outcome outcome =
      Call({L"CBomCheck.BomUndoCheck", L"lInterID=7", L"sBillNo=B7", L"lEmpID=1", L"--lang", L"chs"});
  EXPECT_EQ(
      ShowAsText(outcome),
      L"Result: 2\nstrMsg: BOM[编号：B7]反审核没有成功。原因为：查询不到指定的BOM，请检查单数是否正确。\n");
}

TEST_F(CallTest, ShowsAComErrorWithCodeSourceAndText) {
  const Outcome outcome = Call({L"BomUpdate.UpdateIcBomStatus", L"lBomNumber=a'b"});
  ASSERT_TRUE(outcome.error.has_value());
  const std::wstring text = ShowAsText(outcome);
  EXPECT_TRUE(text.starts_with(L"Error 0x80040E14\nSource: Microsoft OLE DB Provider for SQL Server\n"))
      << com::ToUtf8(text);
  EXPECT_NE(ShowAsJson(outcome).find(L"\"code\": \"0x80040E14\""), std::wstring::npos);
}

TEST_F(CallTest, ShowsTheTraceWhenAsked) {
  const Outcome outcome = Call({L"BomUpdate.UpdateIcBomStatus", L"lBomNumber=B1", L"--trace"});
  ASSERT_FALSE(outcome.trace.empty());
  EXPECT_EQ(outcome.trace.back(), L"VoteComplete");
  EXPECT_NE(ShowAsText(outcome).find(L"UPDATE ICBom SET FStatus=1, FUseStatus=1072 WHERE FBomNumber ='B1'"),
            std::wstring::npos);
}

TEST_F(CallTest, CallsWithAndWithoutAHost) {
  // A save that fails at its end: the host takes back what ran before.
  const mbom::test::Fault fault(L"VoteComplete");
  EXPECT_TRUE(Call({L"BomUpdate.UpdateIcBomStatus", L"lBomNumber=B1"}).error.has_value());
  EXPECT_EQ(database_.Value(L"SELECT FStatus FROM ICBOM"), L"0");
  const mbom::test::Fault again(L"VoteComplete");
  EXPECT_TRUE(Call({L"BomUpdate.UpdateIcBomStatus", L"lBomNumber=B1", L"--no-host"}).error.has_value());
  EXPECT_EQ(database_.Value(L"SELECT FStatus FROM ICBOM"), L"1");
}

TEST_F(CallTest, ReadsProperties) {
  EXPECT_EQ(ShowAsText(Call({L"clsMCustBOM.TransMode"})), L"Result: 3\n");
}

TEST_F(CallTest, SaysWhatIsWrongBeforeAnythingIsCalled) {
  EXPECT_EQ(Complaint({L"NoClass.X"}), "there is no class NoClass; --list shows the classes");
  EXPECT_EQ(Complaint({L"BomUpdate.X"}), "BomUpdate has no method X; --list BomUpdate shows them");
  EXPECT_EQ(Complaint({L"BomUpdate.UpdateIcBomStatus"}), "the method needs lBomNumber");
  EXPECT_EQ(Complaint({L"BomUpdate.UpdateIcBomStatus", L"number=1"}),
            "there is no parameter number in UpdateIcBomStatus(sDsn: text, lBomNumber: text) -> boolean");
  EXPECT_EQ(Complaint({L"BomUpdate.EndSave", L"SaveVect=5"}), "SaveVect is an object: give {…}, […] or null");
  EXPECT_TRUE(Complaint({L"BomUpdate.EndSave", L"SaveVect=[{"}).starts_with("SaveVect is not JSON: "));
  EXPECT_EQ(Complaint({L"BomUpdate.EndSave", L"SaveVect=@Z:/no/such/file.json"}),
            "cannot read Z:/no/such/file.json");
}

TEST_F(CallTest, RefusesNumbersAndNestingThatNothingCanHold) {
  EXPECT_EQ(Complaint({L"BomUpdate.EndSave", L"SaveVect=[{\"FInterID\":1e400}]"})
                .find("SaveVect is not JSON: [json.exception.out_of_range.406]"),
            0u);
  for (const size_t depth : {501u, 1000000u})
    EXPECT_EQ(Complaint({L"BomUpdate.EndSave", L"SaveVect=" + std::wstring(depth, L'[')}),
              "SaveVect has more than 500 objects and arrays inside each other");
  EXPECT_EQ(
      Complaint({L"BomUpdate.EndSave", L"SaveVect=" + std::wstring(500, L'[') + std::wstring(500, L']')}),
      "(none)");
}

TEST_F(CallTest, ListsTheClasses) {
  const std::wstring all = ShowClasses(catalog_, L"");
  for (const wchar_t* name :
       {L"BomUpdate  ", L"BomView  ", L"BOMImport  ", L"PPorderImort  ", L"CBomFunction  ", L"CBomCheck  ",
        L"CEcnInfo  ", L"BomInfo  ", L"clsMCustBOM  ", L"clsMBOMRule  ", L"clsReadUserDefined  "})
    EXPECT_NE((L"\n" + all).find(L"\n" + std::wstring(name)), std::wstring::npos) << com::ToUtf8(name);
  EXPECT_NE(ShowClasses(catalog_, L"bomupdate")
                .find(L"  EndSave(sDsn: text, SaveVect: object in/out, ReturnMsg: text in/out) -> boolean\n"),
            std::wstring::npos);
  EXPECT_THROW(ShowClasses(catalog_, L"NoClass"), UsageError);
}

} // namespace
} // namespace bomcall
