// A bar that grows with the work, on the terminal that the standard error is; nothing where it is none.
#pragma once

#include <cstddef>

namespace bomcall {

class Progress {
 public:
  Progress();
  ~Progress() { Hide(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Show(size_t done, size_t all);
  // Before anything else is written there.
  void Hide();

 private:
  bool isTerminal_;
  bool isShown_ = false;
};

} // namespace bomcall
