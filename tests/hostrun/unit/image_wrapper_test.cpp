// tests/hostrun/unit/image_wrapper_test.cpp - the pixels of an image that a program makes.
#include <gtest/gtest.h>

#include "hostrun/host/call.h"
#include "hostrun/host/registry.h"
#include "hostrun/sibling/platform_objects.h"

namespace hostrun {
namespace {

TEST(ImageWrapper, FillsEveryPixelAndNothingElse) {
  Class& cls = TheRegistry().ClassNamed("NSImageQVX");
  const ObjectRef image = ObjectRef::Adopt(NewObject(cls));
  Invoke(*cls.Constructors().at(2), image.get(),
         {Value::Integer(3), Value::Integer(2), Value::Color(0x112233)});
  const auto all = Send<PlatformId>(NativePointerOf(image.get()), "representations");
  ASSERT_EQ(Send<std::uint32_t>(all, "count"), 1U);
  const auto bitmap = Send<PlatformId>(all, "objectAtIndex:", std::uint32_t{0});
  EXPECT_EQ(Send<std::int32_t>(bitmap, "pixelsWide"), 3);
  EXPECT_EQ(Send<std::int32_t>(bitmap, "pixelsHigh"), 2);
  ASSERT_EQ(Send<std::int32_t>(bitmap, "bytesPerRow"), 9);
  const auto bytes = Send<const unsigned char*>(bitmap, "bitmapData");
  for (int i = 0; i < 18; ++i) EXPECT_EQ(bytes[i], 0x11 * (i % 3 + 1)) << i;
}

}  // namespace
}  // namespace hostrun
