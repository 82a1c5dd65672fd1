#include "src/frame/ado/Connection.h"

#include "com/ComError.h"
#include "src/frame/OutsideNames.h"
#include "src/frame/ado/Constants.h"
#include "src/log/DiagnosticLog.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;
namespace ado = outside::ado;

} // namespace

Recordset Connection::Execute(const Sql& statement) const {
  LoggedStep logged(L"statement", statement.text());
  Recordset result(
      object().Call(ado::kExecute, statement.text(), Variant::Missing(), ad::kUnspecified).AsObject(),
      keeper());
  logged.Rows([&] { return result.RecordCount(); });
  return result;
}

std::chrono::seconds Connection::CommandTimeout() const {
  return std::chrono::seconds(object().Get(ado::kCommandTimeout).AsLong());
}

void Connection::Run(const Sql& statements) const {
  for (Recordset result = Execute(statements); result;) result = result.Next();
}

namespace {

// Makes a connection's recordsets the client's while it lives; others may use the connection too.
class ClientCursors {
 public:
  explicit ClientCursors(const Object& connection)
      : connection_(connection), before_(connection.Get(ado::kCursorLocation)) {
    connection_.Put(ado::kCursorLocation, ad::kUseClient);
  }
  ~ClientCursors() {
    try {
      connection_.Put(ado::kCursorLocation, before_);
    } catch (
        const com::ComError&) { // NOLINT(bugprone-empty-catch): a lost connection has no location to keep
    }
  }
  ClientCursors(const ClientCursors&) = delete;
  ClientCursors& operator=(const ClientCursors&) = delete;

 private:
  const Object& connection_;
  Variant before_;
};

} // namespace

Recordset Connection::ExecuteClientSide(const Sql& statement) const {
  const ClientCursors clientSide(object());
  return Execute(statement);
}

} // namespace mbom
