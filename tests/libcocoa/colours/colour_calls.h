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

// A number that stands for all that can be asked of the colour in these bytes, or of the list in the file: 0
// for none, 1 if anything is raised, even if the library catches it.
unsigned colorTold(const void* bytes, size_t size);
unsigned listTold(const char* path);

// Makes, converts, archives or edits, by the number of the use: 1, or 0 if there is no such use.
int useColors(int use);

int spacesAreEqual(Space one, Space other);

// Writes a list of four stock colours; with two exact ones besides; with three patterns besides those.
// Yes: 1.
typedef enum { kStockColours, kExactColours, kPatterns } ListContents;  // NOLINT(modernize-use-using)
int writeListFile(const char* path, ListContents contents);

// How the image of a pattern is packed.
typedef enum { kUnpacked, kLZW, kPackBits } Packing;  // NOLINT(modernize-use-using)

// The archive of a pattern as GNUstep alone writes it (the library has no part in that), or of a list with
// that pattern: its size, and the bytes if the buffer is large enough.
size_t archiveWithPattern(Packing packing, int inList, void* buffer, size_t capacity);

// The same of a colour that has a name instead of components.
size_t archiveOfNamedColor(void* buffer, size_t capacity);

size_t pasteboardBytes(void* buffer, size_t capacity);

// How many objects of the class live now.
int liveObjects(const char* className);
void countObjects(void);

#ifdef __cplusplus
}
#endif
