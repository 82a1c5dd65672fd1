// Connection (ADODB.Connection) to the embedded engine, or to the server of an ODBC driver.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "com/Object.h"
#include "standin/ado/Constants.h"
#include "standin/ado/Session.h"

namespace standin::ado {

class Connection {
 public:
  Connection() = default;
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void SetSelf(IDispatch* self) { self_ = self; }

  void Open(const com::Variant& connectionString, const com::Variant& user, const com::Variant& password,
            int32_t options);
  void Close();
  int32_t State() const { return session_ ? kStateOpen : kStateClosed; }
  com::Object Execute(const std::wstring& commandText, com::Variant& recordsAffected, int32_t options);

  int32_t BeginTrans(); // the level, which is 1
  void CommitTrans();
  void RollbackTrans();

  com::Object GetErrors() const;
  // Without its password when the connection is open.
  std::wstring ConnectionText() const;
  void PutConnectionText(const std::wstring& value);
  std::wstring Provider() const { return provider_; }
  void PutProvider(const std::wstring& value);
  std::wstring Version() const { return L"2.5"; }
  int32_t GetCursorLocation() const { return static_cast<int32_t>(cursorLocation_); }
  void PutCursorLocation(int32_t value);
  int32_t CommandTimeout() const { return commandTimeout_; }
  void PutCommandTimeout(int32_t value);
  int32_t ConnectionTimeout() const { return connectionTimeout_; }
  void PutConnectionTimeout(int32_t value);

  // For the other objects of this library.

  com::Object self() const { return com::Object(com::Ptr<IDispatch>(self_)); }
  // Throws InvalidConnection when the connection is closed.
  const std::shared_ptr<Session>& session() const;
  CursorLocation cursorLocation() const { return cursorLocation_; }
  // As Open does with the descriptor's text.
  void OpenOn(const ConnectionString& descriptor);
  // Runs a text, a table's name or a procedure's name without parameters, for `timeout` seconds at most.
  Results Run(const std::wstring& text, CommandType type, int32_t timeout) const;
  Results Run(const std::wstring& text, CommandType type) const { return Run(text, type, commandTimeout_); }

 private:
  void RequireClosed() const;
  void RequireOpen() const;

  IDispatch* self_ = nullptr;
  std::shared_ptr<ErrorList> errors_ = std::make_shared<ErrorList>();
  std::shared_ptr<Session> session_;
  std::wstring connectionString_;
  std::wstring provider_ = L"Embedded";
  CursorLocation cursorLocation_ = CursorLocation::Server;
  int32_t commandTimeout_ = 30;
  int32_t connectionTimeout_ = 15;
};

// The connection that an ActiveConnection names: a Connection object, or a descriptor that opens a new one.
// A null object for Nothing, Null and an omitted value. Throws InvalidArgument for anything else.
com::Object ConnectionFrom(const com::Variant& value, const wchar_t* source);

// The command type among Execute's or Open's options.
CommandType CommandTypeOf(int32_t options);

// What Connection.Execute and Command.Execute answer: the first result's row count in `recordsAffected` and a
// recordset on the results; Nothing when no records are wanted, in which case the results are gone through.
com::Object Answer(const com::Variant& source, const Connection& connection, Results results, int32_t options,
                   com::Variant& recordsAffected);

} // namespace standin::ado
