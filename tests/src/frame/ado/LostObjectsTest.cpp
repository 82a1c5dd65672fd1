// What is let go of a connection that is lost: its failures come behind the one that matters, and are
// dropped.
#include <gtest/gtest.h>

#include "com/DispatchObject.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/ado/Held.h"
#include "tests/support/Raised.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using com::test::RaisedBy;

constexpr HRESULT kLost = static_cast<HRESULT>(0x80004005);
constexpr HRESULT kRefused = static_cast<HRESULT>(0x80040E14);

[[noreturn]] void Fail(HRESULT code) {
  throw com::ComError(code, L"test", L"lost");
}

// Open, and cannot be closed.
class UnclosableRecordset {
 public:
  int32_t State() const { return 1; }
  void Close() {
    ++closings;
    Fail(kLost);
  }

  static inline int closings = 0;
};

// Goes away while its statement runs.
class LostConnection {
 public:
  int32_t CursorLocation() const { return 2; }
  void PutCursorLocation(int32_t location) {
    if (lost_) Fail(kLost);
    EXPECT_EQ(location, 3);
  }
  Object Execute(const std::wstring& /*text*/, const Variant& /*affected*/, int32_t /*options*/) {
    lost_ = true;
    Fail(kRefused);
  }

 private:
  bool lost_ = false;
};

} // namespace
} // namespace mbom::test

namespace com {

using namespace mbom::test;

template <>
const DispatchTable& TableOf<UnclosableRecordset>() {
  static const DispatchTable table(IID_NULL, {PropertyGet<&UnclosableRecordset::State>(1, L"State"),
                                              Method<&UnclosableRecordset::Close>(2, L"Close")});
  return table;
}

template <>
const DispatchTable& TableOf<LostConnection>() {
  static const DispatchTable table(
      IID_NULL, {PropertyGet<&LostConnection::CursorLocation>(1, L"CursorLocation"),
                 PropertyPut<&LostConnection::PutCursorLocation>(1, L"CursorLocation", {L"value"}),
                 Method<&LostConnection::Execute>(2, L"Execute",
                                                  {L"text", {L"affected", Variant()}, {L"options", -1}})});
  return table;
}

} // namespace com

namespace mbom::test {
namespace {

TEST(LostObjects, AnObjectThatCannotBeClosedIsReleasedAllTheSame) {
  UnclosableRecordset::closings = 0;
  const auto recordset = com::Make<UnclosableRecordset>();
  EXPECT_NO_THROW(const Held held(com::ToObject(recordset), nullptr, OnLeave::CloseAndRelease));
  EXPECT_EQ(UnclosableRecordset::closings, 1);
  recordset->AddRef();
  EXPECT_EQ(recordset->Release(), 1U) << "somebody holds it still";
}

TEST(LostObjects, NoneIsLetGoOfWithoutAnObject) {
  Keeper keeper;
  keeper.Keep(Object(), OnLeave::CloseAndRelease);
  keeper.LetGo();
  const Held held(Object(), nullptr, OnLeave::CloseAndRelease);
  EXPECT_FALSE(held);
}

TEST(LostObjects, AConnectionThatIsLostRaisesWhatItsStatementRaised) {
  const Connection conn(com::ToObject(com::Make<LostConnection>()));
  EXPECT_EQ(RaisedBy([&] { conn.ExecuteClientSide(Sql() << L"SELECT 1"); }).code, kRefused);
}

} // namespace
} // namespace mbom::test
