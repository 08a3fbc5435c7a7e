// tests/libcocoa/host_support_test.cpp - autorelease pools, the run loop and object counts.
#include <gtest/gtest.h>
#include <malloc.h>

#include <chrono>
#include <cmath>
#include <limits>

#include "libcocoa/foundation/CFRunLoop.h"
#include "libcocoa/runtime/host_support.h"
#include "tests/libcocoa/guarded.h"

namespace {

using qvx::Message;
using qvx::PlatformClass;

constexpr Message<"new", id()> kNew;
constexpr Message<"retain", id()> kRetain;
constexpr Message<"autorelease", id()> kAutorelease;
constexpr Message<"retainCount", NSUInteger()> kRetainCount;

TEST(AutoreleasePool, ReleasesWhenItIsPopped) {
  const id object = kNew(PlatformClass<"NSObject">());
  void* const pool = objc_autoreleasePoolPush();
  kAutorelease(kRetain(object));
  EXPECT_EQ(kRetainCount(object), 2U);
  objc_autoreleasePoolPop(pool);
  EXPECT_EQ(kRetainCount(object), 1U);
}

TEST(AutoreleasePool, TakesTheInnerOnesWithIt) {
  const id object = kNew(PlatformClass<"NSObject">());
  void* const outer = objc_autoreleasePoolPush();
  objc_autoreleasePoolPush();
  kAutorelease(kRetain(object));
  objc_autoreleasePoolPop(outer);
  EXPECT_EQ(kRetainCount(object), 1U);
}

TEST(AutoreleasePool, CanBeEmptiedAndFilledAgain) {
  const id object = kNew(PlatformClass<"NSObject">());
  void* const pool = objc_autoreleasePoolPush();
  for (int turn = 0; turn < 2; ++turn) {
    kAutorelease(kRetain(object));
    QVXEmptyPool(pool);
    EXPECT_EQ(kRetainCount(object), 1U);
  }
  kAutorelease(kRetain(object));
  objc_autoreleasePoolPop(pool);
  EXPECT_EQ(kRetainCount(object), 1U);
}

TEST(RunLoop, DoesWhatIsDueAndComesBackAtOnce) {
  const id array = kNew(PlatformClass<"NSMutableArray">());
  const id object = kNew(PlatformClass<"NSObject">());
  Message<"performSelector:withObject:afterDelay:", void(SEL, id, double)>()(
      array, sel_registerName("addObject:"), object, 0.0);
  Message<"performSelector:withObject:afterDelay:", void(SEL, id, double)>()(
      array, sel_registerName("addObject:"), object, 3600.0);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, 0), kCFRunLoopRunTimedOut);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
  EXPECT_EQ((Message<"count", NSUInteger()>()(array)), 1U);
}

TEST(RunLoop, PostsNotificationsQueuedForIdleTime) {
  const id array = kNew(PlatformClass<"NSMutableArray">());
  const id string = Message<"stringWithUTF8String:", id(const char*)>()(PlatformClass<"NSString">(), "Idle");
  const id centre = Message<"defaultCenter", id()>()(PlatformClass<"NSNotificationCenter">());
  Message<"addObserver:selector:name:object:", void(id, SEL, id, id)>()(
      centre, array, sel_registerName("addObject:"), string, nullptr);
  const id queue = Message<"defaultQueue", id()>()(PlatformClass<"NSNotificationQueue">());
  const id note = Message<"notificationWithName:object:", id(id, id)>()(PlatformClass<"NSNotification">(),
                                                                        string, nullptr);
  Message<"enqueueNotification:postingStyle:", void(id, int)>()(queue, note, 1);  // when idle
  EXPECT_EQ((Message<"count", NSUInteger()>()(array)), 0U);
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, 0);
  EXPECT_EQ((Message<"count", NSUInteger()>()(array)), 1U);
  Message<"removeObserver:", void(id)>()(centre, array);
}

TEST(RunLoop, WaitsNoTimeThatIsNone) {
  for (const double seconds : {-1.0, std::nan(""), -std::numeric_limits<double>::infinity()}) {
    const id array = kNew(PlatformClass<"NSMutableArray">());
    Message<"performSelector:withObject:afterDelay:", void(SEL, id, double)>()(
        array, sel_registerName("addObject:"), array, 0.0);
    EXPECT_EQ(Guarded([&] { CFRunLoopRunInMode(kCFRunLoopDefaultMode, seconds, 0); }), nullptr) << seconds;
    EXPECT_EQ((Message<"count", NSUInteger()>()(array)), 1U) << seconds;
  }
}

TEST(RunLoop, WaitsAsLongAsItIsTold) {
  const id array = kNew(PlatformClass<"NSMutableArray">());
  const Message<"performSelector:withObject:afterDelay:", void(SEL, id, double)> later;
  later(array, sel_registerName("addObject:"), array, 0.001);
  later(array, sel_registerName("addObject:"), array, 3600.0);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.02, 0), kCFRunLoopRunTimedOut);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(19));
}

