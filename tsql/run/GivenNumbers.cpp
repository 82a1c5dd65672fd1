#include "tsql/run/GivenNumbers.h"

#include <algorithm>

namespace tsql {

const GivenNumbers::Entry* GivenNumbers::Find(const TableInfo& table) const {
  const auto found = std::ranges::find_if(entries_, [&](const Entry& entry) {
    return entry.place == table.place && entry.table == table.storageName;
  });
  return found == entries_.end() ? nullptr : &*found;
}

void GivenNumbers::Note(const TableInfo& table, int64_t number, uint64_t undone) {
  const Entry* const found = Find(table);
  if (found == nullptr) {
    entries_.push_back({table.place, table.storageName, number, undone});
    return;
  }
  Entry& entry = entries_[static_cast<size_t>(found - entries_.data())];
  if (table.IsBeyond(number, entry.number)) entry.number = number;
  entry.undone = undone;
}

std::optional<int64_t> GivenNumbers::Unknown(const TableInfo& table, uint64_t undone) const {
  const Entry* const entry = entries_.empty() ? nullptr : Find(table);
  if (entry == nullptr || entry->undone == undone) return std::nullopt;
  return entry->number;
}

void GivenNumbers::Forget(const TableInfo& table) {
  const Entry* const found = Find(table);
  if (found != nullptr) entries_.erase(entries_.begin() + (found - entries_.data()));
}

} // namespace tsql
