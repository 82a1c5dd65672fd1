#include "src/frame/ThreadState.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include <thread>

#include "src/frame/Collections.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Variant;

TEST(ThreadState, LooksTheCollectionsUpOnceForEachThread) {
  const com::ObjectClass* const vectors = &VectorClass();
  const com::ObjectClass* const dictionaries = &DictionaryClass();
  EXPECT_EQ(&VectorClass(), vectors);
  EXPECT_EQ(&DictionaryClass(), dictionaries);

  const com::ObjectClass* vectorsThere = nullptr;
  const com::ObjectClass* dictionariesThere = nullptr;
  std::thread([&] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    vectorsThere = &VectorClass();
    dictionariesThere = &DictionaryClass();
    CoUninitialize();
  }).join();
  EXPECT_NE(vectorsThere, vectors);
  EXPECT_NE(dictionariesThere, dictionaries);
}

TEST(ThreadState, MakesCollectionsOfTheirOwn) {
  const Vector vector(VectorClass().Create());
  vector.Add(Variant(1));
  EXPECT_EQ(vector.UBound(), 1);
  EXPECT_EQ(Vector(VectorClass().Create()).UBound(), 0);
  const Dictionary dictionary = Dictionary::Make();
  dictionary.Put(L"FName", Variant(L"x"));
  EXPECT_EQ(dictionary[L"fname"], Variant(L"x"));
  EXPECT_EQ(Dictionary::Make().Count(), 0);
}

} // namespace
} // namespace mbom::test
