// Two works side by side: they run in turns, so that what slows the machine down for a while slows both, and
// each turn gives a ratio. A benchmark prints a JSON object a line for each row; tools/bench makes one table
// of them.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace bench {

// What a row may come to; 0 for a row that is only shown.
struct Aim {
  double ratio = 0;
  bool isLeast = false;         // else the ratio is to be at most so large
  double microsecondsAbove = 0; // at most so much more time than the other work needs; 0 for any
};

struct RowName {
  std::string what;
  std::string against;
  Aim aim = {};
};

// The seconds that `work` takes. What it returns is released when the clock has stopped.
template <class Work>
double SecondsOf(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  [[maybe_unused]] const auto result = work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline double Median(std::vector<double> values) {
  std::ranges::sort(values);
  const size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// Prints a row that was measured; `ours` and `others` are seconds for one piece of work, a value a turn.
inline void PrintRow(const RowName& name, const std::vector<double>& ours,
                     const std::vector<double>& others) {
  std::vector<double> ratios;
  for (size_t i = 0; i < ours.size(); ++i) ratios.push_back(ours[i] / others[i]);
  std::printf(
      "{\"row\": \"%s\", \"against\": \"%s\", \"seconds\": %.9g, \"againstSeconds\": %.9g, \"ratio\": [%.4g, "
      "%.4g, %.4g], \"turns\": %zu, \"aim\": %g, \"isLeast\": %s, \"aimAbove\": %g}\n",
      name.what.c_str(), name.against.c_str(), Median(ours), Median(others),
      *std::ranges::min_element(ratios), Median(ratios), *std::ranges::max_element(ratios), ratios.size(),
      name.aim.ratio, name.aim.isLeast ? "true" : "false", name.aim.microsecondsAbove);
  std::fflush(stdout);
}

// Runs both in turns, each first in every other turn, after a turn that does not count. Each gives the
// seconds that it took; `pieces` is how many pieces of work it did in them.
template <class Ours, class Other>
void SideBySide(const RowName& name, int turns, int pieces, const Ours& ours, const Other& other) {
  std::vector<double> times;
  std::vector<double> otherTimes;
  for (int turn = -1; turn < turns; ++turn) {
    double time = 0;
    double otherTime = 0;
    if (turn % 2 == 0) time = ours();
    otherTime = other();
    if (turn % 2 != 0) time = ours();
    if (turn < 0) continue;
    times.push_back(time / pieces);
    otherTimes.push_back(otherTime / pieces);
  }
  PrintRow(name, times, otherTimes);
}

// A point of the picture: how long a call takes at a size.
inline void PrintPoint(const std::string& series, double size, double seconds) {
  std::printf("{\"series\": \"%s\", \"size\": %g, \"seconds\": %.9g}\n", series.c_str(), size, seconds);
  std::fflush(stdout);
}

// A row that is no time, such as memory.
inline void PrintValue(const RowName& name, double value, double other) {
  std::printf(
      "{\"row\": \"%s\", \"against\": \"%s\", \"ratio\": [%.4g, %.4g, %.4g], \"turns\": 1, \"aim\": %g, "
      "\"isLeast\": %s}\n",
      name.what.c_str(), name.against.c_str(), value / other, value / other, value / other, name.aim.ratio,
      name.aim.isLeast ? "true" : "false");
  std::fflush(stdout);
}

} // namespace bench
