// tests/hostrun/unit/objects_test.cpp - how objects and strings come and go, and what is known of them
// meanwhile.
#include <gtest/gtest.h>

#include <cstring>

#include "hostrun/host/exceptions.h"
#include "hostrun/host/memory_blocks.h"
#include "hostrun/host/position.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/strings.h"

namespace hostrun {
namespace {

std::string happened;
Object* Of(qvx::REALobject self) {
  return reinterpret_cast<Object*>(self);
}

// Two classes whose instances say what is done to them; the upper one's destructor holds and lets go of its
// instance.
class Lives : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    static qvx::REALclassDefinition upper{};
    upper.version = 13;
    upper.name = "LivesAbove";
    upper.constructor = [](qvx::REALobject) { happened += "(above"; };
    upper.destructor = [](qvx::REALobject self) {
      LockObject(Of(self));
      UnlockObject(Of(self));
      happened += "above)";
    };
    TheRegistry().Register(upper, Origin::Host);
    static qvx::REALclassDefinition lower{};
    lower.version = 13;
    lower.name = "LivesBelow";
    lower.superName = "LivesAbove";
    lower.constructor = [](qvx::REALobject) { happened += "(below"; };
    lower.destructor = [](qvx::REALobject) { happened += "below)"; };
    TheRegistry().Register(lower, Origin::Host);
  }
  void SetUp() override { happened.clear(); }
};

TEST_F(Lives, BeginAboveAndEndBelow) {
  Object* const object = NewObject(TheRegistry().ClassNamed("LivesBelow"));
  EXPECT_EQ(happened, "(above(below");
  LockObject(object);
  UnlockObject(object);
  EXPECT_EQ(happened, "(above(below");
  UnlockObject(object);
  EXPECT_EQ(happened, "(above(belowbelow)above)");
  LockObject(nullptr);
  UnlockObject(nullptr);
}

TEST_F(Lives, AreListedFromTheNewest) {
  const Object* const before = FirstLiveObject();
  Class& cls = TheRegistry().ClassNamed("LivesAbove");
  ObjectRef one = ObjectRef::Adopt(NewObject(cls));
  ObjectRef two = ObjectRef::Adopt(NewObject(cls));
  ObjectRef three = ObjectRef::Adopt(NewObject(cls));
  EXPECT_EQ(FirstLiveObject(), three.get());
  EXPECT_EQ(three.get()->next, two.get());
  Object* const middle = two.get();
  two = ObjectRef();
  EXPECT_EQ(three.get()->next, one.get());
  EXPECT_EQ(one.get()->previous, three.get());
  EXPECT_NE(middle, three.get());
  three = ObjectRef();
  EXPECT_EQ(FirstLiveObject(), one.get());
  EXPECT_EQ(one.get()->previous, nullptr);
  EXPECT_EQ(one.get()->mark, kLiveMark);
  one = ObjectRef();
  EXPECT_EQ(FirstLiveObject(), before);
}

TEST_F(Lives, KeepTheLineInWhichTheyBegan) {
  const Position before = currentPosition;
  currentPosition = {17, 1};
  const ObjectRef object = ObjectRef::Adopt(NewMemoryBlock(1));
  const StringRef string = StringRef::Adopt(NewString("text"));
  currentPosition = before;
  EXPECT_EQ(object.get()->line, 17);
  EXPECT_EQ(string.get()->line, 17);
  GiveStringsToHost();
  EXPECT_EQ(string.get()->line, kLineOfHost);
}

TEST_F(Lives, AreOfTheirClassAndThoseAbove) {
  const ObjectRef object = ObjectRef::Adopt(NewObject(TheRegistry().ClassNamed("LivesAbove")));
  EXPECT_TRUE(IsKindOf(object.get(), TheRegistry().ClassNamed("LivesAbove")));
  EXPECT_FALSE(IsKindOf(object.get(), TheRegistry().ClassNamed("LivesBelow")));
  EXPECT_FALSE(IsKindOf(nullptr, TheRegistry().ClassNamed("LivesAbove")));
}

TEST(StringRecords, AreListedFromTheNewestAndCounted) {
  const HostString* const before = FirstLiveString();
  const std::int32_t count = LiveStrings();
  StringRef one = StringRef::Adopt(NewString("one"));
  StringRef two = StringRef::Adopt(NewString("two"));
  StringRef three = StringRef::Adopt(NewString("three"));
  EXPECT_EQ(LiveStrings(), count + 3);
  EXPECT_EQ(FirstLiveString(), three.get());
  two = StringRef();
  EXPECT_EQ(three.get()->next, one.get());
  EXPECT_EQ(one.get()->previous, three.get());
  three = StringRef();
  EXPECT_EQ(one.get()->previous, nullptr);
  LockString(one.get());
  UnlockString(one.get());
  EXPECT_EQ(LiveStrings(), count + 1);
  one = StringRef();
  EXPECT_EQ(FirstLiveString(), before);
  EXPECT_EQ(LiveStrings(), count);
  LockString(nullptr);
  UnlockString(nullptr);
  EXPECT_EQ(LiveStrings(), count);
}

