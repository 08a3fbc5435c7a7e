// tests/hostrun/unit/swatches_png_test.cpp - what is drawn of a colour where a picture by itself does not
// show it.
#include <gtest/gtest.h>

#include <stdexcept>

#include "hostrun/commands/swatches_fit.h"

namespace hostrun {
namespace {

std::string PictureOf(double alpha) {
  FittedPicture picture;
  picture.width = kCardWidth;
  picture.height = kCardHeight;
  picture.cards.push_back({0, 0, "", Rgb{0.2, 0.4, 0.6}, alpha, {}});
  return PngOf(picture);
}

// Through the soft edge of its round corners too.
TEST(PictureOfAColour, ShowsNothingBehindAnOpaqueOne) {
  EXPECT_TRUE(PictureOf(1) == PictureOf(2));
  EXPECT_FALSE(PictureOf(1) == PictureOf(0.99));
}

TEST(Picture, ThatIsTooLargeIsRefused) {
  FittedPicture picture;
  picture.width = 40'000;
  picture.height = 10;
  try {
    PngOf(picture);
    FAIL() << "wanted a refusal";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(),
                 "wanted to draw a picture, found: invalid value (typically too big) for the size of the "
                 "input (surface, pattern, etc.)");
  }
}

}  // namespace
}  // namespace hostrun
