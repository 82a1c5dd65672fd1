#include "src/frame/Globals.h"

#include <optional>
#include <vector>

#include "com/ComError.h"
#include "com/PendingError.h"
#include "com/Text.h"
#include "src/frame/Convert.h"
#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"

namespace mbom {
namespace {

using com::BoundMember;
using com::Object;
using com::Variant;

constexpr wchar_t kPieceSeparator[] = L"^|^";
constexpr wchar_t kTranslatedPiece[] = L"~$~";
constexpr size_t kMarkLength = 3;

const Object& LoaderFor(const std::wstring& language) {
  namespace names = outside::loader;
  const Object& loader = ResourceLoader();
  if (loader.Get(names::kResFileBaseName).AsText() != names::kBaseName)
    loader.Put(names::kResFileBaseName, names::kBaseName);
  if (loader.Get(names::kLanguageID).AsText() != language) loader.Put(names::kLanguageID, language);
  return loader;
}

std::wstring TranslateCompound(const std::wstring& text, const std::wstring& language) {
  std::wstring result;
  for (size_t start = 0;;) {
    const size_t end = text.find(kPieceSeparator, start);
    const std::wstring piece = text.substr(start, end == std::wstring::npos ? end : end - start);
    result += piece.starts_with(kTranslatedPiece) ? LoadResText(piece.substr(kMarkLength), language) : piece;
    if (end == std::wstring::npos) return result;
    start = end + kMarkLength;
  }
}

std::wstring Translate(const std::wstring& text, const std::wstring& language, Spacing spacing) {
  const Object& loader = LoaderFor(language);
  if (text.find(kPieceSeparator) != std::wstring::npos) return TranslateCompound(text, language);

  const std::wstring core = Trim(text);
  const size_t coreAt = text.find(core);
  std::wstring leading = text.substr(0, coreAt);
  std::wstring trailing = text.substr(coreAt + core.size());
  if (language == L"en") {
    const bool lead = spacing == Spacing::Leading || spacing == Spacing::Both;
    const bool trail = spacing == Spacing::Trailing || spacing == Spacing::Both;
    if (lead && leading.empty()) leading = L" ";
    if (trail && trailing.empty()) trailing = L" ";
  }
  return leading + loader.Call(outside::loader::kLoadString, core).AsText() + trailing;
}

// A column of a recordset: its name, and the field object that gives the current row's value.
struct Column {
  Variant name;
  Object field;
  BoundMember value;
};

// The rows of a recordset on their way into dictionaries: everything that is the same for all rows is looked
// up once.
class RowReader {
 public:
  explicit RowReader(const Recordset& recordset) : dictionaries_(DictionaryClass()) {
    namespace ado = outside::ado;
    const Object fields = recordset.object().Get(ado::kFields).AsObject();
    const int32_t count = fields.Get(ado::kCount).AsLong();
    columns_.reserve(static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i) {
      Object field = fields.Get(ado::kItem, i).AsObject();
      Variant name = field.Get(ado::kName);
      const BoundMember value(field, ado::kValue);
      columns_.push_back({std::move(name), std::move(field), value});
    }
  }

  bool HasColumns() const { return !columns_.empty(); }
  // The current row; where there is none, every column is Empty.
  Object Read(bool hasRow) {
    Object row = dictionaries_.Create();
    if (!put_) put_.emplace(row, outside::dictionary::kValue);
    for (const Column& column : columns_)
      put_->Put(row, column.name, hasRow ? column.value.Get(column.field) : Variant());
    return row;
  }

 private:
  const com::ObjectClass& dictionaries_;
  std::vector<Column> columns_;
  std::optional<BoundMember> put_;
};

} // namespace

std::wstring GetDsnValue(const std::wstring& sDsn, const std::wstring& key) {
  const std::wstring wanted = com::Lower(key) + L"=";
  const size_t at = com::Lower(sDsn).find(wanted);
  if (at == std::wstring::npos) return L"cht";
  const size_t start = at + wanted.size();
  const size_t end = sDsn.find(L';', start);
  const std::wstring value = sDsn.substr(start, end == std::wstring::npos ? end : end - start);
  return Trim(value).empty() ? L"cht" : value;
}

std::wstring LoadResText(const std::wstring& text, const std::wstring& language, Spacing spacing) {
  const com::PendingError pending;
  try {
    return Translate(text, language, spacing);
  } catch (const com::ComError&) {
    return {};
  }
}

std::wstring LoadResTextFormat(const std::wstring& text, const std::wstring& language,
                               std::initializer_list<Variant> values) {
  const std::wstring translated = LoadResText(text, language);
  return FoundationGlobal()
      .Call(outside::foundation::kFormatText, translated, Variant::Array(values.begin(), values.size()))
      .AsText();
}

Object CreateServerObject(const wchar_t* progId) {
  return ObjectFactory().Call(outside::factory::kCreateServerObject, progId, Variant::Missing()).AsObject();
}

int32_t GetCurrentUserId(const Frame& frame) {
  const Object security = CreateServerObject(outside::security::kProgId);
  const Object callerInfo = frame.context().Call(outside::context::kGetCallerInfo).AsObject();
  const Variant callerKey = callerInfo.Get(outside::callerInfo::kCallerKey);
  return security.Call(outside::security::kGetCurrentUserID, callerKey).AsLong();
}

Variant ReadSystemProfile(const Frame& frame, const std::wstring& key, const std::wstring& category,
                          const Variant& fallback) {
  constexpr int32_t kSize = 30;
  const Command command(frame.GetConnection(),
                        L"Select FValue From t_SystemProfile Where FCategory = ? And FKey = ?");
  command.AppendText(category, kSize);
  command.AppendText(key, kSize);
  const Recordset setting = command.Execute();
  return setting.Eof() ? fallback : setting[L"FValue"];
}

Object RowToDictionary(const Recordset& recordset) {
  RowReader reader(recordset);
  // Without fields there is nothing to ask for: the recordset may be a closed one.
  return reader.Read(reader.HasColumns() && !recordset.Eof());
}

Object RecordsetToVector(const Recordset& recordset) {
  Object rows = VectorClass().Create();
  RowReader reader(recordset);
  const BoundMember add(rows, outside::vector::kAdd);
  const BoundMember eof(recordset.object(), outside::ado::kEof);
  const BoundMember moveNext(recordset.object(), outside::ado::kMoveNext);
  for (; !eof.Get(recordset.object()).AsBool(); moveNext.Call(recordset.object()))
    add.Call(rows, reader.Read(true));
  return rows;
}

} // namespace mbom
