// hostrun/commands/platform_functions.h - the platform's functions that a bundle calls by name.
#pragma once

#include <array>

namespace hostrun {

// In the order of the thunks in shim/; what throws is not among them, as no call of it comes back.
inline constexpr std::array kPlatformFunctions = {
    "objc_msgSend",
    "objc_msgSend_fpret",
    "objc_getClass",
    "sel_registerName",
    "objc_exception_try_enter",
    "objc_exception_try_exit",
    "objc_exception_extract",
    "objc_exception_match",
    "CFStringCreateWithCharacters",
    "CFStringCreateWithCString",
    "CFStringGetCString",
    "CFStringGetLength",
    "CFStringCreateMutableCopy",
    "CFStringNormalize",
    "CFURLCreateFromFSRef",
    "CFURLCreateCopyAppendingPathComponent",
    "CFURLCopyFileSystemPath",
    "CFRelease",
    "CFDictionaryGetValue",
    "CFDictionarySetValue",
    "CFDictionaryRemoveValue",
    "NSLog",
};

}  // namespace hostrun
