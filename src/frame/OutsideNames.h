// The outside objects as the component calls them: every ProgID and every member name, in one place for
// whoever integrates the component with another release of the system.
#pragma once

namespace mbom::outside {

// The shared data-access library: a global object a thread, which hands out data contexts.
namespace global {
inline constexpr wchar_t kProgId[] = L"QorvaneGlobal.Global";
inline constexpr wchar_t kGetDataContext[] = L"GetDataContext";
} // namespace global

namespace context {
inline constexpr wchar_t kVoteAbort[] = L"VoteAbort";
inline constexpr wchar_t kVoteComplete[] = L"VoteComplete";
inline constexpr wchar_t kGetCallerInfo[] = L"GetCallerInfo";
inline constexpr wchar_t kBindDsn[] = L"BindDsn";
inline constexpr wchar_t kGetConnection[] = L"GetConnection";
inline constexpr wchar_t kGetConnectionObject[] = L"GetConnectionObject";
} // namespace context

namespace callerInfo {
inline constexpr wchar_t kCallerKey[] = L"CallerKey";
}

// The foundation collections and the foundation's text formatting.
namespace dictionary {
inline constexpr wchar_t kProgId[] = L"ruvo10.Dictionary";
inline constexpr wchar_t kValue[] = L"Value";
inline constexpr wchar_t kExists[] = L"Exists";
inline constexpr wchar_t kCount[] = L"Count";
inline constexpr wchar_t kGetValue[] = L"GetValue";
} // namespace dictionary

namespace vector {
inline constexpr wchar_t kProgId[] = L"ruvo10.Vector";
inline constexpr wchar_t kItem[] = L"Item";
inline constexpr wchar_t kUBound[] = L"UBound";
inline constexpr wchar_t kAdd[] = L"Add";
} // namespace vector

namespace foundation {
inline constexpr wchar_t kProgId[] = L"ruvo10.Global";
inline constexpr wchar_t kFormatText[] = L"FormatText";
} // namespace foundation

// The resource loader and this component's resource module.
namespace loader {
inline constexpr wchar_t kProgId[] = L"TarnelResLoader.Loader";
inline constexpr wchar_t kResFileBaseName[] = L"ResFileBaseName";
inline constexpr wchar_t kLanguageID[] = L"LanguageID";
inline constexpr wchar_t kLoadString[] = L"LoadString";
inline constexpr wchar_t kBaseName[] = L"TarnelManufacture";
} // namespace loader

// The shared base library: its object factory creates the rest of it.
namespace factory {
inline constexpr wchar_t kProgId[] = L"QorvaneWoskBase.ObjectFactory";
inline constexpr wchar_t kCreateServerObject[] = L"CreateServerObject";
} // namespace factory

namespace security {
inline constexpr wchar_t kProgId[] = L"QorvaneWoskBase.SecurityInfo";
inline constexpr wchar_t kGetCurrentUserID[] = L"GetCurrentUserID";
} // namespace security

namespace profile {
inline constexpr wchar_t kProgId[] = L"QorvaneWoskBase.SystemProfile";
inline constexpr wchar_t kGetProfile[] = L"GetProfile";
} // namespace profile

// The rules of bill numbers, created by the object factory.
namespace codeRule {
inline constexpr wchar_t kProgId[] = L"QorvaneMBillCodeRule.clsBillCodeRule";
inline constexpr wchar_t kGetItemByBillType[] = L"GetItemByBillType";
inline constexpr wchar_t kGetNewBillID[] = L"GetNewBillID";
} // namespace codeRule

// The bill package: a bill of any kind with its template, created by the object factory.
namespace billPackage {
inline constexpr wchar_t kProgId[] = L"QorvaneBillDataAccess.clsBillPackage";
inline constexpr wchar_t kGetBillPackage[] = L"GetBillPackage";
inline constexpr wchar_t kBillDataHeadStruct[] = L"BillDataHeadStruct";
inline constexpr wchar_t kBillDataHeadValue[] = L"BillDataHeadValue";
inline constexpr wchar_t kBillDataEntryStruct[] = L"BillDataEntryStruct";
inline constexpr wchar_t kBillDataEntrysValue[] = L"BillDataEntrysValue";
inline constexpr wchar_t kBillDataEntryValue[] = L"BillDataEntryValue";
} // namespace billPackage

// The procedure log.
namespace log {
inline constexpr wchar_t kProgId[] = L"VexoLogMsg.Log";
inline constexpr wchar_t kIsEnabled[] = L"IsEnabled";
inline constexpr wchar_t kLogStart[] = L"LogStart";
inline constexpr wchar_t kLogEnd[] = L"LogEnd";
} // namespace log

namespace ado {
inline constexpr wchar_t kCommandProgId[] = L"ADODB.Command";
inline constexpr wchar_t kRecordsetProgId[] = L"ADODB.Recordset";
inline constexpr wchar_t kExecute[] = L"Execute";
inline constexpr wchar_t kCommandTimeout[] = L"CommandTimeout";
inline constexpr wchar_t kBof[] = L"BOF";
inline constexpr wchar_t kEof[] = L"EOF";
inline constexpr wchar_t kMoveFirst[] = L"MoveFirst";
inline constexpr wchar_t kMoveNext[] = L"MoveNext";
inline constexpr wchar_t kFields[] = L"Fields";
inline constexpr wchar_t kCount[] = L"Count";
inline constexpr wchar_t kItem[] = L"Item";
inline constexpr wchar_t kName[] = L"Name";
inline constexpr wchar_t kValue[] = L"Value";
inline constexpr wchar_t kOpen[] = L"Open";
inline constexpr wchar_t kClose[] = L"Close";
inline constexpr wchar_t kNextRecordset[] = L"NextRecordset";
inline constexpr wchar_t kState[] = L"State";
inline constexpr wchar_t kRecordCount[] = L"RecordCount";
inline constexpr wchar_t kCursorLocation[] = L"CursorLocation";
inline constexpr wchar_t kCursorType[] = L"CursorType";
inline constexpr wchar_t kLockType[] = L"LockType";
inline constexpr wchar_t kActiveConnection[] = L"ActiveConnection";
inline constexpr wchar_t kCommandType[] = L"CommandType";
inline constexpr wchar_t kCommandText[] = L"CommandText";
inline constexpr wchar_t kParameters[] = L"Parameters";
inline constexpr wchar_t kCreateParameter[] = L"CreateParameter";
inline constexpr wchar_t kAppend[] = L"Append";
} // namespace ado

// What a machine has to have, by ProgID. The procedure log is not among them: without it nothing is logged.
inline constexpr const wchar_t* kProgIds[] = {
    global::kProgId,   dictionary::kProgId,  vector::kProgId,     foundation::kProgId,
    loader::kProgId,   factory::kProgId,     security::kProgId,   profile::kProgId,
    codeRule::kProgId, billPackage::kProgId, ado::kCommandProgId, ado::kRecordsetProgId};

} // namespace mbom::outside
