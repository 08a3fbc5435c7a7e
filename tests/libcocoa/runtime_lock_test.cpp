// tests/libcocoa/runtime_lock_test.cpp - the Objective-C runtime's lock, where an exception leaves what ran
// under it.
#include <gtest/gtest.h>

#include <barrier>
#include <thread>

#include "tests/libcocoa/guarded.h"
#include "tests/libcocoa/raising.h"

// The runtime's own; its header's BOOL is another than the desktop's. Each answers how often the lock is held
// then, or -1.
extern "C" {
struct objc_mutex {
  volatile void* owner;
  int depth;
  void* backend;
};
extern objc_mutex* __objc_runtime_mutex;
int objc_mutex_lock(objc_mutex*);
int objc_mutex_trylock(objc_mutex*);
int objc_mutex_unlock(objc_mutex*);
}

namespace {

bool IsFreeForOthers() {
  bool isFree = false;
  std::thread([&] {
    isFree = objc_mutex_trylock(__objc_runtime_mutex) > 0;
    if (isFree) objc_mutex_unlock(__objc_runtime_mutex);
  }).join();
  return isFree;
}

void TakeAndRaise(int times) {
  for (int i = 0; i < times; ++i) objc_mutex_lock(__objc_runtime_mutex);
  RaiseBang(nullptr);
}

TEST(RuntimeLock, IsGivenBackAsOftenAsItWasTakenInTheFrame) {
  for (const int times : {1, 3}) {
    EXPECT_EQ(NameOf(Guarded([&] { TakeAndRaise(times); })), "Bang");
    EXPECT_TRUE(IsFreeForOthers()) << times;
  }
}

TEST(RuntimeLock, StaysWithWhoHadItBeforeTheFrame) {
  objc_mutex_lock(__objc_runtime_mutex);
  objc_mutex_lock(__objc_runtime_mutex);
  for (const int times : {0, 1, 2}) {
    EXPECT_EQ(NameOf(Guarded([&] { TakeAndRaise(times); })), "Bang");
    EXPECT_EQ(__objc_runtime_mutex->depth, 2) << times;
  }
  EXPECT_EQ(objc_mutex_unlock(__objc_runtime_mutex), 1);
  EXPECT_EQ(objc_mutex_unlock(__objc_runtime_mutex), 0);
}

TEST(RuntimeLock, OfAnotherThreadDoesNotCount) {
  std::barrier step(2);
  std::thread other([&] {
    objc_mutex_lock(__objc_runtime_mutex);
    step.arrive_and_wait();
    step.arrive_and_wait();
    objc_mutex_unlock(__objc_runtime_mutex);
  });
  step.arrive_and_wait();
  const id exception = Guarded([&] {  // entered while the other has the lock
    step.arrive_and_wait();
    other.join();
    TakeAndRaise(1);
  });
  EXPECT_EQ(NameOf(exception), "Bang");
  EXPECT_TRUE(IsFreeForOthers());
}

}  // namespace
