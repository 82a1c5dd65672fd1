// clsMCustBOM: customer BOMs: BOMs that are configured for a customer from a configuration BOM with its
// feature items and rules.
//
// A customer BOM is a row of ICBOM (FBomType 3) with lines in ICCustBOMChild. A line may be built from
// another customer BOM, whose id it has in FCustBOMCode: the line's own BOM is that one's upper level. Ids
// travel as texts; a list of them is separated by commas, without blanks or quotes.
//
// The status methods (UpdateAuditFlag to CheckCustBOMIsAssisted) trap failures: the unit of work is voted
// aborted and the result is that of a refusal. From the others a failure rises as the COM error it is, the
// unit of work voted aborted too. What writes votes abort at entry as well. A method that another one uses is
// a call of its own, with its set-up and its vote.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "src/frame/Frame.h"
#include "src/frame/ado/Connection.h"

namespace mbom {

class clsMCustBOM {
 public:
  // The transaction mode that the host reads: 3.
  int32_t TransMode() const { return 3; }

  // ---- status

  // Audits the customer BOMs of the list (b_AuditFlag True: in use, audited by the current user, now) or
  // takes their audit back (False: not in use). False when a document uses `strCurCustBomNo` or one of the
  // list (un-audit only; strMsg lists the documents), when an audited customer BOM outside the list is built
  // from one of them, on whatever level (strMsg names it), or when the list is empty.
  bool UpdateAuditFlag(const std::wstring& sDsn, const std::wstring& strCustBomInterID, bool b_AuditFlag,
                       const std::wstring& strCurCustBomNo, std::wstring& strMsg);

  // The numbers of the customer BOMs that are built from any of the list, once for each line, separated by
  // commas.
  std::wstring GetUsedCustBomNumber(const std::wstring& sDsn, const std::wstring& strCustBomInterID);

  // Disables (b_Status True: ICBOM.FForbid -1) or enables (0) the customer BOMs of the list: "SUCCESS", or
  // "FAIL" for an empty list. What is in use is not disabled: the result is then the numbers of
  // GetUsedCustBomNumber, or
  // "[Associated:]" and the documents.
  std::wstring UpdateDisableStatus(const std::wstring& sDsn, const std::wstring& strCustBomInterID,
                                   bool& b_Status);

  // Whether documents (customer BOM batches, sales orders, production orders, planned orders, forecasts) use
  // the customer BOM `s_CurCustBOMNo` or else one of the list `s_CustBOMNo`; strMsg then has a line for each
  // kind. Where it cannot be found out the answer is True.
  bool CheckCustBOMIsAssisted(const std::wstring& sDsn, const std::wstring& s_CustBOMNo,
                              const std::wstring& s_CurCustBOMNo, std::wstring& strMsg);

  // ---- tree and panels: for each a method that makes the statement and one (…M) that also runs it. Items
  // are shown by FNumber, or by FShortNumber where the setting IC/UseShortNumber says so.

  // The ADO command for the tree, without a connection: the stored procedure sp_GetCustBOMTree for the items
  // of the configured class, or of all classes where sLookType is "ECNLOOKUP"; sFilter and sFilter1 are
  // conditions, joined.
  com::Object GenBomTreeDataSQL(const std::wstring& sDsn, std::wstring& sFilter, std::wstring& sFilter1,
                                std::wstring& sOrder, std::wstring& sLookType);
  // The tree's rows, off their connection.
  com::Object GetTreeViewDataM(const std::wstring& sDsn, const std::wstring& sFilter,
                               const std::wstring& sFilter1, const std::wstring& sOrder,
                               const std::wstring& sLookType);

  // The headers: all, or with a sFilter (whatever it says) those of sInterID, which is a list for the
  // sBomType "-1" and "-99". sOrder is an ORDER BY list.
  std::wstring GenRightTopDataSQL(const std::wstring& sDsn, const std::wstring& sInterID,
                                  const std::wstring& sBomType, const std::wstring& sFilter,
                                  const std::wstring& sFilter1, const std::wstring& sOrder);
  com::Object GetRightTopDataM(const std::wstring& sDsn, const std::wstring& sInterID,
                               const std::wstring& sBomType, const std::wstring& sFilter,
                               const std::wstring& sFilter1, const std::wstring& sOrder);

