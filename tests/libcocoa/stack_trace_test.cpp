// tests/libcocoa/stack_trace_test.cpp - the return addresses that a raised exception keeps.
#include <execinfo.h>
#include <gtest/gtest.h>

#include <alloca.h>
#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>
#include <vector>

#include "tests/libcocoa/guarded.h"
#include "tests/libcocoa/paths.h"

// The library's own, which GNUstep asks for the stack of an exception.
extern "C" unsigned GSPrivateReturnAddresses(std::uintptr_t** addresses);

namespace {

int walks = 0;  // of the C library's

}  // namespace

// Takes the place of the C library's own, which it counts and calls.
extern "C" int backtrace(void** addresses, int most) {
  ++walks;
  static const auto own = reinterpret_cast<decltype(&backtrace)>(dlsym(RTLD_NEXT, "backtrace"));
  return own(addresses, most);
}

namespace {

using qvx::Message;
using Addresses = std::vector<std::uintptr_t>;

Addresses KeptBy(id exception) {
  const id array = Message<"callStackReturnAddresses", id()>()(exception);
  Addresses result(Message<"count", NSUInteger()>()(array));
  for (std::size_t i = 0; i < result.size(); ++i) {
    const id value = Message<"objectAtIndex:", id(NSUInteger)>()(array, static_cast<NSUInteger>(i));
    result[i] = reinterpret_cast<std::uintptr_t>(Message<"pointerValue", void*()>()(value));
  }
  return result;
}

// What the C library's walk finds outside of the function that runs this, and what an exception keeps that
// is raised in the same place; how often the library had the C library walk for that.
struct Trace {
  Addresses expected{};
  id exception = nullptr;
  int walks = 0;
};

[[gnu::noinline]] void RaiseHere(void* context) {
  Trace& trace = *static_cast<Trace*>(context);
  std::array<void*, 100> found;
  void** const end = found.data() + backtrace(found.data(), static_cast<int>(found.size()));
  for (void** each = std::find(found.data(), end, __builtin_return_address(0)); each < end; ++each) {
    trace.expected.push_back(reinterpret_cast<std::uintptr_t>(*each));
  }
  walks = 0;
  Raise(NewException("Bang", "for a test"));
}

// Raises by way of the body.
template <typename Body>
void RaiseBy(Trace& trace, const Body& body) {
  trace.exception = Guarded(body);
  trace.walks = walks;
}

// The exception also keeps the functions that raised it. Its last addresses are those of the walk, which the
// library has not needed.
void ExpectSameStack(const Trace& trace) {
  EXPECT_EQ(trace.walks, 0);
  const Addresses kept = KeptBy(trace.exception);
  ASSERT_GT(trace.expected.size(), 3U);
  ASSERT_GT(kept.size(), trace.expected.size());
  EXPECT_EQ(Addresses(kept.end() - static_cast<std::ptrdiff_t>(trace.expected.size()), kept.end()),
            trace.expected);
}

TEST(StackTrace, IsThatOfTheCLibrary) {
  Trace trace;
  RaiseBy(trace, [&] { RaiseHere(&trace); });
  ExpectSameStack(trace);
}

TEST(StackTrace, IsTheSameTheSecondTime) {
  for (int i = 0; i < 2; ++i) {
    Trace trace;
    RaiseBy(trace, [&] { RaiseHere(&trace); });
    ExpectSameStack(trace);
  }
}

[[gnu::noinline, gnu::force_align_arg_pointer]] void OnARealignedStack(Trace& trace) {
  alignas(64) std::array<volatile char, 64> room;
  room[0] = 0;
  RaiseHere(&trace);
  room[1] = 0;
}

TEST(StackTrace, PassesAFunctionThatRealignsItsStack) {
  Trace trace;
  RaiseBy(trace, [&] { OnARealignedStack(trace); });
  ExpectSameStack(trace);
}

[[gnu::noinline]] void OnAStackOfNoFixedSize(Trace& trace, std::size_t size) {
  auto* const room = static_cast<volatile char*>(alloca(size));
  room[0] = 0;
  RaiseHere(&trace);
  room[size - 1] = 0;
}

TEST(StackTrace, PassesAFunctionWhoseStackHasNoFixedSize) {
  for (const std::size_t size : {16U, 1000U, 5000U}) {
    Trace trace;
    RaiseBy(trace, [&] { OnAStackOfNoFixedSize(trace, size); });
    ExpectSameStack(trace);
  }
}

TEST(StackTrace, PassesObjectiveCThatHasSomethingToCleanUp) {
  int ran = 0;
  Trace trace;
  RaiseBy(trace, [&] { ThroughFinally(&RaiseHere, &trace, &ran); });
  EXPECT_EQ(ran, 1);
  ExpectSameStack(trace);
}

TEST(StackTrace, IsKeptWhereAFunctionHasNoUnwindTables) {
  Trace trace;
  RaiseBy(trace, [&] { ThroughPlainC(&RaiseHere, &trace); });
  EXPECT_FALSE(KeptBy(trace.exception).empty());
  EXPECT_EQ(trace.walks, 1);
}

// The library's function fills its part of the stack with a word.
Addresses RaiseThroughLibrary(const char* path, std::uintptr_t filling) {
  void* const library = dlopen(path, RTLD_NOW);
  if (library == nullptr) throw std::runtime_error(dlerror());
  using Through = void (*)(Body, void*, std::uintptr_t);
  auto* const through = reinterpret_cast<Through>(dlsym(library, "ThroughUnloadable"));
  Trace trace;
  RaiseBy(trace, [&] { through(&RaiseHere, &trace, filling); });
  ExpectSameStack(trace);
  dlclose(library);
  return trace.expected;
}

TEST(StackTrace, ForgetsALibraryThatWasUnloaded) {
  const Addresses small = RaiseThroughLibrary(SMALL_UNLOADABLE, 0);
  // Whoever takes the large function for the small one finds the process's first function instead of the
  // caller, and believes that the stack ends there.
  const Addresses large = RaiseThroughLibrary(LARGE_UNLOADABLE, small.back());
  EXPECT_EQ(large.front(), small.front());  // otherwise this shows nothing
}

[[gnu::noinline]] void RaiseFrom(int depth, Trace& trace) {
  if (depth == 0) return RaiseHere(&trace);
  RaiseFrom(depth - 1, trace);
  __asm__ volatile("");
}

TEST(StackTrace, EndsAfter128FunctionsOfADeepStack) {
  Trace trace;
  RaiseBy(trace, [&] { RaiseFrom(500, trace); });
  const Addresses kept = KeptBy(trace.exception);
  EXPECT_GT(kept.size(), 120U);
  EXPECT_LE(kept.size(), 128U);
}

// The number of return addresses, seen from so deep, and whether all lie in something that is loaded.
struct Count {
  unsigned addresses;
  bool areKnown;
};

Count CountFrom(int depth) {
  if (depth != 0) {
    const Count count = CountFrom(depth - 1);
    __asm__ volatile("");
    return count;
  }
  std::uintptr_t* addresses = nullptr;
  Count count{GSPrivateReturnAddresses(&addresses), true};
  for (unsigned i = 0; i < count.addresses; ++i) {
    Dl_info about;
    if (dladdr(reinterpret_cast<void*>(addresses[i]), &about) == 0) count.areKnown = false;  // NOLINT
  }
  std::free(addresses);
  return count;
}

TEST(StackTrace, HasOneAddressForEachFunctionUpTo128) {
  const Count few = CountFrom(3);
  EXPECT_EQ(CountFrom(4).addresses, few.addresses + 1);
  EXPECT_TRUE(few.areKnown);
  const Count most = CountFrom(500);
  EXPECT_EQ(most.addresses, 128U);
  EXPECT_TRUE(most.areKnown);
}

}  // namespace
