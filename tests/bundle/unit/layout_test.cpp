// tests/bundle/unit/layout_test.cpp - the registered records: every word, every declaration, in both layouts.
#include <set>

#include "bundle/classes/tables.h"
#include "tests/bundle/unit/declarations.h"
#include "tests/bundle/unit/fixture.h"

namespace unit {
namespace {

using Entries = std::vector<RegisteredClass::Entry>;

Lines Declarations(const Entries& entries) {
  Lines lines;
  for (const RegisteredClass::Entry& each : entries) lines.push_back(each.declaration);
  return lines;
}

const char* Text(std::uint32_t word) {
  return reinterpret_cast<const char*>(static_cast<std::uintptr_t>(word));
}

// The newest and the oldest layout.
class Layout : public FreshBundle, public testing::WithParamInterface<long double> {
 protected:
  void SetUp() override { Start(GetParam()); }
  static bool Old() { return GetParam() < 2012.0L; }
};

INSTANTIATE_TEST_SUITE_P(Hosts, Layout, testing::Values(2015.0L, 2012.0L, 2011.0L),
                         [](const auto& each) { return std::to_string(static_cast<int>(each.param)); });

struct ExpectedClass {
  const char* name;
  std::size_t properties;
  std::size_t methods;
  std::size_t constants;
  std::size_t sharedMethods;
};
const ExpectedClass kExpected[] = {
    {kColor, kColorProperties.size(), kColorMethods.size(), 0, ColorSharedMethods().size()},
    {kList, 0, kListMethods.size(), 0, 0},
    {kSpace, 0, kSpaceMethods.size(), kSpaceConstants.size(), SpaceSharedMethods().size()}};

TEST_P(Layout, EveryWordOfTheThreeDefinitions) {
  for (const ExpectedClass& expected : kExpected) {
    SCOPED_TRACE(expected.name);
    const std::vector<std::uint32_t>& words = host.Class(expected.name).words;
    EXPECT_EQ(words[0], Old() ? 9U : GetParam() < 2013.0L ? 10U : 13U);
    EXPECT_STREQ(Text(words[1]), expected.name);
    EXPECT_EQ(words[2], 0U);
    EXPECT_EQ(words[3], 16U);
    EXPECT_EQ(words[4], 0U);
    EXPECT_NE(words[5], 0U);
    EXPECT_NE(words[6], 0U);
    EXPECT_EQ(words[7] != 0, expected.properties != 0);
    EXPECT_EQ(words[8], expected.properties);
    EXPECT_NE(words[9], 0U);
    EXPECT_EQ(words[10], expected.methods);
    for (std::size_t word = 11; word <= 17; ++word) EXPECT_EQ(words[word], 0U) << "word " << word;
    EXPECT_EQ(words[18] != 0, expected.constants != 0);
    EXPECT_EQ(words[19], expected.constants);
    EXPECT_EQ(words[20], 4U);
    EXPECT_EQ(words[21], 0U);
    EXPECT_EQ(words[22], 0U);
    EXPECT_EQ(words[23] != 0, expected.sharedMethods != 0);
    EXPECT_EQ(words[24], expected.sharedMethods);
    for (std::size_t word = 25; word <= 28; ++word) EXPECT_EQ(words[word], 0U) << "word " << word;
  }
}

TEST_P(Layout, ThePropertiesOfColorsToTheLetter) {
  const Entries& entries = host.Class(kColor).properties;
  ASSERT_EQ(entries.size(), kColorProperties.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const std::vector<std::uint32_t>& words = entries[i].words;
    SCOPED_TRACE(kColorProperties[i].name);
    EXPECT_EQ(words.size(), Old() ? 10U : 12U);
    EXPECT_EQ(words[0], 0U);
    EXPECT_EQ(Text(words[1]), kColorProperties[i].name);
    EXPECT_EQ(Text(words[2]), kColorProperties[i].type);
    EXPECT_EQ(words[3], 6U);
    EXPECT_NE(words[4], 0U);
    for (std::size_t word = 5; word < words.size(); ++word) EXPECT_EQ(words[word], 0U) << "word " << word;
  }
}

TEST_P(Layout, TheMethodsOfColorsToTheLetter) {
  EXPECT_THAT(Declarations(host.Class(kColor).methods), ElementsAreArray(kColorMethods));
}

TEST_P(Layout, TheSharedMethodsOfColorsToTheLetter) {
  EXPECT_THAT(Declarations(host.Class(kColor).sharedMethods), ElementsAreArray(ColorSharedMethods()));
}

TEST_P(Layout, TheMethodsOfColorListsToTheLetter) {
  EXPECT_THAT(Declarations(host.Class(kList).methods), ElementsAreArray(kListMethods));
}

TEST_P(Layout, TheMethodsOfColorSpacesToTheLetter) {
  EXPECT_THAT(Declarations(host.Class(kSpace).methods), ElementsAreArray(kSpaceMethods));
}

TEST_P(Layout, TheSharedMethodsOfColorSpacesToTheLetter) {
  EXPECT_THAT(Declarations(host.Class(kSpace).sharedMethods), ElementsAreArray(SpaceSharedMethods()));
}

TEST_P(Layout, TheConstantsOfColorSpacesToTheLetter) {
  const Entries& entries = host.Class(kSpace).constants;
  EXPECT_THAT(Declarations(entries), ElementsAreArray(kSpaceConstants));
  for (const RegisteredClass::Entry& entry : entries) {
    EXPECT_EQ(entry.words.size(), Old() ? 3U : 5U);
    for (std::size_t word = 1; word < entry.words.size(); ++word) EXPECT_EQ(entry.words[word], 0U);
  }
}

TEST_P(Layout, EveryMethodRecordHoldsAFunctionFlagsAndNothingElse) {
  for (const ExpectedClass& expected : kExpected) {
    const RegisteredClass& registered = host.Class(expected.name);
    for (const Entries* entries : {&registered.methods, &registered.sharedMethods}) {
      for (const RegisteredClass::Entry& entry : *entries) {
        SCOPED_TRACE(entry.declaration);
        EXPECT_EQ(entry.words.size(), Old() ? 4U : 6U);
        EXPECT_NE(entry.words[0], 0U);
        EXPECT_EQ(entry.words[1], 0U);
        const bool dummyConstructor = entry.declaration == "Constructor";
        EXPECT_EQ(entry.words[3], dummyConstructor ? 132U : 4U);
        for (std::size_t word = 4; word < entry.words.size(); ++word) EXPECT_EQ(entry.words[word], 0U);
      }
    }
  }
}

TEST(JoinedText, HoldsBothTextsAndOneTerminator) {
  constexpr const auto& joined = qvx::kJoined<"ab", "cd">;
  EXPECT_STREQ(joined.text, "abcd");
  EXPECT_EQ(sizeof joined.text, 5U);
}

TEST_P(Layout, BothFormsOfColorWithColorSpaceAreOneFunction) {
  const Entries& entries = host.Class(kColor).sharedMethods;
  EXPECT_EQ(entries[0].function, entries[1].function);
}

TEST_P(Layout, AllOtherFunctionsAreDistinct) {
  std::set<void*> functions;
  std::size_t count = 0;
  for (const ExpectedClass& expected : kExpected) {
    const RegisteredClass& registered = host.Class(expected.name);
    for (const Entries* entries : {&registered.methods, &registered.sharedMethods, &registered.properties}) {
      for (const RegisteredClass::Entry& entry : *entries) {
        functions.insert(entry.function);
        ++count;
      }
    }
  }
  EXPECT_EQ(functions.size(), count - 1);
}

}  // namespace
}  // namespace unit
