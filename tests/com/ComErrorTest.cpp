#include "com/ComError.h"

#include <gtest/gtest.h>
#include <oleauto.h>

#include "com/ErrorInfo.h"
#include "com/Module.h"
#include "com/Ptr.h"

namespace com {
namespace {

HRESULT __stdcall FillIn(EXCEPINFO* info) {
  info->bstrDescription = SysAllocString(L"filled in late");
  return S_OK;
}

TEST(ComError, ReadsAnExcepInfoThatIsFilledInLate) {
  EXCEPINFO info{};
  info.scode = E_ABORT;
  info.pfnDeferredFillIn = FillIn;
  const ComError error = ComError::FromExcepInfo(info);
  EXPECT_EQ(error.code(), E_ABORT);
  EXPECT_EQ(error.description(), L"filled in late");
}

TEST(ComError, TakesA16BitCodeForARunTimeError) {
  EXCEPINFO info{};
  info.wCode = 13;
  EXPECT_EQ(static_cast<unsigned>(ComError::FromExcepInfo(info).code()), 0x800A000Du);
}

TEST(ComError, SpeaksTheSystemsWordsWhereThereAreNoOthers) {
  SetErrorInfo(0, nullptr);
  EXPECT_FALSE(ComError::FromThread(E_ACCESSDENIED).description().empty());
  EXPECT_THROW(Check(E_ACCESSDENIED), ComError);
  EXPECT_NO_THROW(Check(S_FALSE));
}

TEST(ComError, RunTimeErrorsAreNumberedAsAutomationDoes) {
  try {
    RaiseRuntimeError(457, L"Source", L"text");
    FAIL();
  } catch (const ComError& error) {
    EXPECT_EQ(static_cast<unsigned>(error.code()), 0x800A01C9u);
    EXPECT_EQ(error.source(), L"Source");
  }
}

TEST(ComError, CarriesTextsWithNulsWhole) {
  using namespace std::string_literals;
  const ComError error(E_FAIL, L"so\0urce"s, L"\0what\0 it says\0"s, L"C:\\help.chm", 7);
  EXCEPINFO info{};
  error.FillExcepInfo(info);
  error.SetOnThread();
  for (const ComError& carried : {ComError::FromExcepInfo(info), ComError::FromThread(E_FAIL)}) {
    EXPECT_EQ(carried.code(), E_FAIL);
    EXPECT_EQ(carried.source(), L"so\0urce"s);
    EXPECT_EQ(carried.description(), L"\0what\0 it says\0"s);
    EXPECT_EQ(carried.helpFile(), L"C:\\help.chm");
    EXPECT_EQ(carried.helpContext(), 7U);
  }
}

TEST(ComError, IsAnErrorObjectLikeTheSystems) {
  const Ptr<IErrorInfo> error = MakeErrorInfo(ComError(E_FAIL, L"source", L"text"));
  void* object = nullptr;
  ASSERT_EQ(error->QueryInterface(IID_IErrorInfo, &object), S_OK);
  static_cast<IErrorInfo*>(object)->Release();
  EXPECT_EQ(error->QueryInterface(IID_IDispatch, &object), E_NOINTERFACE);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(error->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  GUID guid = IID_IDispatch;
  EXPECT_EQ(error->GetGUID(&guid), S_OK);
  EXPECT_EQ(guid, GUID_NULL);
  EXPECT_EQ(error->GetGUID(nullptr), E_POINTER);
  EXPECT_EQ(error->GetHelpContext(nullptr), E_POINTER);
  EXPECT_EQ(error->GetSource(nullptr), E_POINTER);
}

TEST(ComError, IsAUseOfTheModuleOnlyWithNuls) {
  using namespace std::string_literals;
  ASSERT_FALSE(ModuleInUse());
  ComError(E_FAIL, L"source", L"text").SetOnThread();
  EXPECT_FALSE(ModuleInUse()) << "the error object is the system's";
  ComError(E_FAIL, L"source", L"te\0xt"s).SetOnThread();
  EXPECT_TRUE(ModuleInUse()) << "its code is in the module";
  SetErrorInfo(0, nullptr);
  EXPECT_FALSE(ModuleInUse());
}

} // namespace
} // namespace com
