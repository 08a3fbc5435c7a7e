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

// What is said of a class whose one array has `count` records of zeros.
template <class Record>
std::string ProblemOfZeros(const char* name, Record* qvx::REALclassDefinition::*records,
                           std::int32_t qvx::REALclassDefinition::*count, std::int32_t number) {
  static Record zeros[1];
  static std::array<qvx::REALclassDefinition, 16> definitions;
  static std::size_t used = 0;
  qvx::REALclassDefinition& definition = definitions.at(used++);
  definition.version = 13;
  definition.name = name;
  definition.*records = zeros;
  definition.*count = number;
  return ProblemOf(definition);
}

TEST(Problems, AreToldOfEachArrayByItsName) {
  using Definition = qvx::REALclassDefinition;
  EXPECT_EQ(ProblemOfZeros("BrokenA", &Definition::methods, &Definition::methodCount, 1),
            "BrokenA: a member: wanted a declaration, found a null pointer");
  EXPECT_EQ(ProblemOfZeros("BrokenB", &Definition::properties, &Definition::propertyCount, 1),
            "BrokenB: a member: wanted a name, a type and a getter, found a null pointer");
  EXPECT_EQ(ProblemOfZeros("BrokenC", &Definition::constants, &Definition::constantCount, 1),
            "BrokenC: a member: wanted a declaration, found a null pointer");
  const std::string count = "wanted a count from 0 to 10000, found ";
  EXPECT_EQ(ProblemOfZeros("BrokenD", &Definition::sharedMethods, &Definition::sharedMethodCount, 10001),
            "BrokenD: \"shared methods\": " + count + "10001");
  EXPECT_EQ(ProblemOfZeros("BrokenE", &Definition::properties, &Definition::propertyCount, -2),
            "BrokenE: \"properties\": " + count + "-2");
  EXPECT_EQ(ProblemOfZeros("BrokenF", &Definition::sharedProperties, &Definition::sharedPropertyCount, -3),
            "BrokenF: \"shared properties\": " + count + "-3");
  EXPECT_EQ(ProblemOfZeros("BrokenG", &Definition::constants, &Definition::constantCount, -4),
            "BrokenG: \"constants\": " + count + "-4");
}

TEST(Problems, AreNoneOfAnArrayThatIsNotThereNorOfAnEmptyOne) {
  const std::size_t before = TheRegistry().problems().size();
  static qvx::REALmethodDefinition some[1];
  static qvx::REALclassDefinition definition{};
  definition.version = 13;
  definition.name = "WithNothing";
  definition.methods = some;
  definition.propertyCount = -1;
  TheRegistry().Register(definition, Origin::Bundle);
  EXPECT_EQ(TheRegistry().problems().size(), before);
}

TEST(Problems, LeaveTheOtherMembers) {
  static qvx::REALproperty properties[] = {
      {nullptr, "Bad", "5", 0, reinterpret_cast<qvx::REALproc>(&Get), nullptr, 0, {}, {}},
      {nullptr, "NoGetter", "integer", 0, nullptr, nullptr, 0, {}, {}},
      {nullptr, "Good", "integer", 0, reinterpret_cast<qvx::REALproc>(&Get), nullptr, 0, {}, {}}};
  static qvx::REALconstant constants[] = {{"Bad", {}, {}}, {"Good=7", {}, {}}};
  static qvx::REALclassDefinition definition{};
  definition.version = 13;
  definition.name = "PartlyBroken";
  definition.superName = "NowhereAtAll";
  definition.properties = properties;
  definition.propertyCount = 3;
  definition.constants = constants;
  definition.constantCount = 2;
  const std::size_t before = TheRegistry().problems().size();
  TheRegistry().Register(definition, Origin::Bundle);
  const std::vector<std::string>& problems = TheRegistry().problems();
  EXPECT_EQ(std::vector<std::string>(problems.begin() + static_cast<std::ptrdiff_t>(before), problems.end()),
            (std::vector<std::string>{
                "PartlyBroken: wanted a class NowhereAtAll to descend from, found none",
                "PartlyBroken: \"Bad\": wanted a type, found \"5\" at position 30",
                "PartlyBroken: \"NoGetter\": wanted a name, a type and a getter, found a null pointer",
                "PartlyBroken: \"Bad\": wanted '=' after a constant's name, found its end at position 4"}));
  const Class& cls = *TheRegistry().FindClass("partlybroken");
  ASSERT_EQ(cls.properties.size(), 1U);
  EXPECT_EQ(cls.properties[0].name, "Good");
  ASSERT_EQ(cls.constants.size(), 1U);
  EXPECT_EQ(cls.constants[0].declaration, std::string("Good=7"));
}

TEST(Problems, AreToldOfAClassWithoutAName) {
  for (const char* const name : {static_cast<const char*>(nullptr), ""}) {
    qvx::REALclassDefinition definition{};
    definition.name = name;
    EXPECT_EQ(ProblemOf(definition), "a class definition: wanted a name, found none");
  }
}

