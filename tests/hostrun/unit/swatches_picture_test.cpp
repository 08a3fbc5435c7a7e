// tests/hostrun/unit/swatches_picture_test.cpp - which ink is read best on a colour, and cards of the host's
// own colours.
#include "hostrun/commands/swatches_picture.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <stdexcept>

namespace hostrun {
namespace {

ColourCard CardWith(double red, double green, double blue, double alpha) {
  ColourCard card;
  card.red = red;
  card.green = green;
  card.blue = blue;
  card.alpha = alpha;
  return card;
}

struct Sample {
  ColourCard card;
  bool white;
  double contrast;
};

void ExpectInks(std::initializer_list<Sample> samples) {
  for (const auto& [card, white, contrast] : samples) {
    const std::string colour = ComponentText(card.red) + " " + ComponentText(card.green) + " " +
                               ComponentText(card.blue) + " " + ComponentText(card.alpha);
    EXPECT_EQ(InkOn(card).white, white) << colour;
    EXPECT_NEAR(InkOn(card).contrast, contrast, 1e-5) << colour;
  }
}

// The contrast ratios are those of the accessibility guidelines, worked out elsewhere.
TEST(Ink, IsTheOneWithMoreContrast) {
  ExpectInks({{CardWith(0, 0, 0, 1), true, 21},
              {CardWith(1, 1, 1, 1), false, 21},
              {CardWith(1, 0, 0, 1), false, 5.252},
              {CardWith(0, 1, 0, 1), false, 15.304},
              {CardWith(0, 0, 1, 1), true, 8.592471},
              {CardWith(0.5, 0.5, 0.5, 1), false, 5.280823},
              {CardWith(0.03, 0.03, 0.03, 1), true, 20.068047},
              {CardWith(2, -1, 0.5, 1), false, 5.561075}});
}

// Of the two greys behind what is seen through the worse one counts.
TEST(Ink, IsReadOnBothGroundsBehindAColour) {
  ExpectInks({{CardWith(0, 0, 0, 0.5), true, 3.976653},
              {CardWith(0.2, 0.1, 0.4, 0.75), true, 6.606675},
              {CardWith(1, 1, 1, 0), false, 13.765664},
              {CardWith(0, 0, 0, 0), false, 13.765664}});
}

TEST(Cards, OfTheHostsColoursHaveTheirFieldsAsComponents) {
  const ColourCard card = CardOf("mine", 0x336699U);
  EXPECT_EQ(card.name, "mine");
  EXPECT_EQ(card.space, "host colour");
  EXPECT_EQ(card.hex, "#336699");
  EXPECT_EQ(card.components, "0.2 0.4 0.6");
  EXPECT_TRUE(card.drawable);
  EXPECT_DOUBLE_EQ(card.red, 0.2);
  EXPECT_DOUBLE_EQ(card.green, 0.4);
  EXPECT_DOUBLE_EQ(card.blue, 0.6);
  EXPECT_EQ(card.alpha, 1);
  EXPECT_EQ(CardOf("", 0xFFFFFFU).hex, "#FFFFFF");
  EXPECT_EQ(CardOf("", 0x01000000U).hex, "#01000000");
}

TEST(Components, AreShownWithFourDecimalsAtMost) {
  EXPECT_EQ(ComponentText(0), "0");
  EXPECT_EQ(ComponentText(0.5), "0.5");
  EXPECT_EQ(ComponentText(1.0 / 3), "0.3333");
  EXPECT_EQ(ComponentText(0.00005), "0.0001");
  EXPECT_EQ(ComponentText(0.00004), "0");
  EXPECT_EQ(ComponentText(-0.12344), "-0.1234");
  EXPECT_EQ(ComponentText(12.34567), "12.3457");
}

TEST(SwatchPictures, AreOfTheFormThatTheirNameSays) {
  const auto refusal = [](const char* name) -> std::string {
    try {
      WriteSwatchPicture({}, name);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "none";
  };
  EXPECT_EQ(refusal("a.gif"), "a.gif: wanted a file name that ends in .png or .svg, found .gif");
  EXPECT_EQ(refusal("a"), "a: wanted a file name that ends in .png or .svg, found none of them");
}

}  // namespace
}  // namespace hostrun
