#include "standin/ado/ProviderError.h"

#include "com/ComError.h"
#include "com/Text.h"

namespace standin::ado {
namespace {

// What OLE DB makes of a server error.
struct Mapping {
  HRESULT hr;
  const wchar_t* sqlState;
};

constexpr auto kErrorsInCommand = static_cast<HRESULT>(0x80040E14);
constexpr auto kNoTable = static_cast<HRESULT>(0x80040E37);
constexpr auto kIntegrityViolation = static_cast<HRESULT>(0x80040E2F);
constexpr auto kCannotConvert = static_cast<HRESULT>(0x80040E07);
constexpr auto kDataOverflow = static_cast<HRESULT>(0x80040E57);
constexpr auto kTimeout = static_cast<HRESULT>(0x80040E31);
constexpr auto kCannotRestart = static_cast<HRESULT>(0x80040E18);
constexpr auto kCannotFetchBackward = static_cast<HRESULT>(0x80040E24);
constexpr auto kNoTransaction = static_cast<HRESULT>(0x8004D00E);
constexpr auto kTransactionExists = static_cast<HRESULT>(0x8004D013);

Mapping MappingOf(int number) {
  switch (number) {
  case 208:
  case 3701:
  case 4902: return {kNoTable, L"42S02"};
  case 207: return {kErrorsInCommand, L"42S22"};
  case 2714: return {kErrorsInCommand, L"42S01"};
  case 515:
  case 547:
  case 2601:
  case 2627: return {kIntegrityViolation, L"23000"};
  case 245: return {kCannotConvert, L"22018"};
  case 241:
  case 242: return {kCannotConvert, L"22007"};
  case 8114: return {kCannotConvert, L"42000"};
  case 8152: return {kDataOverflow, L"22001"};
  case 220:
  case 232:
  case 248:
  case 8115: return {kDataOverflow, L"22003"};
  case 8134: return {kErrorsInCommand, L"22012"};
  case 512: return {kErrorsInCommand, L"21000"};
  case 1205: return {E_FAIL, L"40001"};
  case 1222:
  case tsql::kTimeoutExpired: return {kTimeout, L"HYT00"};
  case 4060: return {E_FAIL, L"42000"};
  default: return {kErrorsInCommand, L"42000"};
  }
}

} // namespace

const wchar_t kProviderSource[] = L"Microsoft OLE DB Provider for SQL Server";

ProviderError ErrorOf(Refusal refusal) {
  switch (refusal) {
  case Refusal::ConnectionBusy:
    return {E_FAIL, 0, L"HY000",
            L"Cannot create new connection because in manual or distributed transaction mode."};
  case Refusal::TransactionExists:
    return {kTransactionExists, 0, L"HY000", L"Only one transaction can be active on this session."};
  case Refusal::NoTransaction: return {kNoTransaction, 0, L"HY000", L"No transaction is active."};
  case Refusal::FetchBackward:
    return {kCannotFetchBackward, 0, L"HY000", L"Rowset does not support fetching backward."};
  case Refusal::RestartPosition:
    return {kCannotRestart, 0, L"HY000", L"Rowset position cannot be restarted."};
  }
  return {};
}

ProviderError FromServer(const tsql::Error& error) {
  const Mapping mapping = MappingOf(error.number);
  const int32_t native = error.number == tsql::kTimeoutExpired ? 0 : error.number;
  return {mapping.hr, native, mapping.sqlState, com::FromUtf8(error.what())};
}

void Raise(const ProviderError& error) {
  throw com::ComError(error.hr, kProviderSource, error.description);
}

void Raise(Refusal refusal) {
  Raise(ErrorOf(refusal));
}

} // namespace standin::ado
