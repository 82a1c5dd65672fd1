#include "standin/ado/Errors.h"

#include <vector>

#include "com/DispatchObject.h"
#include "standin/ado/AdoError.h"
#include "standin/foundation/Enumerator.h"

namespace standin::ado {

com::Object Errors::Item(int32_t index) const {
  if (index < 0 || index >= Count()) Raise(AdoError::ItemNotFound, L"ADODB.Errors");
  return com::ToObject(com::Make<Error>((*errors_)[static_cast<size_t>(index)]));
}

com::Ptr<IUnknown> Errors::NewEnum() const {
  std::vector<com::Variant> elements;
  elements.reserve(errors_->size());
  for (int32_t i = 0; i < Count(); ++i) elements.emplace_back(Item(i));
  return MakeEnumerator(std::move(elements));
}

} // namespace standin::ado

template <>
const com::DispatchTable& com::TableOf<standin::ado::Error>() {
  using standin::ado::Error;
  static const DispatchTable table(IID_NULL,
                                   {
                                       PropertyGet<&Error::Description>(DISPID_VALUE, L"Description"),
                                       PropertyGet<&Error::Number>(kNextId, L"Number"),
                                       PropertyGet<&Error::Source>(kNextId, L"Source"),
                                       PropertyGet<&Error::NativeError>(kNextId, L"NativeError"),
                                       PropertyGet<&Error::SqlState>(kNextId, L"SQLState"),
                                   });
  return table;
}

template <>
const com::DispatchTable& com::TableOf<standin::ado::Errors>() {
  using standin::ado::Errors;
  static const DispatchTable table(IID_NULL,
                                   {
                                       PropertyGet<&Errors::Item>(DISPID_VALUE, L"Item", {L"Index"}),
                                       PropertyGet<&Errors::Count>(kNextId, L"Count"),
                                       Method<&Errors::Clear>(kNextId, L"Clear"),
                                       Enumeration<&Errors::NewEnum>(),
                                   });
  return table;
}
