// The numbers of identity columns: those that a change gives to its rows, and DBCC CHECKIDENT.
#include <algorithm>

#include "tsql/run/Interpreter.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Errors.h"
#include "tsql/values/NameText.h"

namespace tsql {
namespace {

std::string Shown(const std::optional<int64_t>& number) {
  return number ? std::to_string(*number) : "NULL";
}

} // namespace

void Interpreter::CheckIdentity(const TableInfo& table, int64_t count) const {
  if (!table.IdentityIsRowid() || count == 0) return;
  const Type& type = table.columns[static_cast<size_t>(table.identityColumn)].type;
  const int64_t last = sqlite3_last_insert_rowid(connection_.Handle());
  if (last <= IdentityRangeOf(type).largest) return;
  // The rows of one statement have consecutive numbers, and no others are as great.
  connection_.Run("DELETE FROM " + table.SqlName() + " WHERE _rowid_ > " + std::to_string(last - count));
  Fail(8115, {"IDENTITY", TypeName(type.id)});
}

// Behind the largest number that SQLite has, it takes the file for full.
bool Interpreter::IsOutOfNumbers(const TableInfo& table) const {
  return table.IdentityIsRowid() && IdentityStore(connection_).Last(table) == INT64_MAX;
}

std::optional<int64_t> Interpreter::LastIdentity(const TableInfo& table) const {
  const std::optional<int64_t> last = IdentityStore(connection_).Last(table);
  const std::optional<int64_t> given = definitions_.givenNumbers().Unknown(table, transaction_.Undone());
  return given && (!last || table.IsBeyond(*given, *last)) ? given : last;
}

void Interpreter::CountOn(const TableInfo& table) {
  GivenNumbers& numbers = definitions_.givenNumbers();
  const std::optional<int64_t> given = numbers.Unknown(table, transaction_.Undone());
  if (!given) return;
  std::optional<StatementScope> scope;
  BeginScope(scope, table, nullptr);
  IdentityStore(connection_).SetLast(table, LastIdentity(table));
  if (scope) scope->Complete();
  numbers.Note(table, *given, transaction_.Undone());
}

void Interpreter::NoteLostNumber(const TableInfo& table, int64_t number) {
  // A statement that gives the numbers itself loses none.
  const TablePtr& given = compiler_.IdentityInsert();
  if (given && given->place == table.place && given->storageName == table.storageName) return;
  constexpr uint64_t kNever = 0;
  definitions_.givenNumbers().Note(table, number, kNever);
}

// No row has this number: an INSERT that leaves it has inserted none.
constexpr int64_t kNoRow = INT64_MIN;

void Interpreter::NoteLostRows(const TableInfo& table, int failing) {
  int64_t last = sqlite3_last_insert_rowid(connection_.Handle());
  if (last == kNoRow) {
    if (failing == 0) return;
    last = LastIdentity(table).value_or(table.seed - 1);
  }
  const int64_t largest =
      IdentityRangeOf(table.columns[static_cast<size_t>(table.identityColumn)].type).largest;
  NoteLostNumber(table, last > largest - failing ? largest : last + failing);
}

int64_t Interpreter::MakeNumberedChange(const TableInfo& target, const std::function<int64_t()>& change) {
  if (target.CountsIdentity()) return MakeCountedChange(target, change);
  CountOn(target);
  sqlite3_set_last_insert_rowid(connection_.Handle(), kNoRow);
  try {
    return MakeCheckedChange(target, change);
  } catch (const SqliteFailure& failure) {
    // The row that breaks a constraint has its number already.
    if ((failure.code & 0xFF) == SQLITE_CONSTRAINT) NoteLostRows(target, 1);
    throw;
  } catch (const Error&) {
    NoteLostRows(target, 0);
    throw;
  }
}

// The numbers that the statement gives to its rows are kept with them.
int64_t Interpreter::MakeCountedChange(const TableInfo& target, const std::function<int64_t()>& change) {
  std::optional<StatementScope> scope;
  BeginScope(scope, target, nullptr);
  const IdentityStore identities(connection_);
  IdentityCounter counter(target, LastIdentity(target));
  const CounterUse use(context_, counter);
  int64_t count = 0;
  try {
    count = MakeCheckedChange(target, change);
  } catch (...) {
    if (counter.HasChanged()) NoteLostNumber(target, *counter.Last());
    throw;
  }
  if (counter.HasChanged()) identities.SetLast(target, counter.Last());
  counted_ = counter.OfLastRow();
  if (scope) scope->Complete();
  return count;
}

// Whoever gives the numbers of an identity column without a key may give one twice.
bool Interpreter::LetsNumbersRepeat(const TablePtr& table) {
  const auto isOverIdentity = [&table](const KeyInfo& key) {
    const bool isUnique =
        key.kind == KeyKind::PrimaryKey || key.kind == KeyKind::Unique || key.kind == KeyKind::UniqueIndex;
    return isUnique && key.columns == std::vector<int>{table->identityColumn};
  };
  if (!table->IdentityIsRowid() || std::ranges::any_of(table->keys, isOverIdentity)) return false;
  StatementScope scope(transaction_, table->place);
  definitions_.CountIdentity(table);
  scope.Complete();
  MarkSchemaChange(table->place);
  return true;
}

// The identity value of the row that was inserted last.
void Interpreter::TakeIdentity(const TableInfo& table) {
  if (table.identityColumn < 0) return;
  const int64_t last =
      table.CountsIdentity() ? counted_.value_or(0) : sqlite3_last_insert_rowid(connection_.Handle());
  if (transaction_.MayUndo()) definitions_.givenNumbers().Note(table, last, transaction_.Undone());
  identity_ = Convert(Datum::OfInteger(last), MakeType(TypeId::BigInt), MakeDecimal(kMaxPrecision, 0),
                      ConvertMode::Cast);
  running_->scopeIdentity = identity_;
}

// ---- DBCC CHECKIDENT

void Interpreter::RunCheckIdentity(const CheckIdentityStatement& statement) {
  const std::string written =
      statement.nameText ? EvaluateText(*statement.nameText) : statement.table.Written();
  ObjectName name = statement.table;
  if (statement.nameText) {
    const std::optional<std::vector<std::string>> parts = NameParts(written);
    if (!parts || parts->back().empty()) Fail(2501, {written});
    name.name = parts->back();
    if (parts->size() > 1) name.schema = (*parts)[parts->size() - 2];
  }
  const TablePtr table = catalog_.FindTable(name);
  if (!table) Fail(2501, {written});
  if (table->identityColumn < 0) Fail(7997, {table->name});
  StatementScope scope(transaction_, table->place);
  const IdentityStore identities(connection_);
  const std::optional<int64_t> last = LastIdentity(*table);
  const std::optional<int64_t> farthest = identities.Farthest(*table);
  if (statement.newSeed) {
    Type type;
    const Datum number =
        Convert(Evaluate(*statement.newSeed, type), type, MakeType(TypeId::BigInt), ConvertMode::Cast);
    if (number.IsNull()) Fail(2560, {"3"});
    Reseed(table, last, number.integer);
  } else if (statement.reseeds && farthest && (!last || table->IsBeyond(*farthest, *last))) {
    identities.SetLast(*table, farthest);
  }
  scope.Complete();
  rowCount_ = 0;
  if (!statement.isSilent) {
    sink_->Message(statement.newSeed ? MakeError(7995, statement.line, {Shown(last)})
                                     : MakeError(7998, statement.line, {Shown(last), Shown(farthest)}));
    sink_->Message(MakeError(2528, statement.line, {}));
  }
}

// Before its first row a table begins with the number, later it goes on behind it.
void Interpreter::Reseed(const TablePtr& table, const std::optional<int64_t>& last, int64_t number) {
  const IdentityRange range =
      IdentityRangeOf(table->columns[static_cast<size_t>(table->identityColumn)].type);
  const bool isWithin = number >= range.smallest && number <= range.largest;
  const bool hasPrevious =
      table->increment > 0 ? number >= INT64_MIN + table->increment : number <= INT64_MAX + table->increment;
  if (!isWithin || !hasPrevious) Fail(2560, {"3"});
  const IdentityStore identities(connection_);
  definitions_.givenNumbers().Forget(*table);
  const int64_t previous = last ? number : number - table->increment;
  // SQLite never goes back behind the numbers that are there.
  const std::optional<int64_t> farthest = identities.Farthest(*table);
  if (!table->IdentityIsRowid() || !farthest || *farthest <= previous)
    return identities.SetLast(*table, previous);
  definitions_.CountIdentity(table);
  TableInfo counted = *table;
  counted.rowidColumn = -1;
  identities.SetLast(counted, previous);
  MarkSchemaChange(table->place);
}

} // namespace tsql
