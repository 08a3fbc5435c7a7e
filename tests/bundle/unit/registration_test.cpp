// tests/bundle/unit/registration_test.cpp - class definitions in the current layout and rewritten into the
// old one.
#include "bundle/plugin/registration.h"

#include <cstring>

#include "bundle/host/services.h"
#include "tests/bundle/unit/fixture.h"

namespace unit {
namespace {

using qvx::REALclassDefinition;
using qvx::REALconstant;
using qvx::REALevent;
using qvx::REALmethodDefinition;
using qvx::REALproperty;

// A record of any kind, every word a different number, so that each can be recognised after the copy.
template <typename Record>
void Number(Record* records, std::size_t count, std::uint32_t start) {
  auto* const words = reinterpret_cast<std::uint8_t*>(records);
  for (std::size_t i = 0; i < count * sizeof(Record) / 4; ++i) {
    const std::uint32_t word = start + static_cast<std::uint32_t>(i);
    std::memcpy(words + i * 4, &word, 4);
  }
}

std::vector<std::uint32_t> Words(const void* from, std::size_t count) {
  std::vector<std::uint32_t> words(count);
  std::memcpy(words.data(), from, count * 4);
  return words;
}

// A definition that uses every field.
class Registration : public FreshBundle {
 protected:
  void SetUp() override {
    qvx::gResolver = &Host::Resolve;
    Number(properties, 3, 1000);
    Number(sharedProperties, 2, 2000);
    Number(methods, 2, 3000);
    Number(sharedMethods, 3, 4000);
    Number(events, 3, 5000);
    Number(constants, 2, 6000);
    Number(&definition, 1, 100);
    definition.name = "Made";
    definition.dataSize = 4;
    definition.properties = properties;
    definition.propertyCount = 3;
    definition.methods = methods;
    definition.methodCount = 2;
    definition.events = events;
    definition.eventCount = 3;
    definition.constants = constants;
    definition.constantCount = 2;
    definition.sharedProperties = sharedProperties;
    definition.sharedPropertyCount = 2;
    definition.sharedMethods = sharedMethods;
    definition.sharedMethodCount = 3;
    before = Words(&definition, 29);
    // The scripted host would read the tables, whose texts are numbers here: it only notes the words.
    host.before["PluginRegisterClass"] = [this] {
      handed = Words(&definition, 29);
      definition.version = 13;
      definition.propertyCount = definition.methodCount = definition.constantCount =
          definition.sharedMethodCount = 0;
    };
  }
  void Register(std::int32_t version) {
    qvx::CurrentREALControlVersion = version;
    Call(&qvx::MyREALRegisterClass, &definition);
  }
  [[nodiscard]] const void* Pointer(std::size_t word) const {
    return reinterpret_cast<const void*>(static_cast<std::uintptr_t>(handed[word]));
  }

