#include "src/frame/ado/Command.h"

#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"
#include "src/frame/ado/Constants.h"
#include "src/log/DiagnosticLog.h"

namespace mbom {
namespace {

using com::Variant;
namespace ado = outside::ado;

} // namespace

Command::Command(const Connection& connection, const std::wstring& text)
    : object_(CommandClass().Create()), keeper_(connection.keeper()), text_(text) {
  object_.Put(ado::kActiveConnection, connection.object());
  object_.Put(ado::kCommandType, ad::kCmdText);
  object_.Put(ado::kCommandText, text);
}

void Command::AppendText(const std::wstring& value, int32_t size) const {
  const Variant parameter =
      object_.Call(ado::kCreateParameter, L"", ad::kVarWChar, ad::kParamInput, size, value);
  object_.Get(ado::kParameters).AsObject().Call(ado::kAppend, parameter);
}

Recordset Command::Execute() const {
  LoggedStep logged(L"statement", text_);
  Recordset result(object_.Call(ado::kExecute).AsObject(), keeper_);
  logged.Rows([&] { return result.RecordCount(); });
  return result;
}

} // namespace mbom
