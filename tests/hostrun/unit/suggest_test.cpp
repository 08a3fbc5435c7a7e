// tests/hostrun/unit/suggest_test.cpp - which names a misspelled one may have meant.
#include "hostrun/host/suggest.h"

#include <gtest/gtest.h>

namespace hostrun {
namespace {

using Names = std::vector<std::string>;

TEST(NearestNames, AreThoseOfWhichAThirdAtMostDiffers) {
  EXPECT_EQ(NearestNames("abxdef", {"abcdef"}), Names{"abcdef"});
  EXPECT_EQ(NearestNames("abxxef", {"abcdef"}), Names{"abcdef"});
  EXPECT_EQ(NearestNames("abxxxf", {"abcdef"}), Names{});
  EXPECT_EQ(NearestNames("ab", {"ac"}), Names{});
}

TEST(NearestNames, CountALetterMoreLessOrSwappedAsOne) {
  EXPECT_EQ(NearestNames("abcx", {"abc"}), Names{"abc"});
  EXPECT_EQ(NearestNames("xabc", {"abc"}), Names{"abc"});
  EXPECT_EQ(NearestNames("ab", {"abc"}), Names{"abc"});
  EXPECT_EQ(NearestNames("bac", {"abc"}), Names{"abc"});
  EXPECT_EQ(NearestNames("acb", {"abc"}), Names{"abc"});
  EXPECT_EQ(NearestNames("cba", {"abc"}), Names{});
}

TEST(NearestNames, ComeNearestFirstAndThenInTheirOrder) {
  EXPECT_EQ(NearestNames("abcdef", {"abcdxx", "abcdey", "abcdex"}), (Names{"abcdey", "abcdex", "abcdxx"}));
}

TEST(NearestNames, AreThreeAtMost) {
  EXPECT_EQ(NearestNames("abcd", {"abce", "abcf", "abcg", "abch"}), (Names{"abce", "abcf", "abcg"}));
}

TEST(NearestNames, AreNotTwiceAsFarAsTheNearest) {
  EXPECT_EQ(NearestNames("abcdefghi", {"abcdefghx", "abcdefgxx", "abcdefxxx"}),
            (Names{"abcdefghx", "abcdefgxx"}));
}

TEST(NearestNames, LookAtNoCaseAndNameEachOnce) {
  EXPECT_EQ(NearestNames("ABCX", {"abcd", "ABCD"}), Names{"abcd"});
}

TEST(NearestNames, AreThoseThatBeginSoWhereNoneIsNear) {
  EXPECT_EQ(NearestNames("red", {"greenColor", "redColor", "RedComponent", "redColor"}),
            (Names{"redColor", "RedComponent"}));
  EXPECT_EQ(NearestNames("redd", {"reddish", "redColor"}), Names{"reddish"});
  EXPECT_EQ(NearestNames("abc", {"abcdefg1", "abcdefg2", "abcdefg3", "abcdefg4"}),
            (Names{"abcdefg1", "abcdefg2", "abcdefg3"}));
  EXPECT_EQ(NearestNames("abc", {"abcd", "abcdefgh"}), Names{"abcd"});
  EXPECT_EQ(NearestNames("re", {"redColor"}), Names{});
}

TEST(NearestNames, AreNotLookedForBeyondAHundredLetters) {
  const std::string longest(100, 'x');
  EXPECT_EQ(NearestNames(longest, {longest}), Names{longest});
  EXPECT_EQ(NearestNames(longest + "x", {longest}), Names{});
  EXPECT_EQ(NearestNames(longest, {longest + "x"}), Names{});
}

TEST(DidYouMean, JoinsTheNames) {
  EXPECT_EQ(DidYouMean("abcd", {"xyz"}), "");
  EXPECT_EQ(DidYouMean("abcd", {"abce"}), "; did you mean abce?");
  EXPECT_EQ(DidYouMean("abcd", {"abce", "abcf"}), "; did you mean abce or abcf?");
  EXPECT_EQ(DidYouMean("abcd", {"abce", "abcf", "abcg"}), "; did you mean abce, abcf or abcg?");
}

}  // namespace
}  // namespace hostrun
