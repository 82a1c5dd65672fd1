#include "standin/platform/BillPackage.h"

#include <algorithm>
#include <array>
#include <span>

#include "com/ComError.h"
#include "com/DispatchObject.h"
#include "com/RecordsetRows.h"
#include "com/ValueText.h"
#include "standin/ado/Connection.h"
#include "standin/foundation/Dictionary.h"
#include "standin/foundation/Vector.h"
#include "standin/host/ThreadState.h"
#include "standin/host/UnitOfWork.h"
#include "standin/platform/DataSource.h"

namespace standin {
namespace {

using com::Object;
using com::Variant;

// Reads a recordset's current row.
class RowOf {
 public:
  explicit RowOf(const Object& recordset) : fields_(recordset.Get(L"Fields").AsObject()) {}
  Variant operator[](const wchar_t* name) const {
    return fields_.Get(L"Item", name).AsObject().Get(L"Value");
  }

 private:
  Object fields_;
};

// More lines than this are not kept.
constexpr size_t kMostLines = 50000;

// A value set that is being filled. The names in its items are made once for all of them.
class ValueSet {
 public:
  ValueSet() = default;
  // It will have so many values.
  explicit ValueSet(size_t count) { values_->object().Reserve(count); }
  void Add(const Variant& key, const Variant& id, const Variant& name) {
    const auto item = com::Make<Dictionary>();
    item->object().PutValue(idName_, id);
    item->object().PutValue(nameName_, name);
    values_->object().PutValue(key, com::ToObject(item));
  }
  Object object() const { return com::ToObject(values_); }

