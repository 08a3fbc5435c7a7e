// libcocoa/colours/hue_saturation_brightness.c - the hexcone: red, green and blue as hue, saturation and
// brightness, and back.
#include "libcocoa/colours/hue_saturation_brightness.h"

#include <math.h>

#include "libcocoa/profiles/components.h"

QVXHSB QVXHSBFromRGB(float red, float green, float blue) {
  red = (float)QVXClip(red);
  green = (float)QVXClip(green);
  blue = (float)QVXClip(blue);
  float most = fmaxf(red, fmaxf(green, blue));
  float least = fminf(red, fminf(green, blue));
  float range = most - least;
  if (!(range > 0)) return (QVXHSB){0, 0, most};
  float sixths;  // of the circle, from red
  if (most == red)
    sixths = (green - blue) / range;
  else if (most == green)
    sixths = 2 + (blue - red) / range;
  else
    sixths = 4 + (red - green) / range;
  if (sixths < 0) sixths += 6;
  return (QVXHSB){sixths / 6, range / most, most};
}

QVXRGB QVXRGBFromHSB(float hue, float saturation, float brightness) {
  float sixths = (float)QVXClip(hue) * 6;
  saturation = (float)QVXClip(saturation);
  brightness = (float)QVXClip(brightness);
  int sector = (int)sixths;
  float within = sixths - (float)sector;
  float low = brightness * (1 - saturation);
  float falling = brightness * (1 - saturation * within);
  float rising = brightness * (1 - saturation * (1 - within));
  switch (sector) {
    case 1:
      return (QVXRGB){falling, brightness, low};
    case 2:
      return (QVXRGB){low, brightness, rising};
    case 3:
      return (QVXRGB){low, falling, brightness};
    case 4:
      return (QVXRGB){rising, low, brightness};
    case 5:
      return (QVXRGB){brightness, low, falling};
    default:
      return (QVXRGB){brightness, rising, low};
  }
}
