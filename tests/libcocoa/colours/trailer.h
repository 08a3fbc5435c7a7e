// tests/libcocoa/colours/trailer.h - the end of a trailer with exact colours, made as anybody can make it.
#pragma once

#include <stddef.h>  // NOLINT(modernize-deprecated-headers): for Objective-C too

#ifdef __cplusplus
extern "C" {
#endif

enum { kSealSize = 16 };

// What follows an archive and the trailer behind it: the checksum of both, the trailer's length, the mark.
void MakeSeal(const unsigned char* bytes, size_t size, size_t trailerSize, unsigned char* seal);

#ifdef __cplusplus
}
#endif
