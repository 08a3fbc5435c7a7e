// tests/hostrun/unit/services_test.cpp - services as a plugin finds them: given nothing, the wrong kind, a
// place beyond the end.
#include "hostrun/host/services.h"

#include <gtest/gtest.h>

#include <cstring>

#include "hostrun/host/arrays.h"
#include "hostrun/host/call.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/host.h"
#include "hostrun/host/memory_blocks.h"
#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

template <class F>
F* Service(const char* name) {
  return reinterpret_cast<F*>(ResolveService(name));
}

// The class and the message of the exception that waits for the call to return; "none".
std::string Pending() {
  try {
    ThrowPendingException();
  } catch (const HostException& exception) {
    return DescribeException(exception.object());
  }
  return "none";
}

ObjectRef Exception() {
  return ObjectRef::Adopt(Service<Object*(const char*)>("PluginNewInstance")("RuntimeException"));
}

constexpr const char* kSetInteger = "REALSetPropValueInt";
using SetInteger = bool(Object*, const char*, std::int32_t);
constexpr const char* kSetString = "REALSetPropValueString";
using SetString = bool(Object*, const char*, HostString*);

TEST(Services, MakeInstancesOfClassesThatThereAre) {
  auto* const make = Service<Object*(const char*)>("PluginNewInstance");
  const ObjectRef made = ObjectRef::Adopt(make("memoryblock"));
  ASSERT_NE(made.get(), nullptr);
  EXPECT_EQ(made.get()->cls->name, "MemoryBlock");
  EXPECT_EQ(made.get()->references, 1);
  EXPECT_EQ(make("NoSuchClass"), nullptr);
  EXPECT_EQ(make(nullptr), nullptr);
}

TEST(Services, SetPropertiesOfTheirTypeOnly) {
  const ObjectRef exception = Exception();
  const StringRef why = StringRef::Adopt(NewString("why"));
  EXPECT_TRUE(Service<SetInteger>(kSetInteger)(exception.get(), "errornumber", 7));
  EXPECT_TRUE(Service<SetString>(kSetString)(exception.get(), "Message", why.get()));
  EXPECT_FALSE(Service<SetInteger>(kSetInteger)(exception.get(), "Message", 1));
  EXPECT_FALSE(Service<SetString>(kSetString)(exception.get(), "ErrorNumber", why.get()));
  EXPECT_FALSE(Service<SetInteger>(kSetInteger)(exception.get(), "Nothing", 1));
  EXPECT_FALSE(Service<SetInteger>(kSetInteger)(exception.get(), nullptr, 1));
  EXPECT_FALSE(Service<SetInteger>(kSetInteger)(nullptr, "ErrorNumber", 1));
  EXPECT_FALSE(Service<SetString>(kSetString)(nullptr, "Message", why.get()));
  const Class& cls = *exception.get()->cls;
  EXPECT_EQ(GetProperty(*cls.PropertyNamed("ErrorNumber", false), exception.get()).integer(), 7);
  EXPECT_EQ(DescribeException(exception.get()), "RuntimeException: why");
}

TEST(Services, SetNoPropertyThatIsReadOnly) {
  const ObjectRef dictionary = ObjectRef::Adopt(NewObject(TheRegistry().ClassNamed("Dictionary")));
  EXPECT_FALSE(Service<SetInteger>(kSetInteger)(dictionary.get(), "Count", 1));
}

TEST(Services, RaiseOnlyExceptions) {
  auto* const raise = Service<void(Object*)>("RuntimeRaiseException");
  raise(nullptr);
  EXPECT_EQ(Pending(), "none");
  const ObjectRef block = ObjectRef::Adopt(NewMemoryBlock(1));
  raise(block.get());
  EXPECT_EQ(Pending(), "RuntimeException: Raised a MemoryBlock, which is no exception.");
  const ObjectRef exception = Exception();
  raise(exception.get());
  EXPECT_EQ(Pending(), "RuntimeException");
  EXPECT_EQ(Pending(), "none");
  EXPECT_EQ(exception.get()->references, 1);
}

