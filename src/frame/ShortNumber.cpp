#include "src/frame/ShortNumber.h"

#include "src/frame/Convert.h"

namespace mbom {

bool IsUseShortNumber(const Connection& connection) {
  const Recordset setting = connection.Execute(
      Sql() << L"SELECT FValue FROM t_SystemProfile WHERE FCategory='IC' AND FKey='UseShortNumber'");
  if (setting.Eof()) return false;
  const com::Variant value = setting[L"FValue"];
  return !value.IsNull() && !Equals(value, 0);
}

} // namespace mbom
