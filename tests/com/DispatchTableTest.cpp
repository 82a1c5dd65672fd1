#include "com/DispatchTable.h"

#include <gtest/gtest.h>

#include "tests/com/Probe.h"
#include "tests/support/Printing.h"

namespace com::test {
namespace {

// A dispatch call as a client of another language makes it: raw arguments, last first.
struct RawCall {
  HRESULT operator()(const wchar_t* name, std::vector<VARIANTARG> reversed, WORD flags = DISPATCH_METHOD) {
    wchar_t* names = const_cast<wchar_t*>(name);
    DISPID id = 0;
    if (const HRESULT hr = object.pointer()->GetIDsOfNames(IID_NULL, &names, 1, 0, &id); FAILED(hr))
      return hr;
    return ById(id, std::move(reversed), flags);
  }
  HRESULT ById(DISPID id, std::vector<VARIANTARG> reversed, WORD flags = DISPATCH_METHOD) {
    DISPPARAMS params{reversed.data(), named.data(), static_cast<UINT>(reversed.size()),
                      static_cast<UINT>(named.size())};
    badArgument = 99;
    return object.pointer()->Invoke(id, IID_NULL, 0, flags, &params, result.Out(), &info, &badArgument);
  }
  ~RawCall() {
    SysFreeString(info.bstrSource);
    SysFreeString(info.bstrDescription);
    SysFreeString(info.bstrHelpFile);
  }

