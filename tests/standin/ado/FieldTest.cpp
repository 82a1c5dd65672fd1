#include "com/Text.h"
#include "tests/standin/Support.h"

namespace standin::test {
namespace {

struct Column {
  const wchar_t* type;
  int32_t adoType;
  int32_t definedSize;
  VARTYPE variant;
  const wchar_t* literal;
};

Object FieldsOf(const Object& recordset) {
  return recordset.Get(L"Fields").AsObject();
}

TEST(Field, HasTheTypesOfAdo) {
  const Database database;
  const std::array columns{
      Column{L"tinyint", 17, 1, VT_UI1, L"200"},
      Column{L"smallint", 2, 2, VT_I2, L"-3"},
      Column{L"int", 3, 4, VT_I4, L"70000"},
      Column{L"bigint", 20, 8, VT_I8, L"5000000000"},
      Column{L"bit", 11, 2, VT_BOOL, L"1"},
      Column{L"decimal(28,10)", 131, 19, VT_DECIMAL, L"2.5"},
      Column{L"money", 6, 8, VT_CY, L"2.5"},
      Column{L"float", 5, 8, VT_R8, L"2.5"},
      Column{L"real", 4, 4, VT_R4, L"2.5"},
      Column{L"char(10)", 129, 10, VT_BSTR, L"'a'"},
      Column{L"varchar(30)", 200, 30, VT_BSTR, L"'a'"},
      Column{L"nchar(10)", 130, 10, VT_BSTR, L"'a'"},
      Column{L"nvarchar(30)", 202, 30, VT_BSTR, L"'a'"},
      Column{L"text", 201, 2147483647, VT_BSTR, L"'a'"},
      Column{L"ntext", 203, 1073741823, VT_BSTR, L"'a'"},
      Column{L"datetime", 135, 16, VT_DATE, L"'2026-03-05 06:00:00'"},
      Column{L"smalldatetime", 135, 16, VT_DATE, L"'2026-03-05'"},
      Column{L"uniqueidentifier", 72, 16, VT_BSTR, L"'6F9619FF-8B86-D011-B42D-00C04FC964FF'"},
      Column{L"varbinary(8)", 204, 8, VT_ARRAY | VT_UI1, L"0x0102"},
  };
  std::wstring create;
  std::wstring values;
  for (size_t i = 0; i < columns.size(); ++i) {
    create += (i ? L", c" : L"c") + std::to_wstring(i) + L" " + columns[i].type + L" NULL";
    values += std::wstring(i ? L", " : L"") + columns[i].literal;
  }
  database.Execute(L"CREATE TABLE types (" + create + L")");
  database.Execute(L"INSERT INTO types VALUES (" + values + L")");
  database.Execute(L"INSERT INTO types (c0) VALUES (NULL)");
  const Object recordset = database.Open(L"SELECT * FROM types", 3);
  const Object fields = FieldsOf(recordset);
  ASSERT_EQ(fields.Get(L"Count"), Variant(static_cast<int32_t>(columns.size())));
  for (size_t i = 0; i < columns.size(); ++i) {
    const Object field = fields.Get(L"Item", static_cast<int32_t>(i)).AsObject();
    const std::string what = com::ToUtf8(columns[i].type);
    EXPECT_EQ(field.Get(L"Type"), Variant(columns[i].adoType)) << what;
    EXPECT_EQ(field.Get(L"DefinedSize"), Variant(columns[i].definedSize)) << what;
    EXPECT_EQ(field.Get(L"Value").type(), columns[i].variant) << what;
    EXPECT_EQ(field.Get(L"Attributes").AsLong() & 0x60, 0x60) << what << " takes nulls";
  }
  const Object decimal = fields.Get(L"Item", 5).AsObject();
  EXPECT_EQ(decimal.Get(L"Precision").AsLong(), 28);
  EXPECT_EQ(decimal.Get(L"NumericScale").AsLong(), 10);
  EXPECT_EQ(decimal.Get(L"Value").AsDouble(), 2.5);
  EXPECT_EQ(fields.Get(L"Item", 15).AsObject().Get(L"Value"), Variant::Date(46086.25));
  EXPECT_EQ(fields.Get(L"Item", 17).AsObject().Get(L"Value"),
            Variant(L"{6F9619FF-8B86-D011-B42D-00C04FC964FF}"));
  recordset.Call(L"MoveNext");
  for (size_t i = 0; i < columns.size(); ++i) {
    const Object field = fields.Get(L"Item", static_cast<int32_t>(i)).AsObject();
    EXPECT_TRUE(field.Get(L"Value").IsNull());
    EXPECT_EQ(field.Get(L"ActualSize"), Variant(0));
  }
}

TEST(Fields, AreFoundByNameInAnyCaseOrByOrdinal) {
  const Database database;
  const Object recordset = database.Execute(L"SELECT FInterID, FName FROM t");
  const Object fields = FieldsOf(recordset);
  EXPECT_EQ(fields.Get(L"Count"), Variant(2));
  EXPECT_EQ(ValueOf(recordset, L"FNAME"), Variant(L"one"));
  const Object second = fields.Get(L"Item", 1).AsObject();
  EXPECT_EQ(second.Get(L"Name"), Variant(L"FName"));
  EXPECT_EQ(second.Get(L"ActualSize"), Variant(6));
  // rs("FName"): the default member of the recordset is Fields, that of Fields is Item.
  EXPECT_EQ(recordset.Get(L"Fields", L"fname").AsObject().Get(L"Value"), Variant(L"one"));
  for (const Variant& index : {Variant(2), Variant(-1), Variant(L"FNone")}) {
    const Raised raised = RaisedBy([&] { fields.Get(L"Item", index); });
    EXPECT_EQ(raised.code, Numbered(3265));
    EXPECT_EQ(raised.source, L"ADODB.Fields");
    EXPECT_EQ(raised.description,
              L"Item cannot be found in the collection corresponding to the requested name or ordinal.");
  }
}

TEST(Fields, Enumerate) {
  const Database database;
  const Variant unknown = FieldsOf(database.Execute(L"SELECT FInterID, FName FROM t")).Get(L"_NewEnum");
  com::Ptr<IEnumVARIANT> fields;
  ASSERT_EQ(unknown.raw().punkVal->QueryInterface(IID_IEnumVARIANT, fields.OutVoid()), S_OK);
  Texts names;
  for (Variant field; fields->Next(1, field.Out(), nullptr) == S_OK;)
    names.push_back(field.AsObject().Get(L"Name").AsText());
  EXPECT_EQ(names, (Texts{L"FInterID", L"FName"}));
}

TEST(Field, FollowsTheCurrentRow) {
  const Database database;
  const Object recordset = database.Execute(L"SELECT FInterID FROM t");
  const Object field = FieldsOf(recordset).Get(L"Item", 0).AsObject();
  EXPECT_EQ(field.Get(L"Value"), Variant(1));
  recordset.Call(L"MoveNext");
  EXPECT_EQ(field.Get(L"Value"), Variant(2));
  recordset.Call(L"MoveNext");
  recordset.Call(L"MoveNext");
  const Raised raised = RaisedBy([&] { field.Get(L"Value"); });
  EXPECT_EQ(raised.code, Numbered(3021));
  EXPECT_EQ(raised.description,
            L"Either BOF or EOF is True, or the current record has been deleted. Requested "
            L"operation requires a current record.");
  EXPECT_EQ(field.Get(L"Name"), Variant(L"FInterID"));
}

TEST(Field, IsForReading) {
  const Database database;
  const Object field = FieldsOf(database.Open(L"SELECT FInterID FROM t", 3)).Get(L"Item", 0).AsObject();
  EXPECT_EQ(RaisedBy([&] { field.Put(L"Value", 5); }).code, Numbered(3251));
}

TEST(Field, EndsWithItsResult) {
  const Database database;
  const Object recordset = database.Open(L"SELECT FInterID FROM t", 3);
  const Object field = FieldsOf(recordset).Get(L"Item", 0).AsObject();
  recordset.Call(L"Close");
  EXPECT_EQ(RaisedBy([&] { field.Get(L"Value"); }).code, Numbered(3704));
  recordset.Call(L"Open", L"SELECT FName FROM t", database.connection());
  EXPECT_EQ(RaisedBy([&] { field.Get(L"Value"); }).code, Numbered(3704));
}

} // namespace
} // namespace standin::test
