// Calls that no honest client makes, from a generator: every member of every class of the component, and the
// members of the stand-in's objects, with wrong ids, flags, counts and types, named and double arguments,
// references of every type, arrays, long texts, NULs, lone surrogates, broken descriptors, objects that
// raise, lie and call back, and nowhere to put results and errors. Whatever they answer: the process lives,
// nothing is lost, and the next good call works.
//
// HOSTILE_CALLS and HOSTILE_SEED in the environment set how many and which; HOSTILE_TRACE=1 names each call
// before it is made.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <map>
#include <random>

#include "com/Ptr.h"
#include "com/RefCounted.h"
#include "com/Text.h"
#include "src/server/Classes.h"
#include "tests/support/Client.h"
#include "tests/support/HeapUse.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using com::test::HeapUse;

uint32_t FromEnvironment(const char* name, uint32_t otherwise) {
  const char* const text = std::getenv(name);
  return text ? static_cast<uint32_t>(std::strtoul(text, nullptr, 10)) : otherwise;
}

class Chance {
 public:
  explicit Chance(uint32_t seed) : random_(seed) {}
  // 0 to end - 1. The library's distributions differ between compilers.
  uint32_t Below(uint32_t end) { return static_cast<uint32_t>(random_() % end); }
  bool OneIn(uint32_t n) { return Below(n) == 0; }
  template <class T, size_t N>
  const T& Of(const T (&choices)[N]) {
    return choices[Below(N)];
  }

 private:
  std::mt19937 random_;
};

// What calls have shown about the members of a kind of object.
struct AimedMember {
  uint32_t arguments = 0; // how many it may take
  bool missing = false;
};
using Members = std::map<std::pair<size_t, DISPID>, AimedMember>;

class Generator;

// An object of a client's own that keeps to no rule.
class HostileObject final : public com::RefCounted<IDispatch> {
 public:
  explicit HostileObject(Generator& generator) : generator_(generator) { ++alive; }
  ~HostileObject() override { --alive; }

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    const bool known = iid == IID_IUnknown || iid == IID_IDispatch;
    *object = known ? static_cast<IDispatch*>(this) : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*info*/) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
  STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result,
                      EXCEPINFO* info, UINT* badArgument) override;

  static inline int alive = 0;

 private:
  Generator& generator_;
};

class Generator {
 public:
  Generator(uint32_t seed, std::wstring dsn, Members& members)
      : members_(members), chance_(seed), dsn_(std::move(dsn)),
        trace_(std::getenv("HOSTILE_TRACE") != nullptr) {}

