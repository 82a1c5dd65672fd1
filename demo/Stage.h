// What the demo's stories share: the database they look into, the component they call, and how they show
// things.
#pragma once

#include <string>
#include <vector>

#include "cli/Call.h"
#include "com/Object.h"

namespace demo {

// A user of the demo's data, and the connection of bomcall that is his.
struct User {
  int32_t id;
  const wchar_t* name;
};
inline constexpr User kEngineer{16401, L"engineer"}; // the maker of the BOMs
inline constexpr User kAuditor{16402, L"auditor"};
inline constexpr User kPlanner{16403, L"planner"};

inline constexpr const wchar_t* kLanguages[] = {L"chs", L"cht", L"en"};

class Stage {
 public:
  // `source` is the descriptor of a data source, without user and time; `trace` shows the outside calls of
  // every call to the component.
  Stage(const std::wstring& source, bool trace);

  // Begins the story of that number, which stands in front of its chapters' own.
  void Story(size_t number);
  // Begins the next chapter of the story. `codes` says what the numbers in it mean.
  void Chapter(const std::wstring& title, const std::vector<const wchar_t*>& codes = {});
  void Say(const std::wstring& text) const;

  // Runs a statement as the ERP's own programs would, outside the component, and shows it as a command.
  void Execute(const std::wstring& sql) const;
  // Shows the rows of a query as a table.
  void Show(const std::wstring& caption, const std::wstring& sql) const;

  // The first value of a query.
  std::wstring Value(const std::wstring& sql) const;

  // An argument as bomcall takes it: a text, a number, JSON for an object.
  using Argument = bomcall::NamedText;
  // What is shown of a call.
  enum class Part : uint8_t {
    All,    // result and in/out arguments afterwards
    Result, // "…" stands for the rest
  };

  // Calls CLASS.METHOD under the host, as the user `user` with `language`. Shows the call as a command of
  // bomcall, what it prints, and the trace when that is wanted. `options` are bomcall's own, such as
  // --columns.
  void Call(const std::wstring& method, const std::vector<Argument>& arguments, const User& user,
            const wchar_t* language, const std::vector<std::wstring>& options = {},
            Part part = Part::All) const;

  // The same of a call that the demo has prepared to fail, which no command repeats: it stands behind ">".
  void Failing(const std::wstring& method, const std::vector<Argument>& arguments, const User& user,
               const wchar_t* language) const;

  // Calls a save hook, CLASS.METHOD; `save` is SaveVect as JSON.
  void Save(const std::wstring& hook, const wchar_t* save, const User& user, const wchar_t* language) const;

 private:
  // What bomcall is to do, but for the descriptor.
  static std::vector<std::wstring> Words(const std::wstring& method, const std::vector<Argument>& arguments,
                                         const User& user, const wchar_t* language,
                                         const std::vector<std::wstring>& options);
  void Make(const std::vector<std::wstring>& words, const User& user, Part part) const;

  std::wstring source_;
  bool trace_;
  size_t width_; // of a line
  size_t story_ = 0;
  size_t chapters_ = 0; // of the story
  com::Object connection_;
  bomcall::ClassDescriptions classes_;
};

} // namespace demo
