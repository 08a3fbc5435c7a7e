// tests/bundle/unit/color_list_test.cpp - the methods of NSColorListQVX.
#include <cstring>

#include "bundle/bridge/instances.h"
#include "tests/bundle/unit/declarations.h"
#include "tests/bundle/unit/fixture.h"

namespace unit {
namespace {

class ColorList : public NewHost {
 protected:
  void SetUp() override {
    NewHost::SetUp();
    native = MakeNative("NSColorList", "list");
    self = &host.Wrap(kList, native);
    empty = &host.Construct(kList);
    color = &host.Wrap(kColor, MakeNative("NSColor", "color"));
    Log().Clear();
  }
  static void* Text(const char* text) { return host.NewString(text); }
  static bool Create(HostObject& object, const char* name = "name") {
    return Truth(CallMethod<std::uint8_t>(kList, "Create(name as string) as boolean", object, Text(name)));
  }
  static bool CreateFromFile(HostObject& object) {
    return Truth(CallMethod<std::uint8_t>(kList, "Create(name as string, path as string) as boolean", object,
                                          Text("name"), Text("/path")));
  }
  static bool Load(HostObject& object) {
    return Truth(CallMethod<std::uint8_t>(kList, "Load(name as string) as boolean", object, Text("name")));
  }
  static bool Truth(std::uint8_t answer) {
    EXPECT_LE(answer, 1);
    return answer != 0;
  }
  static Lines Order() { return Log().Lines({EventKind::kMessage, EventKind::kCall}); }

