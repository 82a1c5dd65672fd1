#include "tsql/values/BigNumber.h"

#include <algorithm>
#include <bit>

#include "tsql/values/PowersOfTen.h"

namespace tsql {
namespace {

BigNumber ShiftLeft(const BigNumber& value, int bits) {
  BigNumber result;
  uint32_t carry = 0;
  for (int i = 0; i < BigNumber::kLimbs; ++i) {
    const uint64_t wide = (uint64_t{value[i]} << static_cast<unsigned>(bits)) | carry;
    result[i] = static_cast<uint32_t>(wide);
    carry = static_cast<uint32_t>(wide >> 32U);
  }
  return result;
}

BigNumber ShiftRight(const BigNumber& value, int bits) {
  BigNumber result;
  for (int i = 0; i < BigNumber::kLimbs; ++i) {
    const uint64_t high = i + 1 < BigNumber::kLimbs ? value[i + 1] : 0;
    result[i] = static_cast<uint32_t>(((high << 32U) | value[i]) >> static_cast<unsigned>(bits));
  }
  return result;
}

// One digit of Knuth's algorithm D: subtracts digit * divisor from the rest at limb j and returns the digit.
uint32_t DivideStep(BigNumber& rest, const BigNumber& divisor, int length, int j) {
  const uint64_t top = (uint64_t{rest[j + length]} << 32U) | rest[j + length - 1];
  uint64_t digit = top / divisor[length - 1];
  uint64_t remainder = top % divisor[length - 1];
  while (digit > UINT32_MAX || digit * divisor[length - 2] > ((remainder << 32U) | rest[j + length - 2])) {
    --digit;
    remainder += divisor[length - 1];
    if (remainder > UINT32_MAX) break;
  }
  int64_t borrow = 0;
  uint64_t carry = 0;
  for (int i = 0; i < length; ++i) {
    carry += digit * divisor[i];
    const int64_t difference = int64_t{rest[i + j]} - borrow - static_cast<int64_t>(carry & UINT32_MAX);
    rest[i + j] = static_cast<uint32_t>(difference);
    borrow = difference < 0 ? 1 : 0;
    carry >>= 32U;
  }
  const int64_t last = int64_t{rest[j + length]} - borrow - static_cast<int64_t>(carry);
  rest[j + length] = static_cast<uint32_t>(last);
  if (last >= 0) return static_cast<uint32_t>(digit);
  // The estimate was too large by one, so the divisor is added again.
  uint64_t sum = 0;
  for (int i = 0; i < length; ++i) {
    sum += uint64_t{rest[i + j]} + divisor[i];
    rest[i + j] = static_cast<uint32_t>(sum);
    sum >>= 32U;
  }
  rest[j + length] += static_cast<uint32_t>(sum);
  return static_cast<uint32_t>(digit - 1);
}

} // namespace

void MultiplyPower(BigNumber& big, int exponent) {
  constexpr int kDigits = 9; // that a limb holds
  for (; exponent >= kDigits; exponent -= kDigits)
    MultiplySmall(big, static_cast<uint32_t>(PowerOfTen(kDigits)));
  if (exponent > 0) MultiplySmall(big, static_cast<uint32_t>(PowerOfTen(exponent)));
}

int Compare(const BigNumber& left, const BigNumber& right) {
  for (int i = BigNumber::kLimbs - 1; i >= 0; --i)
    if (left[i] != right[i]) return left[i] < right[i] ? -1 : 1;
  return 0;
}

BigNumber Add(const BigNumber& left, const BigNumber& right) {
  BigNumber sum;
  uint64_t carry = 0;
  for (int i = 0; i < BigNumber::kLimbs; ++i) {
    carry += uint64_t{left[i]} + right[i];
    sum[i] = static_cast<uint32_t>(carry);
    carry >>= 32U;
  }
  return sum;
}

BigNumber Subtract(const BigNumber& left, const BigNumber& right) {
  BigNumber difference;
  uint64_t borrow = 0;
  for (int i = 0; i < BigNumber::kLimbs; ++i) {
    const uint64_t take = uint64_t{right[i]} + borrow;
    borrow = left[i] < take ? 1 : 0;
    difference[i] = static_cast<uint32_t>(uint64_t{left[i]} - take);
  }
  return difference;
}

BigNumber Multiply(const BigNumber& left, const BigNumber& right) {
  BigNumber product;
  const int leftLength = left.Length();
  const int rightLength = right.Length();
  assert(leftLength + rightLength <= BigNumber::kLimbs);
  for (int i = 0; i < leftLength; ++i) {
    uint64_t carry = 0;
    for (int j = 0; j < rightLength; ++j) {
      carry += uint64_t{left[i]} * right[j] + product[i + j];
      product[i + j] = static_cast<uint32_t>(carry);
      carry >>= 32U;
    }
    if (i + rightLength < BigNumber::kLimbs) product[i + rightLength] = static_cast<uint32_t>(carry);
  }
  return product;
}

BigNumber Divide(BigNumber& left, const BigNumber& right) {
  const int length = right.Length();
  assert(length > 0);
  if (length == 1) {
    const uint32_t rest = DivideSmall(left, right[0]);
    const BigNumber quotient = left;
    left = BigNumber{};
    left[0] = rest;
    return quotient;
  }
  BigNumber quotient;
  const int shift = std::countl_zero(right[length - 1]);
  const BigNumber divisor = ShiftLeft(right, shift);
  assert(left.Length() < BigNumber::kLimbs);
  BigNumber rest = ShiftLeft(left, shift);
  for (int j = std::min(rest.Length(), BigNumber::kLimbs - 1) - length; j >= 0; --j)
    quotient[j] = DivideStep(rest, divisor, length, j);
  left = ShiftRight(rest, shift);
  return quotient;
}

} // namespace tsql
