#include "tsql/compile/Preparation.h"

#include "tsql/values/Errors.h"

namespace tsql {

PreparedStatement Prepare(const Connection& connection, const std::string& sql) {
  try {
    return connection.Prepare(sql);
  } catch (const SqliteFailure& failure) {
    const std::string_view message = failure.what();
    if (message == "at most 64 tables in a join") Fail(106, {"64"});
    constexpr std::string_view kTooDeep[] = {"Expression tree is too large", "parser stack overflow",
                                             "too many terms in compound SELECT", "too many arguments on"};
    for (const std::string_view text : kTooDeep)
      if (message.starts_with(text)) Fail(191, {});
    throw;
  }
}

} // namespace tsql
