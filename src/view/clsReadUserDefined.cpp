#include "src/view/clsReadUserDefined.h"

#include <functional>
#include <unordered_map>

#include "src/frame/Collections.h"
#include "src/frame/Convert.h"
#include "src/frame/Globals.h"
#include "src/frame/OutsideNames.h"
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

// The rows of one call by their ids, so that a value finds its rows without a search. Built when the first
// value comes.
class clsReadUserDefined::RowIndex {
 public:
  RowIndex(const Vector& rows, bool byEntry) : rows_(rows), byEntry_(byEntry) {}

  // The numbers of the rows with the ids of a value.
  const std::vector<int32_t>& RowsOf(const Value& value) {
    if (!built_) Build();
    const auto found =
        positions_.find({static_cast<double>(value.interId), static_cast<double>(value.entryId)});
    static const std::vector<int32_t> none;
    return found == positions_.end() ? none : found->second;
  }
  const Vector& rows() const { return rows_; }

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

  void Build() {
    built_ = true;
    const int32_t count = rows_.UBound();
    for (int32_t i = 1; i <= count; ++i) {
      const Dictionary row = rows_.DictionaryAt(i);
      const std::optional<double> interId = NumberIn(row[L"FInterID"]);
      const std::optional<double> entryId = byEntry_ ? NumberIn(row[L"FEntryID"]) : 0;
      if (interId && entryId) positions_[{*interId, *entryId}].push_back(i);
    }
  }

  Vector rows_;
  bool byEntry_;
  bool built_ = false;
  std::unordered_map<Ids, std::vector<int32_t>, Hash> positions_;
};

Object clsReadUserDefined::GetUserDefinedValue(const std::wstring& sDsn, const std::wstring& pBillTranType,
                                               Object& rs, bool isBillHead) {
  return frame_.VoteByOutcome([&] {
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
                    << L" t1 INNER JOIN ICTransactionType t2 ON " << kCrLf
                    << L"t1.FID=t2.FTemplateID WHERE t2.FID=" << pBillTranType << L" AND t1.FDefaultCtl=0 ");
  fields.Detach();
  return !fields.Eof() && fields.RecordCount() != 0;
}

Object clsReadUserDefined::ReadHeadUserDefined(const std::wstring& sDsn, const std::wstring& pBillTranType,
                                               const Recordset& rs) {
  const Vector rows(RecordsetToVector(rs));
  RowIndex index(rows, false);
  std::vector<Field> fields;
  const int32_t count = rows.UBound();
  for (int32_t i = 1; i <= count; ++i) {
    const int32_t billId = rows.DictionaryAt(i)[L"FInterID"].AsLong();
    GetBillPackage(sDsn, Variant(pBillTranType).AsLong(), kMode, billId);
    if (i == 1) fields = UserDefinedFields(package::kBillDataHeadStruct);
    if (const auto values = GetBillItemValue(fields, true, billId, 0, 0)) MergeVect(index, *values);
  }
  return rows.object();
}

Object clsReadUserDefined::ReadEntryUserDefined(const std::wstring& sDsn, const std::wstring& pBillTranType,
                                                const Recordset& rs) {
  const Vector rows(RecordsetToVector(rs));
  RowIndex index(rows, true);
  std::vector<Field> fields;
  std::unordered_map<int32_t, int32_t> linesSeen;
  const int32_t count = rows.UBound();
  for (int32_t i = 1; i <= count; ++i) {
    const int32_t billId = rows.DictionaryAt(i)[L"FInterID"].AsLong();
    GetBillPackage(sDsn, Variant(pBillTranType).AsLong(), kMode, billId);
    if (i == 1) fields = UserDefinedFields(package::kBillDataEntryStruct);
    // The rows of a bill stand for its lines, one after another; the rows of other bills may lie between.
    const int32_t lineIndex = ++linesSeen[billId];
    const Dictionary line(package_.Get(package::kBillDataEntrysValue, lineIndex).AsObject());
    const int32_t entryId = line.GetValue(L"FEntryID", 0).AsLong();
    if (const auto values = GetBillItemValue(fields, false, billId, entryId, lineIndex))
      MergeVect(index, *values);
  }
  return rows.object();
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

std::vector<clsReadUserDefined::Field> clsReadUserDefined::UserDefinedFields(const wchar_t* structure) const {
  const Vector descriptions(package_.Get(structure).AsObject());
  std::vector<Field> fields;
  const int32_t count = descriptions.UBound();
  for (int32_t i = 1; i <= count; ++i) {
    const Dictionary field = descriptions.DictionaryAt(i);
    if (!Equals(field.GetValue(L"FDefaultCtl", 1), 0)) continue;
    const bool plain = Equals(field.GetValue(L"FRelateOutTbl", 0), 0) &&
                       Equals(field.GetValue(L"FLookUpCls", -1), -1) &&
                       !Equals(field.GetValue(L"FCtlType", 0), kNameControl);
    fields.push_back({com::ToText(field.GetValue(L"FFieldName", L"")), plain ? L"FID" : L"FName"});
  }
  return fields;
}

std::optional<std::vector<clsReadUserDefined::Value>>
clsReadUserDefined::GetBillItemValue(const std::vector<Field>& fields, bool isBillHead, int32_t billId,
                                     int32_t entryId, int32_t lineIndex) const {
  const LoggedProcedure log(L"QorvaneMBomBill.clsReadUserDefined.GetBillItemValue");
  Variant line(lineIndex);
  const Dictionary valueSet((isBillHead
                                 ? package_.Get(package::kBillDataHeadValue)
                                 : package_.Get(package::kBillDataEntryValue, Variant::TypedReference(line)))
                                .AsObject());
  if (!valueSet.object()) return std::nullopt;
  std::vector<Value> values;
  for (const Field& field : fields) {
    const std::wstring key = (isBillHead ? L"P0_" : L"P1_") + field.name;
    if (!valueSet.Holds(key.c_str())) continue;
    const Dictionary item(valueSet[key.c_str()].AsObject());
    values.push_back({billId, entryId, &field.name, item[field.readProperty]});
  }
  return values;
}

void clsReadUserDefined::MergeVect(RowIndex& rows, const std::vector<Value>& values) {
  const LoggedProcedure log(L"QorvaneMBomBill.clsReadUserDefined.MergeVect");
  for (const Value& value : values)
    for (const int32_t row : rows.RowsOf(value))
      rows.rows().DictionaryAt(row).Put(value.field->c_str(), value.value);
}

} // namespace mbom
