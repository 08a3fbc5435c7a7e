// libcocoa/colours/hue_saturation_brightness.h - the hexcone: red, green and blue as hue, saturation and
// brightness, and back.
#pragma once

typedef struct {
  float hue, saturation, brightness;
} QVXHSB;

typedef struct {
  float red, green, blue;
} QVXRGB;

// A grey has hue 0 and saturation 0.
QVXHSB QVXHSBFromRGB(float red, float green, float blue);

// A hue of 1 is 0, the full circle.
QVXRGB QVXRGBFromHSB(float hue, float saturation, float brightness);