  // The lines that sFilter, a condition, selects: those of customer BOMs for the sBomType "3", else those of
  // the other BOMs.
  std::wstring GenRightBottomSQL(const std::wstring& sDsn, const std::wstring& sBomType, int32_t aType,
                                 const std::wstring& sFilter, const std::wstring& sOrder);
  com::Object GetRightBottomDataM(const std::wstring& sDsn, const std::wstring& sBomType, int32_t aType,
                                  const std::wstring& sFilter, const std::wstring& sOrder);

  // ---- numbers, creation, copy

  // The rule of customer BOM numbers (ICBillNo 53) and the serial after the last one used. True; without such
  // a rule run-time error 5, its text in the language `strLanguage`.
  bool bGetBillNoInfo(const std::wstring& sDsn, std::wstring& sPrefixion, std::wstring& sSuffix,
                      std::wstring& sFormat, int32_t& lCurNo, const std::wstring& strLanguage);

  // The next number of the bill type by the bill-code rules, used up if bUpdate is True. With bMoreBill True
  // the next lBillNumber ones, each with a tab behind it. `vDict` carries further values of the request; it
  // may be Nothing.
  std::wstring GetBillNoNew(const std::wstring& sDsn, int32_t lBillTransType, bool bMoreBill,
                            int32_t lBillNumber, bool bUpdate, const com::Object& vDict);

  // Copies the customer BOM with its lines under the next id of ICMaxNum and the next number: not in use, not
  // audited, of today and the current user. Returns the number, which is used up in any case; nothing is
  // copied when the id or the number is empty or ICMaxNum has no BOM.
  std::wstring CopyPasteCustBom(const std::wstring& sDsn, const std::wstring& strCustBOMID,
                                const std::wstring& strLanguage);

  // Links all lines of the customer BOM `strParentCustBomInterID` with the item to the customer BOM
  // `strCustBomCode`. False, and nothing done, when any of the three is empty.
  bool SetCustBOM(const std::wstring& sDsn, const std::wstring& strCustBomCode,
                  const std::wstring& strParentCustBomInterID, const std::wstring& strItemID);

  // t_ICItem.FNumber of the item; empty for an unknown one.
  std::wstring GetItemFNumber(const std::wstring& sDsn, const std::wstring& strItemID);

  // Does nothing; clients call it.
  void GetBOMItems() const {}

  // ---- rules and feature items

  // The rows of the statement `s_SQL`, client-side. The arguments come back as they were.
  com::Object GetRecordSet(std::wstring& sDsn, std::wstring& s_SQL);

  // The rule lines of the items of a list: FEntryFNumber, FEntryItemID, FEntryFName, FNumber, FItemID, FName,
  // FRuleID. `strRel` "Rel" gives relations that lead out of the list, "Mut" exclusions, anything else both;
  // a group restricts to its lines and those for all groups.
  com::Object GetRuleByItem(const std::wstring& sDsn, const std::wstring& strFItemID,
                            const std::wstring& strFItemGroupID, const std::wstring& strRel);

  // The components of all BOMs in use of a feature item, separated by commas.
  std::wstring GetTeZhenSubItems(const std::wstring& sDsn, const std::wstring& strTeZhenItemID);

 private:
  std::wstring NumbersBuiltFrom(const std::wstring& sDsn, const std::wstring& ids);
  bool IsUsedByDocuments(const std::wstring& sDsn, const std::wstring& ids, const std::wstring& currentId,
                         std::wstring& usage);
  // The connection of the context that votes at the end. The calls inside a call set up contexts of their
  // own: what is written after them goes over the connection of the last one.
  Connection ConnectionThatVotes() const;
  bool IsBlockedFromAbove(const std::wstring& sDsn, const std::wstring& ids, std::wstring& message);

  Frame frame_;
};

} // namespace mbom
