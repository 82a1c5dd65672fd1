#include "tests/standin/Worker.h"
#include "tests/support/Replacement.h"

namespace standin::test {
namespace {

using mbom::test::Replacement;

// In place of a vector: a class whose objects cannot be made.
class Unmakeable {
 public:
  Unmakeable() { com::Raise(com::RuntimeError::InvalidCall, L"test"); }
};

} // namespace
} // namespace standin::test

template <>
const com::DispatchTable& com::TableOf<standin::test::Unmakeable>() {
  static const DispatchTable table(IID_NULL, {});
  return table;
}

namespace standin::test {
namespace {

TEST(ObjectFactory, CreatesAnObjectByItsProgId) {
  const Object factory = New(L"QorvaneWoskBase.ObjectFactory");
  const Object vector = factory.Call(L"CreateServerObject", L"ruvo10.Vector", Variant::Missing()).AsObject();
  EXPECT_EQ(vector.Get(L"Count"), Variant(0));
  EXPECT_EQ(factory.Call(L"CreateServerObject", L"ruvo10.Vector", L"server").AsObject().Get(L"Count"),
            Variant(0));
  EXPECT_TRUE(FAILED(RaisedBy([&] { factory.Call(L"CreateServerObject", L"No.SuchClass"); }).code));
}

TEST(ObjectFactory, CreatesObjectsOfTheirOwn) {
  const Object factory = New(L"QorvaneWoskBase.ObjectFactory");
  const Object first = factory.Call(L"CreateServerObject", L"ruvo10.Vector").AsObject();
  first.Call(L"Add", 1);
  const Object second = factory.Call(L"CreateServerObject", L"ruvo10.Vector").AsObject();
  EXPECT_EQ(first.Get(L"Count"), Variant(1));
  EXPECT_EQ(second.Get(L"Count"), Variant(0));
}

TEST(ObjectFactory, KeepsAClassThatIsRegisteredAnew) {
  const Object factory = New(L"QorvaneWoskBase.ObjectFactory");
  factory.Call(L"CreateServerObject", L"ruvo10.Vector");
  const Replacement<Worker> anew(L"ruvo10.Vector");
  EXPECT_EQ(factory.Call(L"CreateServerObject", L"ruvo10.Vector").AsObject().Get(L"Count"), Variant(0));
  EXPECT_EQ(New(L"QorvaneWoskBase.ObjectFactory")
                .Call(L"CreateServerObject", L"ruvo10.Vector")
                .AsObject()
                .Get(L"Seven"),
            Variant(7));
}

TEST(ObjectFactory, LooksAClassUpAgainWhoseObjectsCannotBeMade) {
  const Object factory = New(L"QorvaneWoskBase.ObjectFactory");
  {
    const Replacement<Unmakeable> unmakeable(L"ruvo10.Vector");
    EXPECT_TRUE(FAILED(RaisedBy([&] { factory.Call(L"CreateServerObject", L"ruvo10.Vector"); }).code));
  }
  EXPECT_EQ(factory.Call(L"CreateServerObject", L"ruvo10.Vector").AsObject().Get(L"Count"), Variant(0));
}

TEST(SecurityInfo, RefusesAKeyThatNamesNoUser) {
  EXPECT_EQ(RaisedBy([] { New(L"QorvaneWoskBase.SecurityInfo").Call(L"GetCurrentUserID", L"nobody"); }).code,
            Numbered(13));
}

class SystemProfileTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(
        L"CREATE TABLE t_SystemProfile (FCategory varchar(30), FKey varchar(30), FValue varchar(100))");
    database_.Execute(
        L"INSERT INTO t_SystemProfile VALUES ('IC', 'EnableEcnRight', '1'), ('IC', 'Null', NULL), "
        L"('O''Hara', 'It''s', 'quoted')");
  }
  Variant Get(const wchar_t* category, const wchar_t* key) const {
    return New(L"QorvaneWoskBase.SystemProfile").Call(L"GetProfile", database_.Dsn(), category, key);
  }
  Database database_;
};

TEST_F(SystemProfileTest, ReadsASetting) {
  EXPECT_EQ(Get(L"IC", L"EnableEcnRight"), Variant(L"1"));
  EXPECT_EQ(Get(L"O'Hara", L"It's"), Variant(L"quoted"));
}

TEST_F(SystemProfileTest, IsNullForWhatIsNotThere) {
  EXPECT_TRUE(Get(L"IC", L"NoSuchKey").IsNull());
  EXPECT_TRUE(Get(L"General", L"EnableEcnRight").IsNull());
  EXPECT_TRUE(Get(L"IC", L"Null").IsNull());
}

TEST_F(SystemProfileTest, SeesWhatItsUnitOfWorkHasWritten) {
  const Variant seen = HostedWorker().Call(
      L"ReadBack", database_.Dsn(), L"UPDATE t_SystemProfile SET FValue = '2' WHERE FKey = 'EnableEcnRight'",
      L"IC", L"EnableEcnRight");
  EXPECT_EQ(seen, Variant(L"2"));
  EXPECT_EQ(Get(L"IC", L"EnableEcnRight"), Variant(L"2"));
}

} // namespace
} // namespace standin::test
