// tests/libcocoa/exception_threads_test.cpp - frames of several threads.
#include <gtest/gtest.h>
#include <malloc.h>
#include <pthread.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "libcocoa/runtime/host_support.h"
#include "tests/libcocoa/guarded.h"
#include "tests/libcocoa/raising.h"

namespace {

// A thread with a pool of its own, as the platform wants it.
class PooledThread {
 public:
  template <typename Body>
  explicit PooledThread(const Body& body)
      : thread_([body] {
          void* const pool = objc_autoreleasePoolPush();
          body();
          objc_autoreleasePoolPop(pool);
        }) {}
  void Join() { thread_.join(); }

 private:
  std::thread thread_;
};

TEST(Threads, HaveFramesOfTheirOwn) {
  // The outer frame of this thread is none of the other's: there the exception goes to the other's own frame,
  // and a @catch.
  std::string on_thread;
  std::string caught_on_thread;
  const id here = Guarded([&] {
    PooledThread([&] {
      on_thread = NameOf(Guarded([] { RaiseBang(nullptr); }));
      caught_on_thread = NameOf(ThroughCatch(&RaiseBang, nullptr));
    }).Join();
  });
  EXPECT_EQ(on_thread, "Bang");
  EXPECT_EQ(caught_on_thread, "Bang");
  EXPECT_EQ(here, nullptr);
}

void Nothing(void*) {}

// Runs among the destructors of an ending thread, after that of the library: takes the memory that the
// library has just given back, and raises.
struct AtTheEnd {
  std::array<unsigned char, 128> zeros{};  // of the size of the library's first list of frames
  bool wasDelivered = false, isUntouched = false;

  static void Run(void* self) {
    auto& end = *static_cast<AtTheEnd*>(self);
    auto* const block = static_cast<unsigned char*>(std::calloc(1, end.zeros.size()));
    void* const pool = objc_autoreleasePoolPush();
    end.wasDelivered = GuardedInC(&RaiseBang, nullptr) != nullptr;
    objc_autoreleasePoolPop(pool);
    end.isUntouched = std::memcmp(block, end.zeros.data(), end.zeros.size()) == 0;
    std::free(block);
  }
};

TEST(Threads, MayRaiseWhileTheyEnd) {
  GuardedInC(&Nothing, nullptr);  // the library has its key: destructors run in the order of the keys
  pthread_key_t key = 0;
  ASSERT_EQ(pthread_key_create(&key, &AtTheEnd::Run), 0);
  AtTheEnd end;
  PooledThread([&] {
    GuardedInC(&Nothing, nullptr);
    pthread_setspecific(key, &end);
  }).Join();
  pthread_key_delete(key);
  EXPECT_TRUE(end.wasDelivered);
  EXPECT_TRUE(end.isUntouched);
}

TEST(Threads, LeaveNoMemoryBehind) {
  const auto makeMany = [] {
    for (int i = 0; i < 100; ++i) std::thread([] { GuardedInC(&Nothing, nullptr); }).join();
  };
  makeMany();
  const std::size_t before = ::mallinfo2().uordblks;
  makeMany();
  EXPECT_LT(::mallinfo2().uordblks, before + 1000);
}

TEST(Threads, RaisePastPlainFunctionsAtTheSameTime) {
  constexpr std::size_t kThreads = 4;
  std::array<int, kThreads> delivered{};
  std::vector<PooledThread> threads;
  threads.reserve(kThreads);
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&delivered, i] {
      const id mine = NewException("Mine", "");
      for (int round = 0; round < 5000; ++round) {
        if (Guarded([&] { objc_exception_throw(mine); }) == mine) ++delivered[i];
      }
    });
  }
  for (PooledThread& thread : threads) thread.Join();
  for (const int count : delivered) EXPECT_EQ(count, 5000);
}

TEST(Threads, RaiseAndCatchAtTheSameTime) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 2000;
  std::array<int, kThreads> delivered{};
  std::array<int, kThreads> finallys{};
  std::vector<PooledThread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, index = static_cast<std::size_t>(i)] {
      const id mine = NewException("Mine", "");
      for (int round = 0; round < kRounds; ++round) {
        const id exception = Guarded([&] {
          Through([&](Body body, void* context) { ThroughFinally(body, context, &finallys[index]); },
                  [&] { objc_exception_throw(mine); });
        });
        if (exception == mine) ++delivered[index];
      }
    });
  }
  for (PooledThread& thread : threads) thread.Join();
  for (std::size_t i = 0; i < kThreads; ++i) {
    EXPECT_EQ(delivered[i], kRounds);
    EXPECT_EQ(finallys[i], kRounds);
  }
}

}  // namespace
