// libcocoa/files/regular_file.h - files that are asked what they are before they are touched.
#pragma once

#include <stdbool.h>
#include <stddef.h>

// The contents of a regular file, to be freed by the caller, and their number of bytes; links are followed.
// NULL if there is no such file, it may not be read, is larger than `largest`, or is anything else: a folder,
// a device, a pipe. Those are not read, and nothing waits for them.
void* QVXReadRegularFile(const char* path, size_t largest, size_t* size);

// Whether a folder bears the name, or a link to one.
bool QVXIsFolder(const char* path);

// Whether a file may be put there: nothing bears the name yet, or a regular file does, or a link to either.
bool QVXIsPlaceForFile(const char* path);

// Whether what bears the name `path` is really in the folder or below it: every link in both is followed but
// the one that `path` itself may be. False if either does not exist.
bool QVXIsReallyInFolder(const char* path, const char* folder);

// Whether the path, followed name by name, goes through the folder and out of it again by a link. What the
// last name is does not count, and neither does the way out by "..". False if the folder does not exist.
bool QVXLeavesFolderByLink(const char* path, const char* folder);
