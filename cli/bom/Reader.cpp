#include "cli/bom/Reader.h"

#include <algorithm>

#include "cli/CommandLine.h"
#include "cli/Objects.h"
#include "com/ComError.h"
#include "com/Passwords.h"

namespace bomcall::bom {
namespace {

using com::Object;

constexpr int32_t kUsed = 1072; // FUseStatus

constexpr wchar_t kLineColumns[] =
    L"SELECT FInterID, FEntryID, FItemID, FUnitID, FQty, FAuxQty, FScrap, FBeginDay,"
    L" FEndDay, FOperSN, FAuxPropID, FNote, ";

std::wstring Quoted(const std::wstring& text) {
  std::wstring quoted = L"'";
  for (const wchar_t c : text) quoted.append(c == L'\'' ? 2 : 1, c);
  return quoted + L"'";
}

// Calls `read` with " WHERE column IN (…)" for some of the identifiers at a time: a statement must not grow
// without bounds.
template <class Read>
void InPortions(const std::wstring& column, const std::vector<Id>& ids, const Read& read) {
  constexpr size_t kMost = 500;
  const std::wstring head = L" WHERE " + column + L" IN (";
  for (size_t begin = 0; begin < ids.size(); begin += kMost) {
    std::wstring condition = head;
    for (size_t i = begin; i < std::min(begin + kMost, ids.size()); ++i)
      condition.append(i == begin ? L"" : L",").append(std::to_wstring(ids[i]));
    condition += L')';
    read(condition);
  }
}

Quantity FactorIn(const std::unordered_map<Id, Quantity>& factors, Id unit) {
  const auto found = factors.find(unit);
  return found == factors.end() ? Quantity::One() : found->second;
}

} // namespace

Reader::Reader(const std::wstring& descriptor) {
  try {
    const Object context = CreateObject(L"QorvaneGlobal.Global").Call(L"GetDataContext").AsObject();
    context.Call(L"BindDsn", descriptor);
    connection_ = context.Call(L"GetConnectionObject").AsObject();
  } catch (const com::ComError& error) {
    throw com::ComError(error.code(), error.source(),
                        L"cannot connect: " + com::WithoutPasswordsOf(descriptor, error.description()));
  }
  ReadUnits();
}

void Reader::ReadUnits() {
  ForEachRow(connection_, L"SELECT FItemID, FName, FCoefficient, FScale FROM t_MeasureUnit",
             [this](const RowView& row) {
               // As the component counts: a missing coefficient is 1, the scale is added to it.
               const Quantity factor = (row.IsNull(2) ? Quantity::One() : row.Decimal(2)) +
                                       (row.IsNull(3) ? Quantity() : row.Decimal(3));
               factors_[row.Number(0)] = factor;
               graph_.Add(Unit{row.Number(0), row.Text(1), factor});
             });
}

Reader::Ids Reader::ReadBoms(const std::wstring& condition) {
  Ids added;
  parents_.clear();
  ForEachRow(
      connection_,
      L"SELECT FInterID, FBOMNumber, FVersion, FItemID, FUnitID, FQty, FAuxQty, FBomType, FUseStatus, FForbid,"
      L" FCancellation FROM ICBOM" +
          condition,
      [&](const RowView& row) {
        Bom bom;
        bom.id = row.Number(0);
        if (!boms_.insert(bom.id).second) return;
        bom.number = row.Text(1);
        bom.version = row.Text(2);
        bom.item = row.Number(3);
        bom.unit = row.Number(4);
        bom.quantity = row.Decimal(5);
        if (bom.quantity.IsZero()) bom.quantity = row.Decimal(6) * FactorIn(factors_, bom.unit);
        if (bom.quantity.IsZero()) bom.quantity = Quantity::One();
        bom.type = row.Number(7);
        bom.cancelled = row.Number(10) != 0;
        bom.inUse = row.Number(8) == kUsed && row.Number(9) == 0 && !bom.cancelled;
        added.push_back(bom.id);
        parents_.push_back(bom.item);
        graph_.Add(std::move(bom));
      });
  return added;
}

void Reader::AddLine(const RowView& row) {
  Line line;
  line.bom = row.Number(0);
  line.entry = row.Number(1);
  line.item = row.Number(2);
  line.unit = row.Number(3);
  line.quantity = row.Decimal(4);
  line.quantityInUnit = row.Decimal(5);
  // The component computes the base quantity when a BOM is audited; before that it is zero.
  if (line.quantity.IsZero()) line.quantity = line.quantityInUnit * FactorIn(factors_, line.unit);
  line.scrap = row.Text(6);
  line.beginDay = row.DayAt(7);
  line.endDay = row.DayAt(8);
  line.operation = row.Number(9);
  line.property = row.Number(10);
  line.note = row.Text(11);
  line.customBom = row.Number(12);
  met_.emplace_back(line.bom, line.item);
  if (line.customBom != 0) customBoms_.push_back(line.customBom);
  graph_.Add(std::move(line));
}

void Reader::ReadLines(const std::wstring& condition) {
  ForEachRow(connection_, kLineColumns + (L"0 FROM ICBOMChild" + condition),
             [this](const RowView& row) { AddLine(row); });
}

void Reader::ReadCustomLines(const std::wstring& condition) {
  ForEachRow(connection_, kLineColumns + (L"FCustBOMCode FROM ICCustBOMChild" + condition),
             [this](const RowView& row) { AddLine(row); });
}

void Reader::ReadItems(const std::wstring& condition) {
  ForEachRow(connection_, L"SELECT FItemID, FNumber, FName, FUnitID FROM t_ICItem" + condition,
             [this](const RowView& row) {
               items_.insert(row.Number(0));
               graph_.Add(Item{row.Number(0), row.Text(1), row.Text(2), row.Number(3)});
             });
}

void Reader::ReadItemsOnce(const Ids& items) {
  Ids unknown;
  for (const Id item : items)
    if (items_.insert(item).second) unknown.push_back(item);
  InPortions(L"FItemID", unknown, [this](const std::wstring& condition) { ReadItems(condition); });
}

Graph Reader::ReadAll() {
  ReadItems({});
  ReadBoms({});
  ReadLines({});
  ReadCustomLines({});
  graph_.Finish();
  return std::move(graph_);
}

Graph Reader::ReadBelow(const std::vector<std::wstring>& numbers, int depth) {
  Ids level;
  Ids items;
  for (const std::wstring& number : numbers) {
    const Ids found = ReadBoms(L" WHERE FBOMNumber = " + Quoted(number));
    if (!graph_.BomNumbered(number)) throw UsageError(L"there is no BOM " + number);
    level.insert(level.end(), found.begin(), found.end());
    items.insert(items.end(), parents_.begin(), parents_.end());
  }
  ReadItemsOnce(items);
  std::unordered_set<Id> madeItems;
  for (int number = 1; !level.empty() && (depth == 0 || number <= depth); ++number) {
    met_.clear();
    customBoms_.clear();
    Ids ordinary;
    Ids custom;
    for (const Id bom : level) (graph_.BomOf(bom)->type == kCustomerBom ? custom : ordinary).push_back(bom);
    InPortions(L"FInterID", ordinary, [this](const std::wstring& condition) { ReadLines(condition); });
    InPortions(L"FInterID", custom, [this](const std::wstring& condition) { ReadCustomLines(condition); });
    Ids used;
    Ids unknown;
    for (const auto& [bom, item] : met_) {
      used.push_back(item); // known ones are left out below
      if (madeItems.insert(item).second) unknown.push_back(item);
    }
    ReadItemsOnce(used);
    level.clear();
    const auto readBoms = [&](const std::wstring& condition) {
      const Ids found = ReadBoms(condition);
      ReadItemsOnce(parents_);
      level.insert(level.end(), found.begin(), found.end());
    };
    InPortions(L"FUseStatus = " + std::to_wstring(kUsed) + L" AND FBomType <> " +
                   std::to_wstring(kCustomerBom) + L" AND FItemID",
               unknown, readBoms);
    InPortions(L"FInterID", customBoms_, readBoms);
  }
  graph_.Finish();
  return std::move(graph_);
}

Graph Reader::ReadAbove(const std::wstring& itemNumber) {
  ReadItems(L" WHERE FNumber = " + Quoted(itemNumber));
  const Item* item = graph_.ItemNumbered(itemNumber);
  if (!item) throw UsageError(L"there is no item " + itemNumber);
  std::unordered_set<Id> asked{item->id};
  Ids level{item->id};
  while (!level.empty()) {
    met_.clear();
    InPortions(L"FItemID", level, [this](const std::wstring& condition) {
      ReadLines(condition);
      ReadCustomLines(condition);
    });
    Ids above;
    std::unordered_set<Id> seen;
    for (const auto& [bom, used] : met_)
      if (!boms_.contains(bom) && seen.insert(bom).second) above.push_back(bom);
    level.clear();
    InPortions(L"FInterID", above, [&](const std::wstring& condition) {
      ReadBoms(condition);
      ReadItemsOnce(parents_);
      for (const Id parent : parents_)
        if (asked.insert(parent).second) level.push_back(parent);
    });
  }
  graph_.Finish();
  return std::move(graph_);
}

} // namespace bomcall::bom