TEST(Services, ALaterExceptionTakesThePlaceOfTheFirst) {
  const ObjectRef first = Exception();
  const ObjectRef second = ObjectRef::Adopt(NewObject(TheRegistry().ClassNamed("IOException")));
  Service<void(Object*)>("RuntimeRaiseException")(first.get());
  Service<void(Object*)>("RuntimeRaiseException")(second.get());
  EXPECT_EQ(first.get()->references, 1);
  EXPECT_EQ(Pending(), "IOException");
  EXPECT_EQ(Pending(), "none");
}

TEST(Services, GiveAStringsBytesInTheEncodingThatIsWanted) {
  auto* const get = Service<bool(HostString*, std::uint32_t, qvx::REALstringData*)>("PluginGetStringData");
  auto* const dispose = Service<void(qvx::REALstringData*)>("PluginDisposeStringData");
  const StringRef text = StringRef::Adopt(NewString("\u00E4"));
  const struct {
    std::uint32_t encoding;
    std::string bytes;
  } forms[] = {{qvx::kEncodingUnknown, "\xC3\xA4"},
               {qvx::kEncodingUTF8, "\xC3\xA4"},
               {qvx::kEncodingWindowsLatin1, "\xE4"},
               {qvx::kEncodingUTF16, std::string("\xE4\0", 2)}};
  for (const auto& [encoding, bytes] : forms) {
    qvx::REALstringData data{};
    ASSERT_TRUE(get(text.get(), encoding, &data));
    EXPECT_EQ(data.length, static_cast<std::int32_t>(bytes.size()));
    EXPECT_EQ(data.encoding, encoding);
    const std::string ended = bytes + std::string(4, '\0');
    EXPECT_EQ(std::memcmp(data.data, ended.data(), ended.size()), 0) << encoding;
    dispose(&data);
    EXPECT_EQ(data.data, nullptr);
    EXPECT_EQ(data.length, 0);
    dispose(&data);
  }
  EXPECT_FALSE(get(text.get(), qvx::kEncodingUTF8, nullptr));
  dispose(nullptr);
  qvx::REALstringData empty{};
  ASSERT_TRUE(get(nullptr, qvx::kEncodingUTF8, &empty));
  EXPECT_EQ(empty.length, 0);
  dispose(&empty);
}

TEST(Services, BuildStringsOfBytesThatThereAre) {
  auto* const build =
      Service<HostString*(const void*, std::int32_t, std::uint32_t)>("REALBuildStringWithEncoding");
  EXPECT_EQ(build(nullptr, 3, qvx::kEncodingUTF8), nullptr);
  EXPECT_EQ(build("abc", 0, qvx::kEncodingUTF8), nullptr);
  EXPECT_EQ(build("abc", -1, qvx::kEncodingUTF8), nullptr);
  const StringRef one = StringRef::Adopt(build("abc", 1, qvx::kEncodingMacRoman));
  EXPECT_EQ(BytesOf(one.get()), "a");
  EXPECT_EQ(EncodingOf(one.get()), qvx::kEncodingMacRoman);
  const StringRef plain =
      StringRef::Adopt(Service<HostString*(const void*, std::int32_t)>("REALBuildString")("abc", 3));
  EXPECT_EQ(EncodingOf(plain.get()), qvx::kEncodingUnknown);
  auto* const encodingOf = Service<std::uint32_t(HostString*)>("REALGetStringEncoding");
  auto* const setEncoding = Service<void(HostString*, std::uint32_t)>("REALSetStringEncoding");
  setEncoding(plain.get(), qvx::kEncodingASCII);
  EXPECT_EQ(encodingOf(plain.get()), qvx::kEncodingASCII);
  setEncoding(nullptr, qvx::kEncodingASCII);
  EXPECT_EQ(encodingOf(nullptr), qvx::kEncodingUTF8);
  auto* const textOf = Service<const char*(HostString*)>("StringGetCString");
  EXPECT_STREQ(textOf(plain.get()), "abc");
  EXPECT_STREQ(textOf(nullptr), "");
}

