// CEcnInfo: engineering change notices (ECN): their save hooks, the checks before they are started, cancelled
// or edited, start-up and cancellation, and the readers that fill a new one.
//
// A notice is a row of IcEcn with its lines in IcEcnEntry. It names the BOM to be changed (FBomInterID);
// FStatus is 1 once it is saved and 2 once it is started, FCBomInterID then the BOM that the start-up created
// (else 0), and FCBomNumber the number of that one. A line adds (FChangeType 11021), alters (11022) or
// deletes (11023) a line of the BOM; FChildID is that line's number, 0 for a new one.
//
// The methods that write (EndSave, StarUpEcn, UnStarUpEcn) vote abort at entry; a failure gives False, the
// unit of work voted aborted. CheckBomUsed tells its failures in its message. From the others a failure rises
// as the COM error it is, the unit of work voted aborted.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "com/Object.h"
#include "src/frame/Frame.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/ado/Recordset.h"
#include "src/frame/globals/Texts.h"

namespace mbom {

class CEcnInfo {
 public:
  // The transaction mode that the host reads: 2.
  int32_t TransMode() const { return 2; }

  // Before a notice is saved: votes complete, on the context that the object holds, and returns True. Nothing
  // is bound, SaveVect and ReturnMsg are not touched.
  bool BeginSave(const std::wstring& sDsn, com::Object& SaveVect, std::wstring& ReturnMsg);

  // After a notice was saved: checks it and copies into its lines the values that the BOM's lines have now
  // (the FOld columns). SaveVect is a Vector of Dictionary, whose item 1 holds FInterID, the notice's id.
  // False when a check refuses the notice, the unit of work voted aborted: SaveRetCode of item 1 becomes 99,
  // ReturnMsg the reason in the descriptor's language. Else, after a failure too, both stay as they came.
  // Refused is what
  // - adds a line that the BOM has already (item, operation, work position, component type, configuration
  //   attribute, lead-time offset) or, with the setting IC/EnableEcnRight on, one whose validity period has a
  //   day in common with that line's. Only the first such pair is looked at;
  // - deletes as many lines as the BOM has and adds none;
  // - leaves a planning or feature BOM (FBomType 2, 4) with planned percentages that do not add up to exactly
  //   100.
  bool EndSave(const std::wstring& sDsn, com::Object& SaveVect, std::wstring& ReturnMsg);

  // 0: there is never an objection.
  int32_t CheckECN(const std::wstring& sDsn, int32_t lEcnInterID);

  // Whether a BOM has this number.
  bool GetThenCheckCBomNumber(const std::wstring& sDsn, const std::wstring& BomNumber);

  // Whether there is this BOM and it is not audited.
  bool GetCheckCBomNoChecked(const std::wstring& sDsn, int32_t BomInterId);

  // The status of a notice, by its id or its number: 1 saved, 2 started, -1 when it is Null. A notice that
  // does not exist is a failure (ADO's 3021, no current record).
  int32_t ReturnEcnStatus(const std::wstring& sDsn, int32_t EcnInterId);
  int32_t ReturnEcnStatusByNumber(const std::wstring& sDsn, const std::wstring& EcnNumber);

  // What speaks against cancelling a started notice: 0 nothing, strInfo becomes empty; 1 planned orders
  // (IcMrpResult) or production orders (ICMO) use the BOM with the number `BomNumber`, strInfo becomes a line
  // for each kind of document; -1 another notice changes the BOM that this one created, strInfo lists their
  // numbers, or the check failed, the failure's description appended to strInfo; the unit of work is then
  // voted aborted.
  int32_t CheckBomUsed(const std::wstring& sDsn, int32_t EcnInterId, const std::wstring& BomNumber,
                       std::wstring& strInfo);

  // How many notices change the BOM or have created it.
  int32_t CheckEcnBom(const std::wstring& sDsn, int32_t FBomInterID);

  // Starts a notice: copies the BOM `BomInterId` to a new one with the next id of ICMaxNum, its lines changed
  // as the notice says and numbered from 1, takes every other BOM of its item out of use, and audits the new
  // one in the name of the user `UserID`. The new lines get the table's defaults for their operation numbers
  // and validity. Nothing is checked. Returns True.
  bool StarUpEcn(const std::wstring& sDsn, int32_t BomInterId, int32_t EcnInterId, int32_t UserID);

  // Takes a start-up back: deletes the header of the BOM that it created, and sets the notice saved. That
  // BOM's lines stay, and the item's other BOMs stay out of use. Nothing is checked. Returns True.
  bool UnStarUpEcn(const std::wstring& sDsn, int32_t EcnInterId);

  // These three hand out client-side recordsets that are detached from their connection.

  // The header of the BOM `lBomInterID` with its item, shown by its short number where the setting
  // IC/UseShortNumber says so.
  com::Object GetEcnBomHead(const std::wstring& sDsn, const std::wstring& lBomInterID);

  // The lines of the BOM as lines of a notice that alters them, by line number. FilterEntryID, where it is
  // not empty, stands behind the joins as it is. Lines without a known unit, or whose item has no use state,
  // are missing.
  com::Object GetEcnBomEntry(const std::wstring& sDsn, const std::wstring& lBomInterID,
                             const std::wstring& FilterEntryID);

  // What the statement returns.
  com::Object AnalyseBomNumber(const std::wstring& sDsn, const std::wstring& SQL);

 private:
  // The set-up, and the query on its connection.
  Recordset Execute(const std::wstring& sDsn, const Sql& statement);
  // Why the notice `id` may not be saved; nothing when it may.
  static std::optional<std::wstring> Refusal(const std::wstring& sDsn, const Connection& conn, int32_t id,
                                             const Texts& text);
  int32_t Status(const std::wstring& sDsn, const Sql& query);
  bool RunBatch(const std::wstring& sDsn, const Sql& batch);

  Frame frame_;
};

} // namespace mbom
