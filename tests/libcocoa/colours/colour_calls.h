// tests/libcocoa/colours/colour_calls.h - the colour classes, for tests written in C++.
//
// Each call drains what it autoreleased. A raised exception is the answer kRaised: nothing here may raise.
#pragma once

#include <stddef.h>  // NOLINT(modernize-deprecated-headers): for Objective-C too

#ifdef __cplusplus
extern "C" {
#endif

enum { kMostComponents = 16, kRaised = -1 };

typedef const void* Space;  // NOLINT(modernize-use-using): for Objective-C too

// The predefined space of that class method, for instance "sRGBColorSpace"; it lives for ever.
Space predefinedSpace(const char* selector);

// A space from ICC data, or NULL; to be released.
Space spaceFromProfile(const void* bytes, size_t size);
void releaseSpace(Space space);

// The space's profile: its size, and the bytes if the buffer is large enough.
size_t profileOfSpace(Space space, void* buffer, size_t capacity);
int componentsOfSpace(Space space);

// Makes a colour of the components, the alpha last, and converts it. The number of components written, alpha
// included; 0 if there is no such colour.
int convertColour(Space from, const float* components, Space to, float* converted);

// The processor time of one conversion of a colour that exists already, in microseconds, over so many rounds.
double microsecondsToConvert(Space from, Space to, int rounds);

// Asks a space everything that it can be asked, and converts with it there and back. 1, or kRaised.
int exerciseSpace(Space space);

// Reads a list from the file. The number of its colours; -2 if there is no list; kRaised.
int colorsInListFile(const char* path);

// Reads a colour that was put on a pasteboard as these bytes. 1 if there is one, 0 if not, or kRaised.
int colorFromBytes(const void* bytes, size_t size);

// Writes files that fuzzing starts from. Yes: 1.
int writeListFile(const char* path, int withExactColours);
size_t pasteboardBytes(void* buffer, size_t capacity);

// How many objects of the class live now.
int liveObjects(const char* className);
void countObjects(void);

#ifdef __cplusplus
}
#endif
