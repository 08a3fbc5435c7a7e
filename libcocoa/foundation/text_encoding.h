// libcocoa/foundation/text_encoding.h - bytes to UTF-16 units and back, strictly, for the encodings that
// hosts use.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

// Core Foundation's names and numbers.
enum {
  kCFStringEncodingMacRoman = 0x0000,
  kCFStringEncodingUTF16 = 0x0100,  // the machine's byte order, no byte-order mark
  kCFStringEncodingISOLatin1 = 0x0201,
  kCFStringEncodingWindowsLatin1 = 0x0500,
  kCFStringEncodingASCII = 0x0600,
  kCFStringEncodingUTF8 = 0x08000100,
  kCFStringEncodingUTF32 = 0x0C000100,
  kCFStringEncodingUTF16BE = 0x10000100,
  kCFStringEncodingUTF16LE = 0x14000100,
  kCFStringEncodingUTF32BE = 0x18000100,
  kCFStringEncodingUTF32LE = 0x1C000100,
};

// 1, 2 or 4: the width of a unit and of a terminator. 0: the encoding is not known here.
size_t QVXTextEncodingWidth(uint32_t encoding);

// The length in bytes of text that ends with a zero unit.
size_t QVXTextEncodingLength(uint32_t encoding, const char* text);

// Fills `units`, which has room for `length` of them, and sets `count`. `length` is in bytes, a multiple of
// the encoding's width. False if a byte sequence stands for no character of the encoding; nothing is
// replaced, no byte-order mark is skipped.
bool QVXDecodeText(uint32_t encoding, const char* text, size_t length, uint16_t* units, size_t* count);

// Writes at most `room` bytes and sets `length`. False if they don't suffice or if the encoding lacks a
// character; the buffer's contents are then undefined.
bool QVXEncodeText(uint32_t encoding, const uint16_t* units, size_t count, char* bytes, size_t room,
                   size_t* length);