  REALproperty properties[3];
  REALproperty sharedProperties[2];
  REALmethodDefinition methods[2];
  REALmethodDefinition sharedMethods[3];
  REALevent events[3];
  REALconstant constants[2];
  REALclassDefinition definition;
  std::vector<std::uint32_t> before;
  std::vector<std::uint32_t> handed;  // the words as the host got them
};

TEST_F(Registration, ChangesOnlyVersionAndDataSizeForNewHosts) {
  for (const std::int32_t version : {10, 11, 12, 13}) {
    SetUp();
    Register(version);
    std::vector<std::uint32_t> expected = before;
    expected[0] = static_cast<std::uint32_t>(version);
    expected[3] = 16;
    EXPECT_THAT(handed, ElementsAreArray(expected));
  }
  EXPECT_THAT(Log().Allocations(), IsEmpty());
}

TEST_F(Registration, HandsOverTheDefinitionItselfInBothLayouts) {
  Register(13);
  SetUp();
  Register(9);
  ASSERT_THAT(host.registered, SizeIs(2));
  EXPECT_EQ(host.registered[0].live, &definition);
  EXPECT_EQ(host.registered[1].live, &definition);
}

TEST_F(Registration, RoundsTheDataSizeUpToSixteenEverywhere) {
  const std::vector<std::pair<std::int32_t, std::uint32_t>> sizes = {{0, 0},   {1, 16},  {4, 16}, {15, 16},
                                                                     {16, 16}, {17, 32}, {32, 32}};
  for (const std::int32_t version : {9, 13}) {
    for (const auto& [size, rounded] : sizes) {
      SetUp();
      definition.dataSize = size;
      Register(version);
      EXPECT_EQ(handed[3], rounded) << size;
      EXPECT_EQ(definition.dataSize, static_cast<std::int32_t>(rounded)) << size;
    }
  }
}

TEST_F(Registration, RoundsTheDataSizeEvenWhenTheHostCannotRegister) {
  host.missing = {"PluginRegisterClass"};
  Register(13);
  EXPECT_EQ(definition.dataSize, 16);
  EXPECT_THAT(host.registered, IsEmpty());
}

TEST_F(Registration, CopiesTheOldLayoutWordByWord) {
  Register(9);
  EXPECT_EQ(handed[0], 9U);
  EXPECT_EQ(handed[3], 16U);
  for (const std::size_t word : {1U, 2U, 4U, 5U, 6U, 8U, 10U, 12U, 13U, 14U, 15U, 19U, 20U, 22U, 24U}) {
    EXPECT_EQ(handed[word], before[word]) << "word " << word;
  }
  EXPECT_EQ(handed[16], 0U);
  EXPECT_EQ(handed[17], 0U);
}

TEST_F(Registration, WritesWhateverOldVersionWasNegotiated) {
  Register(7);
  EXPECT_EQ(handed[0], 7U);
  EXPECT_EQ(handed[16], 0U);
}

TEST_F(Registration, LeavesTheLastFourWordsOfAnOldDefinitionAsTheyWere) {
  Register(9);
  for (std::size_t word = 25; word < 29; ++word) EXPECT_EQ(handed[word], before[word]) << "word " << word;
}

TEST_F(Registration, ShrinksEveryArrayToTheOldRecordSize) {
  struct Array {
    std::size_t word;
    const void* source;
    std::size_t count;
    std::size_t size;     // words
    std::size_t oldSize;  // words
  };
  const Array arrays[] = {{7, properties, 3, 12, 10},
                          {9, methods, 2, 6, 4},
                          {18, constants, 2, 5, 3},
                          {21, sharedProperties, 2, 12, 10},
                          {23, sharedMethods, 3, 6, 4}};
  Register(9);
  for (const Array& array : arrays) {
    const auto source = Words(array.source, array.count * array.size);
    const auto shrunk = Words(Pointer(array.word), array.count * array.oldSize);
    for (std::size_t i = 0; i < array.count; ++i) {
      for (std::size_t j = 0; j < array.oldSize; ++j) {
        EXPECT_EQ(shrunk[i * array.oldSize + j], source[i * array.size + j])
            << "word " << array.word << ", record " << i << ", word " << j;
      }
    }
  }
}

TEST_F(Registration, ShrinksEventsAndLeavesEachSourceRecordPointingToItsCopy) {
  const auto source = Words(events, 12);
  Register(9);
  const auto* const copies = static_cast<const std::uint8_t*>(Pointer(11));
  const auto shrunk = Words(copies, 6);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(shrunk[i * 2], source[i * 4]);
    EXPECT_EQ(shrunk[i * 2 + 1], source[i * 4 + 1]);
    EXPECT_EQ(events[i].implementation, copies + i * 8);
    EXPECT_EQ(Words(&events[i], 4)[0], source[i * 4]);
    EXPECT_EQ(events[i].reservedCurrent[0], source[i * 4 + 2]);
    EXPECT_EQ(events[i].reservedCurrent[1], source[i * 4 + 3]);
  }
}

TEST_F(Registration, LeavesTheEventBehindTheLastOneAlone) {
  definition.eventCount = 2;
  const auto behind = Words(&events[2], 4);
  Register(9);
  EXPECT_EQ(Words(&events[2], 4), behind);
}

TEST_F(Registration, LeavesTheSourceArraysAloneButForTheEvents) {
  const auto sourceProperties = Words(properties, 36);
  const auto sourceMethods = Words(methods, 12);
  Register(9);
  EXPECT_EQ(Words(properties, 36), sourceProperties);
  EXPECT_EQ(Words(methods, 12), sourceMethods);
}

TEST_F(Registration, LeavesEventsAloneOnNewHosts) {
  const auto source = Words(events, 12);
  Register(10);
  EXPECT_EQ(Words(events, 12), source);
}

TEST_F(Registration, FreesTheScratchRecordAndKeepsTheArrays) {
  Register(9);
  EXPECT_EQ(LiveBundleBlocks(), 6);
  EXPECT_EQ(Log().Count(EventKind::kFree, "free"), 1);
}

TEST_F(Registration, FreesTheScratchRecordWhenTheHostCannotRegister) {
  host.missing = {"PluginRegisterClass"};
  Register(9);
  EXPECT_EQ(LiveBundleBlocks(), 6);
  EXPECT_EQ(definition.version, 9);
  EXPECT_THAT(host.registered, IsEmpty());
}

TEST_F(Registration, KeepsEmptyArraysNullAndTheirCountsAsTheyWere) {
  definition.properties = nullptr;  // with a count of 3
  definition.methodCount = 0;       // with records
  definition.events = nullptr;
  definition.constantCount = 0;
  definition.sharedProperties = nullptr;
  definition.sharedMethodCount = 0;
  Register(9);
  for (const std::size_t word : {7U, 9U, 11U, 18U, 21U, 23U}) EXPECT_EQ(handed[word], 0U) << "word " << word;
  EXPECT_EQ(handed[8], 3U);
  EXPECT_EQ(handed[10], 0U);
  EXPECT_EQ(handed[12], 3U);
  EXPECT_EQ(handed[19], 0U);
  EXPECT_EQ(handed[22], 2U);
  EXPECT_EQ(handed[24], 0U);
}

TEST_F(Registration, AllocatesNothingForNegativeCountsAndCopiesThem) {
  definition.propertyCount = -1;
  definition.methodCount = -1;
  definition.eventCount = -1;
  definition.constantCount = -1;
  definition.sharedPropertyCount = -1;
  definition.sharedMethodCount = -1;
  Register(9);
  for (const std::size_t word : {7U, 9U, 11U, 18U, 21U, 23U}) EXPECT_EQ(handed[word], 0U) << "word " << word;
  for (const std::size_t word : {8U, 10U, 12U, 19U, 22U, 24U})
    EXPECT_EQ(handed[word], ~0U) << "word " << word;
  EXPECT_EQ(LiveBundleBlocks(), 0);
}

TEST_F(Registration, AllocatesNothingAboveTwoGigabytes) {
  definition.methodCount = 0x08000000;  // times 16: 2^31
  definition.constantCount = 0x7FFFFFFF;
  Register(9);
  EXPECT_EQ(handed[9], 0U);
  EXPECT_EQ(handed[10], 0x08000000U);
  EXPECT_EQ(handed[18], 0U);
  EXPECT_EQ(handed[19], 0x7FFFFFFFU);
  EXPECT_EQ(LiveBundleBlocks(), 4);
  EXPECT_THAT(Log().Allocations(), SizeIs(1 + 4));
}

TEST_F(Registration, AsksForTheMostRecordsBelowTwoGigabytes) {
  Log().SetHook(
      [](const Event& event) { return event.text == "calloc(2147483632)" ? Fault::kNull : Fault::kNone; });
  definition.methodCount = 0x07FFFFFF;
  Register(9);
  EXPECT_EQ(handed[9], 0U);
  EXPECT_THAT(Log().Allocations(), Contains("calloc(2147483632)"));
}

TEST_F(Registration, AnArrayThatCannotBeAllocatedIsNullAndTheRestGoesOn) {
  Log().SetHook([](const Event& event) {
    const bool methodArray =
        event.kind == EventKind::kAllocation && event.text.find("32)") != std::string::npos;
    return methodArray ? Fault::kNull : Fault::kNone;
  });
  Register(9);
  EXPECT_EQ(handed[9], 0U);
  EXPECT_EQ(handed[10], 2U);
  EXPECT_NE(handed[7], 0U);
  EXPECT_NE(handed[23], 0U);
  EXPECT_THAT(host.registered, SizeIs(1));
}

TEST_F(Registration, WithoutMemoryForTheScratchRecordTheClassIsLeftOut) {
  Log().SetHook(
      [](const Event& event) { return event.kind == EventKind::kAllocation ? Fault::kNull : Fault::kNone; });
  Register(9);
  EXPECT_THAT(handed, IsEmpty());
  EXPECT_THAT(Log().Allocations(), SizeIs(1));
  before[3] = 16;  // the data size, rounded up as always
  EXPECT_EQ(Words(&definition, 29), before);
}

TEST_F(Registration, TheArraysOfAnOldHostStartOutZeroFilledInNoWayLonger) {
  Register(9);
  std::size_t total = 0;
  for (const std::string& each : Log().Allocations()) total += std::stoul(each.substr(each.find('(') + 1));
  EXPECT_EQ(total, 100U + 3 * 40 + 2 * 16 + 3 * 8 + 2 * 12 + 2 * 40 + 3 * 16);
}

using FixProperties = Registration;

TEST_F(FixProperties, CopiesTheFirstTenWordsOfEachRecord) {
  const auto* const fixed = Call(&qvx::FixProperties, static_cast<const REALproperty*>(properties), 3);
  const auto source = Words(properties, 36);
  const auto words = Words(fixed, 30);
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 10; ++j) EXPECT_EQ(words[i * 10 + j], source[i * 12 + j]) << i << ", " << j;
  }
}

