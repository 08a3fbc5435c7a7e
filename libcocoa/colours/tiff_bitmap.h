// libcocoa/colours/tiff_bitmap.h - the pixels of a TIFF as GNUstep archives them, without trusting it.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

enum { QVXMostPlanes = 5 };

// What GNUstep writes for a bitmap: little-endian, one image, one strip for each plane, not packed or packed
// as LZW or PackBits. It refers to the bytes that it was opened on.
typedef struct {
  uint32_t width, height;          // in pixels, 1 to 65535
  uint32_t bitsPerSample;          // 1, 2, 4, 8 or 16
  uint32_t samplesPerPixel;        // 1 to QVXMostPlanes
  bool isPlanar;                   // each sample in a plane of its own
  uint32_t planes;                 // samplesPerPixel, or 1
  size_t bytesPerRow;              // of one plane
  uint32_t packing;                // as in the file
  uint32_t starts[QVXMostPlanes];  // of the strips, within the bytes
  uint32_t sizes[QVXMostPlanes];
} QVXBitmap;

// False if the bytes are anything else.
bool QVXOpenBitmap(const uint8_t* bytes, size_t size, QVXBitmap* bitmap);

// Fills the plane, bytesPerRow * height bytes. False if the strip does not hold as many.
bool QVXReadPlane(const uint8_t* bytes, const QVXBitmap* bitmap, uint32_t plane, uint8_t* pixels);
