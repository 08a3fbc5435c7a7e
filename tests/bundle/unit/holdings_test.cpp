// tests/bundle/unit/holdings_test.cpp - what a guarded body holds for a moment: given back last taken first,
// once, and never lost while an exception unwinds.
#include "bundle/bridge/holdings.h"

#include <new>

#include "bundle/bridge/references.h"
#include "tests/bundle/unit/bridge.h"

namespace unit {
namespace {

constexpr int kCapacity = 6;

class HoldingsTest : public NewHost {
 protected:
  // One more reference of a new object, for the holdings to give back.
  static qvx::REALobject Borrowed() {
    HostObject& object = host.NewObject("Thing");
    ++object.references;
    return static_cast<qvx::REALobject>(object.Handle());
  }
  static Lines UnlocksOf(std::initializer_list<int> numbers) {
    Lines lines;
    for (const int number : numbers)
      lines.push_back("REALUnlockObject(Thing#" + std::to_string(number) + ")");
    return lines;
  }
};

TEST_F(HoldingsTest, GivesBackTheLastTakenFirst) {
  qvx::Holdings holdings;
  for (int i = 0; i < 3; ++i) holdings.HoldObject(Borrowed());
  holdings.GiveBack();
  EXPECT_EQ(Log().Services(), UnlocksOf({3, 2, 1}));
  EXPECT_TRUE(holdings.IsEmpty());
}

TEST_F(HoldingsTest, GivesBackOnceWhatIsReleasedTwice) {
  qvx::Holdings holdings;
  qvx::Holdings::Item* const first = holdings.HoldObject(Borrowed());
  holdings.HoldObject(Borrowed());
  holdings.Release(first);
  holdings.Release(first);
  EXPECT_EQ(Log().Services(), UnlocksOf({1}));
  holdings.GiveBack();
  EXPECT_EQ(Log().Services(), UnlocksOf({1, 2}));
}

TEST_F(HoldingsTest, HoldsNullAsNothing) {
  qvx::Holdings holdings;
  EXPECT_EQ(holdings.HoldObject(nullptr), nullptr);
  EXPECT_TRUE(holdings.IsEmpty());
  holdings.Release(nullptr);
  holdings.Forget(nullptr);
}

TEST_F(HoldingsTest, WhatDoesNotFitIsNotGivenBack) {
  qvx::Holdings holdings;
  for (int i = 0; i < kCapacity; ++i) EXPECT_NE(holdings.HoldObject(Borrowed()), nullptr);
  HostObject& one = host.NewObject("Thing");
  EXPECT_EQ(holdings.HoldObject(static_cast<qvx::REALobject>(one.Handle())), nullptr);
  EXPECT_EQ(holdings.Reserve(), nullptr);
  holdings.GiveBack();
  EXPECT_EQ(Calls("REALUnlockObject"), kCapacity);
  EXPECT_EQ(one.unlocks, 0);
}

TEST_F(HoldingsTest, StringDataThatDoesNotFitIsNotAskedFor) {
  const auto string = host.NewString("text");
  qvx::Holdings holdings;
  for (int i = 0; i < kCapacity; ++i) holdings.HoldObject(Borrowed());
  qvx::HostDataScope scope(holdings);
  scope.ReadStringData(string);
  EXPECT_EQ(scope.bytes, nullptr);
  EXPECT_EQ(scope.length, 0);
  EXPECT_EQ(Asked("PluginGetStringData"), 0);
  holdings.GiveBack();
}

TEST_F(HoldingsTest, WhileAnExceptionUnwindsASecondOneIsDroppedAndTheRestGivenBack) {
  int unlocks = 0;
  host.before["REALUnlockObject"] = [&unlocks] {
    if (++unlocks == 2) throw std::bad_alloc();
  };
  EXPECT_THROW(
      {
        qvx::Holdings holdings;
        for (int i = 0; i < 3; ++i) holdings.HoldObject(Borrowed());
        throw 1;
      },
      int);
  EXPECT_EQ(Log().Services(), UnlocksOf({3, 2, 1}));
  // The unlock that threw was never carried out.
  host.Objects()[1]->references = 1;
}

TEST_F(HoldingsTest, AReferenceWhoseReleaseThrowsWhileAnExceptionUnwindsLetsTheFirstGoOn) {
  host.before["REALUnlockObject"] = [] { throw std::bad_alloc(); };
  EXPECT_THROW(
      {
        const qvx::HostReference<qvx::REALobject> reference(Borrowed());
        throw 1;
      },
      int);
  EXPECT_EQ(Calls("REALUnlockObject"), 1);
  host.Objects()[0]->references = 1;
}

}  // namespace
}  // namespace unit
