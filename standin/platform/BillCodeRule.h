// BillCodeRule (QorvaneMBillCodeRule.clsBillCodeRule): bill numbers by the rules in ICBillNo, which
// has one row for each bill type (FBillID).
//
// A number is FPreLetter, the serial in FFormat, FSufLetter; the serial after FCurNo is the next. In FFormat
// a 0 is a digit, a # a digit unless it would be a leading zero, any other character stands for itself;
// digits for which there is no place stand in front. Without a format the serial is written as it is.
//
// A database that cannot be reached or written throws its error. A bill type without a rule and a count below
// 1 are run-time error 5; a request that is no Dictionary is a type mismatch.
#pragma once

#include <cstdint>
#include <string>

#include "com/Variant.h"

namespace standin {

class BillCodeRule {
 public:
  // The columns that the type's numbers are made of, an array of texts: FPreLetter, FCurNo, FSufLetter, with
  // "-1" in the place of a prefix or suffix that the rule does not have. A bill type without a rule has the
  // one element "-1".
  com::Variant GetItemByBillType(const std::wstring& dsn, int32_t billType) const;

  // The next number, or numbers, of a bill type. `request` holds, itself or in a Dictionary under "Options":
  //   FBillType        the bill type
  //   BillNumber       how many numbers; 1 if it is missing. Used with MoreBillID only
  //   AutoUpdateCurNo  False does not store the serial: the next caller gets the same numbers
  //   MoreBillID       True puts the numbers into the Dictionary that comes along, under "1", "2" …
  // Returns the first number. That Dictionary and a flag that has no effect come in either order.
  std::wstring GetNewBillID(const std::wstring& dsn, const com::Variant& request, const com::Variant& third,
                            const com::Variant& fourth) const;
};

// The serial in the format of a rule.
std::wstring FormatSerial(int32_t serial, const std::wstring& format);

} // namespace standin
