#include "cli/Progress.h"

#include <cstdio>
#include <string>

#include "cli/Console.h"

namespace bomcall {

Progress::Progress() : isTerminal_(IsTerminal(stderr)) {}

void Progress::Show(size_t done, size_t all) {
  constexpr size_t kWidth = 30;
  if (!isTerminal_ || all == 0) return;
  const size_t full = done * kWidth / all;
  Print(stderr, "\r[" + std::string(full, '#') + std::string(kWidth - full, '.') + "] " +
                    std::to_string(done) + "/" + std::to_string(all));
  std::fflush(stderr);
  isShown_ = true;
}

void Progress::Hide() {
  constexpr size_t kLongest = 78;
  if (!isShown_) return;
  Print(stderr, "\r" + std::string(kLongest, ' ') + "\r");
  std::fflush(stderr);
  isShown_ = false;
}

} // namespace bomcall
