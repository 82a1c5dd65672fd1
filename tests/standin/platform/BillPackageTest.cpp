#include "tests/standin/Support.h"

namespace standin::test {
namespace {

class BillPackageTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"CREATE TABLE ICBOM (FInterID int)");
    database_.Execute(L"CREATE TABLE ICBOMChild (FInterID int, FEntryID int)");
    database_.Execute(L"CREATE TABLE ICTransactionType (FID int, FTemplateID varchar(10))");
    database_.Execute(
        L"CREATE TABLE ICTemplate (FID varchar(10), FCtlIndex int, FFieldName varchar(50), FCaption "
        L"nvarchar(80), FCtlType int, FLookUpCls int, FRelateOutTbl int, FDefaultCtl int)");
    database_.Execute(
        L"CREATE TABLE ICTemplateEntry (FID varchar(10), FCtlOrder int, FFieldName varchar(50), "
        L"FHeadCaption nvarchar(80), FCtlType int, FLookUpCls int, FRelateOutTbl int, FDefaultCtl int)");
    database_.Execute(
        L"CREATE TABLE ICUserDefinedValue (FTranType int, FInterID int, FEntryID int, FFieldName "
        L"varchar(50), FID nvarchar(255), FName nvarchar(255))");
    database_.Execute(L"INSERT INTO ICTransactionType VALUES (50, 'Z01'), (53, 'Z03')");
    database_.Execute(L"INSERT INTO ICTemplate VALUES ('Z01', 2, 'FTwo', 'two', 22, 4, 1, 0), "
                      L"('Z01', 1, 'FOne', 'one', 0, -1, 0, 1), ('Z03', 1, 'FOther', 'x', 0, -1, 0, 0)");
    database_.Execute(L"INSERT INTO ICTemplateEntry VALUES ('Z01', 1, 'FLine', 'line', 0, -1, 0, 0)");
    database_.Execute(L"INSERT INTO ICBOM VALUES (7), (8)");
    database_.Execute(L"INSERT INTO ICBOMChild VALUES (7, 20), (7, 10)");
    database_.Execute(L"INSERT INTO ICUserDefinedValue VALUES (50, 7, 0, 'FTwo', '2', 'second'), "
                      L"(50, 7, 20, 'FLine', 'x', NULL), (50, 7, 30, 'FLine', 'no line', NULL), "
                      L"(53, 7, 0, 'FOther', 'o', NULL)");
  }
  void Load(int32_t bill, int32_t type = 50) const {
    package_.Call(L"GetBillPackage", database_.Dsn(), type, 1, bill);
  }
  static Variant In(const Object& values, const wchar_t* key, const wchar_t* property) {
    return values.Get(L"Value", key).AsObject().Get(L"Value", property);
  }

  const Database database_;
  const Object package_ = New(L"QorvaneBillDataAccess.clsBillPackage");
};

TEST_F(BillPackageTest, DescribesTheFieldsInTheirOrder) {
  Load(7);
  const Object head = package_.Get(L"BillDataHeadStruct").AsObject();
  ASSERT_EQ(head.Get(L"UBound"), Variant(2));
  EXPECT_EQ(head.Get(L"Item", 1).AsObject().Get(L"GetValue", L"FFieldName", L""), Variant(L"FOne"));
  const Object field = head.Get(L"Item", 2).AsObject();
  EXPECT_EQ(field.Get(L"GetValue", L"FDefaultCtl", 1), Variant(0));
  EXPECT_EQ(field.Get(L"GetValue", L"FRelateOutTbl", 0), Variant(1));
  EXPECT_EQ(field.Get(L"GetValue", L"FLookUpCls", -1), Variant(4));
  EXPECT_EQ(field.Get(L"GetValue", L"FCtlType", 0), Variant(22));
  EXPECT_EQ(field.Get(L"GetValue", L"FCaption", L""), Variant(L"two"));
  const Object entry = package_.Get(L"BillDataEntryStruct").AsObject();
  ASSERT_EQ(entry.Get(L"UBound"), Variant(1));
  EXPECT_EQ(entry.Get(L"Item", 1).AsObject().Get(L"GetValue", L"FFieldName", L""), Variant(L"FLine"));
}

TEST_F(BillPackageTest, HasTheValuesOfTheHeader) {
  Load(7);
  const Object values = package_.Get(L"BillDataHeadValue").AsObject();
  EXPECT_EQ(values.Get(L"Count"), Variant(1));
  EXPECT_EQ(In(values, L"P0_FTwo", L"FID"), Variant(L"2"));
  EXPECT_EQ(In(values, L"P0_FTwo", L"FName"), Variant(L"second"));
  Load(8);
  EXPECT_EQ(package_.Get(L"BillDataHeadValue").AsObject().Get(L"Count"), Variant(0));
  Load(9); // no such bill
  EXPECT_FALSE(package_.Get(L"BillDataHeadValue").AsObject());
  EXPECT_EQ(package_.Get(L"BillDataEntrysValue").AsObject().Get(L"UBound"), Variant(0));
}

