// Whether a machine has what the component needs: tried, not looked up.
#pragma once

#include <string>
#include <vector>

#include "cli/Grid.h"

namespace bomcall {

struct TriedClass {
  std::wstring progId;
  std::wstring error; // empty: an object of it could be made
};

// Makes an object of each outside class that the component uses, and then of each of its own, for programs of
// this one's width. Where the component is not registered its name stands for its classes.
std::vector<TriedClass> TryClasses();

bool AllThere(const std::vector<TriedClass>& classes);

// "ProgID" and "State", which is "ok" or what failed.
Grid GridOf(const std::vector<TriedClass>& classes);

} // namespace bomcall
