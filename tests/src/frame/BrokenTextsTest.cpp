// The texts of messages where the resource loader is missing or fails, and where the text formatting fails:
// the outside classes are the test's own, on a thread that has not met others yet.
#include <gtest/gtest.h>

#include "src/frame/globals/Texts.h"
#include "tests/src/ecn/Notices.h"
#include "tests/support/Client.h"
#include "tests/support/Collections.h"
#include "tests/support/Printing.h"
#include "tests/support/Replacement.h"

namespace mbom::test {
namespace {

using com::ComError;
using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

// Cannot be made, as a class that is not registered.
class MissingLoader {
 public:
  MissingLoader() { throw ComError::FromSystem(REGDB_E_CLASSNOTREG); }
};

// Cannot be pointed at a module.
class BrokenLoader {
 public:
  std::wstring BaseName() const { return L""; }
  void PutBaseName(const std::wstring& /*name*/) {
    throw ComError(E_FAIL, L"TarnelResLoader", L"no such module");
  }
};

class BrokenFormatting {
 public:
  static constexpr HRESULT kCode = static_cast<HRESULT>(0x80041234);
  Variant FormatText(const Variant& /*text*/, const Variant& /*values*/) const {
    throw ComError(kCode, L"ruvo10", L"no format");
  }
};

} // namespace
} // namespace mbom::test

namespace com {

using namespace mbom::test;

template <>
const DispatchTable& TableOf<MissingLoader>() {
  static const DispatchTable table(IID_NULL, {});
  return table;
}
template <>
const DispatchTable& TableOf<BrokenLoader>() {
  static const DispatchTable table(
      IID_NULL, {
                    PropertyGet<&BrokenLoader::BaseName>(1, L"ResFileBaseName"),
                    PropertyPut<&BrokenLoader::PutBaseName>(1, L"ResFileBaseName", {L"value"}),
                });
  return table;
}
template <>
const DispatchTable& TableOf<BrokenFormatting>() {
  static const DispatchTable table(
      IID_NULL, {Method<&BrokenFormatting::FormatText>(1, L"FormatText", {L"text", L"values"})});
  return table;
}

} // namespace com

namespace mbom::test {
namespace {

// ---- the loader

// Runs `test` on a thread of its own for each loader that is none.
template <class Test>
void WithoutLoader(const Test& test) {
  InApartment([&test] {
    const Replacement<MissingLoader> loader(L"TarnelResLoader.Loader");
    test();
  });
  InApartment([&test] {
    const Replacement<BrokenLoader> loader(L"TarnelResLoader.Loader");
    test();
  });
}

TEST(BrokenTexts, AMissingOrFailingLoaderGivesEmptyTextsAndKeepsThePendingError) {
  WithoutLoader([] {
    EXPECT_EQ(LoadResText(L" 销售订单 ", L"en", Spacing::Both), L"");
    EXPECT_EQ(LoadResText(L"A^|^~$~销售订单^|^B", L"chs"), L"");
    ComError(E_ABORT, L"Caller", L"the caller's own").SetOnThread();
    EXPECT_EQ(LoadResText(L"销售订单", L"cht"), L"");
    EXPECT_EQ(ComError::FromThread(E_ABORT).description(), L"the caller's own");
    EXPECT_EQ(LoadResTextFormat(L"[%1] 至 [%2]", L"chs", {1, 2}), L"");
  });
}

class BrokenTextsOfBoms : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FStatus, FUseStatus, FCheckID, FEcnInterID) "
                      L"VALUES (1, 'B1', 0, 1072, 4, 0), (2, 'B2', 0, 1072, 4, 9)");
    database_.Execute(L"INSERT INTO SEOrderEntry (FInterID, FEntryID, FItemID, FBomInterID) VALUES "
                      L"(1, 1, 500, 2)");
  }
  void Reset() const {
    database_.Execute(L"UPDATE ICBOM SET FStatus = 0, FCheckerID = NULL, FAudDate = NULL");
  }

  const TestDatabase database_;
};

