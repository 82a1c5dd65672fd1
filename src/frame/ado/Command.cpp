#include "src/frame/ado/Command.h"

#include "src/frame/OutsideNames.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;
namespace ado = outside::ado;

// ADO's constants.
constexpr int32_t kCommandText = 1;
constexpr int32_t kParameterInput = 1;
constexpr int32_t kVarWChar = 202;

} // namespace

Command::Command(const Connection& connection, const std::wstring& text)
    : object_(Object::Create(ado::kCommandProgId)), keeper_(connection.keeper()) {
  object_.Put(ado::kActiveConnection, connection.object());
  object_.Put(ado::kCommandType, kCommandText);
  object_.Put(ado::kCommandText, text);
}

void Command::AppendText(const std::wstring& value, int32_t size) const {
  const Variant parameter = object_.Call(ado::kCreateParameter, L"", kVarWChar, kParameterInput, size, value);
  object_.Get(ado::kParameters).AsObject().Call(ado::kAppend, parameter);
}

Recordset Command::Execute() const {
  return Recordset(object_.Call(ado::kExecute).AsObject(), keeper_);
}

} // namespace mbom
