#include "src/view/clsReadUserDefined.h"

#include <functional>
#include <unordered_map>

#include "src/frame/Collections.h"
#include "src/frame/Convert.h"
#include "src/frame/OutsideNames.h"
#include "src/frame/ado/ClientRecordset.h"
#include "src/frame/ado/Recordset.h"
#include "src/frame/globals/RowConversion.h"
#include "src/frame/globals/ServerObject.h"
#include "src/frame/modVexoLogMsg.h"

namespace mbom {

using com::Object;
using com::Variant;
namespace package = outside::billPackage;

namespace {

// The mode that the package reads bills in.
constexpr int32_t kMode = 1;
// The control type of a field that shows a name.
constexpr int32_t kNameControl = 22;

} // namespace

// The rows of one call, in their order and by their ids, so that a value finds its rows without a search. The
// index is built when the first value comes.
class clsReadUserDefined::Rows {
 public:
  Rows(const Recordset& rs, bool byEntry) : vector_(RecordsetToVector(rs)), byEntry_(byEntry) {
    const int32_t count = vector_.UBound();
    rows_.reserve(static_cast<size_t>(count));
    for (int32_t i = 1; i <= count; ++i) rows_.push_back(vector_[i].AsObject());
    if (count > 0) value_.emplace(rows_.front(), outside::dictionary::kValue);
  }

  const Object& vector() const { return vector_.object(); }
  size_t count() const { return rows_.size(); }
  int32_t BillIdOf(size_t row) const { return value_->Get(rows_[row], interId_).AsLong(); }
  // Puts values into the rows with these ids, one value after another.
  void Merge(int32_t interId, int32_t entryId, const std::vector<Value>& values) {
    if (values.empty()) return;
    if (!indexed_) BuildIndex();
    const auto found = positions_.find({static_cast<double>(interId), static_cast<double>(entryId)});
    if (found == positions_.end()) return;
    for (const Value& value : values)
      for (const size_t row : found->second) value_->Put(rows_[row], *value.field, value.value);
  }

 private:
  // As numbers compare: an id may be a text or a decimal.
  struct Ids {
    double interId;
    double entryId;
    bool operator==(const Ids&) const = default;
  };
  struct Hash {
    size_t operator()(const Ids& ids) const {
      return std::hash<double>()(ids.interId) * 31 + std::hash<double>()(ids.entryId);
    }
  };

  void BuildIndex() {
    indexed_ = true;
    positions_.reserve(rows_.size());
    const Variant entryIdName(L"FEntryID");
    for (size_t row = 0; row < rows_.size(); ++row) {
      const std::optional<double> interId = NumberIn(value_->Get(rows_[row], interId_));
      const std::optional<double> entryId = byEntry_ ? NumberIn(value_->Get(rows_[row], entryIdName)) : 0;
      if (interId && entryId) positions_[{*interId, *entryId}].push_back(row);
    }
  }

