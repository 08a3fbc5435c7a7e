// libcocoa/colours/tiff_bitmap.c - the pixels of a TIFF as GNUstep archives them, without trusting it.
#include "libcocoa/colours/tiff_bitmap.h"

#include <string.h>

enum { kHeader = 8, kField = 12, kMostFields = 64, kLargestSide = 65535 };
enum { kShort = 3, kLong = 4 };
enum { kNotPacked = 1, kLZW = 5, kPackBits = 32773 };

enum {
  kWidth = 256,
  kHeight = 257,
  kBitsPerSample = 258,
  kPacking = 259,
  kFillOrder = 266,
  kStripStarts = 273,
  kSamplesPerPixel = 277,
  kRowsPerStrip = 278,
  kStripSizes = 279,
  kPlanes = 284,
  kPredictor = 317,
};

typedef struct {
  const uint8_t* bytes;
  size_t size;
} Bytes;

// Little-endian; the caller has checked that they are there.
static uint32_t Number(Bytes file, size_t at, size_t size) {
  uint32_t number = 0;
  for (size_t i = size; i > 0; --i) number = number << 8 | file.bytes[at + i - 1];
  return number;
}

static bool Holds(Bytes file, size_t at, size_t size) {
  return at <= file.size && size <= file.size - at;
}

// The values of a field of whole numbers. Answers how many; 0, and nothing is written, if they are too many
// or others.
static uint32_t Values(Bytes file, size_t field, uint32_t* values) {
  uint32_t type = Number(file, field + 2, 2);
  size_t each = type == kShort ? 2 : 4;
  uint32_t count = Number(file, field + 4, 4);
  if ((type != kShort && type != kLong) || count > QVXMostPlanes) return 0;
  size_t at = count * each <= 4 ? field + 8 : Number(file, field + 8, 4);
  if (!Holds(file, at, count * each)) return 0;
  for (uint32_t i = 0; i < count; ++i) values[i] = Number(file, at + i * each, each);
  return count;
}

// The same for the field of that tag in the directory. A missing one has the one value that is usual; 0 says
// that it must not be missing.
static uint32_t Find(Bytes file, size_t directory, uint32_t tag, uint32_t usual, uint32_t* values) {
  uint32_t fields = Number(file, directory, 2);
  for (uint32_t i = 0; i < fields; ++i) {
    size_t field = directory + 2 + i * kField;
    if (Number(file, field, 2) == tag) return Values(file, field, values);
  }
  values[0] = usual;
  return usual != 0;
}

// The first value of that field; 0 if it has none.
static uint32_t FindOne(Bytes file, size_t directory, uint32_t tag, uint32_t usual) {
  uint32_t values[QVXMostPlanes] = {0};
  Find(file, directory, tag, usual, values);
  return values[0];
}

static bool IsSampleSize(uint32_t bits) {
  return bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16;
}

static bool HasKnownLayout(Bytes file, size_t directory, const QVXBitmap* bitmap) {
  return FindOne(file, directory, kRowsPerStrip, bitmap->height) >= bitmap->height &&
         FindOne(file, directory, kFillOrder, 1) == 1 && FindOne(file, directory, kPredictor, 1) == 1;
}

static bool FindShape(Bytes file, size_t directory, QVXBitmap* bitmap) {
  bitmap->width = FindOne(file, directory, kWidth, 0);
  bitmap->height = FindOne(file, directory, kHeight, 0);
  bitmap->samplesPerPixel = FindOne(file, directory, kSamplesPerPixel, 1);
  bitmap->packing = FindOne(file, directory, kPacking, kNotPacked);
  uint32_t bits[QVXMostPlanes] = {0};
  uint32_t count = Find(file, directory, kBitsPerSample, 1, bits);
  bitmap->bitsPerSample = bits[0];
  for (uint32_t i = 1; i < count; ++i)
    if (bits[i] != bits[0]) bitmap->bitsPerSample = 0;
  uint32_t planes = FindOne(file, directory, kPlanes, 1);
  bitmap->isPlanar = planes == 2;
  bitmap->planes = bitmap->isPlanar ? bitmap->samplesPerPixel : 1;
  return bitmap->width > 0 && bitmap->width <= kLargestSide && bitmap->height > 0 &&
         bitmap->height <= kLargestSide && IsSampleSize(bitmap->bitsPerSample) &&
         bitmap->samplesPerPixel > 0 && bitmap->samplesPerPixel <= QVXMostPlanes &&
         (planes == 1 || planes == 2) &&
         (bitmap->packing == kNotPacked || bitmap->packing == kLZW || bitmap->packing == kPackBits);
}

