// tests/hostrun/unit/messages_test.cpp - how a trace shows a message, from the words on the stack.
#include "hostrun/commands/messages.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "hostrun/sibling/platform_objects.h"

namespace hostrun {
namespace {

std::uint32_t Word(const void* pointer) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pointer));
}

std::uint32_t ClassWord(const char* name) {
  return Word(TheObjectRuntime().getClass(name));
}

std::uint32_t SelectorWord(const char* name) {
  return Word(TheObjectRuntime().selector(name));
}

// The message to the class of that name, with more words than any of them takes.
std::string Shown(const char* cls, const char* selector, std::initializer_list<std::uint32_t> arguments) {
  std::vector<std::uint32_t> words = {ClassWord(cls), SelectorWord(selector)};
  words.insert(words.end(), arguments);
  words.resize(16, 0xEEEEEEEE);
  return MessageText(words.data());
}

// The same with one number.
template <class T>
std::string ShownNumber(const char* selector, T number, std::uint32_t above = 0) {
  std::array<std::uint32_t, 2> words = {above, above};
  std::memcpy(words.data(), &number, sizeof number);
  return Shown("NSNumber", selector, {words[0], words[1]});
}

TEST(Messages, ShowWholeNumbersOfEachWidthWithTheirSign) {
  constexpr std::uint32_t kAbove = 0x77777777;  // belongs to no narrow number
  EXPECT_EQ(ShownNumber<std::int8_t>("numberWithChar:", -2, kAbove), "+[NSNumber numberWithChar: -2]");
  EXPECT_EQ(ShownNumber<std::uint8_t>("numberWithUnsignedChar:", 200, kAbove),
            "+[NSNumber numberWithUnsignedChar: 200]");
  EXPECT_EQ(ShownNumber<std::int16_t>("numberWithShort:", -2, kAbove), "+[NSNumber numberWithShort: -2]");
  EXPECT_EQ(ShownNumber<std::uint16_t>("numberWithUnsignedShort:", 65534, kAbove),
            "+[NSNumber numberWithUnsignedShort: 65534]");
  EXPECT_EQ(ShownNumber("numberWithInt:", -2, kAbove), "+[NSNumber numberWithInt: -2]");
  EXPECT_EQ(ShownNumber("numberWithUnsignedInt:", 4294967294U, kAbove),
            "+[NSNumber numberWithUnsignedInt: 4294967294]");
  EXPECT_EQ(ShownNumber("numberWithLong:", -2L), "+[NSNumber numberWithLong: -2]");
  EXPECT_EQ(ShownNumber("numberWithUnsignedLong:", 4294967294UL),
            "+[NSNumber numberWithUnsignedLong: 4294967294]");
  EXPECT_EQ(ShownNumber("numberWithLongLong:", -5000000000LL), "+[NSNumber numberWithLongLong: -5000000000]");
  EXPECT_EQ(ShownNumber("numberWithUnsignedLongLong:", 18446744073709551614ULL),
            "+[NSNumber numberWithUnsignedLongLong: 18446744073709551614]");
}

TEST(Messages, ShowFractionsAsPreciselyAsTheirKind) {
  EXPECT_EQ(ShownNumber("numberWithFloat:", 0.1F), "+[NSNumber numberWithFloat: 0.1]");
  EXPECT_EQ(ShownNumber("numberWithDouble:", 0.1234567890123),
            "+[NSNumber numberWithDouble: 0.1234567890123]");
}

TEST(Messages, ShowObjectsClassesSelectorsAndPointers) {
  const PlatformId text = NewPlatformString("text");
  EXPECT_EQ(Shown("NSArray", "arrayWithObject:", {0}), "+[NSArray arrayWithObject: nil]");
  EXPECT_EQ(Shown("NSArray", "arrayWithObject:", {ClassWord("NSColor")}),
            "+[NSArray arrayWithObject: NSColor]");
  EXPECT_EQ(Shown("NSArray", "arrayWithObject:", {Word(text)}),
            "+[NSArray arrayWithObject: " + PlatformObjectText(Word(text)) + "]");
  EXPECT_EQ(PlatformObjectText(Word(text)).front(), '<');
  EXPECT_EQ(Shown("NSObject", "instancesRespondToSelector:", {SelectorWord("set")}),
            "+[NSObject instancesRespondToSelector: @set]");
  EXPECT_EQ(Shown("NSObject", "instancesRespondToSelector:", {0}),
            "+[NSObject instancesRespondToSelector: nil]");
  EXPECT_EQ(Shown("NSData", "dataWithBytes:length:", {Word(text), 7}),
            "+[NSData dataWithBytes: a pointer length: 7]");
  EXPECT_EQ(Shown("NSData", "dataWithBytes:length:", {0, 8}), "+[NSData dataWithBytes: null length: 8]");
  ReleasePlatformObject(text);
}

TEST(Messages, LeaveRecordsOut) {
  EXPECT_EQ(Shown("NSValue", "valueWithRange:", {1, 2}), "+[NSValue valueWithRange: ...]");
}

// What a method's encoding says of one argument, of whatever kind, tells where the next one lies.
TEST(Messages, FindTheArgumentBehindOneOfEachKind) {
  const struct {
    const char* selector;
    const char* types;
    std::size_t offset;  // of the number
    const char* shown;
  } methods[] = {{"first:record:", "v28@0:4{_A={_B=if}[2c](_C=si)}8i24", 24, "..."},
                 {"first:array:", "v20@0:4[2{_A=ii}]8i16", 16, "..."},
                 {"first:union:", "v20@0:4(_A={_B=[3f]}d)8i16", 16, "..."},
                 {"first:pointer:", "v16@0:4^{_A=i^v}8i12", 12, "a pointer"},
                 {"first:constant:", "v16@0:4rn^{_A=ii}8i12", 12, "a pointer"},
                 {"first:function:", "v16@0:4^?8i12", 12, "a pointer"},
                 {"first:text:", "v16@0:4r*8i12", 12, "a pointer"},
                 {"first:register:", "v16@0:4i+8i+12", 12, "5"}};
  auto* const metaclass = ClassOf(TheObjectRuntime().getClass("NSObject"));
  for (const auto& [selector, types, offset, shown] : methods) {
    ASSERT_TRUE(TheObjectRuntime().addMethod(metaclass, TheObjectRuntime().selector(selector),
                                             reinterpret_cast<void*>(&SelectorWord), types));
    std::array<std::uint32_t, 8> words{ClassWord("NSObject"), SelectorWord(selector), 5};
    words.at(offset / 4) = 7;
    std::string wanted = std::string("+[NSObject ") + selector + " 7]";
    wanted.replace(wanted.find(':'), 1, std::string(": ") + shown + " ");
    EXPECT_EQ(MessageText(words.data()), wanted);
  }
}

TEST(Messages, ToNilOrToNobodyWhoKnowsThemAreShownByTheirNames) {
  const std::uint32_t words[] = {0, SelectorWord("set"), 0};
  EXPECT_EQ(MessageText(words), "[nil set]");
  EXPECT_EQ(Shown("NSColor", "nobodyKnows:", {1}), "+[NSColor nobodyKnows:]");
  EXPECT_EQ(Shown("NSColor", "redColor", {}), "+[NSColor redColor]");
}

}  // namespace
}  // namespace hostrun