// A byte with the length, as far as one holds it, then the text, then zeros enough for any encoding.
TEST(StringRecords, HaveTheirTextBetweenItsLengthAndZeros) {
  for (const std::size_t length : {1U, 254U, 255U, 256U, 300U}) {
    const std::string text(length, 'x');
    const StringRef string = StringRef::Adopt(NewString(text));
    EXPECT_EQ(static_cast<unsigned char>(string.get()->buffer[0]), std::min<std::size_t>(length, 255));
    EXPECT_EQ(std::memcmp(string.get()->buffer + 1, (text + std::string(4, '\0')).data(), length + 4), 0);
    EXPECT_EQ(string.get()->length, static_cast<std::int32_t>(length));
    EXPECT_EQ(string.get()->references, 1);
  }
  EXPECT_EQ(NewString(""), nullptr);
}

TEST(StringRecords, AreJoinedInTheirEncodingAndShareWhatStandsAlone) {
  const StringRef text = StringRef::Adopt(NewString("text", qvx::kEncodingASCII));
  const StringRef more = StringRef::Adopt(NewString("!", qvx::kEncodingASCII));
  for (const StringRef& alone : {StringRef::Adopt(JoinStrings(text.get(), nullptr)),
                                 StringRef::Adopt(JoinStrings(nullptr, text.get()))}) {
    EXPECT_EQ(alone.get(), text.get());
  }
  EXPECT_EQ(text.get()->references, 1);
  EXPECT_EQ(JoinStrings(nullptr, nullptr), nullptr);
  const StringRef joined = StringRef::Adopt(JoinStrings(text.get(), more.get()));
  EXPECT_EQ(BytesOf(joined.get()), "text!");
  EXPECT_EQ(EncodingOf(joined.get()), qvx::kEncodingASCII);
}

TEST(StringRecords, AreConvertedToAnotherEncodingOrCopied) {
  const StringRef latin = StringRef::Adopt(NewString("\xE4", qvx::kEncodingWindowsLatin1));
  const StringRef same = StringRef::Adopt(ConvertString(latin.get(), qvx::kEncodingWindowsLatin1));
  EXPECT_NE(same.get(), latin.get());
  EXPECT_EQ(BytesOf(same.get()), "\xE4");
  const StringRef other = StringRef::Adopt(ConvertString(latin.get(), qvx::kEncodingUTF8));
  EXPECT_EQ(BytesOf(other.get()), "\u00E4");
  EXPECT_EQ(EncodingOf(other.get()), qvx::kEncodingUTF8);
  EXPECT_EQ(ConvertString(nullptr, qvx::kEncodingUTF8), nullptr);
  EXPECT_EQ(Utf8Of(latin.get()), "\u00E4");
}

// The bytes of a wide encoding are no letters.
TEST(StringRecords, AreComparedByTheirCharacters) {
  const StringRef wide = StringRef::Adopt(NewString(std::string_view("a\0b\0", 4), qvx::kEncodingUTF16));
  const StringRef narrow = StringRef::Adopt(NewString("ab"));
  const StringRef longer = StringRef::Adopt(NewString("abc"));
  EXPECT_EQ(CompareStrings(wide.get(), narrow.get()), 0);
  EXPECT_EQ(CompareStrings(narrow.get(), wide.get()), 0);
  EXPECT_EQ(CompareStrings(narrow.get(), longer.get()), -1);
  EXPECT_EQ(CompareStrings(longer.get(), narrow.get()), 1);
  EXPECT_EQ(CompareStrings(nullptr, narrow.get()), -1);
  EXPECT_EQ(CompareStrings(narrow.get(), nullptr), 1);
  EXPECT_EQ(CompareStrings(nullptr, nullptr), 0);
}

TEST(Exceptions, HaveTheClassThatIsKnownOfTheirName) {
  EXPECT_EQ(DescribeException(NewException("IOException", "why").get()), "IOException: why");
  EXPECT_EQ(DescribeException(NewException("NoSuchException", "why").get()), "RuntimeException: why");
  EXPECT_EQ(DescribeException(NewException("IOException", "").get()), "IOException");
}

TEST(Exceptions, AreShownWithTheirTraceToWhoeverWatches) {
  int asked = 0;
  std::string seen;
  SetTraceSource([&asked](std::vector<TraceLine>& trace) {
    ++asked;
    trace.emplace_back();
  });
  SetRaiseObserver([&seen](Object* exception) { seen += DescribeException(exception) + ";"; });
  ObjectRef caught;
  try {
    RaiseHostException("IOException", "first");
  } catch (const HostException& exception) {
    caught = ObjectRef::Share(exception.object());
  }
  EXPECT_THROW(ThrowException(caught), HostException);
  SetTraceSource({});
  SetRaiseObserver({});
  EXPECT_EQ(asked, 1) << "a trace is taken where it is first raised";
  EXPECT_EQ(PayloadOf<ExceptionData>(caught.get()).trace.size(), 1U);
  EXPECT_EQ(seen, "IOException: first;IOException: first;");
}

}  // namespace
}  // namespace hostrun
