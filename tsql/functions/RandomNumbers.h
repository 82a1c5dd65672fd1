// The numbers that RAND answers: two multiplicative generators combined, as P. L'Ecuyer published them
// ("Efficient and portable combined random number generators", 1988). The server's documented sequences come
// out of it: RAND(100), RAND(), RAND() are 0.715436657367485, 0.28463380767982, 0.0131039082850364.
#pragma once

#include <cstdint>

namespace tsql {

class RandomNumbers {
 public:
  // Begins the sequence of the seed. The sign of a seed does not count.
  void Seed(int64_t seed);
  double Next(); // between 0 and 1; without a seed the sequence begins somewhere

 private:
  int64_t first_ = 0; // before the first number
  int64_t second_ = 0;
};

} // namespace tsql
