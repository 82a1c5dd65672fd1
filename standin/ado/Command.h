// Command (ADODB.Command): a text with "?" markers or a stored procedure, with its parameters. Parameters are
// taken by position; their names are for the client.
#pragma once

#include <cstdint>
#include <string>

#include "com/DispatchObject.h"
#include "standin/ado/Constants.h"
#include "standin/ado/Parameters.h"
#include "standin/ado/Session.h"

namespace standin::ado {

class Connection;

class Command {
 public:
  void SetSelf(IDispatch* self) { self_ = self; }

  com::Object ActiveConnection() const { return connection_; }
  void PutActiveConnection(const com::Variant& value);
  std::wstring CommandText() const { return text_; }
  void PutCommandText(const std::wstring& value) { text_ = value; }
  int32_t GetCommandType() const { return static_cast<int32_t>(type_); }
  void PutCommandType(int32_t value);
  int32_t CommandTimeout() const { return timeout_; }
  void PutCommandTimeout(int32_t value);
  bool Prepared() const { return prepared_; }
  void PutPrepared(bool value) { prepared_ = value; }
  std::wstring Name() const { return name_; }
  void PutName(const std::wstring& value) { name_ = value; }
  int32_t State() const { return kStateClosed; } // it runs synchronously
  com::Object CreateParameter(const std::wstring& name, int32_t type, int32_t direction, int32_t size,
                              const com::Variant& value) const;
  com::Object GetParameters() const { return com::ToObject(parameters_); }
  com::Object Execute(com::Variant& recordsAffected, const com::Variant& parameters, int32_t options);

  // Runs it on the connection. The output parameters have their values when the results are gone through.
  Results Run(const Connection& connection);

 private:
  // Execute's second argument: values for the input parameters in order.
  void SetValues(const com::Variant& values);
  std::wstring EventDetail() const;

  IDispatch* self_ = nullptr;
  com::Object connection_;
  std::wstring text_;
  std::wstring name_;
  CommandType type_ = CommandType::Unknown;
  int32_t timeout_ = 30;
  bool prepared_ = false;
  com::Ptr<com::DispatchObject<Parameters>> parameters_ = com::Make<Parameters>();
};

} // namespace standin::ado