  NativeObject* native = nullptr;
  HostObject* self = nullptr;
  HostObject* empty = nullptr;
  HostObject* color = nullptr;
};

TEST_F(ColorList, InsertsAColorUnderAKeyAtAnIndex) {
  CallMethod<void>(kList, "insertColor", *self, *color, Text("key"), 3);
  EXPECT_THAT(Log().Messages(),
              ElementsAre("[@\"key\" autorelease]", "[list insertColor:color key:@\"key\" atIndex:3]"));
}

TEST_F(ColorList, HandsOverANegativeIndexAsAVeryLargeOne) {
  CallMethod<void>(kList, "insertColor", *self, *color, Text("key"), -1);
  EXPECT_THAT(Log().Messages(), Contains("[list insertColor:color key:@\"key\" atIndex:4294967295]"));
}

TEST_F(ColorList, HandsOverNoColorAsNil) {
  CallMethod<void>(kList, "insertColor", *self, nullptr, Text("key"), 0);
  CallMethod<void>(kList, "setColor", *self, nullptr, Text("key"));
  CallMethod<void>(kList, "setColor", *self, host.Construct(kColor), Text("key"));
  EXPECT_THAT(Log().Messages(), Contains("[list insertColor:nil key:@\"key\" atIndex:0]"));
  EXPECT_EQ(Sends("setColor:forKey:"), 2);
  EXPECT_THAT(Log().Messages(), Contains("[list setColor:nil forKey:@\"key\"]"));
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(ColorList, HandsOverANullKeyAsNil) {
  CallMethod<void>(kList, "setColor", *self, *color, nullptr);
  EXPECT_THAT(Log().Messages(), ElementsAre("[list setColor:color forKey:nil]"));
}

TEST_F(ColorList, SetsAColorForAKey) {
  CallMethod<void>(kList, "setColor", *self, *color, Text("key"));
  EXPECT_THAT(Log().Messages(),
              ElementsAre("[@\"key\" autorelease]", "[list setColor:color forKey:@\"key\"]"));
}

TEST_F(ColorList, FindsAColorByItsKey) {
  void* const found = CallMethod<void*>(kList, "colorWithKey", *self, Text("key"));
  EXPECT_EQ(host.Object(found).className, kColor);
  EXPECT_THAT(Log().Messages(), Contains("[list colorWithKey:@\"key\"]"));
}

TEST_F(ColorList, RemovesAColorByItsKey) {
  CallMethod<void>(kList, "removeColorWithKey", *self, Text("key"));
  EXPECT_THAT(Log().Messages(), ElementsAre("[@\"key\" autorelease]", "[list removeColorWithKey:@\"key\"]"));
}

TEST_F(ColorList, WritesToAFileAndReportsTheAnswer) {
  EXPECT_EQ(CallMethod<std::uint8_t>(kList, "writeToFile", *self, Text("/path")), 1);
  platform.booleans["writeToFile:"] = false;
  EXPECT_EQ(CallMethod<std::uint8_t>(kList, "writeToFile", *self, Text("/path")), 0);
  EXPECT_THAT(Log().Messages(), Contains("[list writeToFile:@\"/path\"]"));
}

TEST_F(ColorList, RemovesItsFile) {
  CallMethod<void>(kList, "removeFile", *self);
  EXPECT_THAT(Log().Messages(), ElementsAre("[list removeFile]"));
}

TEST_F(ColorList, TellsWhetherItIsEditable) {
  EXPECT_EQ(CallMethod<std::uint8_t>(kList, "isEditable", *self), 1);
  platform.booleans["isEditable"] = false;
  EXPECT_EQ(CallMethod<std::uint8_t>(kList, "isEditable", *self), 0);
}

TEST_F(ColorList, TellsItsName) {
  EXPECT_EQ(host.Text(CallMethod<void*>(kList, "name", *self)), "name");
}

TEST_F(ColorList, NoMethodPrepares) {
  qvx::instances = nullptr;
  qvx::ExceptionsInitialized = false;
  Create(*empty);
  Load(*empty);
  CreateFromFile(*empty);
  EXPECT_EQ(Sends("respondsToSelector:"), 0);
}

TEST_F(ColorList, CreateMakesStoresAndEnters) {
  EXPECT_TRUE(Create(*empty));
  EXPECT_THAT(Order(), ElementsAre("[@\"name\" autorelease]", "[NSColorList alloc]",
                                   "[NSColorList#1 initWithName:@\"name\"]",
                                   "CFDictionarySetValue(instances, NSColorList#1, NSColorListQVX#2)"));
  EXPECT_EQ(empty->Native()->name, "NSColorList#1");
  EXPECT_EQ(empty->Native()->retains, 0);  // alloc's reference is the instance's
}

TEST_F(ColorList, CreateFromAFileConvertsTheNameThenThePath) {
  EXPECT_TRUE(CreateFromFile(*empty));
  EXPECT_THAT(Order(),
              ElementsAre("[@\"name\" autorelease]", "[@\"/path\" autorelease]", "[NSColorList alloc]",
                          "[NSColorList#1 initWithName:@\"name\" fromFile:@\"/path\"]",
                          "CFDictionarySetValue(instances, NSColorList#1, NSColorListQVX#2)"));
}

TEST_F(ColorList, LoadRetainsStoresAndEntersNothing) {
  EXPECT_TRUE(Load(*empty));
  EXPECT_THAT(Order(), ElementsAre("[@\"name\" autorelease]", "[NSColorList colorListNamed:@\"name\"]",
                                   "[NSColorList#1 retain]"));
  EXPECT_EQ(empty->Native()->retains, 1);
  EXPECT_THAT(platform.instances->entries, IsEmpty());
}

TEST_F(ColorList, CreateGivesUpTheOldListBeforeTheNewOneIsMade) {
  platform.instances->entries[native] = self->Handle();
  EXPECT_TRUE(Create(*self));
  const Lines order = Order();
  EXPECT_EQ(order[0], "CFDictionaryRemoveValue(instances, list)");
  EXPECT_EQ(order[1], "[list release]");
  EXPECT_EQ(native->held, 0);
  EXPECT_FALSE(platform.instances->entries.contains(native));
  EXPECT_TRUE(platform.instances->entries.contains(self->Native()));
}

TEST_F(ColorList, CreateFromAFileDoesTheSame) {
  platform.instances->entries[native] = self->Handle();
  EXPECT_TRUE(CreateFromFile(*self));
  EXPECT_EQ(Order()[0], "CFDictionaryRemoveValue(instances, list)");
  EXPECT_EQ(Order()[1], "[list release]");
}

TEST_F(ColorList, LoadLeavesTheEntryOfTheOldListInPlace) {
  platform.instances->entries[native] = self->Handle();
  EXPECT_TRUE(Load(*self));
  EXPECT_EQ(Order()[0], "[list release]");
  EXPECT_EQ(native->held, 0);
  EXPECT_TRUE(platform.instances->entries.contains(native));
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFDictionaryRemoveValue"), 0);
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFDictionarySetValue"), 0);
}

TEST_F(ColorList, AFailedFillingLeavesTheInstanceEmpty) {
  platform.Answer("initWithName:", nullptr);
  EXPECT_FALSE(Create(*self));
  EXPECT_THAT(self->Native(), IsNull());
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(ColorList, AFailedFillingFromAFileLeavesTheInstanceEmpty) {
  platform.Answer("initWithName:fromFile:", nullptr);
  EXPECT_FALSE(CreateFromFile(*self));
  EXPECT_THAT(self->Native(), IsNull());
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFDictionarySetValue"), 0);
}

TEST_F(ColorList, AnUnknownNameLeavesTheInstanceEmpty) {
  platform.Answer("colorListNamed:", nullptr);
  EXPECT_FALSE(Load(*self));
  EXPECT_THAT(self->Native(), IsNull());
  EXPECT_EQ(Sends("retain"), 0);
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(ColorList, AnExceptionWhileFillingLeavesTheInstanceEmpty) {
  for (const char* selector : {"initWithName:", "initWithName:fromFile:", "colorListNamed:"}) {
    HostObject& object = host.Wrap(kList, MakeNative("NSColorList"));
    platform.RaiseOnce(selector, MakeException());
    const std::string name = selector;
    EXPECT_FALSE(name == "initWithName:"     ? Create(object)
                 : name == "colorListNamed:" ? Load(object)
                                             : CreateFromFile(object));
    EXPECT_THAT(object.Native(), IsNull()) << selector;
  }
  EXPECT_THAT(host.raised, SizeIs(3));
}

TEST_F(ColorList, FillsAgainAndAgain) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(Create(*empty));
    EXPECT_TRUE(Load(*empty));
    EXPECT_TRUE(CreateFromFile(*empty));
  }
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(ColorList, WorksWithoutACache) {
  qvx::instances = nullptr;
  EXPECT_TRUE(Create(*empty));
  EXPECT_TRUE(Create(*empty));
  EXPECT_TRUE(CreateFromFile(*empty));
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFDictionaryRemoveValue"), 0);
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFDictionarySetValue"), 0);
}

TEST_F(ColorList, FindsItsClassDataThroughTheOffsetThatTheHostWrote) {
  // A host that keeps the class data elsewhere says so in word 4 of the definition.
  qvx::REALclassDefinition& definition = *host.Class(kList).live;
  definition.dataOffset = 28;
  HostObject& other = host.NewObject(kList);
  NativeObject* const shifted = MakeNative("NSColorList", "shifted");
  std::memcpy(other.memory.data() + 28, &shifted, 4);
  CallMethod<void>(kList, "removeFile", other);
  EXPECT_THAT(Log().Messages(), ElementsAre("[shifted removeFile]"));
  definition.dataOffset = 24;
}

TEST_F(ColorList, ReadsTheColorAtTheFixedOffsetAllTheSame) {
  qvx::REALclassDefinition& definition = *host.Class(kList).live;
  definition.dataOffset = 28;
  HostObject& other = host.NewObject(kList);
  NativeObject* const shifted = MakeNative("NSColorList", "shifted");
  std::memcpy(other.memory.data() + 28, &shifted, 4);
  CallMethod<void>(kList, "setColor", other, *color, Text("key"));
  EXPECT_THAT(Log().Messages(), Contains("[shifted setColor:color forKey:@\"key\"]"));
  definition.dataOffset = 24;
}

TEST_F(ColorList, ItsDestructorUsesTheOffsetToo) {
  qvx::REALclassDefinition& definition = *host.Class(kList).live;
  definition.dataOffset = 28;
  HostObject& other = host.NewObject(kList);
  NativeObject* const shifted = MakeNative("NSColorList", "shifted");
  TakeReference(shifted);
  std::memcpy(other.memory.data() + 28, &shifted, 4);
  host.Unlock(other.Handle());
  EXPECT_EQ(shifted->releases, 1);
  definition.dataOffset = 24;
}

}  // namespace
}  // namespace unit
