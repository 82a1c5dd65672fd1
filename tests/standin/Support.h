// What the stand-in's tests have at hand: objects by ProgID, errors as a client sees them, a database in
// memory.
#pragma once

#include <gtest/gtest.h>
#include <oaidl.h>
#include <oleauto.h>

#include <string>
#include <vector>

#include "com/Object.h"
#include "com/Variant.h"
#include "tests/support/Printing.h"
#include "tests/support/Raised.h"

namespace standin::test {

using com::Object;
using com::Variant;
using com::test::Raised;
using com::test::RaisedBy;
using Texts = std::vector<std::wstring>;

// Where a recordset's cursor is: CursorLocation of a recordset or connection.
inline constexpr int32_t kServer = 2;
inline constexpr int32_t kClient = 3;

inline Object New(const wchar_t* progId) {
  return Object::Create(progId);
}

// An error of ADO, of the run time or of Automation languages, by its number.
constexpr HRESULT Numbered(int number) {
  return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number);
}

// A name that no other database in memory has.
std::wstring NextMemoryName();

// An open connection to a database in memory of its own, with the table "t" and its three rows:
// FInterID int 1, 2, 3; FName nvarchar(20) one, two, null.
class Database {
 public:
  Database();

  const Object& connection() const { return connection_; }
  std::wstring Dsn(const std::wstring& extra = {}) const;
  Object Execute(const std::wstring& sql) const { return connection_.Call(L"Execute", sql).AsObject(); }
  // The first column of the query's rows as text, joined by ",". Null reads NULL.
  std::wstring Column(const std::wstring& sql) const;
  // A recordset that is opened on the text; client-side when `location` is kClient.
  Object Open(const std::wstring& sql, int32_t location) const;

 private:
  std::wstring name_;
  Object connection_;
};

std::wstring ColumnText(const Object& recordset);
Variant ValueOf(const Object& recordset, const wchar_t* field);

// Records the thread's events while it lives.
class Trace {
 public:
  Trace();
  ~Trace();
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;
  Texts Events() const;

 private:
  Object trace_;
};

} // namespace standin::test
