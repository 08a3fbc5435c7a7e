// tests/bundle/scripted/platform_symbols.cpp - the C functions of the scripted platform, truth values apart.
#include <algorithm>
#include <cstdarg>
#include <cstring>

#include "bundle/host/types.h"
#include "bundle/platform/cocoa.h"
#include "tests/bundle/scripted/exception_frames.h"
#include "tests/bundle/scripted/host.h"
#include "tests/bundle/scripted/platform.h"
#include "tests/bundle/scripted/stack.h"
#include "tests/bundle/scripted/text.h"

using namespace scripted;  // NOLINT(google-build-using-namespace): the C functions below are this file's
                           // purpose

namespace {

std::string Join(std::initializer_list<std::string> arguments) {
  std::string text;
  for (const std::string& argument : arguments) text += (text.empty() ? "" : ", ") + argument;
  return text;
}

// Notes a call. What it raises, if anything, is delivered by the caller once nothing of it is alive.
struct Noted {
  NativeObject* raised = nullptr;
  bool null = false;
};

Noted Note(const char* name, std::initializer_list<std::string> arguments,
           EventKind kind = EventKind::kCall) {
  const Fault fault = Log().Record(kind, name, std::string(name) + "(" + Join(arguments) + ")");
  Noted noted;
  noted.null = fault == Fault::kNull;
  if (fault == Fault::kRaiseNSException) noted.raised = MakeException();
  if (fault == Fault::kRaiseOther) noted.raised = MakeNative("OtherThrowable");
  return noted;
}

void CheckAlive(const char* name, const NativeObject* object) {
  if (object == nullptr) {
    Log().Violation(std::string(name) + " with null");
  } else if (object->freed) {
    Log().Violation(std::string(name) + " with an object that was freed");
  }
}

CFStringRef AsString(NativeObject* object) {
  return reinterpret_cast<CFStringRef>(object);
}

NativeObject* CreateWithCString(const char* bytes, std::uint32_t encoding) {
  if (bytes == nullptr) return nullptr;
  const auto text = Decode(bytes, encoding);
  return text ? Owned(MakeText(*text)) : nullptr;
}

}  // namespace

extern "C" {

id const NSCalibratedRGBColorSpace = AsId(MakeText("NSCalibratedRGBColorSpace"));

Class objc_getClass(const char* name) {
  CheckStack("objc_getClass", __builtin_dwarf_cfa());
  const Outside outside;
  const Fault fault =
      Log().Record(EventKind::kLookup, "objc_getClass", "objc_getClass(" + Quoted(name) + ")");
  if (fault == Fault::kNull || IsHidden(name)) return nullptr;
  return reinterpret_cast<Class>(ClassNamed(name));
}

SEL sel_registerName(const char* name) {
  CheckStack("sel_registerName", __builtin_dwarf_cfa());
  const Outside outside;
  const Fault fault =
      Log().Record(EventKind::kLookup, "sel_registerName", "sel_registerName(" + Quoted(name) + ")");
  return fault == Fault::kNull ? nullptr : SelectorNamed(name);
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef /*allocator*/, const UniChar* characters,
                                         CFIndex count) {
  CheckStack("CFStringCreateWithCharacters", __builtin_dwarf_cfa());
  NativeObject* result = nullptr;
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    std::u16string text;
    if (characters != nullptr)
      text.assign(reinterpret_cast<const char16_t*>(characters), static_cast<std::size_t>(count));
    const Noted noted = Note("CFStringCreateWithCharacters",
                             {characters == nullptr ? "null" : Quoted(ToUTF8(text)), std::to_string(count)});
    raised = noted.raised;
    const bool fails =
        noted.null || ThePlatform().failCreateWithCharacters || (characters == nullptr && count > 0);
    if (raised == nullptr && !fails) result = Owned(MakeText(text));
  }
  if (raised != nullptr) Deliver(raised);
  return AsString(result);
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef /*allocator*/, const char* bytes,
                                      std::uint32_t encoding) {
  CheckStack("CFStringCreateWithCString", __builtin_dwarf_cfa());
  NativeObject* result = nullptr;
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    const Noted noted =
        Note("CFStringCreateWithCString", {bytes == nullptr ? "null" : Quoted(bytes), Hexadecimal(encoding)});
    raised = noted.raised;
    if (raised == nullptr && !noted.null) result = CreateWithCString(bytes, encoding);
  }
  if (raised != nullptr) Deliver(raised);
  return AsString(result);
}

