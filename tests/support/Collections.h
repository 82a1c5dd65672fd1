// The rows that the component hands out, and threads of their own for what is kept per thread.
#pragma once

#include <objbase.h>

#include <initializer_list>
#include <string>
#include <thread>
#include <vector>

#include "com/Elements.h"
#include "com/Object.h"
#include "com/ValueText.h"

namespace mbom::test {

// The values of a Dictionary under `keys`, separated by "|"; NULL reads NULL, a missing one nothing.
inline std::wstring RowText(const com::Object& row, const std::vector<const wchar_t*>& keys) {
  std::wstring text;
  for (const wchar_t* key : keys) {
    const com::Variant value = row.Get(L"Value", key);
    if (key != keys.front()) text += L'|';
    text += value.IsNull() ? std::wstring(L"NULL") : com::ToText(value);
  }
  return text;
}

// The same of every row of a Vector.
inline std::vector<std::wstring> RowTexts(const com::Variant& rows, const std::vector<const wchar_t*>& keys) {
  const com::Object vector = rows.AsObject();
  std::vector<std::wstring> texts;
  const int32_t count = vector.Get(L"UBound").AsLong();
  for (int32_t i = 1; i <= count; ++i) texts.push_back(RowText(vector.Get(L"Item", i).AsObject(), keys));
  return texts;
}

// The names in a Dictionary, in their order.
inline std::vector<std::wstring> KeysOf(const com::Object& dictionary) {
  std::vector<std::wstring> keys;
  const auto names = com::ElementsOf(dictionary.Call(L"Keys"));
  for (const com::Variant& name : names.value()) keys.push_back(name.AsText());
  return keys;
}

// `text` with the line breaks that statements have.
inline std::wstring WithCrLf(std::wstring_view text) {
  std::wstring result;
  for (const wchar_t c : text) {
    if (c == L'\n') result += L'\r';
    result += c;
  }
  return result;
}

// Runs `work` on a thread of its own, in a single-threaded apartment.
template <class Work>
std::thread StartApartment(Work work) {
  return std::thread([work = std::move(work)] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    work();
    CoUninitialize();
  });
}
template <class Work>
void InApartment(Work work) {
  StartApartment(std::move(work)).join();
}

} // namespace mbom::test
