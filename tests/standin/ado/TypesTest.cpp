// Each type of ADO as a parameter, and what the engine gives back for it: the value, and the field's type.
#include "tests/standin/Support.h"

namespace standin::test {
namespace {

constexpr int32_t kInput = 1;

enum AdoType : int32_t {
  kSmallInt = 2,
  kInteger = 3,
  kSingle = 4,
  kDouble = 5,
  kCurrency = 6,
  kDate = 7,
  kBstr = 8,
  kBoolean = 11,
  kDecimal = 14,
  kTinyInt = 16,
  kUnsignedTinyInt = 17,
  kBigInt = 20,
  kGuid = 72,
  kBinary = 128,
  kChar = 129,
  kWChar = 130,
  kNumeric = 131,
  kDbDate = 133,
  kDbTimeStamp = 135,
  kVarChar = 200,
  kLongVarChar = 201,
  kVarWChar = 202,
  kLongVarWChar = 203,
  kVarBinary = 204,
  kLongVarBinary = 205,
};

struct Case {
  AdoType type;
  int32_t size;
  Variant given;
  // Of the field; a text is shown as it is, with its blanks.
  AdoType fieldType;
  VARTYPE valueType;
  std::wstring text;
};

Variant Bytes(std::initializer_list<BYTE> bytes) {
  SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
  LONG at = 0;
  for (BYTE byte : bytes) {
    SafeArrayPutElement(array, &at, &byte);
    ++at;
  }
  VARIANT value{};
  value.vt = VT_ARRAY | VT_UI1;
  value.parray = array;
  return Variant::Attach(value);
}

std::wstring TextOf(const Variant& value) {
  if (value.type() != (VT_ARRAY | VT_UI1)) return value.AsText();
  std::wstring text;
  const SAFEARRAY* const array = value.raw().parray;
  for (ULONG i = 0; i < array->rgsabound[0].cElements; ++i)
    text += std::to_wstring(static_cast<const BYTE*>(array->pvData)[i]) + L" ";
  return text;
}

TEST(Types, EachParameterComesBackAsTheFieldOfItsType) {
  const wchar_t* const guid = L"6F9619FF-8B86-D011-B42D-00C04FC964FF";
  const Case cases[] = {
      {kTinyInt, 0, -5, kSmallInt, VT_I2, L"-5"}, // the server's tinyint has no sign
      {kSmallInt, 0, L"-300", kSmallInt, VT_I2, L"-300"},
      {kUnsignedTinyInt, 0, 200, kUnsignedTinyInt, VT_UI1, L"200"},
      {kInteger, 0, 70000, kInteger, VT_I4, L"70000"},
      {kBigInt, 0, L"9007199254740993", kBigInt, VT_I8, L"9007199254740993"},
      {kBoolean, 0, true, kBoolean, VT_BOOL, L"True"},
      {kSingle, 0, 0.5, kSingle, VT_R4, L"0.5"},
      {kDouble, 0, 0.1, kDouble, VT_R8, L"0.1"},
      {kCurrency, 0, L"-12.3456", kCurrency, VT_CY, L"-12.3456"},
      {kDbTimeStamp, 0, Variant::Date(46086.5), kDbTimeStamp, VT_DATE, L""},
      {kDate, 0, Variant::Date(46086.5), kDbTimeStamp, VT_DATE, L""},
      {kDbDate, 0, Variant::Date(46086), kDbTimeStamp, VT_DATE, L""},
      {kGuid, 0, guid, kGuid, VT_BSTR, L"{6F9619FF-8B86-D011-B42D-00C04FC964FF}"},
      {kChar, 4, L"ab", kChar, VT_BSTR, L"ab  "},
      {kVarChar, 10, L"ab", kVarChar, VT_BSTR, L"ab"},
      {kLongVarChar, 10, L"ab", kLongVarChar, VT_BSTR, L"ab"},
      {kWChar, 4, L"轮", kWChar, VT_BSTR, L"轮   "},
      {kVarWChar, 10, L"轮", kVarWChar, VT_BSTR, L"轮"},
      {kLongVarWChar, 10, L"轮", kLongVarWChar, VT_BSTR, L"轮"},
      {kBstr, 10, L"轮", kLongVarWChar, VT_BSTR, L"轮"},
      {kBinary, 4, Bytes({1, 2}), kBinary, VT_ARRAY | VT_UI1, L"1 2 0 0 "},
      {kVarBinary, 4, Bytes({1, 2}), kVarBinary, VT_ARRAY | VT_UI1, L"1 2 "},
      {kLongVarBinary, 4, Bytes({}), kLongVarBinary, VT_ARRAY | VT_UI1, L""},
  };
  const Database database;
  for (const Case& example : cases) {
    SCOPED_TRACE("type " + std::to_string(example.type));
    const Object command = New(L"ADODB.Command");
    command.Put(L"ActiveConnection", database.connection());
    command.Put(L"CommandText", L"SELECT ? AS v");
    command.Get(L"Parameters")
        .AsObject()
        .Call(L"Append", command.Call(L"CreateParameter", L"", static_cast<int32_t>(example.type), kInput,
                                      example.size, example.given));
    const Object field =
        command.Call(L"Execute").AsObject().Get(L"Fields").AsObject().Get(L"Item", L"v").AsObject();
    EXPECT_EQ(field.Get(L"Type"), Variant(static_cast<int32_t>(example.fieldType)));
    const Variant value = field.Get(L"Value");
    EXPECT_EQ(value.type(), example.valueType);
    if (value.type() == VT_DATE) {
      EXPECT_EQ(value, example.given);
    } else {
      EXPECT_EQ(TextOf(value), example.text);
    }
  }
}

TEST(Types, ColumnsOfTheServersOtherTypesAreFieldsToo) {
  const Database database;
  database.Execute(L"CREATE TABLE o (a smallmoney, b smalldatetime, c binary(3), d image, e text, f ntext)");
  database.Execute(L"INSERT INTO o VALUES (1.25, '2026-03-05 14:30', 0x0102, 0x03, 'x', N'轮')");
  const Object row = database.Execute(L"SELECT * FROM o");
  const Object fields = row.Get(L"Fields").AsObject();
  const std::pair<AdoType, std::wstring> expected[] = {{kCurrency, L"1.25"}, {kDbTimeStamp, L""},
                                                       {kBinary, L"1 2 0 "}, {kLongVarBinary, L"3 "},
                                                       {kLongVarChar, L"x"}, {kLongVarWChar, L"轮"}};
  for (int32_t i = 0; i < 6; ++i) {
    SCOPED_TRACE(i);
    const Object field = fields.Get(L"Item", i).AsObject();
    EXPECT_EQ(field.Get(L"Type"), Variant(static_cast<int32_t>(expected[i].first)));
    if (expected[i].first == kDbTimeStamp) continue;
    EXPECT_EQ(TextOf(field.Get(L"Value")), expected[i].second);
  }
}

// What a loop over the collection gives.
int32_t CountIn(const Object& collection) {
  const Variant unknown = collection.Get(L"_NewEnum");
  com::Ptr<IEnumVARIANT> elements;
  EXPECT_EQ(unknown.raw().punkVal->QueryInterface(IID_IEnumVARIANT, elements.OutVoid()), S_OK);
  int32_t count = 0;
  for (VARIANT element{}; elements->Next(1, &element, nullptr) == S_OK; VariantClear(&element)) {
    EXPECT_EQ(element.vt, VT_DISPATCH);
    ++count;
  }
  return count;
}

TEST(Collections, ParametersAndErrorsAreLoopedOver) {
  const Database database;
  const Object command = New(L"ADODB.Command");
  const Object parameters = command.Get(L"Parameters").AsObject();
  for (const wchar_t* name : {L"a", L"b"})
    parameters.Call(L"Append",
                    command.Call(L"CreateParameter", name, static_cast<int32_t>(kInteger), kInput, 0, 1));
  EXPECT_EQ(CountIn(parameters), 2);
  EXPECT_NE(RaisedBy([&] { database.Execute(L"SELECT FNoSuch FROM t"); }).code, S_OK);
  EXPECT_EQ(CountIn(database.connection().Get(L"Errors").AsObject()), 1);
}

TEST(Connection, TakesItsSettingsOnlyWhileItIsClosed) {
  const Object connection = New(L"ADODB.Connection");
  connection.Put(L"Provider", L"Embedded");
  connection.Put(L"ConnectionTimeout", 3);
  EXPECT_EQ(connection.Get(L"ConnectionTimeout"), Variant(3));
  EXPECT_EQ(RaisedBy([&] { connection.Put(L"ConnectionTimeout", -1); }).code, Numbered(3001));
  const Database open;
  EXPECT_EQ(RaisedBy([&] { open.connection().Put(L"ConnectionTimeout", 3); }).code, Numbered(3705));
  EXPECT_EQ(RaisedBy([&] { open.connection().Put(L"Provider", L"x"); }).code, Numbered(3705));
}

TEST(Command, KeepsItsNameAndReadsATable) {
  const Database database;
  const Object command = New(L"ADODB.Command");
  command.Put(L"Name", L"all");
  EXPECT_EQ(command.Get(L"Name"), Variant(L"all"));
  command.Put(L"Prepared", true);
  EXPECT_EQ(command.Get(L"Prepared"), Variant(true));
  command.Put(L"ActiveConnection", database.connection());
  command.Put(L"CommandText", L"t");
  for (const int32_t kind : {2, 512}) { // adCmdTable, adCmdTableDirect
    command.Put(L"CommandType", kind);
    EXPECT_EQ(ColumnText(command.Call(L"Execute").AsObject()), L"1,2,3");
  }
}

} // namespace
} // namespace standin::test
