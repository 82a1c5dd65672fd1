#include "tsql/functions/RandomNumbers.h"

#include <random>

namespace tsql {
namespace {

constexpr int64_t kFirstFactor = 40014;
constexpr int64_t kFirstModulus = 2147483563;
constexpr int64_t kSecondFactor = 40692;
constexpr int64_t kSecondModulus = 2147483399;
// The modulus' reciprocal, with the digits that the server has of it.
constexpr double kScale = 4.656613e-10;
// The generators' states where the seed gives none.
constexpr int64_t kFirstStart = 12345;
constexpr int64_t kSecondStart = 67890;

} // namespace

void RandomNumbers::Seed(int64_t seed) {
  first_ = seed == 0 ? kFirstStart : (seed < 0 ? -seed : seed);
  second_ = kSecondStart;
}

double RandomNumbers::Next() {
  if (first_ == 0) Seed(static_cast<int64_t>(std::random_device()() % kFirstModulus));
  first_ = first_ * kFirstFactor % kFirstModulus;
  second_ = second_ * kSecondFactor % kSecondModulus;
  const int64_t difference = first_ - second_;
  return static_cast<double>(difference < 1 ? difference + kFirstModulus - 1 : difference) * kScale;
}

} // namespace tsql
