// How the bill-code-rule component is called for new numbers: its arguments as they arrive, and numbers that
// it gives back in a collection of its own.
#include <gtest/gtest.h>

#include "com/DispatchObject.h"
#include "tests/support/Client.h"
#include "tests/support/Collections.h"
#include "tests/support/Printing.h"
#include "tests/support/RawObject.h"
#include "tests/support/Replacement.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;

std::vector<VARTYPE> g_types; // of the arguments of GetNewBillID, in their order
Object g_ownNumbers;          // what the rule puts into the collection's variable; none leaves it alone

Variant AnswerAsRule(const std::wstring& member, const DISPPARAMS& arguments) {
  if (member == L"GetItemByBillType") {
    const Variant items[] = {Variant(L"FItem")};
    return Variant::Array(items, 1);
  }
  g_types.clear();
  for (UINT i = arguments.cArgs; i > 0; --i) g_types.push_back(arguments.rgvarg[i - 1].vt);
  if (g_ownNumbers) {
    VARIANTARG& several = arguments.rgvarg[1]; // the third of four, from the back
    (*several.ppdispVal)->Release();
    *several.ppdispVal = Object(g_ownNumbers).Detach();
  }
  return L"N1";
}

class RuleFactory {
 public:
  Object CreateServerObject(const std::wstring& progId, const Variant& /*server*/) {
    EXPECT_EQ(progId, L"QorvaneMBillCodeRule.clsBillCodeRule");
    return RawObject::Make(&AnswerAsRule);
  }
};

} // namespace
} // namespace mbom::test

template <>
const com::DispatchTable& com::TableOf<mbom::test::RuleFactory>() {
  using mbom::test::RuleFactory;
  static const DispatchTable table(
      IID_NULL, {Method<&RuleFactory::CreateServerObject>(1, L"CreateServerObject",
                                                          {L"progId", {L"server", Variant::Missing()}})});
  return table;
}

namespace mbom::test {
namespace {

enum class Collection { TheCallers, ItsOwn };

template <class Test>
void WithRule(Collection numbersIn, const Test& test) {
  g_types.clear();
  InApartment([&] {
    if (numbersIn == Collection::ItsOwn) g_ownNumbers = MakeDictionary({{L"1", L"OWN1"}, {L"2", L"OWN2"}});
    const Replacement<RuleFactory> factory(L"QorvaneWoskBase.ObjectFactory");
    test();
    g_ownNumbers = Object();
  });
}

TEST(NumberRule, GetsTheArgumentsOfACustomerNumberAsTypedReferences) {
  const TestDatabase database;
  WithRule(Collection::TheCallers, [&] {
    EXPECT_EQ(Unhosted(L"clsMCustBOM").Call(L"GetBillNoNew", database.Dsn(), 53), Variant(L"N1"));
  });
  EXPECT_EQ(g_types, (std::vector<VARTYPE>{VT_BYREF | VT_BSTR, VT_BYREF | VT_DISPATCH, VT_BYREF | VT_DISPATCH,
                                           VT_BYREF | VT_BOOL}));
}

TEST(NumberRule, MayGiveSeveralNumbersInACollectionOfItsOwn) {
  const TestDatabase database;
  WithRule(Collection::ItsOwn, [&] {
    EXPECT_EQ(Unhosted(L"clsMCustBOM").Call(L"GetBillNoNew", database.Dsn(), 53, true, 2),
              Variant(L"OWN1\tOWN2\t"));
  });
}

TEST(NumberRule, GetsRequestAndHolderOfABomNumberAsTypedReferences) {
  WithRule(Collection::TheCallers, [] {
    EXPECT_EQ(Unhosted(L"CBomFunction").Call(L"GetBomCodeNumEx", L"the=dsn", 501), Variant(L"N1"));
  });
  EXPECT_EQ(g_types,
            (std::vector<VARTYPE>{VT_BSTR, VT_BYREF | VT_DISPATCH, VT_BOOL, VT_BYREF | VT_DISPATCH}));
}

} // namespace
} // namespace mbom::test