  Vector vector_;
  bool byEntry_;
  bool indexed_ = false;
  const Variant interId_{L"FInterID"};
  std::vector<Object> rows_;
  std::optional<com::BoundMember> value_; // of every row; none without rows
  std::unordered_map<Ids, std::vector<size_t>, Hash> positions_;
};

Object clsReadUserDefined::GetUserDefinedValue(const std::wstring& sDsn, const std::wstring& pBillTranType,
                                               Object& rs, bool isBillHead) {
  return frame_.AbortOnFailure([&] {
    const LoggedProcedure log(L"QorvaneMBomBill.clsReadUserDefined.GetUserDefinedValue");
    frame_.OpenDataContext(sDsn);
    const Recordset rows(rs);
    rows.Rewind();
    if (!HasUserDefinedFields(pBillTranType, isBillHead)) return RecordsetToVector(rows);
    return isBillHead ? ReadHeadUserDefined(sDsn, pBillTranType, rows)
                      : ReadEntryUserDefined(sDsn, pBillTranType, rows);
  });
}

bool clsReadUserDefined::HasUserDefinedFields(const std::wstring& pBillTranType, bool isBillHead) const {
  const ClientRecordset fields(frame_.GetConnection(), ClientRecordset::Cursor::ForwardOnly,
                               ClientRecordset::Lock::ReadOnly);
  fields.Open(Sql() << L"SELECT t1.FFieldName FROM " << (isBillHead ? L"ICTemplate" : L"ICTemplateEntry")
                    << L" t1 INNER JOIN ICTransactionType t2 ON \r\n"
                       L"t1.FID=t2.FTemplateID WHERE t2.FID="
                    << pBillTranType << L" AND t1.FDefaultCtl=0 ");
  fields.Detach();
  return !fields.Eof() && fields.RecordCount() != 0;
}

Object clsReadUserDefined::ReadHeadUserDefined(const std::wstring& sDsn, const std::wstring& pBillTranType,
                                               const Recordset& rs) {
  Rows rows(rs, false);
  std::vector<Field> fields;
  for (size_t i = 0; i < rows.count(); ++i) {
    const int32_t billId = rows.BillIdOf(i);
    GetBillPackage(sDsn, Variant(pBillTranType).AsLong(), kMode, billId);
    if (i == 0) fields = UserDefinedFields(true);
    if (const auto values = GetBillItemValue(fields, true, 0)) MergeVect(rows, billId, 0, *values);
  }
  return rows.vector();
}

Object clsReadUserDefined::ReadEntryUserDefined(const std::wstring& sDsn, const std::wstring& pBillTranType,
                                                const Recordset& rs) {
  Rows rows(rs, true);
  std::vector<Field> fields;
  std::unordered_map<int32_t, int32_t> linesSeen;
  for (size_t i = 0; i < rows.count(); ++i) {
    const int32_t billId = rows.BillIdOf(i);
    GetBillPackage(sDsn, Variant(pBillTranType).AsLong(), kMode, billId);
    if (i == 0) fields = UserDefinedFields(false);
    // The rows of a bill stand for its lines, one after another; the rows of other bills may lie between.
    const int32_t lineIndex = ++linesSeen[billId];
    const Dictionary line(package_.Get(package::kBillDataEntrysValue, lineIndex).AsObject());
    const int32_t entryId = line.GetValue(L"FEntryID", 0).AsLong();
    if (const auto values = GetBillItemValue(fields, false, lineIndex))
      MergeVect(rows, billId, entryId, *values);
  }
  return rows.vector();
}

void clsReadUserDefined::GetBillPackage(const std::wstring& sDsn, int32_t billTranType, int32_t mode,
                                        int32_t billId) {
  const LoggedProcedure log(L"QorvaneMBomBill.clsReadUserDefined.GetBillPackage");
  if (!package_) package_ = CreateServerObject(package::kProgId);
  Variant dsn(sDsn);
  Variant type(billTranType);
  Variant readMode(mode);
  Variant bill(billId);
  package_.Call(package::kGetBillPackage, Variant::TypedReference(dsn), Variant::TypedReference(type),
                Variant::TypedReference(readMode), Variant::TypedReference(bill));
}

std::vector<clsReadUserDefined::Field> clsReadUserDefined::UserDefinedFields(bool isBillHead) const {
  const Vector descriptions(
      package_.Get(isBillHead ? package::kBillDataHeadStruct : package::kBillDataEntryStruct).AsObject());
  std::vector<Field> fields;
  const int32_t count = descriptions.UBound();
  for (int32_t i = 1; i <= count; ++i) {
    const Dictionary field = descriptions.DictionaryAt(i);
    if (!Equals(field.GetValue(L"FDefaultCtl", 1), 0)) continue;
    const bool plain = Equals(field.GetValue(L"FRelateOutTbl", 0), 0) &&
                       Equals(field.GetValue(L"FLookUpCls", -1), -1) &&
                       !Equals(field.GetValue(L"FCtlType", 0), kNameControl);
    const std::wstring name = com::ToText(field.GetValue(L"FFieldName", L""));
    fields.push_back({name, (isBillHead ? L"P0_" : L"P1_") + name, plain ? L"FID" : L"FName"});
  }
  return fields;
}

std::optional<std::vector<clsReadUserDefined::Value>>
clsReadUserDefined::GetBillItemValue(const std::vector<Field>& fields, bool isBillHead,
                                     int32_t lineIndex) const {
  const LoggedProcedure log(L"QorvaneMBomBill.clsReadUserDefined.GetBillItemValue");
  Variant line(lineIndex);
  const Object valueSet =
      (isBillHead ? package_.Get(package::kBillDataHeadValue)
                  : package_.Get(package::kBillDataEntryValue, Variant::TypedReference(line)))
          .AsObject();
  if (!valueSet) return std::nullopt;
  const com::BoundMember exists(valueSet, outside::dictionary::kExists);
  const com::BoundMember value(valueSet, outside::dictionary::kValue);
  std::vector<Value> values;
  values.reserve(fields.size());
  for (const Field& field : fields) {
    if (!exists.Get(valueSet, field.key).AsBool()) continue;
    // The items are the package's own: each may be of another kind.
    const Object item = value.Get(valueSet, field.key).AsObject();
    const com::BoundMember getValue(item, outside::dictionary::kGetValue);
    values.push_back({&field.name, getValue.Get(item, field.readProperty, Variant())});
  }
  return values;
}

void clsReadUserDefined::MergeVect(Rows& rows, int32_t billId, int32_t entryId,
                                   const std::vector<Value>& values) {
  const LoggedProcedure log(L"QorvaneMBomBill.clsReadUserDefined.MergeVect");
  rows.Merge(billId, entryId, values);
}

} // namespace mbom
