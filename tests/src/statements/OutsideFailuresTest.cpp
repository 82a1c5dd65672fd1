// Whatever the outside refuses, once: every outside call of a good run of every method fails, alone and with
// every later vote to abort failing too, on a database in memory and one in a file, in three languages. The
// data is as it was, the votes, the result, the arguments and the error are those that the method's kind of
// failure asks for, and the next call is as good as if nothing had happened.
//
// The calls are the cases of the statement catalogue. FAILURES_EVERY=n in the environment takes every n-th
// case and of it every n-th event; 1 takes all, which takes long.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <tuple>

#include "com/ComError.h"
#include "com/Elements.h"
#include "com/Text.h"
#include "com/ValueText.h"
#include "src/frame/Join.h"
#include "tests/src/statements/Cases.h"
#include "tests/support/Client.h"
#include "tests/support/Collections.h"
#include "tsql/tsql.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

size_t Every() {
  const char* const every = std::getenv("FAILURES_EVERY");
  return every ? static_cast<size_t>(std::max(std::atoi(every), 1)) : 8;
}

// ---- what the methods make of a failure

enum class OnFailure {
  AbortsAndRises, // votes abort, and the failure rises
  Traps,          // votes abort and answers the failure value; the failure of that vote rises
  NeverRaises,    // the same, and drops the failure of that vote
  Rises,          // votes nothing, and the failure rises
};

struct Rule {
  OnFailure onFailure = OnFailure::AbortsAndRises;
  Variant failureValue; // of those that trap
};

Rule RuleOf(const std::string& method) {
  using enum OnFailure;
  static const std::map<std::string, Rule> rules{
      {"BomUpdate.BeginSave", {Rises, {}}},
      {"BomUpdate.UpdateIcBomStatus", {Rises, {}}},
      {"BomUpdate.UpdateBomGroup", {Rises, {}}},
      {"BomUpdate.DeleteBom", {Rises, {}}},
      {"BomUpdate.DeleteBomGroup", {Rises, {}}},
      {"BomUpdate.UpdateBOM", {Rises, {}}},
      {"BOMImport.UpdateBomGroup", {Rises, {}}},
      {"BOMImport.UpdateBOM", {Rises, {}}},
      {"PPorderImort.UpdatePPOrder", {Rises, {}}},
      {"BomInfo.GetBomInfo", {Rises, {}}},
      {"BomInfo.GetBomEntryInfo", {Rises, {}}},
      {"BomInfo.GetBomGroupInfo", {Rises, {}}},
      {"BomInfo.GetInfo", {Rises, {}}},
      {"BomInfo.GetItemForbitNumber", {Rises, {}}},
      {"CEcnInfo.BeginSave", {Rises, {}}},
      {"CBomFunction.GetMaxNum", {Rises, {}}},
      {"BomUpdate.EndSave", {Traps, false}},
      {"BomUpdate.AddBomGroup", {Traps, false}},
      {"BomUpdate.CheckBomUsed", {Traps, -1}},
      {"BomUpdate.SetVisibelBySysProfile", {Traps, false}},
      {"CBomCheck.BomCheck", {Traps, 0}},
      {"CBomCheck.BomUndoCheck", {Traps, 0}},
      {"CBomCheck.GetBomDelInfo", {Traps, 0}},
      {"CBomCheck.GetBomModifyInfo", {Traps, 0}},
      {"CBomFunction.GetBomCodeNum", {Traps, -1}},
      {"CBomFunction.GetBomCodeNumEx", {Traps, L""}},
      {"CBomFunction.UpdateBomNumber", {Traps, 0}},
      {"CBomFunction.CopyBom", {Traps, -1}},
      {"CBomFunction.GetRoutingData", {Traps, Object()}},
      {"CBomFunction.UpdateBomRouting", {Traps, false}},
      {"CBomFunction.UpdateBomGroup", {Traps, false}},
      {"CBomFunction.UpdateBomGroupName", {Traps, false}},
      {"CEcnInfo.EndSave", {Traps, false}},
      {"CEcnInfo.CheckBomUsed", {NeverRaises, -1}},
      {"CEcnInfo.StarUpEcn", {Traps, false}},
      {"CEcnInfo.UnStarUpEcn", {Traps, false}},
      {"clsMCustBOM.UpdateAuditFlag", {Traps, false}},
      {"clsMCustBOM.GetUsedCustBomNumber", {Traps, L""}},
      {"clsMCustBOM.UpdateDisableStatus", {Traps, L"FAIL"}},
      {"clsMCustBOM.CheckCustBOMIsAssisted", {Traps, true}},
      {"BomInfo.GetBomInfoByItemNumber", {Traps, Object()}},
      {"BomInfo.GetBomInfoByBomNumber", {Traps, Object()}},
      {"BomInfo.GetBomInfoByItemNumber1", {Traps, Object()}},
      {"BomInfo.SelectBomInfoByItemNumber", {Traps, Object()}},
      {"BomInfo.GetBomInfoLikeInfo", {Traps, Object()}},
      {"BomInfo.GetBomInfoByItemID", {Traps, Object()}},
      {"BomInfo.GetBomList", {Traps, Object()}},
      {"BomInfo.GetAllBomList", {Traps, Object()}},
      {"BomInfo.GetChildBomInfoByBomNo", {Traps, Object()}},
      {"BomInfo.GetChildBomInfoByItemID", {Traps, Object()}},
  };
  const auto rule = rules.find(method);
  return rule == rules.end() ? Rule{} : rule->second;
}