 private:
  const Variant idName_{L"FID"};
  const Variant nameName_{L"FName"};
  const com::Ptr<com::DispatchObject<Dictionary>> values_ = com::Make<Dictionary>();
};

} // namespace

// The tables that the bills of a transaction type are in.
struct BillPackage::BillKind {
  int32_t billTranType;
  const wchar_t* head;
  const wchar_t* lines;
};

const BillPackage::BillKind& BillPackage::KindOf(int32_t billTranType) {
  static constexpr std::array kinds{
      BillKind{50, L"ICBOM", L"ICBOMChild"},
      BillKind{53, L"ICBOM", L"ICCustBOMChild"},
      BillKind{87, L"PPOrder", L"PPOrderEntry"},
      BillKind{571, L"IcEcn", L"IcEcnEntry"},
  };
  const auto kind = std::ranges::find(kinds, billTranType, &BillKind::billTranType);
  if (kind == kinds.end()) {
    const std::wstring text = L"There are no bills of the type " + std::to_wstring(billTranType) + L".";
    com::Raise(com::RuntimeError::InvalidCall, L"QorvaneBillDataAccess", text);
  }
  return *kind;
}

// Inside of a unit of work the unit's connection, else one of its own that stays for the next bill.
Object BillPackage::Connect(const std::wstring& dsn) {
  if (!UnitOfWork::Current() && connection_ && dsn == dsn_) return connection_;
  if (!source_ || source_->descriptor() != dsn) source_.emplace(dsn);
  return source_->Connect();
}

// Whether the data is what it was when the loaded bill was asked for. A server that cannot tell has changed
// it. Asking costs as much as a small query, and a client that goes through the lines of a bill asks for it
// at each: within a unit of work nobody asks again until the connection is used.
bool BillPackage::Unchanged(const Object& connection) {
  auto* own = com::Unwrap<ado::Connection>(connection.pointer());
  const std::shared_ptr<ado::Session> session = own ? own->session() : nullptr;
  if (session && session == session_.lock() && UnitOfWork::Current() && session->uses() == uses_) return true;
  const std::optional<tsql::ChangeStamp> stamp = session ? session->GetChangeStamp() : std::nullopt;
  const bool unchanged = stamp && session == session_.lock() && stamp == stamp_;
  session_ = session;
  stamp_ = stamp;
  uses_ = session ? session->uses() : 0;
  return unchanged;
}

void BillPackage::GetBillPackage(const std::wstring& dsn, int32_t billTranType, int32_t /*mode*/,
                                 int32_t billId) {
  const EventLog::Pause ownDoing(CurrentThread().events);
  KindOf(billTranType);
  Object connection = Connect(dsn);
  const bool same = Unchanged(connection) && dsn == dsn_ && billTranType == billTranType_;
  if (!same) headStruct_ = entryStruct_ = Object();
  if (!same || linesKept_ > kMostLines) {
    bills_.clear();
    linesKept_ = 0;
  }
  dsn_ = dsn;
  billTranType_ = billTranType;
  billId_ = billId;
  connection_ = std::move(connection);
}

Object BillPackage::Rows(const std::wstring& query) const {
  const EventLog::Pause ownDoing(CurrentThread().events);
  if (!connection_)
    com::Raise(com::RuntimeError::InvalidCall, L"QorvaneBillDataAccess", L"No bill is loaded.");
  return connection_.Call(L"Execute", query).AsObject();
}

Object BillPackage::Structure(const wchar_t* table, const wchar_t* caption, const wchar_t* position) const {
  constexpr std::array kColumns{L"FFieldName", L"FCaption",      L"FCtlType",
                                L"FLookUpCls", L"FRelateOutTbl", L"FDefaultCtl"};
  const Object fields =
      Rows(std::wstring(L"SELECT t1.FFieldName, t1.") + caption +
           L" AS FCaption, t1.FCtlType, t1.FLookUpCls, t1.FRelateOutTbl, t1.FDefaultCtl FROM " + table +
           L" t1 INNER JOIN ICTransactionType t2 ON t1.FID = t2.FTemplateID WHERE t2.FID = " +
           std::to_wstring(billTranType_) + L" ORDER BY t1." + position);
  const auto structure = com::Make<Vector>();
  for (const RowOf row(fields); !fields.Get(L"EOF").AsBool(); fields.Call(L"MoveNext")) {
    const auto field = com::Make<Dictionary>();
    for (const wchar_t* column : kColumns) field->object().PutValue(column, row[column]);
    structure->object().Add(com::ToObject(field));
  }
  return com::ToObject(structure);
}

Object BillPackage::BillDataHeadStruct() {
  if (!headStruct_) headStruct_ = Structure(L"ICTemplate", L"FCaption", L"FCtlIndex");
  return headStruct_;
}

Object BillPackage::BillDataEntryStruct() {
  if (!entryStruct_) entryStruct_ = Structure(L"ICTemplateEntry", L"FHeadCaption", L"FCtlOrder");
  return entryStruct_;
}

BillPackage::Bill& BillPackage::Loaded() {
  return bills_[billId_];
}

Object BillPackage::BillDataHeadValue() {
  Bill& bill = Loaded();
  if (bill.headRead) return bill.headValue;
  // The bill's row comes in any case, with nulls where there are no values.
  const Object rows = Rows(
      std::wstring(L"SELECT v.FFieldName, v.FID, v.FName FROM ") + KindOf(billTranType_).head +
      L" b LEFT JOIN ICUserDefinedValue v ON v.FInterID = b.FInterID AND v.FEntryID = 0 AND v.FTranType = " +
      std::to_wstring(billTranType_) + L" WHERE b.FInterID = " + std::to_wstring(billId_));
  bill.headRead = true;
  ++linesKept_;
  if (rows.Get(L"EOF").AsBool()) return {};
  ValueSet values;
  for (const RowOf row(rows); !rows.Get(L"EOF").AsBool(); rows.Call(L"MoveNext"))
    if (const Variant field = row[L"FFieldName"]; !field.IsNull())
      values.Add(L"P0_" + field.AsText(), row[L"FID"], row[L"FName"]);
  return bill.headValue = values.object();
}

BillPackage::Bill& BillPackage::LoadedWithLines() {
  Bill& bill = Loaded();
  if (bill.entries) return bill;
  bill.values.clear(); // a failure may have left some
  bill.firstValues.clear();
  const auto entries = com::Make<Vector>();
  const Variant entryIdName(L"FEntryID");
  // A row for each value of a line, and one with nulls for a line that has none.
  const Object rows = Rows(
      std::wstring(L"SELECT l.FEntryID, v.FFieldName, v.FID, v.FName FROM ") + KindOf(billTranType_).lines +
      L" l LEFT JOIN ICUserDefinedValue v ON v.FInterID = l.FInterID AND v.FEntryID = l.FEntryID AND "
      L"v.FEntryID <> 0 AND v.FTranType = " +
      std::to_wstring(billTranType_) + L" WHERE l.FInterID = " + std::to_wstring(billId_) +
      L" ORDER BY l.FEntryID");
  int32_t last = 0;
  com::ForEachRow(rows, [&](const VARIANT* row) {
    const Variant entryId(row[0]);
    if (bill.firstValues.empty() || entryId.AsLong() != last) {
      last = entryId.AsLong();
      const auto line = com::Make<Dictionary>();
      line->object().PutValue(entryIdName, entryId);
      entries->object().Add(com::ToObject(line));
      bill.firstValues.push_back(bill.values.size());
    }
    if (row[1].vt != VT_BSTR) return;
    const std::wstring_view field(row[1].bstrVal, SysStringLen(row[1].bstrVal));
    bill.values.push_back({&EntryKeyOf(field), Variant(row[2]), Variant(row[3])});
  });
  linesKept_ += bill.firstValues.size();
  bill.firstValues.push_back(bill.values.size());
  bill.entries = com::ToObject(entries);
  return bill;
}

const Variant& BillPackage::EntryKeyOf(std::wstring_view field) {
  auto found = entryKeys_.find(field);
  if (found == entryKeys_.end()) found = entryKeys_.emplace(field, L"P1_" + std::wstring(field)).first;
  return found->second;
}

Object BillPackage::BillDataEntrysValue() {
  return LoadedWithLines().entries;
}

Object BillPackage::BillDataEntryValue(int32_t line) {
  const Bill& bill = LoadedWithLines();
  const auto position = static_cast<size_t>(line);
  if (line < 1 || position >= bill.firstValues.size())
    com::Raise(com::RuntimeError::SubscriptOutOfRange, L"QorvaneBillDataAccess");
  const size_t first = bill.firstValues[position - 1];
  const std::span<const StoredValue> own =
      std::span(bill.values).subspan(first, bill.firstValues[position] - first);
  ValueSet values(own.size());
  for (const StoredValue& value : own) values.Add(*value.key, value.id, value.name);
  return values.object();
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::BillPackage>() {
  using standin::BillPackage;
  static const DispatchTable table(
      IID_NULL, {
                    Method<&BillPackage::GetBillPackage>(kNextId, L"GetBillPackage",
                                                         {L"Dsn", L"BillTranType", L"Mode", L"BillID"}),
                    PropertyGet<&BillPackage::BillDataHeadStruct>(kNextId, L"BillDataHeadStruct"),
                    PropertyGet<&BillPackage::BillDataHeadValue>(kNextId, L"BillDataHeadValue"),
                    PropertyGet<&BillPackage::BillDataEntryStruct>(kNextId, L"BillDataEntryStruct"),
                    PropertyGet<&BillPackage::BillDataEntrysValue>(kNextId, L"BillDataEntrysValue"),
                    PropertyGet<&BillPackage::BillDataEntryValue>(kNextId, L"BillDataEntryValue", {L"Line"}),
                });
  return table;
}
