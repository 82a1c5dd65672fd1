// clsReadUserDefined: the values of the fields that a customer added to a bill's template, beside the rows of
// the bill's headers or lines.
//
// The values are not in the bill's tables; the system's bill package reads them, bill by bill. The call and
// its steps report to the procedure log. Nothing is voted at entry; a failure rises, the unit of work voted
// aborted, after its procedures have closed their log entries.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "com/Object.h"
#include "com/Variant.h"
#include "src/frame/Frame.h"
#include "src/frame/ado/Recordset.h"

namespace mbom {

class clsReadUserDefined {
 public:
  // The transaction mode that the host reads: 2.
  int32_t TransMode() const { return 2; }

  // The rows of `rs`, from the first one, as a Vector of Dictionary, field name -> value, with the
  // user-defined fields that the bill has values for under their names. pBillTranType is the bill's
  // transaction type ("50" for BOMs), a number as text. The rows carry the bill's id as FInterID, and for
  // lines (isBillHead False) FEntryID; they are the bill's lines in its order. `rs` is left at its end.
  com::Object GetUserDefinedValue(const std::wstring& sDsn, const std::wstring& pBillTranType,
                                  com::Object& rs, bool isBillHead);

 private:
  // A user-defined field: its name, its key in a value set, and what of its value is shown, the "FName" of
  // something looked up, else the "FID". Texts that are looked up for each value, as variants.
  struct Field {
    com::Variant name;
    com::Variant key;
    com::Variant readProperty;
  };
  // A field's value in the header of a bill or in one of its lines.
  struct Value {
    const com::Variant* field;
    com::Variant value;
  };
  class Rows;

  bool HasUserDefinedFields(const std::wstring& pBillTranType, bool isBillHead) const;
  com::Object ReadHeadUserDefined(const std::wstring& sDsn, const std::wstring& pBillTranType,
                                  const Recordset& rs);
  com::Object ReadEntryUserDefined(const std::wstring& sDsn, const std::wstring& pBillTranType,
                                   const Recordset& rs);
  // Loads a bill into the package, which is created on first need and kept.
  void GetBillPackage(const std::wstring& sDsn, int32_t billTranType, int32_t mode, int32_t billId);
  std::vector<Field> UserDefinedFields(bool isBillHead) const;
  // The values of the loaded bill's header, or of the line at lineIndex (from 1); none at all when the
  // package has no value set.
  std::optional<std::vector<Value>> GetBillItemValue(const std::vector<Field>& fields, bool isBillHead,
                                                     int32_t lineIndex) const;
  // Puts the values of a header (entryId 0) or a line into its rows.
  static void MergeVect(Rows& rows, int32_t billId, int32_t entryId, const std::vector<Value>& values);

  Frame frame_;
  com::Object package_;
};

} // namespace mbom