// ---- events

std::wstring KindOf(const std::wstring& event) {
  return event.substr(0, event.find(L'\t'));
}

std::wstring DetailOf(const std::wstring& event) {
  const size_t tab = event.find(L'\t');
  return tab == std::wstring::npos ? std::wstring() : event.substr(tab + 1);
}

Texts KindsOf(const Texts& events) {
  Texts kinds;
  std::ranges::transform(events, std::back_inserter(kinds), KindOf);
  return kinds;
}

int32_t CountOf(const std::wstring& kind, std::span<const std::wstring> events) {
  return static_cast<int32_t>(
      std::ranges::count_if(events, [&](const std::wstring& event) { return KindOf(event) == kind; }));
}

bool IsVote(const std::wstring& event) {
  return event.starts_with(L"Vote");
}

// What a method does without: a text, the log, and the extension of the ledgers' columns.
bool IsDispensable(const std::wstring& event) {
  return event.starts_with(L"LoadString") || event.starts_with(L"Log") ||
         event.find(L"from t_components") != std::wstring::npos;
}

// An object makes its bill package once.
Texts WithoutPackage(Texts events) {
  std::erase_if(events, [](const std::wstring& event) {
    return event.starts_with(L"CreateServerObject") && event.ends_with(L"clsBillPackage");
  });
  return events;
}

// ---- values

std::wstring Described(const Variant& value);

bool Has(const Object& object, const wchar_t* member) {
  auto* name = const_cast<wchar_t*>(member);
  DISPID id = 0;
  return SUCCEEDED(object.pointer()->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id));
}

// All rows of a recordset from where it stands, a text each.
Texts RowTextsOf(const Object& recordset) {
  Texts texts;
  if (recordset.Get(L"EOF").AsBool()) return texts;
  const Variant rows = recordset.Call(L"GetRows");
  SAFEARRAY* const array = rows.raw().parray;
  const size_t columns = array->rgsabound[1].cElements; // the bounds stand in reverse
  const size_t count = array->rgsabound[0].cElements;
  const VARIANT* value = nullptr;
  com::Check(SafeArrayAccessData(array, reinterpret_cast<void**>(const_cast<VARIANT**>(&value))));
  for (size_t row = 0; row < count; ++row) {
    std::wstring& text = texts.emplace_back();
    for (size_t column = 0; column < columns; ++column, ++value)
      text += (value->vt == VT_NULL ? L"NULL" : com::ToText(Variant(*value))) + L"|";
  }
  SafeArrayUnaccessData(array);
  return texts;
}

