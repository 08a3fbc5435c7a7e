// tests/libcocoa/message_send_test.cpp - objc_msgSend and objc_msgSend_fpret.
#include <gtest/gtest.h>

#include "bundle/platform/message.h"

namespace {

using qvx::Message;
using qvx::PlatformClass;

id NewNumber(double value) {
  static constexpr Message<"numberWithDouble:", id(double)> kMake;
  return kMake(PlatformClass<"NSNumber">(), value);
}

TEST(MessageSend, AnswersZeroInBothResultRegistersForNil) {
  std::uint32_t low = 1;
  std::uint32_t high = 1;
  // The second register matters for 64-bit results.
  __asm__ volatile("pushl $0\n\tpushl $0\n\tmovl $-1, %%edx\n\tcall *%2\n\taddl $8, %%esp"
                   : "=a"(low), "=&d"(high)
                   : "r"(&objc_msgSend)
                   : "ecx", "memory", "cc");
  EXPECT_EQ(low, 0U);
  EXPECT_EQ(high, 0U);
}

TEST(MessageSend, AnswersZeroForNilWhateverTheTypeOfTheResult) {
  constexpr Message<"length", NSUInteger()> kLength;
  constexpr Message<"longLongValue", long long()> kLongLong;
  EXPECT_EQ(kLength(nullptr), 0U);
  EXPECT_EQ(kLongLong(nullptr), 0);
}

TEST(MessageSend, AnswersPlainZeroForNilWhereAFloatIsExpected) {
  constexpr Message<"redComponent", CGFloat()> kRed;
  constexpr Message<"doubleValue", double()> kDouble;
  // The x87 stack has eight places: a send that pushed too much or too little would show by the ninth.
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(kRed(nullptr), 0.0F);
    EXPECT_EQ(kDouble(nullptr), 0.0);
  }
}

TEST(MessageSend, PassesAndReturnsFloatsByValue) {
  constexpr Message<"colorWithDeviceRed:green:blue:alpha:", id(CGFloat, CGFloat, CGFloat, CGFloat)> kColor;
  constexpr Message<"greenComponent", CGFloat()> kGreen;
  constexpr Message<"alphaComponent", CGFloat()> kAlpha;
  const id colour = kColor(PlatformClass<"NSColor">(), 0.25F, 0.5F, 0.75F, 0.125F);
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(kGreen(colour), 0.5F);
    EXPECT_EQ(kAlpha(colour), 0.125F);
  }
}

TEST(MessageSend, ReturnsDoublesAndLongLongsWhole) {
  constexpr Message<"doubleValue", double()> kDouble;
  constexpr Message<"longLongValue", long long()> kLongLong;
  constexpr Message<"numberWithLongLong:", id(long long)> kMake;
  EXPECT_EQ(kDouble(NewNumber(1.0 / 3)), 1.0 / 3);
  EXPECT_EQ(kLongLong(kMake(PlatformClass<"NSNumber">(), 0x123456789ABCDEF0LL)), 0x123456789ABCDEF0LL);
}

struct MisalignedSend {
  id receiver;
  SEL selector;
  unsigned offset;  // of the stack at the call, from a multiple of 16
  void (*send)();
};

id Send(const MisalignedSend& call) {
  id result = nullptr;
  __asm__ volatile(
      "movl %%esp, %%ebx\n\tandl $-16, %%esp\n\tsubl 8(%1), %%esp\n\t"
      "pushl 4(%1)\n\tpushl (%1)\n\tcall *12(%1)\n\tmovl %%ebx, %%esp"
      : "=a"(result)
      : "S"(&call)
      : "ebx", "ecx", "edx", "memory", "cc");
  return result;
}

TEST(MessageSend, AlignsTheStackForALookUpThatRunsAClassesFirstMethod) {
  static constexpr const char* kFresh[] = {"FreshA", "FreshB", "FreshC", "FreshD"};
  unsigned offset = 0;
  for (const char* name : kFresh) {
    const id receiver = reinterpret_cast<id>(objc_getClass(name));
    ASSERT_NE(receiver, nullptr);
    const id misalignment =
        Send({receiver, sel_registerName("misalignmentOfInitialize"), offset, &objc_msgSend});
    EXPECT_EQ(misalignment, nullptr) << "called at offset " << offset;
    offset += 4;
  }
}

TEST(MessageSend, ForwardsAFloatThatTheReceiverHandsOn) {
  constexpr Message<"forwarderTo:", id(id)> kMake;
  constexpr Message<"doubleValue", double()> kDouble;
  const id forwarder = kMake(PlatformClass<"Forwarder">(), NewNumber(0.1));
  EXPECT_EQ(kDouble(forwarder), 0.1);
  EXPECT_EQ(kDouble(forwarder), 0.1);
}

}  // namespace
