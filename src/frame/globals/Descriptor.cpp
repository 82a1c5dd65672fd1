#include "src/frame/globals/Descriptor.h"

#include "com/Text.h"
#include "src/frame/Convert.h"

namespace mbom {

std::wstring GetDsnValue(const std::wstring& sDsn, const std::wstring& key) {
  const std::wstring wanted = com::Lower(key) + L"=";
  const size_t at = com::Lower(sDsn).find(wanted);
  if (at == std::wstring::npos) return L"cht";
  const size_t start = at + wanted.size();
  const size_t end = sDsn.find(L';', start);
  const std::wstring value = sDsn.substr(start, end == std::wstring::npos ? end : end - start);
  return Trim(value).empty() ? L"cht" : value;
}

} // namespace mbom