TEST(Services, HaveBlocksOfAnySize) {
  auto* const make = Service<Object*(std::int32_t)>("newMemoryBlock");
  auto* const bytesOf = Service<void*(Object*)>("memoryBlockGetPtr");
  auto* const sizeOf = Service<std::int32_t(Object*)>("memoryBlockGetSize");
  const ObjectRef three = ObjectRef::Adopt(make(3));
  EXPECT_EQ(sizeOf(three.get()), 3);
  EXPECT_NE(bytesOf(three.get()), nullptr);
  for (const std::int32_t size : {0, -1}) {
    const ObjectRef none = ObjectRef::Adopt(make(size));
    ASSERT_NE(none.get(), nullptr);
    EXPECT_EQ(sizeOf(none.get()), 0);
    EXPECT_EQ(bytesOf(none.get()), nullptr);
  }
  EXPECT_EQ(sizeOf(nullptr), 0);
  EXPECT_EQ(bytesOf(nullptr), nullptr);
}

class ArrayServices : public testing::Test {
 protected:
  static ObjectRef Make(qvx::REALArrayType type, std::int32_t upperBound) {
    return ObjectRef::Adopt(Service<Object*(qvx::REALArrayType, std::int32_t)>(
        "RuntimeArrayCreateSingleDimBoundedArray")(type, upperBound));
  }
  static std::int32_t UpperBoundOf(Object* array) {
    return Service<std::int32_t(Object*)>("RuntimeUBound")(array);
  }
  template <class F>
  static F* Procedure(const char* name, Object* array) {
    return reinterpret_cast<F*>(Service<void*(Object*)>(name)(array));
  }
};

using InsertDouble = void(Object*, std::int32_t, double);
using InsertObject = void(Object*, std::int32_t, Object*);
using ReadDouble = void(Object*, std::int32_t, double*);
constexpr const char* kInsert = "RuntimeArrayDirectGetInsertProc";
constexpr const char* kRead = "RuntimeArrayDirectGetGetProc";

TEST_F(ArrayServices, HoldDoubles) {
  const ObjectRef array = Make(qvx::REALArrayType::kDouble, 0);
  ASSERT_EQ(UpperBoundOf(array.get()), 0);
  Procedure<InsertDouble>(kInsert, array.get())(array.get(), 1, 2.5);
  Procedure<InsertDouble>(kInsert, array.get())(array.get(), 0, 1.5);
  ASSERT_EQ(UpperBoundOf(array.get()), 2);
  std::int32_t index = 0;
  for (const double wanted : {1.5, 0.0, 2.5}) {
    double found = -1;
    Procedure<ReadDouble>(kRead, array.get())(array.get(), index++, &found);
    EXPECT_EQ(found, wanted);
  }
  EXPECT_EQ(Pending(), "none");
}

TEST_F(ArrayServices, HoldObjectsAndReadNoneOfThem) {
  const ObjectRef array = Make(qvx::REALArrayType::kObject, -1);
  const ObjectRef block = ObjectRef::Adopt(NewMemoryBlock(1));
  Procedure<InsertObject>(kInsert, array.get())(array.get(), 0, block.get());
  EXPECT_EQ(ElementAt(array.get(), 0).object(), block.get());
  EXPECT_EQ(block.get()->references, 2);
  EXPECT_EQ(Procedure<ReadDouble>(kRead, array.get()), nullptr);
}

TEST_F(ArrayServices, RaiseWhatIsBeyondTheEndWhenTheCallHasReturned) {
  const ObjectRef doubles = Make(qvx::REALArrayType::kDouble, -1);
  const ObjectRef objects = Make(qvx::REALArrayType::kObject, -1);
  double untouched = 7;
  Procedure<ReadDouble>(kRead, doubles.get())(doubles.get(), 0, &untouched);
  EXPECT_EQ(Pending(), "OutOfBoundsException: Index 0 is outside of an array whose upper bound is -1.");
  EXPECT_EQ(untouched, 7);
  Procedure<InsertDouble>(kInsert, doubles.get())(doubles.get(), 1, 1);
  EXPECT_EQ(Pending(), "OutOfBoundsException: Index 1 is outside of an array whose upper bound is -1.");
  Procedure<InsertObject>(kInsert, objects.get())(objects.get(), -1, nullptr);
  EXPECT_EQ(Pending(), "OutOfBoundsException: Index -1 is outside of an array whose upper bound is -1.");
}