TEST_F(BillPackageTest, HasTheLinesById) {
  Load(7);
  const Object lines = package_.Get(L"BillDataEntrysValue").AsObject();
  ASSERT_EQ(lines.Get(L"UBound"), Variant(2));
  EXPECT_EQ(lines.Get(L"Item", 1).AsObject().Get(L"GetValue", L"FEntryID", 0), Variant(10));
  EXPECT_EQ(package_.Get(L"BillDataEntrysValue", 2).AsObject().Get(L"GetValue", L"FEntryID", 0), Variant(20));
  Variant line(2);
  const Object values = package_.Get(L"BillDataEntryValue", Variant::TypedReference(line)).AsObject();
  EXPECT_EQ(In(values, L"P1_FLine", L"FID"), Variant(L"x"));
  EXPECT_TRUE(In(values, L"P1_FLine", L"FName").IsNull());
  EXPECT_EQ(RaisedBy([&] { package_.Get(L"BillDataEntryValue", 3); }).code, Numbered(9));
}

TEST_F(BillPackageTest, GivesEachLineItsOwnValues) {
  database_.Execute(L"INSERT INTO ICBOMChild (FInterID, FEntryID) VALUES (7, 25), (7, 40)");
  database_.Execute(
      L"INSERT INTO ICUserDefinedValue VALUES (50, 7, 40, 'FF', 'f40', NULL), (50, 7, 10, 'FA', 'a10', NULL), "
      L"(50, 7, 10, 'FB', 'b', NULL), (50, 7, 10, 'FC', 'c', NULL), (50, 7, 10, 'FD', 'd', NULL), "
      L"(50, 7, 10, 'FE', 'e', NULL), (50, 7, 15, 'FA', 'of a line that has gone', NULL), "
      L"(50, 7, 50, 'FA', 'of another one', NULL), (50, 7, 40, 'FA', 'a40', NULL)");
  Load(7);
  const auto valuesOf = [&](int32_t line) { return package_.Get(L"BillDataEntryValue", line).AsObject(); };
  const Object first = valuesOf(1);
  EXPECT_EQ(first.Get(L"Count"), Variant(5));
  EXPECT_EQ(In(first, L"P1_FA", L"FID"), Variant(L"a10"));
  EXPECT_EQ(In(first, L"P1_FE", L"FID"), Variant(L"e"));
  EXPECT_EQ(valuesOf(2).Get(L"Count"), Variant(1)) << "it had one before";
  EXPECT_EQ(valuesOf(3).Get(L"Count"), Variant(0));
  EXPECT_EQ(valuesOf(4).Get(L"Count"), Variant(2));
  EXPECT_EQ(In(valuesOf(4), L"P1_FA", L"FID"), Variant(L"a40"));
  EXPECT_EQ(In(valuesOf(4), L"P1_FF", L"FID"), Variant(L"f40"));
  EXPECT_EQ(RaisedBy([&] { valuesOf(5); }).code, Numbered(9));
  EXPECT_EQ(RaisedBy([&] { valuesOf(0); }).code, Numbered(9));
}

TEST_F(BillPackageTest, HoldsOneBillOfATypeAtATime) {
  Load(7, 53);
  EXPECT_EQ(In(package_.Get(L"BillDataHeadValue").AsObject(), L"P0_FOther", L"FID"), Variant(L"o"));
  EXPECT_EQ(package_.Get(L"BillDataHeadStruct").AsObject().Get(L"UBound"), Variant(1));
  Load(7);
  EXPECT_EQ(package_.Get(L"BillDataHeadStruct").AsObject().Get(L"UBound"), Variant(2));
  EXPECT_EQ(RaisedBy([&] { Load(7, 99); }).code, Numbered(5));
  EXPECT_EQ(RaisedBy([&] { New(L"QorvaneBillDataAccess.clsBillPackage").Get(L"BillDataHeadStruct"); }).code,
            Numbered(5));
}

TEST_F(BillPackageTest, ReadsAgainWhatHasChanged) {
  const auto value = [&] {
    Load(7);
    return In(package_.Get(L"BillDataHeadValue").AsObject(), L"P0_FTwo", L"FID");
  };
  EXPECT_EQ(value(), Variant(L"2"));
  EXPECT_EQ(value(), Variant(L"2"));
  database_.Execute(L"UPDATE ICUserDefinedValue SET FID = '3' WHERE FTranType = 50");
  EXPECT_EQ(value(), Variant(L"3"));
}

TEST_F(BillPackageTest, ReadsAgainWhatHasChangedBetweenUnitsOfWork) {
  const Object package =
      New(L"ErpStandIn.Host").Call(L"CreateObject", L"QorvaneBillDataAccess.clsBillPackage").AsObject();
  const auto value = [&] {
    package.Call(L"GetBillPackage", database_.Dsn(), 50, 1, 7);
    return In(package.Get(L"BillDataHeadValue").AsObject(), L"P0_FTwo", L"FID");
  };
  EXPECT_EQ(value(), Variant(L"2"));
  database_.Execute(L"UPDATE ICUserDefinedValue SET FID = '3' WHERE FTranType = 50");
  EXPECT_EQ(value(), Variant(L"3"));
}

TEST_F(BillPackageTest, IsNotTraced) {
  const Trace trace;
  Load(7);
  package_.Get(L"BillDataHeadValue");
  EXPECT_EQ(trace.Events(), Texts{});
}

} // namespace
} // namespace standin::test
