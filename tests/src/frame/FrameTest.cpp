#include "src/frame/Frame.h"

#include <gtest/gtest.h>

#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using Texts = std::vector<std::wstring>;

TEST(Frame, TakesAContextAndItsCallerInfoWhenItIsMade) {
  const Trace trace;
  const Frame frame;
  EXPECT_EQ(trace.Events(), (Texts{L"GetDataContext", L"GetCallerInfo"}));
}

TEST(Frame, RaisesWhatFailsWhenItIsMade) {
  for (const wchar_t* kind : {L"GetDataContext", L"GetCallerInfo"}) {
    const Fault fault(kind);
    const Raised raised = RaisedBy([] { const Frame frame; });
    EXPECT_EQ(raised.code, Fault::kCode);
    EXPECT_EQ(raised.description, Fault::kText);
  }
}

TEST(Frame, AnObjectThatCannotBeMadeSaysWhy) {
  const Fault fault(L"GetDataContext");
  const Raised raised = RaisedBy([] { Unhosted(L"BomUpdate"); });
  EXPECT_EQ(raised.code, Fault::kCode);
  EXPECT_EQ(raised.description, Fault::kText);
}

TEST(Frame, SetUpReplacesTheContextAndReturnsFalse) {
  const TestDatabase database;
  Frame frame;
  const com::Object first = frame.context();
  const Trace trace;
  EXPECT_FALSE(frame.OpenDataContext(database.Dsn()));
  EXPECT_EQ(trace.Events(), (Texts{L"GetDataContext", L"BindDsn\t" + database.Dsn(), L"GetCallerInfo"}));
  EXPECT_FALSE(frame.context() == first);
}

TEST(Frame, ConnectsToTheBoundDescriptor) {
  const TestDatabase database;
  database.Execute(L"INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES ('ICBOM', 41)");
  Frame frame;
  frame.OpenDataContext(database.Dsn());
  const Recordset rows =
      frame.GetConnection().Execute(Sql() << L"SELECT FMaxNum FROM ICMaxNum WHERE FTableName='ICBOM'");
  ASSERT_TRUE(rows);
  EXPECT_EQ(rows[L"fmaxnum"], com::Variant(41));
}

TEST(Frame, FailsWithoutABoundDescriptor) {
  const Frame frame;
  EXPECT_NE(RaisedBy([&] { frame.GetConnection(); }).code, S_OK);
}

TEST(Frame, VotesOnTheContextThatItHolds) {
  const Frame frame;
  const Trace trace;
  frame.VoteAbort();
  frame.VoteComplete();
  EXPECT_EQ(trace.Events(), (Texts{L"VoteAbort", L"VoteComplete"}));
}

TEST(TransMode, IsEachClassesOwn) {
  const std::pair<const wchar_t*, int32_t> modes[] = {
      {L"BomUpdate", 2},    {L"BomView", 3},     {L"BOMImport", 2},          {L"PPorderImort", 2},
      {L"CBomFunction", 2}, {L"CBomCheck", 2},   {L"CEcnInfo", 2},           {L"BomInfo", 3},
      {L"clsMCustBOM", 3},  {L"clsMBOMRule", 3}, {L"clsReadUserDefined", 2},
  };
  for (const auto& mode : modes) {
    const wchar_t* name = mode.first;
    SCOPED_TRACE(com::ToUtf8(name));
    EXPECT_EQ(Unhosted(name).Get(L"TransMode"), com::Variant(mode.second));
    EXPECT_EQ(Hosted(name).Get(L"TransMode"), com::Variant(mode.second));
    EXPECT_EQ(RaisedBy([&] { Unhosted(name).Put(L"TransMode", 1); }).code, DISP_E_MEMBERNOTFOUND);
  }
}

} // namespace
} // namespace mbom::test
