// The protocol of votes, for every method: recordsets and connections are let go before the vote to complete
// and after a vote to abort, a failure stays what it was although a vote fails too, a refusal is none
// whichever vote fails, and what is written goes over the connection of the context that then votes. The data
// access is played: it counts what the component holds whenever it votes.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/Client.h"
#include "tests/support/Collections.h"
#include "tests/support/Printing.h"
#include "tests/support/Replacement.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;

// What the played data access answers with, and what it has seen of the call that runs.
struct Played {
  int rows = 1; // of every result
  std::function<Variant(const std::wstring& statement, const Variant& field)> value;
  int failAt = 0;            // the statement that fails, counted from 1; 0 for none
  std::wstring failingVotes; // "abort", "complete" or "all"
  size_t firstFailing = 0;   // from this vote of the call on, counted from 1, votes fail; 0 for none
  size_t lastFailing = 0;    // and up to this one
  int statements = 0;        // so far
  int recordsets = 0;        // that the component holds now
  int connections = 0;       // the same
  int closed = 0;            // recordsets that it has closed
  int contexts = 0;          // made so far
  int lastWritten = 0;       // the context whose connection executed the last statement
  int lastVoter = 0;         // the context of the last vote
  size_t votesAtFailure = 0;
  std::vector<std::wstring> released; // contexts and caller infos, in the order in which they went
  std::vector<std::wstring> votes;    // each with the counts at its time
};
Played g_played;

// The rows of a statement's result. A BOM number that is looked for is free, and an engineering change has no
// line twice.
int RowsOf(const std::wstring& statement) {
  const bool none = statement.find(L"where fbomnumber='") != std::wstring::npos ||
                    statement.find(L"select Top 1 t2.FEntryId") != std::wstring::npos;
  return none ? 0 : g_played.rows;
}

void Vote(const wchar_t* vote) {
  g_played.votes.push_back(std::wstring(vote) + L" recordsets " + std::to_wstring(g_played.recordsets) +
                           L" connections " + std::to_wstring(g_played.connections) + L" closed " +
                           std::to_wstring(g_played.closed));
  const bool counted = g_played.firstFailing != 0 && g_played.votes.size() >= g_played.firstFailing &&
                       g_played.votes.size() <= g_played.lastFailing;
  if (counted || g_played.failingVotes == vote || g_played.failingVotes == L"all")
    throw com::ComError(E_FAIL, L"played", L"the vote fails");
}

// The extension's query may fail without harm to its ledger.
void RunPlayed(const std::wstring& statement) {
  if (statement.find(L"t_components") != std::wstring::npos) return;
  if (++g_played.statements != g_played.failAt) return;
  g_played.votesAtFailure = g_played.votes.size();
  throw com::ComError(E_FAIL, L"played", L"the statement fails");
}

class PlayedField {
 public:
  explicit PlayedField(Variant value) : value_(std::move(value)) {}
  Variant Value() const { return value_; }
  std::wstring Name() const { return L"FInterID"; }

 private:
  Variant value_;
};

class PlayedFields {
 public:
  explicit PlayedFields(std::wstring statement) : statement_(std::move(statement)) {}
  Object Item(const Variant& field) const {
    return com::ToObject(com::Make<PlayedField>(g_played.value(statement_, field)));
  }
  int32_t Count() const { return 1; }

 private:
  std::wstring statement_;
};

class PlayedRecordset {
 public:
  PlayedRecordset() { ++g_played.recordsets; }
  explicit PlayedRecordset(std::wstring statement) : PlayedRecordset() { Show(std::move(statement)); }
  ~PlayedRecordset() { --g_played.recordsets; }
  PlayedRecordset(const PlayedRecordset&) = delete;
  PlayedRecordset& operator=(const PlayedRecordset&) = delete;

  void PutAny(const Variant& /*value*/) {}
  void Open(const Variant& source, const Variant& /*connection*/, int32_t /*cursor*/, int32_t /*lock*/,
            int32_t /*options*/) {
    const std::wstring text = source.IsObject() ? L"command" : source.AsText();
    RunPlayed(text);
    Show(text);
  }
  void Close() {
    ++g_played.closed;
    open_ = false;
  }
  int32_t State() const { return open_ ? 1 : 0; }
  bool Eof() const { return row_ >= RowsOf(statement_); }
  bool Bof() const { return RowsOf(statement_) == 0; }
  void MoveFirst() { row_ = 0; }
  void MoveNext() { ++row_; }
  int32_t RecordCount() const { return RowsOf(statement_); }
  Object Fields() const { return com::ToObject(com::Make<PlayedFields>(statement_)); }
  Object NextRecordset(const Variant& /*affected*/) const { return {}; }

 private:
  void Show(std::wstring statement) {
    statement_ = std::move(statement);
    open_ = true;
    row_ = 0;
  }

