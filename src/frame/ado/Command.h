// Command: a parameterised ADO command whose parameters are input texts.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/ado/Recordset.h"

namespace mbom {

class Command {
 public:
  Command(const Connection& connection, const std::wstring& text);
  void AppendText(const std::wstring& value, int32_t size) const;
  Recordset Execute() const;

 private:
  com::Object object_;
  Keeper* keeper_;
  std::wstring text_;
};

} // namespace mbom
