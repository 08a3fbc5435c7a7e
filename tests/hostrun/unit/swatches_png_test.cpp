// tests/hostrun/unit/swatches_png_test.cpp - what is drawn of a colour where a picture by itself does not
// show it.
#include <cairo/cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "hostrun/commands/swatches_fit.h"

namespace hostrun {
namespace {

constexpr int kWidth = static_cast<int>(kCardWidth);
constexpr int kHeight = static_cast<int>(kCardHeight);
constexpr int kSwatch = static_cast<int>(kSwatchHeight);
constexpr int kSquare = static_cast<int>(kCheckerSquare);

// One card that fills the picture.
std::string PictureOf(std::optional<Rgb> colour, double alpha) {
  FittedPicture picture;
  picture.width = kCardWidth;
  picture.height = kCardHeight;
  picture.cards.push_back({0, 0, "", colour, alpha, {}});
  return PngOf(picture);
}
std::string PictureOf(double alpha) {
  return PictureOf(Rgb{0.2, 0.4, 0.6}, alpha);
}

// What a picture file shows.
class Shown {
 public:
  explicit Shown(const std::string& png) : left_(png) {
    surface_ = cairo_image_surface_create_from_png_stream(
        [](void* self, unsigned char* to, unsigned size) {
          std::string_view& left = static_cast<Shown*>(self)->left_;
          if (left.size() < size) return CAIRO_STATUS_READ_ERROR;
          std::memcpy(to, left.data(), size);
          left.remove_prefix(size);
          return CAIRO_STATUS_SUCCESS;
        },
        this);
    EXPECT_EQ(cairo_surface_status(surface_), CAIRO_STATUS_SUCCESS);
  }
  Shown(const Shown&) = delete;
  Shown& operator=(const Shown&) = delete;
  ~Shown() { cairo_surface_destroy(surface_); }

  // Red, green and blue in the low bytes.
  std::uint32_t At(int x, int y) const {
    std::uint32_t point = 0;
    std::memcpy(&point,
                cairo_image_surface_get_data(surface_) + y * cairo_image_surface_get_stride(surface_) + 4 * x,
                sizeof point);
    return point & 0xFFFFFFU;
  }

 private:
  std::string_view left_;
  cairo_surface_t* surface_ = nullptr;
};

std::uint32_t Points(const Rgb& colour) {
  const auto byte = [](double component) { return static_cast<std::uint32_t>(std::lround(component * 255)); };
  return byte(colour.red) << 16U | byte(colour.green) << 8U | byte(colour.blue);
}

// As soft edges are drawn, which may be rounded another way.
bool IsNear(std::uint32_t one, std::uint32_t other) {
  for (const unsigned shift : {0U, 8U, 16U}) {
    if (std::abs(static_cast<int>(one >> shift & 0xFFU) - static_cast<int>(other >> shift & 0xFFU)) > 8)
      return false;
  }
  return true;
}

TEST(PictureOfACard, IsTheSameOnBothSidesAndAtItsTopAndBottom) {
  const Shown shown(PictureOf(kCardGround, 1));
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth / 2; ++x)
      EXPECT_TRUE(IsNear(shown.At(x, y), shown.At(kWidth - 1 - x, y))) << x << " " << y;
  }
  for (int y = 0; y < kHeight - 1 - kSwatch; ++y) {
    for (int x = 0; x < kWidth; ++x)
      EXPECT_TRUE(IsNear(shown.At(x, y), shown.At(x, kHeight - 1 - y))) << x << " " << y;
  }
}

TEST(PictureOfACard, HasRoundCornersOnThePaperAndAnEdge) {
  const Shown shown(PictureOf(kCardGround, 1));
  for (const int x : {0, kWidth - 1}) {
    for (const int y : {0, kHeight - 1}) EXPECT_TRUE(IsNear(shown.At(x, y), Points(kPaper)));
  }
  EXPECT_NE(shown.At(kWidth / 2, 0), Points(kCardGround));
  EXPECT_EQ(shown.At(kWidth / 2, 1), Points(kCardGround));
  EXPECT_NE(shown.At(0, kHeight / 2), Points(kCardGround));
  EXPECT_EQ(shown.At(1, kHeight / 2), Points(kCardGround));
  // Eight points in, on the way from the corner's middle to the card's edge.
  EXPECT_EQ(shown.At(3, 3), Points(kCardGround));
  EXPECT_NE(shown.At(2, 2), Points(kCardGround));
}

TEST(PictureOfACard, HasItsColourDownToALineAcross) {
  const Rgb colour{0.2, 0.4, 0.6};
  const Shown shown(PictureOf(colour, 1));
  for (const int x : {1, kWidth / 2, kWidth - 2}) {
    EXPECT_EQ(shown.At(x, kSwatch - 2), Points(colour)) << x;
    EXPECT_EQ(shown.At(x, kSwatch - 1), Points(kEdge)) << x;
    EXPECT_EQ(shown.At(x, kSwatch), Points(kCardGround)) << x;
  }
}

// From its corner the squares begin with a light one.
TEST(PictureOfACard, HasChecksBehindWhatIsSeenThrough) {
  const Shown shown(PictureOf(Rgb{0, 0, 0}, 0));
  const auto light = Points({kCheckerLight, kCheckerLight, kCheckerLight});
  const auto dark = Points({kCheckerDark, kCheckerDark, kCheckerDark});
  for (int row = 0; row * kSquare < kSwatch; ++row) {
    for (int column = 0; column * kSquare < kWidth; ++column) {
      const auto wanted = (row + column) % 2 == 0 ? dark : light;
      for (const int at : {1, kSquare - 2}) {
        const int x = column * kSquare + at;
        const int y = row * kSquare + at;
        const bool corner = (x < 8 || x >= kWidth - 8) && y < 8;
        if (corner || y >= kSwatch - 1) continue;
        EXPECT_EQ(shown.At(x, y), wanted) << x << " " << y;
      }
    }
  }
}

// Lines that rise to the right, two points wide.
TEST(PictureOfACard, HasStripesWhereAColourCannotBeShown) {
  const Shown shown(PictureOf(std::nullopt, 1));
  constexpr int kStep = static_cast<int>(kStripe);
  for (int y = 9; y < kSwatch - 2; ++y) {
    for (int x = 1; x < kWidth - 1; ++x) {
      const int along = (x + y) % kStep;
      const bool on = along == kStep - 1;
      const bool beside = along < 2 || along >= kStep - 3;
      if (beside && !on) continue;
      EXPECT_EQ(shown.At(x, y) == Points(kCardGround), !on) << x << " " << y;
    }
  }
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
