// CBomFunction: allocates identifiers and BOM numbers, copies BOMs, checks and repairs their links to
// routings, and moves them between groups.
//
// Except for GetMaxNum, every method traps its failures: it votes to abort and returns its failure value.
// GetBomCodeNum, UpdateBomNumber, CopyBom, UpdateBomGroup and UpdateBomGroupName vote to abort at entry,
// before anything else; the other two that write do not: GetBomCodeNumEx, whose numbers the bill-code-rule
// component writes, and UpdateBomRouting.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "src/frame/Frame.h"
#include "src/frame/ado/Connection.h"

namespace mbom {

class CBomFunction {
 public:
  // The transaction mode that the host reads: 2.
  int32_t TransMode() const { return 2; }

  // A new identifier for the table `strName`, from the database's procedure GetICMaxNum, on the connection
  // that the most recent set-up of this object bound; after one that failed there is none. Failures rise; no
  // vote is cast.
  int32_t GetMaxNum(const std::wstring& strName);

  // The first serial, from the current one of bill type 50 (ICBillNo.FCurNo) upwards, that makes an unused
  // BOM number when it follows the text in ErrInfo, which stays as it came. FCurNo goes up by one, however
  // many serials were passed over. -1 after every failure, or when bill type 50 has no row in ICBillNo.
  int32_t GetBomCodeNum(const std::wstring& sToParse, std::wstring& ErrInfo);

  // A new BOM number by the rules for bill type 50, from the bill-code-rule component; `lItemId` goes to it
  // as FItemID when the rules have items. An empty text after every failure.
  std::wstring GetBomCodeNumEx(const std::wstring& sDsn, int32_t lItemId);

  // Gives the BOM `FInterID` the number BomNumber, trimmed: 1. Where a BOM has the number already EffInfo
  // says so, and it is given all the same. -1 when the connection cannot be bound, 0 after any other failure;
  // neither has a message.
  int32_t UpdateBomNumber(const std::wstring& sToParse, int32_t FInterID, const std::wstring& BomNumber,
                          std::wstring& EffInfo);

  // Copies the BOM Bom("FInterID"), header and lines, all columns of both tables, under a new identifier and
  // the number Bom("FBOMNumber"), into the group Bom("FParentID"), for the maker Bom("FCheckID") and the
  // operator Bom("FOperatorID"). The copy is not in use and not audited, its dates are today's. Returns the
  // identifier; -1 after every failure, and one is any of the five that Bom does not hold. A BOM that does
  // not exist is none: nothing is copied, and the result is an identifier that no BOM has.
  int32_t CopyBom(const std::wstring& sToParse, const com::Object& Bom);

  // The broken links to routings, of the BOM `FInterID` or, for -1, of all: headers whose routing does not
  // exist (FBomType 0), and lines with an operation that their header's routing, or want of one, does not
  // have (1), each with its reason in FErrInfo. ErrInfo becomes empty; when the connection cannot be bound it
  // says so. No object after every failure. LongNumber means nothing.
  com::Object GetRoutingData(const std::wstring& sToParse, bool LongNumber, int32_t FInterID,
                             std::wstring& ErrInfo);

  // Takes back the links of such rows: VectInfo is a Vector of Dictionary with FBomType, FInterID, FItemID
  // and GetUserID, the user who repairs. A header (FBomType 0) loses its routing and its lines their
  // operations, and the method returns True at once, without a vote; a line loses its operation. False after
  // every failure, or without VectInfo.
  bool UpdateBomRouting(const std::wstring& sToParse, const com::Object& VectInfo);

  // Moves the BOM to a group, which nobody checks to exist. False after every failure.
  bool UpdateBomGroup(const std::wstring& sToParse, int32_t BomInterId, int32_t BomGroupID,
                      int32_t FOperatorID);

  // Names a group, trimmed. False after every failure.
  bool UpdateBomGroupName(const std::wstring& sToParse, int32_t FInterID, const std::wstring& BomGroupName);

 private:
  // The set-up, which keeps the connection. False when it cannot be bound.
  bool Bind(const std::wstring& sToParse);
  bool RunUpdate(const std::wstring& sToParse, const Sql& update);

  Frame frame_;
  Connection connection_{com::Object()};
};

} // namespace mbom