TEST_F(FixProperties, CopiesASingleRecord) {
  const auto* const fixed = Call(&qvx::FixProperties, static_cast<const REALproperty*>(properties), 1);
  EXPECT_THAT(Log().Allocations(), ElementsAre("calloc(40)"));
  EXPECT_EQ(Words(fixed, 10), Words(properties, 10));
}

TEST_F(FixProperties, AnswersNullForNoRecords) {
  EXPECT_THAT(Call(&qvx::FixProperties, static_cast<const REALproperty*>(nullptr), 3), IsNull());
  EXPECT_THAT(Call(&qvx::FixProperties, static_cast<const REALproperty*>(properties), 0), IsNull());
  EXPECT_THAT(Log().Allocations(), IsEmpty());
}

TEST_F(FixProperties, CopiesNothingForANegativeCount) {
  EXPECT_THAT(Call(&qvx::FixProperties, static_cast<const REALproperty*>(properties), -3), IsNull());
}

TEST_F(FixProperties, AnswersNullWhenMemoryRunsOut) {
  Log().SetHook(
      [](const Event& event) { return event.kind == EventKind::kAllocation ? Fault::kNull : Fault::kNone; });
  EXPECT_THAT(Call(&qvx::FixProperties, static_cast<const REALproperty*>(properties), 3), IsNull());
}

}  // namespace
}  // namespace unit
