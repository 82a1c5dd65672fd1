// Dialect: how a server wants its literals, and what leaves a session as it was when it was new.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "tsql/tsql.h"

namespace odbc {

enum class Dialect : uint8_t { TransactSql, Sqlite };

// By the name that the driver has for its server. Everything but SQLite is taken to speak T-SQL.
Dialect DialectOf(std::wstring_view server);

// A value as the server reads it in a statement, converting it to the type that it needs.
std::wstring LiteralOf(const tsql::Value& value, const tsql::Type& type, Dialect dialect);

// The type as a T-SQL variable is declared with it.
std::wstring DeclarationOf(const tsql::Type& type);

// The batch that rolls back what is open and gives the options of a session their defaults.
std::wstring_view ResetBatch(Dialect dialect);
// Whether the batch may leave something in the session that ResetBatch does not take back.
bool LeavesTraces(std::wstring_view batch, Dialect dialect);

// A batch with its "?" markers replaced by the literals of the parameters, in order. What is a text, a quoted
// name or a comment has no markers. A marker without a parameter stays for the server to refuse.
std::wstring WithLiterals(std::wstring_view batch, std::span<const tsql::Parameter> parameters,
                          Dialect dialect);

} // namespace odbc