std::wstring DescribedObject(const Object& object) {
  std::wstring text;
  if (Has(object, L"RecordCount")) {
    for (int32_t i = 0; i < object.Get(L"Fields").AsObject().Get(L"Count").AsLong(); ++i)
      text += object.Get(L"Fields").AsObject().Get(L"Item", i).AsObject().Get(L"Name").AsText() + L"|";
    for (const std::wstring& row : RowTextsOf(object)) text += L"\n" + row;
    return L"(" + text + L")";
  }
  if (Has(object, L"UBound")) {
    for (int32_t i = 1; i <= object.Get(L"UBound").AsLong(); ++i)
      text += Described(object.Get(L"Item", i)) + L"\n";
    return L"[" + text + L"]";
  }
  if (Has(object, L"Exists")) {
    for (const std::wstring& key : KeysOf(object))
      text += key + L"=" + Described(object.Get(L"Value", key)) + L"|";
    return L"{" + text + L"}";
  }
  return L"command " + object.Get(L"CommandText").AsText();
}

// The value with its type, objects in depth. Recordsets are read to their ends.
std::wstring Described(const Variant& value) {
  if (value.IsNull()) return L"NULL";
  if (value.IsMissing()) return L"missing";
  if (!value.IsObject()) return std::to_wstring(value.type()) + L" " + com::ToText(value);
  return value.AsObject() ? DescribedObject(value.AsObject()) : L"Nothing";
}

// Whether `text` is `whole` without some occurrences of `piece`. Blanks around a piece go with it, and rows
// may be sorted by what they lack, so it is characters that are counted.
bool IsWithout(const std::wstring& piece, const std::wstring& whole, const std::wstring& text) {
  const auto count = [](const std::wstring& characters) {
    std::map<wchar_t, ptrdiff_t> counts;
    for (const wchar_t c : characters)
      if (c != L' ') ++counts[c];
    return counts;
  };
  std::map<wchar_t, ptrdiff_t> missing = count(whole);
  for (const auto& [c, n] : count(text)) missing[c] -= n;
  std::erase_if(missing, [](const auto& counted) { return counted.second == 0; });
  if (missing.empty()) return true;
  std::map<wchar_t, ptrdiff_t> expected = count(piece);
  const ptrdiff_t times = expected.empty() ? 0 : missing[expected.begin()->first] / expected.begin()->second;
  for (auto& [c, n] : expected) n *= times;
  return times > 0 && missing == expected;
}

// ---- the data

// All rows of all tables.
using Contents = std::map<std::wstring, Texts>;

class Data {
 public:
  // What the database holds now is what Restore brings back.
  explicit Data(const TestDatabase& database) : connection_(Object::Create(L"ADODB.Connection")) {
    connection_.Call(L"Open", database.Dsn());
    for (const std::wstring& table :
         database.Rows(L"SELECT name FROM sysobjects WHERE xtype = 'U' ORDER BY name"))
      tables_.push_back(table);
    for (const std::wstring& table : tables_)
      connection_.Call(L"Execute", Join({L"SELECT * INTO kept_", table, L" FROM ", table}));
    kept_ = Read();
  }

  Contents Read() const {
    Contents contents;
    for (const std::wstring& table : tables_) {
      Texts& rows = contents[table];
      rows = RowTextsOf(connection_.Call(L"Execute", L"SELECT * FROM " + table).AsObject());
      std::ranges::sort(rows);
    }
    return contents;
  }

  void Restore() const {
    const Contents now = Read();
    for (const auto& [table, rows] : kept_) {
      if (now.at(table) == rows) continue;
      connection_.Call(L"Execute", Join({L"DELETE FROM ", table, L" INSERT INTO ", table,
                                         L" SELECT * FROM kept_", table}));
    }
  }

 private:
  Object connection_;
  Texts tables_;
  Contents kept_;
};

// The tables in which the two differ, with the rows that only one of them has.
std::string Differences(const Contents& expected, const Contents& actual) {
  std::wstring text;
  for (const auto& [table, rows] : expected) {
    const Texts& others = actual.at(table);
    Texts gone;
    Texts added;
    std::ranges::set_difference(rows, others, std::back_inserter(gone));
    std::ranges::set_difference(others, rows, std::back_inserter(added));
    for (const std::wstring& row : gone) text += Join({table, L" lacks ", row, L"\n"});
    for (const std::wstring& row : added) text += Join({table, L" has ", row, L"\n"});
  }
  return com::ToUtf8(text);
}

