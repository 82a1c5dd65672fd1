#include "src/frame/ado/StoredProcedure.h"

#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"
#include "src/frame/ado/Constants.h"
#include "src/log/DiagnosticLog.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;
namespace ado = outside::ado;

} // namespace

StoredProcedure::StoredProcedure(const std::wstring& name) : object_(CommandClass().Create()), name_(name) {
  object_.Put(ado::kCommandType, ad::kCmdStoredProc);
  object_.Put(ado::kCommandText, name);
}

StoredProcedure::StoredProcedure(const Connection& connection, const std::wstring& name)
    : StoredProcedure(name) {
  object_.Put(ado::kActiveConnection, connection.object());
}

void StoredProcedure::Append(const Variant& parameter) const {
  object_.Get(ado::kParameters).AsObject().Call(ado::kAppend, parameter);
}

void StoredProcedure::AppendInput(const std::wstring& parameter, const std::wstring& value,
                                  int32_t size) const {
  Append(object_.Call(ado::kCreateParameter, parameter, ad::kVarChar, ad::kParamInput, size, value));
}

void StoredProcedure::AppendInput(const std::wstring& parameter, int32_t value) const {
  Append(object_.Call(ado::kCreateParameter, parameter, ad::kInteger, ad::kParamInput, Variant::Missing(),
                      value));
}

void StoredProcedure::AppendOutput(const std::wstring& parameter) const {
  Append(object_.Call(ado::kCreateParameter, parameter, ad::kInteger, ad::kParamOutput, 0));
}

void StoredProcedure::AppendReturnValue(const std::wstring& parameter) const {
  constexpr int32_t kIntSize = 4;
  Append(object_.Call(ado::kCreateParameter, parameter, ad::kInteger, ad::kParamReturnValue, kIntSize));
}

void StoredProcedure::Execute() const {
  const LoggedStep logged(L"statement", name_);
  for (Recordset result(object_.Call(ado::kExecute).AsObject()); result;) result = result.Next();
}

Recordset StoredProcedure::OpenDetached(const Connection& connection) const {
  object_.Put(ado::kActiveConnection, connection.object());
  Recordset rows(RecordsetClass().Create(), connection.keeper());
  rows.object().Put(ado::kCursorLocation, ad::kUseClient);
  LoggedStep logged(L"statement", name_);
  rows.object().Call(ado::kOpen, object_, Variant::Missing(), ad::kUnspecified, ad::kUnspecified,
                     ad::kUnspecified);
  logged.Rows([&] { return rows.RecordCount(); });
  // ADO lets a recordset go only when its command has let go before.
  object_.Put(ado::kActiveConnection, Object());
  rows.Detach();
  return rows;
}

Variant StoredProcedure::Value(int32_t index) const {
  return object_.Get(ado::kParameters).AsObject().Get(ado::kItem, index).AsObject().Get(ado::kValue);
}

} // namespace mbom
