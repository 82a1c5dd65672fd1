#include "standin/foundation/Dictionary.h"

#include <windows.h>

#include <bit>

#include "com/DispatchObject.h"
#include "com/Text.h"
#include "com/ValueText.h"
#include "standin/foundation/Enumerator.h"
#include "tsql/Fnv1a.h"

namespace standin {
namespace {

using com::Variant;

// So few names are found one after another, and many dictionaries have no more: the value of a field is one.
constexpr size_t kMostUnindexed = 4;

wchar_t Upper(wchar_t c) {
  if (c < 0x80) return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - (L'a' - L'A')) : c;
  // Chinese, most of what is not ASCII here, has no case and needs no call.
  if (c >= 0x2E80 && c < 0xA000) return c;
  CharUpperBuffW(&c, 1);
  return c;
}

uint32_t HashOf(std::wstring_view key) {
  tsql::Fnv1a hash;
  for (const wchar_t c : key) hash.Add(Upper(c));
  return hash.value();
}

bool SameKey(std::wstring_view a, std::wstring_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i] && Upper(a[i]) != Upper(b[i])) return false;
  return true;
}

// A key as text, without a copy where it is one already.
class Key {
 public:
  explicit Key(const Variant& key) {
    if (key.type() == VT_BSTR) {
      text_ = {key.raw().bstrVal, SysStringLen(key.raw().bstrVal)};
    } else {
      converted_ = com::ToText(key);
      text_ = converted_;
    }
    hash_ = HashOf(text_);
  }
  std::wstring_view text() const { return text_; }
  uint32_t hash() const { return hash_; }

 private:
  std::wstring converted_;
  std::wstring_view text_;
  uint32_t hash_;
};

} // namespace

size_t Dictionary::Find(std::wstring_view key, uint32_t hash) const {
  if (slots_.empty()) {
    for (size_t i = 0; i < entries_.size(); ++i)
      if (entries_[i].hash == hash && SameKey(entries_[i].key, key)) return i;
    return kAbsent;
  }
  const size_t mask = slots_.size() - 1;
  for (size_t slot = hash & mask; slots_[slot] != 0; slot = (slot + 1) & mask) {
    const Entry& entry = entries_[slots_[slot] - 1];
    if (entry.hash == hash && SameKey(entry.key, key)) return slots_[slot] - 1;
  }
  return kAbsent;
}

void Dictionary::Index(size_t entry) {
  const size_t mask = slots_.size() - 1;
  size_t slot = entries_[entry].hash & mask;
  while (slots_[slot] != 0) slot = (slot + 1) & mask;
  slots_[slot] = static_cast<uint32_t>(entry + 1);
}

void Dictionary::Reindex(size_t slots) {
  slots_.assign(slots, 0);
  for (size_t i = 0; i < entries_.size(); ++i) Index(i);
}

void Dictionary::Reserve(size_t names) {
  entries_.reserve(names);
  const size_t slots = std::bit_ceil(names * 2 + 1);
  if (names > kMostUnindexed && slots > slots_.size()) Reindex(slots);
}

Variant Dictionary::GetValue(const Variant& key) const {
  const Key wanted(key);
  const size_t entry = Find(wanted.text(), wanted.hash());
  return entry == kAbsent ? Variant() : entries_[entry].value;
}

Variant Dictionary::GetValueOr(const Variant& key, const Variant& fallback) const {
  const Key wanted(key);
  const size_t entry = Find(wanted.text(), wanted.hash());
  if (entry != kAbsent) return entries_[entry].value;
  return fallback.IsMissing() ? Variant() : fallback;
}

void Dictionary::PutValue(const Variant& key, const Variant& value) {
  const Key wanted(key);
  if (const size_t entry = Find(wanted.text(), wanted.hash()); entry != kAbsent) {
    entries_[entry].value = value;
    return;
  }
  if (entries_.capacity() == 0) entries_.reserve(kMostUnindexed);
  entries_.push_back({std::wstring(wanted.text()), wanted.hash(), value});
  if (slots_.empty() && entries_.size() <= kMostUnindexed) return;
  if (entries_.size() * 2 > slots_.size())
    Reindex(std::bit_ceil(entries_.size() * 2 + 1));
  else
    Index(entries_.size() - 1);
}

bool Dictionary::Exists(const Variant& key) const {
  const Key wanted(key);
  return Find(wanted.text(), wanted.hash()) != kAbsent;
}

std::vector<Variant> Dictionary::KeyTexts() const {
  std::vector<Variant> keys;
  keys.reserve(entries_.size());
  for (const Entry& entry : entries_) keys.emplace_back(entry.key);
  return keys;
}

Variant Dictionary::Keys() const {
  const std::vector<Variant> keys = KeyTexts();
  return Variant::Array(keys.data(), keys.size());
}

void Dictionary::Remove(const Variant& key) {
  const Key wanted(key);
  const size_t entry = Find(wanted.text(), wanted.hash());
  if (entry == kAbsent) return;
  entries_.erase(entries_.begin() + static_cast<ptrdiff_t>(entry));
  if (!slots_.empty()) Reindex(slots_.size());
}

void Dictionary::Clear() {
  entries_.clear();
  slots_.clear();
}

com::Ptr<IUnknown> Dictionary::NewEnum() const {
  return MakeEnumerator(KeyTexts());
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::Dictionary>() {
  using standin::Dictionary;
  static const DispatchTable table(
      IID_NULL,
      {
          PropertyGet<&Dictionary::GetValue>(DISPID_VALUE, L"Value", {L"Key"}),
          PropertyPut<&Dictionary::PutValue>(DISPID_VALUE, L"Value", {L"Key", L"Value"}),
          Method<&Dictionary::GetValueOr>(kNextId, L"GetValue", {L"Key", {L"Default", Variant::Missing()}}),
          Method<&Dictionary::Exists>(kNextId, L"Exists", {L"Key"}),
          PropertyGet<&Dictionary::Count>(kNextId, L"Count"),
          Method<&Dictionary::Keys>(kNextId, L"Keys"),
          Method<&Dictionary::Remove>(kNextId, L"Remove", {L"Key"}),
          Method<&Dictionary::Clear>(kNextId, L"Clear"),
          Enumeration<&Dictionary::NewEnum>(),
      });
  return table;
}
