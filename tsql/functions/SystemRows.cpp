#include "tsql/functions/SystemRows.h"

#include "tsql/catalog/Schemas.h"

namespace tsql {
namespace {

using Rows = std::vector<std::vector<Datum>>;

Datum NameValue(std::string_view name) {
  return Datum::OfText(std::string(name));
}

// Those of users belong to dbo, of the server's each to whoever has its name.
Rows SchemaRows(const Catalog& catalog) {
  Rows rows;
  for (const ServerSchema& own : ServerSchemas())
    rows.push_back({NameValue(own.name), Datum::OfInteger(own.id), Datum::OfInteger(own.id)});
  for (const auto& [name, id] : catalog.Schemas())
    rows.push_back({NameValue(name), Datum::OfInteger(id), Datum::OfInteger(kDboSchema)});
  return rows;
}

Rows SchemataRows(const Catalog& catalog) {
  Rows rows;
  for (const ServerSchema& own : ServerSchemas())
    rows.push_back({NameValue(catalog.DatabaseName()), NameValue(own.name), NameValue(own.name)});
  for (const auto& [name, id] : catalog.Schemas())
    rows.push_back({NameValue(catalog.DatabaseName()), NameValue(name), NameValue("dbo")});
  return rows;
}

} // namespace

Rows SystemRows(const Catalog& catalog, SystemView::Id view) {
  switch (view) {
  case SystemView::Id::Schemas: return SchemaRows(catalog);
  case SystemView::Id::Schemata: return SchemataRows(catalog);
  default: return {};
  }
}

} // namespace tsql
