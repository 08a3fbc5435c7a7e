// tests/hostrun/unit/registry_test.cpp - definition records in both layouts.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "hostrun/host/call.h"
#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

std::int32_t One(void*) {
  return 1;
}
std::int32_t Two(void*) {
  return 2;
}
std::int32_t Get(void*, std::int32_t parameter) {
  return parameter;
}

template <class F>
std::uint32_t Word(F* function) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(function));
}
std::uint32_t Word(const char* text) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(text));
}

// Records as words, so that a wrong stride reads a neighbour's.
template <std::size_t Stride>
struct Records {
  std::array<std::uint32_t, 2 * Stride> words{};
  void Set(std::size_t record, std::initializer_list<std::uint32_t> values) {
    std::copy(values.begin(), values.end(), words.begin() + static_cast<std::ptrdiff_t>(record * Stride));
  }
};

// Both layouts of one class with two methods, two properties and two constants.
template <std::size_t MethodWords, std::size_t PropertyWords, std::size_t ConstantWords>
struct Sample {
  Records<MethodWords> methods;
  Records<PropertyWords> properties;
  Records<ConstantWords> constants;
  qvx::REALclassDefinition definition{};

  Sample(const char* name, std::int32_t version) {
    methods.Set(0, {Word(&One), 0, Word("First as integer"), 4});
    methods.Set(1, {Word(&Two), 0, Word("Second as integer"), 4});
    properties.Set(0, {0, Word("P"), Word("integer"), 6, Word(&Get), 0, 11});
    properties.Set(1, {0, Word("Q"), Word("integer"), 6, Word(&Get), 0, 22});
    constants.Set(0, {Word("A=1")});
    constants.Set(1, {Word("B=2")});
    definition.version = version;
    definition.name = name;
    definition.dataSize = 16;
    definition.methods = reinterpret_cast<qvx::REALmethodDefinition*>(methods.words.data());
    definition.methodCount = 2;
    definition.properties = reinterpret_cast<qvx::REALproperty*>(properties.words.data());
    definition.propertyCount = 2;
    definition.constants = reinterpret_cast<qvx::REALconstant*>(constants.words.data());
    definition.constantCount = 2;
  }
};

template <class S>
void ExpectRead(S& sample, const char* name) {
  const std::size_t problems = TheRegistry().problems().size();
  TheRegistry().Register(sample.definition, Origin::Bundle);
  ASSERT_EQ(TheRegistry().problems().size(), problems);
  const Class& cls = *TheRegistry().FindClass(name);
  const ObjectRef object = ObjectRef::Adopt(NewObject(TheRegistry().ClassNamed(name)));
  EXPECT_EQ(Invoke(*cls.MethodsNamed("first", false).at(0), object.get(), {}).integer(), 1);
  EXPECT_EQ(Invoke(*cls.MethodsNamed("SECOND", false).at(0), object.get(), {}).integer(), 2);
  EXPECT_EQ(GetProperty(*cls.PropertyNamed("p", false), object.get()).integer(), 11);
  EXPECT_EQ(GetProperty(*cls.PropertyNamed("q", false), object.get()).integer(), 22);
  EXPECT_EQ(cls.ConstantNamed("a")->value.integer(), 1);
  EXPECT_EQ(cls.ConstantNamed("b")->value.integer(), 2);
  EXPECT_EQ(sample.definition.dataOffset, kClassDataOffset);
}

TEST(Layouts, CurrentRecordsAreReadByTheirSize) {
  static Sample<6, 12, 5> sample("CurrentLayout", 10);
  ExpectRead(sample, "CurrentLayout");
}

TEST(Layouts, OldRecordsAreReadByTheirSize) {
  static Sample<4, 10, 3> sample("OldLayout", 9);
  ExpectRead(sample, "OldLayout");
}

std::string ProblemOf(qvx::REALclassDefinition& definition) {
  TheRegistry().Register(definition, Origin::Bundle);
  return TheRegistry().problems().back();
}

