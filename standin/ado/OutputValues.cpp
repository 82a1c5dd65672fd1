#include "standin/ado/OutputValues.h"

#include <utility>

#include "standin/ado/Parameters.h"

namespace standin::ado {

OutputValues& OutputValues::operator=(OutputValues&& other) noexcept {
  if (this == &other) return *this;
  Deliver();
  outputs_ = std::exchange(other.outputs_, {});
  return *this;
}

OutputValues::~OutputValues() {
  Deliver();
}

void OutputValues::Add(com::Object parameter, com::Variant value) {
  outputs_.push_back({std::move(parameter), std::move(value)});
}

void OutputValues::Deliver() noexcept {
  for (Output& output : outputs_) ParameterOf(output.parameter).TakeOutput(std::move(output.value));
  outputs_.clear();
}

} // namespace standin::ado
