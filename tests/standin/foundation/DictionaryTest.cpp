#include "com/DispatchObject.h"
#include "tests/standin/Support.h"

namespace standin::test {
namespace {

Object NewDictionary() {
  return New(L"ruvo10.Dictionary");
}

Texts KeysOf(const Object& dictionary) {
  const Variant keys = dictionary.Call(L"Keys");
  EXPECT_EQ(keys.type(), VT_ARRAY | VT_VARIANT);
  Texts texts;
  LONG last = -1;
  SafeArrayGetUBound(keys.raw().parray, 1, &last);
  for (LONG i = 0; i <= last; ++i) {
    Variant key;
    SafeArrayGetElement(keys.raw().parray, &i, key.Out());
    texts.push_back(key.AsText());
  }
  return texts;
}

TEST(Dictionary, GivesADefaultForWhatIsNotThere) {
  const Object dictionary = NewDictionary();
  dictionary.Put(L"Value", L"a", Variant::Null());
  EXPECT_TRUE(dictionary.Get(L"GetValue", L"A", 5).IsNull());
  EXPECT_EQ(dictionary.Get(L"GetValue", L"b", 5), Variant(5));
  EXPECT_TRUE(dictionary.Call(L"GetValue", L"b").IsEmpty());
  EXPECT_EQ(dictionary.Get(L"Count"), Variant(1));
}

TEST(Dictionary, KeepsValuesOfEveryTypeByName) {
  const Object dictionary = NewDictionary();
  const Object inner = NewDictionary();
  dictionary.Put(L"Value", L"number", 7);
  dictionary.Put(L"Value", L"null", Variant::Null());
  dictionary.Put(L"Value", L"object", inner);
  EXPECT_EQ(dictionary.Get(L"Value", L"number"), Variant(7));
  EXPECT_TRUE(dictionary.Get(L"Value", L"null").IsNull());
  EXPECT_EQ(dictionary.Get(L"Value", L"object").AsObject(), inner);
  EXPECT_EQ(dictionary.Get(L"Count"), Variant(3));
}

TEST(Dictionary, ReadsAMissingNameAsEmptyWithoutAddingIt) {
  const Object dictionary = NewDictionary();
  EXPECT_TRUE(dictionary.Get(L"Value", L"none").IsEmpty());
  EXPECT_EQ(dictionary.Get(L"Count"), Variant(0));
  EXPECT_EQ(dictionary.Call(L"Exists", L"none"), Variant(false));
}

TEST(Dictionary, ComparesNamesWithoutCaseAndKeepsTheFirstSpelling) {
  const Object dictionary = NewDictionary();
  dictionary.Put(L"Value", L"FInterID", 1);
  dictionary.Put(L"Value", L"FINTERID", 2);
  dictionary.Put(L"Value", L"Straße Ü", 3);
  EXPECT_EQ(dictionary.Get(L"Value", L"finterid"), Variant(2));
  EXPECT_EQ(dictionary.Get(L"Value", L"straße ü"), Variant(3));
  EXPECT_EQ(KeysOf(dictionary), (Texts{L"FInterID", L"Straße Ü"}));
}

TEST(Dictionary, TakesNamesOfOtherTypesAsText) {
  const Object dictionary = NewDictionary();
  dictionary.Put(L"Value", 5, L"five");
  dictionary.Put(L"Value", 1.5, L"half");
  EXPECT_EQ(dictionary.Get(L"Value", L"5"), Variant(L"five"));
  EXPECT_EQ(dictionary.Call(L"Exists", L"1.5"), Variant(true));
}

TEST(Dictionary, FindsEveryNameWhileItGrowsAndShrinks) {
  constexpr int kNames = 12;
  const Object dictionary = NewDictionary();
  const auto nameOf = [](int number) { return L"n" + std::to_wstring(number); };
  for (int count = 1; count <= kNames; ++count) {
    dictionary.Put(L"Value", nameOf(count), count);
    for (int number = 1; number <= kNames; ++number)
      EXPECT_EQ(dictionary.Call(L"Exists", nameOf(number)), Variant(number <= count))
          << number << " of " << count;
  }
  for (int count = kNames; count > 0; --count) {
    dictionary.Call(L"Remove", nameOf(count));
    dictionary.Put(L"Value", L"new", count);
    EXPECT_EQ(dictionary.Get(L"Value", L"new"), Variant(count));
    for (int number = 1; number < count; ++number)
      EXPECT_EQ(dictionary.Get(L"Value", nameOf(number)), Variant(number)) << number << " of " << count;
    dictionary.Call(L"Remove", L"new");
  }
  EXPECT_EQ(dictionary.Get(L"Count"), Variant(0));
}

TEST(Dictionary, KeepsTheOrderOverRemovalAndReinsertion) {
  const Object dictionary = NewDictionary();
  for (const wchar_t* key : {L"c", L"a", L"b", L"d"}) dictionary.Put(L"Value", key, key);
  dictionary.Call(L"Remove", L"A");
  dictionary.Call(L"Remove", L"not there");
  EXPECT_EQ(KeysOf(dictionary), (Texts{L"c", L"b", L"d"}));
  dictionary.Put(L"Value", L"a", L"again");
  EXPECT_EQ(KeysOf(dictionary), (Texts{L"c", L"b", L"d", L"a"}));
  EXPECT_EQ(dictionary.Get(L"Value", L"d"), Variant(L"d"));
}

TEST(Dictionary, IsEmptyAfterClear) {
  const Object dictionary = NewDictionary();
  dictionary.Put(L"Value", L"a", 1);
  dictionary.Call(L"Clear");
  EXPECT_EQ(dictionary.Get(L"Count"), Variant(0));
  EXPECT_TRUE(dictionary.Get(L"Value", L"a").IsEmpty());
  EXPECT_EQ(KeysOf(dictionary), Texts{});
  dictionary.Put(L"Value", L"b", 2);
  EXPECT_EQ(dictionary.Get(L"Value", L"b"), Variant(2));
}

TEST(Dictionary, FindsEveryOneOfManyNames) {
  const Object dictionary = NewDictionary();
  constexpr int kMany = 2000;
  for (int i = 0; i < kMany; ++i) dictionary.Put(L"Value", L"FField" + std::to_wstring(i), i);
  for (int i = 0; i < kMany; i += 2) dictionary.Call(L"Remove", L"ffield" + std::to_wstring(i));
  EXPECT_EQ(dictionary.Get(L"Count"), Variant(kMany / 2));
  for (int i = 0; i < kMany; ++i) {
    const Variant value = dictionary.Get(L"Value", L"FFIELD" + std::to_wstring(i));
    ASSERT_EQ(value, i % 2 ? Variant(i) : Variant()) << i;
  }
}

TEST(Dictionary, HasItsValueAsDefaultMemberAndItsKeysToEnumerate) {
  const Object dictionary = NewDictionary();
  dictionary.Put(L"Value", L"x", 1);
  dictionary.Put(L"Value", L"y", 2);
  Variant key(L"y");
  DISPPARAMS params{&key.raw(), nullptr, 1, 0};
  Variant result;
  ASSERT_EQ(dictionary.pointer()->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_PROPERTYGET | DISPATCH_METHOD,
                                         &params, result.Out(), nullptr, nullptr),
            S_OK);
  EXPECT_EQ(result, Variant(2));

  const Variant unknown = dictionary.Get(L"_NewEnum");
  ASSERT_EQ(unknown.type(), VT_UNKNOWN);
  com::Ptr<IEnumVARIANT> keys;
  ASSERT_EQ(unknown.raw().punkVal->QueryInterface(IID_IEnumVARIANT, keys.OutVoid()), S_OK);
  Variant first;
  ULONG fetched = 0;
  EXPECT_EQ(keys->Next(1, first.Out(), &fetched), S_OK);
  EXPECT_EQ(first, Variant(L"x"));
  EXPECT_EQ(keys->Skip(1), S_OK);
  EXPECT_EQ(keys->Next(1, first.Out(), &fetched), S_FALSE);
  EXPECT_EQ(fetched, 0U);
}

} // namespace
} // namespace standin::test