// A file for a database, gone with this object.
class EmptyFile {
 public:
  EmptyFile() {
    std::wstring folder(MAX_PATH, L'\0');
    folder.resize(GetTempPathW(MAX_PATH, folder.data()));
    path_ = folder + L"failures" + std::to_wstring(GetCurrentProcessId()) + L".db";
    tsql::Database::Open(com::ToUtf8(path_), tsql::OpenMode::Create);
  }
  ~EmptyFile() {
    for (const wchar_t* suffix : {L"", L"-wal", L"-shm"}) DeleteFileW((path_ + suffix).c_str());
  }
  EmptyFile(const EmptyFile&) = delete;
  EmptyFile& operator=(const EmptyFile&) = delete;

  const std::wstring& path() const { return path_; }

 private:
  std::wstring path_;
};

// ---- the play

constexpr HRESULT kCode = Fault::kCode;
constexpr wchar_t kFailure[] = L"armed failure";
constexpr wchar_t kVoteFailure[] = L"armed failure of a vote";
constexpr int32_t kLaterVotes = 8; // more than any call casts after a failure

// What one call did.
struct Seen {
  com::test::Raised raised;
  std::wstring result;
  Texts arguments;
  Texts events;
};

// Some cases send what every server refuses, and not all of them raise that: these trap it.
bool IsRefusedByTheServer(const StatementCase& example) {
  return example.statements == std::vector<std::string>{"BomUpdate.AddBomGroup.quote"} ||
         example.statements == std::vector<std::string>{"clsMCustBOM.CheckCustBOMIsAssisted.listAsOne"};
}

// One case of the catalogue in one language, on data that it may spoil.
class Play {
 public:
  Play(const TestDatabase& database, const Data& data, size_t number, const wchar_t* language)
      : database_(database), data_(data), number_(number), example_(AllCases()[number]),
        method_(MethodOf(example_)), rule_(RuleOf(method_)), language_(language) {
    const Circumstances& given = example_.given;
    dsn_ = database_.DsnFor(given.user, L"2026-05-03 14:05:06",
                            L"Language=" + std::wstring(language) + L";SubID=" + given.subsystem);
  }

  // The good run, against which the others are held.
  void Learn() {
    data_.Restore();
    const Object object = Prepare();
    before_ = data_.Read();
    given_ = DescribedArguments(Arguments());
    good_ = RunUndisturbed(object);
    goodContents_ = data_.Read();
    clean_ = goodContents_ == before_;
    isGood_ = good_.raised.code == S_OK && !IsRefusedByTheServer(example_);
  }

  bool isGood() const { return isGood_; }
  size_t events() const { return good_.events.size(); }
  const std::wstring& event(size_t index) const { return good_.events[index]; }
  const std::string& method() const { return method_; }

  void Fail(size_t index, bool votesFail) {
    const Object object = Prepare();
    const Seen seen = Run(object, [&] { return Armed(good_.events, index, votesFail); });
    const Contents contents = data_.Read();
    clean_ = contents == before_;
    if (IsDispensable(event(index))) {
      ExpectToDoWithout(index, seen);
      EXPECT_EQ(Differences(goodContents_, contents), "");
      return;
    }
    EXPECT_EQ(Differences(before_, contents), "");
    ExpectFailure(index, votesFail, seen);
    if (!clean_) return;
    const Seen next = RunUndisturbed(object);
    EXPECT_EQ(next.raised.code, S_OK) << com::ToUtf8(next.raised.description);
    EXPECT_EQ(next.result, good_.result);
    EXPECT_EQ(next.arguments, good_.arguments);
    EXPECT_EQ(WithoutPackage(next.events), WithoutPackage(good_.events));
    const Contents after = data_.Read();
    EXPECT_EQ(Differences(goodContents_, after), "");
    clean_ = after == before_;
  }

