#include "cli/Call.h"

#include <gtest/gtest.h>

#include "cli/Objects.h"
#include "cli/Show.h"
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
  EXPECT_EQ(Complaint({L"BomUpdate.UpdateIcBomStatus"}), "the method needs argument 2, lBomNumber");
  EXPECT_EQ(Complaint({L"BomUpdate.UpdateIcBomStatus", L"number=1"}),
            "there is no parameter number in UpdateIcBomStatus(sDsn: text, lBomNumber: text) -> boolean");
  EXPECT_EQ(Complaint({L"BomUpdate.EndSave", L"SaveVect=5"}),
            "argument 2, SaveVect, is an object: give {…}, […] or null");
  EXPECT_EQ(Complaint({L"BomUpdate.EndSave"}),
            "the method needs argument 2, SaveVect, an object: give {…}, […] or null");
  EXPECT_EQ(Complaint({L"BomUpdate.EndSave", L"SaveVect=[\n{"})
                .find("argument 2, SaveVect is not JSON: line 2, column 2: "),
            0u);
  EXPECT_EQ(Complaint({L"BomUpdate.EndSave", L"SaveVect=[]", L"savevect=[]"}), "SaveVect is given twice");
  EXPECT_EQ(Complaint({L"CBomFunction.GetRoutingData", L"LongNumber=True", L"FInterID=1.5"}),
            "argument 3, FInterID, does not take the value \"1.5\", which is no whole number of its size");
  EXPECT_EQ(Complaint({L"CBomFunction.GetRoutingData", L"LongNumber=perhaps", L"FInterID=1"}),
            "argument 2, LongNumber, does not take the value \"perhaps\": give True or False");
  EXPECT_EQ(Complaint({L"BomUpdate.UpdateIcBomStatus", L"lBomNumber=x", L"--fail-if", L"ReturnMsg=x"}),
            "--fail-if: UpdateIcBomStatus gives back no ReturnMsg");
  EXPECT_EQ(Complaint({L"BomUpdate.EndSave", L"SaveVect=@Z:/no/such/file.json"}),
            "argument 2, SaveVect: cannot read Z:/no/such/file.json");
}

TEST_F(CallTest, RefusesNumbersAndNestingThatNothingCanHold) {
  EXPECT_EQ(Complaint({L"BomUpdate.EndSave", L"SaveVect=[{\"FInterID\":1e400}]"}),
            "argument 2, SaveVect: line 1, column 18: the number 1e400 is too great");
  for (const size_t depth : {501u, 100000u})
    EXPECT_NE(Complaint({L"BomUpdate.EndSave", L"SaveVect=" + std::wstring(depth, L'[')})
                  .find("more than 500 objects and arrays inside each other"),
              std::string::npos);
  EXPECT_EQ(
      Complaint({L"BomUpdate.EndSave", L"SaveVect=" + std::wstring(500, L'[') + std::wstring(500, L']')}),
      "(none)");
}

// A parameter of any type takes what is no JSON as a text, but not a number that no value can be.
TEST_F(CallTest, RefusesThemForEveryParameter) {
  for (const ClassInfo& info : catalog_) {
    for (const MethodInfo& method : info.methods) {
      for (const ParameterInfo& parameter : method.parameters) {
        if (parameter.type == VT_BSTR) continue;
        for (const std::wstring& value :
             {std::wstring(L"1e400"), std::wstring(L"123456789012345678901"), std::wstring(100000, L'[')}) {
          std::vector<std::wstring> arguments{info.name + L"." + method.name, parameter.name + L"=" + value};
          for (const ParameterInfo& other : method.parameters)
            if (&other != &parameter)
              arguments.push_back(other.name + (other.type == VT_DISPATCH ? L"=null" : L"=1"));
          EXPECT_EQ(Complaint(arguments).find("argument "), 0u)
              << com::ToUtf8(arguments[0]) << ": " << Complaint(arguments);
        }
      }
    }
  }
}

TEST_F(CallTest, NamesTheClassThatCannotBeCreated) {
  try {
    CreateObject(L"NoSuch.Class");
    FAIL();
  } catch (const com::ComError& error) {
    EXPECT_EQ(error.code(), CO_E_CLASSSTRING);
    EXPECT_EQ(error.description(), L"cannot create NoSuch.Class: it is not registered");
  }
}

TEST_F(CallTest, MasksThePasswordsOfDescriptors) {
  const std::wstring statement = L"s_SQL=SELECT 1 AS a";
  const std::wstring dsn = database_.Dsn(L"Password=\"se;cret\";Pwd={hid;den}");
  const Outcome outcome = Call({L"clsMCustBOM.GetRecordSet", statement, L"sDsn=" + dsn, L"--trace"});
  const std::wstring shown = ShowAsText(outcome) + ShowAsJson(outcome);
  EXPECT_NE(shown.find(L"Password=***;Pwd=***"), std::wstring::npos) << com::ToUtf8(shown);
  EXPECT_EQ(shown.find(L"cret"), std::wstring::npos);
  EXPECT_EQ(shown.find(L"hid"), std::wstring::npos);
}

TEST_F(CallTest, ShowsRowsInTheFormThatIsAskedFor) {
  const std::wstring query = L"strSql=SELECT FBOMNumber, FQty, FBOMNumber FROM ICBOM";
  const auto shown = [&](std::vector<std::wstring> options) {
    options.insert(options.end(), {L"BomInfo.GetInfo", query, L"--dsn", database_.Dsn()});
    const CommandLine line = ParseCommandLine(options);
    return com::ToUtf8(ShowOutcome(MakeCall(catalog_, line), line, {}));
  };
  EXPECT_EQ(shown({L"--csv"}), "FBOMNumber,FQty,FBOMNumber_2\r\nB1,1,B1\r\n");
  EXPECT_EQ(shown({L"--vertical", L"--columns", L"fqty,FBOMNumber_2"}),
            "-- row 1\nFQty:         1\nFBOMNumber_2: B1\n");
  EXPECT_EQ(shown({L"--json", L"--columns", L"FQty"}), "[\n  {\n    \"FQty\": 1\n  }\n]\n");
  EXPECT_EQ(shown({L"--columns", L"FQty"}), "FQty\n----\n1\n");
  EXPECT_THROW(shown({L"--columns", L"FNone"}), UsageError);
}

TEST_F(CallTest, MeetsConditions) {
  const Outcome outcome = Call({L"BomUpdate.EndSave", L"SaveVect=[{\"FInterID\":1}]", L"--lang", L"en"});
  EXPECT_TRUE(FirstHolding({{L"result", L"false"}}, outcome).has_value());
  EXPECT_FALSE(FirstHolding({{L"Result", L"True"}, {L"ReturnMsg", L""}}, outcome).has_value());
}

TEST_F(CallTest, DescribesAMethod) {
  EXPECT_EQ(ShowHelp(catalog_, L"bomupdate.endsave").substr(0, 40),
            std::wstring(L"BomUpdate.EndSave(sDsn: text, SaveVect: object").substr(0, 40));
  const std::wstring description = FindClass(catalog_, L"BomUpdate")->Find(L"EndSave")->description;
  ASSERT_FALSE(description.empty());
  EXPECT_NE(ShowHelp(catalog_, L"BomUpdate.EndSave").find(L"\n\n" + description + L"\n"), std::wstring::npos);
  EXPECT_NE(ShowHelp(catalog_, L"BomUpdate.EndSave").find(L"\n  2  SaveVect: object in/out\n"),
            std::wstring::npos);
  EXPECT_THROW(ShowHelp(catalog_, L"BomUpdate.None"), UsageError);
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
