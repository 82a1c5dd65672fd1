// BOMs and what they are made of, apart from where they were read and how they are shown.
#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/bom/Day.h"
#include "cli/bom/Quantity.h"

namespace bomcall::bom {

// The number that the database gives items, BOMs and units.
using Id = int32_t;

struct Item {
  Id id = 0;
  std::wstring number;
  std::wstring name;
  Id unit = 0; // in which its quantities are counted
};

struct Unit {
  Id id = 0;
  std::wstring name;
  Quantity factor = Quantity::One(); // base units in one
};

struct Bom {
  Id id = 0;
  std::wstring number;
  std::wstring version;
  Id item = 0;
  Id unit = 0;
  Quantity quantity = Quantity::One(); // of its item, which the lines are for; never zero
  int type = 0;
  bool inUse = false; // and neither disabled nor cancelled
  bool cancelled = false;
};

struct Line {
  Id bom = 0;
  int32_t entry = 0;
  Id item = 0;
  Id unit = 0;
  Quantity quantity;       // in the item's base unit
  Quantity quantityInUnit; // in the line's unit
  std::wstring scrap;
  Day beginDay;
  Day endDay;
  int32_t operation = 0;
  Id property = 0;  // the item's auxiliary property
  Id customBom = 0; // the BOM that a customer's line is built from, or 0
  std::wstring note;
};

class Graph {
 public:
  void Add(Item item);
  void Add(Unit unit);
  // The first one of an identifier stays.
  void Add(Bom bom);
  void Add(Line line);
  // After the last Add and before any question about lines.
  void Finish();

  // Null where there is none.
  const Item* ItemOf(Id item) const;
  const Item* ItemNumbered(const std::wstring& number) const;
  const Unit* UnitOf(Id unit) const;
  const Bom* BomOf(Id bom) const;
  // The newest one where several have the number.
  const Bom* BomNumbered(const std::wstring& number) const;
  // The BOM that an item is made by: the newest one in use that is no customer's.
  const Bom* BomThatMakes(Id item) const;
  // The BOM that a line goes on in: null for what is bought.
  const Bom* BomBelow(const Line& line) const;

  // Its lines in their order.
  std::span<const Line* const> LinesOf(const Bom& bom) const;
  // The lines that use the item.
  const std::vector<const Line*>& LinesWith(Id item) const;

  const std::deque<Bom>& boms() const { return boms_; }
  const std::vector<const Line*>& lines() const { return lines_; }

 private:
  std::unordered_map<Id, Item> items_;
  std::unordered_map<Id, Unit> units_;
  std::deque<Bom> boms_; // it never moves a BOM
  std::unordered_map<Id, const Bom*> bomsById_;
  std::unordered_map<Id, const Bom*> bomsByItem_;
  std::vector<std::vector<Line>> lineBlocks_; // as they came; no line is ever moved, for it is large
  std::vector<const Line*> lines_;            // by BOM and entry
  std::unordered_map<Id, std::vector<const Line*>> linesWithItems_;
};

constexpr int kCustomerBom = 3;

} // namespace bomcall::bom
