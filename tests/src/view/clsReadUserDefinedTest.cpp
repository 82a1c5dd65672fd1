// clsReadUserDefined: the values of user-defined fields beside the rows, what is asked of the bill package,
// and the order of the log.
#include <gtest/gtest.h>

#include <array>
#include <map>

#include "com/ValueText.h"
#include "tests/src/view/BrowserData.h"
#include "tests/support/Calls.h"
#include "tests/support/Client.h"
#include "tests/support/Collections.h"
#include "tests/support/LogFile.h"
#include "tests/support/Printing.h"
#include "tests/support/Replacement.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

constexpr wchar_t kClass[] = L"QorvaneMBomBill.clsReadUserDefined.";

std::wstring FieldsQuery(const wchar_t* table, const wchar_t* type = L"50") {
  return std::wstring(L"SELECT t1.FFieldName FROM ") + table +
         L" t1 INNER JOIN ICTransactionType t2 ON \r\nt1.FID=t2.FTemplateID WHERE t2.FID=" + type +
         L" AND t1.FDefaultCtl=0 ";
}

class UserDefinedTest : public testing::Test {
 protected:
  void SetUp() override {
    FillBrowserData(database_);
    database_.Execute(L"INSERT INTO ICTransactionType (FID, FName, FTemplateID) VALUES (50, 'BOM', 'Z01'), "
                      L"(53, 'C', 'Z03')");
    // Plain, looked up, of an outside table, of control type 22; and one that is not user-defined.
    database_.Execute(L"INSERT INTO ICTemplate (FID, FCtlIndex, FFieldName, FCtlType, FLookUpCls, "
                      L"FRelateOutTbl, FDefaultCtl) "
                      L"VALUES ('Z01', 1, 'FPlain', 0, -1, 0, 0), ('Z01', 2, 'FLookUp', 1, 4, 0, 0), "
                      L"('Z01', 3, 'FOutside', 0, -1, 1, 0), ('Z01', 4, 'FControl', 22, -1, 0, 0), "
                      L"('Z01', 5, 'FStandard', 0, -1, 0, 1), ('Z03', 1, 'FPlain', 0, -1, 0, 1)");
    database_.Execute(
        L"INSERT INTO ICTemplateEntry (FID, FCtlOrder, FFieldName, FCtlType, FLookUpCls, FRelateOutTbl, "
        L"FDefaultCtl) VALUES ('Z01', 1, 'FLine', 0, -1, 0, 0), ('Z01', 2, 'FLineLookUp', 0, 0, 0, 0)");
    database_.Execute(
        L"INSERT INTO ICUserDefinedValue (FTranType, FInterID, FEntryID, FFieldName, FID, FName) VALUES "
        L"(50, 11, 0, 'FPlain', 'p', 'P'), (50, 11, 0, 'FLookUp', 'l', 'L'), (50, 11, 0, 'FOutside', 'o', "
        L"'O'), "
        L"(50, 11, 0, 'FControl', 'c', 'C'), (50, 11, 0, 'FStandard', 's', 'S'), (50, 12, 0, 'FLookUp', 'x', "
        L"NULL), "
        L"(50, 11, 1, 'FLine', 'a', 'A'), (50, 11, 2, 'FLine', 'b', 'B'), (50, 11, 2, 'FLineLookUp', 'k', "
        L"'K'), "
        L"(50, 12, 1, 'FLine', 'd', 'D'), (53, 11, 0, 'FPlain', 'not this bill', NULL)");
  }

  Object Open(const wchar_t* query) const {
    Object rows = Object::Create(L"ADODB.Recordset");
    rows.Put(L"CursorLocation", 3);
    rows.Call(L"Open", query, database_.Dsn());
    rows.Put(L"ActiveConnection", Object());
    return rows;
  }
  Variant Read(const Object& rows, bool isBillHead, const wchar_t* type = L"50") const {
    return reader_.Call(L"GetUserDefinedValue", database_.Dsn(), type, rows, isBillHead);
  }
  static Texts Heads(const Variant& rows) {
    return RowTexts(rows, {L"FInterID", L"FPlain", L"FLookUp", L"FOutside", L"FControl"});
  }
  static Texts Lines(const Variant& rows) {
    return RowTexts(rows, {L"FInterID", L"FEntryID", L"FLine", L"FLineLookUp"});
  }

  const TestDatabase database_;
  const Object reader_ = Hosted(L"clsReadUserDefined");
  static constexpr const wchar_t* kHeads =
      L"SELECT FInterID, FBOMNumber FROM ICBOM WHERE FInterID < 14 ORDER "
      L"BY FInterID DESC";
};