 private:
  // The failures of one call.
  class Armed {
   public:
    Armed(const Texts& events, size_t index, bool votesFail) : faults_(Object::Create(L"ErpStandIn.Faults")) {
      const std::wstring kind = KindOf(events[index]);
      const std::span<const std::wstring> earlier(events.data(), index);
      Fail(kind, CountOf(kind, earlier) + 1, kFailure);
      if (!votesFail) return;
      const int32_t next = CountOf(L"VoteAbort", std::span(events.data(), index + 1)) + 1;
      for (int32_t vote = next; vote < next + kLaterVotes; ++vote) Fail(L"VoteAbort", vote, kVoteFailure);
    }
    ~Armed() { faults_.Call(L"Clear"); }
    Armed(const Armed&) = delete;
    Armed& operator=(const Armed&) = delete;

   private:
    void Fail(const std::wstring& kind, int32_t nth, const wchar_t* text) const {
      faults_.Call(L"Fail", kind, nth, static_cast<int32_t>(kCode), text);
    }

    Object faults_;
  };

  // The data as the case wants it, and an object.
  Object Prepare() {
    if (!clean_) data_.Restore();
    const Circumstances& given = example_.given;
    if (!clean_ && given.data[0] != L'\0') database_.Execute(given.data);
    clean_ = true;
    Object object = Hosted(example_.className);
    if (given.bound) object.Call(L"UpdateBomGroupName", dsn_, 7, L"样车 Prototype");
    return object;
  }

  // Of the case, untouched by an earlier call.
  std::vector<Variant> Arguments() const {
    const bool anew = std::ranges::any_of(example_.arguments, &Variant::IsObject);
    return anew ? AllCases()[number_].arguments : example_.arguments;
  }

  // Recordsets are passed on and read by the call.
  static Texts DescribedArguments(const std::vector<Variant>& values) {
    Texts texts;
    for (const Variant& value : values)
      texts.push_back(value.IsObject() && value.AsObject() && Has(value.AsObject(), L"RecordCount")
                          ? L"recordset"
                          : Described(value));
    return texts;
  }

  // All arguments but objects go by reference, as script clients pass variables.
  // `arm` makes what is there while the call runs.
  template <class Arm>
  Seen Run(const Object& object, const Arm& arm) const {
    std::vector<Variant> variables = Arguments();
    std::vector<Variant> arguments;
    if (example_.given.descriptor) arguments.emplace_back(dsn_);
    for (Variant& variable : variables)
      arguments.push_back(variable.IsObject() ? variable : Variant::Reference(variable));
    Seen seen;
    const Trace trace;
    Variant result;
    seen.raised = RaisedBy([&] {
      [[maybe_unused]] const auto armed = arm();
      result = object.CallWith(example_.method, arguments);
    });
    for (const std::wstring& event : trace.Events())
      seen.events.push_back(com::FromUtf8(WithoutTableNumber(com::ToUtf8(event))));
    seen.result = Described(result);
    seen.arguments = DescribedArguments(variables);
    return seen;
  }

  Seen RunUndisturbed(const Object& object) const {
    return Run(object, [] { return 0; });
  }

  // A text that is missing is an empty one, the log is not missed, and the ledgers are as without extension.
  void ExpectToDoWithout(size_t index, const Seen& seen) const {
    EXPECT_EQ(seen.raised.code, S_OK) << com::ToUtf8(seen.raised.description);
    EXPECT_EQ(KindsOf(seen.events), KindsOf(good_.events));
    if (event(index).starts_with(L"Log")) {
      EXPECT_EQ(seen.events, good_.events);
      EXPECT_EQ(seen.result, good_.result);
      EXPECT_EQ(seen.arguments, good_.arguments);
    } else if (event(index).starts_with(L"LoadString")) {
      const std::wstring text = Translated(DetailOf(event(index)));
      if (text.find(L'%') != std::wstring::npos) return; // a template: what was filled in is missing as well
      EXPECT_TRUE(IsWithout(text, good_.result, seen.result)) << com::ToUtf8(seen.result);
      for (size_t i = 0; i < good_.arguments.size(); ++i) {
        EXPECT_TRUE(IsWithout(text, good_.arguments[i], seen.arguments[i])) << com::ToUtf8(seen.arguments[i]);
      }
    } else {
      EXPECT_EQ(std::ranges::count(seen.result, L'\n'), std::ranges::count(good_.result, L'\n'));
    }
  }