TEST(RunLoop, LeavesNoDateBehind) {
  QVXCountInstances(1);
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, 0);
  const CFIndex before = QVXLiveInstances("NSDate");
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, 0);
  EXPECT_EQ(QVXLiveInstances("NSDate"), before);
}

TEST(RunLoop, WithNothingToDoIsFinished) {
  EXPECT_NE(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, 0), 0);
  EXPECT_EQ(CFRunLoopRunInMode(nullptr, 0, 0), kCFRunLoopRunFinished);
}

TEST(RunLoop, TellsItsResultsByTheDesktopsNumbers) {
  EXPECT_EQ(static_cast<int>(kCFRunLoopRunFinished), 1);
  EXPECT_EQ(static_cast<int>(kCFRunLoopRunStopped), 2);
  EXPECT_EQ(static_cast<int>(kCFRunLoopRunTimedOut), 3);
  EXPECT_EQ(static_cast<int>(kCFRunLoopRunHandledSource), 4);
}

TEST(RunLoop, LetsGoOfAnEditedColourList) {
  const id name = Message<"stringWithUTF8String:", id(const char*)>()(PlatformClass<"NSString">(), "edited");
  // The first colour of a process brings the system's list with it.
  const id colour = Message<"blackColor", id()>()(PlatformClass<"NSColor">());
  void* const pool = objc_autoreleasePoolPush();
  QVXCountInstances(1);
  const CFIndex before = QVXLiveInstances("NSColorList");
  const id list =
      Message<"initWithName:", id(id)>()(Message<"alloc", id()>()(PlatformClass<"NSColorList">()), name);
  Message<"setColor:forKey:", void(id, id)>()(list, colour, name);
  CFRelease(list);
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, 0);
  objc_autoreleasePoolPop(pool);
  EXPECT_EQ(QVXLiveInstances("NSColorList"), before);
}

TEST(Resources, AreFoundBesideThePlatformsLibraries) {
  const auto text = [](const char* bytes) {
    return Message<"stringWithUTF8String:", id(const char*)>()(PlatformClass<"NSString">(), bytes);
  };
  const id bundle = Message<"bundleForLibrary:", id(id)>()(PlatformClass<"NSBundle">(), text("gnustep-base"));
  ASSERT_NE(bundle, nullptr);
  EXPECT_NE((Message<"pathForResource:ofType:inDirectory:", id(id, id, id)>()(bundle, text("English"),
                                                                              nullptr, text("Languages"))),
            nullptr);
}

TEST(InstanceCount, FollowsAllocationAndDeallocation) {
  QVXCountInstances(1);
  const CFIndex before = QVXLiveInstances("NSColorList");
  const id list = kNew(PlatformClass<"NSColorList">());
  EXPECT_EQ(QVXLiveInstances("NSColorList"), before + 1);
  CFRelease(list);
  EXPECT_EQ(QVXLiveInstances("NSColorList"), before);
}

TEST(InstanceCount, IncludesTheClassesBelow) {
  QVXCountInstances(1);
  const CFIndex before = QVXLiveInstances("NSColor");
  void* const pool = objc_autoreleasePoolPush();
  Message<"colorWithDeviceRed:green:blue:alpha:", id(CGFloat, CGFloat, CGFloat, CGFloat)>()(
      PlatformClass<"NSColor">(), 0.1F, 0.2F, 0.3F, 1.0F);
  EXPECT_EQ(QVXLiveInstances("NSColor"), before + 1);
  objc_autoreleasePoolPop(pool);
  EXPECT_EQ(QVXLiveInstances("NSColor"), before);
}

TEST(InstanceCount, GivesBackTheMemoryThatItTakes) {
  QVXCountInstances(1);
  QVXLiveInstances("NSObject");
  const std::size_t before = ::mallinfo2().uordblks;
  for (int i = 0; i < 10; ++i) QVXLiveInstances("NSObject");
  EXPECT_LT(::mallinfo2().uordblks, before + 100);
}

TEST(InstanceCount, StopsWhereItIsToldTo) {
  QVXCountInstances(1);
  CFRelease(kNew(PlatformClass<"NSLock">()));
  const CFIndex before = QVXLiveInstances("NSLock");
  QVXCountInstances(0);
  const id lock = kNew(PlatformClass<"NSLock">());
  EXPECT_EQ(QVXLiveInstances("NSLock"), before);
  CFRelease(lock);
}

TEST(InstanceCount, IsZeroForAnUnknownNameAndForAClassThatNobodyUses) {
  QVXCountInstances(1);
  EXPECT_EQ(QVXLiveInstances("NSProtocolChecker"), 0);
  EXPECT_EQ(QVXLiveInstances("NoSuchClass"), 0);
  EXPECT_EQ(QVXLiveInstances(nullptr), 0);
}

}  // namespace
