// Functions that ask the catalog: names, numbers and sizes of what the database holds.
#include <random>

#include "tsql/functions/FunctionCall.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Hexadecimal.h"
#include "tsql/values/NameHash.h"

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

// The last part of a name such as "dbo.[T]", without brackets.
ObjectName LastPart(std::string_view text) {
  ObjectName name;
  std::string part;
  bool bracketed = false;
  for (const char character : text) {
    if (character == '[' && !bracketed) {
      bracketed = true;
    } else if (character == ']' && bracketed) {
      bracketed = false;
    } else if (character == '.' && !bracketed) {
      part.clear();
    } else {
      part.push_back(character);
    }
  }
  name.name = part;
  return name;
}

// The number of an object: positive, and the same for the same name.
int64_t IdOfName(std::string_view name) {
  return static_cast<int64_t>(HashOfName(name) & 0x7FFFFFFFU) | 1;
}

void ObjectId(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const Catalog& catalog = *call.Context().catalog;
  const ObjectName name = LastPart(call.Text(0));
  const std::string_view kind = call.Count() > 1 ? TrimTrailingBlanks(call.Text(1)) : std::string_view();
  const auto isWanted = [kind](std::string_view own) { return kind.empty() || EqualNames(kind, own); };
  const ModulePtr function = catalog.FindFunction(name);
  const bool isFunction = function && ((isWanted("FN") && function->kind == ModuleKind::ScalarFunction) ||
                                       (isWanted("IF") && function->kind == ModuleKind::InlineFunction) ||
                                       (isWanted("TF") && function->kind == ModuleKind::TableFunction));
  const bool found =
      isFunction || (isWanted("U") && catalog.FindTable(name)) || (isWanted("V") && catalog.FindView(name)) ||
      (isWanted("P") && catalog.FindProcedure(name)) || (isWanted("TR") && catalog.FindTrigger(name));
  if (!found) return call.ReturnNull();
  call.ReturnInteger(IdOfName(name.name));
}

void ColLength(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const TablePtr table = call.Context().catalog->FindTable(LastPart(call.Text(0)));
  const int column = table ? table->FindColumn(call.Text(1)) : -1;
  if (column < 0) return call.ReturnNull();
  const Type& type = table->columns[static_cast<size_t>(column)].type;
  const bool hasLength = TakesLength(type.id) && !IsLob(type.id);
  if (!hasLength) return call.ReturnInteger(StorageBytes(type));
  call.ReturnInteger(IsUnicode(type.id) && type.length > 0 ? type.length * 2 : type.length);
}

void CursorStatusOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnInteger(-3);
  call.ReturnInteger(call.Context().userFunctions->CursorStatus(call.Text(0), call.Text(1)));
}

TriggerPtr TriggerOf(const FunctionCall& call) {
  ObjectName name;
  name.name = call.Text(0);
  return call.Context().catalog->FindTrigger(name);
}

// t_trigger_table(trigger): the name of its table or view.
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

void CharLengthOf(const FunctionCall& call) {
  const Type type = call.TypeAt(0);
  if (!TakesLength(type.id) || type.length == 0) return call.ReturnNull();
  call.ReturnInteger(type.length);
}

void ObjectNameOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  for (const std::string& name : call.Context().catalog->ObjectNames())
    if (IdOfName(name) == call.Integer(0)) return call.ReturnText(name);
  call.ReturnNull();
}

} // namespace

void RegisterCatalogFunctions(sqlite3* connection, FunctionContext& context) {
  Register<NewId>(connection, context, names::kNewId, 0, Purity::Volatile);
  Register<ObjectId>(connection, context, names::kObjectId, -1, Purity::Volatile);
  Register<ObjectNameOf>(connection, context, names::kObjectName, 1, Purity::Volatile);
  Register<CursorStatusOf>(connection, context, names::kCursorStatus, 2, Purity::Volatile);
  Register<TriggerTableOf>(connection, context, names::kTriggerTable, 1, Purity::Volatile);
  Register<IsInsteadOf>(connection, context, names::kIsInsteadOf, 1, Purity::Volatile);
  Register<TypeNameOf>(connection, context, names::kTypeName, 1);
  Register<CharLengthOf>(connection, context, names::kCharLength, 1);
  Register<ColLength>(connection, context, names::kColLength, 2, Purity::Volatile);
}

} // namespace tsql
