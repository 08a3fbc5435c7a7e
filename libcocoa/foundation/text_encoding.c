// libcocoa/foundation/text_encoding.c - bytes to UTF-16 units and back.
//
// The system's own converters are not used, so that every machine gives the same result.
#include "libcocoa/foundation/text_encoding.h"

#include <emmintrin.h>
#include <string.h>

// The upper halves of the single-byte encodings. 0 stands for an undefined byte.
static const uint16_t kMacRomanUpperHalf[128] = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5,
    0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, 0x00F2, 0x00F4,
    0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6,
    0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, 0x221E, 0x00B1, 0x2264, 0x2265,
    0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF,
    0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, 0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5,
    0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044,
    0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9,
    0x0131, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};

static const uint16_t kWindowsLatin1UpperHalf[128] = {
    0x20AC, 0x0000, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152,
    0x0000, 0x017D, 0x0000, 0x0000, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122,
    0x0161, 0x203A, 0x0153, 0x0000, 0x017E, 0x0178, 0x00A0, 0x00A1, 0x00A2, 0x00A3, 0x00A4, 0x00A5, 0x00A6,
    0x00A7, 0x00A8, 0x00A9, 0x00AA, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x00AF, 0x00B0, 0x00B1, 0x00B2, 0x00B3,
    0x00B4, 0x00B5, 0x00B6, 0x00B7, 0x00B8, 0x00B9, 0x00BA, 0x00BB, 0x00BC, 0x00BD, 0x00BE, 0x00BF, 0x00C0,
    0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C6, 0x00C7, 0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD,
    0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D7, 0x00D8, 0x00D9, 0x00DA,
    0x00DB, 0x00DC, 0x00DD, 0x00DE, 0x00DF, 0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E6, 0x00E7,
    0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00ED, 0x00EE, 0x00EF, 0x00F0, 0x00F1, 0x00F2, 0x00F3, 0x00F4,
    0x00F5, 0x00F6, 0x00F7, 0x00F8, 0x00F9, 0x00FA, 0x00FB, 0x00FC, 0x00FD, 0x00FE, 0x00FF,
};

