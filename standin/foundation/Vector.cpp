#include "standin/foundation/Vector.h"

#include "com/DispatchObject.h"
#include "standin/foundation/Enumerator.h"

namespace standin {

using com::Variant;

size_t Vector::Position(int32_t index) const {
  if (index < 1 || static_cast<size_t>(index) > items_.size())
    com::Raise(com::RuntimeError::SubscriptOutOfRange, L"ruvo10");
  return static_cast<size_t>(index) - 1;
}

Variant Vector::GetItem(int32_t index) const {
  return items_[Position(index)];
}

void Vector::PutItem(int32_t index, const Variant& value) {
  items_[Position(index)] = value;
}

void Vector::Remove(int32_t index) {
  items_.erase(items_.begin() + static_cast<ptrdiff_t>(Position(index)));
}

com::Ptr<IUnknown> Vector::NewEnum() const {
  return MakeEnumerator(items_);
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::Vector>() {
  using standin::Vector;
  static const DispatchTable table(
      IID_NULL, {
                    PropertyGet<&Vector::GetItem>(DISPID_VALUE, L"Item", {L"Index"}),
                    PropertyPut<&Vector::PutItem>(DISPID_VALUE, L"Item", {L"Index", L"Value"}),
                    PropertyGet<&Vector::Count>(kNextId, L"UBound"),
                    PropertyGet<&Vector::Count>(kNextId, L"Count"),
                    Method<&Vector::Add>(kNextId, L"Add", {L"Value"}),
                    Method<&Vector::Remove>(kNextId, L"Remove", {L"Index"}),
                    Method<&Vector::Clear>(kNextId, L"Clear"),
                    Enumeration<&Vector::NewEnum>(),
                });
  return table;
}
