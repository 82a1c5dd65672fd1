// What an object is, judged by the members that it answers to, and how its content is read.
#pragma once

#include <string>
#include <vector>

#include "com/Object.h"

namespace bomcall {

enum class Kind { Nothing, Dictionary, Vector, Recordset, Other };

Kind KindOf(const com::Object& object);

// A Dictionary's keys in their order.
std::vector<std::wstring> KeysOf(const com::Object& dictionary);

// Reads a recordset forward from where it stands; a closed one has no columns and no rows.
class RecordsetReader {
 public:
  explicit RecordsetReader(const com::Object& recordset);

  const std::vector<std::wstring>& names() const { return names_; }
  bool HasRow() const { return open_ && !recordset_.Get(L"EOF").AsBool(); }
  void Next() const { recordset_.Call(L"MoveNext"); }
  com::Variant Value(size_t column) const { return fields_[column].Get(L"Value"); }

 private:
  com::Object recordset_;
  bool open_ = false;
  std::vector<std::wstring> names_;
  std::vector<com::Object> fields_;
};

} // namespace bomcall