  std::wstring statement_;
  bool open_ = false;
  int row_ = 0;
};

class PlayedConnection {
 public:
  explicit PlayedConnection(int context) : context_(context) { ++g_played.connections; }
  ~PlayedConnection() { --g_played.connections; }
  PlayedConnection(const PlayedConnection&) = delete;
  PlayedConnection& operator=(const PlayedConnection&) = delete;

  Object Execute(const std::wstring& text, const Variant& /*affected*/, int32_t /*options*/) {
    RunPlayed(text);
    if (!com::Lower(text).starts_with(L"select")) g_played.lastWritten = context_;
    return com::ToObject(com::Make<PlayedRecordset>(text));
  }
  int32_t CursorLocation() const { return 2; }
  void PutAny(const Variant& /*value*/) {}

 private:
  int context_;
};

class PlayedParameter {
 public:
  std::wstring Value() const { return L"61"; }
};

class PlayedCommand {
 public:
  void PutAny(const Variant& /*value*/) {}
  Object CreateParameter(const std::wstring& /*name*/, int32_t /*type*/, int32_t /*direction*/,
                         const Variant& /*size*/, const Variant& /*value*/) {
    return com::ToObject(com::Make<PlayedParameter>());
  }
  Object Parameters() {
    self_->AddRef();
    return Object(com::Ptr<IDispatch>::Attach(self_));
  }
  void Append(const Object& /*parameter*/) {}
  Object Item(int32_t /*index*/) { return com::ToObject(com::Make<PlayedParameter>()); }
  Object Execute() {
    RunPlayed(L"command");
    return com::ToObject(com::Make<PlayedRecordset>(L"command"));
  }
  void SetSelf(IDispatch* self) { self_ = self; }

 private:
  IDispatch* self_ = nullptr;
};

class PlayedCaller {
 public:
  PlayedCaller() = default;
  ~PlayedCaller() { g_played.released.emplace_back(L"caller info"); }
  PlayedCaller(const PlayedCaller&) = delete;
  PlayedCaller& operator=(const PlayedCaller&) = delete;

  std::wstring CallerKey() const { return L"5"; }
};

class CountingContext {
 public:
  CountingContext() = default;
  ~CountingContext() { g_played.released.emplace_back(L"context"); }
  CountingContext(const CountingContext&) = delete;
  CountingContext& operator=(const CountingContext&) = delete;

  void VoteAbort() { CastVote(L"abort"); }
  void VoteComplete() { CastVote(L"complete"); }
  Object GetCallerInfo() { return com::ToObject(com::Make<PlayedCaller>()); }
  Variant BindDsn(const std::wstring& /*sDsn*/) { return {}; }
  Object GetConnection() { return com::ToObject(com::Make<PlayedConnection>(number_)); }

 private:
  void CastVote(const wchar_t* vote) const {
    g_played.lastVoter = number_;
    Vote(vote);
  }

  int number_ = ++g_played.contexts;
};

class CountingGlobal {
 public:
  Object GetDataContext() { return com::ToObject(com::Make<CountingContext>()); }
};

// Whatever the object factory is asked for.
class PlayedServerObject {
 public:
  int32_t GetCurrentUserID(const std::wstring& /*key*/) { return 5; }
  bool GetProfile(const Variant& /*dsn*/, const Variant& /*category*/, const Variant& /*key*/) {
    return false;
  }
  Variant GetItemByBillType(const Variant& /*dsn*/, const Variant& /*type*/) {
    const Variant items[] = {Variant(L"FItemID")};
    return Variant::Array(items, 1);
  }
  std::wstring GetNewBillID(const Variant& /*a*/, const Variant& /*b*/, const Variant& /*c*/,
                            const Variant& /*d*/) {
    return L"N1";
  }
};

class PlayedFactory {
 public:
  Object CreateServerObject(const std::wstring& /*progId*/, const Variant& /*server*/) {
    return com::ToObject(com::Make<PlayedServerObject>());
  }
};

} // namespace
} // namespace mbom::test

