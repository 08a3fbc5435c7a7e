// libcocoa/profiles/little_cms.c - the library's own Little CMS context.
#include "libcocoa/profiles/little_cms.h"

#include <lcms2_plugin.h>
#include <malloc.h>
#include <pthread.h>
#include <stdlib.h>

static cmsContext context;

static _Thread_local int64_t memory;
static _Thread_local int64_t limit = INT64_MAX;

static void* Allocate(cmsContext asker, cmsUInt32Number size) {
  void* block = memory + (int64_t)size <= limit ? malloc(size) : NULL;
  memory += (int64_t)malloc_usable_size(block);
  return block;
}

static void* Reallocate(cmsContext asker, void* block, cmsUInt32Number size) {
  size_t before = malloc_usable_size(block);
  if (memory + (int64_t)size - (int64_t)before > limit) return NULL;
  void* moved = realloc(block, size);
  if (moved) memory += (int64_t)malloc_usable_size(moved) - (int64_t)before;
  return moved;
}

static void Free(cmsContext asker, void* block) {
  memory -= (int64_t)malloc_usable_size(block);
  free(block);
}

int64_t QVXLittleCMSMemory(void) {
  return memory;
}

void QVXLimitLittleCMS(size_t bytes) {
  limit = memory + (int64_t)bytes;
}

void QVXUnlimitLittleCMS(void) {
  limit = INT64_MAX;
}

static void MakeContext(void) {
  // The rest is made of these three by Little CMS itself.
  cmsPluginMemHandler memory = {
      .base = {cmsPluginMagicNumber, 2000, cmsPluginMemHandlerSig, NULL},
      .MallocPtr = Allocate,
      .FreePtr = Free,
      .ReallocPtr = Reallocate,
  };
  context = cmsCreateContext(&memory, NULL);
}

cmsContext QVXLittleCMS(void) {
  static pthread_once_t once = PTHREAD_ONCE_INIT;
  pthread_once(&once, MakeContext);
  return context;
}
