#include "odbc/Session.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "com/Passwords.h"
#include "com/Text.h"
#include "odbc/Columns.h"
#include "odbc/ProcedureCall.h"
#include "odbc/RowReader.h"

namespace odbc {
namespace {

// Also for a driver that cannot reach its server.
constexpr std::chrono::seconds kLoginTimeout{15};
// For what the pool asks of an idle session: a server that hangs must not hold whoever wants a connection.
constexpr std::chrono::seconds kPoolTimeout{5};

constexpr char kLinkFailureState[] = "08S01";
constexpr char kLinkFailure[] = "Communication link failure";

// Keeps the first failure and nothing else.
class Listener final : public tsql::ResultSink {
 public:
  void BeginRows(std::span<const tsql::Column> /*columns*/) override {}
  void Row(std::span<const tsql::Value> /*values*/) override {}
  void EndRows(int64_t /*count*/) override {}
  void RowCount(int64_t /*count*/) override {}
  void Message(const tsql::Error& /*info*/) override {}
  void Failed(const tsql::Error& error) override {
    // A session's errors are of this type.
    if (!failure_) failure_ = static_cast<const Error&>(error);
  }
  const std::optional<Error>& failure() const { return failure_; }

 private:
  std::optional<Error> failure_;
};

// Why there is no connection. A driver's own records say it better than those of the driver manager: they
// have a number. Of them the server's refusal of the login comes last: it follows the reason, where one is
// told.
Error ReasonOf(SQLHDBC connection) {
  constexpr int kLoginFailed = 18456;
  const auto rank = [](const Error& record) {
    return record.number == 0 ? 2 : record.number == kLoginFailed ? 1 : 0;
  };
  const std::vector<Error> records = RecordsOfFailure(SQL_HANDLE_DBC, connection);
  return *std::ranges::min_element(records, {}, rank);
}

// Whether the driver knows that the server is gone.
bool IsDead(SQLHDBC connection) {
  SQLUINTEGER dead = SQL_CD_FALSE;
  SQLGetConnectAttrW(connection, SQL_ATTR_CONNECTION_DEAD, &dead, 0, nullptr);
  return dead == SQL_CD_TRUE;
}

std::wstring NameOfServer(SQLHDBC connection) {
  std::array<wchar_t, 64> name{};
  SQLSMALLINT bytes = 0;
  SQLGetInfoW(connection, SQL_DBMS_NAME, name.data(), static_cast<SQLSMALLINT>(name.size() * sizeof(wchar_t)),
              &bytes);
  return name.data();
}

} // namespace

Session::Session(std::wstring connectionString)
    : connectionString_(std::move(connectionString)), environment_(nullptr), connection_(nullptr) {
  SQLSetEnvAttr(environment_.get(), SQL_ATTR_ODBC_VERSION, AsPointer(SQL_OV_ODBC3), 0);
  Connect();
}

Session::~Session() {
  Disconnect();
}

void Session::Connect() {
  connection_ = Connection(environment_.get());
  if (!connection_.get())
    throw Error(0, "IM003", "There is no ODBC on this machine: its driver manager cannot be loaded.");
  SQLSetConnectAttrW(connection_.get(), SQL_ATTR_LOGIN_TIMEOUT,
                     AsPointer(static_cast<SQLULEN>(kLoginTimeout.count())), 0);
  SQLSMALLINT length = 0;
  const SQLRETURN result = SQLDriverConnectW(connection_.get(), nullptr, connectionString_.data(),
                                             static_cast<SQLSMALLINT>(connectionString_.size()), nullptr, 0,
                                             &length, SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(result)) throw WithoutPassword(ReasonOf(connection_.get()));
  isConnected_ = true;
  leavesTraces_ = false;
  dialect_ = DialectOf(NameOfServer(connection_.get()));
}

void Session::Disconnect() {
  if (isConnected_) SQLDisconnect(connection_.get());
  isConnected_ = false;
}

Error Session::WithoutPassword(const Error& error) const {
  const std::wstring text = com::WithoutPasswordsOf(connectionString_, com::FromUtf8(error.what()));
  return {error.number, error.sqlState, com::ToUtf8(text), error.IsInformation()};
}

bool Session::Execute(std::wstring_view batch, std::span<const tsql::Parameter> parameters,
                      tsql::ResultSink& sink) {
  return Run(WithLiterals(batch, parameters, dialect_), sink);
}

std::optional<int32_t> Session::Call(std::wstring_view procedure, std::span<tsql::Parameter> parameters,
                                     tsql::ResultSink& sink) {
  OutputCatcher catcher(parameters, sink);
  Run(CallText(procedure, parameters, dialect_), catcher);
  return catcher.status();
}

bool Session::Run(const std::wstring& text, tsql::ResultSink& sink) {
  if (!isConnected_) {
    if (inTransaction_)
      throw Error(0, kLinkFailureState,
                  std::string(kLinkFailure) + ". The transaction was rolled back with the connection.");
    Connect();
  }
  leavesTraces_ = leavesTraces_ || LeavesTraces(text, dialect_);
  bool succeeded = true;
  bool isLost = false;
  const auto report = [&](const Error& error) {
    if (error.IsInformation()) return sink.Message(error);
    succeeded = false;
    // Not every driver says of what failed that its server is gone.
    const bool isOfConnection = error.EndsConnection();
    const bool isDead = !isOfConnection && IsDead(connection_.get());
    isLost = isLost || isOfConnection || isDead;
    sink.Failed(isDead ? Error(error.number, kLinkFailureState, kLinkFailure) : WithoutPassword(error));
  };
  {
    const Statement statement(connection_.get());
    // What stands in braces is the server's, not ODBC's.
    SQLSetStmtAttrW(statement.get(), SQL_ATTR_NOSCAN, AsPointer(SQL_NOSCAN_ON), 0);
    if (limit_)
      SQLSetStmtAttrW(statement.get(), SQL_ATTR_QUERY_TIMEOUT,
                      AsPointer(static_cast<SQLULEN>(limit_->count())), 0);
    std::wstring writable = text;
    SQLRETURN result =
        SQLExecDirectW(statement.get(), writable.data(), static_cast<SQLINTEGER>(writable.size()));
    // A batch goes on behind a failure as the server does. PRINT, and what changes no rows, comes without a
    // count; a driver says of such statements that there is no data.
    for (bool isFirst = true; (isFirst || result != SQL_NO_DATA) && !isLost; isFirst = false) {
      if (result != SQL_SUCCESS && result != SQL_NO_DATA) {
        const SQLHSTMT handle = statement.get();
        for (const Error& record : SQL_SUCCEEDED(result) ? Records(SQL_HANDLE_STMT, handle)
                                                         : RecordsOfFailure(SQL_HANDLE_STMT, handle))
          report(record);
        // It would say so of the next result, too, and of all others.
        if (!SQL_SUCCEEDED(result) && Records(SQL_HANDLE_STMT, handle).empty()) break;
      }
      if (SQL_SUCCEEDED(result) || result == SQL_NO_DATA) {
        try {
          if (std::vector<tsql::Column> columns = ColumnsOf(statement.get()); !columns.empty()) {
            RowReader(statement.get(), std::move(columns)).ReadAll(sink);
          } else {
            SQLLEN count = -1;
            if (SQL_SUCCEEDED(SQLRowCount(statement.get(), &count)) && count >= 0) sink.RowCount(count);
          }
        } catch (const Error& error) {
          report(error);
        }
      }
      if (!isLost) result = SQLMoreResults(statement.get());
    }
  }
  if (isLost) Disconnect();
  return succeeded;
}

void Session::RunAlone(std::wstring_view text) {
  Listener listener;
  Run(std::wstring(text), listener);
  if (listener.failure()) throw Error(*listener.failure());
}

void Session::Begin() {
  RunAlone(L"BEGIN TRANSACTION");
  inTransaction_ = true;
}

void Session::Commit() {
  End(L"COMMIT TRANSACTION");
}

void Session::Rollback() {
  // The server has rolled back what the connection took with it.
  if (!isConnected_) {
    inTransaction_ = false;
    return;
  }
  End(L"ROLLBACK TRANSACTION");
}

void Session::End(std::wstring_view text) {
  try {
    RunAlone(text);
  } catch (...) {
    inTransaction_ = false;
    throw;
  }
  inTransaction_ = false;
}

bool Session::Reset() {
  inTransaction_ = false;
  limit_ = kPoolTimeout;
  if (!isConnected_ || leavesTraces_) return false;
  try {
    RunAlone(ResetBatch(dialect_));
  } catch (const Error&) {
    // SQLite refuses to roll back where nothing is open.
    if (dialect_ != Dialect::Sqlite) return false;
  }
  return isConnected_;
}

bool Session::Answers() {
  if (!isConnected_) return false;
  limit_ = kPoolTimeout;
  try {
    RunAlone(L"SELECT 1");
  } catch (const Error&) {
    return false;
  }
  limit_ = std::nullopt;
  return isConnected_;
}

} // namespace odbc
