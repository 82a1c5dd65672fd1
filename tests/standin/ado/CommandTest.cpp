#include "tests/standin/Support.h"

namespace standin::test {
namespace {

// ADO's types and directions.
constexpr int32_t kInteger = 3;
constexpr int32_t kVarChar = 200;
constexpr int32_t kVarWChar = 202;
constexpr int32_t kNumeric = 131;
constexpr int32_t kTimeStamp = 135;
constexpr int32_t kInput = 1;
constexpr int32_t kOutput = 2;
constexpr int32_t kInputOutput = 3;
constexpr int32_t kReturnValue = 4;

class CommandTest : public testing::Test {
 protected:
  void SetUp() override { command_.Put(L"ActiveConnection", database_.connection()); }
  void Text(const wchar_t* text, int32_t type = 1) const {
    command_.Put(L"CommandText", text);
    command_.Put(L"CommandType", type);
  }
  Object Append(const wchar_t* name, int32_t type, int32_t direction, int32_t size,
                const Variant& value = Variant::Missing()) const {
    Object parameter = command_.Call(L"CreateParameter", name, type, direction, size, value).AsObject();
    Parameters().Call(L"Append", parameter);
    return parameter;
  }
  Object Parameters() const { return command_.Get(L"Parameters").AsObject(); }
  std::wstring Run() const { return ColumnText(command_.Call(L"Execute").AsObject()); }