  Object object = NewProbe();
  std::vector<DISPID> named;
  Variant result;
  EXCEPINFO info{};
  UINT badArgument = 99;
};

VARIANTARG Number(LONG value) {
  VARIANTARG argument{};
  argument.vt = VT_I4;
  argument.lVal = value;
  return argument;
}

VARIANTARG Omitted() {
  VARIANTARG argument{};
  argument.vt = VT_ERROR;
  argument.scode = DISP_E_PARAMNOTFOUND;
  return argument;
}

template <class T>
VARIANTARG ByReference(VARTYPE type, T* place) {
  VARIANTARG argument{};
  argument.vt = static_cast<VARTYPE>(VT_BYREF | type);
  argument.byref = place;
  return argument;
}

TEST(DispatchTable, ConvertsPositionalArguments) {
  EXPECT_EQ(NewProbe().Call(L"Join", L"a", L"12", true).AsText(), L"a/12/yes");
  EXPECT_EQ(NewProbe().Call(L"join", 3, 4.5, 0).AsText(), L"3/4/no"); // 4.5 rounds to even
  EXPECT_EQ(NewProbe().Call(L"Half", L"0.5").AsDouble(), 0.25);
  EXPECT_EQ(NewProbe().Call(L"Short", 12).type(), VT_I2);
}

TEST(DispatchTable, TakesNamedArgumentsInAnyOrder) {
  wchar_t* names[] = {const_cast<wchar_t*>(L"JOIN"), const_cast<wchar_t*>(L"C"), const_cast<wchar_t*>(L"b")};
  DISPID ids[3];
  RawCall call;
  ASSERT_EQ(call.object.pointer()->GetIDsOfNames(IID_NULL, names, 3, 0, ids), S_OK);
  EXPECT_EQ(ids[0], 2);
  call.named = {ids[1], ids[2]};
  const Variant text(L"x");
  const Variant flag(true);
  ASSERT_EQ(call.ById(ids[0], {flag.raw(), Number(8), text.raw()}), S_OK);
  EXPECT_EQ(call.result.AsText(), L"x/8/yes");
}

TEST(DispatchTable, ReportsWrongNames) {
  wchar_t* names[] = {const_cast<wchar_t*>(L"Join"), const_cast<wchar_t*>(L"nosuch"),
                      const_cast<wchar_t*>(L"a")};
  DISPID ids[3];
  RawCall call;
  EXPECT_EQ(call.object.pointer()->GetIDsOfNames(IID_NULL, names, 3, 0, ids), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids[0], 2);
  EXPECT_EQ(ids[1], DISPID_UNKNOWN);
  EXPECT_EQ(ids[2], 0);
  EXPECT_EQ(call(L"NoSuchMember", {}), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(call.ById(4711, {}), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(call.object.pointer()->GetIDsOfNames(IID_IDispatch, names, 1, 0, ids), DISP_E_UNKNOWNINTERFACE);

  const Variant text(L"x");
  call.named = {17}; // a parameter that Join does not have
  EXPECT_EQ(call.ById(2, {text.raw(), Number(1), text.raw()}), DISP_E_PARAMNOTFOUND);
  EXPECT_EQ(call.badArgument, 0u);
}

TEST(DispatchTable, ReportsAParameterThatIsGivenTwice) {
  const Variant text(L"x");
  RawCall call;
  call.named = {0}; // a, which the first positional argument is too
  EXPECT_EQ(call.ById(2, {text.raw(), Number(1), text.raw()}), DISP_E_PARAMNOTFOUND);
  EXPECT_EQ(call.badArgument, 0u);
}

TEST(DispatchTable, TakesValuesOfAnyTypeHoweverTheyArePassed) {
  const Variant text(L"x");
  RawCall call;
  ASSERT_EQ(call(L"LastGiven", {Number(2), text.raw()}), S_OK);
  EXPECT_EQ(call.result, Variant(2));
  ASSERT_EQ(call(L"LastGiven", {Omitted(), text.raw()}), S_OK);
  EXPECT_EQ(call.result, text);
  ASSERT_EQ(call(L"LastGiven", {text.raw()}), S_OK);
  EXPECT_EQ(call.result, text);
  // Values of an error type that are no omitted argument.
  VARIANTARG error = Omitted();
  error.scode = E_FAIL;
  ASSERT_EQ(call(L"LastGiven", {error, text.raw()}), S_OK);
  EXPECT_EQ(call.result.type(), VT_ERROR);

  LONG number = 5;
  Variant inner(L"inner");
  ASSERT_EQ(call(L"LastGiven", {ByReference(VT_I4, &number), text.raw()}), S_OK);
  EXPECT_EQ(call.result, Variant(5));
  ASSERT_EQ(call(L"LastGiven", {Variant::Reference(inner).raw(), text.raw()}), S_OK);
  EXPECT_EQ(call.result, inner);

  EXPECT_EQ(call(L"LastGiven", {}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(call(L"LastGiven", {text.raw(), text.raw(), text.raw()}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(call(L"LastGiven", {Number(2), Omitted()}), DISP_E_PARAMNOTOPTIONAL);
  EXPECT_EQ(call.badArgument, 1u);
  call.named = {0, 1}; // the values in the order of the parameters
  ASSERT_EQ(call(L"LastGiven", {Number(1), Number(2)}), S_OK);
  EXPECT_EQ(call.result, Variant(2));
}

TEST(DispatchTable, LeavesTheResultToACallerWithoutAPlaceForIt) {
  const Object probe = NewProbe();
  Variant text(L"x");
  DISPPARAMS params{&text.raw(), nullptr, 1, 0};
  wchar_t* name = const_cast<wchar_t*>(L"LastGiven");
  DISPID id = 0;
  ASSERT_EQ(probe.pointer()->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), S_OK);
  EXPECT_EQ(probe.pointer()->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr),
            S_OK);
  EXPECT_EQ(text, Variant(L"x"));
}

TEST(DispatchTable, ReportsWrongCounts) {
  const Variant text(L"x");
  RawCall call;
  EXPECT_EQ(call(L"Join", {Number(1), text.raw()}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(call(L"Join", {Number(1), Number(1), Number(1), text.raw()}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(call(L"Join", {Number(1), Omitted(), text.raw()}), DISP_E_PARAMNOTOPTIONAL);
  EXPECT_EQ(call.badArgument, 1u);
}

TEST(DispatchTable, ReportsWrongTypesWithTheirPosition) {
  const Variant text(L"not a number");
  const Variant name(L"x");
  RawCall call;
  EXPECT_EQ(call(L"Join", {Number(1), text.raw(), name.raw()}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(call.badArgument, 1u);
  EXPECT_EQ(call(L"Short", {Number(70000)}), DISP_E_OVERFLOW);
  EXPECT_EQ(call.badArgument, 0u);
}

TEST(DispatchTable, FillsOmittedOptionalArguments) {
  EXPECT_EQ(NewProbe().Call(L"Optional", L"a").AsText(), L"a/5/missing");
  EXPECT_EQ(NewProbe().Call(L"Optional", L"a", Variant::Missing(), L"z").AsText(), L"a/5/z");
  EXPECT_EQ(NewProbe().Call(L"Optional", L"a", 1).AsText(), L"a/1/missing");
}

TEST(DispatchTable, WritesTypedReferencesBack) {
  BSTR text = SysAllocString(L"t");
  LONG number = 5;
  VARIANT_BOOL flag = VARIANT_FALSE;
  IDispatch* object = Ptr<IDispatch>(NewProbe().pointer()).Detach();
  RawCall call;
  ASSERT_EQ(call(L"Change", {ByReference(VT_DISPATCH, &object), ByReference(VT_BOOL, &flag),
                             ByReference(VT_I4, &number), ByReference(VT_BSTR, &text)}),
            S_OK);
  EXPECT_STREQ(text, L"t+");
  EXPECT_EQ(number, -5);
  EXPECT_EQ(flag, VARIANT_TRUE);
  EXPECT_EQ(object, nullptr);
  EXPECT_TRUE(call.result.AsBool());
  SysFreeString(text);
}

TEST(DispatchTable, WritesVariantReferencesBackInTheParametersType) {
  Variant text(12); // a number where a text is expected: script does not care
  Variant number(L"5");
  Variant flag(0);
  Variant object(NewProbe());
  NewProbe().Call(L"Change", Variant::Reference(text), Variant::Reference(number), Variant::Reference(flag),
                  Variant::Reference(object));
  EXPECT_EQ(text, Variant(L"12+"));
  EXPECT_EQ(number, Variant(-5));
  EXPECT_EQ(flag, Variant(true));
  EXPECT_EQ(object, Variant(Object()));
}

TEST(DispatchTable, FollowsAVariantThatIsItselfAReference) {
  BSTR text = SysAllocString(L"inner");
  Variant outer = Variant::Attach(ByReference(VT_BSTR, &text));
  LONG number = 1;
  VARIANT_BOOL flag = VARIANT_FALSE;
  IDispatch* object = nullptr;
  RawCall call;
  ASSERT_EQ(call(L"Change", {ByReference(VT_DISPATCH, &object), ByReference(VT_BOOL, &flag),
                             ByReference(VT_I4, &number), Variant::Reference(outer).raw()}),
            S_OK);
  EXPECT_STREQ(text, L"inner+");
  SysFreeString(text);
}

TEST(DispatchTable, TakesInOutArgumentsByValueToo) {
  EXPECT_TRUE(NewProbe().Call(L"Change", L"text", 1, true, Object()).AsBool());
}

TEST(DispatchTable, RefusesAReferenceOfAnotherTypeBeforeTheCall) {
  LONG number = 5;
  RawCall call;
  EXPECT_EQ(call(L"SetThenFail", {ByReference(VT_I4, &number)}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(call.badArgument, 0u);
  EXPECT_EQ(number, 5);
}

TEST(DispatchTable, RefusesReferencesToNothing) {
  VARIANT itself = ByReference(VT_VARIANT, &itself);
  VARIANT nothing = ByReference<LONG>(VT_I4, nullptr);
  for (const VARIANTARG& reference :
       {ByReference<LONG>(VT_I4, nullptr), ByReference<VARIANT>(VT_VARIANT, nullptr),
        ByReference(VT_VARIANT, &nothing), ByReference(VT_VARIANT, &itself)}) {
    const Variant text(L"x");
    RawCall call;
    EXPECT_EQ(call(L"SetThenFail", {reference}), E_INVALIDARG);
    EXPECT_EQ(call.badArgument, 0u);
    EXPECT_EQ(call(L"Join", {reference, text.raw(), text.raw()}), E_INVALIDARG);
    EXPECT_EQ(call(L"Join", {text.raw(), text.raw(), reference}), E_INVALIDARG);
    EXPECT_EQ(call.badArgument, 2u);
  }
}

TEST(DispatchTable, LeavesUntouchedInOutArgumentsAsTheyAre) {
  Variant text; // Empty stays Empty, not an empty text
  Variant value(1.5);
  NewProbe().Call(L"LeaveAlone", Variant::Reference(text), Variant::Reference(value));
  EXPECT_TRUE(text.IsEmpty());
  EXPECT_EQ(value, Variant(1.5));
}

TEST(DispatchTable, KeepsWhatWasSetBeforeAFailure) {
  BSTR text = SysAllocString(L"before");
  RawCall call;
  EXPECT_EQ(call(L"SetThenFail", {ByReference(VT_BSTR, &text)}), DISP_E_EXCEPTION);
  EXPECT_STREQ(text, L"set before the failure");
  SysFreeString(text);
}

TEST(DispatchTable, PassesAComErrorOnUnchanged) {
  RawCall call;
  const Variant text(L"x");
  ASSERT_EQ(call(L"SetThenFail", {text.raw()}), DISP_E_EXCEPTION);
  EXPECT_EQ(static_cast<unsigned>(call.info.scode), 0x80040E14u);
  EXPECT_STREQ(call.info.bstrSource, L"Provider");
  EXPECT_STREQ(call.info.bstrDescription, L"Wrong syntax");
  EXPECT_STREQ(call.info.bstrHelpFile, L"help.chm");
  EXPECT_EQ(call.info.dwHelpContext, 42u);

  const ComError onThread = ComError::FromThread(call.info.scode);
  EXPECT_EQ(onThread.source(), L"Provider");
  EXPECT_EQ(onThread.description(), L"Wrong syntax");
  EXPECT_EQ(onThread.helpFile(), L"help.chm");
  EXPECT_EQ(onThread.helpContext(), 42u);
}

TEST(DispatchTable, TurnsOtherExceptionsIntoErrors) {
  RawCall call;
  ASSERT_EQ(call(L"ThrowStandard", {}), DISP_E_EXCEPTION);
  EXPECT_EQ(call.info.scode, E_FAIL);
  EXPECT_STREQ(call.info.bstrDescription, L"standard");
  EXPECT_EQ(call(L"RunOutOfMemory", {}), E_OUTOFMEMORY);
  SetErrorInfo(0, nullptr);
}

TEST(DispatchTable, TellsPropertiesFromMethods) {
  RawCall call;
  EXPECT_EQ(call(L"Constant", {}, DISPATCH_PROPERTYGET), S_OK);
  EXPECT_EQ(call.result, Variant(7));
  EXPECT_EQ(call(L"Constant", {}, DISPATCH_PROPERTYGET | DISPATCH_METHOD), S_OK);
  EXPECT_EQ(call(L"Constant", {}, DISPATCH_METHOD), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(call(L"RunOutOfMemory", {}, DISPATCH_PROPERTYGET), DISP_E_MEMBERNOTFOUND);
  call.named = {DISPID_PROPERTYPUT};
  EXPECT_EQ(call(L"Constant", {Number(1)}, DISPATCH_PROPERTYPUT), DISP_E_MEMBERNOTFOUND);
}

TEST(DispatchTable, PutsIndexedPropertiesByValueAndByReference) {
  const Object probe = NewProbe();
  probe.Put(L"Value", L"key", 12);
  EXPECT_EQ(probe.Get(L"LastKey").AsText(), L"key");
  EXPECT_EQ(probe.Get(L"Value", L"k").AsText(), L"k=12");
  EXPECT_NO_THROW(probe.Put(L"Value", L"object", NewProbe()));
}

TEST(DispatchTable, HandsArgumentsOfAPlainPropertyToItsDefaultMember) {
  const auto probe = Make<Probe>();
  probe->object().self = NewProbe();
  EXPECT_EQ(ToObject(probe).Get(L"Self", L"F").AsText(), L"F=");
  EXPECT_THROW(ToObject(probe).Get(L"Constant", L"F"), ComError);
}

TEST(DispatchTable, RefusesOtherInterfaceIds) {
  DISPPARAMS none{};
  EXPECT_EQ(NewProbe().pointer()->Invoke(1, IID_IDispatch, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr,
                                         nullptr),
            DISP_E_UNKNOWNINTERFACE);
}

} // namespace
} // namespace com::test
