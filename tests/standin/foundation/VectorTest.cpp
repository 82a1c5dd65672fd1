#include "tests/standin/Support.h"

namespace standin::test {
namespace {

Object VectorOf(std::initializer_list<Variant> items) {
  Object vector = New(L"ruvo10.Vector");
  for (const Variant& item : items) vector.Call(L"Add", item);
  return vector;
}

TEST(Vector, CountsFromOne) {
  const Object vector = VectorOf({L"a", 2, Variant::Null()});
  EXPECT_EQ(vector.Get(L"Count"), Variant(3));
  EXPECT_EQ(vector.Get(L"UBound"), Variant(3));
  EXPECT_EQ(vector.Get(L"Item", 1), Variant(L"a"));
  EXPECT_EQ(vector.Get(L"Item", L"2"), Variant(2));
  EXPECT_TRUE(vector.Get(L"Item", 3).IsNull());
}

TEST(Vector, ReplacesRemovesAndClears) {
  const Object vector = VectorOf({1, 2, 3});
  vector.Put(L"Item", 2, L"two");
  EXPECT_EQ(vector.Get(L"Item", 2), Variant(L"two"));
  vector.Call(L"Remove", 1);
  EXPECT_EQ(vector.Get(L"Count"), Variant(2));
  EXPECT_EQ(vector.Get(L"Item", 1), Variant(L"two"));
  vector.Call(L"Clear");
  EXPECT_EQ(vector.Get(L"UBound"), Variant(0));
}

TEST(Vector, RefusesAnIndexOutOfRange) {
  const Object vector = VectorOf({1});
  const auto expectOutOfRange = [](const Raised& raised) {
    EXPECT_EQ(raised.code, Numbered(9));
    EXPECT_EQ(raised.description, L"Subscript out of range");
  };
  expectOutOfRange(RaisedBy([&] { vector.Get(L"Item", 0); }));
  expectOutOfRange(RaisedBy([&] { vector.Get(L"Item", 2); }));
  expectOutOfRange(RaisedBy([&] { vector.Put(L"Item", -1, 1); }));
  expectOutOfRange(RaisedBy([&] { vector.Call(L"Remove", 2); }));
}

TEST(Vector, EnumeratesWhatItHeldThen) {
  const Object vector = VectorOf({1, L"x"});
  const Variant unknown = vector.Get(L"_NewEnum");
  EXPECT_EQ(vector.Call(L"_NewEnum").type(), VT_UNKNOWN); // as a method, too
  com::Ptr<IEnumVARIANT> elements;
  ASSERT_EQ(unknown.raw().punkVal->QueryInterface(IID_IEnumVARIANT, elements.OutVoid()), S_OK);
  vector.Call(L"Clear");
  std::array<VARIANT, 3> raw{};
  ULONG fetched = 0;
  EXPECT_EQ(elements->Next(3, raw.data(), &fetched), S_FALSE);
  ASSERT_EQ(fetched, 2U);
  EXPECT_EQ(Variant::Attach(raw[0]), Variant(1));
  EXPECT_EQ(Variant::Attach(raw[1]), Variant(L"x"));
  com::Ptr<IEnumVARIANT> copy;
  EXPECT_EQ(elements->Clone(copy.Out()), S_OK);
  EXPECT_EQ(copy->Reset(), S_OK);
  EXPECT_EQ(copy->Skip(2), S_OK);
  EXPECT_EQ(copy->Skip(1), S_FALSE);
}

} // namespace
} // namespace standin::test
