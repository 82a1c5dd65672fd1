// BOM numbers by the bill-code rules: the rule component is the test's own, handed out by an object factory
// that takes the real one's place on a thread of its own.
#include <gtest/gtest.h>

#include <thread>

#include "com/DispatchObject.h"
#include "com/ValueText.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"
#include "tests/support/Replacement.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

// What the rule of the test that runs has for items, whether it fails, and what it was asked.
Variant g_items;
bool g_fails = false;
Texts g_calls;

// The names and values of a Dictionary, in their order; a Dictionary in it by its own.
std::wstring Contents(const Object& dictionary) {
  std::wstring contents;
  const Variant keys = dictionary.Call(L"Keys");
  SAFEARRAY* array = keys.raw().parray;
  LONG last = -1;
  com::Check(SafeArrayGetUBound(array, 1, &last));
  for (LONG i = 0; i <= last; ++i) {
    Variant key;
    com::Check(SafeArrayGetElement(array, &i, key.Out()));
    const Variant value = dictionary.Get(L"Value", key);
    const std::wstring text =
        value.IsObject() ? L"{" + Contents(value.AsObject()) + L"}" : com::ToText(value);
    contents += (i > 0 ? L" " : L"") + key.AsText() + L"=" + text;
  }
  return contents;
}

class Rule {
 public:
  Variant GetItemByBillType(const std::wstring& sDsn, int32_t billType) {
    g_calls.push_back(L"items " + sDsn + L" " + std::to_wstring(billType));
    return g_items;
  }
  std::wstring GetNewBillID(const std::wstring& sDsn, Variant& request, bool flag, Variant& holder) {
    if (g_fails) com::RaiseRuntimeError(5, L"rule", L"no number");
    g_calls.push_back(L"number " + sDsn + L" (" + Contents(request.AsObject()) + L") " +
                      (flag ? L"True" : L"False") + L" (" + Contents(holder.AsObject()) + L")");
    return L"BOM000012";
  }
};

class Factory {
 public:
  Object CreateServerObject(const std::wstring& progId, const Variant& server) {
    EXPECT_TRUE(server.IsMissing());
    g_calls.push_back(L"create " + progId);
    return com::ToObject(com::Make<Rule>());
  }
};

} // namespace
} // namespace mbom::test

namespace com {

using namespace mbom::test;

template <>
const DispatchTable& TableOf<Rule>() {
  static const DispatchTable table(
      IID_NULL,
      {
          Method<&Rule::GetItemByBillType>(1, L"GetItemByBillType", {L"sDsn", L"billType"}),
          Method<&Rule::GetNewBillID>(2, L"GetNewBillID", {L"sDsn", L"request", L"flag", L"holder"}),
      });
  return table;
}
template <>
const DispatchTable& TableOf<Factory>() {
  static const DispatchTable table(
      IID_NULL, {Method<&Factory::CreateServerObject>(1, L"CreateServerObject",
                                                      {L"progId", {L"server", Variant::Missing()}})});
  return table;
}

} // namespace com

namespace mbom::test {
namespace {

// The number that a rule with `items` gives, the calls on it, and the votes of the method.
struct Numbered {
  std::wstring number;
  Texts calls;
  Texts votes;
};

Numbered NumberWith(const Variant& items, bool fails = false) {
  g_items = items;
  g_fails = fails;
  g_calls.clear();
  Numbered numbered;
  std::thread([&numbered] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
      const Replacement<Factory> factory(L"QorvaneWoskBase.ObjectFactory");
      const Object function = Hosted(L"CBomFunction");
      const Trace trace;
      numbered.number = function.Call(L"GetBomCodeNumEx", L"the=dsn", 501).AsText();
      numbered.votes = trace.Votes();
      // It binds nothing.
      EXPECT_EQ(trace.Events(), numbered.votes);
    }
    CoUninitialize();
  }).join();
  numbered.calls = g_calls;
  return numbered;
}

Variant Items(std::initializer_list<Variant> items) {
  return Variant::Array(items.begin(), items.size());
}

std::wstring Options() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  wchar_t today[16];
  swprintf(today, 16, L"%04d-%02d-%02d", now.wYear, now.wMonth, now.wDay);
  return L"Options={FDate=" + std::wstring(today) +
         L" FBillType=50 BillNumber=1 AutoUpdateCurNo=True MoreBillID=False}";
}

TEST(BomCodeRule, GetsTheItemsOfTheRuleAndTheOptions) {
  const std::wstring options = Options(); // a test that runs over midnight fails once
  const Numbered numbered = NumberWith(Items({L" FItem ", L"-1", L"", L"  ", L"FDate", L" -1 "}));
  EXPECT_EQ(numbered.number, L"BOM000012");
  EXPECT_EQ(numbered.calls,
            (Texts{L"create QorvaneMBillCodeRule.clsBillCodeRule", L"items the=dsn 50",
                   L"number the=dsn (FItem=0 FDate=0 FItemID=501 " + options + L") True ()"}));
  EXPECT_EQ(numbered.votes, Texts{L"VoteComplete"});
}

TEST(BomCodeRule, GetsNoItemIdWhenTheRuleHasNoItems) {
  for (const Variant& items : {Items({}), Items({L"-1", L" "})}) {
    const std::wstring options = Options();
    const Numbered numbered = NumberWith(items);
    EXPECT_EQ(numbered.number, L"BOM000012");
    EXPECT_EQ(numbered.calls.back(), L"number the=dsn (" + options + L") True ()");
  }
}

TEST(BomCodeRule, TakesAnArrayOfStringsAndAnyLowerBound) {
  SAFEARRAYBOUND bounds{2, 5};
  Variant items;
  items.raw().parray = SafeArrayCreate(VT_BSTR, 1, &bounds);
  items.raw().vt = VT_ARRAY | VT_BSTR;
  for (LONG i = 5; i <= 6; ++i) {
    const Variant text(i == 5 ? L"A" : L"B");
    com::Check(SafeArrayPutElement(items.raw().parray, &i, text.raw().bstrVal));
  }
  EXPECT_TRUE(NumberWith(items).calls.back().starts_with(L"number the=dsn (A=0 B=0 FItemID=501 Options="));
}

TEST(BomCodeRule, GivesNoNumberWhenTheRuleFails) {
  const Numbered failed = NumberWith(Items({L"A"}), true);
  EXPECT_EQ(failed.number, L"");
  EXPECT_EQ(failed.votes, Texts{L"VoteAbort"});
  const Numbered noArray = NumberWith(L"A");
  EXPECT_EQ(noArray.number, L"");
  EXPECT_EQ(noArray.calls.size(), 2u);
  EXPECT_EQ(noArray.votes, Texts{L"VoteAbort"});
}

} // namespace
} // namespace mbom::test
