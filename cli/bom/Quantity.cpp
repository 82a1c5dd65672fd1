#include "cli/bom/Quantity.h"

#include <limits>
#include <string>

namespace bomcall::bom {
namespace {

using Whole = boost::multiprecision::cpp_int;

constexpr unsigned kMostDecimals = 20;
// Longer ones come from no database; reading them would only take time.
constexpr size_t kLongestText = 100;

} // namespace

std::optional<Quantity> Quantity::Parse(std::wstring_view text) {
  const bool negative = text.starts_with(L'-');
  if (negative) text.remove_prefix(1);
  const size_t point = std::min(text.find(L'.'), text.size());
  std::string digits;
  for (size_t i = 0; i < text.size(); ++i) {
    if (i == point) continue;
    if (text[i] < L'0' || text[i] > L'9') return std::nullopt;
    digits += static_cast<char>(text[i]);
  }
  if (digits.empty() || digits.size() > kLongestText) return std::nullopt;
  // A leading zero would make the number an octal one.
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
  const auto decimals = static_cast<unsigned>(point < text.size() ? text.size() - point - 1 : 0);
  Whole numerator(digits);
  if (negative) numerator = -numerator;
  if (decimals == 0) return Quantity(Number(numerator));
  return Quantity(Number(numerator, boost::multiprecision::pow(Whole(10), decimals)));
}

Quantity Quantity::Scaled(uint64_t digits, unsigned decimals, bool negative) {
  // Most quantities of a database are whole, with zeros behind the point.
  while (decimals > 0 && digits % 10 == 0) {
    digits /= 10;
    --decimals;
  }
  Whole numerator(digits);
  if (negative) numerator = -numerator;
  if (decimals == 0) return Quantity(Number(numerator));
  return Quantity(Number(numerator, boost::multiprecision::pow(Whole(10), decimals)));
}

std::wstring Quantity::Text() const {
  const Whole denominator = boost::multiprecision::denominator(number_);
  if (denominator == 1) {
    const Whole whole = boost::multiprecision::numerator(number_);
    // Nearly all of them fit, and the library divides in its own type for each digit.
    const bool fits = boost::multiprecision::abs(whole) <= std::numeric_limits<int64_t>::max();
    const std::string digits = fits ? std::to_string(static_cast<int64_t>(whole)) : whole.str();
    return {digits.begin(), digits.end()};
  }
  const Whole numerator = boost::multiprecision::abs(boost::multiprecision::numerator(number_));
  const Whole scaled = numerator * boost::multiprecision::pow(Whole(10), kMostDecimals);
  std::string digits = Whole((2 * scaled + denominator) / (2 * denominator)).str();
  if (digits.size() <= kMostDecimals) digits.insert(0, kMostDecimals + 1 - digits.size(), '0');
  digits.insert(digits.size() - kMostDecimals, 1, '.');
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.back() == '.') digits.pop_back();
  if (number_ < 0 && digits != "0") digits.insert(0, 1, '-');
  return {digits.begin(), digits.end()};
}

} // namespace bomcall::bom
