#include "src/domain/ShortNumber.h"

#include "src/frame/Convert.h"
#include "src/frame/ado/ClientRecordset.h"
#include "src/frame/ado/Recordset.h"

namespace mbom {
namespace {

constexpr wchar_t kSetting[] =
    L"SELECT FValue FROM t_SystemProfile WHERE FCategory='IC' AND FKey='UseShortNumber'";

bool IsOn(const Recordset& setting) {
  if (setting.Eof()) return false;
  const com::Variant value = setting[L"FValue"];
  return !value.IsNull() && !Equals(value, 0);
}

} // namespace

bool IsUseShortNumber(const Connection& connection) {
  return IsOn(connection.Execute(Sql() << kSetting));
}

bool IsUseShortNumberClientSide(const Connection& connection) {
  const ClientRecordset setting(connection);
  setting.Open(Sql() << kSetting);
  return IsOn(setting);
}

} // namespace mbom
