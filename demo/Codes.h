// What the numbers in the stories mean.
#pragma once

namespace demo::codes {

// ---- columns

inline constexpr wchar_t kStatus[] = L"FStatus of a BOM: 0 not audited, 1 audited";
inline constexpr wchar_t kUseStatus[] = L"FUseStatus: 1072 in use, 1073 not in use";
inline constexpr wchar_t kBomType[] =
    L"FBomType: 0 ordinary, 1 configuration, 2 planning, 3 customer, 4 feature BOM";
inline constexpr wchar_t kEcn[] =
    L"FEcnInterID: the engineering change that made the BOM; NULL or 0 for none";
inline constexpr wchar_t kForbid[] = L"FForbid: -1 disabled, 0 not disabled";
inline constexpr wchar_t kAuditor[] =
    L"FCheckID: the maker; FCheckerID: the auditor; FAudDate: the day of the audit";
inline constexpr wchar_t kNotice[] =
    L"FStatus of a change notice: 1 saved, 2 started; FBomInterID: the BOM that it changes; FCBomInterID, "
    L"FCBomNumber: the new version";
inline constexpr wchar_t kChangeType[] =
    L"FChangeType of a notice's line: 11021 added, 11022 altered, 11023 deleted; FChildID: the BOM's line that it changes";

// ---- arguments and results

inline constexpr wchar_t kTransType[] = L"FTransType, the type of the bill: 50 BOM, 53 customer BOM";
inline constexpr wchar_t kSaveRetCode[] = L"SaveRetCode: 99 the save is refused";
inline constexpr wchar_t kBomCheck[] =
    L"Result of BomCheck: 1 audited, 2 refused for the reason in strMsg, 0 a run-time error";
inline constexpr wchar_t kBomUndoCheck[] =
    L"Result of BomUndoCheck: 1 un-audited, 2 refused by a check, -1 refused because documents refer to the BOM, 0 a "
    L"run-time error";
inline constexpr wchar_t kDelInfo[] =
    L"Result of GetBomDelInfo and GetBomModifyInfo: 1 it may be done, 2 it may not, 0 the check itself failed";
inline constexpr wchar_t kBomUsed[] =
    L"Result of CheckBomUsed: 0 nothing uses the BOM, 1 it is used, as strInfo says";
inline constexpr wchar_t kDisable[] =
    L"Result of UpdateDisableStatus: SUCCESS; or the numbers of the customer BOMs that use this one; or [Associated:] and "
    L"the documents that use it";
inline constexpr wchar_t kRelation[] = L"strRel, FRuleID: Rel goes with, Mut excludes";

// ---- the browser's tree

inline constexpr wchar_t kTree[] =
    L"FKey of a row: ga the root, gb and an id a group, gc and an id a BOM; FRelative: the FKey of the row above";
inline constexpr wchar_t kIcon[] =
    L"FImgNormal, the icon: 1 a group, 13 an ordinary BOM in use, 3 another ordinary BOM, 15 a configuration BOM, 18 a "
    L"planning BOM, 17 any other";
inline constexpr wchar_t kItemClass[] = L"FErpClsID, the class of an item: 2 made";
inline constexpr wchar_t kLevel[] =
    L"FBootID: the root of the group; FIndex: how many levels below it a chosen group is, 0 for a chosen one itself";

} // namespace demo::codes
