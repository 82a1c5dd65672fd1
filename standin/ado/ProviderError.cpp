#include "standin/ado/ProviderError.h"

#include <array>
#include <optional>
#include <string_view>

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
constexpr auto kLoginFailed = static_cast<HRESULT>(0x80040E4D);
constexpr auto kTransactionExists = static_cast<HRESULT>(0x8004D013);

// nullopt for a number that stands for itself.
std::optional<Mapping> MappingOf(int number) {
  switch (number) {
  case 208:
  case 3701:
  case 4902: return Mapping{kNoTable, L"42S02"};
  case 207: return Mapping{kErrorsInCommand, L"42S22"};
  case 2714: return Mapping{kErrorsInCommand, L"42S01"};
  case 515:
  case 547:
  case 2601:
  case 2627: return Mapping{kIntegrityViolation, L"23000"};
  case 245: return Mapping{kCannotConvert, L"22018"};
  case 241:
  case 242: return Mapping{kCannotConvert, L"22007"};
  case 8114: return Mapping{kCannotConvert, L"42000"};
  case 8152: return Mapping{kDataOverflow, L"22001"};
  case 220:
  case 232:
  case 248:
  case 8115: return Mapping{kDataOverflow, L"22003"};
  case 8134: return Mapping{kErrorsInCommand, L"22012"};
  case 512: return Mapping{kErrorsInCommand, L"21000"};
  case 1205: return Mapping{E_FAIL, L"40001"};
  case 1222:
  case tsql::kTimeoutExpired: return Mapping{kTimeout, L"HYT00"};
  case 4060: return Mapping{E_FAIL, L"42000"};
  case 18456: return Mapping{kLoginFailed, L"42000"};
  default: return std::nullopt;
  }
}

// The kind of an error whose number says nothing, by the standard's state.
HRESULT CodeOf(std::wstring_view sqlState) {
  struct Kind {
    const wchar_t* prefix;
    HRESULT hr;
  };
  constexpr std::array kKinds{
      Kind{L"08", E_FAIL},
      Kind{L"IM", E_FAIL},
      Kind{L"01", E_FAIL},
      Kind{L"HYT", kTimeout},
      Kind{L"28", kLoginFailed},
      Kind{L"23", kIntegrityViolation},
      Kind{L"42S02", kNoTable},
      Kind{L"22001", kDataOverflow},
      Kind{L"22003", kDataOverflow},
      Kind{L"22007", kCannotConvert},
      Kind{L"22018", kCannotConvert},
      Kind{L"40001", E_FAIL},
  };
  for (const Kind& kind : kKinds)
    if (sqlState.starts_with(kind.prefix)) return kind.hr;
  return kErrorsInCommand;
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
  const Mapping mapping = MappingOf(error.number).value_or(Mapping{kErrorsInCommand, L"42000"});
  const int32_t native = error.number == tsql::kTimeoutExpired ? 0 : error.number;
  return {mapping.hr, native, mapping.sqlState, com::FromUtf8(error.what())};
}

ProviderError FromDriver(const tsql::Error& error, const std::wstring& sqlState) {
  if (sqlState.starts_with(L"HYT")) return FromServer({tsql::kTimeoutExpired, 0, 0, 0, "Timeout expired"});
  const std::optional<Mapping> known = MappingOf(error.number);
  return {known ? known->hr : CodeOf(sqlState), error.number, sqlState, com::FromUtf8(error.what())};
}

void Raise(const ProviderError& error) {
  throw com::ComError(error.hr, kProviderSource, error.description);
}

void Raise(Refusal refusal) {
  Raise(ErrorOf(refusal));
}

} // namespace standin::ado
