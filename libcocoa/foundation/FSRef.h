// libcocoa/foundation/FSRef.h - file references: each stands for an absolute path, for the life of the
// process.
#pragma once

#include <stdbool.h>

#include "libcocoa/foundation/CFBase.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t OSStatus;

typedef struct FSRef FSRef;  // 80 opaque bytes

enum {
  noErr = 0,
  fnfErr = -43,            // no such file or folder
  paramErr = -50,          // a NULL argument, or bytes that are no reference
  pathTooLongErr = -2110,  // the buffer is too small
};

// The reference of an existing file or folder. A relative path counts from the current folder; a symbolic
// link gives a reference to the link. `isDirectory` may be NULL.
OSStatus FSPathMakeRef(const uint8_t* path, FSRef* ref, Boolean* isDirectory);

// Writes the path with its terminator; `pathSize` is the buffer's in bytes.
OSStatus FSRefMakePath(const FSRef* ref, uint8_t* path, uint32_t pathSize);

// The path, valid for the life of the process; NULL for NULL and for bytes that are no reference.
const char* QVXPathOfFSRef(const FSRef* ref);

// Whether its path leads to a folder now; links are followed.
bool QVXFSRefIsFolder(const FSRef* ref);

#ifdef __cplusplus
}
#endif