  // Makes `count` calls and lets everything go.
  void Run(uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
      if (targets_.empty() || chance_.OneIn(50)) Renew();
      CallOne(Target(targets_[chance_.Below(static_cast<uint32_t>(targets_.size()))]));
    }
    targets_.clear();
    gathered_.clear();
    SetErrorInfo(0, nullptr);
    // A call may have switched the trace on, which keeps what it records.
    const Object trace = Object::Create(L"ErpStandIn.Trace");
    trace.Call(L"Stop");
    trace.Call(L"Clear");
  }

  uint32_t calls() const { return calls_; }
  uint32_t succeeded() const { return succeeded_; }
  uint32_t raised() const { return raised_; }
  Chance& chance() { return chance_; }

  // From inside a call: another one, on an object that may be busy with that.
  void CallBack() {
    if (depth_ >= 3 || targets_.empty()) return;
    CallOne(Target(targets_[chance_.Below(static_cast<uint32_t>(targets_.size()))]));
  }

  // Any value, whatever it is good for. A null result is a value that owns nothing.
  Variant AnyValue() {
    switch (chance_.Below(24)) {
    case 0: return {};
    case 1: return Variant::Null();
    case 2: return Variant::Missing();
    case 3: return chance_.OneIn(2);
    case 4: return static_cast<int16_t>(chance_.Below(65536));
    case 5: return chance_.OneIn(3) ? Variant(INT32_MIN) : Variant(static_cast<int32_t>(chance_.Below(8)));
    case 6: return chance_.OneIn(3) ? 1e300 : -0.5;
    case 7: return Variant::Date(chance_.OneIn(2) ? 1e15 : 46000.25);
    case 8: return NewVector({1, L"two", Variant::Null()});
    case 9:
      return NewVector({NewDictionary({{L"FInterID", 1}}), NewDictionary({{L"UseStatusChange", true}})});
    case 10: return NewDictionary({{L"FInterID", AnyText()}, {L"FItemID", 3}, {L"Entry", NewVector({})}});
    case 11: return com::Object(com::Ptr<IDispatch>(new HostileObject(*this)));
    case 12: return AnyArray();
    case 13:
      return gathered_.empty() ? Variant()
                               : gathered_[chance_.Below(static_cast<uint32_t>(gathered_.size()))];
    case 14: return Variant::FromUnknown(nullptr);
    case 15: return Object();
    case 16:
      return NewDictionary(
          {{L"FInterID", 1}, {L"BOMNumber", L"B9"}, {L"Entry", NewVector({NewDictionary({})})}});
    case 17: return static_cast<int32_t>(chance_.Below(5));
    default: return AnyText();
    }
  }

  std::wstring AnyText() {
    static constexpr const wchar_t* kTexts[] = {L"",
                                                L" ",
                                                L"'",
                                                L"1",
                                                L"-1",
                                                L"B1",
                                                L"FInterID=1",
                                                L"FInterID = 1 OR 1=1",
                                                L"select 1 as a",
                                                L"SELECT * FROM ICBOM",
                                                L"ORDER BY 1",
                                                L"%1",
                                                L"^|^~$~",
                                                L"Language=",
                                                L";;==;",
                                                L"{",
                                                L"Language={;",
                                                L"Provider=none",
                                                L"\xD800",
                                                L"\xDC00\xD800",
                                                L"\x7269\x6599",
                                                L"ADODB.Connection",
                                                L"QorvaneMBomBill.BomView",
                                                L"FInterID",
                                                L"Count",
                                                L"50"};
    switch (chance_.Below(40)) {
    case 0: return std::wstring(1024 * 1024, L'x');
    case 1: return std::wstring(L"a\0b", 3);
    case 2: return std::wstring(chance_.Below(300), static_cast<wchar_t>(chance_.Below(65536)));
    default: return chance_.OneIn(4) ? dsn_ : chance_.Of(kTexts);
    }
  }

 private:
  struct Target {
    Object object;
    size_t kind; // objects of one kind have the same members
  };
  static constexpr size_t kUnknownKind = SIZE_MAX;

  Variant AnyArray() {
    static constexpr VARTYPE kTypes[] = {VT_VARIANT, VT_UI1, VT_I4, VT_BSTR, VT_R8, VT_DISPATCH};
    const VARTYPE type = chance_.Of(kTypes);
    std::array<SAFEARRAYBOUND, 2> bounds{SAFEARRAYBOUND{chance_.Below(4), -1}, SAFEARRAYBOUND{2, 7}};
    VARIANT array{};
    array.vt = static_cast<VARTYPE>(VT_ARRAY | type);
    array.parray = SafeArrayCreate(type, chance_.OneIn(4) ? 2 : 1, bounds.data());
    return Variant::Attach(array);
  }

  // The classes are looked up once: in the registry that takes longer than most calls.
  Object New(const wchar_t* progId) {
    auto known = classes_.find(progId);
    if (known == classes_.end()) known = classes_.emplace(progId, com::ObjectClass(progId)).first;
    return known->second.Create();
  }

  Object NewDictionary(std::initializer_list<std::pair<const wchar_t*, Variant>> items) {
    Object dictionary = New(L"ruvo10.Dictionary");
    for (const auto& [key, value] : items) dictionary.Put(L"Value", key, value);
    return dictionary;
  }

  Object NewVector(std::initializer_list<Variant> items) {
    Object vector = New(L"ruvo10.Vector");
    for (const Variant& item : items) vector.Call(L"Add", item);
    return vector;
  }

  // New objects of all classes in place of the ones so far.
  void Renew() {
    if (depth_ > 0) return;
    targets_.clear();
    if (gathered_.size() > 20) gathered_.clear();
    for (const com::ClassEntry& entry : PublicClasses()) {
      const Object object = chance_.OneIn(2)
                                ? New(L"ErpStandIn.Host").Call(L"CreateObject", entry.progId).AsObject()
                                : New(entry.progId);
      targets_.push_back({object, targets_.size()});
    }
    for (const wchar_t* progId :
         {L"ruvo10.Dictionary", L"ruvo10.Vector", L"ruvo10.Global", L"TarnelResLoader.Loader",
          L"QorvaneGlobal.Global", L"QorvaneWoskBase.ObjectFactory", L"QorvaneWoskBase.SecurityInfo",
          L"QorvaneWoskBase.SystemProfile", L"VexoLogMsg.Log", L"QorvaneMBillCodeRule.clsBillCodeRule",
          L"QorvaneBillDataAccess.clsBillPackage", L"ErpStandIn.Host", L"ErpStandIn.Trace",
          L"ADODB.Connection", L"ADODB.Recordset", L"ADODB.Command", L"ADODB.Parameter"})
      targets_.push_back({New(progId), targets_.size()});
    const Object connection = New(L"ADODB.Connection");
    connection.Call(L"Open", dsn_);
    connection.Put(L"CommandTimeout", 1);
    const Variant rows = connection.Call(L"Execute", L"SELECT 1 AS a, 'x' AS b UNION SELECT 2, NULL");
    targets_.push_back({rows.AsObject(), targets_.size()});
    targets_.push_back({connection, targets_.size()});
  }

  // One argument. What a reference points to lies in `referenced`.
  VARIANT AnyArgument(std::deque<VARIANT>& referenced) {
    VARIANT argument{};
    if (!chance_.OneIn(5)) {
      Variant value = AnyValue();
      argument = value.Detach();
      return argument;
    }
    VARIANT& target = referenced.emplace_back();
    Variant value = AnyValue();
    target = value.Detach();
    if (chance_.OneIn(2)) {
      argument.vt = VT_BYREF | VT_VARIANT;
      argument.pvarVal = &target;
    } else {
      argument.vt = static_cast<VARTYPE>(VT_BYREF | target.vt);
      argument.byref = &target.llVal;
      if (target.vt == VT_EMPTY || target.vt == VT_NULL) argument.vt = VT_BYREF | VT_I4;
    }
    if (chance_.OneIn(40)) argument.byref = nullptr;
    return argument;
  }

  void CallOne(const Target& target) {
    ++depth_;
    ++calls_;
    constexpr WORD kAnyRead = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    static constexpr WORD kFlags[] = {DISPATCH_METHOD,
                                      DISPATCH_METHOD,
                                      DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                                      DISPATCH_PROPERTYGET,
                                      DISPATCH_PROPERTYPUT,
                                      DISPATCH_PROPERTYPUTREF,
                                      0,
                                      0xFFFF};
    static constexpr DISPID kOddIds[] = {DISPID_UNKNOWN, DISPID_NEWENUM, DISPID_PROPERTYPUT,
                                         INT32_MAX,      INT32_MIN,      0};
    DISPID id = chance_.OneIn(20) ? chance_.Of(kOddIds) : static_cast<DISPID>(chance_.Below(34));
    for (int i = 0; i < 5 && members_[{target.kind, id}].missing; ++i)
      id = static_cast<DISPID>(chance_.Below(34));
    const WORD flags = chance_.OneIn(3) ? chance_.Of(kFlags) : kAnyRead;
    AimedMember& member = members_[{target.kind, id}];
    const uint32_t count = chance_.OneIn(60) ? 40 : chance_.OneIn(8) ? chance_.Below(7) : member.arguments;
    std::deque<VARIANT> referenced;
    std::vector<VARIANT> arguments(count);
    for (VARIANT& argument : arguments) argument = AnyArgument(referenced);
    // The descriptor comes first, and last in the array.
    if (count > 0 && !chance_.OneIn(4)) {
      VARIANT& first = arguments.back();
      if ((first.vt & VT_BYREF) == 0) VariantClear(&first);
      first = Variant(dsn_).Detach();
    }
    std::vector<DISPID> named(chance_.OneIn(15) ? chance_.Below(count + 1) : 0);
    for (DISPID& name : named)
      name = chance_.OneIn(8) ? DISPID_PROPERTYPUT : static_cast<DISPID>(chance_.Below(count + 1));
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS params{arguments.data(), named.data(), count, static_cast<UINT>(named.size())};
    if (count > 0 && (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0 && !chance_.OneIn(5)) {
      params.rgdispidNamedArgs = &put;
      params.cNamedArgs = 1;
    }
    VARIANT result{};
    EXCEPINFO info{};
    UINT bad = 0;
    if (trace_)
      std::fprintf(stderr, "call %u: target %p id %ld flags %u arguments %u named %u\n", calls_,
                   static_cast<void*>(target.object.pointer()), static_cast<long>(id), flags, count,
                   params.cNamedArgs);
    IDispatch* const object = target.object.pointer();
    const HRESULT hr =
        object->Invoke(id, chance_.OneIn(50) ? IID_IUnknown : IID_NULL, chance_.OneIn(9) ? 0x0804 : 0, flags,
                       chance_.OneIn(60) ? nullptr : &params, chance_.OneIn(5) ? nullptr : &result,
                       chance_.OneIn(5) ? nullptr : &info, chance_.OneIn(5) ? nullptr : &bad);
    if (target.kind != kUnknownKind && hr == DISP_E_MEMBERNOTFOUND) member.missing = flags == kAnyRead;
    if (hr == DISP_E_BADPARAMCOUNT && count == member.arguments) member.arguments = (count + 1) % 9;
    if (SUCCEEDED(hr)) ++succeeded_;
    if (hr == DISP_E_EXCEPTION) ++raised_;
    EXPECT_TRUE(SUCCEEDED(hr) || result.vt == VT_EMPTY) << "a failure has no result";
    const Variant given = Variant::Attach(result);
    if (given.IsObject() && depth_ == 1) Keep(given);
    if (info.pfnDeferredFillIn) info.pfnDeferredFillIn(&info);
    for (BSTR text : {info.bstrSource, info.bstrDescription, info.bstrHelpFile}) SysFreeString(text);
    for (VARIANT& argument : arguments)
      if ((argument.vt & VT_BYREF) == 0) VariantClear(&argument);
    for (VARIANT& target_ : referenced) VariantClear(&target_);
    --depth_;
  }

  void Keep(const Variant& object) {
    gathered_.push_back(object);
    if (object.type() == VT_DISPATCH && object.AsObject())
      targets_.push_back({object.AsObject(), kUnknownKind});
  }

  Members& members_;
  Chance chance_;
  std::wstring dsn_;
  bool trace_;
  std::map<std::wstring, com::ObjectClass> classes_;
  uint32_t calls_ = 0;
  uint32_t succeeded_ = 0;
  uint32_t raised_ = 0; // by the object, not by its dispatcher
  int depth_ = 0;
  std::vector<Target> targets_;
  std::vector<Variant> gathered_; // results that are objects
};

