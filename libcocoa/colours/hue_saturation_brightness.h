// libcocoa/colours/hue_saturation_brightness.h - the hexcone: red, green and blue as hue, saturation and
// brightness, and back.
#pragma once

typedef struct {
  float hue, saturation, brightness;  // each 0 to 1, the hue a fraction of the circle from red
} QVXHSB;

typedef struct {
  float red, green, blue;  // each 0 to 1
} QVXRGB;

// Clips its arguments to 0 to 1; what is not a number counts as 0. A grey has hue 0 and saturation 0.
QVXHSB QVXHSBFromRGB(float red, float green, float blue);

// Clips its arguments too. A hue of 1 is 0, the full circle.
QVXRGB QVXRGBFromHSB(float hue, float saturation, float brightness);
