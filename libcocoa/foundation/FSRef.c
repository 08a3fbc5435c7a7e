// libcocoa/foundation/FSRef.c - file references: a tag and an index into the process's table of paths.
// Files of any size and time, and with any number, have a reference.
#define _FILE_OFFSET_BITS 64
#define _GNU_SOURCE
#define _TIME_BITS 64
#include "libcocoa/foundation/FSRef.h"

#include <pthread.h>
#include <search.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "libcocoa/runtime/exported.h"

static const char kTag[8] = "path/ref";

typedef struct {
  char tag[sizeof kTag];
  uint32_t index;
} Reference;

struct FSRef {
  uint8_t hidden[80];
};
_Static_assert(sizeof(Reference) <= sizeof(FSRef), "a reference fits");

// A path that a reference was made of, with its place in the table.
typedef struct {
  uint32_t index;
  char path[];
} Entry;

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static Entry** entries;  // by index
static uint32_t entryCount;
static void* byPath;  // the same entries, in a tree

static int Compare(const void* one, const void* other) {
  return strcmp(((const Entry*)one)->path, ((const Entry*)other)->path);
}

static Entry* NewEntry(const char* path) {
  Entry* entry = malloc(sizeof *entry + strlen(path) + 1);
  if (!entry) return NULL;
  entry->index = entryCount;
  strcpy(entry->path, path);
  return entry;
}

// Finds the path in the table, or enters it. False if memory is exhausted. The caller holds the lock.
static bool IndexOf(const char* path, uint32_t* index) {
  if ((entryCount & (entryCount - 1)) == 0) {  // full, as at every power of two
    Entry** grown = realloc(entries, (2 * entryCount + 1) * sizeof *grown);
    if (!grown) return false;
    entries = grown;
  }
  Entry* entry = NewEntry(path);
  Entry** found = entry ? tsearch(entry, &byPath, Compare) : NULL;
  bool isNew = found && *found == entry;
  if (isNew)
    entries[entryCount++] = entry;
  else
    free(entry);
  if (found) *index = (*found)->index;
  return found;
}

static char* Absolute(const char* path) {
  if (path[0] == '/') return strdup(path);
  char* folder = getcwd(NULL, 0);
  char* joined = NULL;
  bool done = folder && asprintf(&joined, "%s/%s", folder, path) > 0;
  free(folder);
  return done ? joined : NULL;
}

QVX_EXPORT OSStatus FSPathMakeRef(const uint8_t* path, FSRef* ref, Boolean* isDirectory) {
  if (!path || path[0] == 0 || !ref) return paramErr;
  struct stat status;
  if (lstat((const char*)path, &status) != 0) return fnfErr;
  char* full = Absolute((const char*)path);
  if (!full) return fnfErr;
  Reference reference;
  memcpy(reference.tag, kTag, sizeof kTag);
  pthread_mutex_lock(&lock);
  bool entered = IndexOf(full, &reference.index);
  pthread_mutex_unlock(&lock);
  free(full);
  if (!entered) return paramErr;
  memset(ref, 0, sizeof *ref);
  memcpy(ref, &reference, sizeof reference);
  if (isDirectory) *isDirectory = S_ISDIR(status.st_mode);
  return noErr;
}

const char* QVXPathOfFSRef(const FSRef* ref) {
  if (!ref) return NULL;
  Reference reference;
  memcpy(&reference, ref, sizeof reference);
  if (memcmp(reference.tag, kTag, sizeof kTag) != 0) return NULL;
  pthread_mutex_lock(&lock);
  const char* path = reference.index < entryCount ? entries[reference.index]->path : NULL;
  pthread_mutex_unlock(&lock);
  return path;
}

bool QVXFSRefIsFolder(const FSRef* ref) {
  const char* path = QVXPathOfFSRef(ref);
  struct stat status;
  return path && stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

QVX_EXPORT OSStatus FSRefMakePath(const FSRef* ref, uint8_t* path, uint32_t pathSize) {
  const char* found = QVXPathOfFSRef(ref);
  if (!found || !path) return paramErr;
  if (strlen(found) >= pathSize) return pathTooLongErr;
  strcpy((char*)path, found);
  return noErr;
}