TEST_F(ArrayServices, HaveNothingToDoWithNoArray) {
  EXPECT_EQ(UpperBoundOf(nullptr), -1);
  EXPECT_EQ(Procedure<InsertDouble>(kInsert, nullptr), nullptr);
  EXPECT_EQ(Procedure<ReadDouble>(kRead, nullptr), nullptr);
  EXPECT_EQ(Make(static_cast<qvx::REALArrayType>(77), 0).get(), nullptr);
  EXPECT_EQ(Make(qvx::REALArrayType::kDouble, -2).get(), nullptr);
  EXPECT_EQ(Pending(), "OutOfBoundsException: Index -2 is outside of an array whose upper bound is -1.");
}

TEST(Services, FindNoGlobalMethodWithoutADeclaration) {
  EXPECT_EQ(Service<void*(const char*)>("REALLoadGlobalMethod")(nullptr), nullptr);
  EXPECT_EQ(ResolveService(nullptr), nullptr);
}

TEST(Services, TellTheVersionAndKeepTheLayoutThatIsAnnounced) {
  SetHostIdentity({2013.04, {}});
  EXPECT_EQ(Service<long double()>("REALGetRBVersion")(), static_cast<long double>(2013.04));
  SetHostIdentity({2015.0, {}});
  const std::int32_t before = AnnouncedLayout();
  Service<std::int32_t(std::int32_t)>("RegisterPluginVersion")(12);
  EXPECT_EQ(AnnouncedLayout(), 12);
  Service<std::int32_t(std::int32_t)>("RegisterPluginVersion")(before);
}

TEST(Services, OldHostsShowTheirStrings) {
  SetHostIdentity({2011.99, {}});
  const StringRef shown = StringRef::Adopt(NewString("text"));
  SetHostIdentity({2012.0, {}});
  const StringRef hidden = StringRef::Adopt(NewString("text"));
  SetHostIdentity({2015.0, {}});
  EXPECT_EQ(shown.get()->old.length, 4);
  EXPECT_EQ(hidden.get()->old.length, 0);
}

TEST(LiveThings, AreCountedByClassAndLine) {
  const auto objects = [] {
    int count = 0;
    for (const LiveCounts::ByPlace& place : CountLive().objects) {
      if (place.className == "MemoryBlock") count += place.count;
    }
    return count;
  };
  const int before = objects();
  const ObjectRef one = ObjectRef::Adopt(NewMemoryBlock(1));
  const ObjectRef two = ObjectRef::Adopt(NewMemoryBlock(1));
  EXPECT_EQ(objects(), before + 2);
}

TEST(LiveThings, AreDescribedOneOrMore) {
  LiveCounts counts;
  counts.objects = {
      {"_Array", 0, 1}, {"_Array", 3, 2}, {"_Variant", 4, 1}, {"_Variant", -1, 2}, {"FolderItem", 5, 3}};
  counts.strings = {{"_String", 6, 1}, {"_String", 7, 2}};
  counts.nativeRetains = 1;
  EXPECT_EQ(DescribeLive(counts),
            "  1 array, made outside of the program\n"
            "  2 arrays, made in line 3\n"
            "  1 variant, made in line 4\n"
            "  2 variants, made outside of the program\n"
            "  3 FolderItem, made in line 5\n"
            "  1 string, made in line 6\n"
            "  2 strings, made in line 7\n"
            "  1 native object retained by wrapper instances\n");
  counts = {};
  counts.nativeRetains = 2;
  EXPECT_EQ(DescribeLive(counts), "  2 native objects retained by wrapper instances\n");
  counts.nativeRetains = 0;
  EXPECT_EQ(DescribeLive(counts), "");
}

}  // namespace
}  // namespace hostrun
