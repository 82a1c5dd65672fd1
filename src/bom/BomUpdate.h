// BomUpdate: the hooks around the saving of a BOM, and the maintenance of BOMs.
//
// The header status in ICBOM: FStatus 0 not audited, 1 audited; FUseStatus 1072 in use, 1073 not in use;
// FEcnInterID greater than 0: under engineering-change control. Dates are the database server's.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "src/frame/Collections.h"
#include "src/frame/Frame.h"
#include "src/frame/ado/Connection.h"

namespace mbom {

class BomUpdate {
 public:
  // The transaction mode that the host reads: 2.
  int32_t TransMode() const { return 2; }

  // Before a BOM is saved: when its use status changes, every BOM of its item goes out of use.
  // SaveVect is a Vector of Dictionary; read are item 2's UseStatusChange (Boolean) and FItemID. ReturnMsg is
  // not touched. Returns True. Failures rise, the unit of work voted aborted.
  bool BeginSave(const std::wstring& sDsn, com::Object& SaveVect, std::wstring& ReturnMsg);

  // After a BOM was saved: stamps operator and date, for bills of transaction type 53 also the maker, the use
  // status and the parent, recomputes the lines' base quantities from their units, and opens the validity of
  // the lines of BOMs that are not ordinary. SaveVect: item 1 holds FInterID, FTransType and, for type 53,
  // StateParm (a Dictionary with FParentID). A BOM under engineering-change control is refused: False, item
  // 1's SaveRetCode becomes 99, ReturnMsg the reason in the descriptor's language. Every failure gives False,
  // the unit of work voted aborted, and leaves both as they were.
  bool EndSave(const std::wstring& sDsn, com::Object& SaveVect, std::wstring& ReturnMsg);

  // Sets the BOMs with the number `lBomNumber` audited and in use. The result means nothing: it is False
  // always. Failures rise, the unit of work voted aborted.
  bool UpdateIcBomStatus(const std::wstring& sDsn, const std::wstring& lBomNumber);

  // Makes a BOM group: tDict holds FNumber, FName and FParentID (0: a top group). Its id is one more than
  // ICMaxNum holds for ICBOMGroup, or 1 where ICMaxNum has no row for it, and is stored there; its FBootID is
  // its parent's, a top group's its own id. NewGroupInterId becomes the id. Every failure gives False, the
  // unit of work voted aborted, and leaves NewGroupInterId as it was, except that it becomes 0 when the
  // server returns no id.
  bool AddBomGroup(const std::wstring& sDsn, const com::Object& tDict, int32_t& NewGroupInterId);

  // Changes FNumber, FName and FParentID, as far as tDict holds them, of the groups that the SQL condition
  // sFilter matches; of all groups when it is empty. The result means nothing: it is False always. Failures
  // rise, the unit of work voted aborted.
  bool UpdateBomGroup(const std::wstring& sDsn, const com::Object& tDict, const std::wstring& sFilter);

  // Deletes the headers of the BOMs that the SQL condition sFilter matches, and returns True; deletes none
  // and returns False when one of them is audited. Failures rise, the unit of work voted aborted; an empty
  // sFilter always fails.
  bool DeleteBom(const std::wstring& sDsn, const std::wstring& sFilter);

  // Deletes the groups that the SQL condition sFilter matches, all of them when it is empty; whether they
  // hold BOMs or groups is not asked. The result means nothing: it is False always. Failures rise, the unit
  // of work voted aborted.
  bool DeleteBomGroup(const std::wstring& sDsn, const std::wstring& sFilter);

  // Changes header columns of the BOMs that the SQL condition sFilter matches; of all BOMs when it is empty.
  // tVect is a Vector of Dictionary: FFieldID names the column, FValue is its value as SQL, a text with its
  // quotes. The result means nothing: it is False always. Failures rise, the unit of work voted aborted.
  bool UpdateBOM(const std::wstring& sDsn, const com::Object& tVect, const std::wstring& sFilter);

  // Whether cost objects (cbCostObj) or sales orders (SEOrderEntry) use the BOM `FInterID`: 1 used, strInfo
  // becomes a line for each of the two that does; 0 not used, strInfo becomes empty; -1 the check failed, the
  // unit of work voted aborted. After a failure strInfo holds what was written so far; a query that yields
  // no rows gives it a text of its own.
  int32_t CheckBomUsed(const std::wstring& sDsn, int32_t FInterID, std::wstring& strInfo);

  // Sets FVisible of the validity columns to sVal in the layouts of the BOM bill and the BOM queries
  // (IcTableFieldInfo). Returns True. Every failure gives False, the unit of work voted aborted.
  bool SetVisibelBySysProfile(const std::wstring& sDsn, const std::wstring& sVal);

 private:
  // What EndSave writes for the BOM of the save vector's first item.
  void StampSavedBom(const Connection& conn, const Dictionary& bom) const;

  Frame frame_;
};

} // namespace mbom
