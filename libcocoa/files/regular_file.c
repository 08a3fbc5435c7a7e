// libcocoa/files/regular_file.c - files that are asked what they are before they are touched.
#define _GNU_SOURCE
// Files of any size and date, with inode numbers of 64 bits.
#define _FILE_OFFSET_BITS 64
#define _TIME_BITS 64
#include "libcocoa/files/regular_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

// As many of the bytes as there are, or -1.
static ssize_t ReadAll(int file, char* bytes, size_t size) {
  size_t done = 0;
  while (done < size) {
    ssize_t got = read(file, bytes + done, size - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return got;
    if (got == 0) break;  // it has become shorter
    done += (size_t)got;
  }
  return (ssize_t)done;
}

void* QVXReadRegularFile(const char* path, size_t largest, size_t* size) {
  struct stat about;
  if (stat(path, &about) != 0 || !S_ISREG(about.st_mode)) return NULL;
  int file = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  if (file < 0) return NULL;
  char* bytes = NULL;
  ssize_t read = -1;
  // Asked again: another may have taken the name since.
  if (fstat(file, &about) == 0 && S_ISREG(about.st_mode) && (unsigned long long)about.st_size <= largest) {
    bytes = malloc((size_t)about.st_size + 1);
    if (bytes) read = ReadAll(file, bytes, (size_t)about.st_size);
  }
  close(file);
  if (read < 0) {
    free(bytes);
    return NULL;
  }
  *size = (size_t)read;
  return bytes;
}

bool QVXIsFolder(const char* path) {
  struct stat about;
  return stat(path, &about) == 0 && S_ISDIR(about.st_mode);
}

bool QVXIsPlaceForFile(const char* path) {
  struct stat about;
  return stat(path, &about) == 0 ? S_ISREG(about.st_mode) : errno == ENOENT;
}

// The real path of the folder that holds the name, to be freed; NULL if there is none.
static char* RealParent(const char* path) {
  const char* slash = strrchr(path, '/');
  if (!slash) return realpath(".", NULL);
  char* parent = strndup(path, slash == path ? 1 : (size_t)(slash - path));
  char* real = parent ? realpath(parent, NULL) : NULL;
  free(parent);
  return real;
}

// Whether the one real path is the other or leads below it.
static bool IsWithin(const char* real, const char* realFolder) {
  size_t length = strlen(realFolder);
  return strncmp(real, realFolder, length) == 0 && (real[length] == '/' || real[length] == '\0');
}

bool QVXIsReallyInFolder(const char* path, const char* folder) {
  char* parent = RealParent(path);
  char* real = realpath(folder, NULL);
  bool inside = parent && real && IsWithin(parent, real);
  free(parent);
  free(real);
  return inside;
}

// Whether the path's first bytes, which name a folder, lead into the real folder. If there are none, the
// folder is the root, which is in no other: false.
static bool LeadsWithin(const char* path, size_t length, const char* realFolder) {
  char* start = strndup(path, length);
  char* real = start ? realpath(start, NULL) : NULL;
  bool within = real && IsWithin(real, realFolder);
  free(start);
  free(real);
  return within;
}

bool QVXLeavesFolderByLink(const char* path, const char* folder) {
  char* real = realpath(folder, NULL);
  if (!real) return false;
  bool leaves = false;
  bool wasWithin = path[0] != '/' && LeadsWithin(".", 1, real);
  const char* end;
  for (const char* name = path; !leaves && (end = strchr(name, '/')); name = end + 1) {
    bool isWithin = LeadsWithin(path, (size_t)(end - path), real);
    bool isUp = strncmp(name, "../", 3) == 0;
    leaves = wasWithin && !isWithin && !isUp;
    wasWithin = isWithin;
  }
  free(real);
  return leaves;
}