static bool IsHighSurrogate(uint32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

static bool IsLowSurrogate(uint32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

static bool IsCharacter(uint32_t code) {
  return code < 0x110000 && (code < 0xD800 || code >= 0xE000);
}

static bool IsBigEndian(uint32_t encoding) {
  return encoding == kCFStringEncodingUTF16BE || encoding == kCFStringEncodingUTF32BE;
}

static const uint16_t* UpperHalf(uint32_t encoding) {
  return encoding == kCFStringEncodingMacRoman ? kMacRomanUpperHalf : kWindowsLatin1UpperHalf;
}

size_t QVXTextEncodingWidth(uint32_t encoding) {
  switch (encoding) {
    case kCFStringEncodingMacRoman:
    case kCFStringEncodingISOLatin1:
    case kCFStringEncodingWindowsLatin1:
    case kCFStringEncodingASCII:
    case kCFStringEncodingUTF8:
      return 1;
    case kCFStringEncodingUTF16:
    case kCFStringEncodingUTF16BE:
    case kCFStringEncodingUTF16LE:
      return 2;
    case kCFStringEncodingUTF32:
    case kCFStringEncodingUTF32BE:
    case kCFStringEncodingUTF32LE:
      return 4;
    default:
      return 0;
  }
}

size_t QVXTextEncodingLength(uint32_t encoding, const char* text) {
  size_t width = QVXTextEncodingWidth(encoding);
  if (width <= 1) return strlen(text);
  static const char zero[4] = {0};
  size_t length = 0;
  while (memcmp(text + length, zero, width) != 0) length += width;
  return length;
}

static uint16_t ReadUnit16(const char* p, bool bigEndian) {
  uint16_t unit;
  memcpy(&unit, p, sizeof unit);
  return bigEndian ? __builtin_bswap16(unit) : unit;
}

static uint32_t ReadUnit32(const char* p, bool bigEndian) {
  uint32_t unit;
  memcpy(&unit, p, sizeof unit);
  return bigEndian ? __builtin_bswap32(unit) : unit;
}

static size_t AppendCharacter(uint16_t* units, size_t count, uint32_t code) {
  if (code < 0x10000) {
    units[count] = (uint16_t)code;
    return count + 1;
  }
  units[count] = (uint16_t)(0xD7C0 + (code >> 10));
  units[count + 1] = (uint16_t)(0xDC00 + (code & 0x3FF));
  return count + 2;
}

// The length of the UTF-8 sequence at p, or 0 if there is none or it is ASCII. Overlong forms, surrogates and
// codes above U+10FFFF do not count; a first byte that is none makes such a code.
static size_t ReadUTF8(const uint8_t* p, size_t room, uint32_t* code) {
  size_t length = p[0] >= 0xF0 ? 4 : p[0] >= 0xE0 ? 3 : 2;
  if (p[0] < 0xC2 || length > room) return 0;
  uint32_t value = p[0] & (0xFFu >> length);
  for (size_t i = 1; i < length; ++i) {
    if ((p[i] & 0xC0) != 0x80) return 0;
    value = (value << 6) | (p[i] & 0x3F);
  }
  if ((length == 3 && value < 0x800) || (length == 4 && value < 0x10000) || !IsCharacter(value)) return 0;
  *code = value;
  return length;
}

// ASCII is most of all text: both ways it is copied sixteen characters at a time, up to the first block that
// holds anything else.
enum { kBlock = 16 };

static size_t WidenASCII(const uint8_t* text, size_t length, uint16_t* units) {
  size_t done = 0;
  for (; length - done >= kBlock; done += kBlock) {
    __m128i bytes = _mm_loadu_si128((const __m128i*)(text + done));
    if (_mm_movemask_epi8(bytes) != 0) break;
    __m128i zero = _mm_setzero_si128();
    _mm_storeu_si128((__m128i*)(units + done), _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128((__m128i*)(units + done + kBlock / 2), _mm_unpackhi_epi8(bytes, zero));
  }
  for (; done < length && text[done] < 0x80; ++done) units[done] = text[done];
  return done;
}

static size_t NarrowASCII(const uint16_t* units, size_t count, uint8_t* bytes) {
  size_t done = 0;
  for (; count - done >= kBlock; done += kBlock) {
    __m128i low = _mm_loadu_si128((const __m128i*)(units + done));
    __m128i high = _mm_loadu_si128((const __m128i*)(units + done + kBlock / 2));
    __m128i others = _mm_and_si128(_mm_or_si128(low, high), _mm_set1_epi16((short)0xff80));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(others, _mm_setzero_si128())) != 0xffff) break;
    _mm_storeu_si128((__m128i*)(bytes + done), _mm_packus_epi16(low, high));
  }
  for (; done < count && units[done] < 0x80; ++done) bytes[done] = (uint8_t)units[done];
  return done;
}

static bool DecodeUTF8(const uint8_t* text, size_t length, uint16_t* units, size_t* count) {
  for (size_t i = 0;;) {
    size_t run = WidenASCII(text + i, length - i, units + *count);
    i += run;
    *count += run;
    if (i == length) return true;
    uint32_t code;
    size_t step = ReadUTF8(text + i, length - i, &code);
    if (step == 0) return false;
    *count = AppendCharacter(units, *count, code);
    i += step;
  }
}

static bool DecodeSingleBytes(uint32_t encoding, const uint8_t* text, size_t length, uint16_t* units) {
  for (size_t i = WidenASCII(text, length, units); i < length; ++i) {
    units[i] = text[i];
    if (text[i] < 0x80 || encoding == kCFStringEncodingISOLatin1) continue;
    if (encoding == kCFStringEncodingASCII) return false;
    units[i] = UpperHalf(encoding)[text[i] - 0x80];
    if (units[i] == 0) return false;
  }
  return true;
}

bool QVXDecodeText(uint32_t encoding, const char* text, size_t length, uint16_t* units, size_t* count) {
  bool bigEndian = IsBigEndian(encoding);
  *count = 0;
  switch (QVXTextEncodingWidth(encoding)) {
    case 1:
      if (encoding == kCFStringEncodingUTF8) return DecodeUTF8((const uint8_t*)text, length, units, count);
      *count = length;
      return DecodeSingleBytes(encoding, (const uint8_t*)text, length, units);
    case 2:
      for (size_t i = 0; i < length; i += 2) units[(*count)++] = ReadUnit16(text + i, bigEndian);
      return true;
    case 4:
      for (size_t i = 0; i < length; i += 4) {
        uint32_t code = ReadUnit32(text + i, bigEndian);
        if (!IsCharacter(code)) return false;
        *count = AppendCharacter(units, *count, code);
      }
      return true;
    default:
      return false;
  }
}

// The byte that stands for a character, or -1.
static int SingleByte(uint32_t encoding, uint32_t code) {
  if (code < 0x80) return (int)code;
  if (encoding == kCFStringEncodingASCII) return -1;
  if (encoding == kCFStringEncodingISOLatin1) return code < 0x100 ? (int)code : -1;
  const uint16_t* table = UpperHalf(encoding);
  for (int i = 0; i < 128; ++i) {
    if (table[i] == code) return 0x80 + i;
  }
  return -1;
}

static size_t PutUTF8(uint32_t code, uint8_t* out) {
  if (code < 0x80) {
    out[0] = (uint8_t)code;
    return 1;
  }
  size_t length = code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
  for (size_t i = length; i-- > 1; code >>= 6) out[i] = (uint8_t)(0x80 | (code & 0x3F));
  out[0] = (uint8_t)((0xF00u >> length) | code);
  return length;
}

// Writes a character and returns its number of bytes; 0 if the encoding lacks it.
static size_t PutCharacter(uint32_t encoding, uint32_t code, uint8_t* out) {
  bool bigEndian = IsBigEndian(encoding);
  switch (QVXTextEncodingWidth(encoding)) {
    case 1: {
      if (encoding == kCFStringEncodingUTF8) return PutUTF8(code, out);
      int byte = SingleByte(encoding, code);
      if (byte < 0) return 0;
      out[0] = (uint8_t)byte;
      return 1;
    }
    case 2: {
      uint16_t units[2];
      size_t count = AppendCharacter(units, 0, code);
      for (size_t i = 0; i < count; ++i) units[i] = bigEndian ? __builtin_bswap16(units[i]) : units[i];
      memcpy(out, units, count * sizeof units[0]);
      return count * sizeof units[0];
    }
    case 4: {
      uint32_t unit = bigEndian ? __builtin_bswap32(code) : code;
      memcpy(out, &unit, sizeof unit);
      return sizeof unit;
    }
    default:
      return 0;
  }
}

bool QVXEncodeText(uint32_t encoding, const uint16_t* units, size_t count, char* bytes, size_t room,
                   size_t* length) {
  *length = 0;
  bool holdsASCII = QVXTextEncodingWidth(encoding) == 1;
  for (size_t i = 0; i < count; ++i) {
    if (holdsASCII && units[i] < 0x80) {
      size_t left = count - i;
      size_t run =
          NarrowASCII(units + i, left < room - *length ? left : room - *length, (uint8_t*)bytes + *length);
      *length += run;
      i += run;
      if (i == count) break;
    }
    uint32_t code = units[i];
    if (IsHighSurrogate(code)) {
      if (i + 1 == count || !IsLowSurrogate(units[i + 1])) return false;
      code = 0x10000 + ((code - 0xD800) << 10) + (units[++i] - 0xDC00u);
    } else if (IsLowSurrogate(code)) {
      return false;
    }
    uint8_t piece[4];
    size_t size = PutCharacter(encoding, code, piece);
    if (size == 0 || size > room - *length) return false;
    memcpy(bytes + *length, piece, size);
    *length += size;
  }
  return true;
}
