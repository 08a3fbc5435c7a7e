// tests/bundle/unit/entry_test.cpp - REALPluginMain: the version, the negotiation, the order of registration.
#include <cmath>
#include <limits>

#include "bundle/classes/classes.h"
#include "bundle/host/services.h"
#include "bundle/plugin/registration.h"
#include "tests/bundle/unit/fixture.h"

extern "C" void REALPluginMain(void* (*resolver)(const char*));

namespace unit {
namespace {

class Entry : public FreshBundle {
 protected:
  static void Enter(long double version) {
    host.version = version;
    Call(&REALPluginMain, &Host::Resolve);
  }
  static Lines RegisteredNames() {
    Lines names;
    for (const RegisteredClass& each : host.registered)
      names.emplace_back(reinterpret_cast<const char*>(each.words[1]));
    return names;
  }
};

TEST_F(Entry, StartsWithLayout13AndNoHost) {
  EXPECT_EQ(qvx::CurrentREALControlVersion, 13);
  for (const auto* const definition :
       {&qvx::NSColorDefinition, &qvx::NSColorListDefinition, &qvx::NSColorSpaceDefinition}) {
    EXPECT_EQ(definition->version, 13);
  }
  EXPECT_EQ(qvx::rbversion, 0.0);
  EXPECT_EQ(qvx::gResolver, nullptr);
}

TEST_F(Entry, AsksAnnouncesAndRegistersInThisOrder) {
  Enter(2015.0L);
  EXPECT_THAT(Log().Lines(),
              ElementsAre("resolve REALGetRBVersion", "REALGetRBVersion()", "resolve RegisterPluginVersion",
                          "RegisterPluginVersion(13)", "resolve PluginRegisterClass",
                          "PluginRegisterClass(NSColorQVX)", "PluginRegisterClass(NSColorListQVX)",
                          "PluginRegisterClass(NSColorSpaceQVX)"));
}

TEST_F(Entry, RegistersTheThreeClassesInOrderOnOldHostsToo) {
  Enter(2011.0L);
  EXPECT_THAT(RegisteredNames(), ElementsAre("NSColorQVX", "NSColorListQVX", "NSColorSpaceQVX"));
}

TEST_F(Entry, KeepsTheResolverAndTheVersion) {
  Enter(2013.04L);
  EXPECT_EQ(qvx::gResolver, &Host::Resolve);
  EXPECT_EQ(qvx::rbversion, 2013.04);
}

TEST_F(Entry, TouchesThePlatformInNoWay) {
  Enter(2015.0L);
  EXPECT_THAT(Log().Messages(), IsEmpty());
  EXPECT_THAT(Log().Calls(), IsEmpty());
  EXPECT_THAT(Log().Lookups(), IsEmpty());
  EXPECT_THAT(Log().Frames(), IsEmpty());
}

TEST_F(Entry, TakesAHostWithoutAVersionForTheOldest) {
  host.missing = {"REALGetRBVersion"};
  Enter(2015.0L);
  EXPECT_EQ(qvx::rbversion, 0.0);
  EXPECT_EQ(qvx::CurrentREALControlVersion, 9);
  EXPECT_THAT(host.announcedVersions, ElementsAre(9));
  EXPECT_EQ(Calls("REALGetRBVersion"), 0);
  ASSERT_THAT(host.registered, SizeIs(3));
  EXPECT_EQ(host.registered[0].words[0], 9U);
}

TEST_F(Entry, RegistersOnAHostThatNegotiatesNoLayout) {
  host.missing = {"RegisterPluginVersion"};
  Enter(2015.0L);
  EXPECT_THAT(host.announcedVersions, IsEmpty());
  EXPECT_THAT(RegisteredNames(), ElementsAre("NSColorQVX", "NSColorListQVX", "NSColorSpaceQVX"));
}

class EntryAgain : public Entry, public testing::WithParamInterface<long double> {};

INSTANTIATE_TEST_SUITE_P(Hosts, EntryAgain, testing::Values(2011.0L, 2015.0L),
                         [](const auto& each) { return each.param < 2012.0L ? "old" : "new"; });

TEST_P(EntryAgain, ASecondCallChangesAndRegistersNothing) {
  struct Definition {
    std::vector<std::uint32_t> words;
    std::vector<std::vector<std::uint32_t>> records;
  };
  const auto definitions = [] {
    std::vector<Definition> all;
    for (const RegisteredClass& each : host.registered) {
      const RegisteredClass now = ReadDefinition(each.live);
      Definition definition{now.words, {}};
      for (const auto* table : {&now.properties, &now.methods, &now.sharedMethods, &now.constants}) {
        for (const auto& entry : *table) definition.records.push_back(entry.words);
      }
      all.push_back(std::move(definition));
    }
    return all;
  };
  Enter(GetParam());
  const auto before = definitions();
  const std::int32_t layout = qvx::CurrentREALControlVersion;
  Log().Clear();
  ForgetBundleBlocks();
  host.version = 2015.0L;
  Call(
      &REALPluginMain, +[](const char*) -> void* { return nullptr; });
  EXPECT_THAT(Log().Lines(), IsEmpty());
  EXPECT_EQ(LiveBundleBlocks(), 0);
  EXPECT_EQ(qvx::gResolver, &Host::Resolve);
  EXPECT_EQ(qvx::rbversion, static_cast<double>(GetParam()));
  EXPECT_EQ(qvx::CurrentREALControlVersion, layout);
  EXPECT_THAT(host.registered, SizeIs(3));
  const auto after = definitions();
  ASSERT_EQ(after.size(), before.size());
  for (std::size_t i = 0; i < after.size(); ++i) {
    EXPECT_EQ(after[i].words, before[i].words);
    EXPECT_EQ(after[i].records, before[i].records);
  }
}

TEST_F(Entry, GoesOnSilentlyOnAHostThatRegistersNoClasses) {
  host.missing = {"PluginRegisterClass"};
  Enter(2015.0L);
  EXPECT_EQ(Asked("PluginRegisterClass"), 3);  // once per class: a null answer is asked for again
  EXPECT_THAT(host.registered, IsEmpty());
  EXPECT_THAT(host.raised, IsEmpty());
}

struct Negotiation {
  const char* name;
  long double version;
  std::int32_t layout;
};

class EntryNegotiation : public Entry, public testing::WithParamInterface<Negotiation> {};

TEST_P(EntryNegotiation, AnnouncesWhatItKeeps) {
  Enter(GetParam().version);
  EXPECT_EQ(qvx::CurrentREALControlVersion, GetParam().layout);
  EXPECT_THAT(host.announcedVersions, ElementsAre(GetParam().layout));
  ASSERT_THAT(host.registered, SizeIs(3));
  for (const RegisteredClass& each : host.registered) {
    EXPECT_EQ(each.words[0], static_cast<std::uint32_t>(GetParam().layout));
  }
}

// The host answers extended precision; only the value rounded to a double is compared. 2013.03L and 2013.04L
// differ from the doubles of the same name.
INSTANTIATE_TEST_SUITE_P(
    Versions, EntryNegotiation,
    testing::Values(Negotiation{"zero", 0.0L, 9}, Negotiation{"negative", -1.0L, 9},
                    Negotiation{"v2011", 2011.0L, 9},
                    Negotiation{"just_below_2012", std::nextafter(2012.0, 0.0), 9},
                    Negotiation{"rounds_up_to_2012", std::nextafter(2012.0L, 0.0L), 10},
                    Negotiation{"v2012", 2012.0L, 10}, Negotiation{"v2012_99", 2012.99L, 10},
                    Negotiation{"just_below_2013", std::nextafter(2013.0, 0.0), 10},
                    Negotiation{"v2013", 2013.0L, 11}, Negotiation{"v2013_02", 2013.02L, 11},
                    Negotiation{"just_below_2013_03", std::nextafter(2013.03, 0.0), 11},
                    Negotiation{"v2013_03", 2013.03L, 12}, Negotiation{"v2013_03_double", 2013.03, 12},
                    Negotiation{"just_below_2013_04", std::nextafter(2013.04, 0.0), 12},
                    Negotiation{"v2013_04", 2013.04L, 13}, Negotiation{"v2013_04_double", 2013.04, 13},
                    Negotiation{"v2019", 2019.0L, 13},
                    Negotiation{"infinite", std::numeric_limits<long double>::infinity(), 13},
                    Negotiation{"not_a_number", std::numeric_limits<long double>::quiet_NaN(), 9}),
    [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace unit
