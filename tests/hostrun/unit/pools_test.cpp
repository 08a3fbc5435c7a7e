// tests/hostrun/unit/pools_test.cpp - when what the platform autoreleases goes.
#include <gtest/gtest.h>

#include "hostrun/host/platform_library.h"
#include "hostrun/sibling/platform_objects.h"

namespace hostrun {
namespace {

// An object of the platform's, and how often it is still to be released.
class Watched {
 public:
  Watched() : object_(Send<PlatformId>(TheObjectRuntime().getClass("NSObject"), "new")) {}
  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;
  ~Watched() { ReleasePlatformObject(object_); }

  void Autorelease() { Send<PlatformId>(Send<PlatformId>(object_, "retain"), "autorelease"); }
  bool IsHeldByAPool() const { return Send<unsigned>(object_, "retainCount") > 1; }

 private:
  PlatformId object_;
};

TEST(CallPool, LetsGoWhenEachCallIsOver) {
  Watched object;
  for (int call = 0; call < 2; ++call) {
    {
      const CallPoolScope pool;
      object.Autorelease();
      EXPECT_TRUE(object.IsHeldByAPool());
    }
    EXPECT_FALSE(object.IsHeldByAPool());
  }
}

TEST(CallPool, OfACallInsideOfAnotherIsTheOuterOnes) {
  Watched object;
  {
    const CallPoolScope outer;
    object.Autorelease();
    { const CallPoolScope inner; }
    EXPECT_TRUE(object.IsHeldByAPool());
  }
  EXPECT_FALSE(object.IsHeldByAPool());
}

TEST(CallPool, LeavesWhatAnOuterScopeHolds) {
  Watched object;
  {
    const PoolScope outer;
    object.Autorelease();
    { const CallPoolScope call; }
    EXPECT_TRUE(object.IsHeldByAPool());
  }
  EXPECT_FALSE(object.IsHeldByAPool());
}

TEST(CallPool, IsAnotherInAScopeInsideOfItsOwn) {
  Watched object;
  { const CallPoolScope before; }
  const PoolScope inner;
  {
    const CallPoolScope call;
    object.Autorelease();
  }
  EXPECT_FALSE(object.IsHeldByAPool());
}

TEST(CallPool, IsThereAgainBehindAScopeOfItsOwnCalls) {
  Watched object;
  { const CallPoolScope before; }
  {
    const PoolScope inner;
    const CallPoolScope call;
  }
  {
    const CallPoolScope after;
    object.Autorelease();
  }
  EXPECT_FALSE(object.IsHeldByAPool());
}

}  // namespace
}  // namespace hostrun
