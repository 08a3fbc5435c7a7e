// tests/libcocoa/verbatim_string_test.cpp - strings of units that are no text: read, copied, and no further
// than their end.
#include <gtest/gtest.h>

#include <string>

#include "tests/libcocoa/guarded.h"

namespace {

using qvx::Message;

class VerbatimString : public testing::Test {
 protected:
  ~VerbatimString() override { CFRelease(string_); }

  // What getCharacters:range: leaves in a buffer of eight units.
  std::u16string Read(NSUInteger location, NSUInteger length) const {
    std::u16string buffer(8, u'-');
    // A range is passed as its two words.
    Message<"getCharacters:range:", void(char16_t*, NSUInteger, NSUInteger)>()(object_, buffer.data(),
                                                                               location, length);
    return buffer;
  }

  const std::u16string units_{u'a', u'b', 0xD800, u'c', u'd'};
  const CFStringRef string_ = CFStringCreateWithCharacters(
      nullptr, reinterpret_cast<const UniChar*>(units_.data()), static_cast<CFIndex>(units_.size()));
  const id object_ = reinterpret_cast<id>(const_cast<void*>(static_cast<const void*>(string_)));
};

TEST_F(VerbatimString, GivesItsUnitsFromAnyPlace) {
  for (NSUInteger i = 0; i <= 5; ++i) {
    EXPECT_EQ(Read(i, 5 - i), units_.substr(i) + std::u16string(3 + i, u'-')) << i;
  }
  EXPECT_EQ(Read(1, 2), units_.substr(1, 2) + u"------");
}

TEST_F(VerbatimString, GivesNoneBeyondItsEnd) {
  constexpr NSUInteger kBeyond[][2] = {{0, 6}, {2, 4}, {5, 1}, {6, 0}, {7, 0}, {2, 0xFFFFFFFFU}};
  for (const auto& [location, length] : kBeyond) {
    EXPECT_EQ(NameOf(Guarded([&] { Read(location, length); })), "NSRangeException") << location << length;
  }
  constexpr Message<"characterAtIndex:", std::uint16_t(NSUInteger)> kCharacter;
  EXPECT_EQ(kCharacter(object_, 4), u'd');
  EXPECT_EQ(NameOf(Guarded([&] { kCharacter(object_, 5); })), "NSRangeException");
}

TEST_F(VerbatimString, IsItsOwnCopyWithOneReferenceMore) {
  constexpr Message<"retainCount", NSUInteger()> kRetainCount;
  EXPECT_EQ(kRetainCount(object_), 1U);
  EXPECT_EQ((Message<"copy", id()>()(object_)), object_);
  EXPECT_EQ(kRetainCount(object_), 2U);
  CFRelease(string_);
}

}  // namespace
