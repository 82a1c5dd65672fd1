// An outside class played by the test.
#pragma once

#include <objbase.h>

#include <array>

#include "com/ClassObject.h"

namespace mbom::test {

// Registers T in place of the class with the ProgID, for this apartment.
template <class T>
class Replacement {
 public:
  explicit Replacement(const wchar_t* progId) {
    CLSID classId;
    com::Check(CLSIDFromProgID(progId, &classId));
    entries_ = {com::ClassEntry{classId, progId, L"", &com::CreateDispatchObject<T>}};
    com::Ptr<IUnknown> factory;
    com::Check(com::GetClassObject(entries_, classId, IID_IUnknown, factory.OutVoid()));
    com::Check(
        CoRegisterClassObject(classId, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_));
  }
  ~Replacement() { CoRevokeClassObject(cookie_); }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

 private:
  std::array<com::ClassEntry, 1> entries_{};
  DWORD cookie_ = 0;
};

} // namespace mbom::test
