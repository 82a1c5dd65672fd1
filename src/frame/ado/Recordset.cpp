#include "src/frame/ado/Recordset.h"

#include "src/frame/OutsideNames.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;
namespace ado = outside::ado;

} // namespace

bool Recordset::Eof() const {
  return object().Get(ado::kEof).AsBool();
}

bool Recordset::Bof() const {
  return object().Get(ado::kBof).AsBool();
}

void Recordset::Rewind() const {
  if (!(Eof() && Bof())) object().Call(ado::kMoveFirst);
}

void Recordset::MoveNext() const {
  object().Call(ado::kMoveNext);
}

Variant Recordset::operator[](const wchar_t* field) const {
  const Object fields = object().Get(ado::kFields).AsObject();
  return fields.Get(ado::kItem, field).AsObject().Get(ado::kValue);
}

Variant Recordset::operator[](int32_t index) const {
  const Object fields = object().Get(ado::kFields).AsObject();
  return fields.Get(ado::kItem, index).AsObject().Get(ado::kValue);
}

std::vector<std::wstring> Recordset::FieldNames() const {
  const Object fields = object().Get(ado::kFields).AsObject();
  const int32_t count = fields.Get(ado::kCount).AsLong();
  std::vector<std::wstring> names;
  names.reserve(static_cast<size_t>(count));
  for (int32_t i = 0; i < count; ++i)
    names.push_back(fields.Get(ado::kItem, i).AsObject().Get(ado::kName).AsText());
  return names;
}

int32_t Recordset::RecordCount() const {
  return object().Get(ado::kRecordCount).AsLong();
}

void Recordset::Detach() const {
  object().Put(ado::kActiveConnection, Object());
}

Recordset Recordset::Next() const {
  return Recordset(object().Call(ado::kNextRecordset, Variant::Missing()).AsObject(), held_.keeper());
}

} // namespace mbom
