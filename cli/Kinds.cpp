#include "cli/Kinds.h"

#include <oleauto.h>

#include "com/ComError.h"
#include "com/Elements.h"

namespace bomcall {
namespace {

using com::Object;
using com::Variant;

bool Answers(const Object& object, const wchar_t* member) {
  wchar_t* name = const_cast<wchar_t*>(member);
  DISPID id = 0;
  return SUCCEEDED(object.pointer()->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id));
}

} // namespace

Kind KindOf(const Object& object) {
  if (!object) return Kind::Nothing;
  if (Answers(object, L"EOF") && Answers(object, L"Fields")) return Kind::Recordset;
  if (Answers(object, L"Keys")) return Kind::Dictionary;
  if (Answers(object, L"UBound")) return Kind::Vector;
  return Kind::Other;
}

std::vector<std::wstring> KeysOf(const Object& dictionary) {
  std::vector<std::wstring> result;
  if (const auto keys = com::ElementsOf(dictionary.Call(L"Keys")))
    for (const Variant& key : *keys) result.push_back(key.AsText());
  return result;
}

RecordsetReader::RecordsetReader(const Object& recordset)
    : recordset_(recordset), open_(recordset.Get(L"State").AsLong() != 0) {
  if (!open_) return;
  const Object fields = recordset.Get(L"Fields").AsObject();
  const int32_t count = fields.Get(L"Count").AsLong();
  for (int32_t i = 0; i < count; ++i) {
    fields_.push_back(fields.Get(L"Item", i).AsObject());
    names_.push_back(fields_.back().Get(L"Name").AsText());
  }
}

} // namespace bomcall
