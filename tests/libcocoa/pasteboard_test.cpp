// tests/libcocoa/pasteboard_test.cpp - pasteboards without a pasteboard daemon.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "tests/libcocoa/guarded.h"
#include "tests/libcocoa/platform_values.h"

namespace {

using qvx::Message;
using qvx::PlatformClass;

constexpr Message<"setString:forType:", BOOL(id, id)> kSetString;
constexpr Message<"stringForType:", id(id)> kString;
constexpr Message<"dataForType:", id(id)> kData;
constexpr Message<"setData:forType:", BOOL(id, id)> kSetData;
constexpr Message<"changeCount", int()> kChangeCount;
constexpr Message<"timesAsked", int()> kTimesAsked;
constexpr Message<"timesLost", int()> kTimesLost;

id Pasteboard(const char* name) {
  return Message<"pasteboardWithName:", id(id)>()(PlatformClass<"NSPasteboard">(), Platform(name));
}

int Declare(id pasteboard, std::initializer_list<const char*> types, id owner = nullptr) {
  return Message<"declareTypes:owner:", int(id, id)>()(pasteboard, Array(types), owner);
}

id NewOwner() {
  return Message<"new", id()>()(PlatformClass<"LazyOwner">());
}

TEST(Pasteboard, IsThereWithoutAServer) {
  EXPECT_NE((Message<"generalPasteboard", id()>()(PlatformClass<"NSPasteboard">())), nullptr);
  EXPECT_NE(Pasteboard("named"), nullptr);
}

TEST(Pasteboard, GivesTextBack) {
  const id pasteboard = Pasteboard("text");
  Declare(pasteboard, {"NSStringPboardType"});
  EXPECT_NE(kSetString(pasteboard, Platform("caf\xC3\xA9"), Platform("NSStringPboardType")), 0);
  EXPECT_EQ(Text(kString(pasteboard, Platform("NSStringPboardType"))), "caf\xC3\xA9");
}

TEST(Pasteboard, HasOneContentPerName) {
  const id first = Pasteboard("first");
  const id second = Pasteboard("second");
  Declare(first, {"NSStringPboardType"});
  Declare(second, {"NSStringPboardType"});
  kSetString(first, Platform("one"), Platform("NSStringPboardType"));
  kSetString(second, Platform("two"), Platform("NSStringPboardType"));
  EXPECT_EQ(Text(kString(Pasteboard("first"), Platform("NSStringPboardType"))), "one");
  EXPECT_EQ(Text(kString(Pasteboard("second"), Platform("NSStringPboardType"))), "two");
}

TEST(Pasteboard, CanHaveANameThatNobodyElseUses) {
  constexpr Message<"pasteboardWithUniqueName", id()> kUnique;
  constexpr Message<"name", id()> kName;
  const id one = kUnique(PlatformClass<"NSPasteboard">());
  const id other = kUnique(PlatformClass<"NSPasteboard">());
  ASSERT_NE(one, nullptr);
  EXPECT_NE(one, other);
  EXPECT_NE(Text(kName(one)), Text(kName(other)));
}

TEST(Pasteboard, CountsEachDeclarationAndClearsTheData) {
  const id pasteboard = Pasteboard("counted");
  const int first = Declare(pasteboard, {"A"});
  kSetData(pasteboard, Message<"data", id()>()(PlatformClass<"NSData">()), Platform("A"));
  EXPECT_NE(kData(pasteboard, Platform("A")), nullptr);
  const int second = Declare(pasteboard, {"A"});
  EXPECT_GT(first, 0);
  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(kChangeCount(pasteboard), second);
  EXPECT_EQ(kData(pasteboard, Platform("A")), nullptr);
}

TEST(Pasteboard, TakesNoDataOfATypeThatWasNotDeclared) {
  const id pasteboard = Pasteboard("undeclared");
  Declare(pasteboard, {"A"});
  EXPECT_EQ(kSetData(pasteboard, Message<"data", id()>()(PlatformClass<"NSData">()), Platform("B")), 0);
  EXPECT_EQ(kData(pasteboard, Platform("B")), nullptr);
}

TEST(Pasteboard, AsksItsOwnerWhenDataIsWantedAndOnlyOnce) {
  const id pasteboard = Pasteboard("lazy");
  const id owner = NewOwner();
  Declare(pasteboard, {"A", "B"}, owner);
  EXPECT_EQ(kTimesAsked(owner), 0);
  EXPECT_EQ((Message<"length", NSUInteger()>()(kData(pasteboard, Platform("A")))), 1U);
  EXPECT_EQ(kTimesAsked(owner), 1);
  kData(pasteboard, Platform("A"));
  EXPECT_EQ(kTimesAsked(owner), 1);
  EXPECT_EQ(kData(pasteboard, Platform("C")), nullptr);
  EXPECT_EQ(kTimesAsked(owner), 1) << "a type that was not promised";
}

TEST(Pasteboard, HasNoDataWhenItsOwnerBreaksThePromise) {
  const id pasteboard = Pasteboard("broken");
  const id owner = NewOwner();
  Message<"breakPromises", void()>()(owner);
  Declare(pasteboard, {"A"}, owner);
  EXPECT_EQ(kData(pasteboard, Platform("A")), nullptr);
  EXPECT_EQ(kTimesAsked(owner), 1);
}

TEST(Pasteboard, TellsAnOwnerThatAnotherTookOverAndAsksItNoMore) {
  const id pasteboard = Pasteboard("taken");
  const id first = NewOwner();
  const id second = NewOwner();
  Declare(pasteboard, {"A"}, first);
  Declare(pasteboard, {"A"}, second);
  EXPECT_EQ(kTimesLost(first), 1);
  EXPECT_EQ(kTimesLost(second), 0);
  kData(pasteboard, Platform("A"));
  EXPECT_EQ(kTimesAsked(first), 0);
  EXPECT_EQ(kTimesAsked(second), 1);
}

TEST(Pasteboard, AddsTypesWithoutANewGeneration) {
  const id pasteboard = Pasteboard("added");
  const int count = Declare(pasteboard, {"A"});
  EXPECT_EQ((Message<"addTypes:owner:", int(id, id)>()(pasteboard, Array({"B"}), nullptr)), count);
  const id types = Message<"types", id()>()(pasteboard);
  EXPECT_NE((Message<"containsObject:", BOOL(id)>()(types, Platform("A"))), 0);
  EXPECT_NE((Message<"containsObject:", BOOL(id)>()(types, Platform("B"))), 0);
}

TEST(Pasteboard, FindsTheFirstTypeThatItHas) {
  const id pasteboard = Pasteboard("available");
  Declare(pasteboard, {"B", "C"});
  constexpr Message<"availableTypeFromArray:", id(id)> kAvailable;
  EXPECT_EQ(Text(kAvailable(pasteboard, Array({"A", "C", "B"}))), "C");
  EXPECT_EQ(kAvailable(pasteboard, Array({"A"})), nullptr);
}

TEST(Pasteboard, IsForgottenWhenItIsReleasedGlobally) {
  const id pasteboard = Pasteboard("released");
  Declare(pasteboard, {"NSStringPboardType"});
  kSetString(pasteboard, Platform("x"), Platform("NSStringPboardType"));
  Message<"releaseGlobally", void()>()(pasteboard);
  EXPECT_EQ(kString(Pasteboard("released"), Platform("NSStringPboardType")), nullptr);
}

// What a client that holds an old count may do: the server itself is asked.
class StaleCount : public testing::Test {
 protected:
  id server_ = Message<"new", id()>()(PlatformClass<"QVXPasteboardServer">());
  id pasteboard_ = Message<"pasteboardWithName:", id(id)>()(server_, Platform("stale"));
  int old_ = Message<"declareTypes:owner:pasteboard:", int(id, id, id)>()(pasteboard_, Array({"A"}), nullptr,
                                                                          nullptr);
  int now_ = Message<"declareTypes:owner:pasteboard:", int(id, id, id)>()(pasteboard_, Array({"A"}), nullptr,
                                                                          nullptr);
  id data_ = Message<"data", id()>()(PlatformClass<"NSData">());

