// Errors (Connection.Errors) and Error: what the provider said when a connection's last call failed.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "com/Object.h"
#include "standin/ado/ProviderError.h"

namespace standin::ado {

class Error {
 public:
  explicit Error(ProviderError error) : error_(std::move(error)) {}
  int32_t Number() const { return error_.hr; }
  std::wstring Description() const { return error_.description; }
  std::wstring Source() const { return kProviderSource; }
  int32_t NativeError() const { return error_.native; }
  std::wstring SqlState() const { return error_.sqlState; }

 private:
  ProviderError error_;
};

class Errors {
 public:
  explicit Errors(std::shared_ptr<ErrorList> errors) : errors_(std::move(errors)) {}
  int32_t Count() const { return static_cast<int32_t>(errors_->size()); }
  com::Object Item(int32_t index) const; // counted from 0
  void Clear() { errors_->clear(); }
  com::Ptr<IUnknown> NewEnum() const;

 private:
  std::shared_ptr<ErrorList> errors_;
};

} // namespace standin::ado
