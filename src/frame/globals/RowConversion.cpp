#include "src/frame/globals/RowConversion.h"

#include <optional>
#include <vector>

#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"

namespace mbom {
namespace {

using com::BoundMember;
using com::Object;
using com::Variant;

// A column of a recordset: its name, and the field object that gives the current row's value.
struct Column {
  Variant name;
  Object field;
  BoundMember value;
};

// The rows of a recordset on their way into dictionaries: everything that is the same for all rows is looked
// up once.
class RowReader {
 public:
  explicit RowReader(const Recordset& recordset) : dictionaries_(DictionaryClass()) {
    namespace ado = outside::ado;
    const Object fields = recordset.object().Get(ado::kFields).AsObject();
    const int32_t count = fields.Get(ado::kCount).AsLong();
    columns_.reserve(static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i) {
      Object field = fields.Get(ado::kItem, i).AsObject();
      Variant name = field.Get(ado::kName);
      const BoundMember value(field, ado::kValue);
      columns_.push_back({std::move(name), std::move(field), value});
    }
  }

  bool HasColumns() const { return !columns_.empty(); }
  // The current row; where there is none, every column is Empty.
  Object Read(bool hasRow) {
    Object row = dictionaries_.Create();
    if (!put_) put_.emplace(row, outside::dictionary::kValue);
    for (const Column& column : columns_)
      put_->Put(row, column.name, hasRow ? column.value.Get(column.field) : Variant());
    return row;
  }

 private:
  const com::ObjectClass& dictionaries_;
  std::vector<Column> columns_;
  std::optional<BoundMember> put_;
};

} // namespace

Object RowToDictionary(const Recordset& recordset) {
  RowReader reader(recordset);
  // Without fields there is nothing to ask for: the recordset may be a closed one.
  return reader.Read(reader.HasColumns() && !recordset.Eof());
}

Object RecordsetToVector(const Recordset& recordset) {
  Object rows = VectorClass().Create();
  RowReader reader(recordset);
  const BoundMember add(rows, outside::vector::kAdd);
  const BoundMember eof(recordset.object(), outside::ado::kEof);
  const BoundMember moveNext(recordset.object(), outside::ado::kMoveNext);
  for (; !eof.Get(recordset.object()).AsBool(); moveNext.Call(recordset.object()))
    add.Call(rows, reader.Read(true));
  return rows;
}

} // namespace mbom
