// PIVOT and UNPIVOT, which become derived tables.
#include <algorithm>

#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr int32_t kColumnNameLength = 128;
constexpr const char* kUnpivoted = "\x01"; // no table that is written has such a name

} // namespace

TableSourcePtr Parser::ParsePivoted() {
  TableSourcePtr source = ParseTablePrimary();
  while (IsWord("pivot") || IsWord("unpivot")) {
    if (source->kind == TableSource::Kind::Join) RefuseHere("PIVOT and UNPIVOT of a join");
    const int line = Current().line;
    auto derived = std::make_unique<TableSource>();
    derived->line = line;
    derived->kind = TableSource::Kind::Derived;
    derived->query = std::make_unique<Query>();
    derived->query->select =
        IsWord("pivot") ? ParsePivot(std::move(source)) : ParseUnpivot(std::move(source));
    derived->query->select->line = line;
    ParseTableAlias(*derived);
    if (derived->alias.empty()) SyntaxError();
    source = std::move(derived);
  }
  return source;
}

ExprPtr Parser::MakeColumn(std::vector<std::string> parts) {
  ExprPtr column = MakeExpr(ExprKind::Column);
  column->parts = std::move(parts);
  return column;
}

ExprPtr Parser::MakeText(const std::string& text) {
  ExprPtr literal = MakeExpr(ExprKind::Literal);
  literal->literal = TokenKind::UnicodeText;
  literal->text = text;
  return literal;
}

// SELECT *, SUM(CASE WHEN key = 'a' THEN value END) AS a, ... FROM source GROUP BY *. The star is without key
// and value.
std::unique_ptr<Select> Parser::ParsePivot(TableSourcePtr source) {
  ExpectWord("pivot");
  ExpectSymbol("(");
  const std::string function = TakeName();
  ExpectSymbol("(");
  const std::vector<std::string> value = ParseColumn()->parts;
  ExpectSymbol(")");
  ExpectWord("for");
  const std::vector<std::string> key = ParseColumn()->parts;
  ExpectWord("in");
  const std::vector<std::string> names = ParseNameList();
  ExpectSymbol(")");
  auto select = std::make_unique<Select>();
  select->from = std::move(source);
  select->pivot = PivotKind::Pivot;
  select->items.emplace_back().starWithout = {key.back(), value.back()};
  for (const std::string& name : names) {
    ExprPtr compare = MakeExpr(ExprKind::Compare);
    compare->args.push_back(MakeColumn(key));
    compare->args.push_back(MakeText(name));
    ExprPtr choice = MakeExpr(ExprKind::Case);
    choice->args.push_back(std::move(compare));
    choice->args.push_back(MakeColumn(value));
    ExprPtr aggregate = MakeExpr(ExprKind::Call);
    aggregate->text = ToLower(function);
    aggregate->args.push_back(std::move(choice));
    SelectItem& item = select->items.emplace_back();
    item.expr = std::move(aggregate);
    item.alias = name;
  }
  return select;
}

// SELECT source.*, value, name FROM source CROSS APPLY (VALUES (a, N'a'), ...) AS x (value, name) WHERE value
// IS NOT NULL. The star is without a, ...
std::unique_ptr<Select> Parser::ParseUnpivot(TableSourcePtr source) {
  ExpectWord("unpivot");
  ExpectSymbol("(");
  const std::string value = TakeName();
  ExpectWord("for");
  const std::string name = TakeName();
  ExpectWord("in");
  const std::vector<std::string> columns = ParseNameList();
  ExpectSymbol(")");
  const std::string exposed = source->alias.empty() ? source->name.name : source->alias;
  auto values = std::make_unique<TableSource>();
  values->line = source->line;
  values->kind = TableSource::Kind::Values;
  values->alias = kUnpivoted;
  values->columnAliases = {value, name};
  for (const std::string& column : columns) {
    ExprPtr text = MakeExpr(ExprKind::Cast);
    text->type = MakeType(TypeId::NVarChar, kColumnNameLength);
    text->args.push_back(MakeText(column));
    std::vector<ExprPtr>& row = values->rows.emplace_back();
    row.push_back(MakeColumn({exposed, column}));
    row.push_back(std::move(text));
  }
  auto select = std::make_unique<Select>();
  select->pivot = PivotKind::Unpivot;
  select->from = std::make_unique<TableSource>();
  select->from->kind = TableSource::Kind::Join;
  select->from->line = source->line;
  select->from->join = JoinKind::CrossApply;
  select->from->left = std::move(source);
  select->from->right = std::move(values);
  SelectItem& star = select->items.emplace_back();
  star.starPrefix = {exposed};
  star.starWithout = columns;
  select->items.emplace_back().expr = MakeColumn({kUnpivoted, value});
  select->items.emplace_back().expr = MakeColumn({kUnpivoted, name});
  select->where = MakeExpr(ExprKind::IsNull);
  select->where->negated = true;
  select->where->args.push_back(MakeColumn({kUnpivoted, value}));
  return select;
}

} // namespace tsql
