// tests/hostrun/unit/words_test.cpp - values as the words of a call, and back.
#include <gtest/gtest.h>

#include "hostrun/host/exceptions.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/words.h"

namespace hostrun {
namespace {

struct Passed {
  Kind kind;
  Value value;
  std::size_t words;
};

class WordsOfAValue : public testing::TestWithParam<Passed> {};

TEST_P(WordsOfAValue, ComeBackAsTheSameValue) {
  const Type& type = *TypeOf(GetParam().kind);
  CallArguments arguments;
  arguments.Push(type, GetParam().value);
  EXPECT_EQ(arguments.words().count(), GetParam().words);
  EXPECT_EQ(WordCount(type), GetParam().words);
  const Value back = ShareWords(type, arguments.words().data());
  EXPECT_EQ(back.kind(), GetParam().value.kind());
  EXPECT_EQ(ExactText(back), ExactText(GetParam().value));
}

TEST_P(WordsOfAValue, ComeBackThroughAReference) {
  const Type& type = *TypeOf(GetParam().kind);
  CallArguments arguments;
  arguments.PushReference(type, GetParam().value);
  EXPECT_EQ(arguments.words().count(), 1U);
  ASSERT_EQ(arguments.references(), 1U);
  const Value back = arguments.TakeReference(0);
  EXPECT_EQ(back.kind(), GetParam().value.kind());
  EXPECT_EQ(ExactText(back), ExactText(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(OfEveryType, WordsOfAValue,
                         testing::Values(Passed{Kind::Boolean, Value::Boolean(true), 1},
                                         Passed{Kind::Integer, Value::Integer(-5), 1},
                                         Passed{Kind::Int64, Value::Int64(-5'000'000'000), 2},
                                         Passed{Kind::Single, Value::Double(0.5), 1},
                                         Passed{Kind::Double, Value::Double(0.1), 2},
                                         Passed{Kind::Color, Value::Color(0xFF8000), 1},
                                         Passed{Kind::String, Value::Text("text"), 1},
                                         Passed{Kind::String, Value::Text(""), 1},
                                         Passed{Kind::Object, Value::Nil(), 1}));

TEST(CallArguments, StandInTheOrderInWhichTheyArePushed) {
  CallArguments arguments;
  arguments.Push(*TypeOf(Kind::Integer), Value::Integer(1));
  arguments.Push(*TypeOf(Kind::Double), Value::Double(2.5));
  arguments.Push(*TypeOf(Kind::Integer), Value::Integer(3));
  const std::uint32_t* const words = arguments.words().data();
  ASSERT_EQ(arguments.words().count(), 4U);
  EXPECT_EQ(words[0], 1U);
  EXPECT_EQ(ShareWords(*TypeOf(Kind::Double), words + 1).real(), 2.5);
  EXPECT_EQ(words[3], 3U);
}

TEST(CallArguments, HoldAStringUntilTheCallIsOver) {
  Value text = Value::Text("held");
  HostString* const string = text.string();
  {
    CallArguments arguments;
    arguments.Push(*TypeOf(Kind::String), text);
    EXPECT_EQ(string->references, 2);
  }
  EXPECT_EQ(string->references, 1);
}

TEST(CallArguments, GiveBackAReferenceThatNobodyTook) {
  Value text = Value::Text("left");
  HostString* const string = text.string();
  {
    CallArguments arguments;
    arguments.PushReference(*TypeOf(Kind::String), text);
    EXPECT_EQ(string->references, 2);
  }
  EXPECT_EQ(string->references, 1);
}

TEST(CallArguments, ByReferenceOwnAnObjectUntilItIsTaken) {
  Value holder = Value::Adopt(NewObject(TheRegistry().ClassNamed("RuntimeException")));
  Object* const object = holder.object();
  {
    CallArguments arguments;
    arguments.PushReference(*ObjectType(object->cls), holder);
    EXPECT_EQ(object->references, 2);
    {
      const Value taken = arguments.TakeReference(0);
      EXPECT_EQ(taken.object(), object);
      EXPECT_EQ(object->references, 2);
    }
    EXPECT_EQ(object->references, 1);
  }
  EXPECT_EQ(object->references, 1);
}

TEST(CallArguments, BoxAVariantThatIsNoObject) {
  CallArguments arguments;
  arguments.Push(*TypeOf(Kind::Variant), Value::Integer(7));
  const Value handed = ShareWords(*TypeOf(Kind::Variant), arguments.words().data());
  ASSERT_EQ(handed.kind(), Kind::Object);
  EXPECT_EQ(Unboxed(handed).integer(), 7);
}

}  // namespace
}  // namespace hostrun
