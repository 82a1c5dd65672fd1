// What the demo's stories share: the database they look into, the component they call, and how they show
// things.
#pragma once

#include <string>
#include <vector>

#include "cli/Call.h"
#include "com/Object.h"

namespace demo {

// Users of the demo's data.
inline constexpr int32_t kEngineer = 16401; // the maker of the BOMs
inline constexpr int32_t kAuditor = 16402;
inline constexpr int32_t kPlanner = 16403;

inline constexpr const wchar_t* kLanguages[] = {L"chs", L"cht", L"en"};

class Stage {
 public:
  // `source` is the descriptor of a data source, without user and time; `trace` shows the outside calls of
  // every call to the component.
  Stage(const std::wstring& source, bool trace);

  // Begins a chapter; they are numbered throughout.
  void Chapter(const std::wstring& title);
  void Say(const std::wstring& text) const;

  // Runs a statement as the ERP's own programs would, outside the component.
  void Execute(const std::wstring& sql) const;
  // Shows the rows of a query as a table.
  void Show(const std::wstring& caption, const std::wstring& sql) const;

  // The first value of a query.
  std::wstring Value(const std::wstring& sql) const;

  // An argument as bomcall takes it: a text, a number, JSON for an object.
  using Argument = bomcall::NamedText;

  // Calls CLASS.METHOD under the host, as the user `user` with `language`. Shows the call, its result, the
  // in/out arguments afterwards and the trace when that is wanted.
  void Call(const std::wstring& method, const std::vector<Argument>& arguments, int32_t user,
            const wchar_t* language) const;

  // The same of a method whose result is a Vector of rows, of which it shows some columns only.
  void List(const std::wstring& method, const std::vector<Argument>& arguments,
            const std::vector<std::wstring>& columns, int32_t user, const wchar_t* language) const;

  // Calls a save hook, CLASS.METHOD; `save` is SaveVect as JSON. Of the in/out arguments it shows SaveRetCode
  // in SaveVect's first item and ReturnMsg.
  void Save(const std::wstring& hook, const wchar_t* save, int32_t user, const wchar_t* language) const;

 private:
  bomcall::Outcome Make(const std::wstring& method, const std::vector<Argument>& arguments, int32_t user,
                        const wchar_t* language) const;

  std::wstring source_;
  bool trace_;
  int chapters_ = 0;
  com::Object connection_;
  bomcall::ClassDescriptions classes_;
};

} // namespace demo
