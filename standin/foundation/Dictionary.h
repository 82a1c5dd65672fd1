// Dictionary (ruvo10.Dictionary): values by name, in the order in which the names came.
//
// Names compare without case and keep their first spelling. A name that is not there reads as Empty and is
// not added by that.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "com/Object.h"
#include "com/Variant.h"

namespace standin {

class Dictionary {
 public:
  // Makes room for so many names.
  void Reserve(size_t names);
  com::Variant GetValue(const com::Variant& key) const;
  // The value; `fallback` for a name that is not there (Empty if it is omitted).
  com::Variant GetValueOr(const com::Variant& key, const com::Variant& fallback) const;
  void PutValue(const com::Variant& key, const com::Variant& value);
  bool Exists(const com::Variant& key) const;
  int32_t Count() const { return static_cast<int32_t>(entries_.size()); }
  com::Variant Keys() const;
  void Remove(const com::Variant& key); // what is not there is no failure
  void Clear();
  com::Ptr<IUnknown> NewEnum() const;

 private:
  struct Entry {
    std::wstring key;
    uint32_t hash;
    com::Variant value;
  };
  static constexpr size_t kAbsent = static_cast<size_t>(-1);

  size_t Find(std::wstring_view key, uint32_t hash) const;
  void Index(size_t entry);
  void Reindex(size_t slots);
  std::vector<com::Variant> KeyTexts() const;

  std::vector<Entry> entries_;
  // Open addressing: the number of an entry plus one, 0 where the slot is free. At most half full; empty
  // while there are few entries.
  std::vector<uint32_t> slots_;
};

} // namespace standin
