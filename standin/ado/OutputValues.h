// OutputValues: the values of a command's output parameters on their way to them. The server sends them
// behind the last result, so the parameters take them when the client has gone through all results: when this
// object ends.
#pragma once

#include <vector>

#include "com/Object.h"

namespace standin::ado {

class OutputValues {
 public:
  OutputValues() = default;
  OutputValues(OutputValues&& other) noexcept = default;
  OutputValues& operator=(OutputValues&& other) noexcept;
  ~OutputValues();

  // `parameter` is an ADODB.Parameter.
  void Add(com::Object parameter, com::Variant value);

 private:
  struct Output {
    com::Object parameter;
    com::Variant value;
  };

  void Deliver() noexcept;

  std::vector<Output> outputs_;
};

} // namespace standin::ado
