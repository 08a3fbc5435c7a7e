// libcocoa/foundation/text_encoding.c - see text_encoding.h. No tables of the system are asked, so every
// machine agrees.
#include "libcocoa/foundation/text_encoding.h"

#include <string.h>

#include "libcocoa/foundation/text_tables.h"

static bool is_high_surrogate(uint32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
static bool is_low_surrogate(uint32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}
static bool is_character(uint32_t code) {
  return code < 0x110000 && (code < 0xD800 || code >= 0xE000);
}

static bool is_big_endian(uint32_t encoding) {
  return encoding == kEncodingUTF16BE || encoding == kEncodingUTF32BE;
}

static const uint16_t* upper_half(uint32_t encoding) {
  return encoding == kEncodingMacRoman ? kMacRomanUpperHalf : kWindowsLatin1UpperHalf;
}

size_t text_encoding_width(uint32_t encoding) {
  switch (encoding) {
    case kEncodingMacRoman:
    case kEncodingISOLatin1:
    case kEncodingWindowsLatin1:
    case kEncodingASCII:
    case kEncodingUTF8:
      return 1;
    case kEncodingUTF16:
    case kEncodingUTF16BE:
    case kEncodingUTF16LE:
      return 2;
    case kEncodingUTF32:
    case kEncodingUTF32BE:
    case kEncodingUTF32LE:
      return 4;
    default:
      return 0;
  }
}

size_t text_encoding_length(uint32_t encoding, const char* text) {
  size_t width = text_encoding_width(encoding);
  if (width <= 1) return strlen(text);
  static const char zero[4] = {0};
  size_t length = 0;
  while (memcmp(text + length, zero, width) != 0) length += width;
  return length;
}

static uint16_t read_unit16(const char* p, bool big_endian) {
  uint16_t unit;
  memcpy(&unit, p, sizeof unit);
  return big_endian ? __builtin_bswap16(unit) : unit;
}

static uint32_t read_unit32(const char* p, bool big_endian) {
  uint32_t unit;
  memcpy(&unit, p, sizeof unit);
  return big_endian ? __builtin_bswap32(unit) : unit;
}

static size_t append_character(uint16_t* units, size_t count, uint32_t code) {
  if (code < 0x10000) {
    units[count] = (uint16_t)code;
    return count + 1;
  }
  units[count] = (uint16_t)(0xD7C0 + (code >> 10));
  units[count + 1] = (uint16_t)(0xDC00 + (code & 0x3FF));
  return count + 2;
}

// One UTF-8 sequence: its length, or 0 if it is none. Overlong forms, surrogates and codes past the last are
// none.
static size_t read_utf8(const uint8_t* p, size_t room, uint32_t* code) {
  if (p[0] < 0x80) {
    *code = p[0];
    return 1;
  }
  size_t length = p[0] >= 0xF0 ? 4 : p[0] >= 0xE0 ? 3 : 2;
  if (p[0] < 0xC2 || p[0] > 0xF4 || length > room) return 0;
  uint32_t value = p[0] & (0x7Fu >> length);
  for (size_t i = 1; i < length; ++i) {
    if ((p[i] & 0xC0) != 0x80) return 0;
    value = (value << 6) | (p[i] & 0x3F);
  }
  if ((length == 3 && value < 0x800) || (length == 4 && value < 0x10000) || !is_character(value)) return 0;
  *code = value;
  return length;
}

static bool decode_utf8(const uint8_t* text, size_t length, uint16_t* units, size_t* count) {
  for (size_t i = 0; i < length;) {
    uint32_t code;
    size_t step = read_utf8(text + i, length - i, &code);
    if (step == 0) return false;
    *count = append_character(units, *count, code);
    i += step;
  }
  return true;
}

static bool decode_single_bytes(uint32_t encoding, const uint8_t* text, size_t length, uint16_t* units) {
  for (size_t i = 0; i < length; ++i) {
    units[i] = text[i];
    if (text[i] < 0x80 || encoding == kEncodingISOLatin1) continue;
    if (encoding == kEncodingASCII) return false;
    units[i] = upper_half(encoding)[text[i] - 0x80];
    if (units[i] == 0) return false;
  }
  return true;
}

bool text_decode(uint32_t encoding, const char* text, size_t length, uint16_t* units, size_t* count) {
  bool big_endian = is_big_endian(encoding);
  *count = 0;
  switch (text_encoding_width(encoding)) {
    case 1:
      if (encoding == kEncodingUTF8) return decode_utf8((const uint8_t*)text, length, units, count);
      *count = length;
      return decode_single_bytes(encoding, (const uint8_t*)text, length, units);
    case 2:
      if (length % 2 != 0) return false;
      for (size_t i = 0; i < length; i += 2) units[(*count)++] = read_unit16(text + i, big_endian);
      return true;
    case 4:
      if (length % 4 != 0) return false;
      for (size_t i = 0; i < length; i += 4) {
        uint32_t code = read_unit32(text + i, big_endian);
        if (!is_character(code)) return false;
        *count = append_character(units, *count, code);
      }
      return true;
    default:
      return false;
  }
}

// A byte of a single-byte encoding, or -1.
static int single_byte(uint32_t encoding, uint32_t code) {
  if (code < 0x80) return (int)code;
  if (encoding == kEncodingASCII) return -1;
  if (encoding == kEncodingISOLatin1) return code < 0x100 ? (int)code : -1;
  const uint16_t* table = upper_half(encoding);
  for (int i = 0; i < 128; ++i) {
    if (table[i] == code) return 0x80 + i;
  }
  return -1;
}

static size_t put_utf8(uint32_t code, uint8_t* out) {
  if (code < 0x80) {
    out[0] = (uint8_t)code;
    return 1;
  }
  size_t length = code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
  for (size_t i = length; i-- > 1; code >>= 6) out[i] = (uint8_t)(0x80 | (code & 0x3F));
  out[0] = (uint8_t)((0xF00u >> length) | code);
  return length;
}

// The bytes of one character, or 0 if the encoding lacks it.
static size_t put_character(uint32_t encoding, uint32_t code, uint8_t* out) {
  bool big_endian = is_big_endian(encoding);
  switch (text_encoding_width(encoding)) {
    case 1: {
      if (encoding == kEncodingUTF8) return put_utf8(code, out);
      int byte = single_byte(encoding, code);
      if (byte < 0) return 0;
      out[0] = (uint8_t)byte;
      return 1;
    }
    case 2: {
      uint16_t units[2];
      size_t count = append_character(units, 0, code);
      for (size_t i = 0; i < count; ++i) units[i] = big_endian ? __builtin_bswap16(units[i]) : units[i];
      memcpy(out, units, count * sizeof units[0]);
      return count * sizeof units[0];
    }
    case 4: {
      uint32_t unit = big_endian ? __builtin_bswap32(code) : code;
      memcpy(out, &unit, sizeof unit);
      return sizeof unit;
    }
    default:
      return 0;
  }
}

bool text_encode(uint32_t encoding, const uint16_t* units, size_t count, char* bytes, size_t room,
                 size_t* length) {
  *length = 0;
  for (size_t i = 0; i < count; ++i) {
    uint32_t code = units[i];
    if (is_high_surrogate(code)) {
      if (i + 1 == count || !is_low_surrogate(units[i + 1])) return false;
      code = 0x10000 + ((code - 0xD800) << 10) + (units[++i] - 0xDC00u);
    } else if (is_low_surrogate(code)) {
      return false;
    }
    uint8_t piece[4];
    size_t size = put_character(encoding, code, piece);
    if (size == 0 || size > room - *length) return false;
    memcpy(bytes + *length, piece, size);
    *length += size;
  }
  return true;
}