// Only AL of a truth value is defined. Declared with a whole register under the symbol's name, so that the
// upper bits carry rubbish and a caller that reads more than the byte is found out.
std::uint32_t StringGetCString(CFStringRef string, char* buffer, CFIndex size,
                               std::uint32_t encoding) __asm__("CFStringGetCString");

std::uint32_t StringGetCString(CFStringRef string, char* buffer, CFIndex size, std::uint32_t encoding) {
  CheckStack("StringGetCString", __builtin_dwarf_cfa());
  bool fits = false;
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    const NativeObject* const object = Native(string);
    const Noted noted =
        Note("CFStringGetCString", {Describe(object), std::to_string(size), Hexadecimal(encoding)});
    CheckAlive("CFStringGetCString", object);
    raised = noted.raised;
    if (raised == nullptr && object != nullptr) {
      const auto bytes = Encode(object->text, encoding);
      fits =
          bytes && static_cast<CFIndex>(bytes->size()) < size && !noted.null && !ThePlatform().failGetCString;
      if (fits) {
        std::memcpy(buffer, bytes->c_str(), bytes->size() + 1);
      } else if (size > 3) {
        std::fill_n(buffer, 3, '?');  // a real platform may have written a part
      }
    }
  }
  if (raised != nullptr) Deliver(raised);
  return 0xA5A5A500U | (fits ? 1U : 0U);
}

CFIndex CFStringGetLength(CFStringRef string) {
  CheckStack("CFStringGetLength", __builtin_dwarf_cfa());
  CFIndex length = 0;
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    const NativeObject* const object = Native(string);
    const Noted noted = Note("CFStringGetLength", {Describe(object)});
    CheckAlive("CFStringGetLength", object);
    raised = noted.raised;
    if (object != nullptr && !noted.null) {
      length = object->claims ? static_cast<CFIndex>(object->claimedLength)
                              : static_cast<CFIndex>(object->text.size());
    }
  }
  if (raised != nullptr) Deliver(raised);
  return length;
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef /*allocator*/, CFIndex maxLength,
                                             CFStringRef string) {
  CheckStack("CFStringCreateMutableCopy", __builtin_dwarf_cfa());
  NativeObject* result = nullptr;
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    const NativeObject* const object = Native(string);
    const Noted noted = Note("CFStringCreateMutableCopy", {std::to_string(maxLength), Describe(object)});
    CheckAlive("CFStringCreateMutableCopy", object);
    raised = noted.raised;
    if (raised == nullptr && object != nullptr && !noted.null && !ThePlatform().failMutableCopy) {
      result = Owned(MakeText(object->text));
    }
  }
  if (raised != nullptr) Deliver(raised);
  return reinterpret_cast<CFMutableStringRef>(result);
}