// One class below another, both with a method, a property and a constant of the same name.
class Descent : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    static std::array<qvx::REALmethodDefinition, 2> methods = {
        {{reinterpret_cast<qvx::REALproc>(&One), nullptr, "Same as integer", 3, {}},
         {reinterpret_cast<qvx::REALproc>(&Two), nullptr, "OnlyAbove as integer", 4, {}}}};
    static qvx::REALmethodDefinition shared[] = {
        {reinterpret_cast<qvx::REALproc>(&Two), nullptr, "Same as integer", 5, {}}};
    static qvx::REALproperty properties[] = {{nullptr,
                                              "P",
                                              "integer",
                                              6,
                                              reinterpret_cast<qvx::REALproc>(&Get),
                                              reinterpret_cast<qvx::REALproc>(&Get),
                                              9,
                                              {},
                                              {}}};
    static qvx::REALproperty sharedProperties[] = {
        {nullptr, "S", "double", 7, reinterpret_cast<qvx::REALproc>(&Get), nullptr, 8, {}, {}}};
    static qvx::REALconstant constants[] = {{"K=1", {}, {}}, {"L=2", {}, {}}};
    static qvx::REALconstant below[] = {{"K=3", {}, {}}};
    static qvx::REALclassDefinition upper{};
    upper.version = 13;
    upper.name = "Upper";
    upper.methods = methods.data();
    upper.methodCount = 2;
    upper.sharedMethods = shared;
    upper.sharedMethodCount = 1;
    upper.properties = properties;
    upper.propertyCount = 1;
    upper.sharedProperties = sharedProperties;
    upper.sharedPropertyCount = 1;
    upper.constants = constants;
    upper.constantCount = 2;
    upper.flags = 17;
    TheRegistry().Register(upper, Origin::Host, PayloadFor<double>());
    static qvx::REALclassDefinition lower{};
    lower.version = 12;
    lower.name = "Lower";
    lower.superName = "UPPER";
    lower.methods = methods.data();
    lower.methodCount = 1;
    lower.constants = below;
    lower.constantCount = 1;
    TheRegistry().Register(lower, Origin::Bundle);
  }
  static Class& Upper() { return TheRegistry().ClassNamed("upper"); }
  static Class& Lower() { return TheRegistry().ClassNamed("LOWER"); }
};

TEST_F(Descent, IsOfTheClassesAbove) {
  EXPECT_TRUE(Lower().IsA(Upper()));
  EXPECT_TRUE(Lower().IsA(Lower()));
  EXPECT_FALSE(Upper().IsA(Lower()));
  EXPECT_EQ(Lower().order, Upper().order + 1);
  EXPECT_EQ(Upper().flags, 17);
  EXPECT_EQ(Lower().layoutVersion, 12);
  EXPECT_EQ(Lower().payload.size, sizeof(double));
  EXPECT_EQ(Upper().origin, Origin::Host);
  EXPECT_EQ(Lower().methods[0].origin, Origin::Bundle);
}

TEST_F(Descent, FindsMembersFromBelow) {
  ASSERT_EQ(Lower().MethodsNamed("same", false).size(), 1U);
  EXPECT_EQ(Lower().MethodsNamed("same", false)[0]->owner, &Lower());
  EXPECT_EQ(Lower().MethodsNamed("same", false)[0]->flags, 3);
  EXPECT_EQ(Lower().MethodsNamed("OnlyAbove", false)[0]->owner, &Upper());
  EXPECT_EQ(Lower().MethodsNamed("same", true)[0]->flags, 5);
  EXPECT_TRUE(Lower().MethodsNamed("same", true)[0]->shared);
  EXPECT_TRUE(Lower().MethodsNamed("onlyabove", true).empty());
  EXPECT_EQ(Lower().ConstantNamed("k")->value.integer(), 3);
  EXPECT_EQ(Lower().ConstantNamed("l")->value.integer(), 2);
  EXPECT_EQ(Lower().ConstantNamed("m"), nullptr);
  EXPECT_EQ(Lower().PropertyNamed("p", true), nullptr);
  EXPECT_EQ(Lower().PropertyNamed("s", false), nullptr);
}

TEST_F(Descent, HasPropertiesAsTheirRecordsSay) {
  const Property& property = *Lower().PropertyNamed("p", false);
  EXPECT_EQ(property.owner, &Upper());
  EXPECT_EQ(property.flags, 6);
  EXPECT_EQ(property.parameter, 9U);
  EXPECT_FALSE(property.shared);
  EXPECT_EQ(property.setter.signature.Text(), "P(parameter as Integer, value as Integer)");
  const Property& shared = *Lower().PropertyNamed("s", true);
  EXPECT_EQ(shared.type, TypeOf(Kind::Double));
  EXPECT_EQ(shared.setter.function, nullptr);
  EXPECT_TRUE(shared.getter.shared);
}

TEST(Functions, AreFoundByTheirDeclarationOnly) {
  const Registry& registry = TheRegistry();
  ASSERT_NE(registry.FindFunction("len(text as string) as integer"), nullptr);
  EXPECT_EQ(registry.FindFunction("len(text as string) as integer"), registry.FunctionsNamed("LEN")[0]);
  EXPECT_TRUE(registry.FunctionsNamed("Len")[0]->shared);
  EXPECT_EQ(registry.FindFunction("len(text as string) as double"), nullptr);
  EXPECT_EQ(registry.FindFunction("lenx(text as string) as integer"), nullptr);
  EXPECT_EQ(registry.FindFunction("len(text"), nullptr);
  EXPECT_TRUE(registry.FunctionsNamed("lenx").empty());
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
