// tests/bundle/unit/memory_blocks_test.cpp - bytes between host memory blocks and platform data.
#include "bundle/bridge/memory_blocks.h"

#include <new>
#include <stdexcept>

#include "tests/bundle/unit/bridge.h"

namespace unit {
namespace {

class NewNSData : public NewHost {
 protected:
  static NativeObject* ToPlatform(void* block) { return NewData(block); }
};

TEST_F(NewNSData, NullIsNilAndNoServiceIsCalled) {
  EXPECT_THAT(ToPlatform(nullptr), IsNull());
  EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(NewNSData, LocksMeasuresReadsCopiesAndUnlocksInThisOrder) {
  HostObject& block = host.NewBlock({7, 8, 9});
  NativeObject* const data = ToPlatform(block.Handle());
  EXPECT_THAT(
      Log().Lines({EventKind::kService, EventKind::kMessage}),
      ElementsAre("REALLockObject(block#1)", "memoryBlockGetSize(block#1)", "memoryBlockGetPtr(block#1)",
                  "[NSData dataWithBytes:bytes length:3]", "REALUnlockObject(block#1)"));
  EXPECT_THAT(data->bytes, ElementsAre(7, 8, 9));
}

TEST_F(NewNSData, LeavesTheBlocksReferencesAsItFoundThem) {
  HostObject& block = host.NewBlock({7});
  ToPlatform(block.Handle());
  EXPECT_EQ(block.references, 1);
  EXPECT_EQ(block.locks, 1);
  EXPECT_EQ(block.unlocks, 1);
}

TEST_F(NewNSData, ABlockOfOneByteGivesOneByte) {
  EXPECT_THAT(ToPlatform(host.NewBlock({0}).Handle())->bytes, ElementsAre(0));
}

TEST_F(NewNSData, CopiesSoThatNeitherSideSeesTheOther) {
  HostObject& block = host.NewBlock({1, 2});
  NativeObject* const data = ToPlatform(block.Handle());
  block.bytes[0] = 99;
  EXPECT_THAT(data->bytes, ElementsAre(1, 2));
  data->bytes[1] = 77;
  EXPECT_THAT(block.bytes, ElementsAre(99, 2));
}

TEST_F(NewNSData, AnEmptyBlockGivesNilWithoutAMessage) {
  EXPECT_THAT(ToPlatform(host.NewBlock({}).Handle()), IsNull());
  EXPECT_THAT(Log().Messages(), IsEmpty());
  EXPECT_EQ(Calls("REALUnlockObject"), 1);
}

TEST_F(NewNSData, BytesWithoutASizeGiveNil) {
  HostObject& block = host.NewBlock({1, 2, 3});
  block.claims = true;
  for (const std::int32_t size : {-3, -1, 0}) {
    block.claimedSize = size;
    EXPECT_THAT(ToPlatform(block.Handle()), IsNull());
  }
  EXPECT_THAT(Log().Messages(), IsEmpty());
}

TEST_F(NewNSData, ABlockWithoutAPointerGivesNil) {
  HostObject& block = host.NewBlock({1, 2, 3});
  block.hasPointer = false;
  EXPECT_THAT(ToPlatform(block.Handle()), IsNull());
  EXPECT_THAT(Log().Messages(), IsEmpty());
}

TEST_F(NewNSData, GivesNilOnAHostThatTellsNoSizes) {
  host.missing = {"memoryBlockGetSize"};
  EXPECT_THAT(ToPlatform(host.NewBlock({1}).Handle()), IsNull());
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(NewNSData, GivesNilOnAHostThatTellsNoPointers) {
  host.missing = {"memoryBlockGetPtr"};
  EXPECT_THAT(ToPlatform(host.NewBlock({1}).Handle()), IsNull());
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(NewNSData, UnlocksOnAHostThatCannotLock) {
  host.missing = {"REALLockObject"};
  HostObject& block = host.NewBlock({5});
  ++block.references;  // the one that is given back unlocked
  EXPECT_THAT(ToPlatform(block.Handle())->bytes, ElementsAre(5));
  EXPECT_EQ(block.unlocks, 1);
}

TEST_F(NewNSData, UnlocksWhenTheLockItselfThrows) {
  host.before["REALLockObject"] = [] { throw std::bad_alloc(); };
  HostObject& block = host.NewBlock({5});
  ++block.references;
  EXPECT_THROW(ToPlatform(block.Handle()), std::bad_alloc);
  EXPECT_EQ(block.unlocks, 1);
}

TEST_F(NewNSData, UnlocksWhenTheHostThrows) {
  for (const char* const service : {"memoryBlockGetSize", "memoryBlockGetPtr"}) {
    host.before = {{service, [] { throw std::bad_alloc(); }}};
    HostObject& block = host.NewBlock({1});
    EXPECT_THROW(ToPlatform(block.Handle()), std::bad_alloc) << service;
    EXPECT_EQ(block.references, 1) << service;
  }
}

TEST_F(NewNSData, UnlocksWhenThePlatformRaises) {
  platform.RaiseOnce("dataWithBytes:length:", MakeException());
  HostObject& block = host.NewBlock({1});
  CallShared<void*>(kSpace, "ColorSpaceWithICCProfileData(ICCProfileData as Memoryblock) as NSColorSpaceQVX",
                    block);
  EXPECT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(block.references, 1);
}

class NSDataRB : public NewHost {
 protected:
  static HostObject* ToHost(NativeObject* data) {
    auto* const block = Convert<&qvx::NSDataRB>(AsId(data));
    return block == nullptr ? nullptr : &host.Object(block);
  }
  static NativeObject* Profile(std::size_t size) { return MakeData(std::vector<std::uint8_t>(size, 0x5A)); }
  static NativeObject* Claiming(std::uint32_t length) {
    NativeObject* const data = Profile(4);
    data->claims = true;
    data->claimedLength = length;
    return data;
  }
  static void ExpectOutOfMemory(const std::string& size) {
    ASSERT_THAT(host.raised, SizeIs(1));
    EXPECT_EQ(host.raised[0].className, "OutOfMemoryException");
    EXPECT_EQ(host.raised[0].message, "Failed to allocate a memoryblock with " + size + " bytes in size.");
  }
};

TEST_F(NSDataRB, NilIsNullWithoutAMessage) {
  EXPECT_THAT(ToHost(nullptr), IsNull());
  EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(NSDataRB, ReadsMakesAndCopies) {
  HostObject* const block = ToHost(MakeData({1, 2, 3}));
  ASSERT_THAT(block, NotNull());
  EXPECT_THAT(block->bytes, ElementsAre(1, 2, 3));
  EXPECT_EQ(block->references, 1);
  EXPECT_THAT(Log().Lines({EventKind::kService, EventKind::kMessage}),
              ElementsAre("[NSData#1 bytes]", "[NSData#1 length]", "newMemoryBlock(3)",
                          "memoryBlockGetPtr(block#1)"));
}

TEST_F(NSDataRB, CopiesSoThatNeitherSideSeesTheOther) {
  NativeObject* const data = MakeData({1, 2});
  HostObject* const block = ToHost(data);
  data->bytes[0] = 99;
  EXPECT_THAT(block->bytes, ElementsAre(1, 2));
}

TEST_F(NSDataRB, DataOfOneByteGivesABlockOfOneByte) {
  HostObject* const block = ToHost(MakeData({7}));
  ASSERT_THAT(block, NotNull());
  EXPECT_THAT(block->bytes, ElementsAre(7));
}

TEST_F(NSDataRB, EmptyDataIsNullAndRaisesNothing) {
  EXPECT_THAT(ToHost(MakeData({})), IsNull());
  EXPECT_THAT(Log().Services(), IsEmpty());
}

TEST_F(NSDataRB, BytesWithoutALengthAreNull) {
  EXPECT_THAT(ToHost(Claiming(0)), IsNull());
  EXPECT_THAT(Log().Services(), IsEmpty());
}

TEST_F(NSDataRB, ALengthWithoutBytesIsNull) {
  NativeObject* const data = MakeData({});
  data->claims = true;
  data->claimedLength = 12;
  EXPECT_THAT(ToHost(data), IsNull());
  EXPECT_THAT(Log().Services(), IsEmpty());
}

TEST_F(NSDataRB, ALengthAboveTwoGigabytesCountsAsNegative) {
  for (const std::uint32_t length : {0x80000000U, 0xFFFFFFFFU})
    EXPECT_THAT(ToHost(Claiming(length)), IsNull());
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(NSDataRB, TheLargestLengthIsRefusedWithoutAskingTheHostForMemory) {
  EXPECT_THAT(ToHost(Claiming(2147483647)), IsNull());
  ExpectOutOfMemory("2147483647");
  EXPECT_EQ(Asked("newMemoryBlock"), 0);
}

TEST_F(NSDataRB, OneByteLessIsAttempted) {
  EXPECT_THAT(ToHost(Claiming(2147483646)), IsNull());  // the scripted host has no block of that size
  ExpectOutOfMemory("2147483646");
  EXPECT_THAT(Log().Services(), Contains("newMemoryBlock(2147483646)"));
}

TEST_F(NSDataRB, AHostWithoutMemoryBlocksGetsOutOfMemory) {
  host.missing = {"newMemoryBlock"};
  EXPECT_THAT(ToHost(Profile(3144)), IsNull());
  ExpectOutOfMemory("3144");
}

TEST_F(NSDataRB, ABlockWithoutAPointerIsReleasedBeforeOutOfMemoryIsRaised) {
  host.missing = {"memoryBlockGetPtr"};
  EXPECT_THAT(ToHost(Profile(8)), IsNull());
  ExpectOutOfMemory("8");
  const Lines services = Log().Services();
  ASSERT_GE(services.size(), 2U);
  EXPECT_EQ(services[0], "newMemoryBlock(8)");
  EXPECT_EQ(services[1], "REALUnlockObject(block#1)");
}

TEST_F(NSDataRB, BadAllocOfTheHostBecomesOutOfMemory) {
  host.before["newMemoryBlock"] = [] { throw std::bad_alloc(); };
  EXPECT_THAT(ToHost(Profile(8)), IsNull());
  ExpectOutOfMemory("8");
}

TEST_F(NSDataRB, BadAllocOnTheWayToThePointerBecomesOutOfMemory) {
  host.before["memoryBlockGetPtr"] = [] { throw std::bad_alloc(); };
  EXPECT_THAT(ToHost(Profile(8)), IsNull());
  ExpectOutOfMemory("8");
}

TEST_F(NSDataRB, AnyOtherThrownExceptionPasses) {
  host.before["newMemoryBlock"] = [] { throw std::runtime_error("of the host"); };
  EXPECT_THROW(ToHost(Profile(8)), std::runtime_error);
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(NSDataRB, AllocatesNothingItself) {
  ToHost(Profile(5000));
  EXPECT_THAT(Log().Allocations(), IsEmpty());
}

}  // namespace
}  // namespace unit