// Form D of the one character that the tests use: LATIN SMALL LETTER E WITH ACUTE.
void CFStringNormalize(CFMutableStringRef string, CFIndex form) {
  CheckStack("CFStringNormalize", __builtin_dwarf_cfa());
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    NativeObject* const object = Native(string);
    raised = Note("CFStringNormalize", {Describe(object), std::to_string(form)}).raised;
    CheckAlive("CFStringNormalize", object);
    if (raised == nullptr && object != nullptr && form == 0) {
      for (std::size_t at = object->text.find(u'\u00E9'); at != std::u16string::npos;
           at = object->text.find(u'\u00E9')) {
        object->text.replace(at, 1, u"e\u0301");
      }
    }
  }
  if (raised != nullptr) Deliver(raised);
}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef /*allocator*/, const FSRef* ref) {
  CheckStack("CFURLCreateFromFSRef", __builtin_dwarf_cfa());
  NativeObject* result = nullptr;
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    const std::string path = TheHost().PathOf(*ref);
    const Noted noted = Note("CFURLCreateFromFSRef", {Quoted(path)});
    raised = noted.raised;
    if (raised == nullptr && !noted.null && !ThePlatform().failURLFromRef) {
      result = Owned(MakeNative("NSURL"));
      result->text = std::u16string(path.begin(), path.end());
    }
  }
  if (raised != nullptr) Deliver(raised);
  return reinterpret_cast<CFURLRef>(result);
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef /*allocator*/, CFURLRef url,
                                               CFStringRef component, Boolean isDirectory) {
  CheckStack("CFURLCreateCopyAppendingPathComponent", __builtin_dwarf_cfa());
  NativeObject* result = nullptr;
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    const NativeObject* const parent = Native(url);
    const NativeObject* const name = Native(component);
    const Noted noted = Note("CFURLCreateCopyAppendingPathComponent",
                             {Describe(parent), Describe(name), isDirectory == 0 ? "file" : "directory"});
    CheckAlive("CFURLCreateCopyAppendingPathComponent", parent);
    CheckAlive("CFURLCreateCopyAppendingPathComponent", name);
    raised = noted.raised;
    if (raised == nullptr && !noted.null && !ThePlatform().failAppend && parent != nullptr &&
        name != nullptr) {
      result = Owned(MakeNative("NSURL"));
      result->text = parent->text + u"/" + name->text;
    }
  }
  if (raised != nullptr) Deliver(raised);
  return reinterpret_cast<CFURLRef>(result);
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFIndex style) {
  CheckStack("CFURLCopyFileSystemPath", __builtin_dwarf_cfa());
  NativeObject* result = nullptr;
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    const NativeObject* const object = Native(url);
    const Noted noted = Note("CFURLCopyFileSystemPath", {Describe(object), std::to_string(style)});
    CheckAlive("CFURLCopyFileSystemPath", object);
    raised = noted.raised;
    if (raised == nullptr && object != nullptr && !noted.null && !ThePlatform().failPath) {
      result = Owned(MakeText(object->text));
    }
  }
  if (raised != nullptr) Deliver(raised);
  return AsString(result);
}

void CFRelease(CFTypeRef object) {
  CheckStack("CFRelease", __builtin_dwarf_cfa());
  const Outside outside;
  NativeObject* const native = Native(object);
  Note("CFRelease", {Describe(native)});
  if (native == nullptr) {
    Log().Violation("CFRelease with null");
  } else {
    GiveReference(native, "CFRelease");
  }
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
  CheckStack("CFDictionaryGetValue", __builtin_dwarf_cfa());
  const void* result = nullptr;
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    const NativeObject* const object = Native(dictionary);
    const Noted noted = Note("CFDictionaryGetValue", {Describe(object), Describe(key)});
    CheckAlive("CFDictionaryGetValue", object);
    raised = noted.raised;
    if (raised == nullptr && object != nullptr && !noted.null) {
      const auto found = object->entries.find(key);
      if (found != object->entries.end()) result = found->second;
    }
  }
  if (raised != nullptr) Deliver(raised);
  return result;
}

void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value) {
  CheckStack("CFDictionarySetValue", __builtin_dwarf_cfa());
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    NativeObject* const object = Native(dictionary);
    raised = Note("CFDictionarySetValue", {Describe(object), Describe(key), Describe(value)}).raised;
    CheckAlive("CFDictionarySetValue", object);
    if (raised == nullptr && object != nullptr) object->entries[key] = value;
  }
  if (raised != nullptr) Deliver(raised);
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void* key) {
  CheckStack("CFDictionaryRemoveValue", __builtin_dwarf_cfa());
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    NativeObject* const object = Native(dictionary);
    raised = Note("CFDictionaryRemoveValue", {Describe(object), Describe(key)}).raised;
    CheckAlive("CFDictionaryRemoveValue", object);
    if (raised == nullptr && object != nullptr) object->entries.erase(key);
  }
  if (raised != nullptr) Deliver(raised);
}

void NSLog(id format, ...) {
  CheckStack("NSLog", __builtin_dwarf_cfa());
  va_list arguments;
  va_start(arguments, format);
  NativeObject* raised = nullptr;
  {
    const Outside outside;
    const NativeObject* const text = Native(format);
    CheckAlive("NSLog", text);
    std::string line = Describe(text);
    for (std::size_t at = 0; text != nullptr && (at = text->text.find(u"%@", at)) != std::u16string::npos;
         at += 2) {
      // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): started above
      line += ", " + Describe(va_arg(arguments, const void*));
    }
    raised = Note("NSLog", {line}).raised;
  }
  va_end(arguments);
  if (raised != nullptr) Deliver(raised);
}

}  // extern "C"
