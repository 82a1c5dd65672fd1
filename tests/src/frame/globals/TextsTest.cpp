#include "src/frame/globals/Texts.h"

#include <gtest/gtest.h>

#include "com/PendingError.h"
#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::ComError;
using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

TEST(LoadResText, KeepsTheBlanksAroundTheText) {
  EXPECT_EQ(LoadResText(L"  成本对象表 ", L"chs"), L"  成本对象表 ");
  EXPECT_EQ(LoadResText(L"  成本对象表 ", L"en"), L"  Cost Objects ");
  const Trace trace;
  LoadResText(L"  成本对象表 ", L"cht");
  EXPECT_EQ(trace.Details(L"LoadString"), Texts{L"成本对象表"});
}

TEST(LoadResText, PadsEnglishTextsOnly) {
  EXPECT_EQ(LoadResText(L"销售订单", L"en", Spacing::Both), L" Sales Orders ");
  EXPECT_EQ(LoadResText(L"销售订单", L"en", Spacing::Leading), L" Sales Orders");
  EXPECT_EQ(LoadResText(L"销售订单", L"en", Spacing::Trailing), L"Sales Orders ");
  EXPECT_EQ(LoadResText(L"销售订单", L"en", Spacing::None), L"Sales Orders");
  EXPECT_EQ(LoadResText(L"销售订单", L"en", static_cast<Spacing>(7)), L"Sales Orders");
  EXPECT_EQ(LoadResText(L"  销售订单", L"en", Spacing::Both), L"  Sales Orders ");
  EXPECT_EQ(LoadResText(L"销售订单  ", L"en", Spacing::Both), L" Sales Orders  ");
  EXPECT_EQ(LoadResText(L"销售订单", L"chs", Spacing::Both), L"销售订单");
  EXPECT_EQ(LoadResText(L"销售订单", L"cht", Spacing::Both), L"銷售訂單");
}

TEST(LoadResText, TranslatesTheMarkedPiecesOfACompoundText) {
  EXPECT_EQ(LoadResText(L"A^|^~$~销售订单^|^B", L"en"), L"ASales OrdersB");
  EXPECT_EQ(LoadResText(L"A^|^~$~销售订单^|^B", L"cht"), L"A銷售訂單B");
  EXPECT_EQ(LoadResText(L"销售订单^|^", L"en"), L"销售订单");
  EXPECT_EQ(LoadResText(L"^|^~$~ 销售订单 ^|^~$x", L"en", Spacing::Both), L" Sales Orders ~$x");
}

TEST(LoadResText, GivesAnUnknownTextBack) {
  EXPECT_EQ(LoadResText(L"没有译文的文本", L"en"), L"没有译文的文本");
  EXPECT_EQ(LoadResText(L"", L"en"), L"");
  EXPECT_EQ(LoadResText(L"   ", L"en"), L"   ");
}

TEST(LoadResText, PointsTheLoaderAtItsModuleAndLanguage) {
  LoadResText(L"销售订单", L"en");
  namespace names = outside::loader;
  ResourceLoader().Put(names::kResFileBaseName, L"SomebodyElses");
  ResourceLoader().Put(names::kLanguageID, L"chs");
  EXPECT_EQ(LoadResText(L"销售订单", L"en"), L"Sales Orders");
  EXPECT_EQ(ResourceLoader().Get(names::kResFileBaseName).AsText(), L"TarnelManufacture");
  EXPECT_EQ(ResourceLoader().Get(names::kLanguageID).AsText(), L"en");
}

TEST(LoadResText, GivesWhatItHasWhenTheLoaderFails) {
  {
    const Fault fault(L"LoadString");
    EXPECT_EQ(LoadResText(L" 销售订单 ", L"en"), L"");
  }
  const Fault fault(L"LoadString");
  EXPECT_EQ(LoadResText(L"A^|^~$~销售订单^|^B^|^~$~销售订单", L"en"), L"ABSales Orders");
}

TEST(LoadResText, LeavesThePendingErrorAsItWas) {
  ComError(E_ABORT, L"Caller", L"the caller's own").SetOnThread();
  LoadResText(L"销售订单", L"en");
  {
    const Fault fault(L"LoadString");
    const com::PendingError keep; // arming a fault is no part of the test
    ComError(E_ABORT, L"Caller", L"the caller's own").SetOnThread();
    LoadResText(L"销售订单", L"en");
    EXPECT_EQ(ComError::FromThread(E_ABORT).description(), L"the caller's own");
  }
  EXPECT_EQ(ComError::FromThread(E_ABORT).description(), L"the caller's own");

  const Fault fault(L"LoadString");
  LoadResText(L"销售订单", L"en");
  com::Ptr<IErrorInfo> none;
  EXPECT_EQ(GetErrorInfo(0, none.Out()), S_FALSE);
}

TEST(LoadResTextFormat, FillsTheMarkersInOrder) {
  EXPECT_EQ(LoadResTextFormat(L"[%1] 至 [%2] / %1", L"chs", {L"甲", 2}), L"[甲] 至 [2] / 甲");
  EXPECT_EQ(LoadResTextFormat(L"单据体第[%1]行物料有效期为 [%2] 至 [%3]", L"chs",
                              {1, L"2020-01-01", L"2020-12-31"}),
            L"单据体第[1]行物料有效期为 [2020-01-01] 至 [2020-12-31]");
}

} // namespace
} // namespace mbom::test
