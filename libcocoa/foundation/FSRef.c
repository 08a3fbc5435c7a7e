// libcocoa/foundation/FSRef.c - file references: a tag and an index into the process's table of paths.
#include <errno.h>
#include <pthread.h>
#include <stdbool.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "libcocoa/foundation/FSRef.h"

static const char kTag[8] = "path/ref";

struct reference {
  char tag[sizeof kTag];
  uint32_t index;
};
_Static_assert(sizeof(struct reference) <= sizeof(struct FSRef), "a reference fits");

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static char** paths;
static uint32_t path_count;
static uint32_t path_capacity;

// The index of a path, which is entered when it is new. False without memory.
static bool index_of(const char* path, uint32_t* index) {
  for (uint32_t i = 0; i < path_count; ++i) {
    if (strcmp(paths[i], path) == 0) {
      *index = i;
      return true;
    }
  }
  if (path_count == path_capacity) {
    uint32_t capacity = path_capacity != 0 ? path_capacity * 2 : 16;
    char** grown = realloc(paths, capacity * sizeof *grown);
    if (grown == NULL) return false;
    paths = grown;
    path_capacity = capacity;
  }
  char* copy = strdup(path);
  if (copy == NULL) return false;
  *index = path_count;
  paths[path_count++] = copy;
  return true;
}

static char* absolute(const char* path) {
  if (path[0] == '/') return strdup(path);
  char* folder = getcwd(NULL, 0);
  if (folder == NULL) return NULL;
  size_t length = strlen(folder);
  char* joined = realloc(folder, length + 1 + strlen(path) + 1);
  if (joined == NULL) {
    free(folder);
    return NULL;
  }
  joined[length] = '/';
  strcpy(joined + length + 1, path);
  return joined;
}

COCOA_EXPORT OSStatus FSPathMakeRef(const uint8_t* path, FSRef* ref, Boolean* isDirectory) {
  if (path == NULL || path[0] == 0 || ref == NULL) return paramErr;
  struct stat status;
  if (lstat((const char*)path, &status) != 0) return fnfErr;
  char* full = absolute((const char*)path);
  if (full == NULL) return fnfErr;
  struct reference reference;
  memcpy(reference.tag, kTag, sizeof kTag);
  pthread_mutex_lock(&lock);
  bool entered = index_of(full, &reference.index);
  pthread_mutex_unlock(&lock);
  free(full);
  if (!entered) return paramErr;
  memset(ref, 0, sizeof *ref);
  memcpy(ref, &reference, sizeof reference);
  if (isDirectory != NULL) *isDirectory = S_ISDIR(status.st_mode) ? 1 : 0;
  return noErr;
}

const char* file_reference_path(const FSRef* ref) {
  if (ref == NULL) return NULL;
  struct reference reference;
  memcpy(&reference, ref, sizeof reference);
  if (memcmp(reference.tag, kTag, sizeof kTag) != 0) return NULL;
  pthread_mutex_lock(&lock);
  const char* path = reference.index < path_count ? paths[reference.index] : NULL;
  pthread_mutex_unlock(&lock);
  return path;
}

COCOA_EXPORT OSStatus FSRefMakePath(const FSRef* ref, uint8_t* path, uint32_t pathSize) {
  const char* found = file_reference_path(ref);
  if (found == NULL || path == NULL) return paramErr;
  if (strlen(found) >= pathSize) return pathTooLongErr;
  strcpy((char*)path, found);
  return noErr;
}
