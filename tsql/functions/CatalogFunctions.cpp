// Functions that ask the catalog: names, numbers and sizes of what the database holds.
#include <random>

#include "tsql/catalog/Schemas.h"
#include "tsql/functions/FunctionCall.h"
#include "tsql/functions/ObjectNumbers.h"
#include "tsql/functions/ServerTypes.h"
#include "tsql/functions/SystemRows.h"
#include "tsql/values/Collation.h"
#include "tsql/values/CollationNames.h"
#include "tsql/values/Hexadecimal.h"
#include "tsql/values/NameText.h"

namespace tsql {
namespace {

void NewId(const FunctionCall& call) {
  static thread_local std::mt19937_64 generator{std::random_device{}()};
  std::string text;
  for (int i = 0; i < 36; ++i) {
    if (i == 8 || i == 13 || i == 18 || i == 23) {
      text += '-';
    } else if (i == 14) {
      text += '4';
    } else {
      const auto digit = static_cast<size_t>(generator() & 0xFU);
      text += i == 19 ? kHexDigits[8 + digit % 4] : kHexDigits[digit];
    }
  }
  call.ReturnText(text);
}

// The name and schema in a text such as "dbo.[T]". A schema that is missing counts as dbo; what is no name is
// no object's, nor is the name of another database's.
ObjectName NameIn(const Catalog& catalog, std::string_view text) {
  const std::optional<std::vector<std::string>> parts = NameParts(text);
  ObjectName name;
  if (!parts) return name;
  const std::string& own = catalog.DatabaseName();
  const std::string& database = parts->size() > 2 ? (*parts)[parts->size() - 3] : own;
  if (!EqualNames(database, parts->back().starts_with('#') ? "tempdb" : own)) return name;
  name.name = parts->back();
  if (parts->size() > 1) name.schema = (*parts)[parts->size() - 2];
  return name;
}

// The table that the first argument names, or null.
TablePtr TableIn(const FunctionCall& call) {
  const Catalog& catalog = *call.Context().catalog;
  return catalog.FindTable(NameIn(catalog, call.Text(0)));
}

void ObjectId(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const Catalog& catalog = *call.Context().catalog;
  const ObjectName name = NameIn(catalog, call.Text(0));
  const std::string_view kind = call.Count() > 1 ? TrimTrailingBlanks(call.Text(1)) : std::string_view();
  const auto isWanted = [kind](std::string_view own) { return kind.empty() || EqualNames(kind, own); };
  const auto give = [&call](std::string_view key) { call.ReturnInteger(NumberOfKey(key)); };
  if (const TablePtr table = isWanted("U") ? catalog.FindTable(name) : nullptr)
    return give(table->place == Place::Main ? table->storageName : name.name);
  if (const ModulePtr view = isWanted("V") ? catalog.FindView(name) : nullptr) return give(view->key);
  if (const ModulePtr procedure = isWanted("P") ? catalog.FindProcedure(name) : nullptr)
    return give(procedure->key);
  if (const TriggerPtr trigger = isWanted("TR") ? catalog.FindTrigger(name) : nullptr)
    return give(trigger->module->key);
  const ModulePtr function = catalog.FindFunction(name);
  const bool isFunction = function && ((isWanted("FN") && function->kind == ModuleKind::ScalarFunction) ||
                                       (isWanted("IF") && function->kind == ModuleKind::InlineFunction) ||
                                       (isWanted("TF") && function->kind == ModuleKind::TableFunction));
  if (isFunction) return give(function->key);
  const std::string schema = IsDbo(name.schema) ? std::string() : name.schema;
  for (const Catalog::Object& object : catalog.Objects())
    if (!object.constraint.empty() && isWanted(object.constraint) && EqualNames(object.name, name.name) &&
        EqualNames(object.schema, schema))
      return give(object.key);
  call.ReturnNull();
}

void ReturnColLength(const FunctionCall& call, const TablePtr& table) {
  const int column = table ? table->FindColumn(call.Text(1)) : -1;
  if (column < 0) return call.ReturnNull();
  const Type& type = table->columns[static_cast<size_t>(column)].type;
  const bool hasLength = TakesLength(type.id) && !IsLob(type.id);
  if (!hasLength) return call.ReturnInteger(StorageBytes(type));
  call.ReturnInteger(IsUnicode(type.id) && type.length > 0 ? type.length * 2 : type.length);
}

void ColLength(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  ReturnColLength(call, TableIn(call));
}

void KeyColLength(const FunctionCall& call) {
  ReturnColLength(call, call.Context().catalog->TableOfKey(call.Text(0)));
}

void CursorStatusOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnInteger(-3);
  call.ReturnInteger(call.Context().userFunctions->CursorStatus(call.Text(0), call.Text(1)));
}

// IDENT_SEED, IDENT_INCR and IDENT_CURRENT of the table of that name; null where it has no identity column.
template <typename NumberOf>
void AnswerIdentity(const FunctionCall& call, NumberOf numberOf) {
  const TablePtr table = call.AnyNull() ? nullptr : TableIn(call);
  if (!table || table->identityColumn < 0) return call.ReturnNull();
  call.Return(Convert(Datum::OfInteger(numberOf(*table)), MakeType(TypeId::BigInt),
                      MakeDecimal(kMaxPrecision, 0), ConvertMode::Cast));
}

void IdentitySeed(const FunctionCall& call) {
  AnswerIdentity(call, [](const TableInfo& table) { return table.seed; });
}

void IdentityIncrement(const FunctionCall& call) {
  AnswerIdentity(call, [](const TableInfo& table) { return table.increment; });
}

void CurrentIdentity(const FunctionCall& call) {
  AnswerIdentity(call, [&call](const TableInfo& table) {
    return call.Context().userFunctions->LastIdentity(table).value_or(table.seed);
  });
}

TriggerPtr TriggerOf(const FunctionCall& call) {
  for (const TriggerPtr& trigger : call.Context().catalog->Triggers())
    if (EqualNames(trigger->module->key, call.Text(0))) return trigger;
  return nullptr;
}

// t_trigger_table(key): the key of the trigger's table or view.
void TriggerTableOf(const FunctionCall& call) {
  const TriggerPtr trigger = TriggerOf(call);
  return trigger ? call.ReturnText(trigger->table) : call.ReturnNull();
}

void IsInsteadOf(const FunctionCall& call) {
  const TriggerPtr trigger = TriggerOf(call);
  call.ReturnInteger(trigger && trigger->insteadOf ? 1 : 0);
}

void TypeNameOf(const FunctionCall& call) {
  call.ReturnText(TypeName(call.TypeAt(0).id));
}

template <int ServerType::*Fact>
void TypeFact(const FunctionCall& call) {
  call.ReturnInteger(ServerTypeOf(call.TypeAt(0)).*Fact);
}

// t_column_collation(key, column): null where it has none, being no text.
void ColumnCollation(const FunctionCall& call) {
  const TablePtr table = call.Context().catalog->TableOfKey(call.Text(0));
  const int position = table ? table->FindColumn(call.Text(1)) : -1;
  if (position < 0) return call.ReturnNull();
  const ColumnInfo& column = table->columns[static_cast<size_t>(position)];
  if (!IsText(column.type)) return call.ReturnNull();
  call.ReturnText(CollationName(column.collation.name));
}

void CharLengthOf(const FunctionCall& call) {
  const Type type = call.TypeAt(0);
  if (IsLob(type.id)) return call.ReturnInteger(type.id == TypeId::NText ? INT32_MAX / 2 : INT32_MAX);
  if (!TakesLength(type.id) || type.length == 0) return call.ReturnNull();
  call.ReturnInteger(type.length);
}

std::optional<Catalog::Object> ObjectOf(const FunctionCall& call) {
  if (call.AnyNull()) return std::nullopt;
  return FindObject(*call.Context().catalog, call.Integer(0));
}

void ObjectNameOf(const FunctionCall& call) {
  const std::optional<Catalog::Object> object = ObjectOf(call);
  return object ? call.ReturnText(object->name) : call.ReturnNull();
}

void ObjectSchemaNameOf(const FunctionCall& call) {
  const std::optional<Catalog::Object> object = ObjectOf(call);
  if (!object) return call.ReturnNull();
  call.ReturnText(object->schema.empty() ? "dbo" : object->schema);
}

void SchemaNameOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const int64_t id = call.Count() > 0 ? call.Integer(0) : kDboSchema;
  const std::optional<std::string> name = call.Context().catalog->SchemaName(id);
  return name ? call.ReturnText(*name) : call.ReturnNull();
}

void SchemaIdOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  if (call.Count() == 0) return call.ReturnInteger(kDboSchema);
  const std::optional<int64_t> id = call.Context().catalog->FindSchema(TrimTrailingBlanks(call.Text(0)));
  return id ? call.ReturnInteger(*id) : call.ReturnNull();
}

void KeyId(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  call.ReturnInteger(NumberOfKey(call.Text(0)));
}

void KeyName(const FunctionCall& call) {
  call.ReturnText(call.Context().catalog->PartsOf(call.Text(0)).name);
}

void KeySchema(const FunctionCall& call) {
  call.ReturnInteger(call.Context().catalog->PartsOf(call.Text(0)).schema);
}

} // namespace

void RegisterCatalogFunctions(sqlite3* connection, FunctionContext& context) {
  Register<NewId>(connection, context, names::kNewId, 0, Purity::Volatile);
  Register<ObjectId>(connection, context, names::kObjectId, -1, Purity::Volatile);
  Register<ObjectNameOf>(connection, context, names::kObjectName, 1, Purity::Volatile);
  Register<ObjectSchemaNameOf>(connection, context, names::kObjectSchemaName, 1, Purity::Volatile);
  Register<SchemaNameOf>(connection, context, names::kSchemaName, -1, Purity::Volatile);
  Register<SchemaIdOf>(connection, context, names::kSchemaId, -1, Purity::Volatile);
  Register<KeyId>(connection, context, names::kKeyId, 1, Purity::Volatile);
  Register<KeyName>(connection, context, names::kKeyName, 1, Purity::Volatile);
  Register<KeySchema>(connection, context, names::kKeySchema, 1, Purity::Volatile);
  Register<KeyColLength>(connection, context, names::kKeyColLength, 2, Purity::Volatile);
  Register<IdentitySeed>(connection, context, names::kIdentitySeed, 1, Purity::Volatile);
  Register<IdentityIncrement>(connection, context, names::kIdentityIncrement, 1, Purity::Volatile);
  Register<CurrentIdentity>(connection, context, names::kCurrentIdentity, 1, Purity::Volatile);
  Register<CursorStatusOf>(connection, context, names::kCursorStatus, 2, Purity::Volatile);
  Register<TriggerTableOf>(connection, context, names::kTriggerTable, 1, Purity::Volatile);
  Register<IsInsteadOf>(connection, context, names::kIsInsteadOf, 1, Purity::Volatile);
  Register<TypeNameOf>(connection, context, names::kTypeName, 1);
  Register<TypeFact<&ServerType::id>>(connection, context, names::kTypeId, 1);
  Register<TypeFact<&ServerType::precision>>(connection, context, names::kTypePrecision, 1);
  Register<TypeFact<&ServerType::scale>>(connection, context, names::kTypeScale, 1);
  Register<ColumnCollation>(connection, context, names::kColumnCollation, 2, Purity::Volatile);
  Register<CharLengthOf>(connection, context, names::kCharLength, 1);
  Register<ColLength>(connection, context, names::kColLength, 2, Purity::Volatile);
}

} // namespace tsql
