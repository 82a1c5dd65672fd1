#include "tests/standin/Support.h"

namespace standin::test {
namespace {

// The refusal of a save under engineering change, in the three languages.
constexpr wchar_t kSource[] = L"该BOM单为工程变更生成或已通过工程变更，不能审核和反审核!";
constexpr wchar_t kEnglish[] = L"This BOM was created by an engineering change or has passed one; it can be "
                               L"neither audited nor un-audited!";
constexpr wchar_t kTraditional[] = L"該BOM單為工程變更生成或已通過工程變更，不能審核和反審核!";

Object LoaderFor(const wchar_t* baseName, const wchar_t* language) {
  Object loader = New(L"TarnelResLoader.Loader");
  loader.Put(L"ResFileBaseName", baseName);
  loader.Put(L"LanguageID", language);
  return loader;
}

TEST(Loader, RemembersItsFileAndLanguage) {
  const Object fresh = New(L"TarnelResLoader.Loader");
  EXPECT_EQ(fresh.Get(L"ResFileBaseName"), Variant(L""));
  EXPECT_EQ(fresh.Get(L"LanguageID"), Variant(L""));
  const Object loader = LoaderFor(L"TarnelManufacture", L"en");
  EXPECT_EQ(loader.Get(L"ResFileBaseName"), Variant(L"TarnelManufacture"));
  EXPECT_EQ(loader.Get(L"LanguageID"), Variant(L"en"));
}

TEST(Loader, TranslatesForTheLanguage) {
  EXPECT_EQ(LoaderFor(L"TarnelManufacture", L"en").Call(L"LoadString", kSource), Variant(kEnglish));
  EXPECT_EQ(LoaderFor(L"TarnelManufacture", L"cht").Call(L"LoadString", kSource), Variant(kTraditional));
  EXPECT_EQ(LoaderFor(L"TarnelManufacture", L"chs").Call(L"LoadString", kSource), Variant(kSource));
}

TEST(Loader, GivesTheSourceTextBackWhereThereIsNoTranslation) {
  EXPECT_EQ(LoaderFor(L"TarnelManufacture", L"en").Call(L"LoadString", L"没有译文"), Variant(L"没有译文"));
  EXPECT_EQ(LoaderFor(L"TarnelManufacture", L"en").Call(L"LoadString", L""), Variant(L""));
  EXPECT_EQ(LoaderFor(L"TarnelManufacture", L"fr").Call(L"LoadString", kSource), Variant(kSource));
  EXPECT_EQ(LoaderFor(L"TarnelFinance", L"en").Call(L"LoadString", kSource), Variant(kSource));
}

} // namespace
} // namespace standin::test
