// Lists the BOMs of a database, asks whether the first one is in use, and shows how an error arrives:
//   ListBoms "DESCRIPTOR"
// With MinGW, from this folder:
//   x86_64-w64-mingw32-g++ -municode -static -I ../sdk ListBoms.cpp -o ListBoms.exe
//       ../sdk/QorvaneMBomBill_i.c -lole32 -loleaut32 -luuid
// The classes are dispatch interfaces: the header gives their GUIDs, calls go through Invoke.
#include <windows.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "QorvaneMBomBill_h.h"

namespace {

// A value that is freed when it goes.
struct Value : VARIANT {
  Value() { VariantInit(this); }
  explicit Value(const wchar_t* text) : Value() {
    vt = VT_BSTR;
    bstrVal = SysAllocString(text);
  }
  explicit Value(LONG number) : Value() {
    vt = VT_I4;
    lVal = number;
  }
  Value(Value&& other) noexcept : VARIANT(other) { other.vt = VT_EMPTY; }
  Value& operator=(Value&&) = delete;
  ~Value() { VariantClear(this); }

  std::wstring Text() const {
    Value text;
    if (FAILED(VariantChangeType(&text, const_cast<Value*>(this), 0, VT_BSTR)) || !text.bstrVal) return L"";
    return text.bstrVal;
  }
};

struct Failure {
  HRESULT number;
  std::wstring source;
};

// Calls a method, or reads a property, by its name.
Value Invoke(IDispatch* object, const wchar_t* name, std::vector<VARIANT> arguments) {
  DISPID id = 0;
  auto* names = const_cast<wchar_t*>(name);
  HRESULT hr = object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
  if (FAILED(hr)) throw Failure{hr, name};
  // The last argument comes first.
  std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
  DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  Value result;
  EXCEPINFO info{};
  hr = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET, &parameters,
                      &result, &info, nullptr);
  if (SUCCEEDED(hr)) return result;
  Failure failure{hr == DISP_E_EXCEPTION ? info.scode : hr, info.bstrSource ? info.bstrSource : L""};
  SysFreeString(info.bstrSource);
  SysFreeString(info.bstrDescription);
  SysFreeString(info.bstrHelpFile);
  throw failure;
}

IDispatch* Create(REFCLSID classId, REFIID interfaceId) {
  void* object = nullptr;
  const HRESULT hr = CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, interfaceId, &object);
  if (FAILED(hr)) throw Failure{hr, L"CoCreateInstance"};
  return static_cast<IDispatch*>(object);
}

void ListBoms(const wchar_t* descriptor) {
  const Value source(descriptor);
  IDispatch* const view = Create(CLSID_BomView, DIID__BomView);
  const Value boms = Invoke(view, L"GetBomLdgInfo", {source});
  const LONG count = Invoke(boms.pdispVal, L"UBound", {}).lVal;
  LONG first = 0;
  for (LONG i = 1; i <= count; ++i) {
    const Value bom = Invoke(boms.pdispVal, L"Item", {Value(i)});
    std::printf("%ls %ls\n", Invoke(bom.pdispVal, L"Value", {Value(L"FBOMNumber")}).Text().c_str(),
                Invoke(bom.pdispVal, L"Value", {Value(L"FStatus")}).Text().c_str());
    if (i == 1) first = Invoke(bom.pdispVal, L"Value", {Value(L"FInterID")}).lVal;
  }

  // strInfo is an in/out argument: a reference to a text, which the method may replace.
  BSTR text = SysAllocString(L"");
  VARIANT info;
  VariantInit(&info);
  info.vt = VT_BYREF | VT_BSTR;
  info.pbstrVal = &text;
  IDispatch* const update = Create(CLSID_BomUpdate, DIID__BomUpdate);
  std::printf("CheckBomUsed: %ls\n",
              Invoke(update, L"CheckBomUsed", {source, Value(first), info}).Text().c_str());
  SysFreeString(text);
  update->Release();

  try {
    Invoke(view, L"GetBomLdgInfo", {source, Value(L"no condition")});
  } catch (const Failure& failure) {
    std::printf("Error: %lX from %ls\n", static_cast<unsigned long>(failure.number), failure.source.c_str());
  }
  view->Release();
}

} // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 2) {
    std::puts("usage: ListBoms DESCRIPTOR");
    return 2;
  }
  // The component's objects live in single-threaded apartments.
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  int status = 0;
  try {
    ListBoms(arguments[1]);
  } catch (const Failure& failure) {
    std::printf("Error: %lX from %ls\n", static_cast<unsigned long>(failure.number), failure.source.c_str());
    status = 1;
  }
  CoUninitialize();
  return status;
}