HRESULT HostileObject::GetIDsOfNames(REFIID /*iid*/, LPOLESTR* /*names*/, UINT count, LCID /*locale*/,
                                     DISPID* ids) {
  if (generator_.chance().OneIn(10)) return DISP_E_UNKNOWNNAME;
  for (UINT i = 0; i < count; ++i) ids[i] = static_cast<DISPID>(generator_.chance().Below(9));
  return S_OK;
}

HRESULT __stdcall FillInLate(EXCEPINFO* info) {
  info->bstrDescription = SysAllocString(L"late");
  return S_OK;
}

HRESULT HostileObject::Invoke(DISPID /*id*/, REFIID /*iid*/, LCID /*locale*/, WORD /*flags*/,
                              DISPPARAMS* /*params*/, VARIANT* result, EXCEPINFO* info, UINT* badArgument) {
  Chance& chance = generator_.chance();
  if (chance.OneIn(8)) generator_.CallBack();
  switch (chance.Below(10)) {
  case 0: return E_FAIL;
  case 1: return DISP_E_MEMBERNOTFOUND;
  case 2:
    if (badArgument) *badArgument = 77;
    return DISP_E_TYPEMISMATCH;
  case 3: return DISP_E_EXCEPTION; // and says nothing
  case 4:
    if (info) {
      *info = {};
      info->wCode = 13;
      info->bstrSource = SysAllocStringLen(L"\0\xD800", 2);
      info->pfnDeferredFillIn = chance.OneIn(2) ? FillInLate : nullptr;
    }
    return DISP_E_EXCEPTION;
  case 5: return S_FALSE;
  default: break;
  }
  // A count that a loop can go through.
  Variant value =
      chance.OneIn(2) ? Variant(static_cast<int32_t>(chance.Below(5)) - 1) : generator_.AnyValue();
  if (result) *result = value.Detach();
  return S_OK;
}

