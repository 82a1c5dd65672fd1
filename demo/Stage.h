// What the demo's stories share: the database they look into, the component they call, and how they show
// things.
#pragma once

#include <string>

#include "com/Object.h"

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

  // Calls a save hook of BomUpdate under the host, as the user `user` with `language`; `save` is SaveVect as
  // JSON. Shows the call, its result and what it did to SaveVect's first item and ReturnMsg, and the trace
  // when that is wanted.
  void Save(const wchar_t* hook, const char* save, int32_t user, const wchar_t* language) const;

 private:
  std::wstring Dsn(int32_t user, const wchar_t* language) const;

  std::wstring database_;
  bool trace_;
  com::Object connection_;
};

} // namespace demo
