// What stays behind after calls: memory, objects, and what several apartments do to each other.
#include <gtest/gtest.h>
#include <objbase.h>

#include <atomic>
#include <functional>
#include <thread>

#include "com/Ptr.h"
#include "tests/src/server/LoadedDll.h"
#include "tests/support/Client.h"
#include "tests/support/HeapUse.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using com::test::HeapUse;

// Counts the blocks of COM's allocator, BSTRs among them, that are allocated and not yet freed.
class MallocSpy final : public IMallocSpy {
 public:
  virtual ~MallocSpy() = default;
  long blocks() const { return blocks_; }

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    *object = iid == IID_IUnknown || iid == IID_IMallocSpy ? this : nullptr;
    return *object ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T size) override { return size; }
  STDMETHODIMP_(void*) PostAlloc(void* block) override {
    if (block) ++blocks_;
    return block;
  }
  STDMETHODIMP_(void*) PreFree(void* block, BOOL spyed) override {
    if (block && spyed) --blocks_;
    return block;
  }
  STDMETHODIMP_(void) PostFree(BOOL /*spyed*/) override {}
  STDMETHODIMP_(SIZE_T) PreRealloc(void* block, SIZE_T size, void** newBlock, BOOL spyed) override {
    if (block && spyed) --blocks_;
    *newBlock = block;
    return size;
  }
  STDMETHODIMP_(void*) PostRealloc(void* block, BOOL /*spyed*/) override {
    if (block) ++blocks_;
    return block;
  }
  STDMETHODIMP_(void*) PreGetSize(void* block, BOOL /*spyed*/) override { return block; }
  STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T size, BOOL /*spyed*/) override { return size; }
  STDMETHODIMP_(void*) PreDidAlloc(void* block, BOOL /*spyed*/) override { return block; }
  STDMETHODIMP_(int) PostDidAlloc(void* /*block*/, BOOL /*spyed*/, int actual) override { return actual; }
  STDMETHODIMP_(void) PreHeapMinimize() override {}
  STDMETHODIMP_(void) PostHeapMinimize() override {}

 private:
  std::atomic<long> blocks_{0};
};

void Prepare(const TestDatabase& database) {
  database.Execute(
      L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID, FEcnInterID) VALUES (1, 'B1', 500, 0), "
      L"(2, 'B2', 500, 5)");
  database.Execute(
      L"INSERT INTO t_MeasureUnit (FMeasureUnitID, FItemID, FUnitGroupID, FNumber, FName, FCoefficient, "
      L"FScale) VALUES (1, 1, 1, 'DOZ', 'dozen', 12, 0)");
  database.Execute(L"INSERT INTO t_ICItem (FItemID, FNumber, FName) VALUES (901, 'I', 'Item')");
  database.Execute(L"INSERT INTO ICTransactionType (FID, FName, FTemplateID) VALUES (50, 'BOM', 'Z01')");
  database.Execute(L"INSERT INTO ICTemplateEntry (FID, FCtlOrder, FFieldName, FDefaultCtl) VALUES ('Z01', 1, "
                   L"'FMine', 0)");
  database.Execute(
      L"INSERT INTO ICUserDefinedValue (FTranType, FInterID, FEntryID, FFieldName, FID) VALUES (50, "
      L"1, 1, 'FMine', 'x')");
  database.Execute(
      L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty) VALUES (1, 1, 901, 1, 2)");
}