TEST(HostileCalls, NeitherEndNorWearOutTheProcess) {
  const uint32_t calls = FromEnvironment("HOSTILE_CALLS", 6000);
  const uint32_t seed = FromEnvironment("HOSTILE_SEED", 20261122);
  constexpr uint32_t kRounds = 4;
  SCOPED_TRACE("HOSTILE_SEED=" + std::to_string(seed));
  const TestDatabase database;
  database.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID) VALUES (1, 'B1', 500)");
  Members members;
  int growing = 0;
  long before = 0;
  for (uint32_t round = 0; round < kRounds; ++round) {
    Generator generator(seed + round, database.Dsn(L"Language=chs"), members);
    generator.Run(calls / kRounds);
    EXPECT_GE(generator.calls(), calls / kRounds);
    // Most are refused, as they should be; some must get through.
    EXPECT_GT(generator.succeeded(), generator.calls() / 100);
    EXPECT_GT(generator.raised(), generator.calls() / 200);
    EXPECT_EQ(HostileObject::alive, 0) << "an argument is still held";
    const auto after = static_cast<long>(HeapUse::Now().blocks);
    // One block in a hundred calls would show, but for the tens that first calls of something leave for later
    // ones while there were few.
    constexpr long kKeptByFirstCalls = 64;
    if (round > 0 && after > before + std::max<long>(calls / kRounds / 100, kKeptByFirstCalls)) ++growing;
    std::printf("round %u: %u calls, %u succeeded, %u raised, %ld blocks\n", round, generator.calls(),
                generator.succeeded(), generator.raised(), after);
    before = after;
    // Nobody holds a lock, and a unit of work is a unit of work.
    const Object bom = Hosted(L"BomUpdate");
    database.Execute(
        L"DELETE FROM ICBOM INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID) VALUES (1, 'B1', 500)");
    bom.Call(L"UpdateIcBomStatus", database.Dsn(), L"B1");
    EXPECT_EQ(database.Rows(L"SELECT FStatus, FUseStatus FROM ICBOM"), std::vector<std::wstring>{L"1|1072"});
  }
  EXPECT_LT(growing, static_cast<int>(kRounds) - 1);
}

} // namespace
} // namespace mbom::test
