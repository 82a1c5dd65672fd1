// What scripts ask of an object or a column by the name of a property.
#include <algorithm>

#include "tsql/catalog/SchemaBinding.h"
#include "tsql/functions/FunctionCall.h"
#include "tsql/functions/ObjectNumbers.h"
#include "tsql/values/Collation.h"

namespace tsql {
namespace {

// An object as OBJECTPROPERTY looks at it: a table, or a module of one of the kinds.
struct Asked {
  TablePtr table;
  ModulePtr module;
  TriggerPtr trigger; // where the module is one

  bool IsModule(ModuleKind kind) const { return module && module->kind == kind; }
  bool HasKey(KeyKind kind) const {
    return table && std::ranges::any_of(table->keys, [kind](const KeyInfo& key) { return key.kind == kind; });
  }
  bool HasColumn(bool (*isOne)(const ColumnInfo&)) const {
    return table && std::ranges::any_of(table->columns, isOne);
  }
};

std::optional<Asked> Ask(const Catalog& catalog, int64_t number) {
  const std::optional<Catalog::Object> object = FindObject(catalog, number);
  if (!object) return std::nullopt;
  ObjectName name;
  name.schema = object->schema;
  name.name = object->name;
  Asked asked;
  asked.table = catalog.FindTable(name);
  if (asked.table) return asked;
  asked.trigger = catalog.FindTrigger(name);
  asked.module = asked.trigger ? asked.trigger->module : catalog.FindView(name);
  if (!asked.module) asked.module = catalog.FindProcedure(name);
  if (!asked.module) asked.module = catalog.FindFunction(name);
  return asked;
}

struct ObjectProperty {
  std::string_view name;
  bool (*holds)(const Asked& asked);
};

bool Never(const Asked& /*asked*/) {
  return false;
}

constexpr ObjectProperty kObjectProperties[] = {
    {"IsTable", [](const Asked& asked) { return asked.table != nullptr; }},
    {"IsUserTable", [](const Asked& asked) { return asked.table != nullptr; }},
    {"IsView", [](const Asked& asked) { return asked.IsModule(ModuleKind::View); }},
    {"IsProcedure", [](const Asked& asked) { return asked.IsModule(ModuleKind::Procedure); }},
    {"IsTrigger", [](const Asked& asked) { return asked.IsModule(ModuleKind::Trigger); }},
    {"IsScalarFunction", [](const Asked& asked) { return asked.IsModule(ModuleKind::ScalarFunction); }},
    {"IsInlineFunction", [](const Asked& asked) { return asked.IsModule(ModuleKind::InlineFunction); }},
    {"IsTableFunction",
     [](const Asked& asked) {
       return asked.IsModule(ModuleKind::InlineFunction) || asked.IsModule(ModuleKind::TableFunction);
     }},
    {"IsExecuted", [](const Asked& asked) { return asked.module != nullptr; }},
    {"ExecIsAnsiNullsOn", [](const Asked& asked) { return asked.module && asked.module->options.ansiNulls; }},
    {"ExecIsQuotedIdentOn",
     [](const Asked& asked) { return asked.module && asked.module->options.quotedIdentifier; }},
    {"IsAnsiNullsOn", [](const Asked& asked) { return !asked.module || asked.module->options.ansiNulls; }},
    {"IsQuotedIdentOn",
     [](const Asked& asked) { return !asked.module || asked.module->options.quotedIdentifier; }},
    {"ExecIsInsteadOfTrigger", [](const Asked& asked) { return asked.trigger && asked.trigger->insteadOf; }},
    {"ExecIsAfterTrigger", [](const Asked& asked) { return asked.trigger && !asked.trigger->insteadOf; }},
    {"ExecIsTriggerDisabled", [](const Asked& asked) { return asked.trigger && asked.module->disabled; }},
    {"TableHasPrimaryKey", [](const Asked& asked) { return asked.HasKey(KeyKind::PrimaryKey); }},
    {"TableHasUniqueCnst", [](const Asked& asked) { return asked.HasKey(KeyKind::Unique); }},
    {"TableHasCheckCnst", [](const Asked& asked) { return asked.HasKey(KeyKind::Check); }},
    {"TableHasForeignKey", [](const Asked& asked) { return asked.HasKey(KeyKind::ForeignKey); }},
    {"TableHasIdentity",
     [](const Asked& asked) { return asked.table != nullptr && asked.table->identityColumn >= 0; }},
    {"TableHasDefaultCnst",
     [](const Asked& asked) {
       return asked.HasColumn([](const ColumnInfo& column) { return !column.defaultText.empty(); });
     }},
    {"TableHasTextImage",
     [](const Asked& asked) {
       return asked.HasColumn([](const ColumnInfo& column) { return IsLob(column.type.id); });
     }},
    {"IsConstraint", &Never},
    {"IsPrimaryKey", &Never},
    {"IsUniqueCnst", &Never},
    {"IsCheckCnst", &Never},
    {"IsForeignKey", &Never},
    {"IsDefaultCnst", &Never},
    {"IsDefault", &Never},
    {"IsRule", &Never},
    {"IsEncrypted", &Never},
    {"IsSchemaBound", [](const Asked& asked) { return asked.module && IsSchemaBound(*asked.module); }},
    {"IsSystemTable", &Never},
    {"IsMSShipped", &Never},
    {"IsReplProc", &Never},
    {"IsExtendedProc", &Never},
};

// OBJECTPROPERTY(id, property): 1, 0, or null for what is not there or not known.
void ObjectPropertyOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const Catalog& catalog = *call.Context().catalog;
  const std::string_view name = TrimTrailingBlanks(call.Text(1));
  const auto property = std::ranges::find_if(
      kObjectProperties, [&](const ObjectProperty& known) { return EqualNames(known.name, name); });
  const std::optional<Asked> asked = Ask(catalog, call.Integer(0));
  if (property == std::end(kObjectProperties) || !asked) return call.ReturnNull();
  call.ReturnInteger(property->holds(*asked) ? 1 : 0);
}

// The table of the number, or null.
TablePtr TableOf(const FunctionCall& call) {
  const Catalog& catalog = *call.Context().catalog;
  const std::optional<Catalog::Object> object = FindObject(catalog, call.Integer(0));
  return object ? catalog.TableOfKey(object->key) : nullptr;
}

// How many digits, bits of a mantissa or characters the type has.
std::optional<int> PrecisionOf(const Type& type) {
  switch (type.id) {
  case TypeId::Bit: return 1;
  case TypeId::TinyInt: return 3;
  case TypeId::SmallInt: return 5;
  case TypeId::Int: return 10;
  case TypeId::BigInt: return 19;
  case TypeId::SmallMoney: return 10;
  case TypeId::Money: return 19;
  case TypeId::Real: return 24;
  case TypeId::Float: return 53;
  case TypeId::Decimal: return type.precision;
  case TypeId::SmallDateTime: return 16;
  case TypeId::DateTime: return 23;
  default: return TakesLength(type.id) && !IsLob(type.id) ? std::optional(type.length) : std::nullopt;
  }
}

// COLUMNPROPERTY(id, column, property): null for what is not there or not known.
void ColumnPropertyOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const TablePtr table = TableOf(call);
  const int index = table ? table->FindColumn(TrimTrailingBlanks(call.Text(1))) : -1;
  if (index < 0) return call.ReturnNull();
  const ColumnInfo& column = table->columns[static_cast<size_t>(index)];
  const Type& type = column.type;
  const std::string_view name = TrimTrailingBlanks(call.Text(2));
  const auto is = [name](std::string_view property) { return EqualNames(property, name); };
  const auto answer = [&call](std::optional<int> value) {
    value ? call.ReturnInteger(*value) : call.ReturnNull();
  };
  if (is("AllowsNull")) return answer(column.nullable ? 1 : 0);
  if (is("ColumnId")) return answer(index + 1);
  if (is("IsIdentity")) return answer(table->identityColumn == index ? 1 : 0);
  if (is("IsComputed")) return answer(column.IsComputed() ? 1 : 0);
  if (is("IsRowGuidCol") || is("IsSparse") || is("IsHidden") || is("IsFulltextIndexed")) return answer(0);
  if (is("Precision")) return answer(PrecisionOf(type));
  if (is("Scale"))
    return answer(FamilyOf(type.id) == Family::Decimal || IsFine(type.id) ? std::optional<int>(type.scale)
                  : type.id == TypeId::DateTime                           ? std::optional(3)
                  : FamilyOf(type.id) == Family::Integer                  ? std::optional(0)
                                                                          : std::nullopt);
  if (is("CharMaxLen")) return answer(IsText(type) ? std::optional(type.length) : std::nullopt);
  call.ReturnNull();
}

// COL_NAME(id, column), from 1
void ColumnNameOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const TablePtr table = TableOf(call);
  const int64_t position = call.Integer(1);
  const bool isThere = table && position >= 1 && static_cast<size_t>(position) <= table->columns.size();
  return isThere ? call.ReturnText(table->columns[static_cast<size_t>(position) - 1].name)
                 : call.ReturnNull();
}

// OBJECT_DEFINITION(id): the text of a view, procedure, function or trigger.
void ObjectDefinitionOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const std::optional<Asked> asked = Ask(*call.Context().catalog, call.Integer(0));
  return asked && asked->module ? call.ReturnText(asked->module->text) : call.ReturnNull();
}

} // namespace

void RegisterPropertyFunctions(sqlite3* connection, FunctionContext& context) {
  Register<ObjectPropertyOf>(connection, context, names::kObjectProperty, 2, Purity::Volatile);
  Register<ColumnPropertyOf>(connection, context, names::kColumnProperty, 3, Purity::Volatile);
  Register<ColumnNameOf>(connection, context, names::kColumnName, 2, Purity::Volatile);
  Register<ObjectDefinitionOf>(connection, context, names::kObjectDefinition, 1, Purity::Volatile);
}

} // namespace tsql
