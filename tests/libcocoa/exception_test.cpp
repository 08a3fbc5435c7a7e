// tests/libcocoa/exception_test.cpp - exceptions delivered into setjmp frames.
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <thread>

#include "tests/libcocoa/guarded.h"
#include "tests/libcocoa/raising.h"

namespace {

using qvx::Message;
using qvx::PlatformClass;

TEST(Exception, LeavesAFrameAloneWhenNothingIsRaised) {
  int ran = 0;
  EXPECT_EQ(Guarded([&] { ++ran; }), nullptr);
  EXPECT_EQ(ran, 1);
}

TEST(Exception, IsDeliveredAsTheVeryObjectThatWasRaised) {
  const id exception = NewException("Bang", "for a test");
  EXPECT_EQ(Guarded([&] { Raise(exception); }), exception);
}

TEST(Exception, IsDeliveredFromDeepInsideThePlatform) {
  const id array = Message<"array", id()>()(PlatformClass<"NSArray">());
  const id exception = Guarded([&] { Message<"objectAtIndex:", id(NSUInteger)>()(array, 5); });
  EXPECT_EQ(NameOf(exception), "NSRangeException");
}

TEST(Exception, IsDeliveredForAnUnknownSelector) {
  const id exception = Guarded([] { Message<"noSuchSelectorAtAll", void()>()(PlatformClass<"NSColor">()); });
  EXPECT_EQ(NameOf(exception), "NSInvalidArgumentException");
  EXPECT_NE(ReasonOf(exception).find("noSuchSelectorAtAll"), std::string::npos) << ReasonOf(exception);
}

TEST(Exception, IsDeliveredFromTheFirstMessageThatInitialisesAClass) {
  const id exception = Guarded([] { Message<"class", id()>()(PlatformClass<"RaisesInInitialize">()); });
  EXPECT_EQ(NameOf(exception), "InInitialize");
}

TEST(Exception, LeavesTheRuntimeUnlockedWhenItComesFromAnInitializer) {
  // A class's first message runs its initializer under the runtime's lock. Another thread would wait for it
  // forever.
  static constexpr const char* kFresh[] = {"RaisesInInitializeToo", "FreshA"};
  EXPECT_EQ(NameOf(Guarded([] { Message<"class", id()>()(reinterpret_cast<id>(objc_getClass(kFresh[0]))); })),
            "InInitialize");
  bool done = false;
  std::thread([&] {
    Message<"misalignmentOfInitialize", std::uintptr_t()>()(reinterpret_cast<id>(objc_getClass(kFresh[1])));
    done = true;
  }).join();
  EXPECT_TRUE(done);
}

TEST(Exception, GoesToTheInnermostFrameOnly) {
  id inner = nullptr;
  int after = 0;
  const id outer = Guarded([&] {
    inner = Guarded([] { RaiseBang(nullptr); });
    ++after;
  });
  EXPECT_EQ(NameOf(inner), "Bang");
  EXPECT_EQ(outer, nullptr);
  EXPECT_EQ(after, 1);
}

TEST(Exception, ThrownOnFromAFrameReachesTheNextOne) {
  id inner = nullptr;
  const id outer = Guarded([&] {
    inner = Guarded([] { RaiseBang(nullptr); });
    objc_exception_throw(inner);
  });
  EXPECT_NE(inner, nullptr);
  EXPECT_EQ(outer, inner);
}

TEST(Exception, ThatIsNoNSExceptionIsDeliveredAndThrownOnUnchanged) {
  const id string = Message<"stringWithUTF8String:", id(const char*)>()(PlatformClass<"NSString">(), "text");
  id inner = nullptr;
  const id outer = Guarded([&] {
    inner = Guarded([&] { objc_exception_throw(string); });
    if (objc_exception_match(objc_getClass("NSException"), inner) == 0) objc_exception_throw(inner);
  });
  EXPECT_EQ(inner, string);
  EXPECT_EQ(outer, string);
}

TEST(Exception, MayBeNil) {
  bool delivered = true;
  const id exception = Guarded([&] {
    Guarded([] { objc_exception_throw(nullptr); });
    delivered = true;
  });
  EXPECT_EQ(exception, nullptr);
  EXPECT_TRUE(delivered);
  EXPECT_EQ(objc_exception_match(objc_getClass("NSException"), nullptr), 0);
}

TEST(Exception, MatchesItsClassAndWhatThatDerivesFrom) {
  const id exception = NewException("Bang", "");
  EXPECT_NE(objc_exception_match(objc_getClass("NSException"), exception), 0);
  EXPECT_NE(objc_exception_match(objc_getClass("NSObject"), exception), 0);
  EXPECT_EQ(objc_exception_match(objc_getClass("NSString"), exception), 0);
}

TEST(Exception, MatchesWithoutSendingAMessage) {
  const id bare = NewRootObject();
  EXPECT_NE(objc_exception_match(objc_getClass("BareRoot"), bare), 0);
  EXPECT_EQ(objc_exception_match(objc_getClass("NSException"), bare), 0);
  EXPECT_EQ(Guarded([&] { objc_exception_throw(bare); }), bare);
}

TEST(Exception, CanBeDeliveredAThousandTimesAndThroughAThousandFrames) {
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(NameOf(Guarded([] { RaiseBang(nullptr); })), "Bang");
  int depth = 0;
  int delivered = 0;
  const std::function<void()> descend = [&] {
    if (++depth == 1000) RaiseBang(nullptr);
    const id exception = Guarded([&] { descend(); });
    if (exception == nullptr) return;
    ++delivered;
    objc_exception_throw(exception);
  };
  EXPECT_EQ(NameOf(Guarded([&] { descend(); })), "Bang");
  EXPECT_EQ(delivered, 999);
}

TEST(Exception, KeepsTheRegistersThatTheGuardsCallerOwns) {
  // Values that the compiler keeps in registers over the call.
  volatile int seed = 3;
  const int a = seed * 5;
  const int b = seed * 7;
  const int c = seed * 11;
  int ran = 0;
  Guarded([&] { ThroughTwoFinallys(&RaiseBang, nullptr, &ran); });
  EXPECT_EQ(a + b + c, 69);
}

TEST(NoFrame, LeavesTheExceptionToAnObjectiveCCatch) {
  EXPECT_EQ(NameOf(ThroughCatch(&RaiseBang, nullptr)), "Bang");
}

// Throws where no C++ function is on the stack: one would stop the exception.
void ThrowOnABareThread(void* (*start)(void*)) {
  pthread_t thread;
  pthread_create(&thread, nullptr, start, nullptr);
  pthread_join(thread, nullptr);
}

TEST(NoFrameDeathTest, EndsTheProcessAndNamesTheException) {
  EXPECT_DEATH(ThrowOnABareThread([](void*) -> void* {
                 RaiseBang(nullptr);
                 return nullptr;
               }),
               "Bang.*for a test");
}

TEST(NoFrameDeathTest, EndsTheProcessForAThrownObjectThatIsNoException) {
  EXPECT_DEATH(ThrowOnABareThread([](void*) -> void* {
                 objc_exception_throw(Message<"new", id()>()(PlatformClass<"NSObject">()));
               }),
               "");
}

}  // namespace
