// tests/libcocoa/dictionary_test.cpp - dictionaries from pointer to pointer.
#include <gtest/gtest.h>
#include <malloc.h>

#include <limits>

#include "libcocoa/foundation/CFDictionary.h"
#include "tests/libcocoa/guarded.h"

namespace {

const void* Pointer(std::uintptr_t number) {
  return reinterpret_cast<const void*>(number);
}

class Dictionary : public testing::Test {
 protected:
  ~Dictionary() override { CFRelease(dictionary_); }
  CFMutableDictionaryRef dictionary_ = CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr);
};

TEST_F(Dictionary, IsEmptyAtFirst) {
  EXPECT_EQ(CFDictionaryGetCount(dictionary_), 0);
  EXPECT_EQ(CFDictionaryGetValue(dictionary_, Pointer(16)), nullptr);
}

TEST_F(Dictionary, FindsWhatWasSetAndNothingElse) {
  CFDictionarySetValue(dictionary_, Pointer(16), Pointer(1));
  CFDictionarySetValue(dictionary_, Pointer(32), Pointer(2));
  EXPECT_EQ(CFDictionaryGetValue(dictionary_, Pointer(16)), Pointer(1));
  EXPECT_EQ(CFDictionaryGetValue(dictionary_, Pointer(32)), Pointer(2));
  EXPECT_EQ(CFDictionaryGetValue(dictionary_, Pointer(48)), nullptr);
  EXPECT_EQ(CFDictionaryGetCount(dictionary_), 2);
}

TEST_F(Dictionary, ReplacesAValue) {
  CFDictionarySetValue(dictionary_, Pointer(16), Pointer(1));
  CFDictionarySetValue(dictionary_, Pointer(16), Pointer(2));
  EXPECT_EQ(CFDictionaryGetValue(dictionary_, Pointer(16)), Pointer(2));
  EXPECT_EQ(CFDictionaryGetCount(dictionary_), 1);
}

TEST_F(Dictionary, ForgetsWhatWasRemovedAndIgnoresWhatIsNotThere) {
  CFDictionarySetValue(dictionary_, Pointer(16), Pointer(1));
  CFDictionaryRemoveValue(dictionary_, Pointer(16));
  CFDictionaryRemoveValue(dictionary_, Pointer(16));
  EXPECT_EQ(CFDictionaryGetValue(dictionary_, Pointer(16)), nullptr);
  EXPECT_EQ(CFDictionaryGetCount(dictionary_), 0);
}

TEST_F(Dictionary, TakesNullAsAKeyAndAsAValue) {
  CFDictionarySetValue(dictionary_, nullptr, Pointer(1));
  CFDictionarySetValue(dictionary_, Pointer(16), nullptr);
  EXPECT_EQ(CFDictionaryGetValue(dictionary_, nullptr), Pointer(1));
  EXPECT_EQ(CFDictionaryGetCount(dictionary_), 2);
}

TEST_F(Dictionary, IgnoresTheOneKeyThatItCanNotHold) {
  CFDictionarySetValue(dictionary_, Pointer(UINTPTR_MAX), Pointer(1));
  EXPECT_EQ(CFDictionaryGetValue(dictionary_, Pointer(UINTPTR_MAX)), nullptr);
  CFDictionaryRemoveValue(dictionary_, Pointer(UINTPTR_MAX));
  EXPECT_EQ(CFDictionaryGetCount(dictionary_), 0);
  CFDictionarySetValue(dictionary_, Pointer(16), Pointer(1));
  EXPECT_EQ(CFDictionaryGetCount(dictionary_), 1);
}

TEST_F(Dictionary, NeitherRetainsNorAsksItsKeys) {
  constexpr qvx::Message<"retainCount", NSUInteger()> kRetainCount;
  const id object = qvx::Message<"new", id()>()(qvx::PlatformClass<"NSObject">());
  CFDictionarySetValue(dictionary_, object, Pointer(1));
  EXPECT_EQ(kRetainCount(object), 1U);
  CFRelease(object);
  // The object is gone; its address is a key still.
  EXPECT_EQ(CFDictionaryGetValue(dictionary_, object), Pointer(1));
}

TEST_F(Dictionary, KeepsAHundredThousandEntriesApart) {
  for (std::uintptr_t i = 1; i <= 100000; ++i) CFDictionarySetValue(dictionary_, Pointer(i * 16), Pointer(i));
  for (std::uintptr_t i = 1; i <= 100000; i += 2) CFDictionaryRemoveValue(dictionary_, Pointer(i * 16));
  EXPECT_EQ(CFDictionaryGetCount(dictionary_), 50000);
  EXPECT_EQ(CFDictionaryGetValue(dictionary_, Pointer(16 * 16)), Pointer(16));
  EXPECT_EQ(CFDictionaryGetValue(dictionary_, Pointer(17 * 16)), nullptr);
}

std::size_t HeapInUse() {
  const struct mallinfo2 use = ::mallinfo2();
  return use.uordblks + use.hblkhd;
}

