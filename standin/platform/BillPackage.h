// BillPackage (QorvaneBillDataAccess.clsBillPackage): one bill with its template, the way bills of all kinds
// look: what its fields are, and the values that the user-defined ones have.
//
// Templates come from ICTemplate and ICTemplateEntry, by the transaction type; values from
// ICUserDefinedValue, a row a value, FEntryID 0 for the header. A bill that does not exist has no header
// values and no lines; a transaction type without bills is run-time error 5. Everything is read when it is
// first asked for, and again when data has changed since.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "com/Object.h"
#include "standin/ado/Session.h"

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
  // The lines in the order of their ids: a Vector of such Dictionaries, their keys with "P1_", and the line's
  // FEntryID. And one line of them, counted from 1.
  com::Object BillDataEntrysValue();
  com::Object BillDataEntryValue(int32_t line);

 private:
  struct BillKind;
  // What a bill is called by; a transaction type that has none throws.
  static const BillKind& KindOf(int32_t billTranType);

  // The bill that was asked for, and the state of the data when it was.
  struct Source {
    std::wstring dsn;
    int32_t billTranType = 0;
    int32_t billId = 0;
  };

  com::Object Connect(const std::wstring& dsn);
  bool Unchanged(const com::Object& connection);
  com::Object Rows(const std::wstring& query) const;
  com::Object Structure(const wchar_t* table, const wchar_t* caption, const wchar_t* position) const;

  Source source_;
  com::Object connection_;
  std::weak_ptr<ado::Session> session_;
  tsql::ChangeStamp stamp_;
  com::Object headStruct_;
  com::Object entryStruct_;
  com::Object headValue_;
  com::Object entries_;
};

} // namespace standin
