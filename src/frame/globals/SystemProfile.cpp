#include "src/frame/globals/SystemProfile.h"

#include "src/frame/ado/Command.h"
#include "src/frame/ado/Recordset.h"

namespace mbom {

using com::Variant;

Variant ReadSystemProfile(const Frame& frame, const std::wstring& key, const std::wstring& category,
                          const Variant& fallback) {
  constexpr int32_t kSize = 30;
  const Command command(frame.GetConnection(),
                        L"Select FValue From t_SystemProfile Where FCategory = ? And FKey = ?");
  command.AppendText(category, kSize);
  command.AppendText(key, kSize);
  const Recordset setting = command.Execute();
  return setting.Eof() ? fallback : setting[L"FValue"];
}

} // namespace mbom