TEST_F(UserDefinedTest, AddsTheValuesOfHeaders) {
  const Trace trace;
  const Object recordset = Open(kHeads);
  trace.Clear();
  const Variant rows = Read(recordset, true);
  // A plain field shows its id, everything that is looked up its name; a name may be null.
  EXPECT_EQ(Heads(rows), (Texts{L"13||||", L"12||NULL||", L"11|p|L|O|C"}));
  EXPECT_EQ(KeysOf(rows.AsObject().Get(L"Item", 3).AsObject()),
            (Texts{L"FInterID", L"FBOMNumber", L"FPlain", L"FLookUp", L"FOutside", L"FControl"}));
  // The package comes from the factory, once for all rows.
  EXPECT_EQ(trace.Events(),
            AroundSetUp({}, database_.Dsn(),
                        {L"Open\t" + FieldsQuery(L"ICTemplate"),
                         L"CreateServerObject\tQorvaneBillDataAccess.clsBillPackage", L"VoteComplete"}));
  EXPECT_TRUE(recordset.Get(L"EOF").AsBool());
}

TEST_F(UserDefinedTest, AddsTheValuesOfLines) {
  const Trace trace;
  // Bills may be mixed and lines in any order: values find their rows by both ids.
  const Variant rows = Read(Open(L"SELECT FInterID, FEntryID FROM ICBOMChild WHERE FInterID < 14 ORDER BY "
                                 L"FEntryID DESC, FInterID"),
                            false);
  EXPECT_EQ(Lines(rows), (Texts{L"11|2|b|K", L"11|1|a|", L"12|1|d|", L"13|1||"}));
  EXPECT_EQ(trace.Details(L"Open").back(), FieldsQuery(L"ICTemplateEntry"));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteComplete"});
}

TEST_F(UserDefinedTest, ReadsTheLinesOfABillByPosition) {
  // The first row stands for the first line of the bill, whose values belong to no row here.
  const Variant rows =
      Read(Open(L"SELECT FInterID, FEntryID FROM ICBOMChild WHERE FInterID=11 AND FEntryID=2"), false);
  EXPECT_EQ(Lines(rows), Texts{L"11|2||"});
}

TEST_F(UserDefinedTest, TakesHeadersByDefault) {
  EXPECT_EQ(Heads(reader_.Call(L"GetUserDefinedValue", database_.Dsn(), L"50", Open(kHeads))).back(),
            L"11|p|L|O|C");
}

TEST_F(UserDefinedTest, GivesTheRowsAloneWithoutUserDefinedFields) {
  const Trace trace;
  // The template of type 53 has none; type 99 has no template.
  for (const wchar_t* type : {L"53", L"99"}) {
    const Variant rows = Read(Open(kHeads), true, type);
    EXPECT_EQ(RowTexts(rows, {L"FInterID", L"FBOMNumber"}), (Texts{L"13|B13", L"12|B12", L"11|B11"}));
    EXPECT_EQ(KeysOf(rows.AsObject().Get(L"Item", 1).AsObject()), (Texts{L"FInterID", L"FBOMNumber"}));
  }
  EXPECT_EQ(trace.Details(L"Open")[1], FieldsQuery(L"ICTemplate", L"53"));
  EXPECT_EQ(trace.Details(L"CreateServerObject"), Texts{});
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteComplete", L"VoteComplete"}));
}

TEST_F(UserDefinedTest, GivesAnEmptyVectorForNoRows) {
  const Trace trace;
  for (const bool isBillHead : {true, false})
    EXPECT_EQ(Read(Open(L"SELECT FInterID FROM ICBOM WHERE 1=0"), isBillHead).AsObject().Get(L"Count"),
              Variant(0));
  EXPECT_EQ(trace.Details(L"CreateServerObject"), Texts{});
}

TEST_F(UserDefinedTest, StartsAtTheFirstRow) {
  const Object rows = Open(kHeads);
  rows.Call(L"MoveLast");
  EXPECT_EQ(Read(rows, true).AsObject().Get(L"Count"), Variant(3));
  rows.Call(L"MoveFirst");
  while (!rows.Get(L"EOF").AsBool()) rows.Call(L"MoveNext");
  EXPECT_EQ(Read(rows, true).AsObject().Get(L"Count"), Variant(3));
}

