#include "src/frame/Convert.h"

#include <array>
#include <charconv>
#include <cwchar>

#include "com/ComError.h"
#include "com/Elements.h"

namespace mbom {
namespace {

using com::Variant;

// A Boolean stands for the number it is; the words of one are no numbers, but compare as the Boolean they
// name.
double Number(const Variant& value) {
  if (value.type() == VT_BOOL) return value.AsBool() ? VARIANT_TRUE : VARIANT_FALSE;
  if (value.type() == VT_DISPATCH || value.type() == VT_UNKNOWN)
    throw com::ComError::FromSystem(DISP_E_TYPEMISMATCH);
  return value.AsDouble();
}

// VARCMP_LT, VARCMP_EQ or VARCMP_GT. Decimals are compared as they are, to their last digit.
HRESULT Compare(const Variant& value, int32_t number) {
  if (value.type() == VT_DECIMAL) {
    DECIMAL left = value.raw().decVal;
    DECIMAL right;
    com::Check(VarDecFromI4(number, &right));
    return VarDecCmp(&left, &right);
  }
  const double left = Number(value);
  if (left == number) return VARCMP_EQ;
  return left > number ? VARCMP_GT : VARCMP_LT;
}

} // namespace

std::optional<double> NumberIn(const Variant& value) {
  return value.IsNull() ? std::nullopt : std::optional(Number(value));
}

bool Equals(const Variant& value, int32_t number) {
  return !value.IsNull() && Compare(value, number) == VARCMP_EQ;
}

bool IsGreater(const Variant& value, int32_t number) {
  return !value.IsNull() && Compare(value, number) == VARCMP_GT;
}

bool IsTrue(const Variant& value) {
  if (value.type() != VT_BSTR) return Equals(value, VARIANT_TRUE);
  double number = 0;
  std::wstring text = value.AsText();
  if (SUCCEEDED(VarR8FromStr(text.data(), LOCALE_INVARIANT, 0, &number))) return number == VARIANT_TRUE;
  return value.AsBool();
}

double LeadingNumber(const std::wstring& text) {
  const std::wstring number = Trim(text);
  const auto digitsFrom = [&number](size_t at) {
    while (at < number.size() && number[at] >= L'0' && number[at] <= L'9') ++at;
    return at;
  };
  const size_t sign = !number.empty() && (number[0] == L'-' || number[0] == L'+') ? 1 : 0;
  size_t end = digitsFrom(sign);
  if (end < number.size() && number[end] == L'.') end = digitsFrom(end + 1);
  if (end < number.size() && (number[end] == L'e' || number[end] == L'E')) {
    size_t exponent = end + 1;
    if (exponent < number.size() && (number[exponent] == L'-' || number[exponent] == L'+')) ++exponent;
    if (const size_t last = digitsFrom(exponent); last > exponent) end = last;
  }
  // All of it is ASCII now; what holds no digit at all, or too large an exponent, leaves the 0.
  const std::string ascii(number.begin() + (number.starts_with(L'+') ? 1 : 0),
                          number.begin() + static_cast<ptrdiff_t>(end));
  double value = 0;
  std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
  return value;
}

std::vector<std::wstring> TextsIn(const Variant& array) {
  const VARTYPE elementType = array.type() & VT_TYPEMASK;
  const auto elements = com::ElementsOf(array);
  if (!elements || (elementType != VT_VARIANT && elementType != VT_BSTR))
    throw com::ComError::FromSystem(DISP_E_TYPEMISMATCH);
  std::vector<std::wstring> texts;
  texts.reserve(elements->size());
  for (const Variant& element : *elements) texts.push_back(element.AsText());
  return texts;
}

Variant Today() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  now.wHour = now.wMinute = now.wSecond = now.wMilliseconds = 0;
  double days = 0;
  SystemTimeToVariantTime(&now, &days);
  return Variant::Date(days);
}

std::wstring TimeStamp(const Variant& date) {
  SYSTEMTIME time;
  if (date.type() != VT_DATE || !VariantTimeToSystemTime(date.raw().date, &time))
    throw com::ComError::FromSystem(DISP_E_TYPEMISMATCH);
  std::array<wchar_t, 32> text{};
  std::swprintf(text.data(), text.size(), L"%04d/%02d/%02d %02d:%02d:%02d", time.wYear, time.wMonth,
                time.wDay, time.wHour, time.wMinute, time.wSecond);
  return text.data();
}

std::wstring Trim(const std::wstring& text) {
  const size_t first = text.find_first_not_of(L' ');
  if (first == std::wstring::npos) return {};
  return text.substr(first, text.find_last_not_of(L' ') - first + 1);
}

} // namespace mbom
