// ADO's enumerations, as far as the objects know them.
#pragma once

#include <cstdint>

namespace standin::ado {

enum class CursorLocation : int32_t { Server = 2, Client = 3 };
enum class CursorType : int32_t { Unspecified = -1, ForwardOnly = 0, Keyset = 1, Dynamic = 2, Static = 3 };
enum class LockType : int32_t {
  Unspecified = -1,
  ReadOnly = 1,
  Pessimistic = 2,
  Optimistic = 3,
  BatchOptimistic = 4
};
enum class CommandType : int32_t {
  Unspecified = -1,
  Text = 1,
  Table = 2,
  StoredProcedure = 4,
  Unknown = 8,
  TableDirect = 512
};
enum class Direction : int32_t { Unknown = 0, Input = 1, Output = 2, InputOutput = 3, ReturnValue = 4 };

// Execute's options besides the command type.
constexpr int32_t kExecuteNoRecords = 128;
constexpr int32_t kUnspecified = -1;

constexpr int32_t kStateClosed = 0;
constexpr int32_t kStateOpen = 1;

// Where a recordset stands when it stands on no row (PositionEnum).
constexpr int32_t kPositionUnknown = -1;
constexpr int32_t kPositionBof = -2;
constexpr int32_t kPositionEof = -3;

enum class DataType : int32_t {
  Empty = 0,
  SmallInt = 2,
  Integer = 3,
  Single = 4,
  Double = 5,
  Currency = 6,
  Date = 7,
  Bstr = 8,
  Boolean = 11,
  Decimal = 14,
  TinyInt = 16,
  UnsignedTinyInt = 17,
  BigInt = 20,
  Guid = 72,
  Binary = 128,
  Char = 129,
  WChar = 130,
  Numeric = 131,
  DBDate = 133,
  DBTimeStamp = 135,
  VarChar = 200,
  LongVarChar = 201,
  VarWChar = 202,
  LongVarWChar = 203,
  VarBinary = 204,
  LongVarBinary = 205,
};

} // namespace standin::ado
