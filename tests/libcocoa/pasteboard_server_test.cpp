// tests/libcocoa/pasteboard_server_test.cpp - the pasteboard server itself, asked as a client asks it: what
// it keeps, what it hands out, and what it lets go.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <initializer_list>
#include <string>

#include "libcocoa/runtime/host_support.h"
#include "tests/libcocoa/guarded.h"
#include "tests/libcocoa/platform_values.h"

namespace {

using qvx::Message;
using qvx::PlatformClass;

constexpr Message<"retainCount", NSUInteger()> kRetainCount;
constexpr Message<"name", id()> kName;
constexpr Message<"changeCount", int()> kChangeCount;
constexpr Message<"declareTypes:owner:pasteboard:", int(id, id, id)> kDeclare;
constexpr Message<"addTypes:owner:pasteboard:oldCount:", int(id, id, id, int)> kAdd;
constexpr Message<"setData:forType:isFile:oldCount:", BOOL(id, id, int, int)> kSetData;
constexpr Message<"dataForType:oldCount:mustBeCurrent:", id(id, int, int)> kData;
constexpr Message<"typesAndChangeCount:", id(int*)> kTypes;
constexpr Message<"availableTypeFromArray:changeCount:", id(id, int*)> kAvailable;
constexpr Message<"componentsJoinedByString:", id(id)> kJoined;
constexpr Message<"release", void()> kRelease;

id Changeable(const std::string& text) {
  return Message<"stringWithString:", id(id)>()(PlatformClass<"NSMutableString">(), Platform(text));
}

id Bytes(const char* text) {
  return Message<"dataWithBytes:length:", id(const void*, NSUInteger)>()(
      PlatformClass<"NSMutableData">(), text, static_cast<NSUInteger>(std::strlen(text)));
}

id New(id platformClass) {
  return Message<"new", id()>()(platformClass);
}

int TimesLost(id owner) {
  return Message<"timesLost", int()>()(owner);
}

// A pool around each use, as a host has it.
class Pool {
 public:
  Pool() = default;
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;
  ~Pool() { objc_autoreleasePoolPop(pool_); }

 private:
  void* pool_ = objc_autoreleasePoolPush();
};

class Server : public testing::Test {
 protected:
  ~Server() override { kRelease(server_); }

  id Named(id name) { return Message<"pasteboardWithName:", id(id)>()(server_, name); }
  static std::string Types(id pasteboard) {
    return Text(kJoined(kTypes(pasteboard, nullptr), Platform(" ")));
  }
  static int Declare(id pasteboard, std::initializer_list<const char*> types, id owner = nullptr) {
    return kDeclare(pasteboard, Array(types), owner, nullptr);
  }

