#include "com/ClassObject.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/com/Probe.h"

namespace com::test {
namespace {

constexpr CLSID kBrokenId = {0x11111111, 0x2222, 0x3333, {1, 2, 3, 4, 5, 6, 7, 9}};

Ptr<IDispatch> FailToCreate(REFCLSID /*classId*/) {
  throw ComError(E_ABORT, L"Broken", L"cannot be made");
}

const std::array kServed{ClassEntry{kProbeId, L"Kit.Probe", L"probe", &CreateDispatchObject<Probe>},
                         ClassEntry{kBrokenId, L"Kit.Broken", L"broken", &FailToCreate}};

TEST(ClassObject, CreatesObjectsThatCountAsUses) {
  ASSERT_FALSE(ModuleInUse());
  {
    Ptr<IClassFactory> factory;
    ASSERT_EQ(GetClassObject(kServed, kProbeId, IID_IClassFactory, factory.OutVoid()), S_OK);
    EXPECT_TRUE(ModuleInUse());
    Ptr<IDispatch> object;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, object.OutVoid()), S_OK);
    factory = nullptr;
    EXPECT_TRUE(ModuleInUse());
    EXPECT_EQ(Object(object).Get(L"Constant").AsLong(), 7);
  }
  EXPECT_FALSE(ModuleInUse());
}

TEST(ClassObject, LocksTheServer) {
  Ptr<IClassFactory> factory;
  ASSERT_EQ(GetClassObject(kServed, kProbeId, IID_IClassFactory, factory.OutVoid()), S_OK);
  factory->LockServer(TRUE);
  Ptr<IClassFactory> second = factory;
  factory = nullptr;
  second->LockServer(FALSE);
  second = nullptr;
  EXPECT_FALSE(ModuleInUse());
}

TEST(ClassObject, RefusesUnknownClassesAndInterfaces) {
  void* object = &object;
  EXPECT_EQ(GetClassObject(kServed, CLSID_NULL, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(GetClassObject(kServed, kProbeId, IID_IDispatch, &object), E_NOINTERFACE);
  EXPECT_EQ(GetClassObject(kServed, kProbeId, IID_IClassFactory, nullptr), E_POINTER);
}

TEST(ClassObject, RefusesAggregation) {
  Ptr<IClassFactory> factory;
  ASSERT_EQ(GetClassObject(kServed, kProbeId, IID_IClassFactory, factory.OutVoid()), S_OK);
  const Object outer = NewProbe();
  Ptr<IUnknown> object;
  EXPECT_EQ(factory->CreateInstance(outer.pointer(), IID_IUnknown, object.OutVoid()), CLASS_E_NOAGGREGATION);
  EXPECT_FALSE(object);
}

TEST(ClassObject, ReportsWhatAConstructorThrows) {
  Ptr<IClassFactory> factory;
  ASSERT_EQ(GetClassObject(kServed, kBrokenId, IID_IClassFactory, factory.OutVoid()), S_OK);
  Ptr<IDispatch> object;
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, object.OutVoid()), E_ABORT);
  EXPECT_EQ(ComError::FromThread(E_ABORT).description(), L"cannot be made");
}

TEST(DispatchObject, UnwrapsItsOwnClassOnly) {
  const Object probe = NewProbe();
  EXPECT_NE(Unwrap<Probe>(probe.pointer()), nullptr);
  EXPECT_EQ(Unwrap<Probe>(nullptr), nullptr);
}

TEST(DispatchObject, HasNoTypeInformationWithoutAnInterfaceId) {
  UINT count = 9;
  EXPECT_EQ(NewProbe().pointer()->GetTypeInfoCount(&count), S_OK);
  EXPECT_EQ(count, 0u);
  Ptr<ITypeInfo> info;
  EXPECT_EQ(NewProbe().pointer()->GetTypeInfo(0, 0, info.Out()), E_NOTIMPL);
}

} // namespace
} // namespace com::test