namespace com {

using namespace mbom::test;

template <>
const DispatchTable& TableOf<PlayedField>() {
  static const DispatchTable table(IID_NULL, {
                                                 PropertyGet<&PlayedField::Value>(1, L"Value"),
                                                 PropertyGet<&PlayedField::Name>(2, L"Name"),
                                             });
  return table;
}
template <>
const DispatchTable& TableOf<PlayedFields>() {
  static const DispatchTable table(IID_NULL, {
                                                 PropertyGet<&PlayedFields::Item>(1, L"Item", {L"field"}),
                                                 PropertyGet<&PlayedFields::Count>(2, L"Count"),
                                             });
  return table;
}
template <>
const DispatchTable& TableOf<PlayedRecordset>() {
  static const DispatchTable table(
      IID_NULL,
      {
          PropertyPut<&PlayedRecordset::PutAny>(1, L"ActiveConnection", {L"value"}),
          PropertyPut<&PlayedRecordset::PutAny>(2, L"CursorLocation", {L"value"}),
          PropertyPut<&PlayedRecordset::PutAny>(3, L"CursorType", {L"value"}),
          PropertyPut<&PlayedRecordset::PutAny>(4, L"LockType", {L"value"}),
          Method<&PlayedRecordset::Open>(
              5, L"Open", {L"source", {L"connection", Variant::Missing()}, L"cursor", L"lock", L"options"}),
          Method<&PlayedRecordset::Close>(6, L"Close"),
          PropertyGet<&PlayedRecordset::State>(7, L"State"),
          PropertyGet<&PlayedRecordset::Eof>(8, L"EOF"),
          PropertyGet<&PlayedRecordset::Bof>(9, L"BOF"),
          Method<&PlayedRecordset::MoveFirst>(10, L"MoveFirst"),
          Method<&PlayedRecordset::MoveNext>(11, L"MoveNext"),
          PropertyGet<&PlayedRecordset::RecordCount>(12, L"RecordCount"),
          PropertyGet<&PlayedRecordset::Fields>(13, L"Fields"),
          Method<&PlayedRecordset::NextRecordset>(14, L"NextRecordset", {{L"affected", Variant::Missing()}}),
      });
  return table;
}
template <>
const DispatchTable& TableOf<PlayedConnection>() {
  static const DispatchTable table(
      IID_NULL, {
                    Method<&PlayedConnection::Execute>(
                        1, L"Execute", {L"text", {L"affected", Variant::Missing()}, {L"options", -1}}),
                    PropertyGet<&PlayedConnection::CursorLocation>(2, L"CursorLocation"),
                    PropertyPut<&PlayedConnection::PutAny>(2, L"CursorLocation", {L"value"}),
                });
  return table;
}
template <>
const DispatchTable& TableOf<PlayedParameter>() {
  static const DispatchTable table(IID_NULL, {PropertyGet<&PlayedParameter::Value>(1, L"Value")});
  return table;
}
template <>
const DispatchTable& TableOf<PlayedCommand>() {
  static const DispatchTable table(
      IID_NULL, {
                    PropertyPut<&PlayedCommand::PutAny>(1, L"ActiveConnection", {L"value"}),
                    PropertyPut<&PlayedCommand::PutAny>(2, L"CommandType", {L"value"}),
                    PropertyPut<&PlayedCommand::PutAny>(3, L"CommandText", {L"value"}),
                    Method<&PlayedCommand::CreateParameter>(4, L"CreateParameter",
                                                            {L"name",
                                                             L"type",
                                                             L"direction",
                                                             {L"size", Variant::Missing()},
                                                             {L"value", Variant::Missing()}}),
                    PropertyGet<&PlayedCommand::Parameters>(5, L"Parameters"),
                    Method<&PlayedCommand::Append>(6, L"Append", {L"parameter"}),
                    PropertyGet<&PlayedCommand::Item>(7, L"Item", {L"index"}),
                    Method<&PlayedCommand::Execute>(8, L"Execute"),
                });
  return table;
}
template <>
const DispatchTable& TableOf<PlayedCaller>() {
  static const DispatchTable table(IID_NULL, {PropertyGet<&PlayedCaller::CallerKey>(1, L"CallerKey")});
  return table;
}
template <>
const DispatchTable& TableOf<CountingContext>() {
  static const DispatchTable table(IID_NULL,
                                   {
                                       Method<&CountingContext::VoteAbort>(1, L"VoteAbort"),
                                       Method<&CountingContext::VoteComplete>(2, L"VoteComplete"),
                                       Method<&CountingContext::GetCallerInfo>(3, L"GetCallerInfo"),
                                       Method<&CountingContext::BindDsn>(4, L"BindDsn", {L"sDsn"}),
                                       Method<&CountingContext::GetConnection>(5, L"GetConnection"),
                                       Method<&CountingContext::GetConnection>(6, L"GetConnectionObject"),
                                   });
  return table;
}
template <>
const DispatchTable& TableOf<CountingGlobal>() {
  static const DispatchTable table(IID_NULL, {Method<&CountingGlobal::GetDataContext>(1, L"GetDataContext")});
  return table;
}
template <>
const DispatchTable& TableOf<PlayedServerObject>() {
  static const DispatchTable table(
      IID_NULL,
      {
          Method<&PlayedServerObject::GetCurrentUserID>(1, L"GetCurrentUserID", {L"key"}),
          Method<&PlayedServerObject::GetProfile>(2, L"GetProfile", {L"dsn", L"category", L"key"}),
          Method<&PlayedServerObject::GetItemByBillType>(3, L"GetItemByBillType", {L"dsn", L"type"}),
          Method<&PlayedServerObject::GetNewBillID>(4, L"GetNewBillID", {L"a", L"b", L"c", L"d"}),
      });
  return table;
}
template <>
const DispatchTable& TableOf<PlayedFactory>() {
  static const DispatchTable table(
      IID_NULL, {Method<&PlayedFactory::CreateServerObject>(1, L"CreateServerObject",
                                                            {L"progId", {L"server", Variant::Missing()}})});
  return table;
}

} // namespace com