static bool FindStrips(Bytes file, size_t directory, QVXBitmap* bitmap) {
  if (Find(file, directory, kStripStarts, 0, bitmap->starts) != bitmap->planes ||
      Find(file, directory, kStripSizes, 0, bitmap->sizes) != bitmap->planes)
    return false;
  for (uint32_t i = 0; i < bitmap->planes; ++i)
    if (!Holds(file, bitmap->starts[i], bitmap->sizes[i])) return false;
  return true;
}

bool QVXOpenBitmap(const uint8_t* bytes, size_t size, QVXBitmap* bitmap) {
  Bytes file = {bytes, size};
  if (size < kHeader || memcmp(bytes, "II*\0", 4) != 0) return false;
  size_t directory = Number(file, 4, 4);
  if (!Holds(file, directory, 2)) return false;
  uint32_t fields = Number(file, directory, 2);
  if (fields > kMostFields || !Holds(file, directory + 2, fields * kField)) return false;
  if (!FindShape(file, directory, bitmap) || !HasKnownLayout(file, directory, bitmap)) return false;
  uint32_t samples = bitmap->isPlanar ? 1 : bitmap->samplesPerPixel;
  bitmap->bytesPerRow = ((size_t)bitmap->width * bitmap->bitsPerSample * samples + 7) / 8;
  return FindStrips(file, directory, bitmap);
}

// --- unpacking: true if the strip fills the pixels

static bool UnpackPackBits(Bytes strip, uint8_t* pixels, size_t size) {
  size_t at = 0;
  size_t filled = 0;
  while (filled < size && at < strip.size) {
    unsigned head = strip.bytes[at++];
    if (head == 128) continue;
    bool repeats = head > 128;
    size_t length = repeats ? 257 - head : head + 1;
    if (!Holds(strip, at, repeats ? 1 : length)) return false;
    if (length > size - filled) length = size - filled;
    if (repeats)
      memset(pixels + filled, strip.bytes[at], length);
    else
      memcpy(pixels + filled, strip.bytes + at, length);
    at += repeats ? 1 : length;
    filled += length;
  }
  return filled == size;
}

// A string of the table: some of the pixels that were unpacked before.
typedef struct {
  size_t start, length;
} Run;

enum { kClear = 256, kEnd = 257, kFirstRun = 258, kNarrowest = 9, kWidest = 12, kCodes = 1 << kWidest };

// The code of so many bits at the bit position; kEnd behind the last.
static unsigned CodeAt(Bytes strip, uint64_t position, unsigned width) {
  if (position + width > (uint64_t)strip.size * 8) return kEnd;
  unsigned code = 0;
  for (unsigned i = 0; i < width; ++i, ++position)
    code = code << 1 | (strip.bytes[position / 8] >> (7 - position % 8) & 1u);
  return code;
}

// Every new string is an earlier one and the pixel behind it, so it is a run of the pixels themselves.
static bool UnpackLZW(Bytes strip, uint8_t* pixels, size_t size) {
  Run runs[kCodes];
  Run last = {0, 0};
  unsigned next = kFirstRun;
  unsigned width = kNarrowest;
  size_t filled = 0;
  for (uint64_t position = 0; filled < size;) {
    unsigned code = CodeAt(strip, position, width);
    position += width;
    if (code == kEnd) return false;
    if (code == kClear) {
      last.length = 0;
      next = kFirstRun;
      width = kNarrowest;
      continue;
    }
    if (code > next || (code == next && last.length == 0)) return false;
    Run grown = {last.start, last.length + 1};
    Run run = code < kClear ? (Run){filled, 1} : code < next ? runs[code] : grown;
    if (run.length > size - filled) run.length = size - filled;
    // One by one: a run may end with the very pixel that it begins with here.
    if (code < kClear)
      pixels[filled] = (uint8_t)code;
    else
      for (size_t i = 0; i < run.length; ++i) pixels[filled + i] = pixels[run.start + i];
    if (last.length > 0 && next < kCodes) runs[next++] = grown;
    if (next >= (1u << width) - 1 && width < kWidest) ++width;
    last = (Run){filled, run.length};
    filled += run.length;
  }
  return true;
}

bool QVXReadPlane(const uint8_t* bytes, const QVXBitmap* bitmap, uint32_t plane, uint8_t* pixels) {
  Bytes strip = {bytes + bitmap->starts[plane], bitmap->sizes[plane]};
  size_t size = bitmap->bytesPerRow * bitmap->height;
  if (bitmap->packing == kPackBits) return UnpackPackBits(strip, pixels, size);
  if (bitmap->packing == kLZW) return UnpackLZW(strip, pixels, size);
  if (strip.size < size) return false;
  memcpy(pixels, strip.bytes, size);
  return true;
}