TEST(Problems, AreNamedByClassAndMember) {
  static qvx::REALmethodDefinition noFunction[] = {{nullptr, nullptr, "Lost as integer", 4, {}}};
  static qvx::REALclassDefinition first{};
  first.version = 13;
  first.name = "BrokenOne";
  first.methods = noFunction;
  first.methodCount = 1;
  EXPECT_EQ(ProblemOf(first), "BrokenOne: \"Lost as integer\": wanted a function, found a null pointer");

  static qvx::REALmethodDefinition noName[] = {{reinterpret_cast<qvx::REALproc>(&One), nullptr, "(x", 4, {}}};
  static qvx::REALclassDefinition second{};
  second.version = 13;
  second.name = "BrokenTwo";
  second.methods = noName;
  second.methodCount = 1;
  EXPECT_EQ(ProblemOf(second), "BrokenTwo: \"(x\": wanted a method name, found \"(x\" at position 1");

  static qvx::REALclassDefinition third{};
  third.version = 13;
  third.name = "BrokenThree";
  third.methods = noName;
  third.methodCount = -1;
  EXPECT_EQ(ProblemOf(third), "BrokenThree: \"methods\": wanted a count from 0 to 10000, found -1");
  EXPECT_EQ(ProblemOf(third), "BrokenThree: registered a second time");
}

// The host's own part lies behind the class data, which has room for a native pointer, at a multiple of 8.
TEST(Layouts, TheHostsPartBeginsBehindTheClassData) {
  const struct {
    const char* name;
    std::int32_t dataSize;
    std::uint32_t payloadOffset;
  } samples[] = {{"DataOfNone", 0, 40}, {"DataOfLess", -1, 40}, {"DataOf16", 16, 40},
                 {"DataOf17", 17, 48},  {"DataOf24", 24, 48},   {"DataOf25", 25, 56}};
  static qvx::REALclassDefinition definitions[std::size(samples)];
  for (std::size_t i = 0; i < std::size(samples); ++i) {
    definitions[i].version = 13;
    definitions[i].name = samples[i].name;
    definitions[i].dataSize = samples[i].dataSize;
    TheRegistry().Register(definitions[i], Origin::Host, PayloadFor<double>());
    const Class& cls = TheRegistry().ClassNamed(samples[i].name);
    EXPECT_EQ(cls.dataOffset, kClassDataOffset);
    EXPECT_EQ(cls.payloadOffset, samples[i].payloadOffset) << samples[i].name;
  }
}

TEST(Layouts, ClassDataFollowsThatOfTheClassThatItDescendsFrom) {
  static qvx::REALclassDefinition above{};
  above.version = 13;
  above.name = "Above";
  above.dataSize = 32;
  TheRegistry().Register(above, Origin::Bundle);
  static qvx::REALclassDefinition below{};
  below.version = 13;
  below.name = "Below";
  below.superName = "Above";
  below.dataSize = 16;
  TheRegistry().Register(below, Origin::Bundle);
  EXPECT_EQ(below.dataOffset, above.dataOffset + 32);
  EXPECT_EQ(TheRegistry().ClassNamed("Below").payloadOffset, above.dataOffset + 48);
}

TEST(Objects, ALongChainOfOwnersIsFreedWithoutAsDeepAChainOfCalls) {
  std::size_t before = 0;
  for (const Object* o = FirstLiveObject(); o != nullptr; o = o->next) ++before;
  static qvx::REALclassDefinition link{};
  link.version = 13;
  link.name = "Link";
  TheRegistry().Register(link, Origin::Host, PayloadFor<ObjectRef>());
  ObjectRef chain;
  for (int i = 0; i < 1'000'000; ++i) {
    ObjectRef next = ObjectRef::Adopt(NewObject(TheRegistry().ClassNamed("Link")));
    PayloadOf<ObjectRef>(next.get()) = std::move(chain);
    chain = std::move(next);
  }
  chain = ObjectRef();
  std::size_t after = 0;
  for (const Object* o = FirstLiveObject(); o != nullptr; o = o->next) ++after;
  EXPECT_EQ(after, before);
}

}  // namespace
}  // namespace hostrun
