#include "standin/ado/Command.h"

#include <oleauto.h>

#include <deque>
#include <vector>

#include "com/Elements.h"
#include "com/ValueText.h"
#include "standin/ado/AdoError.h"
#include "standin/ado/Connection.h"
#include "standin/host/EventLog.h"

namespace standin::ado {
namespace {

using com::Object;
using com::Variant;

constexpr wchar_t kCommandSource[] = L"ADODB.Command";

} // namespace

void Command::PutActiveConnection(const Variant& value) {
  connection_ = ConnectionFrom(value, kCommandSource);
}

void Command::PutCommandType(int32_t value) {
  switch (static_cast<CommandType>(value)) {
  case CommandType::Unspecified:
  case CommandType::Text:
  case CommandType::Table:
  case CommandType::StoredProcedure:
  case CommandType::Unknown:
  case CommandType::TableDirect: type_ = static_cast<CommandType>(value); return;
  }
  Raise(AdoError::InvalidArgument, kCommandSource);
}

void Command::PutCommandTimeout(int32_t value) {
  if (value < 0) Raise(AdoError::InvalidArgument, kCommandSource);
  timeout_ = value;
}

Object Command::CreateParameter(const std::wstring& name, int32_t type, int32_t direction, int32_t size,
                                const Variant& value) const {
  const auto object = com::Make<Parameter>();
  Parameter& parameter = object->object();
  parameter.PutName(name);
  parameter.PutType(type);
  parameter.PutDirection(direction);
  parameter.PutSize(size);
  parameter.PutValue(value);
  return com::ToObject(object);
}

void Command::SetValues(const Variant& values) {
  if (values.IsMissing() || values.IsEmpty()) return;
  std::vector<Parameter*> inputs;
  for (const Object& object : parameters_->object().items())
    if (Parameter& parameter = ParameterOf(object); parameter.IsInput()) inputs.push_back(&parameter);
  std::vector<Variant> given;
  if (auto elements = com::ElementsOf(values))
    given = *std::move(elements);
  else
    given.push_back(values);
  if (given.size() > inputs.size()) Raise(AdoError::InvalidArgument, kCommandSource);
  for (size_t i = 0; i < given.size(); ++i) inputs[i]->PutValue(given[i]);
}

std::wstring Command::EventDetail() const {
  std::wstring detail = text_;
  for (const Object& object : parameters_->object().items()) {
    const Parameter& parameter = ParameterOf(object);
    if (!parameter.IsInput()) continue;
    detail += L'\t';
    detail += parameter.Name() + L'=' + com::ToText(parameter.Value());
  }
  return detail;
}

Results Command::Run(const Connection& connection) {
  Event(EventKind::Command, EventDetail());
  const std::vector<Object>& all = parameters_->object().items();
  // A deque: the engine's values point into the texts.
  std::deque<std::string> texts;
  std::vector<tsql::Parameter> arguments;
  std::vector<Object> bound;
  for (const Object& object : all) {
    const Parameter& parameter = ParameterOf(object);
    parameter.RequireDefined();
    if (parameter.direction() == Direction::ReturnValue) continue;
    arguments.push_back(parameter.ToEngine(texts.emplace_back()));
    bound.push_back(object);
  }

  const std::shared_ptr<Session>& session = connection.session();
  Results results;
  int32_t status = 0;
  switch (type_) {
  case CommandType::StoredProcedure: results = session->Call(text_, timeout_, arguments, status); break;
  case CommandType::Table:
  case CommandType::TableDirect: results = connection.Run(text_, type_, timeout_); break;
  default: results = session->Execute(text_, timeout_, arguments); break;
  }

  OutputValues outputs;
  for (size_t i = 0; i < bound.size(); ++i)
    if (arguments[i].output) outputs.Add(bound[i], OutputValueOf(arguments[i]));
  for (const Object& object : all)
    if (ParameterOf(object).direction() == Direction::ReturnValue)
      outputs.Add(object, ParameterOf(object).InOwnType(status));
  results.Append(std::move(outputs));
  return results;
}

Object Command::Execute(Variant& recordsAffected, const Variant& parameters, int32_t options) {
  const auto* connection = com::Unwrap<Connection>(connection_.pointer());
  if (!connection) Raise(AdoError::InvalidConnection, kCommandSource);
  SetValues(parameters);
  return Answer(Object(com::Ptr<IDispatch>(self_)), *connection, Run(*connection), options, recordsAffected);
}

} // namespace standin::ado

template <>
const com::DispatchTable& com::TableOf<standin::ado::Command>() {
  using standin::ado::Command;
  using standin::ado::kUnspecified;
  static const DispatchTable table(
      IID_NULL, {
                    PropertyGet<&Command::GetParameters>(DISPID_VALUE, L"Parameters"),
                    PropertyGet<&Command::ActiveConnection>(kNextId, L"ActiveConnection"),
                    PropertyPut<&Command::PutActiveConnection>(kNextId, L"ActiveConnection", {L"Value"}),
                    PropertyGet<&Command::CommandText>(kNextId, L"CommandText"),
                    PropertyPut<&Command::PutCommandText>(kNextId, L"CommandText", {L"Value"}),
                    PropertyGet<&Command::GetCommandType>(kNextId, L"CommandType"),
                    PropertyPut<&Command::PutCommandType>(kNextId, L"CommandType", {L"Value"}),
                    PropertyGet<&Command::CommandTimeout>(kNextId, L"CommandTimeout"),
                    PropertyPut<&Command::PutCommandTimeout>(kNextId, L"CommandTimeout", {L"Value"}),
                    PropertyGet<&Command::Prepared>(kNextId, L"Prepared"),
                    PropertyPut<&Command::PutPrepared>(kNextId, L"Prepared", {L"Value"}),
                    PropertyGet<&Command::Name>(kNextId, L"Name"),
                    PropertyPut<&Command::PutName>(kNextId, L"Name", {L"Value"}),
                    PropertyGet<&Command::State>(kNextId, L"State"),
                    Method<&Command::CreateParameter>(kNextId, L"CreateParameter",
                                                      {{L"Name", L""},
                                                       {L"Type", 0},
                                                       {L"Direction", 1},
                                                       {L"Size", 0},
                                                       {L"Value", Variant::Missing()}}),
                    Method<&Command::Execute>(kNextId, L"Execute",
                                              {{L"RecordsAffected", Variant::Missing()},
                                               {L"Parameters", Variant::Missing()},
                                               {L"Options", kUnspecified}}),
                });
  return table;
}