namespace mbom::test {
namespace {

// What becomes of a method's failures.
enum class OnFailure { Traps, AbortsAndRises, Rises };

struct PublicMethod {
  const wchar_t* className;
  const wchar_t* name;
  OnFailure onFailure;
  std::function<std::vector<Variant>()> arguments;
  int rows = 1;
  // The value of the field that decides whether the call succeeds, where it is not 0.
  const wchar_t* decidingField = L"";
  Variant decidingValue = 0;
};

void PrintTo(const PublicMethod& method, std::ostream* out) {
  *out << com::ToUtf8(method.className) << '.' << com::ToUtf8(method.name);
}

constexpr wchar_t kDsn[] = L"Language=chs;SubID=SC";
constexpr wchar_t kFirstField[] = L"(the first)"; // for a deciding field that has no name

Object Nothing() {
  return {};
}
Object Bill() {
  return MakeVector({MakeDictionary({{L"FInterID", 1}, {L"FTransType", 50}}),
                     MakeDictionary({{L"UseStatusChange", true}, {L"FItemID", 2}})});
}
Object CopyOrder() {
  return MakeDictionary(
      {{L"FInterID", 1}, {L"FBOMNumber", L"C"}, {L"FParentID", 2}, {L"FCheckID", 3}, {L"FOperatorID", 4}});
}
Object Imported() {
  return MakeDictionary({{L"BOMNumber", L"B"}, {L"Entry", MakeVector({MakeDictionary({})})}});
}

std::vector<PublicMethod> EveryMethod() {
  using enum OnFailure;
  const auto args = [](auto... values) {
    return [=]() -> std::vector<Variant> { return {Variant(values)...}; };
  };
  const auto update = [](const wchar_t* name, OnFailure onFailure, auto arguments) {
    return PublicMethod{L"BomUpdate", name, onFailure, arguments};
  };
  const auto noGroups = [] { return std::vector<Variant>{kDsn, Nothing(), MakeDictionary({}), true}; };
  std::vector<PublicMethod> methods{
      update(L"BeginSave", Rises,
             [] {
               return std::vector<Variant>{kDsn, Bill(), L""};
             }),
      update(L"EndSave", Traps,
             [] {
               return std::vector<Variant>{kDsn, Bill(), L""};
             }),
      update(L"UpdateIcBomStatus", Rises, args(kDsn, L"B1")),
      update(L"AddBomGroup", Traps,
             [] {
               return std::vector<Variant>{kDsn, MakeDictionary({{L"FParentID", 0}}), 0};
             }),
      update(L"UpdateBomGroup", Rises,
             [] {
               return std::vector<Variant>{kDsn, MakeDictionary({{L"FName", L"x"}}), L""};
             }),
      update(L"DeleteBom", Rises, args(kDsn, L"FInterID=1")),
      update(L"DeleteBomGroup", Rises, args(kDsn, L"FInterID=1")),
      update(L"UpdateBOM", Rises,
             [] {
               return std::vector<Variant>{
                   kDsn, MakeVector({MakeDictionary({{L"FFieldID", L"FNote"}, {L"FValue", L"1"}})}), L""};
             }),
      update(L"CheckBomUsed", Traps, args(kDsn, 1, L"")),
      {L"CBomCheck", L"BomCheck", Traps, args(kDsn, 1, L"B1", 7, L"")},
      {L"CBomCheck", L"BomUndoCheck", Traps, args(kDsn, 1, L"B1", 7, 0, L""), 1, L"FStatus", 1},
      {L"CBomCheck", L"GetBomDelInfo", Traps, args(kDsn, 1, L"B1", L"")},
      {L"CBomCheck", L"GetBomModifyInfo", Traps, args(kDsn, 1, L"B1", L"")},
      {L"CBomFunction", L"GetBomCodeNum", Traps, args(kDsn, L"P"), 1, L"fcurno", 7},
      {L"CBomFunction", L"UpdateBomNumber", Traps, args(kDsn, 1, L"B1", L"")},
      {L"CBomFunction", L"CopyBom", Traps,
       [] {
         return std::vector<Variant>{kDsn, CopyOrder()};
       }},
      {L"CBomFunction", L"GetRoutingData", Traps, args(kDsn, true, -1, L"")},
      {L"CBomFunction", L"UpdateBomRouting", Traps,
       [] {
         return std::vector<Variant>{kDsn,
                                     MakeVector({MakeDictionary({{L"FBomType", 1}, {L"FInterID", 1}})})};
       }},
      {L"CBomFunction", L"UpdateBomGroup", Traps, args(kDsn, 1, 2, 3)},
      {L"CBomFunction", L"UpdateBomGroupName", Traps, args(kDsn, 1, L"x")},
      {L"BOMImport", L"UpdateBomGroup", Rises,
       [] {
         return std::vector<Variant>{kDsn, MakeDictionary({{L"Number", L"1"}})};
       }},
      {L"BOMImport", L"UpdateBOM", Rises,
       [] {
         return std::vector<Variant>{kDsn, Imported()};
       }},
      {L"PPorderImort", L"UpdatePPOrder", Rises,
       [] {
         return std::vector<Variant>{kDsn, Imported()};
       }},
      {L"CEcnInfo", L"EndSave", Traps,
       [] {
         return std::vector<Variant>{kDsn, Bill(), L""};
       },
       1, L"", 0},
      {L"CEcnInfo", L"GetThenCheckCBomNumber", AbortsAndRises, args(kDsn, L"B1")},
      {L"CEcnInfo", L"GetCheckCBomNoChecked", AbortsAndRises, args(kDsn, 1)},
      {L"CEcnInfo", L"ReturnEcnStatus", AbortsAndRises, args(kDsn, 1)},
      {L"CEcnInfo", L"ReturnEcnStatusByNumber", AbortsAndRises, args(kDsn, L"E1")},
      {L"CEcnInfo", L"CheckBomUsed", Traps, args(kDsn, 1, L"B1", L""), 0},
      {L"CEcnInfo", L"CheckEcnBom", AbortsAndRises, args(kDsn, 1)},
      {L"CEcnInfo", L"StarUpEcn", Traps, args(kDsn, 1, 2, 3)},
      {L"CEcnInfo", L"UnStarUpEcn", Traps, args(kDsn, 1)},
      {L"CEcnInfo", L"GetEcnBomHead", AbortsAndRises, args(kDsn, L"1")},
      {L"CEcnInfo", L"GetEcnBomEntry", AbortsAndRises, args(kDsn, L"1", L"")},
      {L"CEcnInfo", L"AnalyseBomNumber", AbortsAndRises, args(kDsn, L"SELECT 1")},
      {L"BomView", L"GetBomGroupList", AbortsAndRises, noGroups},
      {L"BomView", L"GetBomLstInfo", AbortsAndRises, noGroups},
      {L"BomView", L"ExistsEcnBill", AbortsAndRises, args(kDsn)},
      {L"clsReadUserDefined", L"GetUserDefinedValue", AbortsAndRises,
       [] {
         return std::vector<Variant>{kDsn, L"50", com::ToObject(com::Make<PlayedRecordset>()), true};
       },
       0},
      {L"clsMCustBOM", L"UpdateAuditFlag", Traps, args(kDsn, L"1", true, L"", L""), 0},
      {L"clsMCustBOM", L"GetUsedCustBomNumber", Traps, args(kDsn, L"1")},
      {L"clsMCustBOM", L"UpdateDisableStatus", Traps, args(kDsn, L"1", true), 0},
      {L"clsMCustBOM", L"CheckCustBOMIsAssisted", Traps, args(kDsn, L"1", L"2", L""), 0},
      {L"clsMCustBOM", L"GetTreeViewDataM", AbortsAndRises, args(kDsn)},
      {L"clsMCustBOM", L"GenRightTopDataSQL", AbortsAndRises, args(kDsn, L"1", L"1")},
      {L"clsMCustBOM", L"GetRightTopDataM", AbortsAndRises, args(kDsn, L"1", L"1")},
      {L"clsMCustBOM", L"GenRightBottomSQL", AbortsAndRises, args(kDsn, L"1")},
      {L"clsMCustBOM", L"GetRightBottomDataM", AbortsAndRises, args(kDsn, L"1")},
      {L"clsMCustBOM", L"bGetBillNoInfo", AbortsAndRises, args(kDsn, L"", L"", L"", 0, L"chs")},
      {L"clsMCustBOM", L"CopyPasteCustBom", AbortsAndRises, args(kDsn, L"1", L"chs"), 1, L"FMaxNum", 41},
      {L"clsMCustBOM", L"SetCustBOM", AbortsAndRises, args(kDsn, L"1", L"2", L"3")},
      {L"clsMCustBOM", L"GetItemFNumber", AbortsAndRises, args(kDsn, L"1")},
      {L"clsMCustBOM", L"GetRecordSet", AbortsAndRises, args(kDsn, L"SELECT 1")},
      {L"clsMCustBOM", L"GetRuleByItem", AbortsAndRises, args(kDsn, L"1", L"", L"")},
      {L"clsMCustBOM", L"GetTeZhenSubItems", AbortsAndRises, args(kDsn, L"1")},
      {L"clsMBOMRule", L"GetICItemParent", AbortsAndRises, args(kDsn, L"1")},
      {L"clsMBOMRule", L"GetRecordSet", AbortsAndRises, args(kDsn, L"SELECT 1")},
      {L"BomInfo", L"GetBomInfo", Rises, args(kDsn)},
      {L"BomInfo", L"GetBomEntryInfo", Rises, args(kDsn)},
      {L"BomInfo", L"GetBomGroupInfo", Rises, args(kDsn)},
      {L"BomInfo", L"GetInfo", Rises, args(kDsn, L"SELECT 1")},
      {L"BomInfo", L"GetItemForbitNumber", Rises, args(kDsn, 1)},
  };
  for (const wchar_t* name :
       {L"GetBomList", L"GetCustBomList", L"GetBomSimplifyList", L"GetCustBomSimplifyList",
        L"GetBomSimplifyListEx", L"GetBomTitle", L"GetBomEntryTitle", L"GetBomUserDefinedTitle",
        L"GetBomEntryUserDefinedTitle", L"GetCustBomTitle", L"GetCustBomEntryTitle", L"GetBomLdgInfo",
        L"GetBomEntryLdgInfo", L"GetCustBomLdgInfo", L"GetCustBomEntryLdgInfo"})
    methods.push_back({L"BomView", name, AbortsAndRises, args(kDsn), 0});
  for (const wchar_t* name :
       {L"GetBomInfoByItemNumber", L"GetBomInfoByBomNumber", L"GetBomInfoByItemNumber1",
        L"SelectBomInfoByItemNumber", L"GetBomInfoLikeInfo", L"GetBomInfoByItemID", L"GetBomList",
        L"GetAllBomList", L"GetChildBomInfoByBomNo", L"GetChildBomInfoByItemID"})
    methods.push_back({L"BomInfo", name, Traps, args(kDsn, L"1")});
  return methods;
}

// One call, and what the played data access has seen of it.
struct Seen {
  Played played;       // as the call left it, with the result still held
  int returned = 0;    // recordsets in the result
  std::wstring raised; // the description of what rose
  Variant result;      // where it is no object
};

constexpr size_t kEver = 1000; // more votes than any call casts

Seen CallOnce(const PublicMethod& method, int failAt, const wchar_t* failingVotes = L"",
              size_t firstFailing = 0, size_t lastFailing = kEver) {
  Seen seen;
  InApartment([&] {
    const Replacement<CountingGlobal> global(L"QorvaneGlobal.Global");
    const Replacement<PlayedFactory> factory(L"QorvaneWoskBase.ObjectFactory");
    const Replacement<PlayedRecordset> recordset(L"ADODB.Recordset");
    const Replacement<PlayedCommand> command(L"ADODB.Command");
    g_played = {};
    g_played.rows = method.rows;
    g_played.failAt = failAt;
    g_played.value = [&](const std::wstring& statement, const Variant& field) -> Variant {
      if (statement.find(L"GETDATE") != std::wstring::npos) return Variant::Date(46000.5);
      if (statement.find(L"ELSE \r\n     SELECT -1") != std::wstring::npos) return -1;
      if (field.type() != VT_BSTR)
        return std::wstring(method.decidingField) == kFirstField ? method.decidingValue : 5;
      return com::EqualsNoCase(field.AsText(), method.decidingField) ? method.decidingValue : Variant(0);
    };
    g_played.failingVotes = failingVotes;
    Object object = Unhosted(method.className);
    std::vector<Variant> arguments = method.arguments();
    const int given = g_played.recordsets;
    g_played.votes.clear();
    g_played.firstFailing = firstFailing;
    g_played.lastFailing = lastFailing;
    Variant result;
    try {
      result = object.CallWith(method.name, arguments);
    } catch (const com::ComError& error) {
      seen.raised = error.description();
    }
    seen.played = g_played;
    if (!result.IsObject()) seen.result = result;
    // What the result holds is the caller's.
    const int held = g_played.recordsets;
    result = Variant();
    seen.returned = held - g_played.recordsets;
    arguments.clear();
    EXPECT_EQ(g_played.recordsets, 0) << "held after the call";
    EXPECT_EQ(held - seen.returned, given) << "held by nobody";
    object = Object();
    EXPECT_EQ(g_played.connections, 0) << "held after the object";
  });
  return seen;
}

class VoteProtocol : public testing::TestWithParam<PublicMethod> {
 protected:
  bool NeverRaises() const {
    return std::wstring(GetParam().className) == L"CEcnInfo" &&
           std::wstring(GetParam().name) == L"CheckBomUsed";
  }
  bool KeepsItsConnection() const { return std::wstring(GetParam().className) == L"CBomFunction"; }
  bool ClosesAfterItsVote() const { return std::wstring(GetParam().className) == L"CBomCheck"; }
};

// The counts of a vote, "recordsets 0 connections 1 closed 0".
std::wstring CountsOf(const std::wstring& vote) {
  return vote.substr(vote.find(L' ') + 1);
}

TEST_P(VoteProtocol, LetsGoBeforeTheVoteToComplete) {
  const PublicMethod& method = GetParam();
  const Seen seen = CallOnce(method, 0);
  ASSERT_EQ(seen.raised, L"");
  ASSERT_FALSE(seen.played.votes.empty());
  const std::wstring& last = seen.played.votes.back();
  ASSERT_TRUE(last.starts_with(L"complete")) << com::ToUtf8(last);
  const bool given = std::wstring(method.className) == L"clsReadUserDefined";
  if (ClosesAfterItsVote()) {
    EXPECT_EQ(CountsOf(last),
              L"recordsets 1 connections 1 closed " + std::to_wstring(seen.played.closed - 1));
    return;
  }
  EXPECT_EQ(CountsOf(last), L"recordsets " + std::to_wstring(seen.returned + (given ? 1 : 0)) +
                                L" connections " + (KeepsItsConnection() ? L"1" : L"0") + L" closed 0");
}

TEST_P(VoteProtocol, LetsGoAfterTheVoteToAbort) {
  const PublicMethod& method = GetParam();
  const int statements = CallOnce(method, 0).played.statements;
  ASSERT_GT(statements, 0);
  for (int failing = 1; failing <= statements; ++failing) {
    SCOPED_TRACE(failing);
    const Seen seen = CallOnce(method, failing);
    EXPECT_EQ(seen.raised, method.onFailure == OnFailure::Traps ? L"" : L"the statement fails");
    EXPECT_EQ(seen.returned, 0);
    if (method.onFailure == OnFailure::Rises) {
      // Nothing is voted after the failure; at its end the call holds nothing either.
      EXPECT_EQ(seen.played.connections, 0);
      continue;
    }
    // A call inside a call votes on its own, and then the outer one does.
    ASSERT_GT(seen.played.votes.size(), seen.played.votesAtFailure);
    for (size_t i = seen.played.votesAtFailure; i < seen.played.votes.size(); ++i)
      EXPECT_TRUE(seen.played.votes[i].starts_with(L"abort")) << com::ToUtf8(seen.played.votes[i]);
    const std::wstring& first = seen.played.votes[seen.played.votesAtFailure];
    EXPECT_EQ(first.find(L"connections 0"), std::wstring::npos) << com::ToUtf8(first);
    if (ClosesAfterItsVote()) {
      EXPECT_NE(first.find(L"recordsets 1"), std::wstring::npos) << com::ToUtf8(first);
    }
    EXPECT_EQ(seen.played.connections, KeepsItsConnection() ? 1 : 0);
  }
}

TEST_P(VoteProtocol, WritesOverTheConnectionOfTheContextThatVotes) {
  const Seen seen = CallOnce(GetParam(), 0);
  // A call that only opens recordsets executes nothing on a connection.
  if (seen.played.lastWritten != 0) {
    EXPECT_EQ(seen.played.lastWritten, seen.played.lastVoter);
  }
}

TEST_P(VoteProtocol, SaysWhatFailedWhicheverVoteFailsToo) {
  const PublicMethod& method = GetParam();
  const int statements = CallOnce(method, 0).played.statements;
  for (const wchar_t* votes : {L"abort", L"complete", L"all"}) {
    for (int failing = 1; failing <= statements; ++failing) {
      SCOPED_TRACE(com::ToUtf8(votes) + " " + std::to_string(failing));
      const Seen seen = CallOnce(method, failing, votes);
      if (NeverRaises()) {
        EXPECT_EQ(seen.raised, L"");
      } else if (seen.played.statements >= failing) {
        // A trapped failure leaves its vote to rise; a failure that rises is not replaced by its vote's.
        const bool trapped = method.onFailure == OnFailure::Traps;
        const bool abortFails = std::wstring(votes) != L"complete";
        EXPECT_EQ(seen.raised, !trapped ? L"the statement fails" : abortFails ? L"the vote fails" : L"");
      }
    }
  }
}

TEST_P(VoteProtocol, AnyVoteThatFailsIsAFailureOfTheCall) {
  const PublicMethod& method = GetParam();
  const size_t votes = CallOnce(method, 0).played.votes.size();
  for (size_t failing = 1; failing <= votes; ++failing) {
    SCOPED_TRACE(failing);
    const Seen seen = CallOnce(method, 0, L"", failing, failing);
    if (method.onFailure != OnFailure::Traps) {
      EXPECT_EQ(seen.raised, L"the vote fails");
      continue;
    }
    EXPECT_EQ(seen.raised, L"");
    EXPECT_EQ(seen.result, CallOnce(method, 1).result) << "what it answers to any failure";
    // A call inside a call votes on its own, and then the outer one does.
    ASSERT_GT(seen.played.votes.size(), failing);
    for (size_t i = failing; i < seen.played.votes.size(); ++i)
      EXPECT_TRUE(seen.played.votes[i].starts_with(L"abort")) << com::ToUtf8(seen.played.votes[i]);
  }
}

// Methods whose checks refuse.
std::vector<PublicMethod> EveryRefusal() {
  using enum OnFailure;
  std::vector<PublicMethod> refusals;
  const auto add = [&](const wchar_t* className, const wchar_t* name, int rows, const wchar_t* field,
                       int value) {
    for (PublicMethod method : EveryMethod()) {
      if (std::wstring(method.className) != className || std::wstring(method.name) != name) continue;
      method.rows = rows;
      method.decidingField = field;
      method.decidingValue = value;
      refusals.push_back(method);
    }
  };
  add(L"BomUpdate", L"EndSave", 1, L"FEcnInterID", 5);
  add(L"BomUpdate", L"AddBomGroup", 0, L"", 0);
  add(L"CBomCheck", L"BomCheck", 1, L"FStatus", 1);
  add(L"CBomCheck", L"BomUndoCheck", 1, L"FStatus", 0);
  add(L"CBomFunction", L"GetBomCodeNum", 0, L"", 0);
  add(L"CEcnInfo", L"CheckBomUsed", 1, L"", 0);
  add(L"clsMCustBOM", L"UpdateAuditFlag", 1, L"FStatus", 1);
  add(L"clsMCustBOM", L"UpdateDisableStatus", 1, L"", 0);
  // The deleted lines are as many as there are.
  refusals.push_back({L"CEcnInfo", L"EndSave", Traps,
                      [] {
                        return std::vector<Variant>{kDsn, Bill(), L""};
                      },
                      1, kFirstField, 0});
  return refusals;
}

class Refusals : public testing::TestWithParam<PublicMethod> {};

TEST_P(Refusals, AreNoErrorWhicheverVoteFails) {
  const PublicMethod& method = GetParam();
  const Seen refused = CallOnce(method, 0);
  ASSERT_EQ(refused.raised, L"");
  ASSERT_TRUE(refused.played.votes.back().starts_with(L"abort")) << "it refuses";
  const size_t vote = refused.played.votes.size();
  const Seen once = CallOnce(method, 0, L"", vote, vote);
  EXPECT_EQ(once.raised, L"");
  EXPECT_EQ(once.played.votes.size(), vote + 1) << "abort is voted again";
  const Seen ever = CallOnce(method, 0, L"", vote);
  EXPECT_EQ(ever.raised, L"");
  EXPECT_EQ(ever.result, once.result);
}

INSTANTIATE_TEST_SUITE_P(EveryRefusal, Refusals, testing::ValuesIn(EveryRefusal()),
                         [](const testing::TestParamInfo<PublicMethod>& method) {
                           return com::ToUtf8(method.param.className) + com::ToUtf8(method.param.name);
                         });

TEST(BomUpdateGroups, ANewIdIsGivenOnlyWhereTrueIsSaid) {
  const auto idAfter = [](int rows, size_t firstFailing) {
    Variant id = 77;
    bool added = false;
    PublicMethod method{
        L"BomUpdate", L"AddBomGroup", OnFailure::Traps, [&] {
          return std::vector<Variant>{kDsn, MakeDictionary({{L"FParentID", 0}}), Variant::Reference(id)};
        }};
    method.rows = rows;
    method.decidingField = L"NewInterId";
    method.decidingValue = 42;
    added = CallOnce(method, 0, L"", firstFailing, firstFailing).result == Variant(true);
    return std::to_wstring(id.AsLong()) + (added ? L" added" : L"");
  };
  EXPECT_EQ(idAfter(1, 0), L"42 added");
  EXPECT_EQ(idAfter(1, 1), L"77");
  EXPECT_EQ(idAfter(1, 2), L"77") << "the vote to complete fails";
  EXPECT_EQ(idAfter(0, 0), L"0");
  EXPECT_EQ(idAfter(0, 2), L"0") << "the refusal's vote fails";
}

TEST(Frame, LetsGoOfItsContextBeforeItsCallerInfo) {
  InApartment([] {
    const Replacement<CountingGlobal> global(L"QorvaneGlobal.Global");
    Object object = Unhosted(L"BomInfo");
    g_played.released.clear();
    object = Object();
    EXPECT_EQ(g_played.released, (std::vector<std::wstring>{L"context", L"caller info"}));
  });
}

INSTANTIATE_TEST_SUITE_P(EveryMethod, VoteProtocol, testing::ValuesIn(EveryMethod()),
                         [](const testing::TestParamInfo<PublicMethod>& method) {
                           return com::ToUtf8(method.param.className) + com::ToUtf8(method.param.name);
                         });

} // namespace
} // namespace mbom::test
