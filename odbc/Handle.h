// Handle: a handle of the ODBC driver manager, freed with its object.
#pragma once

#include <utility>

#include "odbc/Api.h"

namespace odbc {

template <SQLSMALLINT kType>
class Handle {
 public:
  // A null handle when the driver manager gives none: every call on it fails.
  explicit Handle(SQLHANDLE parent) { SQLAllocHandle(kType, parent, &handle_); }
  ~Handle() {
    if (handle_) SQLFreeHandle(kType, handle_);
  }
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }

  SQLHANDLE get() const { return handle_; }

 private:
  SQLHANDLE handle_ = nullptr;
};

using Environment = Handle<SQL_HANDLE_ENV>;
using Connection = Handle<SQL_HANDLE_DBC>;
using Statement = Handle<SQL_HANDLE_STMT>;

} // namespace odbc
