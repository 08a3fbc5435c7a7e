// tests/libcocoa/colours/bundle_pasteboard_test.cpp - colours on the pasteboard, by the bundle's functions.
//
// The bundle has no function that declares a type, and a colour is written only where its type has been
// declared: what a host's own code or another program does is done here by messages of the platform.
#include <gtest/gtest.h>

#include <string>

#include "hostrun/host/call.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/sibling/platform_objects.h"
#include "tests/whole/real/real_host.h"

namespace {

using hostrun::ArgumentWords;
using hostrun::PlatformId;
using hostrun::Send;
using hostrun::Value;

constexpr const char* kColor = "NSColorQVX";

class BundlePasteboard : public testing::Test {
 protected:
  static void SetUpTestSuite() { real::StartHost(); }
  void SetUp() override { Declare("NSStringPboardType"); }

  // A new generation of the general pasteboard's contents, which are of that type.
  static void Declare(const char* name) {
    const hostrun::ObjectRuntime& runtime = hostrun::TheObjectRuntime();
    const PlatformId type = hostrun::NewPlatformString(name);
    const auto types = Send<PlatformId>(runtime.getClass("NSArray"), "arrayWithObject:", type);
    const auto board = Send<PlatformId>(runtime.getClass("NSPasteboard"), "generalPasteboard");
    Send<std::int32_t>(board, "declareTypes:owner:", types, static_cast<PlatformId>(nullptr));
    hostrun::ReleasePlatformObject(type);
  }

  static Value Color(const char* declaration, double red, double green, double blue, double alpha) {
    ArgumentWords words;
    for (const double component : {red, green, blue, alpha}) words.PushDouble(component);
    return real::Call(real::MethodOf(kColor, declaration), words);
  }

  static void Write(const Value& color) {
    ArgumentWords words;
    words.PushHandle(color);
    real::Call(real::MethodOf(kColor, "writeToPasteboard"), words);
  }

  static Value Read() { return real::Call(real::MethodOf(kColor, "colorFromPasteboard"), {}); }

  static double Component(const Value& color, const char* property) {
    ArgumentWords words;
    words.PushHandle(color);
    words.PushWord(0);
    return real::Call(real::GetterOf(kColor, property), words).AsReal();
  }

  static std::string SpaceOf(const Value& color) {
    ArgumentWords words;
    words.PushHandle(color);
    words.PushWord(0);
    return hostrun::Utf8Of(real::Call(real::GetterOf(kColor, "colorSpaceName"), words).string());
  }
};

TEST_F(BundlePasteboard, HasNoColourAtFirst) {
  EXPECT_EQ(Read().kind(), hostrun::Kind::Nil);
}

TEST_F(BundlePasteboard, TakesNoColourWhoseTypeWasNotDeclared) {
  Write(Color("colorWithDeviceRGB", 0.25, 0.5, 0.75, 1));
  EXPECT_EQ(Read().kind(), hostrun::Kind::Nil);
  EXPECT_EQ(real::RaisedSoFar(), 0);
}

TEST_F(BundlePasteboard, GivesAColourBackOnceItsTypeIsDeclared) {
  Declare("NSColorPboardType");
  Write(Color("colorWithDeviceRGB", 0.25, 0.5, 0.75, 1));
  const Value read = Read();
  ASSERT_EQ(read.kind(), hostrun::Kind::Object);
  EXPECT_FLOAT_EQ(static_cast<float>(Component(read, "redComponent")), 0.25F);
  EXPECT_FLOAT_EQ(static_cast<float>(Component(read, "greenComponent")), 0.5F);
  EXPECT_FLOAT_EQ(static_cast<float>(Component(read, "blueComponent")), 0.75F);
  EXPECT_EQ(SpaceOf(read), "NSDeviceRGBColorSpace");
}

TEST_F(BundlePasteboard, GivesAColourBackInItsOwnSpace) {
  Declare("NSColorPboardType");
  Write(Color("colorWithSRGB", 0.25, 0.5, 0.75, 1));
  const Value read = Read();
  ASSERT_EQ(read.kind(), hostrun::Kind::Object);
  EXPECT_EQ(SpaceOf(read), "NSCustomColorSpace");
  EXPECT_FLOAT_EQ(static_cast<float>(Component(read, "redComponent")), 0.25F);
}

TEST_F(BundlePasteboard, GivesColoursBackOpaque) {
  Declare("NSColorPboardType");
  Write(Color("colorWithDeviceRGB", 0.25, 0.5, 0.75, 0.5));
  EXPECT_EQ(Component(Read(), "alphaComponent"), 1);
}

TEST_F(BundlePasteboard, GivesTheLastColourOnly) {
  Declare("NSColorPboardType");
  Write(Color("colorWithDeviceRGB", 0, 0, 0, 1));
  Write(Color("colorWithDeviceRGB", 1, 0, 0, 1));
  EXPECT_EQ(Component(Read(), "redComponent"), 1);
}

TEST_F(BundlePasteboard, ForgetsAColourWhenAnotherTypeIsDeclared) {
  Declare("NSColorPboardType");
  Write(Color("colorWithDeviceRGB", 1, 0, 0, 1));
  Declare("NSStringPboardType");
  EXPECT_EQ(Read().kind(), hostrun::Kind::Nil);
}

}  // namespace