  void ExpectFailure(size_t index, bool votesFail, const Seen& seen) const {
    using enum OnFailure;
    // The same up to the failure; after it nothing but its votes, and the texts of its message.
    const auto failed = static_cast<ptrdiff_t>(index) + 1;
    ASSERT_GE(std::ssize(seen.events), failed);
    EXPECT_TRUE(std::equal(seen.events.begin(), seen.events.begin() + failed, good_.events.begin()));
    int votes = 0;
    for (auto later = seen.events.begin() + failed; later != seen.events.end(); ++later) {
      const std::wstring kind = KindOf(*later);
      if (kind == L"VoteAbort") ++votes;
      EXPECT_TRUE(kind == L"VoteAbort" || kind == L"LoadString" || kind == L"LogEnd") << com::ToUtf8(*later);
    }
    if (rule_.onFailure == Rises)
      EXPECT_EQ(votes, 0);
    else
      EXPECT_GE(votes, 1);

    const bool traps = rule_.onFailure == Traps || rule_.onFailure == NeverRaises;
    const bool voteRises = rule_.onFailure == Traps && votesFail && !IsRefusal(index);
    if (!traps || voteRises) {
      EXPECT_EQ(seen.raised.code, kCode);
      EXPECT_EQ(seen.raised.source, L"ErpStandIn");
      EXPECT_EQ(seen.raised.description, traps ? kVoteFailure : kFailure);
      EXPECT_EQ(seen.result, Described(Variant()));
    } else {
      EXPECT_EQ(seen.raised.code, S_OK) << com::ToUtf8(seen.raised.description);
      EXPECT_EQ(seen.result, Described(FailureValue(index, votesFail)));
    }
    EXPECT_EQ(seen.arguments, ArgumentsAfter(index));
  }

  // A failure in the set-up of most methods of CBomFunction.
  bool IsFailureToBind(size_t index) const {
    const std::wstring kind = KindOf(event(index));
    return method_.starts_with("CBomFunction.") && method_ != "CBomFunction.GetBomCodeNumEx" &&
           (kind == L"GetDataContext" || kind == L"BindDsn" || kind == L"GetCallerInfo" ||
            kind == L"GetConnection");
  }

  // Whether what fails is, or leads to, the vote of a refusal, whose failure is dropped: it has written
  // nothing.
  bool IsRefusal(size_t index) const {
    return IsFailureToBind(index) || (index + 1 == good_.events.size() && event(index) == L"VoteAbort");
  }

  // A number cannot be updated without a connection: that is a refusal, unless its vote fails.
  Variant FailureValue(size_t index, bool votesFail) const {
    if (method_ == "CBomFunction.UpdateBomNumber" && IsFailureToBind(index) && !votesFail) return -1;
    return rule_.failureValue;
  }

  std::wstring Translated(const std::wstring& text) const {
    const Object loader = Object::Create(L"TarnelResLoader.Loader");
    loader.Put(L"ResFileBaseName", L"TarnelManufacture");
    loader.Put(L"LanguageID", language_);
    return loader.Call(L"LoadString", text).AsText();
  }

