// BomInfo: reads BOMs, BOM groups and items, one query a method, as ADO recordsets. Filters, orders and
// values stand in the query as the caller gives them.
//
// In the order of the methods: the first four hand out client-side recordsets that are detached from their
// connection, and their failures rise. GetItemForbitNumber's failures rise too. The others hand out what the
// connection returns; a failure gives no object, the unit of work voted aborted. No method votes before its
// end. A text "in use" or "not in use" stands for FUseStatus 1072 or any other.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "src/frame/Frame.h"

namespace mbom {

class BomInfo {
 public:
  // The transaction mode that the host reads: 3.
  int32_t TransMode() const { return 3; }

  // All columns of ICBOM, or of sTableName where one is given; sFilter (a condition) and sOrder (a list of
  // columns) are left out when empty.
  com::Object GetBomInfo(const std::wstring& sDsn, const std::wstring& sFilter, const std::wstring& sOrder,
                         const std::wstring& sTableName);
  // The same of ICBOMChild.
  com::Object GetBomEntryInfo(const std::wstring& sDsn, const std::wstring& sFilter,
                              const std::wstring& sOrder);
  // The same of ICBOMGroup.
  com::Object GetBomGroupInfo(const std::wstring& sDsn, const std::wstring& sFilter,
                              const std::wstring& sOrder);
  // The rows of a statement; strSql stays as it came.
  com::Object GetInfo(const std::wstring& sDsn, std::wstring& strSql);

  // How many deleted items the BOM uses, its own item counted once a line. A BOM that does not exist is a
  // failure.
  int32_t GetItemForbitNumber(const std::wstring& sDsn, int32_t BomInterId);

  // The BOMs of an item, by its number, its name or its help code.
  com::Object GetBomInfoByItemNumber(const std::wstring& sDsn, const std::wstring& sItemNumber);
  com::Object GetBomInfoByBomNumber(const std::wstring& sDsn, const std::wstring& sBomNumber);
  // The items that may have a BOM, with model and unit, by number, name or help code; deleted ones do not
  // count.
  com::Object GetBomInfoByItemNumber1(const std::wstring& sDsn, const std::wstring& sItemNumber);
  // The BOM in use of the item with the id sItemNumber, with its unit.
  com::Object SelectBomInfoByItemNumber(const std::wstring& sDsn, const std::wstring& sItemNumber);
  // The items that may have a BOM and whose number, name or help code contains sValue.
  com::Object GetBomInfoLikeInfo(const std::wstring& sDsn, const std::wstring& sValue);
  // The BOM in use of the item with the id sItemID.
  com::Object GetBomInfoByItemID(const std::wstring& sDsn, const std::wstring& sItemID);
  // The BOMs of the group sParentID that are not cancelled.
  com::Object GetBomList(const std::wstring& sDsn, const std::wstring& sParentID);
  // The BOMs that are not cancelled, of the item with the number sFilter or of all.
  com::Object GetAllBomList(const std::wstring& sDsn, const std::wstring& sFilter);
  // The lines of a BOM, by its number, and of the BOM in use of an item, by the item's id.
  com::Object GetChildBomInfoByBomNo(const std::wstring& sDsn, const std::wstring& sBomNo);
  com::Object GetChildBomInfoByItemID(const std::wstring& sDsn, const std::wstring& sItemID);

 private:
  com::Object OpenDetached(const std::wstring& sDsn, const Sql& query);
  com::Object Select(const std::wstring& sDsn, const Sql& query);

  Frame frame_;
};

} // namespace mbom
