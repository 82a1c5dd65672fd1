#include "odbc/Error.h"

#include <algorithm>
#include <array>
#include <utility>

#include "com/Text.h"

namespace odbc {
namespace {

constexpr int kSeverityOfErrors = 16;
constexpr char kGeneralError[] = "HY000";

// "[unixODBC][FreeTDS][SQL Server]text": driver manager, driver and data source.
std::wstring_view WithoutOrigin(std::wstring_view text) {
  constexpr int kMostNames = 3;
  for (int i = 0; i < kMostNames && text.starts_with(L'['); ++i) {
    const size_t end = text.find(L']');
    if (end == std::wstring_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return text;
}

} // namespace

Error::Error(int errorNumber, std::string stateCode, const std::string& text, bool isInformation)
    : tsql::Error(errorNumber, isInformation ? 0 : kSeverityOfErrors, 0, 0, text),
      sqlState(std::move(stateCode)) {}

bool Error::EndsConnection() const {
  return IsTimeout() || sqlState.starts_with("08");
}

std::vector<Error> Records(SQLSMALLINT handleType, SQLHANDLE handle) {
  std::vector<Error> records;
  std::array<SQLWCHAR, 6> state{};
  std::wstring text(SQL_MAX_MESSAGE_LENGTH, L'\0');
  SQLINTEGER number = 0;
  SQLSMALLINT length = 0;
  const auto read = [&](SQLSMALLINT index) {
    return SQLGetDiagRecW(handleType, handle, index, state.data(), &number, text.data(),
                          static_cast<SQLSMALLINT>(text.size()), &length);
  };
  for (SQLSMALLINT index = 1;; ++index) {
    SQLRETURN result = read(index);
    if (result == SQL_SUCCESS_WITH_INFO && static_cast<size_t>(length) >= text.size()) {
      text.resize(static_cast<size_t>(length) + 1);
      result = read(index);
    }
    if (!SQL_SUCCEEDED(result)) return records;
    const std::string code = com::ToUtf8({state.data(), state.size() - 1});
    // Not by its length, which some drivers count in bytes of UTF-8.
    records.emplace_back(number, code, com::ToUtf8(WithoutOrigin(text.c_str())), code.starts_with("01"));
  }
}

std::vector<Error> RecordsOfFailure(SQLSMALLINT handleType, SQLHANDLE handle) {
  std::vector<Error> records = Records(handleType, handle);
  if (records.empty()) records.emplace_back(0, kGeneralError, "The driver failed and does not say why.");
  if (std::ranges::all_of(records, &Error::IsInformation)) {
    Error& last = records.back();
    last = Error(last.number, kGeneralError, last.what());
  }
  return records;
}

Error FailureOf(SQLSMALLINT handleType, SQLHANDLE handle) {
  const std::vector<Error> records = RecordsOfFailure(handleType, handle);
  return *std::ranges::find_if_not(records, &Error::IsInformation);
}

} // namespace odbc
