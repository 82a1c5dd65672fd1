// What becomes of a unit of work: seen on another connection after the call.
#include "com/DispatchObject.h"
#include "tests/standin/Worker.h"

namespace standin::test {
namespace {

constexpr wchar_t kInsert[] = L"INSERT INTO t (FInterID) VALUES (10)";

class UnitOfWorkTest : public testing::Test {
 protected:
  int32_t Run(const std::wstring& steps) const {
    return worker_.Call(L"Run", database_.Dsn(), steps).AsLong();
  }
  std::wstring Ids() const { return database_.Column(L"SELECT FInterID FROM t ORDER BY FInterID"); }

  Database database_;
  Object worker_ = HostedWorker();
};

std::wstring Steps(std::initializer_list<std::wstring> steps) {
  std::wstring result;
  for (const std::wstring& step : steps) result += (result.empty() ? L"" : L"|") + step;
  return result;
}

TEST_F(UnitOfWorkTest, CommitsAfterACompleteVote) {
  EXPECT_EQ(Run(Steps({L"bind", kInsert, L"complete"})), 3);
  EXPECT_EQ(Ids(), L"1,2,3,10");
}

TEST_F(UnitOfWorkTest, RollsBackAfterAnAbortVote) {
  Run(Steps({L"bind", kInsert, L"abort"}));
  EXPECT_EQ(Ids(), L"1,2,3");
}

TEST_F(UnitOfWorkTest, CommitsWithoutAVote) {
  Run(Steps({L"bind", kInsert}));
  EXPECT_EQ(Ids(), L"1,2,3,10");
}

TEST_F(UnitOfWorkTest, TheLastVoteDecidesWhicheverContextCastIt) {
  Run(Steps({L"bind", L"abort", L"bind", kInsert, L"complete"}));
  EXPECT_EQ(Ids(), L"1,2,3,10");
  Run(Steps({L"bind", L"DELETE FROM t", L"complete", L"bind", L"abort"}));
  EXPECT_EQ(Ids(), L"1,2,3,10");
}

TEST_F(UnitOfWorkTest, ARaisedErrorRollsBackWhateverWasVoted) {
  const Raised raised = RaisedBy([&] { Run(Steps({L"bind", kInsert, L"complete", L"raise"})); });
  EXPECT_EQ(raised.code, Numbered(1000));
  EXPECT_EQ(raised.source, L"Worker");
  EXPECT_EQ(raised.description, L"as told");
  for (const wchar_t* vote : {L"complete", L"abort", L"bind"})
    EXPECT_EQ(RaisedBy([&] {
                Run(Steps({L"bind", L"DELETE FROM t", vote, L"raise"}));
              }).code,
              Numbered(1000));
  EXPECT_EQ(Ids(), L"1,2,3");
}

TEST_F(UnitOfWorkTest, AVoteOfAnEarlierCallDoesNotCount) {
  Run(Steps({L"bind", L"abort"}));
  Run(Steps({L"bind", kInsert}));
  EXPECT_EQ(Ids(), L"1,2,3,10");
}

TEST_F(UnitOfWorkTest, AllContextsOfAUnitShareOneSession) {
  // The second context sees what the first has not committed, and its temporary table.
  Run(Steps({L"bind", L"CREATE TABLE #x (FID int)", kInsert, L"bind",
             L"INSERT INTO #x SELECT FInterID FROM t WHERE FInterID = 10",
             L"UPDATE t SET FName = 'seen' WHERE FInterID IN (SELECT FID FROM #x)", L"complete"}));
  EXPECT_EQ(database_.Column(L"SELECT FName FROM t WHERE FInterID = 10"), L"seen");
}

TEST_F(UnitOfWorkTest, ANestedHostedCallJoinsTheOuterUnit) {
  Run(Steps({L"bind", kInsert, L"nest", L"bind", L"DELETE FROM t WHERE FInterID = 1", L"complete"}));
  EXPECT_EQ(Ids(), L"2,3,10");
  Run(Steps({L"bind", L"DELETE FROM t", L"complete", L"nest", L"bind", L"abort"}));
  EXPECT_EQ(Ids(), L"2,3,10");
}

TEST_F(UnitOfWorkTest, EveryDataSourceOfTheUnitEndsTheSameWay) {
  const Database other;
  const auto run = [&](const wchar_t* vote) {
    Run(Steps({L"bind", L"DELETE FROM t WHERE FInterID = 1", L"with", other.Dsn(), L"bind",
               L"DELETE FROM t WHERE FInterID = 2", vote}));
  };
  run(L"abort");
  EXPECT_EQ(Ids(), L"1,2,3");
  EXPECT_EQ(other.Column(L"SELECT FInterID FROM t"), L"1,2,3");
  run(L"complete");
  EXPECT_EQ(Ids(), L"2,3");
  EXPECT_EQ(other.Column(L"SELECT FInterID FROM t"), L"1,3");
}

TEST_F(UnitOfWorkTest, ACommitThatFailsMakesTheCallFail) {
  const Raised raised = RaisedBy([&] {
    Run(Steps({L"bind", kInsert, L"ROLLBACK TRANSACTION", L"complete"}));
  });
  EXPECT_TRUE(FAILED(raised.code));
  EXPECT_EQ(raised.source, L"Microsoft OLE DB Provider for SQL Server");
  EXPECT_NE(raised.description, L"");
  EXPECT_EQ(Ids(), L"1,2,3");
}

TEST_F(UnitOfWorkTest, TheCallsOwnErrorWinsWhenTheTransactionIsGone) {
  EXPECT_EQ(RaisedBy([&] { Run(Steps({L"bind", L"ROLLBACK TRANSACTION", L"raise"})); }).code, Numbered(1000));
}

TEST_F(UnitOfWorkTest, WithoutTheHostEveryStatementIsItsOwnTransaction) {
  const Object free = NewWorker();
  free.Call(L"Run", database_.Dsn(), Steps({L"bind", kInsert, L"abort"}));
  EXPECT_EQ(Ids(), L"1,2,3,10");
}

TEST_F(UnitOfWorkTest, PropertiesAndUnknownMembersPassThrough) {
  EXPECT_EQ(worker_.Get(L"Seven"), Variant(7));
  EXPECT_EQ(RaisedBy([&] { worker_.Call(L"NoSuchMember"); }).code, DISP_E_UNKNOWNNAME);
  EXPECT_EQ(RaisedBy([&] { worker_.Call(L"Run"); }).code, DISP_E_BADPARAMCOUNT);
}

TEST_F(UnitOfWorkTest, TheHostRefusesAnUnknownClass) {
  EXPECT_TRUE(FAILED(RaisedBy([] { New(L"ErpStandIn.Host").Call(L"CreateObject", L"No.SuchClass"); }).code));
}

// IFontDisp.
constexpr IID kFontDispatch = {0xBEF6E003, 0xA874, 0x101A, {0x8B, 0xBA, 0x00, 0xAA, 0x00, 0x30, 0x0C, 0xAB}};

// The system's font object is one with a dispinterface that is no dual one.
TEST_F(UnitOfWorkTest, AHostedObjectIsItsDispatchInterfaceToo) {
  const Object font = New(L"ErpStandIn.Host").Call(L"CreateObject", L"StdFont").AsObject();
  com::Ptr<IDispatch> byInterface;
  ASSERT_EQ(font.pointer()->QueryInterface(kFontDispatch, byInterface.OutVoid()), S_OK);
  EXPECT_EQ(byInterface.Get(), font.pointer());
  EXPECT_EQ(font.Get(L"Bold").type(), VT_BOOL);
  com::Ptr<ITypeInfo> info;
  EXPECT_EQ(font.pointer()->GetTypeInfo(0, LOCALE_NEUTRAL, info.Out()), S_OK);
}

TEST_F(UnitOfWorkTest, AHostedObjectHasTheInterfacesOfTheOneBehindIt) {
  IDispatch* const object = worker_.pointer();
  com::Ptr<ISupportErrorInfo> errorInfo;
  ASSERT_EQ(object->QueryInterface(IID_ISupportErrorInfo, errorInfo.OutVoid()), S_OK);
  EXPECT_EQ(errorInfo->InterfaceSupportsErrorInfo(IID_IDispatch), S_OK);
  EXPECT_EQ(errorInfo->InterfaceSupportsErrorInfo(IID_IClassFactory), S_FALSE);
  com::Ptr<IUnknown> identity;
  com::Ptr<IUnknown> again;
  object->QueryInterface(IID_IUnknown, identity.OutVoid());
  errorInfo->QueryInterface(IID_IUnknown, again.OutVoid());
  EXPECT_EQ(identity, again);
  com::Ptr<IUnknown> none;
  EXPECT_EQ(object->QueryInterface(IID_IClassFactory, none.OutVoid()), E_NOINTERFACE);
}

// A unit that the client has begun holds all calls until it is ended.
class BegunUnitTest : public UnitOfWorkTest {
 protected:
  Object host_ = New(L"ErpStandIn.Host");
};

TEST_F(BegunUnitTest, CommitsSeveralCallsAtItsEnd) {
  host_.Call(L"BeginUnit");
  Run(Steps({L"bind", kInsert, L"complete"}));
  EXPECT_FALSE(host_.Get(L"IsAborting").AsBool());
  Run(Steps({L"bind", L"DELETE FROM t WHERE FInterID = 1"}));
  host_.Call(L"EndUnit", true);
  EXPECT_EQ(Ids(), L"2,3,10");
}

TEST_F(BegunUnitTest, RollsBackAfterAnAbortVoteAndWhenItIsTold) {
  host_.Call(L"BeginUnit");
  Run(Steps({L"bind", kInsert, L"abort"}));
  EXPECT_TRUE(host_.Get(L"IsAborting").AsBool());
  host_.Call(L"EndUnit", true);
  EXPECT_EQ(Ids(), L"1,2,3");
  host_.Call(L"BeginUnit");
  Run(Steps({L"bind", kInsert, L"complete"}));
  host_.Call(L"EndUnit", false);
  EXPECT_EQ(Ids(), L"1,2,3");
}

TEST_F(BegunUnitTest, RollsBackWithItsHost) {
  host_.Call(L"BeginUnit");
  Run(Steps({L"bind", kInsert, L"complete"}));
  host_ = Object();
  EXPECT_EQ(Ids(), L"1,2,3");
}

TEST_F(BegunUnitTest, IsTheOnlyOne) {
  const HRESULT invalid = Numbered(static_cast<int>(com::RuntimeError::InvalidCall));
  EXPECT_EQ(RaisedBy([&] { host_.Call(L"EndUnit", true); }).code, invalid);
  EXPECT_EQ(RaisedBy([&] { host_.Get(L"IsAborting"); }).code, invalid);
  host_.Call(L"BeginUnit");
  EXPECT_EQ(RaisedBy([&] { host_.Call(L"BeginUnit"); }).code, invalid);
  host_.Call(L"EndUnit", true);
}

} // namespace
} // namespace standin::test
