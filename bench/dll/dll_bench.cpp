// Benchmarks of the DLL itself beside a COM server with nothing in it: its size, loading and unloading it,
// and the first call of an object of a DLL that was just loaded.
//
// dll_bench [FOLDER]: both DLLs are beside the program; the folder is not used.
#include <oaidl.h>

#include <stdexcept>

#include "bench/SideBySide.h"
#include "bench/UnderCom.h"
#include "com/ComError.h"
#include "com/Object.h"
#include "com/Ptr.h"

namespace bench {
namespace {

constexpr int kTurns = 21;

class Server {
 public:
  explicit Server(const wchar_t* name) {
    std::wstring program(MAX_PATH, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), MAX_PATH));
    path_ = program.substr(0, program.rfind(L'\\') + 1) + name;
  }

  double Bytes() const {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(path_.c_str(), GetFileExInfoStandard, &data))
      throw com::ComError::FromSystem(HRESULT_FROM_WIN32(GetLastError()));
    return data.nFileSizeLow;
  }
  // Loads it, calls `use` with it and unloads it.
  template <class Use>
  double Seconds(const Use& use) const {
    return SecondsOf([&] {
      HMODULE const module = LoadLibraryW(path_.c_str());
      if (!module) throw com::ComError::FromSystem(HRESULT_FROM_WIN32(GetLastError()));
      use(module);
      FreeLibrary(module);
      return 0;
    });
  }
  double SecondsOfLoading() const {
    return Seconds([](HMODULE /*module*/) {});
  }
  double SecondsOfACall(const CLSID& classId) const {
    return Seconds([&](HMODULE module) {
      const auto classObject = reinterpret_cast<LPFNGETCLASSOBJECT>(
          reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
      com::Ptr<IClassFactory> factory;
      com::Check(classObject(classId, IID_IClassFactory, factory.OutVoid()));
      com::Ptr<IDispatch> object;
      com::Check(factory->CreateInstance(nullptr, IID_IDispatch, object.OutVoid()));
      if (com::Object(object).Get(L"TransMode").AsLong() != 2)
        throw std::runtime_error("the DLL answers something else");
    });
  }

 private:
  std::wstring path_;
};

void RunAll(const std::wstring& /*folder*/) {
  const Server component(L"QorvaneMBomBill.dll");
  const Server empty(L"EmptyServer.dll");
  CLSID classId{};
  com::Check(CLSIDFromProgID(L"QorvaneMBomBill.BomUpdate", &classId));
  PrintValue({"the DLL's bytes", "an empty COM DLL's"}, component.Bytes(), empty.Bytes());
  SideBySide(
      {"loading and unloading the DLL", "an empty COM DLL"}, kTurns, 1,
      [&] { return component.SecondsOfLoading(); }, [&] { return empty.SecondsOfLoading(); });
  SideBySide(
      {"loading, the first call, unloading", "an empty COM DLL"}, kTurns, 1,
      [&] { return component.SecondsOfACall(classId); }, [&] { return empty.SecondsOfACall(classId); });
}

} // namespace
} // namespace bench

int main(int argc, char** argv) {
  return bench::UnderCom(argc, argv, 0, bench::RunAll);
}
