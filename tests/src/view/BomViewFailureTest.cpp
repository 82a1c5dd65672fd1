// BomView when the outside fails: the unit of work is voted aborted and the error rises as it is.
#include <gtest/gtest.h>

#include <functional>

#include "tests/src/view/BrowserData.h"
#include "tests/support/Calls.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;

// A method with arguments that succeed, and how often its statements run.
struct Reading {
  const wchar_t* method;
  const wchar_t* connection; // the event that hands it out
  int32_t opens;
  int32_t executes; // 0 where a failure is no failure of the call
};

void PrintTo(const Reading& reading, std::ostream* out) {
  *out << com::ToUtf8(reading.method);
}

class BomViewFailureTest : public testing::TestWithParam<Reading> {
 protected:
  void SetUp() override { FillBrowserData(database_); }

  Variant Call(const Object& view, const std::wstring& dsn) const {
    const std::wstring method = GetParam().method;
    if (method == L"GetBomGroupList")
      return view.Call(L"GetBomGroupList", dsn, MakeVector({}), MakeDictionary({}), true);
    if (method == L"GetBomLstInfo")
      return view.Call(L"GetBomLstInfo", dsn, MakeVector({}), MakeDictionary({}), true);
    return view.Call(GetParam().method, dsn);
  }
  std::wstring Dsn() const { return database_.Dsn(L"SubID=SC"); }
  // The call with the nth event of a kind failing; its last vote.
  void ExpectRises(const wchar_t* kind, int32_t nth) const {
    const Object view = Hosted(L"BomView");
    const Trace trace;
    const Fault fault(kind, nth);
    const Raised raised = RaisedBy([&] { Call(view, Dsn()); });
    EXPECT_EQ(raised.code, Fault::kCode) << com::ToUtf8(kind) << " #" << nth;
    EXPECT_EQ(raised.description, Fault::kText);
    ASSERT_FALSE(trace.Votes().empty()) << com::ToUtf8(kind) << " #" << nth;
    EXPECT_EQ(trace.Votes().back(), L"VoteAbort") << com::ToUtf8(kind) << " #" << nth;
  }

  const TestDatabase database_;
};

TEST_P(BomViewFailureTest, SucceedsOtherwise) {
  const Trace trace;
  EXPECT_EQ(RaisedBy([&] { Call(Hosted(L"BomView"), Dsn()); }).code, S_OK);
  EXPECT_EQ(trace.Votes().back(), L"VoteComplete");
  EXPECT_EQ(static_cast<int32_t>(trace.Details(L"Open").size()), GetParam().opens);
}

TEST_P(BomViewFailureTest, RaisesWhateverFails) {
  for (const wchar_t* kind :
       {L"GetDataContext", L"BindDsn", L"GetCallerInfo", GetParam().connection, L"VoteComplete"})
    ExpectRises(kind, 1);
  for (int32_t i = 1; i <= GetParam().opens; ++i) ExpectRises(L"Open", i);
  for (int32_t i = 1; i <= GetParam().executes; ++i) ExpectRises(L"Execute", i);
}

TEST_P(BomViewFailureTest, RaisesForADescriptorThatBindsNothing) {
  const Object view = Hosted(L"BomView");
  const Trace trace;
  for (const wchar_t* dsn : {L"Provider=Embedded;Data Source=Z:\\no\\such\\file.db", L"SubID=SC", L""})
    EXPECT_TRUE(FAILED(RaisedBy([&] { Call(view, dsn); }).code)) << com::ToUtf8(dsn);
  EXPECT_EQ(trace.Votes(), std::vector<std::wstring>(3, L"VoteAbort"));
}

TEST_P(BomViewFailureTest, DoesWithoutTheLoader) {
  // A failing loader leaves a text empty.
  const Fault fault(L"LoadString");
  EXPECT_EQ(RaisedBy([&] { Call(Hosted(L"BomView"), Dsn()); }).code, S_OK);
}

INSTANTIATE_TEST_SUITE_P(EveryMethod, BomViewFailureTest,
                         testing::Values(Reading{L"GetBomGroupList", L"GetConnectionObject", 1, 0},
                                         Reading{L"GetBomLstInfo", L"GetConnection", 0, 1},
                                         Reading{L"GetBomList", L"GetConnectionObject", 2, 0},
                                         Reading{L"GetBomSimplifyList", L"GetConnection", 2, 2},
                                         Reading{L"GetCustBomSimplifyList", L"GetConnection", 2, 2},
                                         Reading{L"GetBomSimplifyListEx", L"GetConnection", 2, 2},
                                         Reading{L"ExistsEcnBill", L"GetConnection", 0, 1},
                                         Reading{L"GetBomTitle", L"GetConnectionObject", 2, 0},
                                         Reading{L"GetBomEntryTitle", L"GetConnectionObject", 2, 0},
                                         Reading{L"GetBomUserDefinedTitle", L"GetConnectionObject", 1, 0},
                                         Reading{L"GetBomEntryUserDefinedTitle", L"GetConnectionObject", 1,
                                                 0},
                                         Reading{L"GetCustBomTitle", L"GetConnectionObject", 1, 0},
                                         Reading{L"GetBomLdgInfo", L"GetConnectionObject", 3, 0},
                                         Reading{L"GetBomEntryLdgInfo", L"GetConnectionObject", 3, 0},
                                         Reading{L"GetCustBomLdgInfo", L"GetConnectionObject", 2, 0},
                                         Reading{L"GetCustBomEntryLdgInfo", L"GetConnectionObject", 2, 0}),
                         [](const auto& method) { return com::ToUtf8(method.param.method); });

} // namespace
} // namespace mbom::test