// One accepted save, one refused, one audit, one that raises; a ledger and a lookup list.
void EveryKindOfCall(const TestDatabase& database) {
  const std::wstring dsn = database.Dsn(L"Language=en");
  const Object bom = Hosted(L"BomUpdate");
  Variant message(L"");
  EXPECT_TRUE(bom.Call(L"EndSave", dsn, MakeVector({MakeDictionary({{L"FInterID", 1}, {L"FTransType", 0}})}),
                       Variant::Reference(message))
                  .AsBool());
  EXPECT_FALSE(
      bom.Call(L"EndSave", dsn, MakeVector({MakeDictionary({{L"FInterID", 2}})}), Variant::Reference(message))
          .AsBool());
  EXPECT_TRUE(bom.Call(L"BeginSave", dsn, MakeVector({}), L"").AsBool());
  bom.Call(L"UpdateIcBomStatus", dsn, L"B1");
  EXPECT_NE(RaisedBy([&] { bom.Call(L"UpdateIcBomStatus", dsn, L"'"); }).code, S_OK);
  const Object view = Hosted(L"BomView");
  EXPECT_EQ(view.Call(L"GetBomEntryLdgInfo", dsn, 0, L"a.FInterID=1").AsObject().Get(L"Count"), Variant(1));
  view.Call(L"GetBomSimplifyList", dsn);
}

TEST(Memory, StaysFlatOverAThousandCalls) {
  constexpr int kWarmUp = 50;
  constexpr int kRounds = 200; // of five calls
  // Blocks that a cache may hold more of, by chance, than at the first count; a leak would be one a round at
  // least.
  constexpr long kSlack = kRounds / 4;
  const TestDatabase database;
  Prepare(database);
  // It outlives the test: blocks that a cache still holds are freed through it.
  static MallocSpy spy;
  ASSERT_EQ(CoRegisterMallocSpy(&spy), S_OK);
  for (int i = 0; i < kWarmUp; ++i) EveryKindOfCall(database);
  const long comBlocks = spy.blocks();
  const auto heapBlocks = static_cast<long>(HeapUse::Now().blocks);
  for (int i = 0; i < kRounds; ++i) EveryKindOfCall(database);
  EXPECT_LE(spy.blocks() - comBlocks, 0);
  EXPECT_LE(static_cast<long>(HeapUse::Now().blocks) - heapBlocks, kSlack);
  EXPECT_GT(comBlocks + heapBlocks, 0);
  CoRevokeMallocSpy();
}

TEST(Unloading, IsAllowedWhenEverythingIsReleased) {
  const LoadedDll dll(L"QorvaneMBomBill.dll");
  auto* canUnloadNow = dll.Export<HRESULT __stdcall()>("DllCanUnloadNow");
  ASSERT_EQ(canUnloadNow(), S_OK);
  {
    const Object bom = Unhosted(L"BomUpdate");
    const Object other = Unhosted(L"BomView");
    EXPECT_EQ(canUnloadNow(), S_FALSE);
  }
  EXPECT_EQ(canUnloadNow(), S_OK);
  const TestDatabase database;
  Prepare(database);
  EveryKindOfCall(database);
  EXPECT_EQ(canUnloadNow(), S_OK);
}

// Runs `work` on several single-threaded apartments at once.
void InApartments(int count, const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  threads.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&work, i] {
      CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
      work(i);
      CoUninitialize();
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(Apartments, WorkAtOnceOnDatabasesOfTheirOwn) {
  std::atomic<int> done{0};
  InApartments(4, [&done](int /*index*/) {
    const TestDatabase database;
    Prepare(database);
    for (int i = 0; i < 10; ++i) EveryKindOfCall(database);
    if (database.Value(L"SELECT CAST(FQty AS float) FROM ICBOMChild") == L"24") ++done;
  });
  EXPECT_EQ(done, 4);
}

TEST(Apartments, WaitForEachOtherOnOneDatabase) {
  const TestDatabase database;
  Prepare(database);
  std::atomic<int> saved{0};
  InApartments(3, [&](int /*index*/) {
    const Object bom = Hosted(L"BomUpdate");
    for (int i = 0; i < 10; ++i)
      if (bom.Call(L"EndSave", database.Dsn(), MakeVector({MakeDictionary({{L"FInterID", 1}})}), L"")
              .AsBool())
        ++saved;
  });
  EXPECT_EQ(saved, 30);
  EXPECT_EQ(database.Value(L"SELECT FOperatorID FROM ICBOM WHERE FInterID = 1"), L"16394");
}

} // namespace
} // namespace mbom::test