TEST_F(Dictionary, GivesMemoryBackAndKeepsWhatIsLeft) {
  constexpr std::uintptr_t kEntries = 20000;
  const std::size_t before = HeapInUse();
  for (std::uintptr_t i = 1; i <= kEntries; ++i)
    CFDictionarySetValue(dictionary_, Pointer(i), Pointer(3 * i));
  const std::size_t most = HeapInUse();
  for (std::uintptr_t i = 1; i <= kEntries; ++i) {
    if (i % 100 != 0) CFDictionaryRemoveValue(dictionary_, Pointer(i));
  }
  EXPECT_EQ(CFDictionaryGetCount(dictionary_), static_cast<CFIndex>(kEntries / 100));
  for (std::uintptr_t i = 1; i <= kEntries; ++i)
    ASSERT_EQ(CFDictionaryGetValue(dictionary_, Pointer(i)), i % 100 == 0 ? Pointer(3 * i) : nullptr);
  EXPECT_LE(HeapInUse() - before, (most - before) / 2);
}

// How many of the entries with the keys from 1 on are left when removing the last of them gives memory back;
// 0 where none does.
std::uintptr_t LeftWhenMemoryIsGivenBack(CFMutableDictionaryRef dictionary, std::uintptr_t entries) {
  for (std::uintptr_t i = 1; i <= entries; ++i) CFDictionarySetValue(dictionary, Pointer(i), Pointer(1));
  for (std::uintptr_t left = entries; left-- != 0;) {
    const std::size_t before = HeapInUse();
    CFDictionaryRemoveValue(dictionary, Pointer(left + 1));
    if (HeapInUse() + 1000 < before) return left;
  }
  return 0;
}

TEST_F(Dictionary, GivesMemoryBackAtAQuarterOfMoreThan1024) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer's allocator counts nothing";
#endif
  EXPECT_EQ(LeftWhenMemoryIsGivenBack(dictionary_, 1024), 0U);
  EXPECT_EQ(LeftWhenMemoryIsGivenBack(dictionary_, 2048), 512U);
  // It counts anew from there.
  EXPECT_EQ(LeftWhenMemoryIsGivenBack(dictionary_, 1024), 0U);
  EXPECT_EQ(LeftWhenMemoryIsGivenBack(dictionary_, 1025), 256U);
}

TEST(Dictionaries, GiveTheirMemoryBackWhenTheyGo) {
  const auto makeMany = [] {
    for (int i = 0; i < 50; ++i) {
      const CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr);
      CFDictionarySetValue(dictionary, Pointer(16), Pointer(1));
      CFRelease(dictionary);
    }
  };
  makeMany();
  const std::size_t before = HeapInUse();
  makeMany();
  EXPECT_LT(HeapInUse(), before + 500);
}

TEST_F(Dictionary, IsAnObjectWithReferences) {
  constexpr qvx::Message<"retainCount", NSUInteger()> kRetainCount;
  EXPECT_EQ(CFRetain(dictionary_), dictionary_);
  EXPECT_EQ(kRetainCount(reinterpret_cast<id>(dictionary_)), 2U);
  CFRelease(dictionary_);
  EXPECT_EQ(kRetainCount(reinterpret_cast<id>(dictionary_)), 1U);
}

TEST(NoDictionary, AnswersNothingAndIgnoresChanges) {
  CFDictionarySetValue(nullptr, Pointer(16), Pointer(1));
  CFDictionaryRemoveValue(nullptr, Pointer(16));
  EXPECT_EQ(CFDictionaryGetValue(nullptr, Pointer(16)), nullptr);
  EXPECT_EQ(CFDictionaryGetCount(nullptr), 0);
}

TEST(NoDictionary, IsWhatAnotherObjectIs) {
  const id object = qvx::Message<"dictionary", id()>()(qvx::PlatformClass<"NSMutableDictionary">());
  const auto dictionary = reinterpret_cast<CFMutableDictionaryRef>(object);
  CFDictionarySetValue(dictionary, Pointer(16), Pointer(1));
  EXPECT_EQ(CFDictionaryGetValue(dictionary, Pointer(16)), nullptr);
  EXPECT_EQ(CFDictionaryGetCount(dictionary), 0);
}

TEST(LargestCapacity, IsAHintOnly) {
  const CFMutableDictionaryRef dictionary =
      CFDictionaryCreateMutable(nullptr, std::numeric_limits<CFIndex>::max(), nullptr, nullptr);
  CFDictionarySetValue(dictionary, Pointer(16), Pointer(1));
  EXPECT_EQ(CFDictionaryGetValue(dictionary, Pointer(16)), Pointer(1));
  CFRelease(dictionary);
}

TEST(NoDictionary, IsMadeWithCallBacksOrANegativeCapacity) {
  EXPECT_EQ(CFDictionaryCreateMutable(nullptr, -1, nullptr, nullptr), nullptr);
  EXPECT_EQ(CFDictionaryCreateMutable(nullptr, 0, Pointer(16), nullptr), nullptr);
  EXPECT_EQ(CFDictionaryCreateMutable(nullptr, 0, nullptr, Pointer(16)), nullptr);
}

TEST(References, OfNothingAreNothing) {
  EXPECT_EQ(CFRetain(nullptr), nullptr);
}

}  // namespace