TEST_F(UserDefinedTest, GivesEveryRowOfABillItsValues) {
  const Variant rows = Read(Open(L"SELECT FInterID, FEntryID FROM ICBOMChild WHERE FInterID=11"), true);
  EXPECT_EQ(RowTexts(rows, {L"FInterID", L"FPlain"}), (Texts{L"11|p", L"11|p"}));
}

TEST_F(UserDefinedTest, ComparesIdsAsNumbers) {
  const Variant rows =
      Read(Open(L"SELECT '11' AS FInterID UNION SELECT '12.0' AS FInterID ORDER BY FInterID"), true);
  EXPECT_EQ(RowTexts(rows, {L"FPlain"}), (Texts{L"p", L""}));
  EXPECT_EQ(RaisedBy([&] { Read(Open(L"SELECT NULL AS FInterID"), true); }).code, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(RaisedBy([&] { Read(Open(L"SELECT 'x' AS FInterID"), true); }).code, DISP_E_TYPEMISMATCH);
}

TEST_F(UserDefinedTest, SeesWhatHasChangedBetweenCalls) {
  for (const Object& reader : {Hosted(L"clsReadUserDefined"), Unhosted(L"clsReadUserDefined")}) {
    const auto plain = [&] {
      return RowTexts(
                 reader.Call(L"GetUserDefinedValue", database_.Dsn(), L"50", Open(L"SELECT 11 AS FInterID")),
                 {L"FPlain"})
          .front();
    };
    database_.Execute(L"UPDATE ICUserDefinedValue SET FID = 'p' WHERE FFieldName = 'FPlain'");
    EXPECT_EQ(plain(), L"p");
    database_.Execute(L"UPDATE ICUserDefinedValue SET FID = 'q' WHERE FFieldName = 'FPlain'");
    EXPECT_EQ(plain(), L"q");
  }
}

TEST_F(UserDefinedTest, CreatesThePackageOncePerObject) {
  const Trace trace;
  Read(Open(kHeads), true);
  Read(Open(kHeads), true);
  EXPECT_EQ(trace.Details(L"CreateServerObject").size(), 1U);
  Hosted(L"clsReadUserDefined").Call(L"GetUserDefinedValue", database_.Dsn(), L"50", Open(kHeads));
  EXPECT_EQ(trace.Details(L"CreateServerObject").size(), 2U);
}

TEST_F(UserDefinedTest, LeavesTheRecordsetArgumentAsItCame) {
  const Object recordset = Open(kHeads);
  Variant argument(recordset);
  reader_.Call(L"GetUserDefinedValue", database_.Dsn(), L"50", Variant::Reference(argument), true);
  EXPECT_EQ(argument.AsObject(), recordset);
}

// ---- the log

// Logging to a file, for a thread of its own.
class LoggedTest : public UserDefinedTest {
 protected:
  // The log's events among others: "<" and ">" with the procedure's last name for a start and its end.
  static Texts Order(const Texts& events) {
    Texts order;
    std::map<std::wstring, std::wstring> open;
    std::vector<std::wstring> stack;
    for (const std::wstring& event : events) {
      if (event.starts_with(L"LogStart\t")) {
        std::wstring name = event.substr(9);
        EXPECT_TRUE(name.starts_with(kClass)) << com::ToUtf8(name);
        name = name.substr(std::wstring(kClass).size());
        stack.push_back(name);
        order.push_back(L"<" + name);
      } else if (event.starts_with(L"LogEnd\t")) {
        if (stack.empty()) continue;
        order.push_back(L">" + stack.back());
        stack.pop_back();
      } else {
        order.push_back(event.substr(0, event.find(L'\t')));
      }
    }
    return order;
  }
  // The events of a call on a thread of its own.
  template <class Call>
  static Texts EventsOf(Call call) {
    Texts events;
    InApartment([&] {
      const Trace trace;
      call(trace);
      events = trace.Events();
    });
    return events;
  }

  const LogFile log_;
};

TEST_F(LoggedTest, ReportsTheProceduresInTheirOrder) {
  const Texts events = EventsOf([this](const Trace& trace) {
    const Object rows = Open(kHeads);
    trace.Clear();
    Hosted(L"clsReadUserDefined").Call(L"GetUserDefinedValue", database_.Dsn(), L"50", rows);
  });
  Texts expected{L"GetDataContext", L"GetCallerInfo", L"<GetUserDefinedValue", L"GetDataContext",
                 L"BindDsn",        L"GetCallerInfo", L"GetConnection",        L"Open"};
  for (int row = 0; row < 3; ++row) {
    expected.emplace_back(L"<GetBillPackage");
    if (row == 0) expected.emplace_back(L"CreateServerObject");
    expected.insert(expected.end(), {L">GetBillPackage", L"<GetBillItemValue", L">GetBillItemValue",
                                     L"<MergeVect", L">MergeVect"});
  }
  expected.insert(expected.end(), {L">GetUserDefinedValue", L"VoteComplete"});
  EXPECT_EQ(Order(events), expected);
}

TEST_F(LoggedTest, ClosesItsEntriesBeforeTheVoteWhenItFails) {
  const Texts events = EventsOf([this](const Trace& trace) {
    const Object rows = Open(kHeads);
    const Object reader = Hosted(L"clsReadUserDefined");
    trace.Clear();
    const Fault fault(L"CreateServerObject");
    EXPECT_EQ(RaisedBy([&] { reader.Call(L"GetUserDefinedValue", database_.Dsn(), L"50", rows); }).code,
              Fault::kCode);
  });
  EXPECT_EQ(Order(events), (Texts{L"<GetUserDefinedValue", L"GetDataContext", L"BindDsn", L"GetCallerInfo",
                                  L"GetConnection", L"Open", L"<GetBillPackage", L"CreateServerObject",
                                  L">GetBillPackage", L">GetUserDefinedValue", L"VoteAbort"}));
}

TEST_F(LoggedTest, IsNotDisturbedByAFailingLog) {
  const Texts events = EventsOf([this](const Trace& /*trace*/) {
    const Object rows = Open(kHeads);
    const Fault start(L"LogStart", 2);
    const Fault end(L"LogEnd", 2);
    EXPECT_EQ(Heads(Hosted(L"clsReadUserDefined").Call(L"GetUserDefinedValue", database_.Dsn(), L"50", rows))
                  .back(),
              L"11|p|L|O|C");
  });
  EXPECT_EQ(events.back(), L"VoteComplete");
}

TEST_F(LoggedTest, OfTheTitlesHasTheReadersName) {
  const Texts events =
      EventsOf([this](const Trace& /*trace*/) { Hosted(L"BomView").Call(L"GetBomTitle", database_.Dsn()); });
  const Texts order = Order(events);
  ASSERT_GE(order.size(), 4U);
  EXPECT_EQ(Texts(order.end() - 4, order.end()),
            (Texts{L"VoteComplete", L"<MergeVect", L">MergeVect", L"VoteComplete"}));
}

TEST_F(LoggedTest, StaysSilentOnceDisabled) {
  LogFile::Disable();
  const Texts events = EventsOf([this](const Trace& /*trace*/) {
    const Object view = Hosted(L"BomView");
    view.Call(L"GetBomTitle", database_.Dsn());
    log_.Enable();
    view.Call(L"GetBomTitle", database_.Dsn());
  });
  for (const std::wstring& event : events) EXPECT_FALSE(event.starts_with(L"Log")) << com::ToUtf8(event);
}

// ---- a package of the test's own

struct PackageCall {
  VARTYPE types[4];
  std::wstring dsn;
  int32_t type, mode, bill;
};
std::vector<PackageCall> g_packageCalls;
bool g_noValueSet = false;
bool g_itemIsNothing = false;

// An item that is no Dictionary and numbers its one member otherwise.
class PlayedItem {
 public:
  Variant GetValue(const std::wstring& name, const Variant& fallback) const {
    return name == L"FName" ? Variant(L"played") : fallback;
  }
};

class PlayedPackage {
 public:
  void GetBillPackage(Variant& dsn, Variant& type, Variant& mode, Variant& bill) const {
    g_packageCalls.push_back({{dsn.type(), type.type(), mode.type(), bill.type()},
                              dsn.AsText(),
                              type.AsLong(),
                              mode.AsLong(),
                              bill.AsLong()});
  }
  Object Structure() const {
    // What the description does not say has its default: not user-defined, nothing looked up.
    return MakeVector(
        {MakeDictionary({{L"FFieldName", L"FNotMine"}}),
         MakeDictionary({{L"FFieldName", L"FMine"}, {L"FDefaultCtl", 0}}),
         MakeDictionary({{L"FFieldName", L"FNoValue"}, {L"FDefaultCtl", L"0"}}),
         MakeDictionary({{L"FFieldName", L"FObject"}, {L"FDefaultCtl", 0}, {L"FRelateOutTbl", 1}}),
         MakeDictionary({{L"FFieldName", L"FPlayed"}, {L"FDefaultCtl", 0}, {L"FRelateOutTbl", 1}})});
  }
  Object HeadValue() const { return g_noValueSet ? Object() : Values(L"P0_"); }
  Object Entries() const {
    return MakeVector({MakeDictionary({{L"FEntryID", 2}}), MakeDictionary({{L"FEntryID", L"1"}})});
  }
  Object EntryValue(int32_t& line) const {
    EXPECT_TRUE(line == 1 || line == 2);
    return g_noValueSet ? Object() : Values(L"P1_");
  }

 private:
  static Object Values(const std::wstring& prefix) {
    const Object played = g_itemIsNothing ? Object() : com::ToObject(com::Make<PlayedItem>());
    return MakeDictionary({{(prefix + L"FMine").c_str(), MakeDictionary({{L"FID", 7}, {L"FName", L"seven"}})},
                           {(prefix + L"FObject").c_str(), MakeDictionary({{L"FName", MakeVector({})}})},
                           {(prefix + L"FPlayed").c_str(), played},
                           {(prefix + L"FNotMine").c_str(), MakeDictionary({{L"FID", 8}})}});
  }
};

} // namespace
} // namespace mbom::test

