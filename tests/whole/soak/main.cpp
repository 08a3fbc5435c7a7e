// tests/whole/soak/main.cpp - a long life of the bundle on the real platform: nothing may pile up.
//
//   soak [COLOURS [HELD [EACH [VERSION]]]]   makes, reads and frees COLOURS colours one by one, then holds
//   HELD at once, then makes EACH things of each kind in diet.cpp, on a host of that version
#include <malloc.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "hostrun/host/host.h"
#include "tests/whole/real/real_host.h"
#include "tests/whole/soak/diet.h"

namespace {

using hostrun::ArgumentWords;
using hostrun::Value;

constexpr double kTolerance = 0.02;

int failures = 0;

void Check(bool right, const char* what, double wanted, double found) {
  if (right) return;
  ++failures;
  std::printf("%s: wanted %.6g, found %.6g\n", what, wanted, found);
}

struct Functions {
  const hostrun::Method& make = real::MethodOf("NSColorQVX", "colorWithDeviceRGB(");
  const hostrun::Method& red = real::GetterOf("NSColorQVX", "redComponent");
  const hostrun::Method& value = real::GetterOf("NSColorQVX", "colorValue");
  const hostrun::Method& description = real::GetterOf("NSColorQVX", "description");
  const hostrun::Method& derive = real::MethodOf("NSColorQVX", "colorWithAlphaComponent(");
};

// Every colour differs from the one before: the platform can't answer a kept one.
Value MakeColour(const Functions& functions, int index) {
  ArgumentWords words;
  words.PushDouble((index % 256) / 255.0);
  words.PushDouble((index / 256 % 256) / 255.0);
  words.PushDouble((index / 65536 % 256) / 255.0);
  words.PushDouble(1.0);
  return real::Call(functions.make, words);
}

Value Get(const hostrun::Method& getter, const Value& colour) {
  ArgumentWords words;
  words.PushHandle(colour);
  words.PushWord(0);
  return real::Call(getter, words);
}

void ReadColour(const Functions& functions, const Value& colour, int index) {
  const double red = (index % 256) / 255.0;
  const double found = Get(functions.red, colour).AsReal();
  Check(found > red - 1e-6 && found < red + 1e-6, "redComponent", red, found);
  const auto low = static_cast<std::uint32_t>(Get(functions.value, colour).color() & 0xFFU);
  const auto blue = static_cast<std::uint32_t>(index / 65536 % 256);
  Check(low + 1 >= blue && low <= blue, "the blue field of colorValue", blue, low);
  if (index % 64 != 0) return;
  Get(functions.description, colour);
  ArgumentWords words;
  words.PushHandle(colour);
  words.PushDouble(0.5);
  real::Call(functions.derive, words);
}

void CheckNothingLeft(const char* when, long long start) {
  const long long now = real::ResidentBytes();
  std::printf("%s: %.2f MB resident, %.2f MB at the start (%+.2f %%), %ld in the cache\n", when,
              static_cast<double>(now) / 1e6, static_cast<double>(start) / 1e6,
              100.0 * static_cast<double>(now - start) / static_cast<double>(start), real::CachedInstances());
  Check(static_cast<double>(now) <= static_cast<double>(start) * (1 + kTolerance), when,
        static_cast<double>(start), static_cast<double>(now));
  Check(real::CachedInstances() == 0, "entries in the instance cache", 0,
        static_cast<double>(real::CachedInstances()));
  const hostrun::LiveCounts live = hostrun::CountLive();
  if (live.Any()) {
    ++failures;
    std::printf("still alive:\n%s", hostrun::DescribeLive(live).c_str());
  }
}

void OneByOne(const Functions& functions, int count, long long start) {
  constexpr int kQuarters = 4;
  for (int quarter = 0; quarter < kQuarters; ++quarter) {
    for (int i = count / kQuarters * quarter; i < count / kQuarters * (quarter + 1); ++i) {
      const Value colour = MakeColour(functions, i);
      ReadColour(functions, colour, i);
    }
    // Autoreleased objects that pile up would show here, long before the end.
    CheckNothingLeft("making and freeing", start);
  }
}

void AllAtOnce(const Functions& functions, int count, long long start) {
  {
    std::vector<Value> held;
    held.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) held.push_back(MakeColour(functions, i));
    std::printf("holding %d: %.2f MB resident\n", count, static_cast<double>(real::ResidentBytes()) / 1e6);
    Check(real::CachedInstances() == count, "entries in the instance cache", count,
          static_cast<double>(real::CachedInstances()));
    for (int i = 0; i < count; ++i) ReadColour(functions, held[static_cast<std::size_t>(i)], i);
  }
  CheckNothingLeft("after holding", start);
}

// Bytes that the process has in use.
long long UsedBytes() {
  return static_cast<long long>(mallinfo2().uordblks);
}

// Each kind by itself, so that what grows has a name. What is made once and kept is made in the first
// quarter.
void EachKind(int count) {
  constexpr double kLeast = 4;  // bytes a thing; the smallest piece of memory has 16
  for (const soak::Kind& kind : soak::Diet()) {
    const int raised = real::RaisedSoFar();
    for (int i = 0; i < count / 4; ++i) kind.consume(i);
    const long long before = UsedBytes();
    for (int i = 0; i < count; ++i) kind.consume(count / 4 + i);
    const double each = static_cast<double>(UsedBytes() - before) / count;
    std::printf("%s: %+.2f bytes each\n", kind.name, each);
    Check(each < kLeast, kind.name, 0, each);
    Check(!hostrun::CountLive().Any(), kind.name, 0, 1);
    const int exceptions = kind.raises ? count / 4 + count : 0;
    Check(real::RaisedSoFar() - raised == exceptions, kind.name, exceptions, real::RaisedSoFar() - raised);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int colours = argc > 1 ? std::atoi(argv[1]) : 1'000'000;
  const int held = argc > 2 ? std::atoi(argv[2]) : 200'000;
  const int each = argc > 3 ? std::atoi(argv[3]) : 10'000;
  const double version = argc > 4 ? std::atof(argv[4]) : 2015.0;
  const auto began = std::chrono::steady_clock::now();
  real::StartHost(version);
  const Functions functions;
  // What is made once and kept is made before the start is measured.
  for (int i = 0; i < 1000; ++i) ReadColour(functions, MakeColour(functions, i), i);
  const long long start = real::ResidentBytes();
  OneByOne(functions, colours, start);
  AllAtOnce(functions, held, start);
  Check(real::RaisedSoFar() == 0, "host exceptions", 0, real::RaisedSoFar());
  EachKind(each);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
  std::printf("%d colours made, read and freed, %d held at once: %d failures; %.1f s\n", colours, held,
              failures, took.count());
  return failures == 0 ? 0 : 1;
}
