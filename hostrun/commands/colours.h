// hostrun/commands/colours.h - reads colours as a program would: through the bundle's registered members.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostrun/host/objects.h"

namespace hostrun {

struct Class;

// One colour as shown to people. Owns everything in it: the colour may be gone.
struct ColourCard {
  std::string name;
  std::string space;       // "calibrated RGB", "System controlColor"
  std::string components;  // "0.5 1": as the colour holds them; empty where it holds none
  std::string hex;         // "#FF7F00", from the property colorValue
  bool drawable = false;   // false: no RGB form, such as a pattern's; what follows is then 0
  double red = 0;  // as getRGB with alpha gives them: converted to calibrated RGB where that is needed
  double green = 0;
  double blue = 0;
  double alpha = 0;
};

// The class "NSColorQVX" with the members that these functions need; throws std::runtime_error when the
// loaded bundle lacks one.
Class& ColourClass();

// Of an instance of the class, borrowed for the call, or of a host colour 0xRRGGBB. What the class can't tell
// of the colour stays empty.
ColourCard CardOf(const std::string& name, Object* colour);
ColourCard CardOf(const std::string& name, std::uint32_t hostColour);

// Every shared member of the class that takes nothing and gives a colour, in the order of registration.
std::vector<ColourCard> PredefinedColours();

// The colours of a colour-list file, in the list's order; throws std::runtime_error in one clear line.
std::vector<ColourCard> ColoursOfListFile(const std::string& path);

// As shown on cards: at most four decimals, without zeros at the end.
std::string ComponentText(double component);

}  // namespace hostrun