template <>
const com::DispatchTable& com::TableOf<mbom::test::PlayedItem>() {
  using mbom::test::PlayedItem;
  static const DispatchTable table(IID_NULL,
                                   {Method<&PlayedItem::GetValue>(77, L"GetValue", {L"name", L"fallback"})});
  return table;
}

template <>
const com::DispatchTable& com::TableOf<mbom::test::PlayedPackage>() {
  using mbom::test::PlayedPackage;
  static const DispatchTable table(
      IID_NULL, {
                    Method<&PlayedPackage::GetBillPackage>(1, L"GetBillPackage", {L"a", L"b", L"c", L"d"}),
                    PropertyGet<&PlayedPackage::Structure>(2, L"BillDataHeadStruct"),
                    PropertyGet<&PlayedPackage::HeadValue>(3, L"BillDataHeadValue"),
                    PropertyGet<&PlayedPackage::Structure>(4, L"BillDataEntryStruct"),
                    PropertyGet<&PlayedPackage::Entries>(5, L"BillDataEntrysValue"),
                    PropertyGet<&PlayedPackage::EntryValue>(6, L"BillDataEntryValue", {L"line"}),
                });
  return table;
}

namespace mbom::test {
namespace {

class PlayedPackageTest : public UserDefinedTest {
 protected:
  // Reads on a thread where the package is the played one.
  void Played(const wchar_t* query, bool isBillHead, const std::vector<const wchar_t*>& columns,
              Texts& texts) {
    g_packageCalls.clear();
    InApartment([&] {
      const Replacement<PlayedPackage> package(L"QorvaneBillDataAccess.clsBillPackage");
      const Variant rows = Unhosted(L"clsReadUserDefined")
                               .Call(L"GetUserDefinedValue", database_.Dsn(), L"50", Open(query), isBillHead);
      texts = RowTexts(rows, columns);
    });
  }
  void TearDown() override {
    g_noValueSet = false;
    g_itemIsNothing = false;
  }
};

TEST_F(PlayedPackageTest, IsAskedForEveryRowsBillByReference) {
  Texts texts;
  Played(L"SELECT 5 AS FInterID UNION ALL SELECT 6 UNION ALL SELECT 5", true, {L"FInterID", L"FMine"}, texts);
  EXPECT_EQ(texts, (Texts{L"5|7", L"6|7", L"5|7"}));
  ASSERT_EQ(g_packageCalls.size(), 3U);
  const PackageCall& call = g_packageCalls[1];
  EXPECT_EQ(call.dsn, database_.Dsn());
  EXPECT_EQ(call.type, 50);
  EXPECT_EQ(call.mode, 1);
  EXPECT_EQ(call.bill, 6);
  EXPECT_EQ(call.types[0], VT_BSTR);
  for (int i = 1; i < 4; ++i) EXPECT_EQ(call.types[i], VT_I4);
}

TEST_F(PlayedPackageTest, GivesOnlyTheUserDefinedFieldsItHasValuesFor) {
  InApartment([this] {
    const Replacement<PlayedPackage> package(L"QorvaneBillDataAccess.clsBillPackage");
    const Object row =
        Unhosted(L"clsReadUserDefined")
            .Call(L"GetUserDefinedValue", database_.Dsn(), L"50", Open(L"SELECT 5 AS FInterID"))
            .AsObject()
            .Get(L"Item", 1)
            .AsObject();
    EXPECT_EQ(KeysOf(row), (Texts{L"FInterID", L"FMine", L"FObject", L"FPlayed"}));
    EXPECT_EQ(row.Get(L"Value", L"FMine"), Variant(7));
    EXPECT_EQ(row.Get(L"Value", L"FObject").AsObject().Get(L"UBound"), Variant(0));
    // Items need not be of one kind.
    EXPECT_EQ(row.Get(L"Value", L"FPlayed"), Variant(L"played"));
  });
}

TEST_F(PlayedPackageTest, TellsWhichLineAPositionIs) {
  Texts texts;
  // The package's second line is the one with the id 1.
  Played(L"SELECT 5 AS FInterID, 9 AS FEntryID UNION ALL SELECT 5, 1", false, {L"FEntryID", L"FMine"}, texts);
  EXPECT_EQ(texts, (Texts{L"9|", L"1|7"}));
}

TEST_F(PlayedPackageTest, MayHaveNoValueSet) {
  g_noValueSet = true;
  Texts texts;
  Played(L"SELECT 5 AS FInterID", true, {L"FInterID", L"FMine"}, texts);
  EXPECT_EQ(texts, Texts{L"5|"});
  Played(L"SELECT 5 AS FInterID, 2 AS FEntryID", false, {L"FInterID", L"FMine"}, texts);
  EXPECT_EQ(texts, Texts{L"5|"});
}

TEST_F(PlayedPackageTest, RaisesForAnItemThatIsNothing) {
  g_itemIsNothing = true;
  HRESULT raised = S_OK;
  InApartment([&] {
    const Replacement<PlayedPackage> package(L"QorvaneBillDataAccess.clsBillPackage");
    raised = RaisedBy([this] {
               Unhosted(L"clsReadUserDefined")
                   .Call(L"GetUserDefinedValue", database_.Dsn(), L"50", Open(L"SELECT 5 AS FInterID"));
             }).code;
  });
  EXPECT_EQ(static_cast<unsigned>(raised), 0x800A005BU); // 91: there is no object
}

// ---- failures

TEST_F(UserDefinedTest, RaisesForBadInput) {
  const Trace trace;
  EXPECT_EQ(RaisedBy([&] { Read(Object(), true); }).code, static_cast<HRESULT>(0x800A005B));
  EXPECT_EQ(RaisedBy([&] { Read(Open(kHeads), true, L"50'"); }).code, static_cast<HRESULT>(0x80040E14));
  // A condition that is no number fails when a bill is to be loaded.
  EXPECT_EQ(RaisedBy([&] { Read(Open(kHeads), true, L"50 OR 1=1"); }).code, DISP_E_TYPEMISMATCH);
  // More rows than the bill has lines.
  EXPECT_EQ(RaisedBy([&] {
              Read(Open(L"SELECT 12 AS FInterID, 1 AS FEntryID UNION ALL SELECT 12, 1"), false);
            }).code,
            static_cast<HRESULT>(0x800A0009));
  EXPECT_EQ(trace.Votes(), Texts(4, L"VoteAbort"));
  EXPECT_EQ(RaisedBy([&] {
              reader_.Call(L"GetUserDefinedValue", L"Provider=Embedded;Data Source=Z:\\no\\such\\file.db",
                           L"50", Open(kHeads));
            }).code,
            static_cast<HRESULT>(0x80004005));
}

class UserDefinedFailure : public UserDefinedTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(UserDefinedFailure, Rises) {
  for (const bool isBillHead : {true, false}) {
    const Object rows = Open(L"SELECT FInterID, FEntryID FROM ICBOMChild WHERE FInterID=11");
    const Object reader = Hosted(L"clsReadUserDefined");
    const Trace trace;
    const Fault fault(GetParam().kind, GetParam().nth);
    const Raised raised =
        RaisedBy([&] { reader.Call(L"GetUserDefinedValue", database_.Dsn(), L"50", rows, isBillHead); });
    EXPECT_EQ(raised.code, Fault::kCode);
    EXPECT_EQ(raised.description, Fault::kText);
    EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
  }
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, UserDefinedFailure,
                         testing::Values(OutsideCall{L"GetDataContext", 1}, OutsideCall{L"BindDsn", 1},
                                         OutsideCall{L"GetCallerInfo", 1}, OutsideCall{L"GetConnection", 1},
                                         OutsideCall{L"Open", 1}, OutsideCall{L"CreateServerObject", 1},
                                         OutsideCall{L"VoteComplete", 1}));

} // namespace
} // namespace mbom::test
