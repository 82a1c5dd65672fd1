// What a late-bound call raises, for a test to look at.
#pragma once

#include <string>

#include "com/ComError.h"

namespace com::test {

// Code 0: nothing was raised.
struct Raised {
  HRESULT code = 0;
  std::wstring source;
  std::wstring description;
};

template <class Action>
Raised RaisedBy(Action&& action) {
  try {
    action();
  } catch (const ComError& error) {
    return {error.code(), error.source(), error.description()};
  }
  return {};
}

} // namespace com::test
