#include "standin/platform/BillCodeRule.h"

#include <oleauto.h>

#include <initializer_list>
#include <thread>
#include <utility>

#include "tests/standin/Support.h"

namespace standin::test {
namespace {

TEST(FormatSerial, PadsToTheZerosOfTheFormat) {
  EXPECT_EQ(FormatSerial(12, L"000000"), L"000012");
  EXPECT_EQ(FormatSerial(0, L"000"), L"000");
  EXPECT_EQ(FormatSerial(7, L"0"), L"7");
}

TEST(FormatSerial, NeverLosesADigit) {
  EXPECT_EQ(FormatSerial(1234567, L"0000"), L"1234567");
  EXPECT_EQ(FormatSerial(1234, L"N-00"), L"N-1234");
}

TEST(FormatSerial, LeavesLeadingZerosOutWhereTheFormatHasNumberSigns) {
  EXPECT_EQ(FormatSerial(5, L"####"), L"5");
  EXPECT_EQ(FormatSerial(5, L"##00"), L"05");
}

TEST(FormatSerial, KeepsOtherCharactersInTheirPlaces) {
  EXPECT_EQ(FormatSerial(12345, L"00-0000"), L"01-2345");
  EXPECT_EQ(FormatSerial(9, L"A000B"), L"A009B");
}

TEST(FormatSerial, IsPlainWithoutAFormatAndLiteralWithoutAPlace) {
  EXPECT_EQ(FormatSerial(42, L""), L"42");
  EXPECT_EQ(FormatSerial(42, L"BOM"), L"BOM");
}

Object DictionaryOf(std::initializer_list<std::pair<const wchar_t*, Variant>> items) {
  Object dictionary = New(L"ruvo10.Dictionary");
  for (const auto& [key, value] : items) dictionary.Put(L"Value", key, value);
  return dictionary;
}

class BillCodeRuleTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(
        L"CREATE TABLE ICBillNo (FBillID int NOT NULL PRIMARY KEY, FPreLetter varchar(30) NULL, "
        L"FSufLetter varchar(30) NULL, FFormat varchar(30) NULL, FCurNo int NULL)");
    database_.Execute(L"INSERT INTO ICBillNo VALUES (50, 'BOM', '', '000000', 11), "
                      L"(53, 'KH', '-C', '0000', NULL), (87, NULL, NULL, NULL, 3)");
  }

  // The names that GetItemByBillType gives, joined by ",".
  std::wstring Items(int32_t billType) const {
    const Variant items = rule_.Call(L"GetItemByBillType", database_.Dsn(), billType);
    EXPECT_EQ(items.type(), VT_ARRAY | VT_BSTR);
    LONG last = -1;
    SafeArrayGetUBound(items.raw().parray, 1, &last);
    std::wstring names;
    for (LONG i = 0; i <= last; ++i) {
      BSTR name = nullptr;
      SafeArrayGetElement(items.raw().parray, &i, &name);
      names += (i > 0 ? L"," : L"") + std::wstring(name);
      SysFreeString(name);
    }
    return names;
  }

  std::wstring Number(const Object& request, const Object& holder = New(L"ruvo10.Dictionary")) const {
    Variant requestArgument(request);
    Variant holderArgument(holder);
    return rule_
        .Call(L"GetNewBillID", database_.Dsn(), Variant::Reference(requestArgument), true,
              Variant::Reference(holderArgument))
        .AsText();
  }

  std::wstring CurNo(const wchar_t* billType) const {
    return database_.Column(std::wstring(L"SELECT FCurNo FROM ICBillNo WHERE FBillID = ") + billType);
  }

  const Database database_;
  const Object rule_ = New(L"QorvaneMBillCodeRule.clsBillCodeRule");
};

TEST_F(BillCodeRuleTest, NamesTheItemsOfARule) {
  EXPECT_EQ(Items(50), L"FPreLetter,FCurNo,-1");
  EXPECT_EQ(Items(53), L"FPreLetter,FCurNo,FSufLetter");
  EXPECT_EQ(Items(87), L"-1,FCurNo,-1");
  EXPECT_EQ(Items(1), L"-1");
}

TEST_F(BillCodeRuleTest, GivesTheNextNumberAndConsumesIt) {
  const Object request = DictionaryOf({{L"FBillType", 50}, {L"AutoUpdateCurNo", true}});
  EXPECT_EQ(Number(request), L"BOM000012");
  EXPECT_EQ(Number(request), L"BOM000013");
  EXPECT_EQ(CurNo(L"50"), L"13");
  EXPECT_EQ(CurNo(L"53"), L"NULL");
}

TEST_F(BillCodeRuleTest, CountsFromOneWhereNothingWasIssued) {
  EXPECT_EQ(Number(DictionaryOf({{L"FBillType", 53}, {L"AutoUpdateCurNo", true}})), L"KH0001-C");
  EXPECT_EQ(CurNo(L"53"), L"1");
}