  Pool pool_;
  id server_ = New(PlatformClass<"QVXPasteboardServer">());
  id board_ = Named(Platform("board"));
};

TEST_F(Server, GivesTheSamePasteboardForTheSameName) {
  EXPECT_EQ(Named(Platform("board")), board_);
  EXPECT_NE(Named(Platform("other")), board_);
  EXPECT_EQ(Text(kName(board_)), "board");
}

TEST_F(Server, KeepsANameThatChangesWhereItCameFrom) {
  const id name = Changeable("first");
  const id board = Named(name);
  Message<"appendString:", void(id)>()(name, Platform(" and more"));
  EXPECT_EQ(Text(kName(board)), "first");
  EXPECT_EQ(Named(Platform("first")), board);
}

TEST_F(Server, FindsANameForAPasteboardWithoutOne) {
  const id one = Named(nullptr);
  const id other = Named(Platform(""));
  EXPECT_NE(one, other);
  const std::string begin = "Pasteboard-" + std::to_string(getpid()) + "-";
  EXPECT_EQ(Text(kName(one)), begin + "1");
  EXPECT_EQ(Text(kName(other)), begin + "2");
}

TEST_F(Server, PassesOverANameThatSomebodyTook) {
  const std::string begin = "Pasteboard-" + std::to_string(getpid()) + "-";
  const id taken = Named(Platform(begin + "1"));
  const id made = Named(nullptr);
  EXPECT_NE(made, taken);
  EXPECT_EQ(Text(kName(made)), begin + "2");
}

TEST_F(Server, BeginsWithNoTypesAndNoGeneration) {
  int count = -1;
  EXPECT_NE(kTypes(board_, &count), nullptr);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(kChangeCount(board_), 0);
  EXPECT_EQ(Types(board_), "");
}

TEST_F(Server, NumbersGenerations) {
  EXPECT_EQ(Declare(board_, {"A"}), 1);
  EXPECT_EQ(Declare(board_, {"A"}), 2);
  EXPECT_EQ(kChangeCount(board_), 2);
  int count = -1;
  kTypes(board_, &count);
  EXPECT_EQ(count, 2);
  count = -1;
  EXPECT_EQ(Text(kAvailable(board_, Array({"B", "A"}), &count)), "A");
  EXPECT_EQ(count, 2);
  count = -1;
  EXPECT_EQ(kAvailable(board_, Array({"B"}), &count), nullptr);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(Text(kAvailable(board_, Array({"A"}), nullptr)), "A");
}

TEST_F(Server, DeclaresNothingWithoutTypes) {
  Declare(board_, {"A"});
  EXPECT_EQ(kDeclare(board_, nullptr, nullptr, nullptr), 2);
  EXPECT_NE(kTypes(board_, nullptr), nullptr);
  EXPECT_EQ(Types(board_), "");
}

TEST_F(Server, KeepsTypesThatChangeWhereTheyCameFrom) {
  const id types = Array({"A"});
  kDeclare(board_, types, nullptr, nullptr);
  Message<"addObject:", void(id)>()(types, Platform("B"));
  EXPECT_EQ(Types(board_), "A");
}

TEST_F(Server, AddsEachTypeOnceAndBehindTheOthers) {
  const int count = Declare(board_, {"A", "B"});
  EXPECT_EQ(kAdd(board_, Array({"C", "A", "C", "D"}), nullptr, nullptr, count), count);
  EXPECT_EQ(Types(board_), "A B C D");
}

TEST_F(Server, HasTheOwnerThatAddedTypesAndKeepsItWhereNoneIsNamed) {
  const id first = New(PlatformClass<"LazyOwner">());
  const id second = New(PlatformClass<"LazyOwner">());
  const int count = Declare(board_, {"A"}, first);
  kAdd(board_, Array({"B"}), nullptr, nullptr, count);
  kData(board_, Platform("B"), count, 1);
  EXPECT_EQ((Message<"timesAsked", int()>()(first)), 1);
  kAdd(board_, Array({"C"}), second, nullptr, count);
  kData(board_, Platform("C"), count, 1);
  EXPECT_EQ((Message<"timesAsked", int()>()(first)), 1);
  EXPECT_EQ((Message<"timesAsked", int()>()(second)), 1);
  EXPECT_EQ(TimesLost(first), 0);
  kRelease(first);
  Declare(board_, {"A"});
  EXPECT_EQ(TimesLost(second), 1);
  kRelease(second);
}

TEST_F(Server, TellsAnOwnerNothingThatDeclaresAnew) {
  const id owner = New(PlatformClass<"LazyOwner">());
  Declare(board_, {"A"}, owner);
  Declare(board_, {"B"}, owner);
  EXPECT_EQ(TimesLost(owner), 0);
  Declare(board_, {"C"});
  EXPECT_EQ(TimesLost(owner), 1);
  kRelease(owner);
}

TEST_F(Server, NeedsNoOwnerThatListens) {
  const id owner = New(PlatformClass<"NSObject">());
  const int count = Declare(board_, {"A"}, owner);
  EXPECT_EQ(kData(board_, Platform("A"), count, 1), nullptr);
  EXPECT_EQ(Declare(board_, {"A"}), count + 1);
  kRelease(owner);
}

TEST_F(Server, TakesDataOfADeclaredTypeOnly) {
  const int count = Declare(board_, {"A"});
  EXPECT_EQ(kSetData(board_, nullptr, Platform("A"), 0, count), 0);
  EXPECT_EQ(kSetData(board_, Bytes("x"), Platform("B"), 0, count), 0);
  EXPECT_NE(kSetData(board_, Bytes("x"), Platform("A"), 0, count), 0);
}

TEST_F(Server, KeepsDataThatChangesWhereItCameFrom) {
  const int count = Declare(board_, {"A"});
  const id data = Bytes("one");
  kSetData(board_, data, Platform("A"), 0, count);
  Message<"setLength:", void(NSUInteger)>()(data, 0);
  EXPECT_EQ((Message<"length", NSUInteger()>()(kData(board_, Platform("A"), count, 1))), 3U);
}

TEST_F(Server, HandsOutWhatOutlivesTheNextDeclaration) {
  int count = 0;
  {
    const Pool pool;
    count = Declare(board_, {"A"});
    kSetData(board_, Bytes("one"), Platform("A"), 0, count);
  }
  id data = nullptr;
  id types = nullptr;
  {
    const Pool pool;
    data = kData(board_, Platform("A"), count, 1);
    types = kTypes(board_, nullptr);
    EXPECT_EQ(kRetainCount(data), 2U);
    EXPECT_EQ(kRetainCount(types), 2U);
    count = Declare(board_, {});
    EXPECT_EQ(kRetainCount(data), 1U);
    EXPECT_EQ(kRetainCount(types), 1U);
    EXPECT_EQ(Text(kJoined(types, Platform(" "))), "A");
  }
  EXPECT_EQ(kChangeCount(board_), count);
}

TEST_F(Server, HoldsTheOwnersSideUntilTheNextOwner) {
  const id side = New(PlatformClass<"NSObject">());
  {
    const Pool pool;
    kDeclare(board_, Array({"A"}), nullptr, side);
    EXPECT_EQ(kRetainCount(side), 2U);
    kDeclare(board_, Array({"A"}), nullptr, side);
  }
  EXPECT_EQ(kRetainCount(side), 2U);
  {
    const Pool pool;
    Declare(board_, {"A"});
  }
  EXPECT_EQ(kRetainCount(side), 1U);
  kRelease(side);
}

TEST_F(Server, LetsGoWhatItForgets) {
  const id side = New(PlatformClass<"NSObject">());
  const id owner = New(PlatformClass<"LazyOwner">());
  QVXCountInstances(1);
  const long before = QVXLiveInstances("QVXPasteboard");
  id types = nullptr;
  id data = nullptr;
  {
    const Pool pool;
    const id board = Named(Changeable("short-lived"));
    const int count = kDeclare(board, Array({"A"}), owner, side);
    kSetData(board, Bytes("one"), Platform("A"), 0, count);
    {
      const Pool inner;
      types = Message<"retain", id()>()(kTypes(board, nullptr));
      data = Message<"retain", id()>()(kData(board, Platform("A"), count, 1));
    }
    EXPECT_EQ(QVXLiveInstances("QVXPasteboard"), before + 1);
    Message<"releaseGlobally", void()>()(board);
    EXPECT_EQ(kRetainCount(side), 1U);
    EXPECT_EQ(Text(kName(board)), "short-lived");  // while the pool is there
    Declare(board, {"A"});
    EXPECT_EQ(TimesLost(owner), 0);
  }
  EXPECT_EQ(QVXLiveInstances("QVXPasteboard"), before);
  EXPECT_EQ(kRetainCount(side), 1U);
  EXPECT_EQ(kRetainCount(types), 1U);
  EXPECT_EQ(kRetainCount(data), 1U);
  QVXCountInstances(0);
  kRelease(types);
  kRelease(data);
  kRelease(owner);
  kRelease(side);
}

TEST_F(Server, ForgetsAPasteboardThatOnlyItHolds) {
  id board = nullptr;
  {
    const Pool pool;
    board = Named(Platform("held by the server"));
  }
  EXPECT_EQ(kRetainCount(board), 1U);
  const Pool pool;
  Message<"releaseGlobally", void()>()(board);
  EXPECT_EQ(kRetainCount(board), 1U);  // the pool's
  EXPECT_EQ(Text(kName(board)), "held by the server");
  EXPECT_NE(Named(Platform("held by the server")), board);
}

TEST(ServersEnd, LetsThePasteboardsGo) {
  QVXCountInstances(1);
  const long before = QVXLiveInstances("QVXPasteboard");
  {
    const Pool pool;
    const id server = New(PlatformClass<"QVXPasteboardServer">());
    {
      const Pool inner;
      Message<"pasteboardWithName:", id(id)>()(server, Platform("one"));
    }
    EXPECT_EQ(QVXLiveInstances("QVXPasteboard"), before + 1);
    kRelease(server);
  }
  EXPECT_EQ(QVXLiveInstances("QVXPasteboard"), before);
  QVXCountInstances(0);
}

}  // namespace
