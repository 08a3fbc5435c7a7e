// tests/hostrun/unit/dispatch_test.cpp - calls through records: every kind of argument and result.
#include <gtest/gtest.h>

#include "hostrun/host/arrays.h"
#include "hostrun/host/call.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/services.h"

extern "C" void REALPluginMain(void* (*resolver)(const char*));

namespace hostrun {
namespace {

class Dispatch : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (TheRegistry().FindClass("Fixture") == nullptr) REALPluginMain(&ResolveService);
  }
  static Class& Fixture() { return TheRegistry().ClassNamed("Fixture"); }
  static const Method& Named(std::string_view name, bool shared = false, std::size_t form = 0) {
    return *Fixture().MethodsNamed(name, shared).at(form);
  }
  Value Call(std::string_view name, const std::vector<Value>& arguments) {
    return Invoke(Named(name), self_.get(), arguments);
  }
  static Value CallShared(std::string_view name, const std::vector<Value>& arguments, std::size_t form = 0) {
    return Invoke(Named(name, true, form), nullptr, arguments);
  }
  static std::int32_t LiveFixtures() { return CallShared("Live", {}).integer(); }

  ObjectRef self_ = ObjectRef::Adopt(NewObject(Fixture()));
};

TEST_F(Dispatch, Integers) {
  EXPECT_EQ(Call("AddIntegers", {Value::Integer(-7), Value::Integer(3)}).integer(), -4);
}

TEST_F(Dispatch, WideIntegersTakeTwoWordsBothWays) {
  EXPECT_EQ(Call("WideSum", {Value::Int64(0x100000000), Value::Integer(-1)}).int64(), 0xFFFFFFFF);
}

TEST_F(Dispatch, DoublesComeBackThroughTheFloatingPointRegister) {
  EXPECT_EQ(Call("Halve", {Value::Double(0.5)}).real(), 0.25);
  for (int i = 0; i < 20; ++i) Call("Halve", {Value::Double(1)});  // a result left there would fill its stack
  EXPECT_EQ(Call("Halve", {Value::Double(3)}).real(), 1.5);
}

TEST_F(Dispatch, SinglesTakeOneWord) {
  EXPECT_EQ(Call("HalveSingle", {Value::Double(0.5)}).real(), 0.25);
}

TEST_F(Dispatch, OnlyTheLowByteOfABooleanCounts) {
  EXPECT_FALSE(Call("NotBoolean", {Value::Boolean(true)}).boolean());
  EXPECT_TRUE(Call("NotBoolean", {Value::Boolean(false)}).boolean());
}

TEST_F(Dispatch, Colors) {
  const Value inverted = Call("Invert", {Value::Color(0x00FF00)});
  EXPECT_EQ(inverted.kind(), Kind::Color);
  EXPECT_EQ(inverted.color(), 0xFF00FFU);
}

TEST_F(Dispatch, AStringResultCarriesOneReference) {
  const std::int32_t before = LiveStrings();
  {
    const Value text = Value::Text("echo");
    const Value back = Call("Echo", {text});
    EXPECT_EQ(back.string(), text.string());
    EXPECT_EQ(text.string()->references, 2);
  }
  EXPECT_EQ(LiveStrings(), before);
}

TEST_F(Dispatch, AnObjectResultCarriesOneReference) {
  const Value back = Invoke(Named("Echo", false, 1), self_.get(), {Value::Share(self_.get())});
  EXPECT_EQ(back.object(), self_.get());
  EXPECT_EQ(self_.get()->references, 2);
}

TEST_F(Dispatch, AVariantGoesAsAnObjectAndComesBackAsWhatItWas) {
  EXPECT_EQ(Call("EchoVariant", {Value::Integer(5)}).integer(), 5);
  EXPECT_EQ(Utf8Of(Call("EchoVariant", {Value::Text("text")}).string()), "text");
  EXPECT_EQ(Call("EchoVariant", {Value::Share(self_.get())}).object(), self_.get());
}

TEST_F(Dispatch, AByrefDoubleIsReadAndWritten) {
  Value a = Value::Double(1);
  Value b = Value::Double(2);
  Call("Swap", {Value::Reference(&a), Value::Reference(&b)});
  EXPECT_EQ(a.real(), 2);
  EXPECT_EQ(b.real(), 1);
}

