// Vector (ruvo10.Vector): a list of values counted from 1. An index that is out of range is run-time error 9.
#pragma once

#include <cstdint>
#include <vector>

#include "com/Variant.h"

namespace standin {

class Vector {
 public:
  com::Variant GetItem(int32_t index) const;
  void PutItem(int32_t index, const com::Variant& value);
  int32_t Count() const { return static_cast<int32_t>(items_.size()); }
  void Add(const com::Variant& value) { items_.push_back(value); }
  void Remove(int32_t index);
  void Clear() { items_.clear(); }
  com::Ptr<IUnknown> NewEnum() const;

 private:
  size_t Position(int32_t index) const;

  std::vector<com::Variant> items_;
};

} // namespace standin
