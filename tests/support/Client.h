// What a client of the component has at hand in the tests: a database of its own, the collections, the host,
// the trace of the outside calls, and faults in them. Everything is late-bound and created by ProgID.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "com/Object.h"
#include "com/Variant.h"
#include "tests/support/Raised.h"

namespace mbom::test {

// An empty database with the system's tables and procedures, in memory, gone with this object. With
// TEST_SERVER it is that server's only one, emptied of whatever it holds.
class TestDatabase {
 public:
  TestDatabase();
  // The database of a descriptor, which stays when this object goes; one without tables gets these and the
  // procedures.
  explicit TestDatabase(const std::wstring& descriptor);
  ~TestDatabase();
  TestDatabase(const TestDatabase&) = delete;
  TestDatabase& operator=(const TestDatabase&) = delete;

  void Execute(const std::wstring& sql) const;
  // Runs the batches of a script of the project, by its path from the top folder.
  void RunScript(const std::string& path) const;
  // The rows of a query: a text a row, the values separated by "|"; NULL reads NULL.
  std::vector<std::wstring> Rows(const std::wstring& sql) const;
  // The only value of a query, as in Rows.
  std::wstring Value(const std::wstring& sql) const;

  // A descriptor of this database for user 16394, at 2026-03-05 14:30:00 server time (on a server at its
  // own); `extra` ("Language=en") is appended with a ";".
  std::wstring Dsn(const std::wstring& extra = {}) const;
  // The same for another user at another time.
  std::wstring DsnFor(const std::wstring& user, const std::wstring& now, const std::wstring& extra) const;

 private:
  void DropAll() const;
  void AddTables() const;

  std::wstring source_;     // its descriptor, without user and time
  bool isOnServer_ = false; // that of TEST_SERVER
  com::Object connection_;
};

com::Object MakeDictionary(std::initializer_list<std::pair<const wchar_t*, com::Variant>> items);
com::Object MakeVector(std::initializer_list<com::Variant> items);

// A new object of the component, as the host makes it: every call is a unit of work.
com::Object Hosted(const wchar_t* className);
// The same without a host: every statement is its own transaction.
com::Object Unhosted(const wchar_t* className);

// Records the thread's outside calls while it lives.
class Trace {
 public:
  Trace();
  ~Trace();
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

  // "kind", or "kind<TAB>detail".
  std::vector<std::wstring> Events() const;
  // The details of the events of one kind.
  std::vector<std::wstring> Details(const std::wstring& kind) const;
  // The votes, in order.
  std::vector<std::wstring> Votes() const;
  void Clear() const;

 private:
  com::Object trace_;
};

// Makes the nth event of a kind fail, until this object is gone.
class Fault {
 public:
  static constexpr HRESULT kCode = static_cast<HRESULT>(0x80004005);
  static constexpr wchar_t kText[] = L"armed fault";

  explicit Fault(const std::wstring& kind, int32_t nth = 1);
  ~Fault();
  Fault(const Fault&) = delete;
  Fault& operator=(const Fault&) = delete;

 private:
  com::Object faults_;
};

using com::test::Raised;
using com::test::RaisedBy;

} // namespace mbom::test