TEST_F(Dispatch, MixedArgumentsKeepTheirOrderAndWidth) {
  EXPECT_EQ(CallShared("Mixed", {Value::Integer(1), Value::Double(0.5), Value::Boolean(true),
                                 Value::Share(self_.get()), Value::Color(16)})
                .real(),
            1018.5);
}

TEST_F(Dispatch, ArraysOfDoublesBothWays) {
  const Value numbers = CallShared("Countdown", {Value::Integer(4)});
  ASSERT_EQ(UpperBound(numbers.object()), 3);
  EXPECT_EQ(ElementAt(numbers.object(), 0).real(), 4);
  EXPECT_EQ(CallShared("Total", {numbers}, 1).real(), 10);
}

TEST_F(Dispatch, ANilSelfReachesTheFunctionAsNull) {
  EXPECT_EQ(Invoke(Named("AddIntegers"), nullptr, {Value::Integer(1), Value::Integer(1)}).integer(), 2);
}

TEST_F(Dispatch, ARaisedExceptionSurfacesWhenTheCallHasReturned) {
  try {
    CallShared("Fail", {Value::Text("no luck")});
    FAIL() << "wanted a host exception";
  } catch (const HostException& exception) {
    EXPECT_EQ(DescribeException(exception.object()), "UnsupportedOperationException: no luck");
    EXPECT_EQ(PayloadOf<ExceptionData>(exception.object()).errorNumber, 7);
    EXPECT_EQ(exception.object()->references, 1);
  }
}

TEST_F(Dispatch, AForeignExceptionBecomesAHostException) {
  EXPECT_THROW(CallShared("Throw", {}), HostException);
}

TEST_F(Dispatch, ATextThatIsTooLongLacksMemory) {
  try {
    CallShared("GrowTooLong", {});
    FAIL() << "wanted an exception, found none";
  } catch (const HostException& exception) {
    EXPECT_EQ(DescribeException(exception.object()),
              "OutOfMemoryException: Not enough memory in GrowTooLong.");
  }
}

TEST_F(Dispatch, AGlobalMethodIsFoundByItsDeclaration) {
  EXPECT_EQ(CallShared("Length", {Value::Text("\u00E9")}).integer(), 2);
}

TEST_F(Dispatch, ConstructorAndDestructorRunOncePerInstance) {
  const std::int32_t before = LiveFixtures();
  {
    const Value made = CallShared("Make", {});
    EXPECT_EQ(LiveFixtures(), before + 1);
  }
  EXPECT_EQ(LiveFixtures(), before);
}

TEST_F(Dispatch, PropertiesReadAndWriteWithTheirParameterWord) {
  const Property& number = *Fixture().PropertyNamed("number", false);
  SetProperty(number, self_.get(), Value::Integer(12));
  EXPECT_EQ(GetProperty(number, self_.get()).integer(), 12);
  EXPECT_EQ(GetProperty(*Fixture().PropertyNamed("Word", false), self_.get()).integer(), 77);
}

TEST_F(Dispatch, ClassDataBeginsBehindTheHeader) {
  EXPECT_EQ(Fixture().definition->dataOffset, 24U);
  SetProperty(*Fixture().PropertyNamed("number", false), self_.get(), Value::Integer(0x1234));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(NativePointerOf(self_.get())), 0x1234U);
}

TEST(Services, UnknownAndWithheldNamesGiveNull) {
  EXPECT_EQ(ResolveService("NoSuchService"), nullptr);
  EXPECT_NE(ResolveService("REALBuildString"), nullptr);
  SetHostIdentity({2015.0, {"REALBuildString"}});
  EXPECT_EQ(ResolveService("REALBuildString"), nullptr);
  SetHostIdentity({2015.0, {}});
}

TEST(Services, GlobalMethodsOfAnotherSignatureAreNotFound) {
  const auto load = reinterpret_cast<void* (*)(const char*)>(ResolveService("REALLoadGlobalMethod"));
  EXPECT_NE(load("LenB( s as string ) as integer"), nullptr);
  EXPECT_EQ(load("LenB( s as string ) as double"), nullptr);
  EXPECT_EQ(load("not a declaration("), nullptr);
}

}  // namespace
}  // namespace hostrun