  bool Set(int count) {
    return Message<"setData:forType:isFile:oldCount:", BOOL(id, id, int, int)>()(
               pasteboard_, data_, Platform("A"), 0, count) != 0;
  }
  id Get(int count, bool must_be_current) {
    return Message<"dataForType:oldCount:mustBeCurrent:", id(id, int, int)>()(pasteboard_, Platform("A"),
                                                                              count, must_be_current ? 1 : 0);
  }
};

TEST_F(StaleCount, SetsNothing) {
  EXPECT_FALSE(Set(old_));
  EXPECT_TRUE(Set(now_));
}

TEST_F(StaleCount, AddsNoTypes) {
  constexpr Message<"addTypes:owner:pasteboard:oldCount:", int(id, id, id, int)> kAdd;
  EXPECT_EQ(kAdd(pasteboard_, Array({"B"}), nullptr, nullptr, old_), 0);
  EXPECT_EQ(kAdd(pasteboard_, Array({"B"}), nullptr, nullptr, now_), now_);
}

TEST_F(StaleCount, ReadsOnlyWhatNeedNotBeCurrent) {
  Set(now_);
  EXPECT_EQ(Get(old_, true), nullptr);
  EXPECT_NE(Get(old_, false), nullptr);
  EXPECT_NE(Get(now_, true), nullptr);
}

}  // namespace
