// Procedures of the server: sp_rename and sp_helptext.
#include <algorithm>

#include "tsql/catalog/Schemas.h"
#include "tsql/run/Interpreter.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"
#include "tsql/values/NameText.h"

namespace tsql {
namespace {

// The parts of the name of an object; none where it is no such name.
std::vector<std::string> ObjectParts(std::string_view written) {
  const std::optional<std::vector<std::string>> parts = NameParts(written);
  return parts && !parts->back().empty() ? *parts : std::vector<std::string>();
}

ObjectName NameOf(const std::vector<std::string>& parts, size_t count) {
  ObjectName name;
  if (count > 0) name.name = parts[count - 1];
  if (count > 1) name.schema = parts[count - 2];
  return name;
}

} // namespace

void Interpreter::RunSystemProcedure(const SystemStatement& statement) {
  // Within the statement nobody gives them other values.
  const std::vector<Datum> arguments = running_->variables;
  switch (statement.procedure) {
  case SystemProcedure::Rename: Rename(arguments); break;
  case SystemProcedure::HelpText: HelpText(arguments); break;
  }
  running_->returnStatus = 0;
}

// ---- sp_rename

void Interpreter::Rename(const std::vector<Datum>& arguments) {
  constexpr std::string_view kTypes[] = {"COLUMN", "INDEX", "OBJECT"};
  constexpr std::string_view kOtherTypes[] = {"DATABASE", "STATISTICS", "USERDATATYPE"};
  const std::string& written = arguments[0].text;
  const std::string& newName = arguments[1].text;
  const std::string type = ToUpper(TrimTrailingBlanks(arguments[2].text));
  const bool anyType = arguments[2].IsNull();
  if (arguments[1].IsNull()) Fail(15223, {"NewName"});
  const auto isType = [&type](std::string_view own) { return own == type; };
  if (std::ranges::any_of(kOtherTypes, isType))
    Refuse("sp_rename of something other than an object, a column or an index");
  if (!anyType && std::ranges::none_of(kTypes, isType)) Fail(15249, {arguments[2].text});
  const std::vector<std::string> parts = ObjectParts(written);
  if (arguments[0].IsNull() || parts.empty()) Fail(15253, {written});
  if (newName.empty()) Fail(15004, {});
  const ObjectName whole = NameOf(parts, parts.size());
  const ObjectName outer = NameOf(parts, parts.size() - 1);
  const TablePtr owner = catalog_.FindTable(outer);
  const TablePtr table = owner && owner->place == Place::Main ? owner : nullptr;
  const bool isObject =
      (anyType || type == "OBJECT") && catalog_.Exists(whole) && PlaceOf(whole) == Place::Main;
  const bool isColumn = (anyType || type == "COLUMN") && table && table->FindColumn(whole.name) >= 0;
  const bool isIndex =
      (anyType || type == "INDEX") && table && std::ranges::any_of(table->keys, [&](const KeyInfo& key) {
        return key.HasIndex() && EqualNames(key.name, whole.name);
      });
  const int found = (isObject ? 1 : 0) + (isColumn ? 1 : 0) + (isIndex ? 1 : 0);
  if (found > 1) Fail(15248, {anyType ? "(null)" : type});
  const std::string schema = IsDbo(whole.schema) ? std::string() : whole.schema;
  if (found == 0 && type != "COLUMN" && type != "INDEX" && catalog_.ConstraintExists(schema, whole.name))
    Refuse("sp_rename of a constraint");
  if (found == 0 && (type == "COLUMN" || type == "INDEX")) Fail(15248, {type});
  if (found == 0) Fail(15225, {written, catalog_.DatabaseName(), anyType ? "(null)" : type});
  StatementScope scope(transaction_, Place::Main);
  if (isObject) {
    definitions_.RenameObject(whole, newName);
  } else if (isColumn) {
    definitions_.RenameColumn(*table, whole.name, newName, written);
  } else {
    definitions_.RenameIndex(*table, whole.name, newName);
  }
  scope.Complete();
  MarkSchemaChange(Place::Main);
  sink_->Message(MakeError(15477, 0, {}));
}

// ---- sp_helptext

void Interpreter::HelpText(const std::vector<Datum>& arguments) {
  if (!arguments[1].IsNull()) Refuse("sp_helptext of a column");
  const std::string& written = arguments[0].text;
  const std::vector<std::string> parts = ObjectParts(written);
  const ObjectName name = NameOf(parts, parts.size());
  const ModulePtr module = parts.empty() ? nullptr : definitions_.FindModule(name);
  if (!module && catalog_.FindTable(name)) Fail(15197, {written});
  if (!module) Fail(15009, {written, catalog_.DatabaseName()});
  // A row for each line, with what ends it; a long line takes several.
  constexpr int kLength = 255;
  Column column;
  column.name = "Text";
  column.type = MakeType(TypeId::NVarChar, kLength);
  sink_->BeginRows({&column, 1});
  int64_t count = 0;
  const auto give = [&](std::string_view line) {
    Value value;
    value.kind = Value::Kind::Text;
    value.text = line;
    sink_->Row({&value, 1});
    ++count;
  };
  std::string_view rest = module->text;
  while (!rest.empty()) {
    const size_t lineEnd = rest.find('\n');
    const size_t line = lineEnd == std::string_view::npos ? rest.size() : lineEnd + 1;
    size_t bytes = 0;
    for (int characters = 0; bytes < line && characters < kLength; ++characters) {
      ++bytes;
      while (bytes < line && (static_cast<unsigned char>(rest[bytes]) & 0xC0U) == 0x80U) ++bytes;
    }
    give(rest.substr(0, bytes));
    rest.remove_prefix(bytes);
  }
  sink_->EndRows(count);
}

} // namespace tsql
