// Memory that runs out at any allocation of a late-bound call, on the caller's side or the server's: the call
// answers as always or says that there is no memory, and the next one is as good as ever.
#include <gtest/gtest.h>

#include <functional>

#include "tests/com/Probe.h"
#include "tests/support/FailingAllocations.h"

namespace com::test {
namespace {

using ::test::FailingAllocations;
using Then = FailingAllocations::Then;

constexpr auto kProvidersError = static_cast<HRESULT>(0x80040E14);

// What the call answers, or what it says.
using Answer = std::function<std::wstring(const Object& probe)>;

std::wstring AnswerOrFailure(const Answer& call, const Object& probe) {
  constexpr wchar_t kNoMemory[] = L"no memory";
  try {
    return call(probe);
  } catch (const ComError& error) {
    if (error.code() == E_OUTOFMEMORY) return kNoMemory;
    return L"error " + std::to_wstring(static_cast<unsigned long>(error.code()));
  } catch (const std::bad_alloc&) {
    return kNoMemory;
  }
}

class OutOfMemoryTest : public testing::TestWithParam<Then> {
 protected:
  // Lets each allocation fail until the call needs no further one.
  static void FailEach(const Answer& call, const std::wstring& expected) {
    const Object probe = NewProbe();
    ASSERT_EQ(AnswerOrFailure(call, probe), expected);
    int64_t nth = 1;
    for (bool failed = true; failed; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      // The first call of an object looks up what later ones remember.
      const Object fresh = NewProbe();
      std::wstring answer;
      {
        const FailingAllocations memory(nth, GetParam());
        // The text of the answer takes memory, too.
        try {
          answer = AnswerOrFailure(call, fresh);
        } catch (const std::bad_alloc&) {
          answer.clear();
        }
        failed = memory.HasFailed();
      }
      if (!failed) {
        EXPECT_EQ(answer, expected);
      } else {
        EXPECT_TRUE(answer.empty() || answer == expected || answer == L"no memory") << ToUtf8(answer);
      }
      EXPECT_EQ(AnswerOrFailure(call, fresh), expected);
      EXPECT_EQ(AnswerOrFailure(call, probe), expected);
    }
    EXPECT_GT(nth, 2) << "nothing was allocated";
  }
};

constexpr wchar_t kLong[] = L"a text that is too long to lie within its object";

TEST_P(OutOfMemoryTest, ACallWithArguments) {
  FailEach([](const Object& probe) { return probe.Call(L"Join", kLong, L"12", 1).AsText(); },
           std::wstring(kLong) + L"/12/yes");
}

TEST_P(OutOfMemoryTest, ACallWithReferences) {
  FailEach(
      [](const Object& probe) {
        Variant text(kLong);
        Variant number(7);
        Variant flag(true);
        Variant object(probe);
        probe.Call(L"Change", Variant::Reference(text), Variant::Reference(number), Variant::Reference(flag),
                   Variant::Reference(object));
        return text.AsText() + number.AsText() + (object.AsObject() ? L" kept" : L" taken");
      },
      std::wstring(kLong) + L"+-7 taken");
}

TEST_P(OutOfMemoryTest, AProperty) {
  FailEach(
      [](const Object& probe) {
        probe.Put(L"Value", L"a key that is rather long as well", kLong);
        return probe.Get(L"Value", L"k").AsText();
      },
      std::wstring(L"k=") + kLong);
}

TEST_P(OutOfMemoryTest, AnErrorOfTheServer) {
  FailEach(
      [](const Object& probe) {
        Variant text(L"");
        probe.Call(L"SetThenFail", Variant::Reference(text));
        return text.AsText();
      },
      L"error " + std::to_wstring(static_cast<unsigned long>(kProvidersError)));
}

TEST_P(OutOfMemoryTest, NamesAreLookedUp) {
  const Object probe = NewProbe();
  bool failed = true;
  for (int64_t nth = 1; failed; ++nth) {
    auto* name = const_cast<wchar_t*>(L"join");
    DISPID id = 0;
    HRESULT hr = E_FAIL;
    {
      const FailingAllocations memory(nth, GetParam());
      hr = probe.pointer()->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
      failed = memory.HasFailed();
    }
    if (hr != E_OUTOFMEMORY) {
      EXPECT_EQ(hr, S_OK);
      EXPECT_EQ(id, 2);
    }
  }
}

TEST_P(OutOfMemoryTest, AnObjectIsMade) {
  bool failed = true;
  for (int64_t nth = 1; failed; ++nth) {
    bool made = false;
    {
      const FailingAllocations memory(nth, GetParam());
      try {
        made = static_cast<bool>(NewProbe());
      } catch (const std::bad_alloc&) {
      } catch (const ComError& error) {
        EXPECT_EQ(error.code(), E_OUTOFMEMORY);
      }
      failed = memory.HasFailed();
    }
    EXPECT_TRUE(made || failed);
  }
}

INSTANTIATE_TEST_SUITE_P(Memory, OutOfMemoryTest, testing::Values(Then::Recovers, Then::StaysShort),
                         [](const testing::TestParamInfo<Then>& then) {
                           return then.param == Then::Recovers ? "Recovers" : "StaysShort";
                         });

} // namespace
} // namespace com::test
