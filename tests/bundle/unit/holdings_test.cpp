// tests/bundle/unit/holdings_test.cpp - what a guarded body holds for a moment: given back last taken first,
// once, and never lost while an exception unwinds.
#include "bundle/bridge/holdings.h"

#include <new>

#include "tests/bundle/unit/bridge.h"

namespace unit {
namespace {

constexpr unsigned kCapacity = qvx::Holdings::kCapacity;
using Object = qvx::Held<qvx::REALobject>;

class HoldingsTest : public NewHost {
 protected:
  // One more reference of a new object, for the holdings to give back.
  static qvx::REALobject Borrowed() {
    HostObject& object = host.NewObject("Thing");
    ++object.references;
    return static_cast<qvx::REALobject>(object.Handle());
  }
  static Lines UnlocksOf(std::initializer_list<unsigned> numbers) {
    Lines lines;
    for (const unsigned number : numbers)
      lines.push_back("REALUnlockObject(Thing#" + std::to_string(number) + ")");
    return lines;
  }
};

TEST_F(HoldingsTest, GivesBackTheLastTakenFirst) {
  qvx::UnguardedHoldings holdings;
  for (int i = 0; i < 3; ++i) holdings.Hold(Borrowed());
  holdings.GiveBackAll();
  EXPECT_EQ(Log().Services(), UnlocksOf({3, 2, 1}));
  EXPECT_EQ(holdings.Count(), 0U);
}

TEST_F(HoldingsTest, GivesBackOnceWhatIsReleasedTwice) {
  qvx::UnguardedHoldings holdings;
  Object first(holdings, Borrowed());
  Object second(holdings, Borrowed());
  first.Release();
  first.Release();
  EXPECT_EQ(Log().Services(), UnlocksOf({1}));
  holdings.GiveBackAll();
  EXPECT_EQ(Log().Services(), UnlocksOf({1, 2}));
}

TEST_F(HoldingsTest, WhatIsDetachedIsNotGivenBack) {
  qvx::UnguardedHoldings holdings;
  HostObject& thing = host.NewObject("Thing");
  Object held(holdings, static_cast<qvx::REALobject>(thing.Handle()));
  EXPECT_EQ(held.Detach(), thing.Handle());
  held.Release();
  holdings.GiveBackAll();
  EXPECT_EQ(Calls("REALUnlockObject"), 0);
}

TEST_F(HoldingsTest, ForgetsTheLastAndStillHoldsWhatCameBefore) {
  qvx::UnguardedHoldings holdings;
  holdings.Hold(Borrowed());
  HostObject& thing = host.NewObject("Thing");
  holdings.ForgetLast(holdings.Hold(static_cast<qvx::REALobject>(thing.Handle())));
  EXPECT_EQ(holdings.Count(), 1U);
  holdings.Hold(Borrowed());
  holdings.GiveBackAll();
  EXPECT_EQ(Log().Services(), UnlocksOf({3, 1}));
}

TEST_F(HoldingsTest, HoldsNullAsNothing) {
  qvx::UnguardedHoldings holdings;
  Object none(holdings, nullptr);
  EXPECT_FALSE(none);
  EXPECT_EQ(holdings.Count(), 0U);
  none.Release();
  EXPECT_EQ(none.Detach(), nullptr);
}

TEST_F(HoldingsTest, GivesBackOnlyWhatCameLater) {
  qvx::UnguardedHoldings holdings;
  holdings.Hold(Borrowed());
  const unsigned before = holdings.Count();
  holdings.Hold(Borrowed());
  holdings.GiveBackDownTo(before);
  EXPECT_EQ(Log().Services(), UnlocksOf({2}));
  holdings.GiveBackAll();
}

TEST_F(HoldingsTest, WhatDoesNotFitIsGivenBackAtOnceAndRefused) {
  qvx::UnguardedHoldings holdings;
  for (unsigned i = 0; i < kCapacity; ++i) holdings.Hold(Borrowed());
  EXPECT_THROW(holdings.Hold(Borrowed()), std::bad_alloc);
  EXPECT_EQ(Log().Services(), UnlocksOf({kCapacity + 1}));
  EXPECT_EQ(holdings.Count(), kCapacity);
  holdings.GiveBackAll();
}

TEST_F(HoldingsTest, APlaceThatIsFreeIsTakenAgain) {
  qvx::UnguardedHoldings holdings;
  for (unsigned i = 0; i < 3 * kCapacity; ++i) {
    Object lower(holdings, Borrowed());
    Object upper(holdings, Borrowed());
    lower.Release();
    upper.Release();
  }
  EXPECT_EQ(Calls("REALUnlockObject"), static_cast<int>(6 * kCapacity));
  EXPECT_EQ(holdings.Count(), 0U);
}

TEST_F(HoldingsTest, WhileAnExceptionUnwindsASecondOneIsDroppedAndTheRestGivenBack) {
  int unlocks = 0;
  host.before["REALUnlockObject"] = [&unlocks] {
    if (++unlocks == 2) throw std::bad_alloc();
  };
  EXPECT_THROW(
      {
        qvx::UnguardedHoldings holdings;
        for (int i = 0; i < 3; ++i) holdings.Hold(Borrowed());
        throw 1;
      },
      int);
  EXPECT_EQ(Log().Services(), UnlocksOf({3, 2, 1}));
  // The unlock that threw was never carried out.
  host.Objects()[1]->references = 1;
}

}  // namespace
}  // namespace unit