TEST_F(BillCodeRuleTest, TakesNullsOfARuleForNothing) {
  EXPECT_EQ(Number(DictionaryOf({{L"FBillType", 87}, {L"AutoUpdateCurNo", true}})), L"4");
}

TEST_F(BillCodeRuleTest, LeavesTheNumberWhenToldSo) {
  const Object request = DictionaryOf({{L"FBillType", 50}, {L"AutoUpdateCurNo", false}});
  EXPECT_EQ(Number(request), L"BOM000012");
  EXPECT_EQ(Number(request), L"BOM000012");
  EXPECT_EQ(CurNo(L"50"), L"11");
}

TEST_F(BillCodeRuleTest, FindsItsOptionsInsideAnItemRequest) {
  const Object options = DictionaryOf(
      {{L"FBillType", 50}, {L"BillNumber", 1}, {L"AutoUpdateCurNo", true}, {L"MoreBillID", false}});
  EXPECT_EQ(Number(DictionaryOf({{L"FPreLetter", 0}, {L"FItemID", 101}, {L"Options", options}})),
            L"BOM000012");
}

TEST_F(BillCodeRuleTest, GivesSeveralNumbersAtOnce) {
  const Object request = DictionaryOf(
      {{L"FBillType", 53}, {L"BillNumber", 3}, {L"AutoUpdateCurNo", true}, {L"MoreBillID", true}});
  const Object holder = New(L"ruvo10.Dictionary");
  EXPECT_EQ(Number(request, holder), L"KH0001-C");
  EXPECT_EQ(holder.Get(L"Count"), Variant(3));
  EXPECT_EQ(holder.Get(L"Value", L"1"), Variant(L"KH0001-C"));
  EXPECT_EQ(holder.Get(L"Value", L"3"), Variant(L"KH0003-C"));
  EXPECT_EQ(CurNo(L"53"), L"3");
}

TEST_F(BillCodeRuleTest, TakesTheHolderAndTheFlagInEitherOrder) {
  Variant request(DictionaryOf(
      {{L"FBillType", 50}, {L"BillNumber", 2}, {L"AutoUpdateCurNo", false}, {L"MoreBillID", true}}));
  const Object holder = New(L"ruvo10.Dictionary");
  Variant holderArgument(holder);
  Variant flag(true);
  EXPECT_EQ(rule_.Call(L"GetNewBillID", database_.Dsn(), Variant::Reference(request),
                       Variant::Reference(holderArgument), Variant::Reference(flag)),
            Variant(L"BOM000012"));
  EXPECT_EQ(holder.Get(L"Value", L"2"), Variant(L"BOM000013"));
}

TEST_F(BillCodeRuleTest, GivesOneNumberWhenSeveralAreNotAskedFor) {
  const Object holder = New(L"ruvo10.Dictionary");
  EXPECT_EQ(
      Number(DictionaryOf({{L"FBillType", 50}, {L"BillNumber", 5}, {L"AutoUpdateCurNo", true}}), holder),
      L"BOM000012");
  EXPECT_EQ(CurNo(L"50"), L"12");
  EXPECT_EQ(holder.Get(L"Count"), Variant(0));
}

TEST_F(BillCodeRuleTest, RefusesWhatItHasNoRuleFor) {
  constexpr int kInvalidCall = 5;
  const Raised noRule = RaisedBy([&] {
    Number(DictionaryOf({{L"FBillType", 99}, {L"AutoUpdateCurNo", true}}));
  });
  EXPECT_EQ(noRule.code, Numbered(kInvalidCall));
  EXPECT_EQ(noRule.description, L"ICBillNo has no rule for the bill type 99.");
  const Raised none = RaisedBy([&] {
    Number(DictionaryOf(
        {{L"FBillType", 50}, {L"BillNumber", 0}, {L"AutoUpdateCurNo", true}, {L"MoreBillID", true}}));
  });
  EXPECT_EQ(none.code, Numbered(kInvalidCall));
  EXPECT_EQ(CurNo(L"50"), L"11");
  EXPECT_EQ(RaisedBy([&] { Number(Object()); }).code, DISP_E_TYPEMISMATCH);
}

TEST_F(BillCodeRuleTest, GivesNoNumberTwiceToTwoApartments) {
  const std::wstring dsn = database_.Dsn();
  constexpr int kEach = 20;
  const auto take = [&dsn] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
      const Object rule = New(L"QorvaneMBillCodeRule.clsBillCodeRule");
      Variant request(DictionaryOf({{L"FBillType", 50}, {L"AutoUpdateCurNo", true}}));
      for (int i = 0; i < kEach; ++i)
        rule.Call(L"GetNewBillID", dsn, Variant::Reference(request), true, false);
    }
    CoUninitialize();
  };
  std::thread one(take);
  std::thread two(take);
  one.join();
  two.join();
  EXPECT_EQ(CurNo(L"50"), std::to_wstring(11 + 2 * kEach));
}

} // namespace
} // namespace standin::test