  // A message to the user stays what it was, unless all work was done and only the vote fails; the exceptions
  // are the methods that have a message for a failure, and those that set an argument on the way.
  Texts ArgumentsAfter(size_t index) const {
    const bool workIsDone =
        std::all_of(good_.events.begin() + static_cast<ptrdiff_t>(index), good_.events.end(), IsVote);
    Texts expected = workIsDone ? good_.arguments : given_;
    const auto say = [&](const std::wstring& text) { expected.back() = Described(Variant(text)); };
    if (example_.className == std::wstring(L"CBomCheck")) {
      static const std::map<std::string, const wchar_t*> kinds{
          {"CBomCheck.BomCheck", L"]审核没有成功。原因为："},
          {"CBomCheck.BomUndoCheck", L"]反审核没有成功。原因为："},
          {"CBomCheck.GetBomDelInfo", L"]删除没有成功。原因为："},
          {"CBomCheck.GetBomModifyInfo", L"]修改没有成功。原因为："}};
      say(Translated(L"BOM[编号：") + example_.arguments[1].AsText() + Translated(kinds.at(method_)) +
          Translated(L"出现意外错误。") + Translated(kFailure));
    } else if (method_ == "CEcnInfo.CheckBomUsed") {
      // What was built of it, and the reason.
      expected.back() += kFailure;
    } else if (method_ == "CBomFunction.GetRoutingData" && IsFailureToBind(index)) {
      say(Translated(L"检查工艺路线过程中计算出错"));
    } else if (method_ == "clsMCustBOM.bGetBillNoInfo") {
      // The read votes as well, before its row is looked at.
      if (index + 1 < good_.events.size()) expected = given_;
    } else if (method_ == "BomUpdate.AddBomGroup") {
      // The new group's number is told only where there is one.
      expected = given_;
    } else if (method_ == "CBomFunction.UpdateBomNumber") {
      // That the number is taken is said before it is given all the same.
      const auto said = std::ranges::find(good_.events, std::wstring(L"LoadString"), KindOf);
      if (said - good_.events.begin() < static_cast<ptrdiff_t>(index)) expected = good_.arguments;
    } else if (method_ == "BomView.GetBomLstInfo") {
      // Whether groups are searched is known before the statement is sent.
      const auto sent = std::ranges::find(good_.events, std::wstring(L"GetConnection"), KindOf);
      if (sent - good_.events.begin() < static_cast<ptrdiff_t>(index)) expected = good_.arguments;
    }
    return expected;
  }

  const TestDatabase& database_;
  const Data& data_;
  size_t number_;
  StatementCase example_;
  std::string method_;
  Rule rule_;
  std::wstring language_;
  std::wstring dsn_;
  Texts given_;
  Seen good_;
  Contents before_;
  Contents goodContents_;
  bool isGood_ = false;
  bool clean_ = false;
};

using Place = std::tuple<bool, const wchar_t*>; // whether in a file, and the language

class OutsideFailures : public testing::TestWithParam<Place> {
 protected:
  static void FailEverything(const TestDatabase& database, const wchar_t* language, size_t offset) {
    for (const char* script : {"factory", "ecn", "browsing"})
      database.RunScript("standin/database/" + std::string(script) + ".sql");
    const Data data(database);
    const StatementCases all = AllCases();
    size_t failed = 0;
    for (size_t number = offset % Every(); number < all.size(); number += Every()) {
      SCOPED_TRACE(MethodOf(all[number]) + ", " + all[number].name);
      Play play(database, data, number, language);
      play.Learn();
      if (!play.isGood()) continue;
      for (size_t index = number % Every(); index < play.events(); index += Every()) {
        for (const bool votesFail : {false, true}) {
          if (votesFail && IsDispensable(play.event(index))) continue;
          SCOPED_TRACE(std::to_string(index) + " " + com::ToUtf8(play.event(index)) +
                       (votesFail ? ", the votes fail too" : ""));
          play.Fail(index, votesFail);
          ++failed;
        }
      }
    }
    EXPECT_GT(failed, all.size() / Every() / 2);
    std::printf("%zu failures\n", failed);
  }
};

TEST_P(OutsideFailures, LeaveNothingBehind) {
  const auto& [inFile, language] = GetParam();
  if (inFile && GetEnvironmentVariableW(L"TEST_SERVER", nullptr, 0) > 0)
    GTEST_SKIP() << "a server has no file";
  const std::wstring languages = L"chschten";
  const size_t offset = languages.find(language) / 3 * 2 + (inFile ? 1 : 0);
  const auto file = inFile ? std::make_unique<EmptyFile>() : nullptr;
  // The sessions that are kept for the next call go with their thread.
  InApartment([&, language = language] {
    const TestDatabase database =
        file ? TestDatabase(L"Provider=Embedded;Data Source=" + file->path()) : TestDatabase();
    FailEverything(database, language, offset);
  });
}

INSTANTIATE_TEST_SUITE_P(Everywhere, OutsideFailures,
                         testing::Combine(testing::Bool(), testing::Values(L"chs", L"cht", L"en")),
                         [](const testing::TestParamInfo<Place>& place) {
                           return std::string(std::get<0>(place.param) ? "File" : "Memory") + "_" +
                                  com::ToUtf8(std::get<1>(place.param));
                         });

} // namespace
} // namespace mbom::test
