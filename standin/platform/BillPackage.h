// BillPackage (QorvaneBillDataAccess.clsBillPackage): one bill with its template, in the form that all
// kinds of bills share: what its fields are, and the values of the user-defined ones.
//
// Templates come from ICTemplate and ICTemplateEntry, by the transaction type; values from
// ICUserDefinedValue, one row for each value, FEntryID 0 for the header. A bill that does not exist has no
// header values and no lines; a transaction type without bills is run-time error 5. Everything is read when
// it is first asked for, and again when data has changed since; meanwhile bills are kept, so that a client
// may go back and forth between them. Within a unit of work a change by somebody else may be seen only after
// the next statement on the unit's connection.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "com/Object.h"
#include "standin/ado/Session.h"
#include "standin/platform/DataSource.h"

namespace standin {

class BillPackage {
 public:
  // Loads the bill `billId` of a transaction type. The mode makes no difference.
  void GetBillPackage(const std::wstring& dsn, int32_t billTranType, int32_t mode, int32_t billId);

  // The fields of headers and of lines: Vectors of Dictionary with FFieldName, FCaption, FCtlType,
  // FLookUpCls, FRelateOutTbl, FDefaultCtl.
  com::Object BillDataHeadStruct();
  com::Object BillDataEntryStruct();
  // A Dictionary "P0_" + field name -> Dictionary with FID (the value) and FName (what it is called). Null
  // for a bill that does not exist.
  com::Object BillDataHeadValue();
  // The lines in the order of their ids: a Vector of Dictionary with FEntryID.
  com::Object BillDataEntrysValue();
  // The values of the line at a position, counted from 1: as of the header, the keys with "P1_".
  com::Object BillDataEntryValue(int32_t line);

 private:
  struct BillKind;
  // The kind of the bills of a transaction type. Throws run-time error 5 for a type that has no bills.
  static const BillKind& KindOf(int32_t billTranType);

  struct StoredValue {
    const com::Variant* key; // in the value set
    com::Variant id;
    com::Variant name;
  };
  // What was read of a bill.
  struct Bill {
    bool headRead = false;
    com::Object headValue;
    com::Object entries;             // null as long as the lines are not read
    std::vector<StoredValue> values; // of the lines, those of one line together
    std::vector<size_t> firstValues; // where those of each line begin, and where the last line's end
  };

  com::Object Connect(const std::wstring& dsn);
  bool Unchanged(const com::Object& connection);
  com::Object Rows(const std::wstring& query) const;
  Bill& Loaded();
  Bill& LoadedWithLines();
  const com::Variant& EntryKeyOf(std::wstring_view field);
  com::Object Structure(const wchar_t* table, const wchar_t* caption, const wchar_t* position) const;

  std::optional<DataSource> source_; // of the last descriptor: a client hands in the same one at each line
  std::wstring dsn_;
  int32_t billTranType_ = 0;
  int32_t billId_ = 0;
  com::Object connection_;
  std::weak_ptr<ado::Session> session_;
  std::optional<tsql::ChangeStamp> stamp_;
  uint64_t uses_ = 0; // of the session, when the stamp was taken
  com::Object headStruct_;
  com::Object entryStruct_;
  std::unordered_map<int32_t, Bill> bills_;
  std::map<std::wstring, com::Variant, std::less<>> entryKeys_; // by the field; they are few, and stay
  size_t linesKept_ = 0;
};

} // namespace standin
