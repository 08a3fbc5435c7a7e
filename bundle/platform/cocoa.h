// bundle/platform/cocoa.h - declares the platform symbols that symbols.inc lists, and nothing else.
//
// They are resolved from whatever the host process has loaded globally. Widths are those of the 32-bit
// platform.
#pragma once

#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <type_traits>

extern "C" {

using id = struct objc_object*;
using Class = struct objc_class*;
using SEL = const struct objc_selector*;
using BOOL = signed char;  // returned in AL; the upper bits of EAX are undefined
using Boolean = unsigned char;
using CGFloat = float;
using NSInteger = long;
using NSUInteger = unsigned long;
using CFIndex = long;
using UniChar = std::uint16_t;

using CFTypeRef = const void*;
using CFAllocatorRef = const struct __CFAllocator*;
using CFStringRef = const struct __CFString*;
using CFMutableStringRef = struct __CFString*;
using CFURLRef = const struct __CFURL*;
using CFDictionaryRef = const struct __CFDictionary*;
using CFMutableDictionaryRef = struct __CFDictionary*;

struct FSRef {
  std::uint8_t hidden[80];
};
struct HFSUniStr255 {
  std::uint16_t length;
  UniChar unicode[255];
};

// objc_msgSend and objc_msgSend_fpret (methods that return float or double) are declared without arguments:
// bundle/platform/message.h gives every send the exact type of its method. A message to nil answers 0 or 0.0.
void objc_msgSend();
void objc_msgSend_fpret();
Class objc_getClass(const char* name);  // null if there is no such class
SEL sel_registerName(const char* name);

// An exception frame. The runtime delivers an exception by popping the frame and jumping to `buffer` with 1.
struct ObjCExceptionFrame {
  jmp_buf buffer;
  void* reserved[4];
};
void objc_exception_try_enter(void* frame);
void objc_exception_try_exit(
    void* frame);  // once for a frame left normally or by unwinding, never after a delivery
id objc_exception_extract(void* frame);  // after a delivery
int objc_exception_match(Class exceptionClass, id exception);
[[noreturn]] void objc_exception_throw(id exception);

// A function with Create or Copy in its name returns one reference for the caller, or null.
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* characters, CFIndex count);
CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* bytes, std::uint32_t encoding);
Boolean CFStringGetCString(CFStringRef, char* buffer, CFIndex bufferSize, std::uint32_t encoding);
CFIndex CFStringGetLength(CFStringRef);  // UTF-16 units
CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex maxLength, CFStringRef);
void CFStringNormalize(CFMutableStringRef, CFIndex form);
CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef*);
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef, CFStringRef, Boolean isDirectory);
CFStringRef CFURLCopyFileSystemPath(CFURLRef, CFIndex style);
void CFRelease(CFTypeRef);  // never with null
const void* CFDictionaryGetValue(CFDictionaryRef, const void* key);
void CFDictionarySetValue(CFMutableDictionaryRef, const void* key, const void* value);
void CFDictionaryRemoveValue(CFMutableDictionaryRef, const void* key);

void NSLog(id format, ...);
extern id const NSCalibratedRGBColorSpace;

}  // extern "C"

inline constexpr CFIndex kCFStringNormalizationFormD = 0;
inline constexpr CFIndex kCFURLPOSIXPathStyle = 0;

static_assert(sizeof(void*) == 4 && sizeof(long) == 4, "the platform is 32-bit");
static_assert(sizeof(FSRef) == 80);
static_assert(sizeof(HFSUniStr255) == 512);
static_assert(sizeof(ObjCExceptionFrame) == sizeof(jmp_buf) + 4 * sizeof(void*));
static_assert(offsetof(ObjCExceptionFrame, buffer) == 0);

// Each symbol of the list is declared above, as what the list calls it, and held by a library of the list.
namespace qvx::listed {

enum class Kind : std::uint8_t { Function, NoReturn, Data };
enum class Library : std::uint8_t {
#define PLATFORM_LIBRARY(library, path) library,
#include "bundle/platform/symbols.inc"
};

template <typename Symbol>
consteval bool IsDeclared(Kind kind, Library /*itsLibrary*/) {
  return std::is_function_v<Symbol> == (kind != Kind::Data);
}

#define PLATFORM_SYMBOL(name, kind, library) \
  static_assert(IsDeclared<decltype(::name)>(Kind::kind, Library::library), #name);
#include "bundle/platform/symbols.inc"

}  // namespace qvx::listed
