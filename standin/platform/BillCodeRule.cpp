#include "standin/platform/BillCodeRule.h"

#include <array>

#include "com/ComError.h"
#include "com/DispatchObject.h"
#include "com/ValueText.h"
#include "standin/host/ThreadState.h"
#include "standin/platform/DataSource.h"

namespace standin {
namespace {

using com::Object;
using com::Variant;

constexpr wchar_t kSource[] = L"QorvaneMBillCodeRule";
constexpr wchar_t kNoItem[] = L"-1";

Object Run(const std::wstring& dsn, const std::wstring& batch) {
  const EventLog::Pause ownDoing(CurrentThread().events);
  return DataSource(dsn).Connect().Call(L"Execute", batch).AsObject();
}

std::wstring Field(const Object& row, const wchar_t* name) {
  return com::ToText(row.Get(L"Fields").AsObject().Get(L"Item", name).AsObject().Get(L"Value"));
}

Variant TextArray(const std::array<std::wstring, 3>& texts, ULONG count) {
  VARIANT array;
  array.vt = VT_ARRAY | VT_BSTR;
  array.parray = SafeArrayCreateVector(VT_BSTR, 0, count);
  if (!array.parray) throw com::ComError::FromSystem(E_OUTOFMEMORY);
  Variant result = Variant::Attach(array);
  for (LONG i = 0; i < static_cast<LONG>(count); ++i) {
    const Variant text(texts[static_cast<size_t>(i)]);
    com::Check(SafeArrayPutElement(result.raw().parray, &i, text.raw().bstrVal));
  }
  return result;
}

// What a caller wants, as its request says.
struct Order {
  int32_t billType;
  int32_t count;
  bool consume;
  bool several;
};

Order ReadOrder(const Variant& request) {
  Object options = request.AsObject();
  if (!options) throw com::ComError::FromSystem(DISP_E_TYPEMISMATCH);
  if (options.Call(L"Exists", L"Options").AsBool()) options = options.Get(L"Value", L"Options").AsObject();
  const bool several = options.Get(L"Value", L"MoreBillID").AsBool();
  const bool counted = several && options.Call(L"Exists", L"BillNumber").AsBool();
  const Order order = {options.Get(L"Value", L"FBillType").AsLong(),
                       counted ? options.Get(L"Value", L"BillNumber").AsLong() : 1,
                       options.Get(L"Value", L"AutoUpdateCurNo").AsBool(), several};
  if (order.count < 1) com::Raise(com::RuntimeError::InvalidCall, kSource, L"BillNumber must be at least 1.");
  return order;
}

} // namespace

std::wstring FormatSerial(int32_t serial, const std::wstring& format) {
  std::wstring digits = std::to_wstring(serial);
  if (format.empty()) return digits;
  std::wstring result;
  size_t firstPlace = std::wstring::npos;
  for (size_t i = format.size(); i-- > 0;) {
    const wchar_t c = format[i];
    if (c != L'0' && c != L'#') {
      result.insert(result.begin(), c);
      continue;
    }
    firstPlace = i;
    if (!digits.empty()) {
      result.insert(result.begin(), digits.back());
      digits.pop_back();
    } else if (c == L'0') {
      result.insert(result.begin(), L'0');
    }
  }
  // The characters in front of the first place stand for themselves.
  if (firstPlace != std::wstring::npos) result.insert(firstPlace, digits);
  return result;
}

Variant BillCodeRule::GetItemByBillType(const std::wstring& dsn, int32_t billType) const {
  const Object rule =
      Run(dsn, L"SELECT FPreLetter, FSufLetter FROM ICBillNo WHERE FBillID = " + std::to_wstring(billType));
  if (rule.Get(L"EOF").AsBool()) return TextArray({kNoItem}, 1);
  const auto itemOf = [&rule](const wchar_t* column) {
    return Field(rule, column).empty() ? kNoItem : column;
  };
  return TextArray({itemOf(L"FPreLetter"), L"FCurNo", itemOf(L"FSufLetter")}, 3);
}

std::wstring BillCodeRule::GetNewBillID(const std::wstring& dsn, const Variant& request, const Variant& third,
                                        const Variant& fourth) const {
  const Order order = ReadOrder(request);
  const std::wstring count = std::to_wstring(order.count);
  const std::wstring where = L" WHERE FBillID = " + std::to_wstring(order.billType);
  // The row is written before it is read, so that nobody else is given the same numbers.
  const Object rule = Run(
      dsn, L"SET NOCOUNT ON BEGIN TRAN" +
               (order.consume ? L" UPDATE ICBillNo SET FCurNo = ISNULL(FCurNo, 0) + " + count + where : L"") +
               L" SELECT FPreLetter, FSufLetter, FFormat, ISNULL(FCurNo, 0) + 1" +
               (order.consume ? L" - " + count : L"") + L" AS FNextNo FROM ICBillNo" + where +
               L" COMMIT TRAN");
  if (rule.Get(L"EOF").AsBool()) {
    const std::wstring text =
        L"ICBillNo has no rule for the bill type " + std::to_wstring(order.billType) + L".";
    com::Raise(com::RuntimeError::InvalidCall, kSource, text);
  }
  const std::wstring prefix = Field(rule, L"FPreLetter");
  const std::wstring suffix = Field(rule, L"FSufLetter");
  const std::wstring format = Field(rule, L"FFormat");
  const int32_t next = Variant(Field(rule, L"FNextNo")).AsLong();
  const auto number = [&](int32_t i) { return prefix + FormatSerial(next + i, format) + suffix; };
  if (order.several) {
    const Object numbers = (third.IsObject() ? third : fourth).AsObject();
    for (int32_t i = 0; i < order.count; ++i) numbers.Put(L"Value", std::to_wstring(i + 1), number(i));
  }
  return number(0);
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::BillCodeRule>() {
  using standin::BillCodeRule;
  static const DispatchTable table(
      IID_NULL,
      {
          Method<&BillCodeRule::GetItemByBillType>(kNextId, L"GetItemByBillType", {L"Dsn", L"BillType"}),
          Method<&BillCodeRule::GetNewBillID>(kNextId, L"GetNewBillID",
                                              {L"Dsn", L"Request", L"Holder", L"Flag"}),
      });
  return table;
}
