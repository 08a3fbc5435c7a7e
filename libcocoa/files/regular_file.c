// libcocoa/files/regular_file.c - files that are asked what they are before they are touched.
#define _GNU_SOURCE
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
    if (got < 0) return -1;
    if (got == 0) break;  // it has become shorter
    done += (size_t)got;
  }
  return (ssize_t)done;
}

void* QVXReadRegularFile(const char* path, size_t largest, size_t* size) {
  int file = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  if (file < 0) return NULL;
  struct stat64 about;
  char* bytes = NULL;
  ssize_t read = -1;
  if (fstat64(file, &about) == 0 && S_ISREG(about.st_mode) && (unsigned long long)about.st_size <= largest) {
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

bool QVXIsPlaceForFile(const char* path) {
  struct stat64 about;
  return stat64(path, &about) == 0 ? S_ISREG(about.st_mode) : errno == ENOENT;
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

bool QVXIsReallyInFolder(const char* path, const char* folder) {
  char* parent = RealParent(path);
  char* real = realpath(folder, NULL);
  size_t length = real ? strlen(real) : 0;
  bool inside = parent && real && strncmp(parent, real, length) == 0 &&
                (parent[length] == '/' || parent[length] == '\0');
  free(parent);
  free(real);
  return inside;
}
