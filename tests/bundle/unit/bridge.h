// tests/bundle/unit/bridge.h - the bridge's own conversions, called directly.
//
// They note what they borrow in the Holdings of the guard that they run under; here each call has some of its
// own.
#pragma once

#include <exception>

#include "bundle/bridge/exceptions.h"
#include "bundle/bridge/holdings.h"
#include "bundle/bridge/instances.h"
#include "bundle/bridge/memory_blocks.h"
#include "bundle/bridge/strings.h"
#include "tests/bundle/unit/fixture.h"

namespace unit {

// What a conversion has borrowed, it has given back itself once it returns: the guard gives back only what an
// exception leaves.
struct OwnHoldings : qvx::UnguardedHoldings {
  ~OwnHoldings() {
    if (std::uncaught_exceptions() == 0) {
      EXPECT_EQ(Count(), 0U);
    }
  }
};

template <auto convert, typename... Arguments>
auto Convert(Arguments... arguments) {
  const auto call = +[](Arguments... values) {
    OwnHoldings holdings;
    return convert(values..., holdings);
  };
  return Call(call, arguments...);
}

inline void* NewColor(NativeObject* native) {
  return Convert<&qvx::NewNSColorQVX>(AsId(native));
}
inline void* NewSpace(NativeObject* native) {
  return Convert<&qvx::NewNSColorSpaceQVX>(AsId(native));
}
inline NativeObject* NewString(qvx::REALstring string) {
  return Native(Convert<&qvx::NewNSString>(string));
}
inline void* StringRB(NativeObject* string) {
  return Convert<&qvx::NSStringRB>(AsId(string));
}
inline NativeObject* NewData(void* block) {
  return Native(Convert<&qvx::NewNSData>(static_cast<qvx::REALmemoryBlock>(block)));
}

}  // namespace unit
