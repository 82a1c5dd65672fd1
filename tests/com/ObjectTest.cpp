#include "com/Object.h"

#include <gtest/gtest.h>

#include "com/ComError.h"
#include "com/PendingError.h"
#include "tests/com/Probe.h"

namespace com::test {
namespace {

TEST(Object, CallingThroughNothingIsRunTimeError91) {
  try {
    Object().Call(L"Anything");
    FAIL();
  } catch (const ComError& error) {
    EXPECT_EQ(static_cast<unsigned>(error.code()), 0x800A005Bu);
  }
}

TEST(Object, UnknownProgIdAndMemberGiveTheSystemsErrors) {
  try {
    Object::Create(L"No.SuchClass");
    FAIL();
  } catch (const ComError& error) {
    EXPECT_EQ(error.code(), CO_E_CLASSSTRING);
  }
  try {
    NewProbe().Call(L"NoSuchMember");
    FAIL();
  } catch (const ComError& error) {
    EXPECT_EQ(error.code(), DISP_E_UNKNOWNNAME);
    EXPECT_FALSE(error.description().empty());
  }
}

TEST(Object, TakesTheCalleesErrorAndLeavesNoneOnTheThread) {
  try {
    NewProbe().Call(L"SetThenFail", L"");
    FAIL();
  } catch (const ComError& error) {
    EXPECT_EQ(static_cast<unsigned>(error.code()), 0x80040E14u);
    EXPECT_EQ(error.source(), L"Provider");
    EXPECT_EQ(error.helpContext(), 42u);
  }
  Ptr<IErrorInfo> info;
  EXPECT_EQ(GetErrorInfo(0, info.Out()), S_FALSE);
}

// Two objects of one kind that number a member differently, as script objects do.
class Renumbered {
 public:
  int32_t Answer() const { return 1; }
};
class Other {
 public:
  int32_t Nothing() const { return 0; }
  int32_t Answer() const { return 2; }
};

TEST(Object, RemembersMemberNumbersForItselfOnly) {
  const auto answer = [](const Object& object) { return object.Get(L"Answer").AsLong(); };
  EXPECT_EQ(answer(ToObject(Make<Renumbered>())), 1);
  EXPECT_EQ(answer(ToObject(Make<Other>())), 2);
}

TEST(Object, ForgetsTheOldestMemberWhenManyAreUsed) {
  const Object probe = NewProbe();
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(probe.Get(L"Constant").AsLong(), 7);
    EXPECT_EQ(probe.Get(L"LastKey").AsText(), L"");
    EXPECT_EQ(probe.Call(L"Half", 8).AsDouble(), 4);
    EXPECT_EQ(probe.Call(L"Short", 3).AsShort(), 3);
    EXPECT_EQ(probe.Get(L"Value", L"k").AsText(), L"k=");
    EXPECT_FALSE(probe.Get(L"Self").AsObject());
  }
}

TEST(PendingError, SurvivesWhateverHappensMeanwhile) {
  ComError(E_FAIL, L"Caller", L"the caller's own").SetOnThread();
  {
    const PendingError pending;
    ComError(E_ABORT, L"Other", L"another").SetOnThread();
  }
  EXPECT_EQ(ComError::FromThread(E_FAIL).description(), L"the caller's own");
  {
    const PendingError pending;
    ComError(E_ABORT, L"Other", L"another").SetOnThread();
  }
  Ptr<IErrorInfo> info;
  EXPECT_EQ(GetErrorInfo(0, info.Out()), S_FALSE);
}

// ---- members and classes that are looked up once

TEST(BoundMember, GetsPutsAndCallsWithoutCopies) {
  const Object probe = NewProbe();
  const BoundMember value(probe, L"Value");
  const Variant key(L"key");
  const Variant text(L"text");
  value.Put(probe, key, text);
  EXPECT_EQ(probe.Get(L"LastKey"), key);
  EXPECT_EQ(probe.Get(L"Value", L"k"), Variant(L"k=text"));
  // What was lent is still the caller's.
  EXPECT_EQ(key, Variant(L"key"));
  EXPECT_EQ(text, Variant(L"text"));
  EXPECT_EQ(BoundMember(probe, L"LastKey").Get(probe), key);
  EXPECT_EQ(value.Get(probe, key), Variant(L"key=text"));
  // Of every object of the kind.
  const Object second = NewProbe();
  value.Put(second, text, key);
  EXPECT_EQ(second.Get(L"LastKey"), text);
}

TEST(BoundMember, PutsAnObjectByReference) {
  const Object probe = NewProbe();
  const Object inner = NewProbe();
  BoundMember(probe, L"Value").Put(probe, Variant(L"key"), Variant(inner));
  EXPECT_EQ(probe.Get(L"LastKey"), Variant(L"key"));
}

TEST(BoundMember, TakesTheCalleesErrorAndLeavesNoneOnTheThread) {
  const Object probe = NewProbe();
  try {
    BoundMember(probe, L"SetThenFail").Call(probe, Variant(L""));
    FAIL();
  } catch (const ComError& error) {
    EXPECT_EQ(static_cast<unsigned>(error.code()), 0x80040E14u);
  }
  Ptr<IErrorInfo> info;
  EXPECT_EQ(GetErrorInfo(0, info.Out()), S_FALSE);
  EXPECT_THROW(BoundMember(probe, L"NoSuchMember"), ComError);
  EXPECT_THROW(BoundMember(Object(), L"Value"), ComError);
  try {
    BoundMember(probe, L"LastKey").Get(Object());
    FAIL();
  } catch (const ComError& error) {
    EXPECT_EQ(static_cast<unsigned>(error.code()), 0x800A005Bu); // 91
  }
}

TEST(ObjectClass, UnknownProgIdGivesTheSystemsError) {
  try {
    const ObjectClass none(L"No.SuchClass");
    FAIL();
  } catch (const ComError& error) {
    EXPECT_EQ(error.code(), CO_E_CLASSSTRING);
  }
}

} // namespace
} // namespace com::test

template <>
const com::DispatchTable& com::TableOf<com::test::Renumbered>() {
  static const DispatchTable table(IID_NULL, {PropertyGet<&com::test::Renumbered::Answer>(5, L"Answer")});
  return table;
}

template <>
const com::DispatchTable& com::TableOf<com::test::Other>() {
  static const DispatchTable table(IID_NULL, {PropertyGet<&com::test::Other::Nothing>(5, L"Nothing"),
                                              PropertyGet<&com::test::Other::Answer>(6, L"Answer")});
  return table;
}
