// libcocoa/runtime/exported.h - what leaves the library; everything else is compiled hidden.
#ifndef GNUSTEP_EXPORTED_H
#define GNUSTEP_EXPORTED_H

#define COCOA_EXPORT __attribute__((visibility("default")))

#endif