TEST_F(BrokenTextsOfBoms, LoseTheirWordsWithoutALoaderAndNothingElse) {
  WithoutLoader([this] {
    Reset();
    const Object check = Unhosted(L"CBomCheck");
    const std::wstring dsn = database_.Dsn(L"Language=chs");
    Variant message(L"as it came");
    // An audit: the number stands alone, and the BOM is audited.
    EXPECT_EQ(check.Call(L"BomCheck", dsn, 1, L"N", 5, Variant::Reference(message)), Variant(1));
    EXPECT_EQ(message, Variant(L"B1"));
    EXPECT_EQ(database_.Value(L"SELECT FStatus, FCheckerID FROM ICBOM WHERE FInterID = 1"), L"1|5");
    // A refusal.
    EXPECT_EQ(check.Call(L"BomCheck", dsn, 4711, L"N", 5, Variant::Reference(message)), Variant(2));
    EXPECT_EQ(message, Variant(L"N"));
    EXPECT_EQ(check.Call(L"GetBomDelInfo", dsn, 1, L"N", Variant::Reference(message)), Variant(1));
    EXPECT_EQ(message, Variant(L""));

    const Object bom = Unhosted(L"BomUpdate");
    const Object head = MakeDictionary({{L"FInterID", 2}});
    message = Variant(L"as it came");
    EXPECT_EQ(bom.Call(L"EndSave", dsn, MakeVector({head}), Variant::Reference(message)), Variant(false));
    EXPECT_EQ(message, Variant(L""));
    EXPECT_EQ(head.Get(L"Value", L"SaveRetCode").AsLong(), 99);
    // A list of what uses a BOM: its line breaks are left.
    EXPECT_EQ(bom.Call(L"CheckBomUsed", dsn, 2, Variant::Reference(message)), Variant(1));
    EXPECT_EQ(message, Variant(L"\r\n"));
  });
}

// ---- the formatting

template <class Test>
void WithoutFormatting(const Test& test) {
  InApartment([&test] {
    const Replacement<BrokenFormatting> formatting(L"ruvo10.Global");
    test();
  });
}

TEST(BrokenTexts, AFailingFormattingRises) {
  WithoutFormatting([] {
    const Raised raised = RaisedBy([] { LoadResTextFormat(L"[%1] 至 [%2]", L"chs", {1, 2}); });
    EXPECT_EQ(raised.code, BrokenFormatting::kCode);
    EXPECT_EQ(raised.source, L"ruvo10");
    EXPECT_EQ(raised.description, L"no format");
  });
}

TEST(BrokenTexts, AChangeNoticeIsNotSavedWhenTheReasonCannotBeFormatted) {
  const Notices notices;
  const TestDatabase& database = notices.database;
  // The added line is like line 1 of the BOM, and valid in the same time.
  database.Execute(L"INSERT INTO t_SystemProfile (FCategory, FKey, FValue) VALUES ('IC', 'EnableEcnRight', "
                   L"'1')");
  database.Execute(L"UPDATE IcEcnEntry SET FItemID = 201, FOperID = 40, FMachinePos = 'P1', FOffSetDay = 3, "
                   L"FBeginDay = '2026-04-01', FEndDay = '2026-04-02' WHERE FInterID = 77 AND FEntryID = 1");
  WithoutFormatting([&database] {
    const Trace trace;
    Variant message(L"as it came");
    const Object save = MakeVector({MakeDictionary({{L"FInterID", 77}})});
    EXPECT_EQ(Unhosted(L"CEcnInfo")
                  .Call(L"EndSave", database.Dsn(L"Language=chs"), save, Variant::Reference(message)),
              Variant(false));
    EXPECT_EQ(message, Variant(L"as it came"));
    EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteAbort"}));
  });
  // No snapshot was taken.
  EXPECT_EQ(database.Rows(L"SELECT DISTINCT FOldItemID FROM IcEcnEntry"), Texts{L"NULL"});
}

TEST(BrokenTexts, ACustomerBomIsNotAuditedWhenTheReasonCannotBeFormatted) {
  const TestDatabase database;
  database.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FBomType, FStatus) VALUES (5, 'K5', 3, 0), "
                   L"(9, 'K9', 3, 1)");
  database.Execute(L"INSERT INTO ICCustBOMChild (FInterID, FEntryID, FItemID, FCustBOMCode) VALUES "
                   L"(9, 1, 502, 5)");
  WithoutFormatting([&database] {
    const Trace trace;
    Variant message(L"as it came");
    EXPECT_EQ(Unhosted(L"clsMCustBOM")
                  .Call(L"UpdateAuditFlag", database.Dsn(L"Language=chs"), L"5", true, L"",
                        Variant::Reference(message)),
              Variant(false));
    EXPECT_EQ(message, Variant(L"as it came"));
    EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
    EXPECT_EQ(trace.Details(L"Execute"), Texts{}); // nothing was written
  });
  EXPECT_EQ(database.Value(L"SELECT FStatus FROM ICBOM WHERE FInterID = 5"), L"0");
}

} // namespace
} // namespace mbom::test
