// hostrun/language/code_values.cpp - variables and colours.
#include "hostrun/language/code_values.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "hostrun/host/text.h"

namespace hostrun {
namespace {

// Channels count from 0 to 255, hue, saturation and brightness from 0 to 1.
class ColorMember final : public Code {
 public:
  enum class Part : std::uint8_t { Red, Green, Blue, Alpha, Hue, Saturation, Brightness };
  ColorMember(Position position, Part part, CodePtr color)
      : Code(position, TypeOf(part < Part::Hue ? Kind::Integer : Kind::Double)),
        part_(part),
        color_(std::move(color)) {}
  Value Eval(Activation& activation) const override {
    const auto rgb = static_cast<std::uint32_t>(color_->Whole(activation));
    const auto channel = [rgb](unsigned shift) { return static_cast<std::int32_t>((rgb >> shift) & 0xFFU); };
    switch (part_) {
      case Part::Red:
        return Value::Integer(channel(16));
      case Part::Green:
        return Value::Integer(channel(8));
      case Part::Blue:
        return Value::Integer(channel(0));
      case Part::Alpha:
        return Value::Integer(channel(24));
      default:
        return Value::Double(Hsv(channel(16) / 255.0, channel(8) / 255.0, channel(0) / 255.0));
    }
  }

 private:
  double Hsv(double red, double green, double blue) const {
    const double most = std::max({red, green, blue});
    const double spread = most - std::min({red, green, blue});
    if (part_ == Part::Brightness) return most;
    if (part_ == Part::Saturation) return most == 0 ? 0 : spread / most;
    if (spread == 0) return 0;
    const double sector = most == red     ? std::fmod((green - blue) / spread + 6, 6)
                          : most == green ? (blue - red) / spread + 2
                                          : (red - green) / spread + 4;
    return sector / 6;
  }

  Part part_;
  CodePtr color_;
};

}  // namespace

CodePtr MakeColorMember(Position at, const std::string& name, CodePtr color) {
  using Part = ColorMember::Part;
  struct Named {
    std::string_view name;
    Part part;
  };
  static constexpr std::array<Named, 8> kMembers = {{{"red", Part::Red},
                                                     {"green", Part::Green},
                                                     {"blue", Part::Blue},
                                                     {"alpha", Part::Alpha},
                                                     {"hue", Part::Hue},
                                                     {"saturation", Part::Saturation},
                                                     {"value", Part::Brightness},
                                                     {"brightness", Part::Brightness}}};
  for (const Named& member : kMembers) {
    if (SameName(member.name, name)) return std::make_unique<ColorMember>(at, member.part, std::move(color));
  }
  return nullptr;
}

}  // namespace hostrun
