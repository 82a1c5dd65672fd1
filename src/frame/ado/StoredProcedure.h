// StoredProcedure: an ADO command for a stored procedure, with its parameters in their order.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "com/Variant.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/ado/Recordset.h"

namespace mbom {

class StoredProcedure {
 public:
  // Without a connection: whoever executes it gives it one.
  explicit StoredProcedure(const std::wstring& name);
  StoredProcedure(const Connection& connection, const std::wstring& name);
  // A text of the database's code page (varchar).
  void AppendInput(const std::wstring& parameter, const std::wstring& value, int32_t size) const;
  void AppendInput(const std::wstring& parameter, int32_t value) const;
  // An int that the procedure sets.
  void AppendOutput(const std::wstring& parameter) const;
  // The int that the procedure returns.
  void AppendReturnValue(const std::wstring& parameter) const;
  // Executes it and goes through all its results: only then have the output parameters their values.
  void Execute() const;
  // Executes it on `connection` and gives its rows, client-side and off the connection.
  Recordset OpenDetached(const Connection& connection) const;
  // The value of the parameter at `index`, counted from 0.
  com::Variant Value(int32_t index) const;
  const com::Object& object() const noexcept { return object_; }

 private:
  void Append(const com::Variant& parameter) const;

  com::Object object_;
  std::wstring name_;
};

} // namespace mbom
