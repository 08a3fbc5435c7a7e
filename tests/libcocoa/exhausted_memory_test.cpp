// tests/libcocoa/exhausted_memory_test.cpp - Core Foundation when there is no more memory.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

#include "libcocoa/foundation/CFDictionary.h"
#include "libcocoa/foundation/FSRef.h"
#include "tests/libcocoa/guarded.h"

namespace {

constexpr std::uint32_t kUTF8 = 0x08000100;
constexpr std::size_t kMuch = 16U << 20U;   // bytes that are more than there are left
constexpr std::size_t kLittle = 8U << 20U;  // bytes that are left

// Whether the body holds in a process that has as good as no memory left. It exits with 0 or 1; an exception
// that leaves it ends it by a signal.
bool HoldsWithoutMemory(const std::function<bool()>& body) {
  const pid_t child = fork();
  if (child == 0) {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t most = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + kLittle;
    const rlimit limit = {most, most};
    if (setrlimit(RLIMIT_AS, &limit) != 0) std::_Exit(2);
    std::_Exit([&]() noexcept { return body(); }() ? 0 : 1);
  }
  int status = -1;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class ExhaustedMemory : public testing::Test {
 protected:
  void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "AddressSanitizer ends a process that asks for more memory than there is";
#endif
  }
};

TEST_F(ExhaustedMemory, GivesNoString) {
  const std::u16string units(kMuch, u'\u4E00');
  const std::string text(kMuch, 'a');
  const CFStringRef string = CFStringCreateWithCString(nullptr, text.c_str(), kUTF8);
  ASSERT_NE(string, nullptr);
  EXPECT_TRUE(HoldsWithoutMemory([&] {
    return CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(units.data()), kMuch) ==
           nullptr;
  }));
  EXPECT_TRUE(
      HoldsWithoutMemory([&] { return CFStringCreateWithCString(nullptr, text.c_str(), kUTF8) == nullptr; }));
  EXPECT_TRUE(HoldsWithoutMemory([&] { return CFStringCreateMutableCopy(nullptr, 0, string) == nullptr; }));
  EXPECT_TRUE(HoldsWithoutMemory([&] {
    return CFStringCreateWithCString(nullptr, "short", kUTF8) != nullptr;
  })) << "there is enough for that";
  CFRelease(string);
}

TEST_F(ExhaustedMemory, LeavesAStringAsItWas) {
  const std::u16string units(kLittle / 8 * 3, u'\u00E9');  // there is enough to look at it
  const CFStringRef string = CFStringCreateWithCharacters(
      nullptr, reinterpret_cast<const UniChar*>(units.data()), static_cast<CFIndex>(units.size()));
  const CFMutableStringRef copy = CFStringCreateMutableCopy(nullptr, 0, string);
  EXPECT_TRUE(HoldsWithoutMemory([&] {
    CFStringNormalize(copy, 0);
    return CFStringGetLength(copy) == static_cast<CFIndex>(units.size());
  }));
  CFRelease(copy);
  CFRelease(string);
}

TEST_F(ExhaustedMemory, GivesNoURL) {
  FSRef ref;
  ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const std::uint8_t*>("/"), &ref, nullptr), noErr);
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  const CFStringRef name = CFStringCreateWithCString(nullptr, std::string(kMuch, 'a').c_str(), kUTF8);
  EXPECT_TRUE(HoldsWithoutMemory(
      [&] { return CFURLCreateCopyAppendingPathComponent(nullptr, url, name, 0) == nullptr; }));
  CFRelease(name);
  CFRelease(url);
}

TEST_F(ExhaustedMemory, EntersNothingMoreInADictionary) {
  EXPECT_TRUE(HoldsWithoutMemory([] {
    const CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr);
    const auto isThere = [&](std::uintptr_t key) {
      return CFDictionaryGetValue(dictionary, reinterpret_cast<void*>(key)) == dictionary;
    };
    for (std::uintptr_t key = 0; key < 3'000'000; ++key)
      CFDictionarySetValue(dictionary, reinterpret_cast<void*>(key), dictionary);
    const auto count = static_cast<std::uintptr_t>(CFDictionaryGetCount(dictionary));
    return count < 3'000'000 && isThere(0) && isThere(count - 1) && !isThere(count);
  }));
}

TEST_F(ExhaustedMemory, LetsADictionaryTakeOneEntryForAnother) {
  EXPECT_TRUE(HoldsWithoutMemory([] {
    const CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr);
    for (std::uintptr_t key = 0; key < 3'000'000; ++key)
      CFDictionarySetValue(dictionary, reinterpret_cast<void*>(key), dictionary);
    CFDictionaryRemoveValue(dictionary, nullptr);
    void* const last = reinterpret_cast<void*>(std::uintptr_t{3'000'000});
    CFDictionarySetValue(dictionary, last, dictionary);
    return CFDictionaryGetValue(dictionary, last) == dictionary;
  }));
}

}  // namespace
