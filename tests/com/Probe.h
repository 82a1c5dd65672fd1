// A class with a member of every shape that a dispatch table knows, for the tests of the kit.
#pragma once

#include <string>

#include "com/DispatchObject.h"

namespace com::test {

inline constexpr CLSID kProbeId = {0x11111111, 0x2222, 0x3333, {1, 2, 3, 4, 5, 6, 7, 8}};

class Probe {
 public:
  int32_t Constant() const { return 7; }
  std::wstring Join(const std::wstring& a, int32_t b, bool c) {
    return a + L"/" + std::to_wstring(b) + L"/" + (c ? L"yes" : L"no");
  }
  // Appends to the text, negates the number and the flag, takes the object away.
  bool Change(std::wstring& text, int32_t& number, bool& flag, Object& object) {
    text += L"+";
    number = -number;
    flag = !flag;
    object = Object();
    return true;
  }
  void LeaveAlone(std::wstring& /*text*/, Variant& /*value*/) {}
  void SetThenFail(std::wstring& text) {
    text = L"set before the failure";
    throw ComError(static_cast<HRESULT>(0x80040E14), L"Provider", L"Wrong syntax", L"help.chm", 42);
  }
  void ThrowStandard() { throw std::runtime_error("standard"); }
  void RunOutOfMemory() { throw std::bad_alloc(); }
  std::wstring Optional(const std::wstring& a, int32_t b, const Variant& c) {
    return a + L"/" + std::to_wstring(b) + L"/" + (c.IsMissing() ? L"missing" : c.AsText());
  }
  Variant GetValue(const std::wstring& key) const { return Variant(key + L"=" + value_.AsText()); }
  void PutValue(const std::wstring& key, const Variant& value) {
    key_ = key;
    value_ = value;
  }
  std::wstring LastKey() const { return key_; }
  Object Self() const { return self; }
  double Half(double value) const { return value / 2; }
  int16_t Short(int16_t value) const { return value; }
  Variant LastGiven(const Variant& a, const Variant& b) const { return b.IsMissing() ? a : b; }

  Object self;

 private:
  std::wstring key_;
  Variant value_{L""};
};

inline Object NewProbe() {
  return ToObject(Make<Probe>());
}

} // namespace com::test

template <>
inline const com::DispatchTable& com::TableOf<com::test::Probe>() {
  using com::test::Probe;
  static const DispatchTable table(
      IID_NULL, {
                    PropertyGet<&Probe::Constant>(1, L"Constant"),
                    Method<&Probe::Join>(2, L"Join", {L"a", L"b", L"c"}),
                    Method<&Probe::Change>(3, L"Change", {L"text", L"number", L"flag", L"object"}),
                    Method<&Probe::LeaveAlone>(4, L"LeaveAlone", {L"text", L"value"}),
                    Method<&Probe::SetThenFail>(5, L"SetThenFail", {L"text"}),
                    Method<&Probe::ThrowStandard>(6, L"ThrowStandard"),
                    Method<&Probe::RunOutOfMemory>(7, L"RunOutOfMemory"),
                    Method<&Probe::Optional>(8, L"Optional", {L"a", {L"b", 5}, {L"c", Variant::Missing()}}),
                    PropertyGet<&Probe::GetValue>(DISPID_VALUE, L"Value", {L"key"}),
                    PropertyPut<&Probe::PutValue>(DISPID_VALUE, L"Value", {L"key", L"value"}),
                    PropertyGet<&Probe::LastKey>(kNextId, L"LastKey"),
                    PropertyGet<&Probe::Self>(kNextId, L"Self"),
                    Method<&Probe::Half>(kNextId, L"Half", {L"value"}),
                    Method<&Probe::Short>(kNextId, L"Short", {L"value"}),
                    Method<&Probe::LastGiven>(kNextId, L"LastGiven", {L"a", {L"b", Variant::Missing()}}),
                });
  return table;
}
