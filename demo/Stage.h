// What the demo's stories share: the database they look into, the component they call, and how they show
// things.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "com/Object.h"
#include "com/Variant.h"

namespace demo {

class Stage {
 public:
  // `database` is a file of the embedded engine; `trace` shows the outside calls of every call to the
  // component.
  Stage(const std::wstring& database, bool trace);

  void Chapter(const std::wstring& title) const;
  void Say(const std::wstring& text) const;

  // Runs a statement as the ERP's own programs would, outside the component.
  void Execute(const std::wstring& sql) const;
  // Shows the rows of a query as a table.
  void Show(const std::wstring& caption, const std::wstring& sql) const;

  // Calls a method of BomUpdate under the host, as the user `user` with `language`; shows the call, its
  // result and what it did to SaveVect's first item and ReturnMsg, and the trace when that is wanted.
  void Call(const wchar_t* method, const com::Object& save, int32_t user, const wchar_t* language) const;

 private:
  std::wstring Dsn(int32_t user, const wchar_t* language) const;

  std::wstring database_;
  bool trace_;
  com::Object connection_;
};

com::Object Dictionary(std::initializer_list<std::pair<const wchar_t*, com::Variant>> items);
com::Object Vector(std::initializer_list<com::Variant> items);

} // namespace demo
