// tests/bundle/unit/services_test.cpp - the entry-point table: lookup, keeping, and what a missing service
// gives.
#include "bundle/host/services.h"

#include <functional>

#include "tests/bundle/unit/fixture.h"

namespace unit {
namespace {

using qvx::REALArrayType;

qvx::REALobject Handle(HostObject& object) {
  return static_cast<qvx::REALobject>(object.Handle());
}
qvx::REALarray AsArray(HostObject& object) {
  return static_cast<qvx::REALarray>(object.Handle());
}
qvx::REALmemoryBlock AsBlock(HostObject& object) {
  return static_cast<qvx::REALmemoryBlock>(object.Handle());
}
qvx::REALfolderItem AsItem(HostObject& object) {
  return static_cast<qvx::REALfolderItem>(object.Handle());
}

// A wrapper used once, and whether it answered its neutral result.
struct Wrapper {
  const char* name;
  const char* service;
  std::function<bool()> use;
};

Host& host() {
  return TheHost();
}

template <typename Handle>
bool Given(Handle handle) {
  TheHost().Adopt(handle);
  return handle == nullptr;
}

const std::vector<Wrapper>& Wrappers() {
  static const auto* const wrappers = new std::vector<Wrapper>{
      {"REALLockObject", "REALLockObject",
       [] {
         HostObject& object = host().NewObject("Thing");
         qvx::REALLockObject(Handle(object));
         object.owned = object.references;
         return object.locks == 0;
       }},
      {"REALUnlockObject", "REALUnlockObject",
       [] {
         HostObject& object = host().NewObject("Thing");
         qvx::REALUnlockObject(Handle(object));
         object.owned = object.references;
         return object.unlocks == 0;
       }},
      {"REALLockString", "REALLockString",
       [] {
         const auto string = host().NewString("text");
         qvx::REALLockString(string);
         HostString& record = host().String(string);
         record.owned = record.references;
         return record.locks == 0;
       }},
      {"REALUnlockString", "REALUnlockString",
       [] {
         const auto string = host().NewString("text");
         HostString& record = host().String(string);
         qvx::REALUnlockString(string);
         record.owned = record.references;
         return record.unlocks == 0;
       }},
      {"REALRaiseException", "RuntimeRaiseException",
       [] {
         qvx::REALRaiseException(Handle(host().NewObject("RuntimeException")));
         return host().raised.empty();
       }},
      {"REALSetPropValueInt32", "REALSetPropValueInt",
       [] { return qvx::REALSetPropValueInt32(Handle(host().NewObject("Thing")), "ErrorNumber", 5) == 0; }},
      {"REALSetPropValueString", "REALSetPropValueString",
       [] {
         return qvx::REALSetPropValueString(Handle(host().NewObject("Thing")), "Message",
                                            host().NewString("text")) == 0;
       }},
      {"REALnewInstance", "PluginNewInstance",
       [] { return Given(qvx::REALnewInstance("RuntimeException")); }},
      {"REALDisposeStringData", "PluginDisposeStringData",
       [] {
         auto* const bytes = static_cast<char*>(std::calloc(4, 1));
         qvx::REALstringData data{bytes, 0, 0};
         qvx::REALDisposeStringData(&data);
         const bool kept = data.data != nullptr;
         if (kept) std::free(bytes);
         return kept;
       }},
      {"REALCopyStringCFString", "REALGetStringCFString",
       [] {
         const auto* const copy = qvx::REALCopyStringCFString(host().NewString("text"));
         if (copy != nullptr) CFRelease(copy);
         return copy == nullptr;
       }},
      {"REALGetStringCFString", "REALGetStringCFString",
       [] {
         const auto* const copy = qvx::REALGetStringCFString(host().NewString("text"), 0);
         if (copy != nullptr) CFRelease(copy);
         return copy == nullptr;
       }},
      {"originalREALBuildString", "REALBuildString",
       [] { return Given(qvx::originalREALBuildString("ab", 2)); }},
      {"REALBuildStringWithEncoding", "REALBuildStringWithEncoding",
       [] { return Given(qvx::REALBuildStringWithEncoding("ab", 2, qvx::kEncodingUTF8)); }},
      {"REALGetStringEncoding", "REALGetStringEncoding",
       [] { return qvx::REALGetStringEncoding(host().NewString("ab", qvx::kEncodingUTF8)) == 0; }},
      {"REALSetStringEncoding", "REALSetStringEncoding",
       [] {
         const auto string = host().NewString("ab", qvx::kEncodingUTF8);
         qvx::REALSetStringEncoding(string, qvx::kEncodingASCII);
         return host().String(string).encoding == qvx::kEncodingUTF8;
       }},
      {"REALConvertString", "REALConvertString",
       [] { return Given(qvx::REALConvertString(host().NewString("ab"), qvx::kEncodingASCII)); }},
      {"REALLoadFrameworkMethod", "REALLoadGlobalMethod",
       [] { return qvx::REALLoadFrameworkMethod("LenB( s as string ) as integer") == nullptr; }},
      {"REALNewMemoryBlockOriginal", "newMemoryBlock",
       [] { return Given(qvx::REALNewMemoryBlockOriginal(8)); }},
      {"REALMemoryBlockGetPtr", "memoryBlockGetPtr",
       [] {
         return qvx::REALMemoryBlockGetPtr(AsBlock(host().NewBlock({1, 2}))) == nullptr;
       }},
      {"REALMemoryBlockGetSize", "memoryBlockGetSize",
       [] {
         return qvx::REALMemoryBlockGetSize(AsBlock(host().NewBlock({1, 2}))) == 0;
       }},
      {"REALCreateArray", "RuntimeArrayCreateSingleDimBoundedArray",
       [] { return Given(qvx::REALCreateArray(REALArrayType::kDouble, -1)); }},
      {"REALGetArrayUBound", "RuntimeUBound",
       [] {
         return qvx::REALGetArrayUBound(AsArray(host().NewNumbers({1, 2, 3}))) == 0;
       }},
      {"REALInsertArrayValueDouble", "RuntimeArrayDirectGetInsertProc",
       [] {
         HostObject& array = host().NewArray(2);
         qvx::REALInsertArrayValueDouble(AsArray(array), 0, 0.5);
         return array.numbers.empty();
       }},
      {"REALInsertArrayValueObject", "RuntimeArrayDirectGetInsertProc",
       [] {
         HostObject& array = host().NewArray(4);
         qvx::REALInsertArrayValueObject(AsArray(array), 0, Handle(host().NewObject("Thing")));
         return array.objects.empty();
       }},
      {"REALGetArrayValueDouble", "RuntimeArrayDirectGetGetProc",
       [] {
         double value = -1;
         qvx::REALGetArrayValueDouble(AsArray(host().NewNumbers({0.5})), 0, &value);
         return value == -1;
       }},
      {"REALFSRefFromFolderItem", "REALFSRefFromFolderItem",
       [] {
         FSRef ref;
         return qvx::REALFSRefFromFolderItem(AsItem(host().NewItem("/a", "", u"")), &ref, nullptr) == 0;
       }},
  };
  return *wrappers;
}

class ServiceTable : public NewHost, public testing::WithParamInterface<Wrapper> {};

TEST_P(ServiceTable, AsksForAServiceOnceAndKeepsWhatItFound) {
  EXPECT_FALSE(GetParam().use());
  EXPECT_FALSE(GetParam().use());
  EXPECT_EQ(Asked(GetParam().service), 1);
}

TEST_P(ServiceTable, GivesTheNeutralResultWithoutTheServiceAndRaisesNothing) {
  host.missing = {GetParam().service};
  EXPECT_TRUE(GetParam().use());
  EXPECT_EQ(Calls(GetParam().service), 0);
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_P(ServiceTable, AsksAgainWhileTheHostAnswersNull) {
  host.missing = {GetParam().service};
  EXPECT_TRUE(GetParam().use());
  EXPECT_TRUE(GetParam().use());
  EXPECT_EQ(Asked(GetParam().service), 2);
  host.missing = {};
  EXPECT_FALSE(GetParam().use());
  EXPECT_FALSE(GetParam().use());
  EXPECT_EQ(Asked(GetParam().service), 3);
}

INSTANTIATE_TEST_SUITE_P(Wrappers, ServiceTable, testing::ValuesIn(Wrappers()),
                         [](const auto& each) { return each.param.name; });

using Services = NewHost;

TEST_F(Services, AGlobalMethodThatTheHostLacksGivesZero) {
  host.missing = {"LenB"};
  EXPECT_EQ(qvx::LenB(host.NewString("text")), 0);
  EXPECT_EQ(Calls("LenB"), 0);
}

using ServicesBeforeTheStart = FreshBundle;

TEST_F(ServicesBeforeTheStart, GiveTheNeutralResultAndAreAskedForAgain) {
  EXPECT_EQ(qvx::REALnewInstance("Thing"), nullptr);
  Start(2015.0L);
  const qvx::REALobject made = qvx::REALnewInstance("Thing");
  EXPECT_NE(made, nullptr);
  host.Adopt(made);
}

TEST_F(Services, TwoWrappersOfOneNameLookItUpSeparately) {
  const auto string = host.NewString("text");
  for (int i = 0; i < 2; ++i) {
    CFRelease(qvx::REALCopyStringCFString(string));
    CFRelease(qvx::REALGetStringCFString(string, 0));
  }
  EXPECT_EQ(Asked("REALGetStringCFString"), 2);
}

TEST_F(Services, TheThreeArrayWrappersKeepThreeSlots) {
  HostObject& numbers = host.NewNumbers({1});
  HostObject& objects = host.NewArray(4);
  double value = 0;
  for (int i = 0; i < 2; ++i) {
    qvx::REALInsertArrayValueDouble(AsArray(numbers), 0, 1.0);
    qvx::REALInsertArrayValueObject(AsArray(objects), 0, nullptr);
    qvx::REALGetArrayValueDouble(AsArray(numbers), 0, &value);
  }
  EXPECT_EQ(Asked("RuntimeArrayDirectGetInsertProc"), 2);
  EXPECT_EQ(Asked("RuntimeArrayDirectGetGetProc"), 1);
}

TEST_F(Services, AnInsertAsksForTheProcedureOfThatArrayAndThenCallsIt) {
  HostObject& array = host.NewArray(2);
  qvx::REALInsertArrayValueDouble(AsArray(array), 0, 0.5);
  EXPECT_THAT(Log().Services(),
              ElementsAre("RuntimeArrayDirectGetInsertProc(array#1)", "insert(array#1, 0, 0.5)"));
}

TEST_F(Services, TheProcedureOfAnArrayIsAskedForOnEveryInsert) {
  HostObject& array = host.NewArray(2);
  qvx::REALInsertArrayValueDouble(AsArray(array), 0, 0.5);
  qvx::REALInsertArrayValueDouble(AsArray(array), 1, 0.25);
  EXPECT_EQ(Calls("RuntimeArrayDirectGetInsertProc"), 2);
  EXPECT_THAT(array.numbers, ElementsAre(0.5, 0.25));
}

TEST_F(Services, AnArrayWithoutAnInsertProcedureStaysAsItIs) {
  HostObject& array = host.NewArray(2);
  Log().SetHook([](const Event& event) {
    return event.name == "RuntimeArrayDirectGetInsertProc" && event.kind == EventKind::kService
               ? Fault::kNull
               : Fault::kNone;
  });
  qvx::REALInsertArrayValueDouble(AsArray(array), 0, 0.5);
  qvx::REALInsertArrayValueObject(AsArray(array), 0, nullptr);
  EXPECT_THAT(array.numbers, IsEmpty());
  EXPECT_EQ(Calls("insert"), 0);
}

TEST_F(Services, AReadGoesThroughTheProcedureOfThatArray) {
  HostObject& array = host.NewNumbers({0.25, 0.75});
  double value = -1;
  qvx::REALGetArrayValueDouble(AsArray(array), 1, &value);
  EXPECT_EQ(value, 0.75);
  EXPECT_THAT(Log().Services(), ElementsAre("RuntimeArrayDirectGetGetProc(array#1)", "read(array#1, 1)"));
}

TEST_F(Services, ServicesAnswerOneByteTruthValues) {
  // The rest of the register is rubbish; only a caller that reads the byte alone sees false.
  EXPECT_EQ(qvx::REALSetPropValueInt32(nullptr, "x", 0), 0);
  EXPECT_EQ(qvx::REALSetPropValueInt32(Handle(host.NewObject("Thing")), "x", 0), 1);
}

}  // namespace
}  // namespace unit
