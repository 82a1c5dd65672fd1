#include "standin/foundation/FoundationGlobal.h"

#include <oleauto.h>

#include <vector>

#include "com/ComError.h"
#include "com/DispatchObject.h"
#include "com/Elements.h"
#include "com/ValueText.h"

namespace standin {
namespace {

using com::Variant;

std::vector<Variant> Elements(const Variant& values) {
  std::optional<std::vector<Variant>> elements = com::ElementsOf(values);
  if (!elements) com::Raise(com::RuntimeError::TypeMismatch, L"ruvo10");
  return *std::move(elements);
}

bool IsDigit(wchar_t c) {
  return c >= L'0' && c <= L'9';
}

} // namespace

std::wstring FoundationGlobal::FormatText(const std::wstring& text, const Variant& values) const {
  const std::vector<Variant> elements = Elements(values);
  std::wstring result;
  for (size_t i = 0; i < text.size();) {
    size_t end = i + 1;
    if (text[i] == L'%' && end < text.size() && text[end] == L'%') {
      ++end;
    } else if (text[i] == L'%') {
      size_t number = 0;
      for (; end < text.size() && IsDigit(text[end]); ++end)
        if (number <= elements.size()) number = number * 10 + static_cast<size_t>(text[end] - L'0');
      if (number >= 1 && number <= elements.size() && text[i + 1] != L'0') {
        result += com::ToText(elements[number - 1]);
        i = end;
        continue;
      }
    }
    result.append(text, i, end - i);
    i = end;
  }
  return result;
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::FoundationGlobal>() {
  using standin::FoundationGlobal;
  static const DispatchTable table(
      IID_NULL, {Method<&FoundationGlobal::FormatText>(kNextId, L"FormatText", {L"Template", L"Values"})});
  return table;
}