  Database database_;
  Object command_ = New(L"ADODB.Command");
};

TEST_F(CommandTest, FillsItsMarkersInOrder) {
  Text(L"SELECT FInterID FROM t WHERE FInterID >= ? AND FName = ?");
  Append(L"", kInteger, kInput, 0, L"1");
  Append(L"", kVarWChar, kInput, 30, L"two");
  EXPECT_EQ(Run(), L"2");
}

TEST_F(CommandTest, PassesEveryKindOfValueAndNull) {
  database_.Execute(L"CREATE TABLE v (a int, b nvarchar(10), c decimal(10,3), d datetime, e float, f bit)");
  Text(L"INSERT INTO v VALUES (?, ?, ?, ?, ?, ?)");
  Append(L"a", kInteger, kInput, 0, 7);
  Append(L"b", kVarWChar, kInput, 10, Variant::Null());
  const Object number = Append(L"c", kNumeric, kInput, 0, L"12.345");
  number.Put(L"Precision", 10);
  number.Put(L"NumericScale", 3);
  Append(L"d", kTimeStamp, kInput, 0, Variant::Date(46086.5));
  Append(L"e", 5, kInput, 0, 0.25);
  Append(L"f", 11, kInput, 0, true);
  Variant affected;
  command_.Call(L"Execute", Variant::Reference(affected));
  EXPECT_EQ(affected, Variant(1));
  const Object row = database_.Execute(L"SELECT * FROM v");
  EXPECT_EQ(ValueOf(row, L"a"), Variant(7));
  EXPECT_TRUE(ValueOf(row, L"b").IsNull());
  EXPECT_EQ(ValueOf(row, L"c").AsText(), L"12.345");
  EXPECT_EQ(ValueOf(row, L"d"), Variant::Date(46086.5));
  EXPECT_EQ(ValueOf(row, L"e"), Variant(0.25));
  EXPECT_EQ(ValueOf(row, L"f"), Variant(true));
}

TEST_F(CommandTest, CallsAProcedureWithOutputsAndItsStatus) {
  database_.Execute(L"CREATE PROCEDURE p @name varchar(50), @id int OUTPUT, @text varchar(20) OUTPUT AS\n"
                    L"BEGIN\n"
                    L"SET NOCOUNT ON\n"
                    L"SELECT @id = MAX(FInterID) + 1 FROM t\n"
                    L"SET @text = @text + @name\n"
                    L"SELECT FName FROM t WHERE FInterID = 1\n"
                    L"RETURN 5\n"
                    L"END");
  Text(L"p", 4);
  Append(L"RETURN_VALUE", kInteger, kReturnValue, 4);
  Append(L"@name", kVarChar, kInput, 50, L"!");
  Append(L"@id", kInteger, kOutput, 0);
  Append(L"@text", kVarChar, kInputOutput, 20, L"given");
  EXPECT_EQ(Run(), L"one");
  const auto value = [&](const Variant& index) {
    return Parameters().Get(L"Item", index).AsObject().Get(L"Value");
  };
  EXPECT_EQ(value(L"return_value"), Variant(5));
  EXPECT_EQ(value(2), Variant(4));
  EXPECT_EQ(value(L"@TEXT"), Variant(L"given!"));
}

TEST_F(CommandTest, TakesTheValuesOfExecuteForItsInputs) {
  Text(L"SELECT FInterID FROM t WHERE FInterID = ?");
  Append(L"", kInteger, kInput, 0, 1);
  const Variant two(2);
  EXPECT_EQ(ColumnText(command_.Call(L"Execute", Variant::Missing(), Variant::Array(&two, 1)).AsObject()),
            L"2");
  const std::array many{Variant(1), Variant(2)};
  EXPECT_EQ(
      RaisedBy([&] { command_.Call(L"Execute", Variant::Missing(), Variant::Array(many.data(), 2)); }).code,
      Numbered(3001));
}

TEST_F(CommandTest, IsASourceForARecordset) {
  Text(L"SELECT FInterID FROM t WHERE FInterID > ?");
  Append(L"", kInteger, kInput, 0, 1);
  const Object recordset = New(L"ADODB.Recordset");
  recordset.Put(L"CursorLocation", 3);
  recordset.Call(L"Open", command_);
  EXPECT_EQ(recordset.Get(L"RecordCount"), Variant(2));
  EXPECT_EQ(recordset.Get(L"Source"), Variant(L"SELECT FInterID FROM t WHERE FInterID > ?"));
  EXPECT_EQ(recordset.Get(L"ActiveConnection").AsObject(), database_.connection());
  recordset.Put(L"ActiveConnection", Object());
  EXPECT_EQ(ColumnText(recordset), L"2,3");
}

TEST_F(CommandTest, GivesARecordsetLikeExecute) {
  Text(L"SELECT FInterID FROM t");
  const Object recordset = command_.Call(L"Execute").AsObject();
  EXPECT_EQ(recordset.Get(L"RecordCount"), Variant(-1));
  EXPECT_EQ(recordset.Get(L"CursorType"), Variant(0));
  constexpr int32_t kNoRecords = 128;
  EXPECT_FALSE(command_.Call(L"Execute", Variant::Missing(), Variant::Missing(), kNoRecords).AsObject());
}

TEST_F(CommandTest, KeepsItsParametersInACollection) {
  const Object first = Append(L"@First", kInteger, kInput, 0, 1);
  Append(L"@Second", kVarChar, kInput, 10, L"x");
  EXPECT_EQ(Parameters().Get(L"Count"), Variant(2));
  EXPECT_EQ(Parameters().Get(L"Item", L"@first").AsObject(), first);
  EXPECT_EQ(first.Get(L"Name"), Variant(L"@First"));
  EXPECT_EQ(first.Get(L"Type"), Variant(kInteger));
  EXPECT_EQ(first.Get(L"Direction"), Variant(kInput));
  EXPECT_EQ(Parameters().Get(L"Item", 1).AsObject().Get(L"Size"), Variant(10));
  EXPECT_EQ(RaisedBy([&] { Parameters().Get(L"Item", 2); }).code, Numbered(3265));
  EXPECT_EQ(RaisedBy([&] { Parameters().Get(L"Item", L"@third"); }).code, Numbered(3265));
  EXPECT_EQ(RaisedBy([&] { Parameters().Call(L"Append", first); }).code, Numbered(3367));
  EXPECT_EQ(RaisedBy([&] { Parameters().Call(L"Append", command_); }).code, Numbered(3001));
  EXPECT_EQ(RaisedBy([&] { Parameters().Call(L"Refresh"); }).code, Numbered(3251));
  Parameters().Call(L"Delete", L"@FIRST");
  EXPECT_EQ(Parameters().Get(L"Count"), Variant(1));
}

TEST_F(CommandTest, RefusesAParameterThatIsNotDefined) {
  EXPECT_EQ(RaisedBy([&] { Append(L"", 0, kInput, 0); }).code, Numbered(3708));
  EXPECT_EQ(RaisedBy([&] { Append(L"", kVarChar, kInput, 0, L"x"); }).code, Numbered(3708));
  EXPECT_EQ(RaisedBy([&] { Append(L"", 9999, kInput, 0); }).code, Numbered(3001));
  EXPECT_EQ(RaisedBy([&] { Append(L"", kInteger, 9, 0); }).code, Numbered(3001));
}

TEST_F(CommandTest, RefusesAValueOfAnotherTypeOrTooLong) {
  const Raised raised = RaisedBy([&] { Append(L"", kInteger, kInput, 0, L"abc"); });
  EXPECT_EQ(raised.code, Numbered(3421));
  EXPECT_EQ(raised.description, L"Application uses a value of the wrong type for the current operation.");
  EXPECT_EQ(RaisedBy([&] { Append(L"", kVarChar, kInput, 3, L"four"); }).code, Numbered(3421));
  // A Chinese character takes two bytes of a varchar.
  EXPECT_EQ(RaisedBy([&] { Append(L"", kVarChar, kInput, 4, L"车架a"); }).code, Numbered(3421));
  EXPECT_EQ(Append(L"", kVarChar, kInput, 4, L"车架").Get(L"Value"), Variant(L"车架"));
  const Object parameter = Append(L"", kInteger, kInput, 0);
  EXPECT_TRUE(parameter.Get(L"Value").IsEmpty());
  parameter.Put(L"Value", L"12");
  EXPECT_EQ(parameter.Get(L"Value"), Variant(12));
}

TEST_F(CommandTest, NeedsAConnection) {
  Text(L"SELECT 1");
  command_.Put(L"ActiveConnection", Object());
  const Raised raised = RaisedBy([&] { command_.Call(L"Execute"); });
  EXPECT_EQ(raised.code, Numbered(3709));
  EXPECT_EQ(raised.source, L"ADODB.Command");
  command_.Put(L"ActiveConnection", database_.Dsn());
  EXPECT_EQ(command_.Get(L"ActiveConnection").AsObject().Get(L"State"), Variant(1));
  EXPECT_EQ(RaisedBy([&] { command_.Put(L"CommandType", 3); }).code, Numbered(3001));
}

TEST_F(CommandTest, RunsAgainWithOtherValues) {
  Text(L"SELECT FInterID FROM t WHERE FInterID = ?");
  const Object parameter = Append(L"", kInteger, kInput, 0, 1);
  EXPECT_EQ(Run(), L"1");
  parameter.Put(L"Value", 3);
  EXPECT_EQ(Run(), L"3");
}

} // namespace
} // namespace standin::test
